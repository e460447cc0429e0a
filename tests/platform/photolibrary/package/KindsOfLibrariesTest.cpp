#include "KindsOfLibraries.h"

#include "ChildProcess.h"
#include "ModelIds.h"
#include "QtPrinters.h"
#include "Queries.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <filesystem>

using namespace Qt::StringLiterals;

TEST_F(KindsOfLibraries, ofAPairTheRawMasterIsTheOriginalWhicheverIsShown)
{
    for (const auto active : {LibraryBuilder::Active::Raw, LibraryBuilder::Active::Jpeg}) {
        const QString name = active == LibraryBuilder::Active::Raw ? u"A"_s : u"B"_s;
        const PhotoFacts facts = shown(m_builder.addPair(name, u"Trip"_s, active));
        EXPECT_TRUE(facts.raw);
        EXPECT_EQ(facts.fileName, name + u".dng"_s);
        EXPECT_TRUE(facts.originalPath.endsWith(u'/' + name + u".dng"_s));
        EXPECT_EQ(facts.bytes, bytes(facts.originalPath));
        const auto library = open(Access::Read);
        const QVariantMap record = photo(*library, facts.id)->properties().value();
        EXPECT_EQ(record.value(u"originalPath"_s).toString(), facts.originalPath);
        EXPECT_EQ(photo(*library, facts.id)->evidence().files.size(), 3) << "and its preview";
    }
    const LibrarySummary summary = open(Access::Read)->summary().value();
    EXPECT_EQ(summary.photos, 2);
    EXPECT_EQ(summary.rawPhotos, 2);
    expectSound();
}

TEST_F(KindsOfLibraries, aPairGoesToTheTrashAndComesBackWithBothMasters)
{
    const qint64 id = m_builder.addPair(u"A"_s, u"Trip"_s, LibraryBuilder::Active::Jpeg);
    const QString raw = shown(id).originalPath;
    const QString jpeg = master(m_builder.imagePath(id));
    ASSERT_NE(raw, jpeg);
    remove(id);
    EXPECT_EQ(trashed(id).bytes, bytes(raw) + bytes(jpeg));
    EXPECT_EQ(open(Access::Read)->summary().value().trashedBytes, bytes(raw) + bytes(jpeg));
    expectSound();
    EXPECT_EQ(open(Access::Write)->restoreFromTrash({id}).value(), 1);
    EXPECT_EQ(shown(id).originalPath, raw);
    expectSound();
    remove(id);
    EXPECT_GE(open(Access::Write)->emptyTrash().value().bytes, 1);
    EXPECT_FALSE(QFile::exists(raw) || QFile::exists(jpeg));
    expectSound();
}

TEST_F(KindsOfLibraries, aPartnerThatIsAPhotoItselfFreesNothingWithTheOther)
{
    const qint64 raw = m_builder.addRaw(u"A.dng"_s, u"Trip"_s);
    const qint64 jpeg = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    m_builder.edit([raw, jpeg](Writer& writer) {
        for (const auto& [photo, partner] : {std::pair{raw, jpeg}, std::pair{jpeg, raw}}) {
            Sql::execute(writer.connection,
                         "UPDATE RKMaster SET alternateMasterUuid=(SELECT masterUuid FROM RKVersion"
                         " WHERE modelId=?) WHERE uuid=(SELECT masterUuid FROM RKVersion"
                         " WHERE modelId=?)",
                         partner,
                         photo);
        }
    });
    const QString file = shown(raw).originalPath;
    remove(raw);
    EXPECT_EQ(trashed(raw).bytes, bytes(file));
    remove(jpeg);
    EXPECT_EQ(trashed(raw).bytes, bytes(file)) << "each counts its own";
}

TEST_F(KindsOfLibraries, aMasterThatAnotherPhotoShowsFreesNothing)
{
    const qint64 id = m_builder.addPair(u"A"_s, u"Trip"_s, LibraryBuilder::Active::Jpeg);
    const qint64 other = m_builder.addPhoto(u"B.JPG"_s, u"Trip"_s);
    const QString jpeg = master(m_builder.imagePath(id));
    const QString raw = shown(id).originalPath;
    m_builder.edit([id, other](Writer& writer) {
        Sql::execute(writer.connection,
                     "UPDATE RKVersion SET nonRawMasterUuid=(SELECT nonRawMasterUuid FROM RKVersion"
                     " WHERE modelId=?) WHERE modelId=?",
                     id,
                     other);
    });
    m_builder.moveToTrash(id);
    EXPECT_EQ(trashed(id).bytes, bytes(raw));
    EXPECT_TRUE(open(Access::Write)->emptyTrash().ok());
    EXPECT_TRUE(QFile::exists(jpeg));
    EXPECT_FALSE(QFile::exists(raw));
}

TEST_F(KindsOfLibraries, ofTheTrashOnlyWhatWasAskedAboutIsDeletedAndCounted)
{
    const qint64 listed = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    const qint64 putBack = m_builder.addPhoto(u"B.JPG"_s, u"Trip"_s);
    const qint64 later = m_builder.addPhoto(u"C.JPG"_s, u"Trip"_s);
    m_builder.moveToTrash(listed);
    m_builder.moveToTrash(later);
    const QString file = trashed(later).originalPath;
    const Result<EmptiedTrash> emptied = open(Access::Write)->emptyTrash({{listed, putBack}});
    ASSERT_TRUE(emptied.ok()) << emptied.error().message.toStdString();
    EXPECT_EQ(emptied.value().photos, 1);
    EXPECT_EQ(trashed(listed).id, 0);
    EXPECT_EQ(shown(putBack).id, putBack);
    EXPECT_EQ(trashed(later).id, later);
    EXPECT_TRUE(QFile::exists(file));
    EXPECT_EQ(open(Access::Write)->emptyTrash().value().photos, 1) << "the rest";
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(KindsOfLibraries, aReferencedMasterIsFoundOnlyWhereItsDiskIsSaidToBe)
{
    const qint64 id = m_builder.addRaw(u"A.dng"_s, u"Trip"_s);
    const QString disk = m_folder.filePath(u"disk"_s);
    m_builder.makeReference(id, u"Photos"_s, disk, u"2012/A.dng"_s);
    PhotoFacts facts = shown(id);
    EXPECT_TRUE(facts.missing && facts.originalPath.isEmpty());
    EXPECT_EQ(facts.volume, u"Photos"_s);
    EXPECT_EQ(open(Access::Read)->summary().value().offlineVolumes, QStringList{u"Photos"_s});
    EXPECT_TRUE(photo(*open(Access::Read), id)->properties()->value(u"originalPath"_s).isNull());

    m_volumes = {{u"Photos"_s, disk}};
    facts = shown(id);
    EXPECT_FALSE(facts.missing);
    EXPECT_EQ(facts.originalPath, disk + u"/2012/A.dng"_s);
    EXPECT_EQ(facts.bytes, bytes(facts.originalPath));
    EXPECT_TRUE(open(Access::Read)->summary().value().offlineVolumes.isEmpty());
    const auto library = open(Access::Read);
    EXPECT_EQ(photo(*library, id)->originalPath(), facts.originalPath);

    m_volumes = {{u"Photos"_s, m_folder.filePath(u"unplugged"_s)}};
    EXPECT_TRUE(shown(id).originalPath.isEmpty());
}

TEST_F(KindsOfLibraries, aReferencedMasterOfTheMacsOwnDiskIsFoundBelowItsRoot)
{
    const qint64 id = m_builder.addRaw(u"A.dng"_s, u"Trip"_s);
    const QString root = m_folder.filePath(u"root"_s);
    m_builder.makeReference(id, QString(), root, u"Users/me/A.dng"_s);
    EXPECT_EQ(shown(id).volume, u"/"_s);
    m_volumes = {{u"/"_s, root}};
    EXPECT_EQ(shown(id).originalPath, root + u"/Users/me/A.dng"_s);
}

TEST_F(KindsOfLibraries, aReferencedMasterIsNeverDeletedNorCountedAsFreed)
{
    const qint64 id = m_builder.addRaw(u"A.dng"_s, u"Trip"_s);
    const QString disk = m_folder.filePath(u"disk"_s);
    m_builder.makeReference(id, u"Photos"_s, disk, u"A.dng"_s);
    m_volumes = {{u"Photos"_s, disk}};
    remove(id);
    EXPECT_EQ(trashed(id).bytes, 0);
    EXPECT_TRUE(open(Access::Write)->emptyTrash().ok());
    EXPECT_EQ(trashed(id).id, 0);
    EXPECT_TRUE(QFile::exists(disk + u"/A.dng"_s));
}

TEST_F(KindsOfLibraries, unfinishedSidecarsOfAReferencedMasterAreRemovedAfterACrash)
{
    const qint64 id = m_builder.addRaw(u"A.dng"_s, u"Trip"_s);
    m_builder.makeReference(id, u"Photos"_s, m_folder.filePath(u"disk"_s), u"2012/A.dng"_s);
    ChildProcess writer([&](ChildProcess&) {
        const auto library = open(Access::Write);
        photo(*library, id)->setRating(3);
        ChildProcess::crash();
    });
    ASSERT_TRUE(writer.crashed());
    QDirIterator sidecars(m_builder.package() + u"/Database/Versions"_s,
                          {u"Master.apmaster"_s},
                          QDir::Files,
                          QDirIterator::Subdirectories);
    ASSERT_TRUE(sidecars.hasNext());
    const QString master = sidecars.next();
    const QString folder = QFileInfo(master).path();
    const QStringList unfinished{folder + u"/.Master.apmaster.0abc123.corvane-new"_s,
                                 folder + u"/.Version-0.apversion.0abc123.corvane-new"_s};
    for (const QString& file : unfinished) {
        ASSERT_TRUE(QFile::copy(master, file));
    }
    ASSERT_TRUE(open(Access::Write)->close().ok());
    for (const QString& file : unfinished) {
        EXPECT_FALSE(QFile::exists(file)) << file.toStdString();
    }
}

TEST_F(KindsOfLibraries, whatIsWithoutAMasterStaysWhenTheTrashIsEmptied)
{
    const qint64 without = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    const qint64 whole = m_builder.addPhoto(u"B.JPG"_s, u"Trip"_s);
    m_builder.moveToTrash(without);
    m_builder.moveToTrash(whole);
    m_builder.edit([without](Writer& writer) {
        Sql::execute(writer.connection,
                     "DELETE FROM RKMaster WHERE uuid=(SELECT masterUuid FROM RKVersion"
                     " WHERE modelId=?)",
                     without);
    });
    EXPECT_EQ(trashed(without).id, 0) << "it is not shown";
    EXPECT_TRUE(open(Access::Write)->emptyTrash().ok());
    const auto connection = Connection::open(m_builder.package(), Connection::Mode::Read);
    EXPECT_EQ(
        Sql::integers(*connection.value(), "SELECT modelId FROM RKVersion WHERE showInLibrary=1"),
        QList<qint64>{without});
}

TEST_F(KindsOfLibraries, ofTwoKeywordsOfOneSpellingTheOneOfThatNameIsAssigned)
{
    const qint64 id = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    m_builder.edit([](Writer& writer) {
        for (const QString& name : {u"raw"_s, u"RAW"_s}) {
            Sql::execute(
                writer.connection,
                "INSERT INTO RKKeyword(modelId,uuid,name,searchName) VALUES(?1,?2,?2,'raw')",
                ModelIds::allocate(writer, "RKKeyword"),
                name);
        }
    });
    {
        const auto library = open(Access::Write);
        library->setSelection({id});
        application(*library)->assignKeywordString(u"RAW"_s);
        ASSERT_TRUE(library->close().ok());
    }
    EXPECT_EQ(shown(id).keywords, QStringList{u"RAW"_s});
}

TEST_F(KindsOfLibraries, ofAnEditedPhotoThePreviewIsShownAndTheMasterIsTheOriginal)
{
    const qint64 id = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    EXPECT_FALSE(shown(id).edited);
    EXPECT_EQ(shown(id).imagePath, shown(id).originalPath);
    const QString preview = m_builder.makeEdited(id);
    const PhotoFacts facts = shown(id);
    EXPECT_TRUE(facts.edited);
    EXPECT_EQ(facts.imagePath, preview);
    EXPECT_EQ(facts.originalPath, master(m_builder.imagePath(id)));
}

TEST_F(KindsOfLibraries, hiddenAndFlaggedPhotosStaySo)
{
    const qint64 hidden = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    const qint64 flagged = m_builder.addPhoto(u"B.JPG"_s, u"Trip"_s);
    m_builder.setHidden(hidden);
    m_builder.setFlagged(flagged);
    EXPECT_TRUE(shown(hidden).hidden);
    EXPECT_FALSE(shown(flagged).hidden);
    EXPECT_EQ(open(Access::Read)->summary().value().photos, 1);
    for (const qint64 id : {hidden, flagged}) {
        remove(id);
        EXPECT_EQ(open(Access::Write)->restoreFromTrash({id}).value(), 1);
    }
    EXPECT_TRUE(shown(hidden).hidden);
    const auto connection = Connection::open(m_builder.package(), Connection::Mode::Read);
    EXPECT_EQ(Sql::integers(*connection.value(), "SELECT modelId FROM RKVersion WHERE isFlagged=1"),
              QList<qint64>{flagged});
    expectSound();
}

TEST_F(KindsOfLibraries, aMovieIsListedAsOneAndIsNoPhoto)
{
    const qint64 id = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    m_builder.makeMovie(id);
    EXPECT_TRUE(shown(id).movie);
    EXPECT_EQ(open(Access::Read)->summary().value().photos, 0);
}

TEST_F(KindsOfLibraries, aPhotoThatIsInTheTrashAlreadyStaysThereUnchanged)
{
    const qint64 id = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    m_builder.moveToTrash(id);
    EXPECT_EQ(shown(id).id, 0);
    const PhotoFacts before = trashed(id);
    EXPECT_EQ(before.id, id);
    remove(id);
    EXPECT_TRUE(trashed(id) == before);
    expectSound();
}

TEST_F(KindsOfLibraries, anEmptyEventIsNotCounted)
{
    static_cast<void>(m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s));
    m_builder.addEmptyEvent(u"Nothing"_s);
    EXPECT_EQ(open(Access::Read)->summary().value().rolls, 1);
    expectSound();
}

TEST_F(KindsOfLibraries, anAlbumInAFolderIsOneOfTheUsersOwn)
{
    const qint64 id = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    m_builder.addAlbumInFolder(u"Folder"_s, u"Inside"_s, {id});
    EXPECT_EQ(shown(id).albums, QStringList{u"Inside"_s});
    expectSound();
}

TEST_F(KindsOfLibraries, albumsOfAPhotoAreNamedInOrderWhateverTheirLetters)
{
    const qint64 id = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    for (const QString& name : {u"beach"_s, u"Alps"_s, u"cars"_s, u"Attic"_s}) {
        m_builder.addAlbum(name, {id});
    }
    EXPECT_EQ(shown(id).albums, QStringList({u"Alps"_s, u"Attic"_s, u"beach"_s, u"cars"_s}));
}

TEST_F(KindsOfLibraries, anAlbumInAFolderThatIsInTheTrashIsNoneOfTheUsersOwn)
{
    const qint64 id = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    const qint64 album = m_builder.addAlbumInFolder(u"Folder"_s, u"Inside"_s, {id});
    m_builder.edit([](Writer& writer) {
        writer.connection.database().exec("UPDATE RKFolder SET isInTrash=1 WHERE name='Folder'");
    });
    EXPECT_EQ(shown(id).albums, QStringList());
    const auto library = open(Access::Write);
    photo(*library, id)->setRating(3);
    ASSERT_TRUE(library->close().ok());
    QFile catalogue(m_builder.package() + u"/AlbumData.xml"_s);
    ASSERT_TRUE(catalogue.open(QIODevice::ReadOnly));
    const QByteArray bytes = catalogue.readAll();
    EXPECT_TRUE(bytes.contains("<string>A</string>"));
    EXPECT_FALSE(bytes.contains("<integer>" + QByteArray::number(album) + "</integer>"));
    EXPECT_FALSE(bytes.contains("Inside"));
    expectSound();
}

TEST_F(KindsOfLibraries, onlyARegularAlbumOfTheUsersOwnIsTakenForOneAndTakesPhotos)
{
    const qint64 id = m_builder.addPhoto(u"A.JPG"_s, u"Corvane For iPhoto"_s);
    m_builder.addEmptyEvent(u"Corvane For iPhoto"_s);
    QList<qint64> others;
    for (const QString& kind : {u"albumSubclass=2, versionCount=NULL"_s,
                                u"serviceName='Flickr'"_s,
                                u"folderUuid='RKPhotostreamFolder'"_s,
                                u"folderUuid='PublishedProjects'"_s,
                                u"folderUuid='TopLevelSlideshows'"_s,
                                u"albumType=8"_s}) {
        others << m_builder.addAlbum(u"Corvane For iPhoto"_s, {});
        m_builder.set(u"RKAlbum"_s, others.last(), kind);
    }
    const qint64 own = m_builder.addAlbum(u"Corvane For iPhoto"_s, {});
    {
        const auto library = open(Access::Write);
        QList<qint64> regular;
        for (const AlbumPtr& album : application(*library)->albums()) {
            if (album->type() == kRegularAlbumType) {
                regular << album->id();
            }
            photo(*library, id)->addTo(album);
        }
        EXPECT_EQ(regular, QList<qint64>{own});
    }
    const auto connection = Connection::open(m_builder.package(), Connection::Mode::Read);
    for (const qint64 album : std::as_const(others)) {
        EXPECT_TRUE(Sql::integers(*connection.value(),
                                  "SELECT modelId FROM RKAlbumVersion WHERE albumId=?",
                                  album)
                        .isEmpty());
    }
    EXPECT_EQ(shown(id).albums, QStringList{u"Corvane For iPhoto"_s});
    expectSound();
}

TEST_F(KindsOfLibraries, mastersBehindALinkThatLeadsOutAreReadAndNeverDeleted)
{
    const qint64 id = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    const QString inside = m_builder.package() + u"/Masters"_s;
    const QString outside = m_folder.filePath(u"large disk"_s);
    ASSERT_TRUE(QDir().rename(inside, outside) && QFile::link(outside, inside));
    const PhotoFacts facts = shown(id);
    EXPECT_FALSE(facts.missing);
    remove(id);
    const Result<EmptiedTrash> freed = open(Access::Write)->emptyTrash();
    ASSERT_TRUE(freed.ok()) << freed.error().message.toStdString();
    EXPECT_LT(freed.value().bytes, facts.bytes + 100000);
    EXPECT_TRUE(QFile::exists(facts.originalPath));
    EXPECT_EQ(trashed(id).id, 0);
    EXPECT_TRUE(open(Access::Write)->warnings().isEmpty());
}

TEST_F(KindsOfLibraries, aMasterWithAnotherNameOnTheDiskFreesNothing)
{
    const qint64 id = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    const qint64 other = m_builder.addPhoto(u"B.JPG"_s, u"Trip"_s);
    const QString path = shown(id).originalPath;
    const QString second = m_folder.filePath(u"kept.jpg"_s);
    std::filesystem::create_hard_link(path.toStdString(), second.toStdString());
    const qint64 size = bytes(path);
    remove(other);
    const qint64 whole = open(Access::Write)->emptyTrash().value().bytes;
    remove(id);
    constexpr qint64 kSidecars = 500; // theirs differ by some bytes
    ASSERT_GT(size, 2 * kSidecars);
    EXPECT_NEAR(static_cast<double>(open(Access::Write)->emptyTrash().value().bytes),
                static_cast<double>(whole - size),
                kSidecars);
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_EQ(bytes(second), size);
}

TEST_F(KindsOfLibraries, mastersAreFoundHoweverTheirNamesAreComposed)
{
    const QString composed = u"Caf\u00e9.JPG"_s;
    const QString decomposed = u"Cafe\u0301.JPG"_s;
    for (const auto& [inDatabase, onDisk] :
         {std::pair{composed, decomposed}, std::pair{decomposed, composed}}) {
        const qint64 id = m_builder.addPhoto(inDatabase, inDatabase);
        const QString path = master(m_builder.imagePath(id));
        const QString copied = QFileInfo(path).path() + u'/' + onDisk;
        ASSERT_TRUE(QFile::rename(path, copied)); // as copying from a Mac does
        const PhotoFacts facts = shown(id);
        EXPECT_FALSE(facts.missing);
        EXPECT_EQ(facts.originalPath, copied);
        EXPECT_EQ(facts.fileName, inDatabase);
        EXPECT_EQ(facts.rollName, inDatabase);
        EXPECT_EQ(findings().filter(QFileInfo(copied).fileName()), QStringList());
        remove(id);
        EXPECT_GT(open(Access::Write)->emptyTrash().value().bytes, 0);
        EXPECT_FALSE(QFile::exists(copied));
    }
    expectSound();
}
