#pragma once

#include <QtCore/QIODevice>

namespace veltor::utils {

/// Hands what is written on to another device, in larger pieces, and remembers whether that took all of it.
/// After a failure the rest is dropped: who writes need not look before the end.
class CheckedOutput : public QIODevice
{
public:
    /// @param device  open for writing; must outlive this
    explicit CheckedOutput(QIODevice& device);

    /// Writes what is collected, and flushes a file. @return whether all was taken
    [[nodiscard]] bool finish();

protected:
    qint64 readData(char* data, qint64 size) override;
    qint64 writeData(const char* data, qint64 size) override;

private:
    void pass();

    QIODevice& m_device;
    QByteArray m_piece;
    bool m_hasFailed = false;
};

} // namespace veltor::utils
