#include "EventRows.h"

#include "LibraryFixture.h"
#include "RowIdSet.h"

using namespace Qt::StringLiterals;

class EventRowsTest : public LibraryFixture
{
protected:
    void TearDown() override
    {
        expectSoundIndexes();
        LibraryFixture::TearDown();
    }

    QString text(const char* sql, const QString& uuid)
    {
        return Sql::firstText(connection(), sql, uuid);
    }

    RowIdSet closure(const QString& folder)
    {
        Sql::Query row(connection(),
                       "SELECT ridIndex FROM RKFolder_RidIndexes WHERE "
                       "indexName='folderIdClosure' AND value=?",
                       folder);
        return row.next() ? RowIdSet::fromBlob(Sql::blob(row.column(0))).value_or(RowIdSet())
                          : RowIdSet();
    }
};

TEST_F(EventRowsTest, aNewEventLiesBelowTheProjectsAndInTheirClosures)
{
    Writer to = writer();
    const QString uuid = EventRows::createEvent(to, u"Ausflug"_s);
    const QString id = text("SELECT modelId FROM RKFolder WHERE uuid=?", uuid);
    EXPECT_EQ(text("SELECT folderPath FROM RKFolder WHERE uuid=?", uuid), "1/2/"_L1 + id + '/'_L1);
    for (const QString& folder : {id, u"2"_s, u"1"_s}) {
        EXPECT_TRUE(closure(folder).contains(id.toLongLong())) << folder.toStdString();
    }
    EXPECT_FALSE(closure(u"6"_s).contains(id.toLongLong()));
    EXPECT_EQ(text("SELECT a.name FROM RKAlbum a JOIN RKFolder f ON f.implicitAlbumUuid=a.uuid AND "
                   "a.folderUuid=f.uuid WHERE f.uuid=?",
                   uuid),
              u"Ausflug"_s);
    EXPECT_TRUE(changes().folders.contains(uuid));
}

TEST_F(EventRowsTest, anEmptyEventHasTheDateOfItsMaking)
{
    Writer to = writer();
    const QString uuid = EventRows::createEvent(to, QString());
    EventRows::updateStatistics(to, uuid);
    EXPECT_EQ(Sql::firstReal(connection(), "SELECT minImageDate FROM RKFolder WHERE uuid=?", uuid),
              m_now);
    EXPECT_EQ(text("SELECT isInTrash FROM RKFolder WHERE uuid=?", uuid), u"0"_s);
    EXPECT_EQ(text("SELECT name FROM RKFolder WHERE uuid=?", uuid), u""_s);
}

TEST_F(EventRowsTest, numbersAndDatesAreThoseOfThePhotosThatAreShown)
{
    Writer to = writer();
    const QString uuid = EventRows::createEvent(to, u"Ausflug"_s);
    QList<Photo> photos;
    for (const double date : {300.0, 100.5, 200.0}) {
        Kind kind;
        kind.fileName = QString::number(date) + ".JPG"_L1;
        kind.date = date;
        photos.append(addPhoto(uuid, kind));
    }
    EventRows::updateStatistics(to, uuid);
    EXPECT_EQ(text("SELECT versionCount||' '||minImageDate||' '||maxImageDate FROM RKFolder WHERE "
                   "uuid=?",
                   uuid),
              u"3 100.5 300"_s);
    EXPECT_EQ(text("SELECT posterVersionUuid FROM RKFolder WHERE uuid=?", uuid),
              photos.at(1).visibleUuid);
    EXPECT_EQ(text("SELECT minImageTimeZoneName FROM RKFolder WHERE uuid=?", uuid), u"GMT"_s);
}

TEST_F(EventRowsTest, containersAndBuiltInFoldersAreLeftAlone)
{
    Writer to = writer();
    const QStringList before = snapshot();
    for (const QString& uuid : {u"AllProjectsItem"_s, u"RKPhotostreamFolder"_s, u"unknown"_s}) {
        EventRows::updateStatistics(to, uuid);
    }
    EXPECT_EQ(snapshot(), before);
    EXPECT_TRUE(changes().isEmpty());
}
