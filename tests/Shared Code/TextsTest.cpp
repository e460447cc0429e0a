#include "Texts.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

TEST(TextsTest, namesGivenToThingsInTheLibrary)
{
    EXPECT_EQ(Texts::defaultAlbumName(), u"Corvane For iPhoto"_s);
    EXPECT_EQ(Texts::originalKeyword(), u"Corvane Original"_s);
    EXPECT_EQ(Texts::processedKeyword(), u"Corvane Processed"_s);
    EXPECT_EQ(Texts::productName(), u"Corvane"_s);
}

TEST(TextsTest, labels)
{
    EXPECT_EQ(Texts::ready(), u"Ready"_s);
    EXPECT_EQ(Texts::loadingData(), u"Loading Data"_s);
    EXPECT_EQ(Texts::converting(), u"Converting"_s);
    EXPECT_EQ(Texts::importing(), u"Importing"_s);
    EXPECT_EQ(Texts::propagatingMetadata(), u"Propagating Metadata"_s);
    EXPECT_EQ(Texts::noTimeRemaining(), u"--:--:--"_s);
}

TEST(TextsTest, titles)
{
    EXPECT_EQ(Texts::errorTitle(), u"Error"_s);
    EXPECT_EQ(Texts::unsupportedVersionTitle(), u"Unsupported Version"_s);
    EXPECT_EQ(Texts::missingKeywordsTitle(), u"Missing Keywords"_s);
    EXPECT_EQ(Texts::unableToProcessTitle(), u"Unable To Process"_s);
    EXPECT_EQ(Texts::unableToContinueTitle(), u"Unable To Continue"_s);
    EXPECT_EQ(Texts::conversionAbortedTitle(), u"Conversion Aborted"_s);
    EXPECT_EQ(Texts::allDoneTitle(), u"All Done"_s);
}

TEST(TextsTest, theInformationTextOfALoad)
{
    EXPECT_EQ(Texts::keepAwayFromPhotoApplication(),
              u"WARNING: Do not use iPhoto while a scan is in progress except to respond to "
              "iPhoto dialog messages."_s);
}

TEST(TextsTest, theNotification)
{
    EXPECT_EQ(Texts::notificationTitle(), u"Conversion Complete"_s);
    EXPECT_EQ(Texts::notificationText(), u"Corvane has finished processing."_s);
}

TEST(TextsTest, anApplicationThatCannotBeReached)
{
    EXPECT_EQ(Texts::communicationFailed(u"Name %2"_s, u"Reason."_s),
              u"A serious error has occurred in communicating with iPhoto.\nName %2\nReason."_s);
}

TEST(TextsTest, anUnsupportedVersion)
{
    EXPECT_EQ(Texts::unsupportedVersion(),
              u"This version of Corvane is compatible with iPhoto '11 Versions 9.x.y only."_s);
}

TEST(TextsTest, missingKeywordsStandOnLinesOfTheirOwnAfterATab)
{
    EXPECT_EQ(Texts::missingKeywords({u"Corvane Original"_s, u"Corvane Processed"_s}, u"Corvane"_s),
              u"iPhoto is missing the following keywords:\n\n"
              "\tCorvane Original\n\tCorvane Processed\n"
              "\nTo add keywords in iPhoto use the menu item Window->Manage My Keywords.  Then "
              "click \"Edit Keywords\".  There is a + button on the lower left which adds new "
              "keywords.\n\nYou may not continue without adding these keywords. Once you have, "
              "click on okay and Corvane will check that they have been entered correctly."_s);
}

TEST(TextsTest, nothingSelected)
{
    EXPECT_EQ(Texts::nothingSelected(), u"You need to select the photos you want me to process"_s);
}

TEST(TextsTest, listsThatDifferInLength)
{
    EXPECT_EQ(Texts::itemsNotOpened(),
              u"You need to deal with the item(s) that iPhoto could not open because the original "
              "referenced item could not be found."_s);
}

TEST(TextsTest, anImageWithoutAPath)
{
    EXPECT_EQ(Texts::imageMissing(u"100%1 sure"_s),
              u"The image 100%1 sure is missing from the file system and therefore could not be "
              "converted.\n\nSomehow iPhoto has lost track of this image.\n\nIf you have many "
              "images in such a state you may want to consider using our utility \"Trelby For "
              "iPhoto\" which scans your library for all missing image files."_s);
}

TEST(TextsTest, anImageWhoseFileIsGone)
{
    EXPECT_EQ(Texts::imageMissing(u"IMG %2.cr2"_s, u"/m/IMG %1.cr2"_s),
              u"The image IMG %2.cr2 is missing from the file system and therefore could not be "
              "converted.\nSomehow iPhoto has lost track of this image which should have been "
              "located at:\n/m/IMG %1.cr2\n\nIf you have many images in such a state you may want "
              "to consider using our utility \"Trelby For iPhoto\" which scans your library for "
              "all such missing image files."_s);
}

TEST(TextsTest, theSummaryShowsMegabytesOfTwoDecimals)
{
    EXPECT_EQ(Texts::finished(26214400, 5242880),
              u"Corvane finished processing. - Check your keywords for Corvane Original and "
              "Corvane Processed.\n\nStats:\nOriginals: 25.00 MB\nConverted: 5.00 MB\nSavings: "
              "20.00 MB"_s);
}

TEST(TextsTest, savingsAreNegativeWhereTheJpegsAreLarger)
{
    EXPECT_TRUE(Texts::finished(1048576, 2621440)
                    .endsWith(u"Originals: 1.00 MB\nConverted: 2.50 MB\nSavings: -1.50 MB"_s));
}

TEST(TextsTest, aMegabyteIsTwoToTheTwentiethAndHalvesGoToTheEvenText)
{
    EXPECT_EQ(Texts::megabytes(0), u"0.00"_s);
    EXPECT_EQ(Texts::megabytes(1000000), u"0.95"_s);
    EXPECT_EQ(Texts::megabytes(655360), u"0.62"_s); // 0.625
    EXPECT_EQ(Texts::megabytes(917504), u"0.88"_s); // 0.875
    EXPECT_EQ(Texts::megabytes(qint64{1} << 50), u"1073741824.00"_s);
}

} // namespace
