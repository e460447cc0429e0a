#include "SignalWatcher.h"

#include "Interruption.h"

#include <QEventLoop>

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
    }
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
