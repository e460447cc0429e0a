#include "OrdinaryUser.h"
#include "WritableLibrary.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QThread>

#include <memory>

using namespace Qt::StringLiterals;

class PhotoLibraryImport : public WritableLibrary
{
protected:
    void SetUp() override
    {
        WritableLibrary::SetUp();
        m_library = open(Access::Write);
        ASSERT_NE(m_library, nullptr);
    }

    [[nodiscard]] PhotoLibrary& library() { return *m_library; }

    /// Only outside transactions: closing a file gives up the locks that this process has on it.
    [[nodiscard]] QByteArray databaseBytes() const
    {
        QByteArray all;
        for (const QString& name :
             {u"Library.apdb"_s, u"Properties.apdb"_s, u"ImageProxies.apdb"_s}) {
            QFile file(package() + u"/Database/apdb/"_s + name);
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            all += file.readAll();
        }
        return all;
    }

    /// That the import raises `name` and the library is, to the byte, what it was before.
    void expectRefused(const QString& path, const QString& name, const QString& mentioned)
    {
        const QByteArray before = databaseBytes();
        const QStringList filesBefore = pictureFiles();
        try {
            import(library(), path);
            ADD_FAILURE() << path.toStdString() << " was imported";
        } catch (const ScriptingException& exception) {
            EXPECT_EQ(exception.name(), name);
            EXPECT_TRUE(exception.reason().contains(mentioned)) << exception.what();
        }
        EXPECT_TRUE(WritableLibrary::application(library())->lastImportAlbum()->photos().isEmpty());
        EXPECT_EQ(databaseBytes(), before);
        EXPECT_EQ(pictureFiles(), filesBefore);
    }

    [[nodiscard]] QList<qint64> libraryIds()
    {
        QList<qint64> ids;
        for (const PhotoPtr& photo :
             WritableLibrary::application(library())->photoLibraryAlbum()->photos()) {
            ids << photo->id();
        }
        return ids;
    }

    /// Removes from the whole library, which is how the application trashes.
    void trash(const PhotoPtr& photo)
    {
        photo->removeFrom(WritableLibrary::application(library())->photoLibraryAlbum());
    }

    [[nodiscard]] QList<qint64> trashedIds()
    {
        QList<qint64> ids;
        const Result<QList<PhotoFacts>> photos = library().trashedPhotos();
        EXPECT_TRUE(photos.ok());
        for (const PhotoFacts& photo : photos.ok() ? photos.value() : QList<PhotoFacts>()) {
            ids << photo.id;
        }
        return ids;
    }

private:
    std::unique_ptr<PhotoLibrary> m_library;
};

TEST_F(PhotoLibraryImport, aTruncatedPictureIsRefusedAndNothingChanges)
{
    QFile whole(makePicture(u"whole.JPG"_s));
    ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
    const QByteArray bytes = whole.readAll();
    const QString half = makeFile(u"half.JPG"_s, bytes.left(bytes.size() - bytes.size() / 8));
    expectRefused(half, u"ImportFailed"_s, half);
}

TEST_F(PhotoLibraryImport, aTextFileIsRefusedAndNothingChanges)
{
    const QString text = makeFile(u"text.JPG"_s, "Not a picture at all.\n");
    expectRefused(text, u"ImportFailed"_s, text);
}

TEST_F(PhotoLibraryImport, aMissingFileIsRefusedAndNothingChanges)
{
    const QString missing = package() + u"/../missing.JPG"_s;
    expectRefused(missing, u"ImportFailed"_s, missing);
}

TEST_F(PhotoLibraryImport, aRefusedImportForgetsTheLastImport)
{
    import(library(), makePicture(u"IMG_1.JPG"_s));
    ASSERT_NE(lastImported(library()), nullptr);
    const QString text = makeFile(u"text.JPG"_s, "Not a picture at all.\n");
    expectRefused(text, u"ImportFailed"_s, text);
    EXPECT_EQ(libraryIds().size(), 1);
}

TEST_F(PhotoLibraryImport, aRefusedImportLeavesItsTurnUsable)
{
    const auto turn = library().beginPhotoTurn();
    const QString text = makeFile(u"text.JPG"_s, "Not a picture at all.\n");
    expectRefused(text, u"ImportFailed"_s, text);
    import(library(), makePicture(u"IMG_1.JPG"_s));
    turn->commit();
    EXPECT_TRUE(library().close().ok());
    EXPECT_EQ(rows(u"RKMaster"_s), 1);
    expectSound();
}

TEST_F(PhotoLibraryImport, anImportAfterAStopIsInterrupted)
{
    library().requestStop();
    expectRefused(makePicture(u"IMG_1.JPG"_s), u"Interrupted"_s, u"interrupted"_s);
}

TEST_F(PhotoLibraryImport, anImportOutsideATurnIsSeenByOtherThreadsAtOnce)
{
    import(library(), makePicture(u"IMG_1.JPG"_s));
    QList<qint64> seen;
    const std::unique_ptr<QThread> other(QThread::create([this, &seen] { seen = libraryIds(); }));
    other->start();
    ASSERT_TRUE(other->wait());
    EXPECT_EQ(seen, QList<qint64>{lastImported(library())->id()});
    EXPECT_EQ(rows(u"RKMaster"_s), 1) << "not durable";
}

TEST_F(PhotoLibraryImport, aPhotoRemovedFromTheLibraryIsInTheTrashAndComesBack)
{
    import(library(), makePicture(u"IMG_1.JPG"_s));
    const PhotoPtr photo = lastImported(library());
    ASSERT_NE(photo, nullptr);
    const QStringList files = pictureFiles();
    trash(photo);
    EXPECT_EQ(trashedIds(), QList<qint64>{photo->id()});
    EXPECT_TRUE(libraryIds().isEmpty());

    const QByteArray once = databaseBytes();
    trash(photo);
    EXPECT_EQ(databaseBytes(), once) << "trashing twice changed something";

    const Result<int> restored = library().restoreFromTrash({photo->id()});
    ASSERT_TRUE(restored.ok());
    EXPECT_EQ(restored.value(), 1);
    EXPECT_TRUE(trashedIds().isEmpty());
    EXPECT_EQ(libraryIds(), QList<qint64>{photo->id()});
    EXPECT_EQ(pictureFiles(), files);
    EXPECT_TRUE(library().close().ok());
    expectSound();
}

TEST_F(PhotoLibraryImport, emptyingTheTrashDeletesItsFilesAndNoOthers)
{
    import(library(), makePicture(u"KEPT.JPG"_s));
    const QStringList kept = pictureFiles();
    import(library(), makePicture(u"GONE.JPG"_s));
    const PhotoPtr photo = lastImported(library());
    ASSERT_NE(photo, nullptr);
    ASSERT_GT(pictureFiles().size(), kept.size());
    trash(photo);
    const Result<EmptiedTrash> freed = library().emptyTrash();
    ASSERT_TRUE(freed.ok()) << freed.error().message.toStdString();
    EXPECT_GT(freed.value().bytes, 0);
    EXPECT_EQ(pictureFiles(), kept);
    EXPECT_TRUE(trashedIds().isEmpty());
    EXPECT_EQ(libraryIds().size(), 1);
    EXPECT_TRUE(library().close().ok());
    EXPECT_EQ(rows(u"RKMaster"_s), 1);
    expectSound();
}

/// A photo in the trash whose original's folder cannot be written.
class TrashThatStays : public WritableLibrary
{
protected:
    void SetUp() override
    {
        WritableLibrary::SetUp();
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        import(*library, makePicture(u"STAYS.JPG"_s));
        const PhotoPtr photo = lastImported(*library);
        ASSERT_NE(photo, nullptr);
        photo->removeFrom(application(*library)->photoLibraryAlbum());
        ASSERT_TRUE(library->close().ok());
        m_masters = pictureFiles().filter(u"Masters/"_s);
        ASSERT_EQ(m_masters.size(), 1);
        m_group = package() + u'/' + m_masters.first().section(u'/', 0, -2);
    }

    /// Empties the trash while the original cannot be removed; returns the message.
    [[nodiscard]] QString emptyInVain() const
    {
        const WithPermissions closed(m_group, 0555);
        const auto library = open(Access::Write);
        const Result<EmptiedTrash> freed =
            library ? library->emptyTrash()
                    : Result<EmptiedTrash>(Error{ErrorCode::Internal, QString()});
        EXPECT_FALSE(freed.ok());
        EXPECT_TRUE(library && library->close().ok());
        return freed.ok() ? QString() : freed.error().message;
    }

    QStringList m_masters;
    QString m_group;
};

TEST_F(TrashThatStays, filesThatCannotBeRemovedAreNamedAndNotCountedAsFreed)
{
    const OrdinaryUser user({folder()});
    qint64 before = 0;
    for (const QString& file : pictureFiles() + versionSidecars()) {
        before += QFileInfo(package() + u'/' + file).size();
    }
    const qint64 master = QFileInfo(package() + u'/' + m_masters.first()).size();
    const QString message = emptyInVain();
    EXPECT_EQ(pictureFiles(), m_masters) << "all the others are gone";
    EXPECT_TRUE(message.contains(m_masters.first() + u": Permission denied"_s))
        << message.toStdString();
    EXPECT_TRUE(message.contains(package())) << message.toStdString();
    EXPECT_TRUE(message.contains(u"next run"_s)) << message.toStdString();
    const QString freed =
        QString::number(static_cast<double>(before - master) / 1048576.0, 'f', 2) + u" MB"_s;
    EXPECT_TRUE(message.contains(freed)) << message.toStdString() << freed.toStdString();
    EXPECT_EQ(rows(u"RKMaster"_s), 0);
}

TEST_F(TrashThatStays, filesThatCouldNotBeRemovedGoAtTheNextRun)
{
    const OrdinaryUser user({folder()});
    ASSERT_FALSE(emptyInVain().isEmpty());
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(pictureFiles(), QStringList());
    EXPECT_FALSE(QFile::exists(m_group)) << "an empty folder stays";
    EXPECT_TRUE(library->close().ok());
    expectSound();
}

TEST_F(TrashThatStays, filesAreNotForgottenHoweverManyRunsCannotRemoveThem)
{
    const OrdinaryUser user({folder()});
    ASSERT_FALSE(emptyInVain().isEmpty());
    for (int run = 0; run < 2; ++run) {
        const WithPermissions closed(m_group, 0555);
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        import(*library, makePicture(u"RUN%1.JPG"_s.arg(run)));
        EXPECT_TRUE(library->close().ok());
        EXPECT_TRUE(pictureFiles().contains(m_masters.first()));
    }
    EXPECT_TRUE(open(Access::Write)->close().ok());
    EXPECT_FALSE(pictureFiles().contains(m_masters.first()));
    EXPECT_EQ(pictureFiles().filter(u"Masters/"_s).size(), 2);
    expectSound();
}

TEST_F(PhotoLibraryImport, nothingIsWrittenBehindALinkThatLeadsOut)
{
    const QString outside = folder() + u"/outside"_s;
    ASSERT_TRUE(QDir().mkpath(outside));
    const QString today = QDate::currentDate().toString(u"yyyy/MM/dd"_s);
    const QString month = today.section(u'/', 0, 1);
    for (const QString& root : {u"Masters/"_s, u"Thumbnails/"_s}) {
        const QString link = package() + u'/' + root + month;
        ASSERT_TRUE(QDir().mkpath(link.section(u'/', 0, -2)));
        ASSERT_TRUE(QFile::link(outside, link));
        expectRefused(makePicture(u"IMG_1.JPG"_s),
                      u"ImportFailed"_s,
                      u"a symbolic link leads from there out of the library"_s);
        EXPECT_TRUE(QDir(outside).isEmpty());
        ASSERT_TRUE(QFile::remove(link));
    }
    import(library(), makePicture(u"IMG_1.JPG"_s));
    EXPECT_EQ(libraryIds().size(), 1);
}
