// The file of --trace.

#include "TraceFile.h"

#include <veltor/utils/TimeTrace.h>

namespace veltor::tool {

TraceFile::TraceFile(const QString& path, const QString& input)
    : m_file(path, input)
{
    if (m_file.isOpen()) {
        utils::TimeTrace::start();
    }
}

TraceFile::~TraceFile()
{
    utils::TimeTrace::stop();
}

void TraceFile::write()
{
    if (!m_file.isOpen()) {
        return;
    }
    utils::TimeTrace::stop();
    m_file.finish(utils::TimeTrace::writeEvents(m_file.device()));
}

} // namespace veltor::tool
