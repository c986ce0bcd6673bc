// A program of its own: the global pool goes down at process exit with tasks running, queued, waiting and
// paused, with and without an application object. It fails by crashing, hanging or leaking.

#include <veltor/concurrent/Task.h>
#include <veltor/concurrent/TaskThreadPool.h>

#include <QtCore/QCoreApplication>

#include <cstring>
#include <future>
#include <optional>
#include <thread>

using namespace veltor::concurrent;

namespace {

class ExitTask : public Task
{
public:
    enum Kind
    {
        Busy,
        PausedKind,
        WaitingKind,
    };
    explicit ExitTask(Kind kind)
        : m_kind(kind)
    {}

protected:
    void onStart() override
    {
        if (m_kind == WaitingKind) {
            enterWaitingState();
            return;
        }
        if (m_kind == PausedKind) {
            pause();
        }
        while (waitWhilePaused()) {
            std::this_thread::yield();
        }
    }

private:
    const Kind m_kind;
};

} // namespace

int main(int argc, char** argv)
{
    const bool withApplication = argc > 1 && std::strcmp(argv[1], "application") == 0;
    std::optional<QCoreApplication> application;
    if (withApplication) {
        application.emplace(argc, argv);
    }
    TaskThreadPool* pool = TaskThreadPool::globalInstance();
    auto* first = new ExitTask(ExitTask::PausedKind);
    const auto handler = first->progressHandler();
    std::promise<void> paused;
    QObject::connect(handler.get(), &ProgressHandler::paused, [&paused] { paused.set_value(); });
    pool->start(first);
    for (int i = 0; i < 40; ++i) {
        pool->start(new ExitTask(ExitTask::Kind(i % 3)));
    }
    pool->startService(new ExitTask(ExitTask::WaitingKind));
    if (withApplication) { // no task starts without one
        paused.get_future().wait();
    }
    return 0;
}
