#pragma once

#include <veltor/Export.h>

class QThread;

namespace veltor::concurrent {

class Task;

/// Runs @p task in a thread of its own, which ends with it. The task is deleted when the thread ends, the
/// thread object by the event loop of the calling thread. Called in the task's thread.
/// @throws err::NullArgument when @p task is null
VELTOR_UTILS_EXPORT void runInNewThread(Task* task);

/// Runs @p task in @p thread, which runs an event loop now or later. Thread and task stay the caller's.
/// Called in the task's thread.
/// @throws err::NullArgument when @p task or @p thread is null
VELTOR_UTILS_EXPORT void runInThread(Task* task, QThread* thread);

} // namespace veltor::concurrent
