#pragma once

#include <veltor/Export.h>
#include <veltor/json/JsonFormatter.h>

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <cstddef>
#include <exception>
#include <memory>
#include <optional>
#include <vector>

QT_BEGIN_NAMESPACE
class QIODevice;
QT_END_NAMESPACE

namespace veltor::err {

/// How bad an entry of an ErrorTracer is.
enum class ErrorSeverity
{
    Note = 0,    ///< worth knowing, nothing is wrong
    Warning = 1, ///< something was left out or guessed; the operation went on
    Error = 2,   ///< something was not done
    Fatal = 3,   ///< what ended the operation
};

/// Where an error comes from. Each part may be empty. A plain value.
struct ErrorSource
{
    QString file{};    ///< as the user is to see it
    int line = 0;      ///< from 1; 0 and less: unknown
    QString feature{}; ///< what in the file: a feature's name, a field, a layer

    /// The three in one line: `roads.geojson:12, Lena`. Empty without any.
    [[nodiscard]] VELTOR_UTILS_EXPORT QString text() const;
};

/// Collects the errors of a long operation and shows them, as HTML, text or JSON.
///
///     err::ErrorTracer errors;
///     for (const Feature& feature : features) {
///         try {
///             convert(feature);
///         } catch (const std::exception&) {
///             errors.addCurrentException({path, feature.line(), feature.name()});
///         }
///     }
///     if (!errors.isEmpty()) {
///         browser->setHtml(errors.toHtml(title));
///     }
///
/// Errors are equal when severity, text and causes are; where they come from may differ. Equal ones make one
/// entry with a count and the first of their sources. Of each severity the first kinds of errors are kept, so
/// that no number of notes hides what was fatal; what comes then is counted. So memory is bounded by the
/// Limits, however many errors there are.
///
/// Thread-safe: any number of threads may add, and others look meanwhile. Nothing of the caller's runs
/// while a lock is held, devices included. All may throw std::bad_alloc, and then have changed nothing.
class VELTOR_UTILS_EXPORT ErrorTracer
{
public:
    /// What is kept. A plain value; negative numbers count as 0.
    struct Limits
    {
        int kinds = 1000;      ///< different errors of each severity
        int sources = 20;      ///< of each of them
        int textLength = 4000; ///< UTF-16 units of each text and source; longer ones end in an ellipsis
        int causes = 16;       ///< of an error; those farther inside are left out
    };

    /// Equal errors.
    struct Entry
    {
        ErrorSeverity severity = ErrorSeverity::Error; ///< how bad
        QString text;                                  ///< what went wrong
        QStringList causes;                            ///< why, each the cause of the one before
        quint64 count = 0;                             ///< how often
        std::vector<ErrorSource> sources;              ///< the first ones, in the order in which they came
        quint64 moreSources = 0;                       ///< how many sources are not among them
    };

    /// Keeps what Limits says by itself.
    ErrorTracer();
    /// @param limits  how much is kept
    explicit ErrorTracer(const Limits& limits);
    ~ErrorTracer();
    ErrorTracer(const ErrorTracer&) = delete;
    ErrorTracer& operator=(const ErrorTracer&) = delete;

    /// Adds an error.
    /// @param severity  a value of none of these counts as ErrorSeverity::Error
    /// @param text      for the user; of several lines if need be
    /// @param source    where it happened; an empty one is counted and not listed
    /// @param causes    why, each the cause of the one before; empty ones are left out
    void add(ErrorSeverity severity, const QString& text, const ErrorSource& source = {},
             const QStringList& causes = {});
    /// Adds an exception, and those nested in it as its causes. A text is what() in UTF-8; one that
    /// is no std::exception is told as unknown. Carriers, as ConcurrentNestedException, are passed over.
    /// @param exception  that of a TaskError too; nothing is added of a null one
    /// @param source     where it happened
    /// @param severity   how bad it is
    void addException(const std::exception_ptr& exception, const ErrorSource& source = {},
                      ErrorSeverity severity = ErrorSeverity::Error);
    /// The same of the exception that is being handled; nothing outside of a catch handler.
    void addCurrentException(const ErrorSource& source = {}, ErrorSeverity severity = ErrorSeverity::Error);

    /// Forgets everything.
    void clear();

    /// True when nothing was added.
    [[nodiscard]] bool isEmpty() const;
    /// How many errors were added.
    /// @{
    [[nodiscard]] quint64 count() const;
    [[nodiscard]] quint64 count(ErrorSeverity severity) const;
    /// @}
    /// How many of them are in no entry.
    [[nodiscard]] quint64 notKept(ErrorSeverity severity) const;
    /// The greatest severity that was added; nothing when nothing was.
    [[nodiscard]] std::optional<ErrorSeverity> worst() const;
    /// The entries in the order in which the first of each came. A copy.
    [[nodiscard]] std::vector<Entry> entries() const;

    /// Writes a whole page: a heading, the sums, and nested lists of errors, their causes and sources, in the
    /// language of the messages. All texts are escaped; there is no script, and nothing is loaded from
    /// elsewhere. Browsers show it light or dark as the user likes; QTextBrowser shows it too.
    /// @param device  open for writing, in whatever state; the page goes there in pieces
    /// @param title   plain text; empty: a usual one
    /// @return false as soon as the device takes less than it was given, and when it cannot flush at the end;
    ///         its errorString() tells why, and what it holds is no page
    [[nodiscard]] bool writeHtml(QIODevice& device, const QString& title = {}) const;
    /// Writes the same as lines of text in UTF-8. Control characters and marks that turn the direction of
    /// writing come out as visible signs, here and in HTML, so that no text from outside commands a terminal.
    [[nodiscard]] bool writeText(QIODevice& device, const QString& title = {}) const;
    /// Writes the same as one JSON object, texts as they were given, by a JsonFormatter: `counts`, `notKept`
    /// and `entries`, whose members are named as in Entry. There are no boolean values in it, so that
    /// every parser takes it.
    [[nodiscard]] bool writeJson(QIODevice& device,
                                 const json::Format& format = json::JsonFormatter::formatIndented) const;

    /// What writeHtml() and writeText() write, as text.
    /// @{
    [[nodiscard]] QString toHtml(const QString& title = {}) const;
    [[nodiscard]] QString toText(const QString& title = {}) const;
    /// @}

private:
    class Private;
    std::unique_ptr<Private> m_private;
};

} // namespace veltor::err
