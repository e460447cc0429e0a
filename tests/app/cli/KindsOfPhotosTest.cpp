#include "CommandFixture.h"
#include "LibraryBuilder.h"
#include "Queries.h"
#include "UserDefaults.h"
#include "Writer.h"

#include <QFileInfo>
#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace
{

/// The program over libraries with photos of every kind that people have.
class KindsOfPhotosTest : public CommandFixture
{
protected:
    int scan(const QStringList& options)
    {
        return runHere(u"scan"_s, QStringList{u"--report"_s, reportPath()} + options);
    }

    /// A command on the builder's library.
    int runHere(const QString& command, const QStringList& options)
    {
        return run(QStringList{command, m_builder.package(), u"--defaults"_s, defaultsPath()} +
                   options);
    }

    /// What the report says of the photo.
    [[nodiscard]] QJsonObject entry(qint64 id) const
    {
        for (const auto& photo : report().value(u"photos"_s).toArray()) {
            if (photo.toObject().value(u"id"_s).toInteger() == id) {
                return photo.toObject();
            }
        }
        return {};
    }

    [[nodiscard]] QString outcome(qint64 id) const
    {
        return entry(id).value(u"outcome"_s).toString();
    }

    [[nodiscard]] static qint64 bytes(const QString& path) { return QFileInfo(path).size(); }

    /// Path of the photo's master.
    [[nodiscard]] QString master(qint64 id)
    {
        return m_builder.package() + u"/Masters/"_s + m_builder.imagePath(id);
    }

    LibraryBuilder m_builder{m_folder.filePath(u"Kinds.photolibrary"_s)};
};

} // namespace

TEST_F(KindsOfPhotosTest, ofAPairTheRawIsConvertedAndBothMastersGoAndComeBackTogether)
{
    const qint64 id = m_builder.addPair(u"A"_s, u"Trip"_s, LibraryBuilder::Active::Jpeg);
    const QString jpeg = master(id);
    ASSERT_EQ(scan({u"--raw"_s, u"--trash"_s, u"--originals"_s}), 0) << m_err.toStdString();
    EXPECT_EQ(outcome(id), u"converted"_s);
    const QString source = entry(id).value(u"source"_s).toString();
    EXPECT_TRUE(source.endsWith(u"/A.dng"_s)) << source.toStdString();
    EXPECT_EQ(entry(id).value(u"originalBytes"_s).toInteger(), bytes(source));
    EXPECT_EQ(report().value(u"originalsBytes"_s).toInteger(), bytes(source));

    ASSERT_EQ(runHere(u"trash"_s, {u"--json"_s}), 0);
    EXPECT_EQ(document().value(u"bytes"_s).toInteger(), bytes(source) + bytes(jpeg));
    ASSERT_EQ(runHere(u"trash"_s, {u"--restore"_s}), 0);
    ASSERT_EQ(runHere(u"info"_s, {u"--json"_s}), 0);
    EXPECT_EQ(document().value(u"trash"_s).toObject().value(u"photos"_s).toInt(), 0);
    EXPECT_EQ(document().value(u"raw"_s).toObject().value(u"bytes"_s).toInteger(), bytes(source));
    EXPECT_EQ(document().value(u"problems"_s).toArray().size(), 0) << m_out.toStdString();
}

TEST_F(KindsOfPhotosTest, aReferencedMasterIsConvertedWhereItsDiskIsTold)
{
    const qint64 id = m_builder.addRaw(u"A.dng"_s, u"Trip"_s);
    const QString disk = m_folder.filePath(u"disk"_s);
    m_builder.makeReference(id, u"Photos"_s, disk, u"2012/A.dng"_s);
    EXPECT_EQ(runHere(u"check"_s, {}), 1);
    EXPECT_TRUE(m_out.contains("offline: it lies on the disk “Photos” of the Mac"))
        << m_out.toStdString();
    EXPECT_EQ(runHere(u"info"_s, {}), 0);
    EXPECT_TRUE(m_out.contains("1 (some on disks that are not at hand: Photos)"))
        << m_out.toStdString();
    EXPECT_EQ(scan({u"--raw"_s}), 1);
    EXPECT_EQ(outcome(id), u"missing"_s);

    const QStringList volume{u"--volume"_s, u"Photos="_s + disk};
    EXPECT_EQ(runHere(u"check"_s, volume), 0) << m_out.toStdString();
    EXPECT_EQ(scan(QStringList{u"--raw"_s, u"--trash"_s} + volume), 0) << m_err.toStdString();
    EXPECT_EQ(entry(id).value(u"source"_s).toString(), disk + u"/2012/A.dng"_s);
    EXPECT_EQ(runHere(u"trash"_s, QStringList{u"--empty"_s, u"--yes"_s} + volume), 0);
    EXPECT_TRUE(QFile::exists(disk + u"/2012/A.dng"_s));
}

TEST_F(KindsOfPhotosTest, whereDisksAreIsASettingThatTheCommandLineGoesBeforeAndDoesNotStore)
{
    const qint64 id = m_builder.addRaw(u"A.dng"_s, u"Trip"_s);
    const QString disk = m_folder.filePath(u"disk"_s);
    m_builder.makeReference(id, u"Photos"_s, disk, u"A.dng"_s);
    EXPECT_EQ(runHere(u"check"_s, {u"--volume"_s, u"Photos="_s + disk}), 0);
    EXPECT_EQ(runHere(u"check"_s, {}), 1) << "it was stored";
    UserDefaults(defaultsPath())
        .setValue(u"VolumeFolders"_s, QVariantMap{{u"Photos"_s, disk}, {u"Other"_s, 7}});
    EXPECT_EQ(runHere(u"check"_s, {}), 0) << m_out.toStdString();
    EXPECT_EQ(runHere(u"check"_s, {u"--volume"_s, u"Photos="_s + m_folder.path()}), 1);
}

TEST_F(KindsOfPhotosTest, aDiskWithoutAFolderIsWrongUsage)
{
    for (const QString& given : {u"Photos"_s, u"=/"_s, u"Photos="_s, u"Photos=/no/where"_s}) {
        EXPECT_EQ(runHere(u"list"_s, {u"--volume"_s, given}), 2) << given.toStdString();
        EXPECT_TRUE(m_err.contains(given.toUtf8())) << m_err.toStdString();
    }
}

TEST_F(KindsOfPhotosTest, anEditedPhotoIsConvertedFromItsMasterOrFromWhatIsDisplayed)
{
    const qint64 id = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    const QString preview = m_builder.makeEdited(id);
    const QString original = master(id);
    ASSERT_EQ(scan({u"--id"_s, QString::number(id), u"--originals"_s, u"--no-tag"_s}), 0);
    EXPECT_EQ(entry(id).value(u"source"_s).toString(), original);
    EXPECT_TRUE(m_err.contains("1 selected photo was edited")) << m_err.toStdString();
    ASSERT_EQ(scan({u"--id"_s, QString::number(id), u"--displayed"_s, u"--no-tag"_s}), 0);
    EXPECT_EQ(entry(id).value(u"source"_s).toString(), preview);
    EXPECT_FALSE(m_err.contains("was edited")) << m_err.toStdString();
}

TEST_F(KindsOfPhotosTest, moviesHiddenPhotosAndThoseInTheTrashAreNotConverted)
{
    const qint64 plain = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    const qint64 movie = m_builder.addPhoto(u"B.JPG"_s, u"Trip"_s);
    const qint64 hidden = m_builder.addPhoto(u"C.JPG"_s, u"Trip"_s);
    const qint64 trashed = m_builder.addPhoto(u"D.JPG"_s, u"Trip"_s);
    m_builder.makeMovie(movie);
    m_builder.setHidden(hidden);
    m_builder.moveToTrash(trashed);
    m_builder.setFlagged(plain);
    ASSERT_EQ(scan({u"--all"_s, u"--no-tag"_s}), 0) << m_err.toStdString();
    EXPECT_EQ(report().value(u"selected"_s).toInt(), 1);
    EXPECT_EQ(outcome(plain), u"converted"_s);
    ASSERT_EQ(scan({u"--id"_s, QString::number(hidden), u"--no-tag"_s}), 0);
    EXPECT_EQ(outcome(hidden), u"converted"_s);
}

TEST_F(KindsOfPhotosTest, aSmartAlbumAndAnEventOfTheDefaultAlbumsNameAreNotTakenForIt)
{
    const qint64 id = m_builder.addPhoto(u"A.JPG"_s, u"Corvane For iPhoto"_s);
    const qint64 smart = m_builder.addAlbum(u"Corvane For iPhoto"_s, {});
    m_builder.set(u"RKAlbum"_s, smart, u"albumSubclass=2, versionCount=NULL"_s);
    ASSERT_EQ(scan({u"--all"_s, u"--no-tag"_s, u"--no-albums"_s}), 0) << m_err.toStdString();
    const qint64 copy = entry(id).value(u"newId"_s).toInteger();
    ASSERT_EQ(runHere(u"list"_s, {u"--json"_s, u"--id"_s, QString::number(copy)}), 0);
    const QJsonArray listed = document().value(u"photos"_s).toArray();
    EXPECT_EQ(listed.at(0).toObject().value(u"albums"_s).toArray(),
              QJsonArray{u"Corvane For iPhoto"_s});
}

TEST_F(KindsOfPhotosTest, aPhotoWhoseKeywordIsGoneFailsAloneAndADryRunSaysSo)
{
    const qint64 loser = m_builder.addRaw(u"A.dng"_s, u"Trip"_s);
    ASSERT_EQ(scan({u"--raw"_s, u"--tag"_s}), 0) << m_err.toStdString();
    const qint64 other = m_builder.addRaw(u"B.dng"_s, u"Trip"_s);
    m_builder.edit(
        [](Writer& writer) { Sql::execute(writer.connection, "DELETE FROM RKKeyword"); });
    for (const QString& option : {u"--dry-run"_s, u"--no-tag"_s}) {
        EXPECT_EQ(scan({u"--raw"_s, option}), 1) << m_err.toStdString();
        EXPECT_EQ(outcome(loser), u"failed"_s);
        EXPECT_TRUE(entry(loser)
                        .value(u"reason"_s)
                        .toString()
                        .contains("a keyword of the photo is gone from the library"_L1));
        EXPECT_EQ(outcome(other), option == "--dry-run"_L1 ? u"would convert"_s : u"converted"_s);
    }
}
