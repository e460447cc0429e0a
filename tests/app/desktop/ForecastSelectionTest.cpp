#include "ForecastSelection.h"

#include "FactsBuilder.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

PhotoFacts fact(const QString& fileName)
{
    PhotoFacts facts = FactsBuilder::photo(1, fileName, 1, u"Trip"_s);
    facts.height = 3000;
    facts.imagePath = facts.originalPath;
    return facts;
}

PhotoFacts raw(qint64 bytes)
{
    PhotoFacts facts = fact(u"a.cr2"_s);
    facts.raw = true;
    facts.bytes = bytes;
    return facts;
}

TEST(ForecastSelectionTest, rawPhotosAreCountedWithTheirBytes)
{
    const ForecastSelection selection = ForecastSelection::of({raw(3), raw(4), fact(u"a.jpg"_s)});
    EXPECT_EQ(selection.originals.raw, 2);
    EXPECT_EQ(selection.originals.rawBytes, 7);
    EXPECT_EQ(selection.originals.jpegs, 1);
    EXPECT_EQ(selection.originals.count(), 3);
    EXPECT_FALSE(selection.libraryOpen);
}

TEST(ForecastSelectionTest, jpegsAreKnownInAnyLettersAndOthersByBeingReadable)
{
    const ForecastSelection selection = ForecastSelection::of(
        {fact(u"a.jpg"_s), fact(u"b.JPEG"_s), fact(u"c.png"_s), fact(u"d.xyz"_s)});
    EXPECT_EQ(selection.originals.jpegs, 2);
    EXPECT_EQ(selection.originals.others, 1);
    EXPECT_EQ(selection.originals.unreadable, 1);
}

TEST(ForecastSelectionTest, aPhotoWithoutHeightIsNotRead)
{
    PhotoFacts photo = raw(5);
    photo.height = 0;
    const ForecastSelection selection = ForecastSelection::of({photo});
    EXPECT_EQ(selection.originals.unreadable, 1);
    EXPECT_EQ(selection.originals.converted(), 0);
}

TEST(ForecastSelectionTest, aMovieIsSkippedUnlessAPictureOfItIsShown)
{
    PhotoFacts movie = fact(u"a.mov"_s);
    movie.movie = true;
    movie.edited = true;
    ForecastSelection selection = ForecastSelection::of({movie});
    EXPECT_EQ(selection.originals.skippedMovies, 1);
    EXPECT_EQ(selection.displayed.skippedMovies, 1);
    EXPECT_EQ(selection.editedOrRotated, 0);
    movie.imagePath = u"/library/Previews/a.jpg"_s;
    selection = ForecastSelection::of({movie});
    EXPECT_EQ(selection.originals.skippedMovies, 1);
    EXPECT_EQ(selection.displayed.movieFrames, 1);
}

TEST(ForecastSelectionTest, editedAndRotatedPhotosCountOnce)
{
    PhotoFacts both = raw(1);
    both.edited = true;
    both.rotated = true;
    PhotoFacts rotated = raw(1);
    rotated.rotated = true;
    EXPECT_EQ(ForecastSelection::of({both, rotated, raw(1)}).editedOrRotated, 2);
}

TEST(ForecastSelectionTest, aMissingOriginalIsNotMissedWhereItsPictureIsShown)
{
    PhotoFacts missing = raw(0);
    missing.missing = true;
    ForecastSelection selection = ForecastSelection::of({missing});
    EXPECT_EQ(selection.originals.missing, 1);
    EXPECT_EQ(selection.originals.raw, 1) << "it is selected all the same";
    EXPECT_EQ(selection.displayed.missing, 1);
    missing.imagePath = u"/library/Previews/a.jpg"_s;
    selection = ForecastSelection::of({missing});
    EXPECT_EQ(selection.originals.missing, 1);
    EXPECT_EQ(selection.displayed.missing, 0);
}

TEST(ForecastSelectionTest, aPhotoThatNamesNoFileIsMissing)
{
    PhotoFacts photo = raw(0);
    photo.missing = true;
    photo.originalPath.clear();
    photo.imagePath.clear();
    const ForecastSelection selection = ForecastSelection::of({photo});
    EXPECT_EQ(selection.originals.missing, 1);
    EXPECT_EQ(selection.displayed.missing, 1);
}

} // namespace
