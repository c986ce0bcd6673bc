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

/// Says what a handler's signals tell, in the main thread; ends the program after the last of @p running.
void watch(const char* name, const ProgressHandlerPtr& handler, int& running)
{
    QObject* const here = QCoreApplication::instance();
    //! [signals]
    QObject::connect(handler.get(), &ProgressHandler::successful, here,
                     [name] { std::printf("%s: signal successful\n", name); });
    QObject::connect(handler.get(), &ProgressHandler::error, here, // canceled() follows
                     [name] { std::printf("%s: signal error\n", name); });
    QObject::connect(handler.get(), &ProgressHandler::canceled, here,
                     [name] { std::printf("%s: signal canceled\n", name); });
    //! [signals]
    const auto ended = [&running] {
        if (--running == 0) {
            QCoreApplication::quit();
        }
    };
    QObject::connect(handler.get(), &ProgressHandler::finished, here, ended, Qt::QueuedConnection);
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
    int running = 3;
    watch("done", handlers[0], running);
    watch("failed", handlers[1], running);
    watch("canceled", handlers[2], running);
    pool.resumeStarts();
    canceled.cancel();
    tell("done", done);
    tell("failed", failed);
    tell("canceled", canceled);
    return QCoreApplication::exec(); // signals may come later than the value
}
