// The file of --trace.

#include "TraceFile.h"

#include "Language.h"
#include "TerminalText.h"
#include "Text.h"

#include <veltor/utils/TimeTrace.h>

#include <stdexcept>

namespace veltor::tool {
namespace {

[[noreturn]] void fail(const QFile& file, const QString& reason)
{
    throw std::runtime_error((shownName(file.fileName()) + QStringLiteral(": ") + reason).toStdString());
}

} // namespace

TraceFile::TraceFile(const QString& path)
    : m_file(path)
{
    if (path.isEmpty()) {
        return;
    }
    if (!m_file.open(QIODevice::WriteOnly)) {
        fail(m_file, openReason(m_file));
    }
    utils::TimeTrace::start();
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
    if (!utils::TimeTrace::writeEvents(m_file)) {
        fail(m_file, m_file.errorString());
    }
}

} // namespace veltor::tool
