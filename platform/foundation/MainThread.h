#pragma once

#include <QCoreApplication>
#include <QThread>

#include <utility>

/// Whether the caller waits until the call has run.
enum class Wait : quint8 { Yes, No };

/// Runs `callable` on the main thread (the thread of the QCoreApplication), whose event loop must
/// be running. Calls from one thread run in the order they were sent. On the main thread itself
/// `Wait::Yes` runs it at once and `Wait::No` queues it.
/// Any thread. Never called with a lock held when waiting.
template <typename Callable>
void performOnMainThread(Callable callable, Wait wait)
{
    QCoreApplication* application = QCoreApplication::instance();
    Q_ASSERT_X(application != nullptr, "performOnMainThread", "there is no application object");
    if (wait == Wait::No) {
        QMetaObject::invokeMethod(application, std::move(callable), Qt::QueuedConnection);
    } else if (QThread::currentThread() == application->thread()) {
        callable();
    } else {
        QMetaObject::invokeMethod(application, std::move(callable), Qt::BlockingQueuedConnection);
    }
}
