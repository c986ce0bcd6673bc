// One piece of work succeeds, one fails, one is cancelled: how that is told to who waits and to who watches.

#include <veltor/concurrent/CancellationToken.h>
#include <veltor/concurrent/NestedScope.h>
#include <veltor/concurrent/TaskResult.h>
#include <veltor/concurrent/TaskThreadPool.h>
#include <veltor/utils/Translation.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QLocale>

#include <array>
#include <cstdio>
#include <stdexcept>
#include <thread>

using namespace veltor::concurrent;

namespace {

/// Says who learns of an end by a handler's signals.
void watch(const char* name, const ProgressHandlerPtr& handler)
{
    //! [signals]
    QObject::connect(handler.get(), &ProgressHandler::successful,
                     [name] { std::printf("%s: signal successful\n", name); });
    QObject::connect(handler.get(), &ProgressHandler::error, // before canceled(), which an error emits too
                     [name] { std::printf("%s: signal error\n", name); });
    QObject::connect(handler.get(), &ProgressHandler::canceled,
                     [name] { std::printf("%s: signal canceled\n", name); });
    //! [signals]
}

/// Waits for the end and tells which it was.
void tell(const char* name, const TaskResult<int>& result)
{
    //! [wait]
    try {
        std::printf("%s: the value %d\n", name, result.get()); // waits
    } catch (const Canceled&) {
        std::printf("%s: given up\n", name); // somebody wanted that: nothing to complain of
    } catch (const std::exception& reason) {
        std::printf("%s: failed: %s\n", name, reason.what());
    }
    //! [wait]
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    veltor::utils::installTranslation(QLocale(QLocale::English));
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    TaskThreadPool pool(2);
    pool.pauseStarts(); // until all is connected
    //! [three]
    const auto done = run(pool, [] { return 42; });
    const auto failed = run(pool, []() -> int { throw std::runtime_error("no such map"); });
    const auto canceled = run(pool, [](NestedScope& scope) {
        while (scope.canWork()) { // until somebody cancels
            std::this_thread::yield();
        }
        return 0; // or throw: nobody sees it
    });
    //! [three]
    const std::array<ProgressHandlerPtr, 3> handlers{done.progressHandler(), failed.progressHandler(),
                                                     canceled.progressHandler()}; // kept, or nobody emits
    watch("done", handlers[0]);
    watch("failed", handlers[1]);
    watch("canceled", handlers[2]);
    pool.resumeStarts();
    canceled.cancel();
    tell("done", done);
    tell("failed", failed);
    tell("canceled", canceled);
    for (const auto& handler : handlers) {
        handler->waitForFinished(); // with its signals
    }
}
