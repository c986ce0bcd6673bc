#pragma once

#include <veltor/Export.h>

#include <QtCore/QIODevice>

namespace veltor::utils {

/// A device that stores nothing and counts how large a file would become: write to it what would be
/// written to the file, then ask size().
///
///     SizeEstimator estimator;
///     estimator.open(QIODevice::WriteOnly);
///     save(estimator);
///     reserve(estimator.size());
///
/// Threads: owner thread only.
class VELTOR_UTILS_EXPORT SizeEstimator : public QIODevice
{
    Q_OBJECT

public:
    /// A closed device of size 0.
    explicit SizeEstimator(QObject* parent = nullptr);

    /// Append and Truncate imply WriteOnly and Unbuffered. Append starts at the end, Truncate resets the
    /// size to 0; any other mode starts at 0 and keeps the size.
    bool open(OpenMode mode) override;

    /// The size counted so far in bytes; closing keeps it.
    [[nodiscard]] qint64 size() const override { return m_size; }

protected:
    /// There is nothing to read: 0.
    qint64 readData(char* data, qint64 length) override;
    /// Counts @p length bytes at the position; all of them are "written".
    qint64 writeData(const char* data, qint64 length) override;

private:
    qint64 m_size = 0;
};

} // namespace veltor::utils
