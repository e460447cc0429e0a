#include "SrgbTransfer.h"

#include "ImageBuilder.h"

#include <gtest/gtest.h>

TEST(SrgbTransferTest, endsAndMiddleAreThoseOfTheStandard)
{
    const SrgbTransfer& tables = SrgbTransfer::tables();
    EXPECT_EQ(tables.encoded(0), 0);
    EXPECT_EQ(tables.encoded(65535), 65535);
    EXPECT_EQ(tables.encodedByte(65535), 255);
    // Linear 0.5 is 0.735357 encoded; encoded 0.5 is 0.214041 linear.
    EXPECT_NEAR(tables.encoded(32768), 48192, 2);
    EXPECT_NEAR(tables.linear(32768), 14027, 2);
}

TEST(SrgbTransferTest, everyByteSurvivesTheWayToLightAndBack)
{
    const SrgbTransfer& tables = SrgbTransfer::tables();
    for (int byte = 0; byte < 256; ++byte) {
        const quint16 encoded = widened(static_cast<quint8>(byte));
        EXPECT_EQ(roundedByte(encoded), byte);
        EXPECT_EQ(tables.encodedByte(tables.linear(encoded)), byte);
    }
}

TEST(SrgbTransferTest, lighterStaysLighter)
{
    const SrgbTransfer& tables = SrgbTransfer::tables();
    for (int value = 1; value < 65536; ++value) {
        const auto here = static_cast<quint16>(value);
        const auto before = static_cast<quint16>(value - 1);
        ASSERT_LE(tables.encoded(before), tables.encoded(here));
        ASSERT_LE(tables.linear(before), tables.linear(here));
    }
}

TEST(SrgbTransferTest, convertedPictureHasTheWantedTransfer)
{
    const Bitmap linear =
        SrgbTransfer::converted(ImageBuilder::flat({3, 2}, 48192), Transfer::Linear);
    EXPECT_EQ(linear.transfer(), Transfer::Linear);
    EXPECT_NEAR(linear.row(1)[8], 32768, 2);
    EXPECT_TRUE(SrgbTransfer::converted(Bitmap(), Transfer::Linear).isNull());
}
