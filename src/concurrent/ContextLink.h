#pragma once

#include "Post.h"

#include <QtCore/QObject>
#include <QtCore/QThread>

#include <memory>
#include <mutex>
#include <utility>

namespace veltor::concurrent {

/// A QObject as other threads may reach it: there until its destruction begins.
class ContextLink
{
public:
    /// In the thread of @p context, or in one that keeps it alive meanwhile.
    static std::shared_ptr<ContextLink> make(QObject* context)
    {
        auto link = std::make_shared<ContextLink>(context);
        link->m_connection =
            QObject::connect(context, &QObject::destroyed, posted([link] { link->clear(); }));
        return link;
    }

    explicit ContextLink(QObject* context)
        : m_context(context)
    {}

    /// Posts @p function to the thread of the context; when that is gone, destroys it and returns false. So
    /// it is when the context goes before its event loop comes to it.
    template <typename F>
    bool post(F function)
    {
        const std::lock_guard lock(m_mutex);
        if (m_context) {
            concurrent::post(m_context, std::move(function));
        }
        return m_context != nullptr;
    }

    /// The context exists, and lives in the calling thread.
    bool isHere()
    {
        const std::lock_guard lock(m_mutex);
        return m_context && m_context->thread() == QThread::currentThread();
    }

    /// No longer needed. Any thread.
    void release()
    {
        const std::lock_guard lock(m_mutex);
        if (m_context) {
            QObject::disconnect(m_connection);
        }
    }

private:
    /// Waits for a post that is under way, whose event the context's destructor then removes.
    void clear()
    {
        const std::lock_guard lock(m_mutex);
        m_context = nullptr;
    }

    std::mutex m_mutex; // guards m_context, and its life while a call is posted
    QObject* m_context;
    QMetaObject::Connection m_connection; // set before the link is shared
};

} // namespace veltor::concurrent
