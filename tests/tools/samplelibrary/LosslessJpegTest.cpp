#include "LosslessJpeg.h"

#include "LosslessJpegReader.h"
#include "Noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace
{

void expectRoundTrip(const std::vector<quint16>& values, int width, int height)
{
    const auto read = LosslessJpegReader::read(LosslessJpeg::encode(values, width, height));
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->width, width);
    EXPECT_EQ(read->height, height);
    EXPECT_EQ(read->precision, 16);
    EXPECT_EQ(read->values, values);
}

/// Values whose differences have category c so often as frequencies[c] says.
std::vector<quint16> valuesWith(const std::vector<int>& frequencies, int width)
{
    std::vector<int> differences;
    for (size_t category = 0; category < frequencies.size(); ++category) {
        for (int i = 0; i < frequencies[category]; ++i) {
            differences.push_back(category == 0 ? 0 : (1 << (category - 1)));
        }
    }
    std::vector<quint16> values;
    for (size_t i = 0; i < differences.size(); ++i) {
        const size_t column = i % static_cast<size_t>(width);
        const int prediction = column >= 2 ? values[i - 2]
                               : i >= static_cast<size_t>(width)
                                   ? values[i - static_cast<size_t>(width)]
                                   : 32768;
        values.push_back(static_cast<quint16>(prediction + differences[i]));
    }
    return values;
}

} // namespace

TEST(LosslessJpegTest, everyValueComesBackAsItWas)
{
    std::vector<quint16> values;
    values.reserve(2048);
    for (int i = 0; i < 64 * 32; ++i) {
        values.push_back(
            static_cast<quint16>(512 + i * 3 + static_cast<int>(scatter(1, i, 0) % 40)));
    }
    expectRoundTrip(values, 64, 32);
}

TEST(LosslessJpegTest, anEvenTileNeedsHardlyAnyBytes)
{
    const std::vector<quint16> values(size_t{256} * 256, 512);
    expectRoundTrip(values, 256, 256);
    EXPECT_LT(LosslessJpeg::encode(values, 256, 256).size(), 256 * 256 / 8 + 64);
}

TEST(LosslessJpegTest, theWidestSwingsComeBackToo)
{
    std::vector<quint16> values;
    values.reserve(256);
    for (int i = 0; i < 16 * 16; ++i) {
        const quint16 extremes[] = {0, 65535, 32768, 32767, 1};
        values.push_back(extremes[scatter(2, i, 0) % 5]);
    }
    expectRoundTrip(values, 16, 16);
}

TEST(LosslessJpegTest, aDifferenceOfHalfTheRangeHasNoBitsOfItsOwn)
{
    expectRoundTrip({0, 0, 32768, 32768, 0, 0, 32768, 32768}, 4, 2);
}

TEST(LosslessJpegTest, codesAreNeverLongerThanSixteenBits)
{
    // Frequencies that grow like this make the deepest of all code trees.
    std::vector<int> frequencies{1, 1};
    while (frequencies.size() < 17) {
        frequencies.push_back(frequencies.back() + frequencies[frequencies.size() - 2]);
    }
    std::vector<quint16> values = valuesWith(frequencies, 64);
    values.resize(values.size() - values.size() % 128);
    expectRoundTrip(values, 64, static_cast<int>(values.size()) / 64);
}

TEST(LosslessJpegTest, noCodeConsistsOfOnesAlone)
{
    std::vector<quint16> values;
    values.reserve(4096);
    for (int i = 0; i < 64 * 64; ++i) {
        values.push_back(static_cast<quint16>(scatter(3, i, 0) >> 18));
    }
    const auto read = LosslessJpegReader::read(LosslessJpeg::encode(values, 64, 64));
    ASSERT_TRUE(read.has_value());
    // The share of all possible codes that is used stays below one by at least the longest code.
    int used = 0;
    for (size_t length = 1; length <= 16; ++length) {
        used += read->codesOfLength[length] << (16 - length);
    }
    EXPECT_LT(used, 1 << 16);
}
