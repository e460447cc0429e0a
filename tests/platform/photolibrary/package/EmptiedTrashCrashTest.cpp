#include "AdminData.h"
#include "ChildProcess.h"
#include "OrdinaryUser.h"
#include "PackageFiles.h"
#include "QtPrinters.h"
#include "Queries.h"
#include "StateFolder.h"
#include "WritableLibrary.h"
#include "WriteAccess.h"

#include <QFile>
#include <QFileInfo>

#include <limits>

using namespace Qt::StringLiterals;

/// A library with one photo that is kept and one in the trash, and a program that ends while it
/// empties the trash.
class EmptiedTrashCrash : public WritableLibrary
{
protected:
    void SetUp() override
    {
        WritableLibrary::SetUp();
        {
            const auto library = open(Access::Write);
            ASSERT_NE(library, nullptr);
            import(*library, makePicture(u"KEPT.JPG"_s));
            ASSERT_TRUE(library->close().ok());
        }
        m_kept = photoFiles();
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        import(*library, makePicture(u"GONE.JPG"_s));
        const PhotoPtr photo = lastImported(*library);
        ASSERT_NE(photo, nullptr);
        photo->removeFrom(application(*library)->photoLibraryAlbum());
        ASSERT_TRUE(library->close().ok());
        m_doomed = photoFiles();
        for (const QString& file : std::as_const(m_kept)) {
            m_doomed.removeOne(file);
        }
        // The original, two thumbnails, three sidecars.
        ASSERT_EQ(m_doomed.size(), 6);
        ASSERT_EQ(m_doomed.filter(u"Masters/"_s).size(), 1);
    }

    /// Of photos: what is in Masters, Previews, Thumbnails and Database/Versions, sorted.
    [[nodiscard]] QStringList photoFiles() const
    {
        QStringList files = pictureFiles() + versionSidecars();
        files.sort();
        return files;
    }

    [[nodiscard]] QStringList keptFiles() const { return m_kept; }

    [[nodiscard]] QStringList allFiles() const
    {
        QStringList files = m_kept + m_doomed;
        files.sort();
        return files;
    }

    /// Path of the doomed original, relative to the package.
    [[nodiscard]] QString doomedMaster() const { return m_doomed.filter(u"Masters/"_s).first(); }

    [[nodiscard]] QString doomedGroup() const { return doomedMaster().section(u'/', 0, -2); }

    [[nodiscard]] QByteArray bytesOf(const QString& relativePath) const
    {
        QFile file(package() + u'/' + relativePath);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    /// A file of somebody's in the package.
    void putStray(const QString& relativePath) const
    {
        ASSERT_TRUE(QFile::copy(makePicture(u"stray.jpg"_s), package() + u'/' + relativePath));
    }

    /// How far the program got.
    enum class Until : quint8 { TheCommit, TheFirstFile, TheLastFolder };

    /// Empties the trash as far as that in a process of its own, which ends there.
    void emptyUntil(Until end) const
    {
        ChildProcess child([this, end](ChildProcess&) { emptyInSteps(end); });
        ASSERT_TRUE(child.crashed());
    }

    /// The problems that a reader is told.
    [[nodiscard]] QStringList problems() const
    {
        const auto library = open(Access::Read);
        const Result<LibrarySummary> summary = library->summary();
        EXPECT_TRUE(summary.ok());
        return summary.ok() ? summary.value().problems : QStringList();
    }

    /// Opening for writing recovers; returns what is to be told of it.
    [[nodiscard]] QString recover() const
    {
        const auto library = open(Access::Write);
        EXPECT_TRUE(library && library->close().ok());
        return library ? library->warnings().join(u'\n') : QString();
    }

private:
    /// The steps of PhotoLibrary::emptyTrash(), each by itself.
    void emptyInSteps(Until end) const
    {
        auto connection = Connection::open(package(), Connection::Mode::Write);
        const QString uuid = AdminData::text(*connection.value(), u"database"_s, u"databaseUuid"_s);
        const QString key = StateFolder::keyOf(QFileInfo(package()).canonicalFilePath(), uuid);
        const WriteAccess::Places places{
            package(), StateFolder::ofLibrary(key), StateFolder::ofBackups(key)};
        auto lock = LibraryLock::take(package(), places.state);
        auto access = WriteAccess::open(places, std::move(lock).value(), {});
        auto transaction = access.value()->begin(*connection.value());
        Writer writer = transaction.value()->writer();
        const QList<qint64> photos =
            Sql::integers(writer.connection,
                          "SELECT modelId FROM RKVersion WHERE showInLibrary=1 AND isInTrash<>0");
        const TrashRows::Leftovers leftovers = TrashRows::deleteForGood(writer, photos);
        if (photos.size() != 1 || !transaction.value()->doom(leftovers).ok()) {
            return;
        }
        if (end != Until::TheCommit) {
            if (!transaction.value()->commit().ok()) {
                return;
            }
            const qsizetype folders =
                end == Until::TheFirstFile ? 0 : std::numeric_limits<qsizetype>::max();
            for (const QString& folder :
                 leftovers.folders.first(qMin(folders, leftovers.folders.size()))) {
                static_cast<void>(PackageFiles::remove(package(), folder));
            }
        }
        ChildProcess::crash();
    }

    QStringList m_kept;
    QStringList m_doomed;
};

TEST_F(EmptiedTrashCrash, filesOfEmptiedPhotosGoAtTheNextOpeningAndNothingElseDoes)
{
    for (const QString& stray : {u"Masters/stray.jpg"_s, doomedGroup() + u"/neighbour.jpg"_s}) {
        putStray(stray);
    }
    const QString original = keptFiles().filter(u"Masters/"_s).first();
    const QByteArray before = bytesOf(original);
    emptyUntil(Until::TheFirstFile);
    ASSERT_EQ(rows(u"RKMaster"_s), 1) << "nothing was committed";
    ASSERT_EQ(photoFiles().size(), allFiles().size() + 2) << "files went before the crash";

    static_cast<void>(recover());
    QStringList left = photoFiles();
    EXPECT_TRUE(left.removeOne(u"Masters/stray.jpg"_s));
    EXPECT_TRUE(left.removeOne(doomedGroup() + u"/neighbour.jpg"_s));
    EXPECT_EQ(left, keptFiles());
    EXPECT_EQ(bytesOf(original), before);
    ASSERT_EQ(problems().size(), 1);
    EXPECT_TRUE(problems().first().startsWith(u"2 file(s) in Masters belong to no photo"_s))
        << problems().first().toStdString();
}

TEST_F(EmptiedTrashCrash, aDeletionThatWasCutOffInTheMiddleIsFinished)
{
    emptyUntil(Until::TheLastFolder);
    QStringList rest = keptFiles() + QStringList{doomedMaster()};
    rest.sort();
    ASSERT_EQ(photoFiles(), rest);
    static_cast<void>(recover());
    EXPECT_EQ(photoFiles(), keptFiles());
    EXPECT_FALSE(QFile::exists(package() + u'/' + doomedGroup())) << "an empty folder stays";
    expectSound();
}

TEST_F(EmptiedTrashCrash, aDeletionThatWasNotCommittedTakesNoFileAndNoPhoto)
{
    emptyUntil(Until::TheCommit);
    for (int run = 0; run < 2; ++run) {
        static_cast<void>(recover());
        EXPECT_EQ(photoFiles(), allFiles());
        EXPECT_EQ(rows(u"RKMaster"_s), 2);
    }
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    const Result<QList<PhotoFacts>> trashed = library->trashedPhotos();
    ASSERT_TRUE(trashed.ok());
    ASSERT_EQ(trashed.value().size(), 1);
    const Result<int> restored = library->restoreFromTrash({trashed.value().first().id});
    ASSERT_TRUE(restored.ok());
    EXPECT_EQ(restored.value(), 1);
    EXPECT_TRUE(library->close().ok());
    EXPECT_EQ(photoFiles(), allFiles());
    expectSound();
}

TEST_F(EmptiedTrashCrash, aReaderSweepsNothingAndFindsNothingWrong)
{
    emptyUntil(Until::TheFirstFile);
    EXPECT_EQ(problems(), QStringList());
    EXPECT_EQ(photoFiles(), allFiles());
    const auto library = open(Access::Read);
    ASSERT_NE(library, nullptr);
    EXPECT_TRUE(library->close().ok());
    EXPECT_EQ(photoFiles(), allFiles());
    static_cast<void>(recover());
    EXPECT_EQ(photoFiles(), keptFiles());
}

TEST_F(EmptiedTrashCrash, whatCannotBeSweptIsToldAndGoesLater)
{
    const OrdinaryUser user({folder()});
    emptyUntil(Until::TheFirstFile);
    {
        const WithPermissions closed(package() + u'/' + doomedGroup(), 0555);
        for (int run = 0; run < 2; ++run) {
            const QString told = recover();
            EXPECT_TRUE(told.contains(
                u"These files in the library \"%1\" belong to no photo any more but could not be "
                "removed; the next run tries again, make their folders writable:"_s.arg(package())))
                << told.toStdString();
            EXPECT_TRUE(told.contains("  "_L1 + doomedMaster() + ": Permission denied"_L1))
                << told.toStdString();
            QStringList rest = keptFiles() + QStringList{doomedMaster()};
            rest.sort();
            EXPECT_EQ(photoFiles(), rest);
            EXPECT_EQ(problems(), QStringList());
        }
    }
    EXPECT_FALSE(recover().contains("could not be removed"_L1));
    EXPECT_EQ(photoFiles(), keptFiles());
}

TEST_F(EmptiedTrashCrash, filesThatNoJournalNamesAreReportedAndLeft)
{
    // Another user, or this one with another home, knows nothing of the deletion.
    emptyUntil(Until::TheFirstFile);
    qputenv("XDG_STATE_HOME", QFile::encodeName(folder() + u"/otherState"_s));
    static_cast<void>(recover());
    const QStringList told = problems();
    qunsetenv("XDG_STATE_HOME");
    EXPECT_EQ(photoFiles(), allFiles());
    ASSERT_EQ(told.size(), 1);
    EXPECT_EQ(told.first(),
              u"1 file(s) in Masters belong to no photo, the first is %1."_s.arg(
                  doomedMaster().section(u'/', 1)));
}
