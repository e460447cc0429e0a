#include "ScanSettings.h"

#include "Bundle.h"
#include "TargetSize.h"
#include "UserDefaults.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class ScanSettingsTest : public testing::Test
{
protected:
    ScanSettingsTest() { registerFallbacks(m_defaults, Bundle(u":/corvane"_s)); }

    QTemporaryDir m_folder;
    UserDefaults m_defaults{m_folder.filePath(u"defaults"_s)};
};

} // namespace

TEST_F(ScanSettingsTest, theFallbacksAreThoseThatTheProgramShips)
{
    EXPECT_DOUBLE_EQ(m_defaults.doubleValue(u"JpegQuality"_s), 0.8);
    EXPECT_TRUE(m_defaults.boolValue(u"TagEnabled"_s));
    EXPECT_FALSE(m_defaults.boolValue(u"TrashEnabled"_s));
    EXPECT_TRUE(m_defaults.boolValue(u"ProcessingOption"_s));
    EXPECT_TRUE(outputSize(m_defaults).isOriginal());
}

TEST_F(ScanSettingsTest, optionsAreSeenAndNeverStored)
{
    ScanSettings settings;
    settings.quality = 0.37;
    settings.scaleIndex = 2;
    settings.albums = true;
    settings.tag = false;
    settings.trash = true;
    settings.originals = false;
    settings.applyTo(m_defaults);
    EXPECT_DOUBLE_EQ(m_defaults.doubleValue(u"JpegQuality"_s), 0.37);
    EXPECT_EQ(m_defaults.integerValue(u"JpegOutputSize"_s), 2);
    EXPECT_TRUE(m_defaults.boolValue(u"AlbumEnabled"_s));
    EXPECT_FALSE(m_defaults.boolValue(u"TagEnabled"_s));
    EXPECT_TRUE(m_defaults.boolValue(u"TrashEnabled"_s));
    EXPECT_FALSE(m_defaults.boolValue(u"ProcessingOption"_s));
    m_defaults.setInteger(u"JpegOutputSize"_s, 2);
    EXPECT_FALSE(QFile::exists(m_folder.filePath(u"defaults"_s)));
}

TEST_F(ScanSettingsTest, anOutputSizeThatNobodyChoseIsNotStoredWhenTheControlIsTouched)
{
    ScanSettings().applyTo(m_defaults);
    m_defaults.setInteger(u"JpegOutputSize"_s, 0);
    EXPECT_FALSE(QFile::exists(m_folder.filePath(u"defaults"_s)));
}

TEST_F(ScanSettingsTest, onlyTheGivenSidesOfAFixedSizeAreLocked)
{
    ScanSettings settings;
    settings.shortSide = 900;
    settings.applyTo(m_defaults);
    EXPECT_EQ(outputSizeIndex(m_defaults), kFixedSizeIndex);
    const OutputSize size = outputSize(m_defaults);
    EXPECT_TRUE(size.fixedSize);
    EXPECT_FALSE(size.longLocked);
    EXPECT_EQ(targetSize({4000, 3000}, size), QSize(1200, 900));

    settings.longSide = 1600;
    settings.applyTo(m_defaults);
    EXPECT_EQ(targetSize({4000, 3000}, outputSize(m_defaults)), QSize(1600, 900));
}

TEST_F(ScanSettingsTest, aStoredSizeThatIsNoneMeansFullSize)
{
    m_defaults.setVolatile(u"JpegOutputSize"_s, 7);
    EXPECT_EQ(outputSizeIndex(m_defaults), 0);
    m_defaults.setVolatile(u"JpegOutputSize"_s, -1);
    EXPECT_EQ(outputSizeIndex(m_defaults), 0);
}
