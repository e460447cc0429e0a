#include "MainThread.h"

#include <QList>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>

namespace
{

/// Runs the main event loop until the thread has ended.
void runUntilEnded(QThread& thread)
{
    QObject::connect(&thread, &QThread::finished, qApp, &QCoreApplication::quit);
    thread.start();
    QCoreApplication::exec();
    thread.wait();
}

TEST(MainThread, waitingOnTheMainThreadItselfRunsAtOnce)
{
    bool ran = false;
    performOnMainThread([&ran] { ran = true; }, Wait::Yes);
    EXPECT_TRUE(ran);
}

TEST(MainThread, notWaitingOnTheMainThreadRunsLater)
{
    bool ran = false;
    performOnMainThread([&ran] { ran = true; }, Wait::No);
    EXPECT_FALSE(ran);
    QCoreApplication::processEvents();
    EXPECT_TRUE(ran);
}

TEST(MainThread, aWorkersCallsRunOnTheMainThreadInTheirOrder)
{
    QList<int> order;
    std::atomic<bool> wasMain{false};
    const std::unique_ptr<QThread> thread(QThread::create([&order, &wasMain] {
        performOnMainThread([&order] { order.append(1); }, Wait::No);
        performOnMainThread(
            [&order, &wasMain] {
                order.append(2);
                wasMain = QThread::currentThread() == qApp->thread();
            },
            Wait::Yes);
        performOnMainThread([&order] { order.append(3); }, Wait::No);
    }));
    runUntilEnded(*thread);
    QCoreApplication::processEvents();
    EXPECT_TRUE(wasMain);
    EXPECT_EQ(order, (QList<int>{1, 2, 3}));
}

TEST(MainThread, aCallThatIsWaitedForRunsOnTheMainThread)
{
    std::atomic<bool> wasMain{false};
    std::atomic<bool> hadRun{false};
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        callOnMainThread([&wasMain] { wasMain = QThread::currentThread() == qApp->thread(); });
        hadRun = wasMain.load();
    }));
    runUntilEnded(*thread);
    EXPECT_TRUE(wasMain);
    EXPECT_TRUE(hadRun);
}

TEST(MainThread, whatACallRaisesOnTheMainThreadIsRaisedWhereItWasMade)
{
    QString caught;
    bool wentOn = false;
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        try {
            callOnMainThread([] { throw std::runtime_error("no answer"); });
            wentOn = true;
        } catch (const std::runtime_error& error) {
            caught = QString::fromUtf8(error.what());
        }
    }));
    runUntilEnded(*thread);
    EXPECT_EQ(caught, QStringLiteral("no answer"));
    EXPECT_FALSE(wentOn);
}

TEST(MainThread, aCallMadeOnTheMainThreadItselfRunsAtOnceAndRaises)
{
    bool ran = false;
    callOnMainThread([&ran] { ran = true; });
    EXPECT_TRUE(ran);
    const auto raise = [] { throw std::runtime_error("no answer"); };
    EXPECT_THROW(callOnMainThread(raise), std::runtime_error);
}

} // namespace
