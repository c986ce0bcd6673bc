// The log facade: every line goes to the one sink in force.

#include <veltor/logging/Logger.h>

#include <QtCore/QLoggingCategory>

#include <condition_variable>
#include <exception>
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

struct Sink
{
    const LogSink function; // empty: Qt
    const quint64 number;
};
using SinkPtr = std::shared_ptr<const Sink>;

/// The sink in force, and what is still written to former ones. A line is written outside the lock: a sink
/// may log, or install another sink, itself.
class SinkHolder
{
public:
    LogSink exchange(LogSink function)
    {
        SinkPtr former;
        {
            const std::lock_guard lock(m_mutex);
            former = std::exchange(
                m_sink, std::make_shared<const Sink>(Sink{std::move(function), m_sink->number + 1}));
            m_formerLines += std::exchange(m_lines, 0);
        }
        return former->function;
    }

    SinkPtr begin()
    {
        const std::lock_guard lock(m_mutex);
        ++m_lines;
        return m_sink;
    }

    void end(SinkPtr&& sink) noexcept
    {
        const quint64 number = sink->number;
        sink.reset(); // it may be the last: nothing of a former sink is left once its lines have ended
        const std::lock_guard lock(m_mutex);
        if (number == m_sink->number) {
            --m_lines;
        } else if (--m_formerLines == 0) {
            m_idle.notify_all();
        }
    }

    void waitForFormer()
    {
        std::unique_lock lock(m_mutex);
        m_idle.wait(lock, [this] { return m_formerLines == 0; });
    }

private:
    std::mutex m_mutex; // guards the rest
    std::condition_variable m_idle;
    SinkPtr m_sink = std::make_shared<const Sink>(Sink{{}, 0});
    int m_lines = 0; // being written to it
    int m_formerLines = 0;
};

SinkHolder& sinkHolder()
{
    // Never destroyed: lines are written until the very end of the process.
    static auto* const holder = new SinkHolder;
    return *holder;
}

/// A line that this thread writes; it ends whichever way the sink is left.
class Line
{
public:
    Line()
        : m_sink(sinkHolder().begin())
    {
        ++depth;
    }
    ~Line()
    {
        --depth;
        sinkHolder().end(std::move(m_sink));
    }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    [[nodiscard]] const LogSink& sink() const noexcept { return m_sink->function; }

    static inline thread_local int depth = 0;

private:
    SinkPtr m_sink;
};

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

void dispatch(const LogRecord& record)
{
    try {
        const Line line;
        if (line.sink()) {
            line.sink()(record);
        } else {
            writeToQt(record);
        }
    } catch (...) {
        if (!std::current_exception()) {
            throw; // it is none: the thread is being cancelled, which nobody may stop
        }
        // A line that cannot be written must not change what the code that wrote it does.
    }
}

} // namespace

LogSink setLogSink(LogSink sink)
{
    return sinkHolder().exchange(std::move(sink));
}

bool waitForFormerLogSinks()
{
    const bool waits = Line::depth == 0;
    if (waits) {
        sinkHolder().waitForFormer();
    }
    return waits;
}

LogStream::LogStream(LogRecord record)
    : m_record(std::move(record))
{}

LogStream::LogStream(LogStream&& other) noexcept
    : m_record(std::move(other.m_record))
    , m_active(std::exchange(other.m_active, false))
{}

LogStream::~LogStream() noexcept(false)
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
