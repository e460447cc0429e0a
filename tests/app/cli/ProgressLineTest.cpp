#include "ProgressLine.h"

#include "TextLayout.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

ProgressState half()
{
    return {.activity = u"Converting"_s,
            .position = 5,
            .total = 10,
            .timeRemaining = u"00:00:17"_s,
            .name = u"IMG_1994.cr2"_s};
}

} // namespace

TEST(ProgressLineTest, showsActivityBarCountTimeAndName)
{
    EXPECT_EQ(ProgressLine::render(half(), 90),
              u"Converting  [############------------]  5/10  00:00:17  IMG_1994.cr2"_s);
}

TEST(ProgressLineTest, neverReachesTheLastColumnAtAnyWidth)
{
    ProgressState state = half();
    state.name = u"日本語の長い名前.cr2"_s;
    for (int columns = 1; columns <= 100; ++columns) {
        EXPECT_LT(TextLayout::displayWidth(ProgressLine::render(state, columns)), columns);
    }
}

TEST(ProgressLineTest, withoutKnownLengthThereIsNoBar)
{
    EXPECT_EQ(ProgressLine::render({.activity = u"Loading Data"_s,
                                    .position = 0,
                                    .total = 0,
                                    .timeRemaining = {},
                                    .name = {}},
                                   80),
              u"Loading Data"_s);
}

TEST(ProgressLineTest, namesCannotSteerTheTerminal)
{
    ProgressState state = half();
    state.name = u"a\u001b[2Jb"_s;
    EXPECT_TRUE(ProgressLine::render(state, 90).endsWith(u"  a[2Jb"_s));
}
