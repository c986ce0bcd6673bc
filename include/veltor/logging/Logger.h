#pragma once

#include <veltor/Export.h>

#include <QtCore/QString>
#include <QtCore/QTextStream>

#include <functional>
#include <type_traits>

/// The log of the library. Every line goes to one sink: Qt's logging under the category "veltor.utils"
/// unless the application installs its own. All functions here are thread-safe.
namespace veltor::logging {

/// How much a line matters; the numbers are part of the interface.
enum class LogLevel : int
{
    Detail = 1,  ///< informational, of interest when following what the library does
    Info = 2,    ///< informational, of interest to whoever runs the application
    Warning = 3, ///< something was changed or left out that a caller may not expect
    Error = 4,   ///< an operation failed; the caller was told by its result
};

/// One log line with the place it comes from. `line` is 0 and `file` and `function` are empty when the
/// call site is not known.
struct LogRecord
{
    LogLevel level;   ///< how much it matters
    QString file;     ///< of the source
    int line;         ///< in that file
    QString function; ///< its signature
    QString text;     ///< the message, which may have several lines
};

/// Receives every log line, on the thread that wrote it. It may be called from several threads at once
/// and must not throw; an exception that leaves it is dropped together with the line. A thread may be
/// cancelled inside of it.
using LogSink = std::function<void(const LogRecord&)>;

/// Sends all further lines to @p sink; an empty one restores the default. A line that another thread is
/// writing at this moment may still reach the former sink; see waitForFormerLogSinks().
/// @return the former sink, empty if it was the default.
VELTOR_UTILS_EXPORT LogSink setLogSink(LogSink sink);

/// Waits until no sink but the one in force is being called: what a former sink uses may be destroyed
/// then. Hold no lock that a sink may want.
/// @return false, without waiting, when called from inside a sink, which would wait for itself
VELTOR_UTILS_EXPORT bool waitForFormerLogSinks();

/// Collects one line item by item, a space after each, and writes it when the stream ends. Items are
/// whatever QTextStream prints; `const char*` is read as UTF-8. Made by LoggerMessager::write(). One thread
/// at a time.
class VELTOR_UTILS_EXPORT LogStream
{
public:
    /// Items go to the end of the record's text.
    explicit LogStream(LogRecord record);
    /// @p other writes nothing any more.
    LogStream(LogStream&& other) noexcept;
    LogStream(const LogStream&) = delete;
    LogStream& operator=(const LogStream&) = delete;
    LogStream& operator=(LogStream&&) = delete;
    /// Writes the line. Only the cancellation of the thread leaves it.
    ~LogStream() noexcept(false);

    /// Adds @p item and a space.
    template <typename T>
    LogStream& operator<<(const T& item)
    {
        if constexpr (std::is_convertible_v<const T&, const char*>) {
            m_record.text += QString::fromUtf8(item);
        } else {
            QTextStream(&m_record.text) << item;
        }
        m_record.text += QLatin1Char(' ');
        return *this;
    }

private:
    LogRecord m_record;
    bool m_active = true;
};

/// Writes lines from one call site. Thread-safe.
class VELTOR_UTILS_EXPORT LoggerMessager
{
public:
    /// Lines of this level and place. @p file and @p function are UTF-8, copied with each line, and null
    /// counts as empty; @p line is 0 when not known.
    LoggerMessager(LogLevel level, const char* file, int line, const char* function) noexcept;

    /// Writes @p text as one line.
    void write(const QString& text) const;

    /// A stream that writes one line when it ends.
    [[nodiscard]] LogStream write() const;

private:
    [[nodiscard]] LogRecord record(const QString& text) const;

    LogLevel m_level;
    int m_line;
    const char* m_file;
    const char* m_function;
};

/// Writes lines that have no call site. Thread-safe.
class VELTOR_UTILS_EXPORT LoggerFacade
{
public:
    /// Writes @p text as one line.
    static void write(LogLevel level, const QString& text);
};

} // namespace veltor::logging
