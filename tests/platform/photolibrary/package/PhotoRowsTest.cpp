#include "PhotoRows.h"

#include "EventRows.h"
#include "LibraryFixture.h"
#include "Properties.h"

#include <limits>

using namespace Qt::StringLiterals;

class PhotoRowsTest : public LibraryFixture
{
protected:
    void SetUp() override
    {
        LibraryFixture::SetUp();
        Writer to = writer();
        m_event = EventRows::createEvent(to, u"One"_s);
        m_photo = addPhoto(m_event);
        EventRows::updateStatistics(to, m_event);
        // Rows of these keys exist from the import on.
        PhotoRows::setName(to, m_photo.visible, u"one"_s);
        PhotoRows::setDate(to, m_photo.visible, 294408000, u"GMT"_s);
        changes() = {};
    }

    void TearDown() override
    {
        expectSoundIndexes();
        LibraryFixture::TearDown();
    }

    QStringList imported()
    {
        return Sql::texts(connection(),
                          "SELECT name||mainRating||imageDate||hasKeywords FROM RKVersion WHERE "
                          "modelId=?",
                          m_photo.imported);
    }

    std::optional<double> part(const QString& key)
    {
        return Properties::number(connection(), m_photo.visible, key);
    }

    QString m_event;
    Photo m_photo;
};

TEST_F(PhotoRowsTest, aRatingAndItsInverseLeaveTheRowsAsTheyWere)
{
    Writer to = writer();
    const QStringList before = snapshot();
    const QStringList original = imported();
    PhotoRows::setRating(to, m_photo.visible, 5);
    expectSoundIndexes();
    EXPECT_EQ(number("SELECT mainRating FROM RKVersion WHERE modelId=?", m_photo.visible), 5);
    EXPECT_EQ(imported(), original);
    PhotoRows::setRating(to, m_photo.visible, 0);
    EXPECT_EQ(snapshot(), before);
}

TEST_F(PhotoRowsTest, ratingsOutsideTheScaleBecomeItsEnds)
{
    Writer to = writer();
    PhotoRows::setRating(to, m_photo.visible, 9);
    EXPECT_EQ(number("SELECT mainRating FROM RKVersion WHERE modelId=?", m_photo.visible), 5);
    PhotoRows::setRating(to, m_photo.visible, -1);
    EXPECT_EQ(number("SELECT mainRating FROM RKVersion WHERE modelId=?", m_photo.visible), 0);
}

TEST_F(PhotoRowsTest, aNameAndItsInverseLeaveTheRowsAsTheyWere)
{
    Writer to = writer();
    const QStringList before = snapshot();
    const QStringList original = imported();
    PhotoRows::setName(to, m_photo.visible, u"Zwei Ähren"_s);
    EXPECT_EQ(
        Properties::text(connection(), Properties::Texts::Other, m_photo.visible, u"VersionName"_s),
        u"Zwei Ähren"_s);
    EXPECT_EQ(imported(), original);
    PhotoRows::setName(to, m_photo.visible, u"one"_s);
    EXPECT_EQ(snapshot(), before);
}

TEST_F(PhotoRowsTest, anEmptyCommentRemovesIt)
{
    Writer to = writer();
    const QStringList before = snapshot();
    PhotoRows::setComment(to, m_photo.visible, u"words"_s);
    EXPECT_NE(snapshot(), before);
    PhotoRows::setComment(to, m_photo.visible, u""_s);
    EXPECT_EQ(snapshot(), before);
}

TEST_F(PhotoRowsTest, anAltitudeMayBeBelowTheSeaAndMayGo)
{
    Writer to = writer();
    const QStringList before = snapshot();
    PhotoRows::setAltitude(to, m_photo.visible, -12.5);
    EXPECT_EQ(part(u"Altitude"_s), -12.5);
    PhotoRows::setAltitude(to, m_photo.visible, std::nullopt);
    EXPECT_EQ(snapshot(), before);
    PhotoRows::setAltitude(to, m_photo.visible, std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(snapshot(), before);
}

TEST_F(PhotoRowsTest, aDateMovesItsPartsAndItsEvent)
{
    Writer to = writer();
    const QStringList before = snapshot();
    PhotoRows::setDate(to, m_photo.visible, 608380223.5, u"GMT"_s); // 2020-04-12 10:30:23, a Sunday
    EXPECT_EQ(part(u"CaptureYear"_s), 2020);
    EXPECT_EQ(part(u"CaptureMonthOfYear"_s), 4);
    EXPECT_EQ(part(u"CaptureDayOfMonth"_s), 12);
    EXPECT_EQ(part(u"CaptureDayOfWeek"_s), 0);
    EXPECT_EQ(part(u"CaptureHourOfDay"_s), 10);
    EXPECT_EQ(part(u"CaptureMinuteOfHour"_s), 30);
    EXPECT_EQ(part(u"CaptureSecondOfMinute"_s), 23);
    EXPECT_EQ(
        Sql::firstReal(connection(), "SELECT minImageDate FROM RKFolder WHERE uuid=?", m_event),
        608380223.5);
    PhotoRows::setDate(to, m_photo.visible, 294408000, u"GMT"_s);
    EXPECT_EQ(snapshot(), before);
}

TEST_F(PhotoRowsTest, aDateWithoutAZoneKeepsTheZoneOfThePhoto)
{
    Writer to = writer();
    PhotoRows::setDate(to, m_photo.visible, 608380223, u"America/New_York"_s);
    EXPECT_EQ(part(u"CaptureHourOfDay"_s), 6);
    PhotoRows::setDate(to, m_photo.visible, 608380223 + 3600, QString());
    EXPECT_EQ(part(u"CaptureHourOfDay"_s), 7);
}

TEST_F(PhotoRowsTest, aDateThatIsNoNumberChangesNothing)
{
    Writer to = writer();
    const QStringList before = snapshot();
    PhotoRows::setDate(to, m_photo.visible, std::numeric_limits<double>::quiet_NaN(), u"GMT"_s);
    PhotoRows::setDate(to, m_photo.visible, 1e300, u"GMT"_s);
    EXPECT_EQ(snapshot(), before);
    EXPECT_TRUE(changes().isEmpty());
}

TEST_F(PhotoRowsTest, aKeywordIsDefinedAndAssignedOnce)
{
    Writer to = writer();
    PhotoRows::assignKeyword(to, m_photo.visible, u"Äpfel"_s);
    EXPECT_TRUE(changes().keywords);
    PhotoRows::assignKeyword(to, m_photo.visible, u"ÄPFEL"_s);
    EXPECT_EQ(number("SELECT count(*) FROM RKKeywordForVersion WHERE versionId=?", m_photo.visible),
              1);
    EXPECT_EQ(number("SELECT hasKeywords FROM RKVersion WHERE modelId=?", m_photo.visible), 1);
    EXPECT_EQ(number("SELECT hasKeywords FROM RKVersion WHERE modelId=?", m_photo.imported), 0);
    EXPECT_EQ(
        PhotoRows::defineKeyword(to, u"FAMILY"_s),
        Sql::firstInteger(connection(), "SELECT modelId FROM RKKeyword WHERE name=?", u"Family"_s));
}

TEST_F(PhotoRowsTest, everyChangeIsDatedAndNamedForTheSidecars)
{
    Writer to = writer();
    PhotoRows::setRating(to, m_photo.visible, 2);
    EXPECT_EQ(Sql::firstReal(connection(),
                             "SELECT exportMetadataChangeDate FROM RKVersion WHERE modelId=?",
                             m_photo.visible),
              m_now);
    EXPECT_EQ(changes().masters, QSet<QString>{m_photo.master});
    EXPECT_TRUE(changes().catalogues);
}

TEST_F(PhotoRowsTest, theVersionAsImportedAndUnknownIdsAreNotChanged)
{
    Writer to = writer();
    const QStringList before = snapshot();
    for (const qint64 id : {m_photo.imported, qint64{999}, qint64{-1}}) {
        PhotoRows::setRating(to, id, 4);
        PhotoRows::setName(to, id, u"other"_s);
        PhotoRows::setComment(to, id, u"other"_s);
        PhotoRows::setAltitude(to, id, 4.0);
        PhotoRows::setDate(to, id, 4.0, u"GMT"_s);
        PhotoRows::assignKeyword(to, id, u"Family"_s);
    }
    EXPECT_EQ(snapshot(), before);
    EXPECT_TRUE(changes().isEmpty());
}
