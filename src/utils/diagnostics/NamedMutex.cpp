// The named mutex, a face of the platform's named lock.

#include <veltor/utils/NamedMutex.h>

#include <veltor/logging/Logger.h>

#include "platform/NamedLock.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QThread>

namespace veltor::utils {
namespace {

constexpr unsigned YieldCount = 1000;
constexpr unsigned long SleepMs = 13;

NamedMutex::Result resultOf(platform::WaitResult result)
{
    switch (result) {
    case platform::WaitResult::Acquired:
        return NamedMutex::Result::Acquired;
    case platform::WaitResult::Abandoned:
        return NamedMutex::Result::Abandoned;
    case platform::WaitResult::Busy:
        return NamedMutex::Result::Busy;
    case platform::WaitResult::Failed:
        break;
    }
    return NamedMutex::Result::Failed;
}

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
    const bool opened = m_holder->open(name);
    if (!opened) {
        logging::LoggerMessager(logging::LogLevel::Error, "NamedMutex.cpp", __LINE__, Q_FUNC_INFO)
            .write(errorString());
    }
    return opened;
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

NamedMutex::Result NamedMutex::acquire()
{
    return resultOf(m_holder->lock());
}

NamedMutex::Result NamedMutex::tryAcquire(std::chrono::milliseconds limit)
{
    return resultOf(m_holder->lockFor(limit));
}

bool NamedMutex::lock()
{
    return acquire() == Result::Acquired;
}

bool NamedMutex::tryLock()
{
    return tryAcquire() == Result::Acquired;
}

bool NamedMutex::tryLockFor(std::chrono::milliseconds limit)
{
    return tryAcquire(limit) == Result::Acquired;
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

QString NamedMutex::errorString() const
{
    const platform::LockError& error = m_holder->error();
    if (error.code == 0) {
        return {};
    }
    const QString reason =
        error.code == platform::LockError::NoLock
            ? QCoreApplication::translate("NamedMutex", "не файл мьютекса, открытый для записи всем")
            : qt_error_string(error.code);
    return error.place.empty() ? reason : QString::fromStdString(error.place) + QLatin1String(": ") + reason;
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
