#pragma once

#include <veltor/concurrent/Task.h>
#include <veltor/concurrent/TaskThreadPool.h>

#include <QtCore/QString>

#include <exception>
#include <memory>
#include <stdexcept>
#include <vector>

namespace veltor::concurrent {

class GroupRun;

/// The failure of one part of a group: what a group's error throws, with a further failure nested in it, and
/// the last part's own exception as the innermost; err::handleCurrentException() walks through them.
class VELTOR_UTILS_EXPORT PartFailed : public std::runtime_error
{
public:
    /// what() is the part's text, or its number from 1 when it has none, a colon, and the reason.
    PartFailed(int part, const QString& text, std::exception_ptr reason);
    ~PartFailed() override;

    /// The part's number in its group, from 0.
    [[nodiscard]] int part() const noexcept { return m_part; }
    /// What the part's work threw; never null.
    [[nodiscard]] std::exception_ptr reason() const noexcept { return m_reason; }

private:
    int m_part;
    std::exception_ptr m_reason;
};

/// A task that consists of others: its parts run on a pool, as many at once as may, or without a pool one
/// after another in the group's own thread; each when the parts that it depends on are done. To the outside
/// it is one task, with one progress (GroupProgressHandler), one end, one pause and one cancellation. A part
/// may be a group.
///
/// The end comes when all parts have ended, successful when all were. When a part fails, the policy decides
/// whether the others go on; parts that depend on it never begin, and end as cancelled. The group's error is
/// a PartFailed. A part that was cancelled by itself counts as a failure without an error: when there is
/// no other, the group ends as cancelled.
///
/// Pausing: the group enters its paused state at once. No further part begins, and those that run are asked
/// to pause. Cancelling asks the running parts, and is over when they have ended; parts that have not begun
/// end as cancelled. Both reach the parts from any thread, through the group's handler.
///
/// Ownership: the group owns its parts; those that it has handed to a pool belong to that. A group that is
/// destroyed before its end, with its pool for instance, asks the running parts to cancel, and does not wait
/// for those that a pool runs.
///
/// Threads: as Task; the parts are added, and the settings made, before the start, in the group's thread.
class VELTOR_UTILS_EXPORT GroupTask : public Task
{
    Q_OBJECT

public:
    /// What happens when a part fails.
    enum class Policy : quint8
    {
        StopAtFirstError, ///< the others are cancelled, and waited for
        CollectErrors,    ///< those that do not depend on it go on
    };

    /// A group without parts; StopAtFirstError, without a pool.
    explicit GroupTask(QObject* parent = nullptr);
    ~GroupTask() override;

    /// Adds a part. It lives in the group's thread, was not started, and belongs to the group from now on.
    /// Parts that may run at once begin in the order in which they were added.
    /// @param task    not null
    /// @param weight  its share in the progress beside the others', not negative, finite
    /// @param text    names it to the user, in messages and errors; may be empty
    /// @return its number, from 0
    /// @throws err::NullArgument when @p task is null, err::UnexpectedValue for another weight,
    ///         err::UnsupportedOperation for a task that cannot be a part, and after the start; the task
    ///         stays the caller's then
    int add(Task* task, double weight = 1, const QString& text = {});
    /// @p part begins only when @p on is done.
    /// @throws err::OutOfRange when there is no such part; err::UnsupportedOperation, with the names, when
    ///         the parts would wait for each other in a circle, and after the start
    void addDependency(int part, int on);
    /// The number of parts.
    [[nodiscard]] int partCount() const;

    /// Runs the parts on @p pool, which stays until the group has ended; null for the group's own thread.
    void setPool(TaskThreadPool* pool);
    /// At most @p limit parts run at once, 1 for a sequence; below 1, the default, as many as the pool can.
    /// Without a pool it is always one.
    void setMaxRunning(int limit);
    /// StopAtFirstError at first.
    void setPolicy(Policy policy);

    /// Yes.
    [[nodiscard]] bool canCancel() const override;
    /// Yes; a part that does not heed a pause runs on to its end.
    [[nodiscard]] bool canPause() const override;
    /// With the parts that have not begun.
    void moveTaskToThread(QThread* thread) override;

protected:
    void onStart() override;
    void onContinue() override;
    void onCancelRequested() override;
    void onPauseRequested() override;

private:
    friend class GroupRun;

    void requireNotStarted() const;

    const std::shared_ptr<GroupRun> d;
};

/// Runs @p group, which belongs to the pool from now on, with its parts on the workers of @p pool. The group
/// itself occupies none, which a group that is given to TaskThreadPool::start() does all the time.
/// @return the group's handler
/// @throws err::NullArgument when @p group is null
VELTOR_UTILS_EXPORT std::shared_ptr<TaskProgressHandler> runGroup(TaskThreadPool& pool, GroupTask* group);
/// The same with a group of these parts, all of one weight, at most @p maxRunning of them at once; see
/// GroupTask.
VELTOR_UTILS_EXPORT std::shared_ptr<TaskProgressHandler>
runGroup(TaskThreadPool& pool, const std::vector<Task*>& parts, int maxRunning = 0);

} // namespace veltor::concurrent
