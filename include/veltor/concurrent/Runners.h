#pragma once

#include <veltor/Export.h>

class QThread;

namespace veltor::concurrent {

class Task;

/// Runs @p task in a thread of its own, which ends with it. The task is deleted when the thread ends, the
/// thread object by the event loop of the calling thread. Called in the task's thread.
/// @throws err::NullArgument when @p task is null
/// @throws err::UnsupportedOperation when it has a parent, belongs to no thread, or was handed over before;
///         it stays the caller's
VELTOR_UTILS_EXPORT void runInNewThread(Task* task);

/// Runs @p task in @p thread, which runs an event loop now or later. Thread and task stay the caller's.
/// Called in the task's thread.
/// @throws err::NullArgument when @p task or @p thread is null
/// @throws err::UnsupportedOperation as runInNewThread()
VELTOR_UTILS_EXPORT void runInThread(Task* task, QThread* thread);

} // namespace veltor::concurrent
