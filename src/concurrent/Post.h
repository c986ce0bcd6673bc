#pragma once

#include <QtCore/QMetaObject>
#include <QtCore/QObject>

#include <atomic>
#include <utility>

namespace veltor::concurrent {

/// A closure on its way through Qt's event queue. The release and acquire pair says here, in our own
/// code, what the queue's lock guarantees anyway: all that the sender wrote is seen by the receiver.
/// ThreadSanitizer cannot see that lock, since Qt's binaries are not instrumented.
template <typename F>
class Handoff
{
public:
    explicit Handoff(F function)
        : m_function(std::move(function))
    {
        publish();
    }
    Handoff(const Handoff& other)
        : m_function((other.receive(), other.m_function))
    {
        publish();
    }
    Handoff(Handoff&& other) noexcept
        : m_function((other.receive(), std::move(other.m_function)))
    {
        publish();
    }
    Handoff& operator=(const Handoff&) = delete;
    Handoff& operator=(Handoff&&) = delete;
    ~Handoff() { receive(); }

    void operator()()
    {
        receive();
        m_function();
        publish(); // the sender may be the one who destroys the closure
    }

private:
    void publish() noexcept { m_published.store(true, std::memory_order_release); }
    void receive() const noexcept { static_cast<void>(m_published.load(std::memory_order_acquire)); }

    F m_function;
    std::atomic<bool> m_published{false};
};

/// Runs @p function in the thread of @p context, from its event loop unless @p type says otherwise; not
/// at all when the context is destroyed before.
template <typename F>
void post(QObject* context, F function, Qt::ConnectionType type = Qt::QueuedConnection)
{
    QMetaObject::invokeMethod(context, Handoff<F>(std::move(function)), type);
}

} // namespace veltor::concurrent
