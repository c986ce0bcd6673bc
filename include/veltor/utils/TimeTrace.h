#pragma once

#include <veltor/Export.h>
#include <veltor/utils/SummaryTime.h>

#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <cstddef>
#include <vector>

QT_BEGIN_NAMESPACE
class QIODevice;
QT_END_NAMESPACE

namespace veltor::utils {

/// Records when each ScopedTimer of the process ran, on which thread and inside of which other, to be looked
/// at in a viewer of trace events, as browsers and Perfetto have one, or as text.
///
///     TimeTrace::start();
///     load();
///     TimeTrace::stop();
///     QFile file(path);
///     const bool written = file.open(QIODevice::WriteOnly) && TimeTrace::writeEvents(file);
///
/// Each span takes some 40 bytes of memory until the next start(). Thread-safe; a scope that has not ended
/// when the spans are asked for is not among them.
class VELTOR_UTILS_EXPORT TimeTrace
{
public:
    /// One run of one scope.
    struct Span
    {
        SummaryTime::OperationId operation; ///< the timer's
        int thread;        ///< threads are numbered from 1, in the order of their first span in the process
        int depth;         ///< the number of scopes around it on its thread, 0 for an outermost one
        qint64 beginNs;    ///< from start() on
        qint64 durationNs; ///< of the monotonic clock
    };

    /// Forgets all spans and records from now on.
    /// @param limit  how many spans are kept; what comes then is only counted, see dropped()
    static void start(std::size_t limit = 1000000);
    /// Records no more. Scopes that end later are left out; what was recorded stays.
    static void stop();

    /// What was recorded, by thread and then by beginning, a scope before those inside of it.
    [[nodiscard]] static std::vector<Span> spans();
    /// How many spans found no room since start().
    [[nodiscard]] static quint64 dropped();

    /// Writes the spans as a JSON object of trace events.
    /// @param device  open for writing; buffered, as QFile is
    /// @return false as soon as the device refuses something, and when it cannot flush at the end; its
    ///     errorString() tells why
    [[nodiscard]] static bool writeEvents(QIODevice& device);

    /// The spans as a tree of text for each thread: a line for all runs of an operation at one place, with
    /// their time, number, and a bar of their share in the thread's time. Empty without spans.
    [[nodiscard]] static QString flameText();
    /// Writes flameText(), unless it is empty, as one line of the log at level Info.
    static void logFlame();
};

} // namespace veltor::utils
