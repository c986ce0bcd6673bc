#pragma once

#include "OutputFile.h"

namespace veltor::tool {

/// Records the timings of the process while it lives, and writes them as trace events. Without a path nothing
/// is recorded.
class TraceFile
{
public:
    /// As OutputFile().
    TraceFile(const QString& path, const QString& input);
    ~TraceFile();
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    /// Ends recording and writes. @throws std::runtime_error
    void write();

private:
    OutputFile m_file;
};

} // namespace veltor::tool
