#include "Tasks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

TEST(TasksTest, eachIsDoneOnce)
{
    for (const int count : {0, 1, 2, 5}) {
        std::vector<std::atomic<int>> done(static_cast<std::size_t>(count));
        Tasks::run(count, [&](int number) { ++done[static_cast<std::size_t>(number)]; });
        for (const auto& times : done) {
            EXPECT_EQ(times, 1);
        }
    }
}

TEST(TasksTest, bothAreDoneAtTheSameTimeAndTheFirstInTheCallingThread)
{
    std::latch reached(2);
    const auto task = [&] {
        reached.arrive_and_wait();
        return std::this_thread::get_id();
    };
    const auto [first, second] = Tasks::both(task, task);
    EXPECT_EQ(first, std::this_thread::get_id());
    EXPECT_NE(second, first);
}

TEST(TasksTest, whatTheLowestNumberThrowsIsThrownOnAfterAllEnded)
{
    std::atomic<int> ended = 0;
    const auto task = [&](int number) {
        if (number % 2 != 0) {
            throw std::runtime_error(std::to_string(number));
        }
        ++ended;
    };
    try {
        Tasks::run(6, task);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "1");
    }
    EXPECT_EQ(ended, 3);
}
