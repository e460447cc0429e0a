#include "Leb128.h"

#include <gtest/gtest.h>

#include <random>

namespace
{

constexpr int kNumbers = 300;

/// Of one to five bytes each.
QByteArray manyNumbers()
{
    std::mt19937 random(7);
    QByteArray bytes;
    for (int i = 0; i < kNumbers; ++i) {
        appendLeb128(bytes, random() >> (random() % 32U));
    }
    return bytes;
}

} // namespace

TEST(Leb128Test, steppingOverNumbersEndsWhereTheNextOneBegins)
{
    const QByteArray bytes = manyNumbers();
    Leb128Reader reader(bytes);
    for (int numbers = 0; numbers <= kNumbers; ++numbers) {
        Leb128Reader stepping(bytes);
        ASSERT_TRUE(stepping.skip(numbers));
        ASSERT_EQ(stepping.position(), reader.position()) << numbers;
        quint64 number = 0;
        ASSERT_EQ(reader.next(number), numbers < kNumbers);
    }
}

TEST(Leb128Test, moreNumbersThanThereAreCannotBeSteppedOver)
{
    const QByteArray bytes = manyNumbers();
    EXPECT_FALSE(Leb128Reader(bytes).skip(kNumbers + 1));
    EXPECT_FALSE(Leb128Reader(bytes.chopped(1)).skip(kNumbers)) << "the last one is cut off";
}
