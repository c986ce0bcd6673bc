#include <veltor/err/Exceptions.h>
#include <veltor/logging/Logger.h>

#include <stdexcept>

// Exit 0 when an exception crosses the library's border by its type and a sink receives a line.
int main()
{
    int lines = 0;
    veltor::logging::setLogSink([&lines](const veltor::logging::LogRecord&) { ++lines; });
    veltor::logging::LoggerFacade::write(veltor::logging::LogLevel::Info, QStringLiteral("hello"));
    veltor::logging::setLogSink({});
    try {
        throw veltor::err::OutOfRange(3);
    } catch (const std::out_of_range&) {
        return lines == 1 ? 0 : 1;
    }
}
