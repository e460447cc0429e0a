#include "TrashRows.h"

#include "AlbumRows.h"
#include "EventRows.h"
#include "IntegrityCheck.h"
#include "LibraryFixture.h"
#include "PhotoRows.h"
#include "RowIdIndexes.h"

using namespace Qt::StringLiterals;

class TrashRowsTest : public LibraryFixture
{
protected:
    void SetUp() override
    {
        LibraryFixture::SetUp();
        Writer to = writer();
        m_event = EventRows::createEvent(to, u"One"_s);
        Kind early;
        early.fileName = u"IMG_0.JPG"_s;
        early.date = 294400000.0;
        m_first = addPhoto(m_event, early);
        m_second = addPhoto(m_event);
        EventRows::updateStatistics(to, m_event);
        changes() = {};
    }

    void TearDown() override
    {
        expectSoundIndexes();
        LibraryFixture::TearDown();
    }

    qint64 trashed(const char* table, const QString& uuid)
    {
        const std::string sql = std::string("SELECT isInTrash FROM ") + table + " WHERE uuid=?";
        return Sql::firstInteger(connection(), sql.c_str(), uuid).value_or(-1);
    }

    QString poster()
    {
        return Sql::firstText(
            connection(), "SELECT posterVersionUuid FROM RKFolder WHERE uuid=?", m_event);
    }

    qint64 albumOfEvent()
    {
        return Sql::firstInteger(connection(),
                                 "SELECT a.isInTrash FROM RKAlbum a JOIN RKFolder f ON "
                                 "f.implicitAlbumUuid=a.uuid WHERE f.uuid=?",
                                 m_event)
            .value_or(-1);
    }

    QString m_event;
    Photo m_first;
    Photo m_second;
};

TEST_F(TrashRowsTest, restoringUndoesMovingToTheTrash)
{
    Writer to = writer();
    const qint64 album = AlbumRows::createAlbum(to, u"Album"_s);
    AlbumRows::addPhotos(to, album, {m_second.visible});
    PhotoRows::assignKeyword(to, m_second.visible, u"Family"_s);
    const QStringList before = snapshot();
    EXPECT_EQ(TrashRows::moveToTrash(to, {m_second.visible}), 1);
    expectSoundIndexes();
    EXPECT_EQ(trashed("RKMaster", m_second.master), 1);
    EXPECT_EQ(number("SELECT sum(isInTrash) FROM RKVersion WHERE masterId>=?", 0), 2);
    EXPECT_EQ(number("SELECT versionCount FROM RKAlbum WHERE modelId=?", album), 1);
    EXPECT_EQ(TrashRows::restore(to, {m_second.visible}), 1);
    EXPECT_EQ(snapshot(), before);
}

TEST_F(TrashRowsTest, movingTwiceChangesNothingMore)
{
    Writer to = writer();
    EXPECT_EQ(TrashRows::moveToTrash(to, {m_second.visible, m_second.visible}), 1);
    const QStringList before = snapshot();
    changes() = {};
    EXPECT_EQ(TrashRows::moveToTrash(to, {m_second.visible, m_first.imported, 999}), 0);
    EXPECT_EQ(TrashRows::restore(to, {m_first.visible}), 0);
    EXPECT_EQ(snapshot(), before);
    EXPECT_TRUE(changes().isEmpty());
}

TEST_F(TrashRowsTest, theKeyPhotoGivesWayToTheEarliestThatIsLeft)
{
    Writer to = writer();
    EXPECT_EQ(poster(), m_first.visibleUuid);
    TrashRows::moveToTrash(to, {m_first.visible});
    EXPECT_EQ(poster(), m_second.visibleUuid);
}

TEST_F(TrashRowsTest, anEmptiedEventGoesToTheTrashWithItsAlbumAndComesBack)
{
    Writer to = writer();
    TrashRows::moveToTrash(to, {m_first.visible});
    EXPECT_EQ(trashed("RKFolder", m_event), 0);
    TrashRows::moveToTrash(to, {m_second.visible});
    expectSoundIndexes();
    EXPECT_EQ(trashed("RKFolder", m_event), 1);
    EXPECT_EQ(albumOfEvent(), 1);
    EXPECT_EQ(
        Sql::firstInteger(connection(), "SELECT versionCount FROM RKFolder WHERE uuid=?", m_event),
        0);
    TrashRows::restore(to, {m_second.visible});
    EXPECT_EQ(trashed("RKFolder", m_event), 0);
    EXPECT_EQ(albumOfEvent(), 0);
    EXPECT_EQ(poster(), m_second.visibleUuid);
}

TEST_F(TrashRowsTest, aHiddenPhotoKeepsItsEventOutOfTheTrash)
{
    Writer to = writer();
    Sql::execute(connection(), "UPDATE RKVersion SET isHidden=1 WHERE modelId=?", m_first.visible);
    RowIdIndexes::recomputeAll(to);
    TrashRows::moveToTrash(to, {m_second.visible});
    EXPECT_EQ(trashed("RKFolder", m_event), 0);
    TrashRows::moveToTrash(to, {m_first.visible});
    EXPECT_EQ(trashed("RKFolder", m_event), 1);
}

TEST_F(TrashRowsTest, bothMastersOfAPairGoTogether)
{
    Writer to = writer();
    const QString raw = addPartner(m_second, u"IMG_1.CR2"_s);
    const QStringList before = snapshot();
    TrashRows::moveToTrash(to, {m_second.visible});
    EXPECT_EQ(trashed("RKMaster", m_second.master), 1);
    EXPECT_EQ(trashed("RKMaster", raw), 1);
    EXPECT_EQ(Sql::firstInteger(
                  connection(), "SELECT min(isInTrash) FROM RKVersion WHERE masterUuid=?", raw),
              1);
    TrashRows::restore(to, {m_second.visible});
    EXPECT_EQ(snapshot(), before);
}

TEST_F(TrashRowsTest, ofTwoPhotosOfOneMasterEachGoesAndComesBackByItself)
{
    const auto contradictions = [this] {
        qsizetype found = 0;
        const auto told = IntegrityCheck::ofFormAndRows(connection(), IntegrityCheck::Depth::Rows);
        for (const Finding& finding : told.findings) {
            found += finding.what.contains(u"contradict"_s) ? 1 : 0;
        }
        return found;
    };
    Writer to = writer();
    RowIdIndexes::removeRows(to, "RKVersion", {m_second.imported});
    Sql::execute(
        connection(), "UPDATE RKVersion SET showInLibrary=1 WHERE modelId=?", m_second.imported);
    RowIdIndexes::addRows(to, "RKVersion", {m_second.imported});
    EXPECT_EQ(TrashRows::moveToTrash(to, {m_second.imported}), 1);
    EXPECT_EQ(trashed("RKMaster", m_second.master), 0) << "the other one shows it";
    EXPECT_EQ(contradictions(), 0);
    EXPECT_EQ(TrashRows::moveToTrash(to, {m_second.visible}), 1);
    EXPECT_EQ(trashed("RKMaster", m_second.master), 1);
    EXPECT_EQ(contradictions(), 0);
    EXPECT_EQ(TrashRows::restore(to, {m_second.imported}), 1);
    EXPECT_EQ(trashed("RKMaster", m_second.master), 0);
    EXPECT_EQ(trashed("RKVersion", m_second.visibleUuid), 1) << "that one was not asked for";
    EXPECT_EQ(contradictions(), 0);
}

TEST_F(TrashRowsTest, aMasterThatAnotherPhotoShowsStays)
{
    Writer to = writer();
    Sql::execute(connection(),
                 "UPDATE RKMaster SET alternateMasterUuid=? WHERE uuid=?",
                 m_first.master,
                 m_second.master);
    TrashRows::moveToTrash(to, {m_second.visible});
    EXPECT_EQ(trashed("RKMaster", m_first.master), 0);
}
