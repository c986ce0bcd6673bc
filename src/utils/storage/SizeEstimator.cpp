// A device that counts and stores nothing.

#include <veltor/utils/SizeEstimator.h>

#include <algorithm>
#include <limits>

namespace veltor::utils {

SizeEstimator::SizeEstimator(QObject* parent)
    : QIODevice(parent)
{}

bool SizeEstimator::open(OpenMode mode)
{
    if (mode & (Append | Truncate)) {
        mode |= WriteOnly | Unbuffered;
    }
    if (mode & Truncate) {
        m_size = 0;
    }
    return QIODevice::open(mode); // which positions an appending device at its end
}

qint64 SizeEstimator::readData(char*, qint64)
{
    return 0;
}

qint64 SizeEstimator::writeData(const char*, qint64 length)
{
    const qint64 counted = std::min(length, std::numeric_limits<qint64>::max() - pos());
    m_size = std::max(m_size, pos() + counted);
    return counted;
}

} // namespace veltor::utils
