#include <veltor/logging/Logger.h>

#include <QtCore/QLoggingCategory>

#include <memory>
#include <mutex>
#include <utility>

namespace veltor::logging {
namespace {

const QLoggingCategory& category()
{
    static const QLoggingCategory instance("veltor.utils");
    return instance;
}

/// The sink in force. Held by a shared pointer so that a line is written outside the lock: a sink may
/// log, or install another sink, itself.
class SinkHolder
{
public:
    LogSink exchange(LogSink sink)
    {
        auto next = sink ? std::make_shared<const LogSink>(std::move(sink)) : nullptr;
        {
            const std::lock_guard lock(m_mutex);
            m_sink.swap(next);
        }
        return next ? *next : LogSink();
    }

    std::shared_ptr<const LogSink> current() const
    {
        const std::lock_guard lock(m_mutex);
        return m_sink;
    }

private:
    mutable std::mutex m_mutex; // guards m_sink
    std::shared_ptr<const LogSink> m_sink;
};

SinkHolder& sinkHolder()
{
    // Never destroyed: lines are written until the very end of the process.
    static auto* const holder = new SinkHolder;
    return *holder;
}

void writeToQt(const LogRecord& record)
{
    const QByteArray file = record.file.toUtf8();
    const QByteArray function = record.function.toUtf8();
    const QByteArray text = record.text.toUtf8();
    const QMessageLogger logger(file.constData(), record.line, function.constData(),
                                category().categoryName());
    switch (record.level) {
    case LogLevel::Detail:
    case LogLevel::Info:
        if (category().isInfoEnabled()) {
            logger.info("%s", text.constData());
        }
        break;
    case LogLevel::Warning:
        if (category().isWarningEnabled()) {
            logger.warning("%s", text.constData());
        }
        break;
    case LogLevel::Error:
        if (category().isCriticalEnabled()) {
            logger.critical("%s", text.constData());
        }
        break;
    }
}

void dispatch(const LogRecord& record) noexcept
{
    try {
        if (const auto sink = sinkHolder().current()) {
            (*sink)(record);
        } else {
            writeToQt(record);
        }
    } catch (...) {
        // A line that cannot be written must not change what the code that wrote it does.
    }
}

} // namespace

LogSink setLogSink(LogSink sink)
{
    return sinkHolder().exchange(std::move(sink));
}

LogStream::LogStream(LogRecord record)
    : m_record(std::move(record))
{}

LogStream::LogStream(LogStream&& other) noexcept
    : m_record(std::move(other.m_record))
    , m_active(std::exchange(other.m_active, false))
{}

LogStream::~LogStream()
{
    if (m_active) {
        dispatch(m_record);
    }
}

LoggerMessager::LoggerMessager(LogLevel level, const char* file, int line, const char* function) noexcept
    : m_level(level)
    , m_line(line)
    , m_file(file)
    , m_function(function)
{}

void LoggerMessager::write(const QString& text) const
{
    dispatch(record(text));
}

LogStream LoggerMessager::write() const
{
    return LogStream(record(QString()));
}

LogRecord LoggerMessager::record(const QString& text) const
{
    return {m_level, QString::fromUtf8(m_file), m_line, QString::fromUtf8(m_function), text};
}

void LoggerFacade::write(LogLevel level, const QString& text)
{
    dispatch({level, QString(), 0, QString(), text});
}

} // namespace veltor::logging
