#include "CameraTags.h"

#include "ImageProperties.h"
#include "JpegRows.h"
#include "TiffReader.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;

namespace
{

ShotFacts someFacts()
{
    ShotFacts facts;
    facts.taken = QDateTime(QDate(2011, 5, 14), QTime(8, 42, 17, 310), Qt::UTC);
    facts.iso = 400;
    facts.exposureSeconds = 1.0 / 320;
    facts.aperture = 5.6;
    facts.focalLength = 40.0;
    return facts;
}

/// What a reader of metadata makes of a JPEG file with these facts.
ImageFacts readBack(const ShotFacts& facts)
{
    JpegRows rows(QSize(32, 1), 90);
    rows.addApp1(CameraTags::exifSegment(facts, QSize(32, 1)));
    rows.addApp1(CameraTags::xmpSegment(facts));
    rows.addRow(std::vector<quint8>(size_t{32} * 3, 120));
    return ImageProperties::fromBytes(rows.finish().value()).value().facts();
}

} // namespace

TEST(CameraTagsTest, theTimeIsReadBackToAHundredthOfASecond)
{
    EXPECT_EQ(readBack(someFacts()).dateTaken, someFacts().taken);
    ShotFacts early = someFacts();
    early.taken = QDateTime(QDate(2011, 6, 3), QTime(0, 0, 9, 20), Qt::UTC);
    EXPECT_EQ(readBack(early).dateTaken, early.taken);
}

TEST(CameraTagsTest, cameraAndExposureAreReadBack)
{
    const ImageFacts facts = readBack(someFacts());
    EXPECT_EQ(facts.texts.value(u"Make"_s), u"Corvane"_s);
    EXPECT_EQ(facts.texts.value(u"Model"_s), u"Corvane Sample Camera"_s);
    EXPECT_EQ(facts.numbers.value(u"ISOSpeedRating"_s), 400.0);
    EXPECT_NEAR(facts.numbers.value(u"ShutterSpeed"_s), 1.0 / 320, 1e-6);
    EXPECT_NEAR(facts.numbers.value(u"ApertureValue"_s), 5.6, 1e-6);
    EXPECT_EQ(facts.numbers.value(u"FocalLength"_s), 40.0);
    EXPECT_EQ(facts.numbers.value(u"FocalLenIn35mmFilm"_s), 61.0);
}

TEST(CameraTagsTest, longExposuresAreNoFractionsOfOne)
{
    ShotFacts facts = someFacts();
    facts.exposureSeconds = 2.5;
    EXPECT_NEAR(readBack(facts).numbers.value(u"ShutterSpeed"_s), 2.5, 1e-6);
}

TEST(CameraTagsTest, theWayTheCameraWasHeldIsReadBack)
{
    EXPECT_EQ(readBack(someFacts()).orientation, 1);
    ShotFacts turned = someFacts();
    turned.orientation = Orientation::TurnAnticlockwise;
    EXPECT_EQ(readBack(turned).orientation, 8);
}

TEST(CameraTagsTest, positionsOfAllFourQuartersOfTheEarthAreReadBack)
{
    for (const Place& place : {Place{46.7271, 7.7892, 1421.5},
                               Place{-33.85672, 151.21531, 4.0},
                               Place{-22.9519, -43.2105, -3.5},
                               Place{0.00002, -179.99998, 0.0}}) {
        ShotFacts facts = someFacts();
        facts.position = place;
        const ImageFacts read = readBack(facts);
        ASSERT_TRUE(read.latitude && read.longitude && read.altitude);
        EXPECT_NEAR(*read.latitude, place.latitude, 1e-8);
        EXPECT_NEAR(*read.longitude, place.longitude, 1e-8);
        EXPECT_NEAR(*read.altitude, place.altitude, 1e-9);
    }
}

TEST(CameraTagsTest, withoutAPositionThereIsNone)
{
    EXPECT_FALSE(readBack(someFacts()).latitude.has_value());
}

TEST(CameraTagsTest, secondsNeverReachSixty)
{
    // Rounding alone would make these 6 degrees, 59 minutes, 60 seconds.
    const TiffReader reader(CameraTags::gps({7.0 - 1e-9, 7.0, 0.0}, someFacts().taken).file());
    const auto latitude = reader.first().at(2);
    EXPECT_EQ(reader.value(latitude, 0), 7U);
    EXPECT_EQ(reader.value(latitude, 2), 0U);
    EXPECT_EQ(reader.value(latitude, 4), 0U);
}

TEST(CameraTagsTest, wordsAreReadBackWhateverTheyHold)
{
    ShotFacts facts = someFacts();
    facts.description = u"Überraschungen: 1 < 2 & \"zwei\""_s;
    facts.keywords = {u"Garten & Hof"_s, u"祖父母"_s, u"<b>"_s};
    const ImageFacts read = readBack(facts);
    EXPECT_EQ(read.caption, facts.description);
    EXPECT_EQ(read.keywords, facts.keywords);
}

TEST(CameraTagsTest, withoutWordsThereIsNoXmp)
{
    EXPECT_TRUE(CameraTags::xmpSegment(someFacts()).isEmpty());
}
