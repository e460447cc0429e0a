#include "AlbumRows.h"

#include "EventRows.h"
#include "LibraryFixture.h"
#include "PropertyList.h"

using namespace Qt::StringLiterals;

class AlbumRowsTest : public LibraryFixture
{
protected:
    void SetUp() override
    {
        LibraryFixture::SetUp();
        Writer to = writer();
        const QString event = EventRows::createEvent(to, u"One"_s);
        m_first = addPhoto(event);
        m_second = addPhoto(event);
    }

    void TearDown() override
    {
        expectSoundIndexes();
        LibraryFixture::TearDown();
    }

    QList<qint64> members(qint64 album)
    {
        return Sql::integers(
            connection(),
            "SELECT versionId FROM RKAlbumVersion WHERE albumId=? ORDER BY modelId",
            album);
    }

    qint64 lastImport()
    {
        return Sql::firstInteger(
                   connection(), "SELECT modelId FROM RKAlbum WHERE uuid=?", u"lastImportAlbum"_s)
            .value_or(0);
    }

    Photo m_first;
    Photo m_second;
};

TEST_F(AlbumRowsTest, aNewAlbumIsEmptyAndTheLastOfTheSidebar)
{
    Writer to = writer();
    const qint64 first = AlbumRows::createAlbum(to, u"First"_s);
    const qint64 second = AlbumRows::createAlbum(to, u"Zweites Ä"_s);
    EXPECT_GT(second, first);
    EXPECT_EQ(Sql::texts(connection(),
                         "SELECT a.name FROM RKCustomSortOrder o JOIN RKAlbum a ON "
                         "a.uuid=o.objectUuid WHERE o.containerUuid='TopLevelAlbums' ORDER BY "
                         "o.orderNumber"),
              (QStringList{u"First"_s, u"Zweites Ä"_s}));
    EXPECT_EQ(number("SELECT versionCount FROM RKAlbum WHERE modelId=?", second), 0);
    EXPECT_TRUE(changes().folders.contains(u"TopLevelAlbums"_s));
}

TEST_F(AlbumRowsTest, aNewAlbumCarriesFilterAndView)
{
    Writer to = writer();
    const qint64 album = AlbumRows::createAlbum(to, u"First"_s);
    Sql::Query row(connection(), "SELECT filterData,viewData FROM RKAlbum WHERE modelId=?", album);
    ASSERT_TRUE(row.next());
    EXPECT_TRUE(PropertyList::parse(Sql::blob(row.column(0))).ok());
    const Result<QVariant> view = PropertyList::parse(Sql::blob(row.column(1)));
    ASSERT_TRUE(view.ok());
    EXPECT_EQ(view.value().toMap().value(u"$archiver"_s).toString(), u"NSKeyedArchiver"_s);
    EXPECT_TRUE(view.value().toMap().value(u"$objects"_s).toList().contains(u"IPAlbum"_s));
}

TEST_F(AlbumRowsTest, aPhotoIsInAnAlbumOnce)
{
    Writer to = writer();
    const qint64 album = AlbumRows::createAlbum(to, u"First"_s);
    AlbumRows::addPhotos(to, album, {m_second.visible, m_first.visible, m_second.visible});
    AlbumRows::addPhotos(to, album, {m_first.visible});
    EXPECT_EQ(members(album), (QList<qint64>{m_second.visible, m_first.visible}));
    EXPECT_EQ(number("SELECT versionCount FROM RKAlbum WHERE modelId=?", album), 2);
}

TEST_F(AlbumRowsTest, removingUndoesAdding)
{
    Writer to = writer();
    const qint64 album = AlbumRows::createAlbum(to, u"First"_s);
    const QStringList before = snapshot();
    AlbumRows::addPhotos(to, album, {m_first.visible});
    expectSoundIndexes();
    AlbumRows::removePhotos(to, album, {m_first.visible});
    EXPECT_EQ(snapshot(), before);
}

TEST_F(AlbumRowsTest, onlyPhotosJoinAndOnlyRegularAlbumsTakeThem)
{
    Writer to = writer();
    const qint64 album = AlbumRows::createAlbum(to, u"First"_s);
    const qint64 smart =
        number("SELECT modelId FROM RKAlbum WHERE albumSubclass=2 AND modelId>?", 0);
    const QStringList before = snapshot();
    AlbumRows::addPhotos(to, album, {m_first.imported, 999});
    AlbumRows::addPhotos(to, smart, {m_first.visible});
    AlbumRows::addPhotos(to, 999, {m_first.visible});
    EXPECT_EQ(snapshot(), before);
}

TEST_F(AlbumRowsTest, theAlbumOfTheLastImportHoldsTheLastOnly)
{
    Writer to = writer();
    AlbumRows::replaceLastImport(to, {m_first.visible});
    AlbumRows::replaceLastImport(to, {m_second.visible});
    EXPECT_EQ(members(lastImport()), QList<qint64>{m_second.visible});
    EXPECT_EQ(number("SELECT versionCount FROM RKAlbum WHERE modelId=?", lastImport()), 1);
    EXPECT_TRUE(changes().albums.contains(u"lastImportAlbum"_s));
}
