// Files that options name for a part of the output.

#include "OutputFile.h"

#include "Command.h"
#include "Language.h"
#include "TerminalText.h"
#include "Text.h"

#include <veltor/utils/Paths.h>

#include <stdexcept>

namespace veltor::tool {
namespace {

[[noreturn]] void fail(const QFile& file, const QString& reason)
{
    throw std::runtime_error((shownName(file.fileName()) + QStringLiteral(": ") + reason).toStdString());
}

} // namespace

OutputFile::OutputFile(const QString& path, const QString& input)
    : m_file(path)
{
    if (path.isEmpty()) {
        return;
    }
    if (utils::resolvedPath(path) == utils::resolvedPath(input)) {
        throw UsageError(Text::tr("%1: этот файл читается").arg(shownName(path)));
    }
    if (!m_file.open(QIODevice::WriteOnly)) {
        fail(m_file, openReason(m_file));
    }
}

void OutputFile::finish(bool isWritten)
{
    if (!isWritten || !m_file.flush()) {
        fail(m_file, m_file.errorString());
    }
    m_file.close();
    if (m_file.error() != QFileDevice::NoError) {
        fail(m_file, m_file.errorString());
    }
}

} // namespace veltor::tool
