#include "PressForecast.h"

#include "QtPrinters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::Field;
using testing::Not;
using testing::SizeIs;

namespace
{

using Line = PressForecast::Line;
using Severity = PressForecast::Severity;

class PressForecastTest : public testing::Test
{
protected:
    PressForecastTest()
    {
        m_facts.selection.libraryOpen = true;
        select(214, 0);
        m_facts.settings.tagEnabled = true;
    }

    void select(int raw, int jpegs)
    {
        for (ForecastSources* sources :
             {&m_facts.selection.originals, &m_facts.selection.displayed}) {
            sources->raw = raw;
            sources->rawBytes = raw * qint64{26090000};
            sources->jpegs = jpegs;
        }
    }

    [[nodiscard]] QList<Line> lines() const { return PressForecast::lines(m_facts); }

    PressForecast::Facts m_facts;
};

MATCHER_P2(Says, severity, part, "")
{
    return arg.severity == severity && arg.text.contains(part);
}

MATCHER_P(Mentions, part, "")
{
    return arg.text.contains(part);
}

TEST_F(PressForecastTest, withoutALibraryItHintsAtOpeningOne)
{
    m_facts.selection = {};
    EXPECT_EQ(
        lines(),
        (QList<Line>{{Severity::Blocked,
                      u"Open a library first: File > Open Library in the library window."_s}}));
}

TEST_F(PressForecastTest, aLibraryThatCannotBeWrittenSaysWhy)
{
    m_facts.selection.whyReadOnly = u"It is on a read-only disk."_s;
    EXPECT_EQ(
        lines(),
        (QList<Line>{{Severity::Blocked,
                      u"Nothing can be written to this library. It is on a read-only disk."_s}}));
}

TEST_F(PressForecastTest, withNothingSelectedItAsksForPhotos)
{
    select(0, 0);
    EXPECT_EQ(lines(),
              (QList<Line>{{Severity::Blocked, u"Select photos in the library window."_s}}));
}

TEST_F(PressForecastTest, whatCannotBeConvertedIsNoSelection)
{
    select(0, 0);
    m_facts.selection.originals.skippedMovies = 1;
    EXPECT_THAT(lines(), Contains(Says(Severity::Blocked, u"1 selected item cannot"_s)));
    m_facts.selection.originals.unreadable = 2;
    EXPECT_THAT(lines(), Contains(Says(Severity::Blocked, u"None of the 3 selected items"_s)));
}

TEST_F(PressForecastTest, rawPhotosAreCountedApartFromTheOthers)
{
    EXPECT_THAT(lines(), Contains(Mentions(u"Converts 214 RAW photos, 5.2 GB."_s)));
    select(214, 30);
    EXPECT_THAT(lines(),
                Contains(Mentions(u"Converts 214 RAW photos, 5.2 GB, and re-encodes 30 JPEGs."_s)));
    m_facts.selection.originals.others = 1;
    EXPECT_THAT(lines(), Contains(Mentions(u"re-encodes 30 JPEGs and 1 other picture."_s)));
    select(0, 1);
    EXPECT_THAT(lines(),
                Contains(Mentions(u"Re-encodes 1 JPEG and 1 other picture; none is RAW."_s)));
}

TEST_F(PressForecastTest, oneRawPhotoIsNotCalledPhotos)
{
    select(1, 0);
    EXPECT_THAT(lines(), Contains(Mentions(u"Converts 1 RAW photo, 24.9 MB."_s)));
}

TEST_F(PressForecastTest, whatIsSkippedIsSaid)
{
    m_facts.selection.originals.skippedMovies = 2;
    m_facts.selection.originals.unreadable = 1;
    EXPECT_THAT(lines(), Contains(Mentions(u"Skips 2 movies."_s)));
    EXPECT_THAT(lines(), Contains(Mentions(u"Skips 1 photo of a type that cannot be read."_s)));
}

TEST_F(PressForecastTest, aMovieWithAPictureBecomesAStill)
{
    m_facts.settings.processingOption = false;
    m_facts.selection.displayed.movieFrames = 1;
    EXPECT_THAT(lines(), Contains(Says(Severity::Warning, u"Makes a still picture of 1 movie."_s)));
}

TEST_F(PressForecastTest, editsAreLostOnlyWhereOriginalsAreConverted)
{
    m_facts.selection.editedOrRotated = 5;
    EXPECT_THAT(lines(),
                Contains(Says(Severity::Warning, u"5 photos were edited or turned in iPhoto."_s)));
    m_facts.selection.editedOrRotated = 1;
    EXPECT_THAT(lines(),
                Contains(Says(Severity::Warning, u"1 photo was edited or turned in iPhoto."_s)));
    m_facts.settings.processingOption = false;
    EXPECT_THAT(lines(), Not(Contains(Mentions(u"edited"_s))));
    EXPECT_THAT(lines(), Contains(Mentions(u"Takes each picture as iPhoto shows it"_s)));
}

TEST_F(PressForecastTest, eventsAreFiledOnlyWhileNoLibraryIsHeld)
{
    EXPECT_THAT(lines(),
                Contains(Says(Severity::Information,
                              u"Files the copies into the album “Corvane For iPhoto”."_s)));
    m_facts.settings.libraryKnown = true;
    EXPECT_THAT(lines(), Contains(Mentions(u"album “Corvane For iPhoto”."_s)))
        << "albums are off, so a held library changes nothing";
    m_facts.settings.albumEnabled = true;
    EXPECT_THAT(lines(),
                Contains(Says(Severity::Warning, u"album “Corvane For iPhoto” this time."_s)));
    m_facts.settings.libraryKnown = false;
    EXPECT_THAT(lines(),
                Contains(Says(Severity::Information,
                              u"Asks for the library and files the copies by event"_s)));
    EXPECT_THAT(lines(), Not(Contains(Mentions(u"Corvane For iPhoto"_s))));
}

TEST_F(PressForecastTest, keywordsAreSaidEitherWay)
{
    EXPECT_THAT(
        lines(),
        Contains(Mentions(
            u"Adds the keyword “Corvane Original” to originals and “Corvane Processed” to copies."_s)));
    m_facts.settings.tagEnabled = false;
    EXPECT_THAT(lines(), Contains(Mentions(u"Marks neither originals nor copies"_s)));
}

TEST_F(PressForecastTest, removedPhotosLeaveTheirEventsUnlessFiledByEvent)
{
    EXPECT_THAT(lines(), Contains(Mentions(u"The originals stay where they are."_s)));
    m_facts.settings.trashEnabled = true;
    EXPECT_THAT(lines(), Contains(Says(Severity::Warning, u"goes to the library's trash."_s)));
    EXPECT_THAT(lines(), Contains(Says(Severity::Warning, u"The photos leave their events"_s)));
    m_facts.settings.albumEnabled = true;
    EXPECT_THAT(lines(), Not(Contains(Mentions(u"leave their events"_s))));
    m_facts.settings.libraryKnown = true;
    EXPECT_THAT(lines(), Contains(Mentions(u"leave their events"_s)));
}

TEST_F(PressForecastTest, theSizeIsSaidInWords)
{
    OutputSize& size = m_facts.settings.outputSize;
    EXPECT_THAT(lines(), Contains(Mentions(u"Writes JPEGs of quality 0.80 in full size."_s)));
    size.scaleFactor = 0.75F;
    EXPECT_THAT(lines(), Contains(Mentions(u"with sides of 75 % of the original's."_s)));
    size = {.fixedSize = true, .longSize = 1600, .longLocked = true};
    EXPECT_THAT(lines(), Contains(Mentions(u"with a long side of at most 1600 pixels."_s)));
    size = {.fixedSize = true, .shortSize = 1200, .shortLocked = true};
    EXPECT_THAT(lines(), Contains(Mentions(u"with a short side of at most 1200 pixels."_s)));
}

TEST_F(PressForecastTest, bothSidesLockedDistort)
{
    m_facts.settings.outputSize = {.fixedSize = true,
                                   .longSize = 1600,
                                   .shortSize = 1200,
                                   .longLocked = true,
                                   .shortLocked = true};
    EXPECT_THAT(lines(), Contains(Mentions(u"at most 1600 by 1200 pixels."_s)));
    EXPECT_THAT(lines(), Contains(Says(Severity::Warning, u"are distorted."_s)));
}

TEST_F(PressForecastTest, noScaleFactorAsksForAnOutputSize)
{
    m_facts.settings.outputSize.scaleFactor = 0.0F;
    EXPECT_THAT(lines(),
                AllOf(SizeIs(1), Each(Says(Severity::Blocked, u"Choose an output size"_s))));
    m_facts.settings.outputSize.fixedSize = true;
    m_facts.settings.outputSize.longLocked = true;
    m_facts.settings.outputSize.longSize = 800;
    EXPECT_THAT(lines(), Not(Contains(Mentions(u"Choose an output size"_s))))
        << "the factor says nothing about a fixed size";
}

TEST_F(PressForecastTest, aLockedSideOfNothingFailsEveryConversion)
{
    OutputSize& size = m_facts.settings.outputSize;
    size = {.fixedSize = true, .longSize = 0, .shortSize = 1200, .longLocked = true};
    EXPECT_THAT(lines(),
                AllOf(SizeIs(1), Each(Says(Severity::Blocked, u"The long side is set to no"_s))));
    size.shortLocked = true;
    size.shortSize = 0;
    EXPECT_THAT(lines(), AllOf(SizeIs(2), Contains(Mentions(u"The short side is set to no"_s))));
    size.longSize = 1600;
    EXPECT_THAT(lines(), AllOf(SizeIs(1), Contains(Mentions(u"The short side is set to no"_s))));
}

TEST_F(PressForecastTest, aFreeSideOfNothingIsAsItShouldBe)
{
    m_facts.settings.outputSize = {.fixedSize = true, .longSize = 1600, .longLocked = true};
    EXPECT_THAT(lines(), Not(Contains(Field(&Line::severity, Severity::Blocked))));
}

TEST_F(PressForecastTest, whereNeitherSideIsLockedTheShortOneCounts)
{
    m_facts.settings.outputSize = {.fixedSize = true, .shortSize = 900};
    EXPECT_THAT(lines(), Contains(Mentions(u"a short side of at most 900 pixels."_s)));
    m_facts.settings.outputSize.shortSize = 0;
    EXPECT_THAT(lines(), Contains(Says(Severity::Blocked, u"The short side"_s)));
}

TEST_F(PressForecastTest, everythingThatBlocksIsSaidAtOnce)
{
    m_facts.selection.libraryOpen = false;
    m_facts.settings.outputSize.scaleFactor = 0.0F;
    EXPECT_THAT(lines(), AllOf(SizeIs(2), Each(Field(&Line::severity, Severity::Blocked))));
}

TEST_F(PressForecastTest, aScanStopsAtTheFirstMissingFile)
{
    m_facts.selection.originals.missing = 3;
    EXPECT_THAT(lines().first(), Says(Severity::Warning, u"The files of 3 selected photos"_s));
    EXPECT_THAT(lines().first(), Mentions(u"The scan stops at the first of them"_s));
    m_facts.selection.originals.missing = 1;
    EXPECT_THAT(lines().first(), Mentions(u"The scan stops there"_s));
    m_facts.settings.processingOption = false;
    EXPECT_THAT(lines(), Not(Contains(Mentions(u"missing"_s))))
        << "the pictures that are shown are there";
}

TEST_F(PressForecastTest, whileAScanRunsItSaysWhichSettingsCountWhen)
{
    m_facts.scanning = true;
    EXPECT_THAT(lines(),
                AllOf(SizeIs(1), Each(Says(Severity::Information, u"A scan is running"_s))));
    m_facts.settings.trashEnabled = true;
    EXPECT_THAT(lines(), Contains(Says(Severity::Warning, u"goes to the library's trash."_s)));
}

} // namespace
