#include "RowBands.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <vector>

namespace
{

void expectEachRowOnce(int rows, int threads)
{
    std::vector<std::atomic<int>> seen(static_cast<std::size_t>(rows));
    RowBands::run(
        rows,
        [&](int from, int end) {
            EXPECT_EQ(from % 2, 0);
            for (int row = from; row < end; ++row) {
                ++seen[static_cast<std::size_t>(row)];
            }
        },
        threads);
    for (const auto& times : seen) {
        EXPECT_EQ(times, 1);
    }
}

} // namespace

TEST(RowBandsTest, everyRowIsWorkedOnOnceAndBandsBeginEven)
{
    for (const int rows : {1, 2, 63, 64, 129, 1000, 1001}) {
        for (const int threads : {0, 1, 2, 3, 7}) {
            expectEachRowOnce(rows, threads);
        }
    }
}

TEST(RowBandsTest, nothingIsDoneForNoRows)
{
    RowBands::run(0, [](int, int) { ADD_FAILURE(); });
}

TEST(RowBandsTest, whatABandThrowsIsThrownOnAfterAllEnded)
{
    std::atomic<int> ended = 0;
    const auto work = [&](int from, int end) {
        if (from > 0) {
            throw std::runtime_error("no memory");
        }
        ended += end - from;
    };
    EXPECT_THROW(RowBands::run(1000, work, 4), std::runtime_error);
    EXPECT_EQ(ended, 250);
}
