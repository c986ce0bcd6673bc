#pragma once

#include "ThreadSanitizer.h"

#include <QtCore/QMetaObject>
#include <QtCore/QObject>

#include <utility>

namespace veltor::concurrent {

#ifdef VELTOR_THREAD_SANITIZER
/// A closure that Qt holds, on its way through an event queue or for a connection: the queue's lock, and who
/// still holds the closure, are out of the sanitizer's sight.
template <typename F>
class Posted
{
public:
    explicit Posted(F function)
        : m_function(std::move(function))
    {
        handOver(this);
    }
    Posted(Posted&& other) noexcept
        : m_function((seen(&other), std::move(other.m_function)))
    {
        handOver(this);
    }
    ~Posted() { seen(this); }

    template <typename... Args>
    auto operator()(Args&&... args)
        -> decltype(static_cast<void>(std::declval<F&>()(std::forward<Args>(args)...)))
    {
        seen(this);
        m_function(std::forward<Args>(args)...);
        handOver(this); // another thread may be the one that destroys the closure
    }

private:
    F m_function;
};

template <typename F>
Posted<F> posted(F function)
{
    return Posted<F>(std::move(function));
}
#else
template <typename F>
F posted(F function)
{
    return function;
}
#endif

/// Runs @p function in the thread of @p context, from its event loop unless @p type says otherwise; not
/// at all when the context is destroyed before.
template <typename F>
void post(QObject* context, F function, Qt::ConnectionType type = Qt::QueuedConnection)
{
    QMetaObject::invokeMethod(context, posted(std::move(function)), type);
}

} // namespace veltor::concurrent
