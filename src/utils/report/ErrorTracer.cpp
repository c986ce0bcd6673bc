// Collects errors: equal ones in one entry, a bounded number of entries.

#include <veltor/err/ErrorTracer.h>

#include "CheckedOutput.h"
#include "ErrorReport.h"

#include <veltor/err/ConcurrentNestedException.h>
#include <veltor/err/HandleCurrentException.h>

#include <QtCore/QBuffer>
#include <QtCore/QCoreApplication>

#include <algorithm>
#include <array>
#include <functional>
#include <mutex>
#include <unordered_map>
#include <utility>

namespace veltor::err {
namespace {

using Report = utils::ErrorReport;

constexpr std::size_t severities = Report::severities;

/// What makes errors equal.
struct Kind
{
    ErrorSeverity severity;
    QString text;
    QStringList causes;

    bool operator==(const Kind& other) const
    {
        return severity == other.severity && text == other.text && causes == other.causes;
    }
};

struct KindHash
{
    std::size_t operator()(const Kind& kind) const
    {
        std::size_t hash = std::hash<QString>()(kind.text) + static_cast<std::size_t>(kind.severity);
        for (const QString& cause : kind.causes) {
            hash = hash * 31 + std::hash<QString>()(cause);
        }
        return hash;
    }
};

std::size_t indexOf(ErrorSeverity severity)
{
    return static_cast<std::size_t>(severity);
}

ErrorSeverity known(ErrorSeverity severity)
{
    return indexOf(severity) < severities ? severity : ErrorSeverity::Error;
}

QString cut(const QString& text, int length)
{
    if (text.size() <= length) {
        return text;
    }
    QString head = text.left(length);
    if (!head.isEmpty() && head.at(head.size() - 1).isHighSurrogate()) {
        head.chop(1);
    }
    return head + QChar(0x2026);
}

/// The exception being handled in words; empty for a carrier, which says nothing of its own.
QString wordsOfCurrent()
{
    try {
        throw;
    } catch (const ConcurrentNestedException& carrier) {
        return carrier.nested_ptr() ? QString()
                                    : QCoreApplication::translate("ErrorTracer", "Неизвестная ошибка");
    } catch (const std::exception& exception) {
        const QString words = QString::fromUtf8(exception.what());
        return words.isEmpty() ? QCoreApplication::translate("ErrorTracer", "Ошибка без описания") : words;
    } catch (...) {
        return QCoreApplication::translate("ErrorTracer", "Неизвестная ошибка");
    }
}

} // namespace

QString ErrorSource::text() const
{
    QString place = file;
    if (line > 0) {
        place += file.isEmpty() ? QCoreApplication::translate("ErrorTracer", "строка %1").arg(line)
                                : QStringLiteral(":%1").arg(line);
    }
    const bool isBoth = !place.isEmpty() && !feature.isEmpty();
    return place + (isBoth ? QStringLiteral(", ") : QString()) + feature;
}

class ErrorTracer::Private
{
public:
    explicit Private(const Limits& limits)
        : m_limits{std::max(limits.kinds, 0), std::max(limits.sources, 0), std::max(limits.textLength, 0),
                   std::max(limits.causes, 0)}
    {}

    void add(ErrorSeverity severity, const QString& text, const ErrorSource& source,
             const QStringList& causes)
    {
        Kind kind{known(severity), cut(text, m_limits.textLength), {}};
        for (const QString& cause : causes) {
            if (!cause.isEmpty() && kind.causes.size() < m_limits.causes) {
                kind.causes << cut(cause, m_limits.textLength);
            }
        }
        const std::size_t index = indexOf(kind.severity);
        const std::lock_guard lock(m_mutex);
        if (const auto found = m_kinds.find(kind); found != m_kinds.end()) {
            count(m_entries[found->second], source);
        } else if (m_kept[index] < m_limits.kinds) {
            addEntry(std::move(kind), source);
            ++m_kept[index];
        }
        ++m_counts[index];
    }

    void clear()
    {
        Report former;
        std::unordered_map<Kind, std::size_t, KindHash> kinds;
        const std::lock_guard lock(m_mutex);
        std::swap(former.entries, m_entries);
        std::swap(kinds, m_kinds);
        m_counts = {};
        m_kept = {};
    }

    [[nodiscard]] Report report() const
    {
        const std::lock_guard lock(m_mutex);
        Report report{m_entries, m_counts, m_counts};
        for (const Entry& entry : m_entries) {
            report.notKept[indexOf(entry.severity)] -= entry.count;
        }
        return report;
    }

    [[nodiscard]] std::array<quint64, severities> counts() const
    {
        const std::lock_guard lock(m_mutex);
        return m_counts;
    }

private:
    /// What may throw comes before what changes.
    void addEntry(Kind&& kind, const ErrorSource& source)
    {
        Entry entry;
        entry.severity = kind.severity;
        entry.text = kind.text;
        entry.causes = kind.causes;
        count(entry, source);
        const auto place = m_kinds.emplace(std::move(kind), m_entries.size()).first;
        try {
            m_entries.push_back(std::move(entry));
        } catch (...) {
            m_kinds.erase(place);
            throw;
        }
    }

    void count(Entry& entry, const ErrorSource& source) const
    {
        if (!source.file.isEmpty() || source.line > 0 || !source.feature.isEmpty()) {
            if (entry.sources.size() < static_cast<std::size_t>(m_limits.sources)) {
                entry.sources.push_back({cut(source.file, m_limits.textLength), source.line,
                                         cut(source.feature, m_limits.textLength)});
            } else {
                ++entry.moreSources;
            }
        }
        ++entry.count;
    }

    const Limits m_limits;
    mutable std::mutex m_mutex; // guards the rest
    std::vector<Entry> m_entries;
    std::unordered_map<Kind, std::size_t, KindHash> m_kinds; // to the entry's place
    std::array<quint64, severities> m_counts{};
    std::array<int, severities> m_kept{}; // entries
};

ErrorTracer::ErrorTracer()
    : ErrorTracer(Limits())
{}

ErrorTracer::ErrorTracer(const Limits& limits)
    : m_private(std::make_unique<Private>(limits))
{}

ErrorTracer::~ErrorTracer() = default;

void ErrorTracer::add(ErrorSeverity severity, const QString& text, const ErrorSource& source,
                      const QStringList& causes)
{
    m_private->add(severity, text, source, causes);
}

void ErrorTracer::addException(const std::exception_ptr& exception, const ErrorSource& source,
                               ErrorSeverity severity)
{
    if (!exception) {
        return;
    }
    try {
        std::rethrow_exception(exception);
    } catch (...) {
        addCurrentException(source, severity);
    }
}

void ErrorTracer::addCurrentException(const ErrorSource& source, ErrorSeverity severity)
{
    QStringList texts;
    handleCurrentException([&texts](unsigned) {
        const QString words = wordsOfCurrent();
        if (!words.isEmpty()) {
            texts << words;
        }
        return true;
    });
    if (!texts.isEmpty()) {
        const QString first = texts.takeFirst();
        m_private->add(severity, first, source, texts);
    }
}

void ErrorTracer::clear()
{
    m_private->clear();
}

bool ErrorTracer::isEmpty() const
{
    return count() == 0;
}

quint64 ErrorTracer::count() const
{
    quint64 sum = 0;
    for (const quint64 count : m_private->counts()) {
        sum += count;
    }
    return sum;
}

quint64 ErrorTracer::count(ErrorSeverity severity) const
{
    return indexOf(severity) < severities ? m_private->counts()[indexOf(severity)] : 0;
}

quint64 ErrorTracer::notKept(ErrorSeverity severity) const
{
    return indexOf(severity) < severities ? m_private->report().notKept[indexOf(severity)] : 0;
}

std::optional<ErrorSeverity> ErrorTracer::worst() const
{
    const auto counts = m_private->counts();
    for (std::size_t i = severities; i-- > 0;) {
        if (counts[i] > 0) {
            return static_cast<ErrorSeverity>(i);
        }
    }
    return std::nullopt;
}

std::vector<ErrorTracer::Entry> ErrorTracer::entries() const
{
    return m_private->report().entries;
}

bool ErrorTracer::writeHtml(QIODevice& device, const QString& title) const
{
    utils::CheckedOutput output(device);
    m_private->report().writeHtml(output, title);
    return output.finish();
}

bool ErrorTracer::writeText(QIODevice& device, const QString& title) const
{
    utils::CheckedOutput output(device);
    m_private->report().writeText(output, title);
    return output.finish();
}

bool ErrorTracer::writeJson(QIODevice& device, const json::Format& format) const
{
    utils::CheckedOutput output(device);
    m_private->report().writeJson(output, format);
    return output.finish();
}

QString ErrorTracer::toHtml(const QString& title) const
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    m_private->report().writeHtml(buffer, title);
    return QString::fromUtf8(buffer.data());
}

QString ErrorTracer::toText(const QString& title) const
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    m_private->report().writeText(buffer, title);
    return QString::fromUtf8(buffer.data());
}

} // namespace veltor::err
