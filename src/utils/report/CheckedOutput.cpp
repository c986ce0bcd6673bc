// Output whose failure is looked at once, at the end.

#include "CheckedOutput.h"

#include <QtCore/QFileDevice>

namespace veltor::utils {

CheckedOutput::CheckedOutput(QIODevice& device)
    : m_device(device)
{
    open(QIODevice::WriteOnly | QIODevice::Unbuffered);
}

bool CheckedOutput::finish()
{
    pass();
    auto* const file = qobject_cast<QFileDevice*>(&m_device);
    if (file && !m_hasFailed) {
        m_hasFailed = !file->flush();
    }
    return !m_hasFailed;
}

qint64 CheckedOutput::readData(char*, qint64)
{
    return -1;
}

qint64 CheckedOutput::writeData(const char* data, qint64 size)
{
    constexpr int pieceSize = 16384;
    if (!m_hasFailed) {
        m_piece.append(data, static_cast<int>(size));
        if (m_piece.size() >= pieceSize) {
            pass();
        }
    }
    return size;
}

void CheckedOutput::pass()
{
    if (m_hasFailed || m_piece.isEmpty()) {
        return;
    }
    // Sequential devices may take a part at a time.
    for (qint64 done = 0; done < m_piece.size() && !m_hasFailed;) {
        const qint64 taken = m_device.write(m_piece.constData() + done, m_piece.size() - done);
        m_hasFailed = taken <= 0;
        done += taken;
    }
    m_piece.clear();
}

} // namespace veltor::utils
