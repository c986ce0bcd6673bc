#pragma once

#include "GroupPlan.h"

#include <veltor/concurrent/GroupProgressHandler.h>
#include <veltor/concurrent/GroupTask.h>

#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace veltor::concurrent {

/// A group on its way: its parts and how far they are. The connections to the parts hold it, so that a part
/// may end, in its thread, while the group goes in another; as it holds the parts' handlers in turn, it cuts
/// the connections where the group goes.
///
/// Parts begin, and parts that never began are destroyed, in the group's thread alone, in advance(); whatever
/// happens elsewhere is noted under the mutex and wakes that.
class GroupRun : public std::enable_shared_from_this<GroupRun>
{
public:
    struct Part
    {
        Task* task; // as long as the group owns it
        std::shared_ptr<TaskProgressHandler> handler;
        QString text;
        std::exception_ptr error;
        bool successful = false;
        bool canceled = false;
        bool heard = false; // its end
        std::vector<QMetaObject::Connection> connections = {};
    };

    explicit GroupRun(GroupTask* group);

    int add(Task* task, std::shared_ptr<TaskProgressHandler> handler, const QString& text);
    [[nodiscard]] std::vector<Task*> ownTasks();
    /// Begins what may begin, from the event loop of the group's thread.
    void wake();
    /// Nothing begins any more, and what runs is asked to cancel.
    void stop();
    /// Pauses or continues the group and its running parts, as was asked last.
    void follow();
    /// The group is being destroyed, in its thread.
    void detach();

    std::shared_ptr<GroupProgressHandler> progress;
    std::optional<TaskPoolRef> pool; // these three are settled before the start
    int maxRunning = 0;
    GroupTask::Policy policy = GroupTask::Policy::StopAtFirstError;
    std::mutex mutex; // guards what follows, and the group's life while an event is posted to it
    bool started = false;
    GroupPlan plan;
    std::vector<Part> parts;

private:
    static constexpr std::size_t none = ~std::size_t{};

    void advance();
    void begin();
    [[nodiscard]] std::size_t limit() const;
    [[nodiscard]] std::vector<Task*> takeNeedless();
    bool launch(std::size_t index, Task* task);
    void handOver(std::size_t index, Task* task);
    void watch(std::size_t index);
    void partStarted(TaskProgressHandler& handler) const;
    void partEnded(std::size_t index);
    [[nodiscard]] bool isPaused() const;
    [[nodiscard]] std::vector<std::shared_ptr<TaskProgressHandler>> running();
    void cancelRunning();
    void conclude();
    [[noreturn]] void throwFailures(std::size_t from);

    const std::shared_ptr<TaskCore> m_core; // the group's
    GroupTask* m_group;
    bool m_wakeUnderWay = false;
    bool m_begun = false;
    bool m_stopping = false;
    bool m_partCanceled = false;
    std::size_t m_starting = none;       // the part whose start() is on the stack of the group's thread
    std::vector<std::size_t> m_needless; // parts to be destroyed by the group
    std::vector<std::size_t> m_failures; // in the order of their ends
};

} // namespace veltor::concurrent
