#pragma once

#include <QtCore/QFile>

namespace veltor::tool {

/// Records the timings of the process while it lives, and writes them as trace events. Without a path nothing
/// is recorded.
class TraceFile
{
public:
    /// Creates the file at once: one that cannot be written is told before the work begins.
    /// @throws std::runtime_error
    explicit TraceFile(const QString& path);
    ~TraceFile();
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    /// Ends recording and writes. @throws std::runtime_error
    void write();

private:
    QFile m_file;
};

} // namespace veltor::tool
