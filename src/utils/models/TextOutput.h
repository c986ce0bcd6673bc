#pragma once

#include <QtCore/QString>

class QIODevice;
class QTextCodec;

#include <memory>

namespace veltor::utils {

/// Text on its way to a device: encoded in large pieces, each of which the device must take whole.
class TextOutput
{
public:
    /// @param device  which must be open for writing; its own line breaks are off until the end
    TextOutput(QIODevice& device, QTextCodec& codec);
    ~TextOutput();
    TextOutput(const TextOutput&) = delete;
    TextOutput& operator=(const TextOutput&) = delete;

    /// To append to.
    [[nodiscard]] QString& text() { return m_text; }
    /// Hands what there is over when it is much. @return no error so far
    bool flushMuch();
    /// Hands all over, from the device's own buffer too. @return no error so far
    bool finish();

    /// Why the device took no more, with its name; empty when it took all.
    [[nodiscard]] const QString& error() const { return m_error; }
    /// Characters that the encoding lacks.
    [[nodiscard]] qint64 replaced() const { return m_replaced; }

private:
    struct Encoder;

    void flush();
    void write(const char* bytes, qint64 size);
    void drain(qint64 most);
    void fail();

    QIODevice& m_device;
    const std::unique_ptr<Encoder> m_encoder;
    const bool m_textMode;
    QString m_text;
    QString m_error;
    qint64 m_replaced = 0;
};

} // namespace veltor::utils
