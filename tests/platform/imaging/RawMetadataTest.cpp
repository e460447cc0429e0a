#include "ImageBuilder.h"
#include "ImageProperties.h"
#include "ImagePropertiesContent.h"
#include "MetadataSamples.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <exiv2/exiv2.hpp>

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

TEST(RawMetadata, theOrientationOfACameraBackIsWhatItsOwnDataSay)
{
    // One entry of Leaf's data, little-endian: mark, version, name, length, text.
    QByteArray data("STKP\1\0\0\0", 8);
    data += QByteArray("CaptProf_raw_data_rotation").leftJustified(40, '\0');
    data += QByteArray("\4\0\0\0", 4) + QByteArray("90\n\0", 4);
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"back.dng"_s);
    const Bitmap light = ImageBuilder::scene({240, 180}, Transfer::Linear);
    ImageBuilder::write(path, ImageBuilder::dng(light));
    for (const auto& [make, orientation] : {std::pair("Leaf", "6"), std::pair("Other", "1")}) {
        const auto image = Exiv2::ImageFactory::open(path.toStdString());
        image->readMetadata();
        image->exifData()["Exif.Image.Make"] = std::string(make);
        Exiv2::DataValue value(Exiv2::undefined);
        value.read(reinterpret_cast<const Exiv2::byte*>(data.constData()),
                   static_cast<long>(data.size()),
                   Exiv2::littleEndian);
        image->exifData()["Exif.Image.0x8606"].setValue(&value);
        image->writeMetadata();
        const Result<ImageProperties> read = ImageProperties::read(path);
        ASSERT_TRUE(read.ok());
        EXPECT_EQ(exifText(read.value(), "Exif.Image.Orientation"), orientation) << make;
    }
}

TEST(RawMetadata, tagsOfTiffEpAreCarriedFromTheExifDirectoryToo)
{
    constexpr std::array kKeys{"Exif.Photo.0x8829",
                               "Exif.Photo.0x882a",
                               "Exif.Photo.0x882b",
                               "Exif.Photo.0x9211",
                               "Exif.Photo.0x9212",
                               "Exif.Photo.0x9213",
                               "Exif.Image.ProcessingSoftware"};
    Blocks blocks;
    for (const char* const key : kKeys) {
        blocks.exif[key] = std::string("7");
    }
    const ImageProperties carried = asCarried(holding(blocks), {320, 240});
    for (const char* const key : kKeys) {
        EXPECT_EQ(exifText(carried, key), "7") << key;
    }
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
