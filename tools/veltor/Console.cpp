#include "Command.h"

#include <QtCore/QByteArray>

#include <cstdio>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace veltor::tool {
namespace {

void put(std::FILE* stream, const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
    std::fflush(stream);
}

} // namespace

void print(const QString& text)
{
    put(stdout, text);
}

void printError(const QString& text)
{
    put(stderr, text + QLatin1Char('\n'));
}

void printProgress(const QString& line)
{
    put(stderr, QStringLiteral("\r\033[K") + line);
}

bool hasTerminal()
{
#ifdef _WIN32
    return _isatty(_fileno(stderr)) != 0;
#else
    return ::isatty(STDERR_FILENO) != 0;
#endif
}

} // namespace veltor::tool
