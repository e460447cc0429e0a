#include "SignalWatcher.h"

#include "Interruption.h"

#include <QEventLoop>
#include <QProcess>

#include <gtest/gtest.h>

#include <unistd.h>

#include <csignal>
#include <thread>

TEST(SignalWatcherTest, theFirstSignalAsksToStop)
{
    for (const int number : {SIGINT, SIGTERM}) {
        Interruption interruption;
        const SignalWatcher watcher(interruption);
        QEventLoop loop;
        QObject::connect(&interruption, &Interruption::requested, &loop, &QEventLoop::quit);
        ASSERT_EQ(kill(getpid(), number), 0);
        loop.exec();
        EXPECT_TRUE(interruption.isRequested());
        EXPECT_EQ(watcher.firstSignal(), number);
    }
}

TEST(SignalWatcherTest, whatIsDoneAtASignalHasAStackForSignals)
{
    Interruption interruption;
    const SignalWatcher watcher(interruption);
    stack_t stack{};
    QEventLoop loop;
    QObject::connect(
        &interruption,
        &Interruption::requested,
        &loop,
        [&stack] { sigaltstack(nullptr, &stack); },
        Qt::DirectConnection);
    QObject::connect(&interruption, &Interruption::requested, &loop, &QEventLoop::quit);
    ASSERT_EQ(kill(getpid(), SIGTERM), 0);
    loop.exec();
    EXPECT_NE(stack.ss_sp, nullptr);
    EXPECT_EQ(stack.ss_flags & SS_DISABLE, 0);
}

TEST(SignalWatcherTest, whoIsAskedToStopInAnotherWayHasNoSignalToTellOf)
{
    Interruption interruption;
    const SignalWatcher watcher(interruption);
    interruption.request();
    EXPECT_EQ(watcher.firstSignal(), 0);
    EXPECT_EQ(SignalWatcher::exitStatus(SIGTERM), 143);
}

TEST(SignalWatcherTest, aProgramThatIsStartedMeanwhileIsEndedByTheSignals)
{
    Interruption interruption;
    const SignalWatcher watcher(interruption);
    for (const QString& name : {QStringLiteral("INT"), QStringLiteral("TERM")}) {
        QProcess program;
        program.start(QStringLiteral("sh"),
                      {QStringLiteral("-c"), QStringLiteral("kill -%1 $$; exit 0").arg(name)});
        ASSERT_TRUE(program.waitForFinished());
        EXPECT_EQ(program.exitStatus(), QProcess::CrashExit) << name.toStdString();
    }
    EXPECT_FALSE(interruption.isRequested());
}

TEST(SignalWatcherTest, theSecondSignalEndsTheProcessAsIfNobodyWatched)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto interruptedTwice = [] {
        Interruption interruption;
        const SignalWatcher watcher(interruption);
        kill(getpid(), SIGTERM);
        while (!interruption.isRequested()) {
            std::this_thread::yield();
        }
        kill(getpid(), SIGTERM);
        pause();
    };
    EXPECT_EXIT(interruptedTwice(), testing::KilledBySignal(SIGTERM), "");
}

TEST(SignalWatcherTest, afterwardsTheSignalsHaveTheirUsualEffect)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto unwatched = [] {
        {
            Interruption interruption;
            const SignalWatcher watcher(interruption);
        }
        kill(getpid(), SIGINT);
    };
    EXPECT_EXIT(unwatched(), testing::KilledBySignal(SIGINT), "");
}
