#include <veltor/utils/NamedMutex.h>

#include "platform/NamedLock.h"

#include <QtCore/QThread>

namespace veltor::utils {
namespace {

constexpr unsigned YieldCount = 1000;
constexpr unsigned long SleepMs = 13;

} // namespace

NamedMutex::NamedMutex()
    : m_holder(std::make_unique<platform::NamedLock>())
{}

NamedMutex::~NamedMutex() = default;

bool NamedMutex::open(const std::string& name)
{
    close();
    return openImpl(name);
}

bool NamedMutex::openImpl(const std::string& name)
{
    return m_holder->open(name);
}

void NamedMutex::close()
{
    m_holder->close();
}

bool NamedMutex::isOpened() const
{
    return m_holder->isOpen();
}

bool NamedMutex::isClosed() const
{
    return !isOpened();
}

bool NamedMutex::lock()
{
    return m_holder->lock() == platform::WaitResult::Acquired;
}

bool NamedMutex::tryLock()
{
    return m_holder->tryLock() == platform::WaitResult::Acquired;
}

bool NamedMutex::unlock()
{
    return m_holder->unlock();
}

bool NamedMutex::enter()
{
    unsigned steps = 0;
    while (!lock()) {
        activeWait(steps);
    }
    return true;
}

void NamedMutex::activeWait(unsigned& steps)
{
    if (steps < YieldCount) {
        ++steps;
        QThread::yieldCurrentThread();
    } else {
        QThread::msleep(SleepMs);
    }
}

} // namespace veltor::utils
