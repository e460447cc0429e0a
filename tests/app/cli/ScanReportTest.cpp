#include "ScanReport.h"

#include "ClosingLines.h"

#include <QJsonArray>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class ScanReportTest : public testing::Test
{
protected:
    ScanReportTest()
    {
        QList<PhotoFacts> selection(3);
        selection[0].id = 1;
        selection[0].fileName = u"IMG_1.cr2"_s;
        selection[1].id = 3;
        selection[1].fileName = u"IMG_3.cr2"_s;
        selection[2].id = 7;
        selection[2].fileName = u"IMG_7.cr2"_s;
        m_report = ScanReport::before(u"/L"_s, selection);
        PhotoOutcome& converted = m_report.photos[0].outcome;
        converted.kind = PhotoOutcome::Kind::Converted;
        converted.source = u"/L/Masters/IMG_1.cr2"_s;
        converted.newPhotoId = 33;
        converted.importedAs = u"IMG_1.jpg"_s;
        converted.originalBytes = 100;
        converted.jpegBytes = 40;
        converted.pixels = QSize(4416, 3312);
        PhotoOutcome& failed = m_report.photos[1].outcome;
        failed.kind = PhotoOutcome::Kind::Failed;
        failed.originalBytes = 70;
        failed.reason = u"it ends early"_s;
    }

    [[nodiscard]] QJsonObject entry(int index) const
    {
        return m_report.document().value(u"photos"_s).toArray().at(index).toObject();
    }

    ScanReport m_report;
};

} // namespace

TEST_F(ScanReportTest, theSumsAreThoseOfTheScan)
{
    const QJsonObject document = m_report.document();
    EXPECT_EQ(document.value(u"selected"_s).toInt(), 3);
    EXPECT_EQ(document.value(u"converted"_s).toInt(), 1);
    EXPECT_EQ(document.value(u"originalsBytes"_s).toInt(), 170); // a failed turn keeps its size
    EXPECT_EQ(document.value(u"convertedBytes"_s).toInt(), 40);
    EXPECT_EQ(document.value(u"savingsBytes"_s).toInt(), 130);
    EXPECT_FALSE(m_report.isComplete());
}

TEST_F(ScanReportTest, aPhotoThatWasFiledNowhereHasNoAlbum)
{
    EXPECT_TRUE(entry(0).value(u"album"_s).isNull());
    EXPECT_EQ(entry(0).value(u"newId"_s).toInt(), 33);
    m_report.photos[0].outcome.newPhotoId = 0; // the import brought no photo, or several
    EXPECT_TRUE(entry(0).value(u"newId"_s).isNull());
}

TEST_F(ScanReportTest, onlyConvertedPhotosTellOfACopy)
{
    EXPECT_EQ(entry(1).value(u"outcome"_s).toString(), u"failed"_s);
    EXPECT_EQ(entry(1).value(u"reason"_s).toString(), u"it ends early"_s);
    EXPECT_FALSE(entry(1).contains(u"importedAs"_s));
    EXPECT_EQ(entry(2).value(u"outcome"_s).toString(), u"not reached"_s);
    EXPECT_TRUE(entry(2).value(u"source"_s).isNull());
}

TEST_F(ScanReportTest, anAlertThatStoppedTheScanIsQuoted)
{
    EXPECT_TRUE(m_report.document().value(u"stopped"_s).isNull());
    m_report.stopped = Alert{.messageText = u"T"_s, .informativeText = u"a\nb"_s};
    EXPECT_EQ(m_report.document().value(u"stopped"_s).toObject(),
              (QJsonObject{{u"title"_s, u"T"_s}, {u"text"_s, u"a\nb"_s}}));
}

TEST_F(ScanReportTest, failuresAreListedAndTheRestOfTheSelectionIsNot)
{
    EXPECT_EQ(
        ClosingLines::of(m_report, false),
        (QStringList{u"1 photo was not converted:"_s, u"  IMG_3.cr2 (photo 3): it ends early"_s}));
}

TEST_F(ScanReportTest, copiesOfAnotherNameAndTheTrashAreNamed)
{
    m_report.photos[2].outcome = m_report.photos[0].outcome;
    m_report.photos[1].outcome.reason.clear();
    EXPECT_EQ(
        ClosingLines::of(m_report, true),
        (QStringList{u"1 photo was not converted:"_s,
                     u"  IMG_3.cr2 (photo 3): no reason was given"_s,
                     u"The copy of IMG_7.cr2 (photo 7) bears another name: IMG_1.jpg"_s,
                     u"The originals are in the library's trash; their space comes back with: "
                     "corvane-cli trash --empty '/L'"_s}));
}
