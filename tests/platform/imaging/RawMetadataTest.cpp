#include "ImageProperties.h"
#include "ImagePropertiesContent.h"
#include "MetadataSamples.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace MetadataSamples;

TEST(RawMetadata, aRawFileOfNoKnownStructureStillNamesItsCamera)
{
    const QString path = QStringLiteral(CORVANE_SHARED_DATA "/raw/kodak_c330.raw");
    if (!QFileInfo::exists(path)) {
        return;
    }
    const Result<ImageProperties> read = ImageProperties::read(path);
    ASSERT_TRUE(read.ok());
    EXPECT_EQ(read.value().facts().texts.value(u"Make"_s), u"Kodak"_s);
    EXPECT_EQ(read.value().facts().texts.value(u"Model"_s), u"C330"_s);
    EXPECT_FALSE(read.value().facts().pixels.isEmpty());
}

TEST(RawMetadata, theExposureOfACrwFileIsTheCameras)
{
    const QString path = QStringLiteral(CORVANE_SHARED_DATA "/raw/canon_d30.crw");
    if (!QFileInfo::exists(path)) {
        return;
    }
    const Result<ImageProperties> read = ImageProperties::read(path);
    ASSERT_TRUE(read.ok());
    const ImageFacts facts = read.value().facts();
    EXPECT_NEAR(facts.numbers.value(u"ShutterSpeed"_s), 5.0, 0.1);
    EXPECT_NEAR(facts.numbers.value(u"FocalLength"_s), 31.0, 0.1);
    EXPECT_NEAR(facts.numbers.value(u"ISOSpeedRating"_s), 100.0, 0.1);
}

TEST(RawMetadata, theSerialNumberOfACrwFileIsOneNumber)
{
    const QString path = QStringLiteral(CORVANE_SHARED_DATA "/raw/canon_d30.crw");
    if (!QFileInfo::exists(path)) {
        return;
    }
    const Result<ImageProperties> read = ImageProperties::read(path);
    ASSERT_TRUE(read.ok());
    EXPECT_EQ(exifText(read.value(), "Exif.Canon.SerialNumber"), "305465770");
}

TEST(RawMetadata, brokenFilesAreReadInSilence)
{
    const QDir files(QStringLiteral(CORVANE_SHARED_DATA "/broken"));
    testing::internal::CaptureStderr();
    for (const QFileInfo& info : files.entryInfoList(QDir::Files)) {
        static_cast<void>(ImageProperties::read(info.filePath()).ok());
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(RawMetadata, aPictureOfAKnownSizeGetsNoTagsOfARawFile)
{
    const ImageProperties properties = readBack(jpegWithSegments({}));
    EXPECT_TRUE(properties.content().exif.empty());
}
