#pragma once

#include <veltor/concurrent/TaskProgressHandler.h>

#include <memory>

namespace veltor::concurrent {

/// One progress of several parts, each with its handler: what a GroupTask has, and what a task of another
/// kind may be given for parts of its own.
///
/// Its value is the sum of what each part has reached of its scale, by their weights, in this handler's own
/// range. It never goes back: of a part counts the farthest that it has come, and its end as the whole. Its
/// message is the part's text, a colon, and the part's message, of whichever part spoke last. Values and
/// messages that come faster than its thread delivers them are merged. Asking it to cancel asks the parts.
///
/// Threads: as ProgressHandler.
class VELTOR_UTILS_EXPORT GroupProgressHandler : public TaskProgressHandler
{
    Q_OBJECT

public:
    /// Shares the state of @p task; with none it has a state of its own.
    explicit GroupProgressHandler(Task* task);
    ~GroupProgressHandler() override;

    /// Counts @p part from now on, and keeps it.
    /// @param part    not null
    /// @param weight  of the part among the others, not negative, finite; when all are 0 they count alike
    /// @param text    names the part to the user; may be empty
    /// @throws err::NullArgument when @p part is null, err::UnexpectedValue for another weight
    void addPart(const ProgressHandlerPtr& part, double weight = 1, const QString& text = {});

private:
    class Private;
    const std::shared_ptr<Private> d;
};

} // namespace veltor::concurrent
