#pragma once

// What ThreadSanitizer cannot see, since Qt's binaries are not instrumented: an event queue's lock and a
// thread's end order what lies before them and what comes after. Nothing in other builds.

#if defined(__SANITIZE_THREAD__)
#define VELTOR_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define VELTOR_THREAD_SANITIZER 1
#endif
#endif

#ifdef VELTOR_THREAD_SANITIZER
#include <sanitizer/tsan_interface.h>
#endif

namespace veltor::concurrent {

/// All that this thread did so far comes before what follows seen() of the same object.
inline void handOver([[maybe_unused]] const void* object) noexcept
{
#ifdef VELTOR_THREAD_SANITIZER
    __tsan_release(const_cast<void*>(object));
#endif
}

inline void seen([[maybe_unused]] const void* object) noexcept
{
#ifdef VELTOR_THREAD_SANITIZER
    __tsan_acquire(const_cast<void*>(object));
#endif
}

} // namespace veltor::concurrent
