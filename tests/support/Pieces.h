#pragma once

#include <QtCore/QIODevice>

#include <algorithm>

namespace veltor::test {

/// A pipe: gives as many bytes at a time as its script says.
class Pieces : public QIODevice
{
public:
    Pieces(QByteArray script, QByteArray bytes)
        : m_script(std::move(script))
        , m_bytes(std::move(bytes))
    {
        QIODevice::open(ReadOnly | Unbuffered);
    }
    [[nodiscard]] bool isSequential() const override { return true; }
    [[nodiscard]] bool atEnd() const override { return m_at == m_bytes.size(); }
    [[nodiscard]] qint64 bytesAvailable() const override { return m_bytes.size() - m_at; }

protected:
    qint64 readData(char* data, qint64 most) override
    {
        const int piece = m_script.isEmpty() ? 7 : 1 + quint8(m_script[m_step++ % m_script.size()]) % 40;
        const auto count = static_cast<int>(std::min({qint64(piece), most, qint64(m_bytes.size() - m_at)}));
        std::copy_n(m_bytes.constData() + m_at, count, data);
        m_at += count;
        return count;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    QByteArray m_script;
    QByteArray m_bytes;
    int m_step = 0;
    int m_at = 0;
};

} // namespace veltor::test
