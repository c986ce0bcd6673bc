// Backtraces as text, and the report of a crash through the log.

#include <veltor/utils/Tracer.h>

#include "platform/CrashSignals.h"
#include "platform/StackCapture.h"
#include "platform/Symbols.h"

#include <QtCore/QFile>

#include <algorithm>
#include <type_traits>

namespace veltor::utils {
namespace {

// The crash message's call site as readers of the log know it.
constexpr char crashFile[] = "Tracer.cpp";
constexpr char crashFunction[] = "void veltor::utils::signal_handler(int)";
constexpr int crashLine = 11;

constexpr int loggedFrames = 64;
// Of a crash: the handler and the capture take their share of the frames.
constexpr int crashFrames = loggedFrames - 8;
constexpr int maxCapture = 65535;

template <typename Text>
QString fromNative(const Text& path)
{
    if constexpr (std::is_same_v<typename Text::value_type, wchar_t>) {
        return QString::fromStdWString(path);
    } else {
        return QFile::decodeName(QByteArray(path.data(), static_cast<int>(path.size())));
    }
}

QString frameLine(const void* frame)
{
    // Sign-extended, as the symbol engine of 32-bit Windows wants it.
    const auto address = static_cast<std::uint64_t>(reinterpret_cast<std::intptr_t>(frame));
    const platform::CodeLocation location = platform::locateCode(address);
    const QString symbol =
        location.symbol.empty()
            ? QStringLiteral("[0x%1]").arg(static_cast<quint64>(address), 0, 16)
            : QString::fromLocal8Bit(location.symbol.data(), static_cast<int>(location.symbol.size()));
    return symbol + QLatin1String(": ") +
           (location.module.empty() ? QStringLiteral("[unknown file]") : fromNative(location.module));
}

void logFrames(logging::LogLevel level, const QVector<void*>& frames)
{
    logging::LoggerFacade::write(level, QLatin1String("Backtrace:\n") +
                                            Tracer::symbols(frames).join(QLatin1Char('\n')));
}

void logCrash(const platform::CrashState& crash)
{
    try {
        logging::LoggerMessager(logging::LogLevel::Error, crashFile, crashLine, crashFunction)
            .write(QStringLiteral("Program crashed with signal %1").arg(crash.signal));
        const int known = crash.frameCount;
        QVector<void*> frames(std::min(known, crashFrames));
        std::copy_n(crash.frames, frames.size(), frames.begin());
        logFrames(logging::LogLevel::Error, frames);
    } catch (...) {
        // No memory, perhaps. Whatever it was, the process ends as promised.
    }
}

} // namespace

// Neither this function nor logBacktrace() may be inlined: each is a frame that others count on.
Q_NEVER_INLINE QVector<void*> Tracer::backtrace(int maxFrames)
{
    QVector<void*> frames(std::clamp(maxFrames, 0, maxCapture));
    frames.resize(platform::captureStack(frames.data(), static_cast<int>(frames.size())));
    return frames;
}

QStringList Tracer::symbols(const QVector<void*>& frames)
{
    QStringList lines;
    lines.reserve(frames.size());
    for (const void* frame : frames) {
        lines << frameLine(frame);
    }
    return lines;
}

Q_NEVER_INLINE void Tracer::logBacktrace(logging::LogLevel level, int skip)
{
    QVector<void*> frames = backtrace(loggedFrames);
    const int callers = std::max(skip, 0);
    if (callers < frames.size() - 2) {
        frames.remove(0, callers + 2);
    }
    logFrames(level, frames);
}

void Tracer::registerSignalHandler()
{
    platform::installCrashHandler(logCrash);
}

} // namespace veltor::utils
