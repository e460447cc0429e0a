// Tells the thread sanitizer what Qt orders between threads.
//
// Debian's Qt is built without the sanitizer, so that it sees neither the locks of Qt's event
// queues nor those of its thread pools: whatever one thread hands to another looks like a race.
// This library is loaded before Qt (LD_PRELOAD, see the tsan preset), stands in front of the few
// functions of Qt through which this program's threads hand over, and says before each of them
// what is ordered after it (release) and behind it (acquire).
//
// A call through QMetaObject::invokeMethod and a runnable of a pool are paired each with its own
// caller. Signals are not told apart: a queued call of a slot counts as being after every signal
// emitted before it, since Qt does not say from outside which connections are queued. A race is
// therefore missed when a signal happens to lie between its two accesses.

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QMetaObject>
#include <QThread>
#include <QThreadPool>

#include <dlfcn.h>

#include <functional>
#include <future>
#include <utility>

extern "C" {
// The sanitizer's runtime; absent in the other programs that a test starts.
__attribute__((weak)) void __tsan_acquire(void* address);
__attribute__((weak)) void __tsan_release(void* address);
}

namespace
{

char signalsEmitted; ///< its address stands for every signal emitted so far

void release(void* address)
{
    if (__tsan_release != nullptr) {
        __tsan_release(address);
    }
}

void acquire(void* address)
{
    if (__tsan_acquire != nullptr) {
        __tsan_acquire(address);
    }
}

/// Qt's own function of that mangled name.
template <typename Function>
Function original(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

bool acquireSignals(void** data)
{
    if (static_cast<QEvent*>(data[1])->type() == QEvent::MetaCall) {
        acquire(&signalsEmitted);
    }
    return false; // the event goes its way
}

[[maybe_unused]] const bool registered =
    QInternal::registerCallback(QInternal::EventNotifyCallback, &acquireSignals);

/// A callable as Qt keeps it, run after all that its caller did before handing it over, and before
/// all that a caller who waits for it does next.
class HandedOver final : public QtPrivate::QSlotObjectBase
{
public:
    explicit HandedOver(QtPrivate::QSlotObjectBase* callable)
        : QSlotObjectBase(&HandedOver::perform)
        , m_callable(callable)
    {
    }

private:
    static void
    perform(int which, QSlotObjectBase* base, QObject* receiver, void** arguments, bool* /*same*/)
    {
        auto* const self = static_cast<HandedOver*>(base);
        if (which == Call) {
            acquire(self->m_callable);
            self->m_callable->call(receiver, arguments);
            release(self->m_callable);
        } else if (which == Destroy) {
            acquire(self->m_callable);
            self->m_callable->destroyIfLastRef();
            delete self;
        }
    }

    QSlotObjectBase* m_callable;
};

} // namespace

bool QMetaObject::invokeMethodImpl(QObject* object,
                                   QtPrivate::QSlotObjectBase* slot,
                                   Qt::ConnectionType type,
                                   void* result)
{
    static const auto next = original<decltype(&QMetaObject::invokeMethodImpl)>(
        "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14Connection"
        "TypeEPv");
    auto* const handedOver = new HandedOver(slot);
    handedOver->ref(); // outlives the call, so that its address stands for nothing else meanwhile
    release(slot);
    const bool done = next(object, handedOver, type, result);
    if (type == Qt::BlockingQueuedConnection) {
        acquire(slot);
    }
    handedOver->destroyIfLastRef();
    return done;
}

void QMetaObject::activate(QObject* sender, const QMetaObject* kind, int signal, void** arguments)
{
    using Function = void (*)(QObject*, const QMetaObject*, int, void**);
    static const auto next = original<Function>("_ZN11QMetaObject8activateEP7QObjectPKS_iPPv");
    release(&signalsEmitted);
    next(sender, kind, signal, arguments);
}

QThread* QThread::createThreadImpl(std::future<void>&& callable)
{
    using Function = QThread* (*)(std::future<void> &&);
    static const auto next = original<Function>("_ZN7QThread16createThreadImplEOSt6futureIvE");
    return next(std::async(std::launch::deferred, [run = std::move(callable)]() mutable {
        run.get();
        release(QThread::currentThread());
        release(&signalsEmitted); // its signal "finished" comes next
    }));
}

bool QThread::wait(QDeadlineTimer deadline)
{
    using Function = bool (*)(QThread*, QDeadlineTimer);
    static const auto next = original<Function>("_ZN7QThread4waitE14QDeadlineTimer");
    const bool ended = next(this, deadline);
    if (ended) {
        acquire(this);
    }
    return ended;
}

void QThreadPool::start(std::function<void()> callable, int priority)
{
    using Function = void (*)(QThreadPool*, std::function<void()>, int);
    static const auto next = original<Function>("_ZN11QThreadPool5startESt8functionIFvvEEi");
    auto* const handOver = new char;
    std::function<void()> handedOver = [this, handOver, run = std::move(callable)]() mutable {
        acquire(handOver);
        delete handOver;
        run();
        run = nullptr; // what it holds goes with it, before the pool counts as done
        release(this);
    };
    release(handOver);
    next(this, std::move(handedOver), priority);
}

bool QThreadPool::waitForDone(int milliseconds)
{
    using Function = bool (*)(QThreadPool*, int);
    static const auto next = original<Function>("_ZN11QThreadPool11waitForDoneEi");
    const bool done = next(this, milliseconds);
    if (done) {
        acquire(this);
    }
    return done;
}
