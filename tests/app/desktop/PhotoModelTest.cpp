#include "PhotoModel.h"

#include "FactsBuilder.h"
#include "PhotoMarks.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(PhotoModelTest, aPhotoIsShownByItsTitleElseByItsFileName)
{
    PhotoFacts titled = FactsBuilder::photo(1, u"a.dng"_s, 1, u"Walk"_s);
    titled.name = u"The lake"_s;
    PhotoModel model;
    model.setPhotos({titled, FactsBuilder::photo(2, u"b.dng"_s, 1, u"Walk"_s)});
    ASSERT_EQ(model.rowCount(), 2);
    EXPECT_EQ(model.index(0).data(), u"The lake"_s);
    EXPECT_EQ(model.index(1).data(), u"b.dng"_s);
    EXPECT_EQ(model.index(1).data(PhotoModel::IdRole), 2);
    EXPECT_EQ(model.rowCount(model.index(0)), 0);
}

TEST(PhotoModelTest, thePreviewStandsInForAMissingThumbnail)
{
    PhotoFacts facts = FactsBuilder::photo(1, u"a.dng"_s, 1, u"Walk"_s);
    facts.previewPath = u"/library/Previews/a.jpg"_s;
    PhotoModel model;
    model.setPhotos({facts});
    EXPECT_EQ(model.index(0).data(PhotoModel::ThumbnailPathRole), u"/library/Previews/a.jpg"_s);
    facts.thumbnailPath = u"/library/Thumbnails/a.jpg"_s;
    model.setPhotos({facts});
    EXPECT_EQ(model.index(0).data(PhotoModel::ThumbnailPathRole), u"/library/Thumbnails/a.jpg"_s);
}

TEST(PhotoModelTest, aMissingOriginalIsSaidInWords)
{
    PhotoFacts facts = FactsBuilder::photo(1, u"a.dng"_s, 1, u"Walk"_s);
    facts.missing = true;
    facts.keywords = QStringList{u"Lake"_s};
    PhotoModel model;
    model.setPhotos({facts});
    EXPECT_EQ(model.index(0).data(Qt::AccessibleTextRole),
              u"a.dng · the original is missing · Walk · Lake"_s);
}

TEST(PhotoModelTest, anOriginalThatMayNotBeReadIsSaidInWords)
{
    PhotoFacts facts = FactsBuilder::photo(1, u"a.dng"_s, 1, u"Walk"_s);
    facts.unreadable = true;
    PhotoModel model;
    model.setPhotos({facts});
    EXPECT_TRUE(model.index(0)
                    .data(Qt::ToolTipRole)
                    .toString()
                    .contains(u" · the original may not be read · Walk"_s));
}

TEST(PhotoModelTest, aPhotoIsFoundByItsNumber)
{
    PhotoModel model;
    model.setPhotos({FactsBuilder::photo(7, u"a.dng"_s, 1, u"Walk"_s),
                     FactsBuilder::photo(9, u"b.dng"_s, 1, u"Walk"_s)});
    EXPECT_EQ(model.indexOf(9).row(), 1);
    EXPECT_FALSE(model.indexOf(8).isValid());
}

TEST(PhotoModelTest, theTwoMarksAreFoundInWhateverLetters)
{
    PhotoFacts facts = FactsBuilder::photo(1, u"a.dng"_s, 1, u"Walk"_s);
    EXPECT_FALSE(PhotoMarks::isConvertedOriginal(facts.keywords));
    facts.keywords = QStringList{u"corvane original"_s};
    EXPECT_TRUE(PhotoMarks::isConvertedOriginal(facts.keywords));
    EXPECT_FALSE(PhotoMarks::isProcessedCopy(facts.keywords));
    facts.keywords = QStringList{u"Corvane Processed"_s};
    EXPECT_TRUE(PhotoMarks::isProcessedCopy(facts.keywords));
}
