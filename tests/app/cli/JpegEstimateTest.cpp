#include "JpegEstimate.h"

#include "UserDefaults.h"

#include <QSize>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class JpegEstimateTest : public testing::Test
{
protected:
    JpegEstimateTest() { m_defaults.setVolatile(u"JpegQuality"_s, 0.8); }

    QTemporaryDir m_folder;
    UserDefaults m_defaults{m_folder.filePath(u"defaults"_s)};
};

} // namespace

TEST_F(JpegEstimateTest, theRangeHoldsAPhotoThatWasConverted)
{
    // A photo of 3648 by 2736 pixels took 1128819 bytes.
    const JpegEstimate::Range range = JpegEstimate::bytes({3648, 2736}, m_defaults);
    EXPECT_LT(range.lowest, 1128819);
    EXPECT_GT(range.highest, 1128819);
}

TEST_F(JpegEstimateTest, betterQualityIsEstimatedLarger)
{
    JpegEstimate::Range previous;
    for (const double quality : {0.0, 0.1, 0.37, 0.5, 0.8, 0.92, 1.0}) {
        m_defaults.setVolatile(u"JpegQuality"_s, quality);
        const JpegEstimate::Range range = JpegEstimate::bytes({4000, 3000}, m_defaults);
        EXPECT_GT(range.lowest, previous.lowest) << quality;
        EXPECT_GT(range.highest, previous.highest) << quality;
        previous = range;
    }
}

TEST_F(JpegEstimateTest, theOutputSizeCounts)
{
    const qint64 full = JpegEstimate::bytes({4000, 3000}, m_defaults).lowest;
    m_defaults.setVolatile(u"JpegOutputSize"_s, 2);
    EXPECT_NEAR(static_cast<double>(JpegEstimate::bytes({4000, 3000}, m_defaults).lowest),
                static_cast<double>(full) / 4,
                2);
    m_defaults.setVolatile(u"JpegOutputSize"_s, 4);
    m_defaults.setVolatile(u"LongLocked"_s, true);
    m_defaults.setVolatile(u"LongSide"_s, 2000);
    EXPECT_NEAR(static_cast<double>(JpegEstimate::bytes({4000, 3000}, m_defaults).lowest),
                static_cast<double>(full) / 4,
                2);
}

TEST_F(JpegEstimateTest, aPhotoWithoutPixelsTakesNoBytes)
{
    EXPECT_EQ(JpegEstimate::bytes({0, 0}, m_defaults).highest, 0);
}
