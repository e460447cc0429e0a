#pragma once

#include <QCoreApplication>
#include <QThread>

#include <exception>
#include <utility>

/// Whether the caller waits until the call has run.
enum class Wait : quint8 { Yes, No };

/// Runs `callable` on the main thread (the thread of the QCoreApplication), whose event loop must
/// be running. Calls from one thread run in the order they were sent. On the main thread itself
/// `Wait::Yes` runs it at once and `Wait::No` queues it. What it raises must not leave it; where it
/// may raise, callOnMainThread() carries that to the caller.
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

/// Runs `callable` on the main thread, waits until it has run, and raises here what it raised
/// there: an event loop must not be passed by an exception.
/// Any thread; otherwise as performOnMainThread() with `Wait::Yes`.
template <typename Callable>
void callOnMainThread(Callable callable)
{
    std::exception_ptr raised;
    performOnMainThread(
        [&callable, &raised] {
            try {
                callable();
            } catch (...) {
                raised = std::current_exception();
            }
        },
        Wait::Yes);
    if (raised) {
        std::rethrow_exception(raised);
    }
}
