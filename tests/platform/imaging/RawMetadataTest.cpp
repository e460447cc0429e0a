#include "ImageProperties.h"
#include "MetadataSamples.h"

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

TEST(RawMetadata, whatAFileSaysItselfStays)
{
    Blocks blocks;
    blocks.exif["Exif.Image.Make"] = std::string("Maker");
    const ImageProperties properties = readBack(jpegWith(blocks));
    EXPECT_EQ(exifText(properties, "Exif.Image.Make"), "Maker");
    EXPECT_FALSE(hasExif(properties, "Exif.Image.Orientation"));
}
