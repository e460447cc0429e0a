#include "LibraryReader.h"

#include "AlbumRows.h"
#include "EventRows.h"
#include "LibraryFixture.h"
#include "OrdinaryUser.h"
#include "PackageCopy.h"
#include "PathMapping.h"
#include "PhotoRows.h"
#include "QtPrinters.h"
#include "RegularAlbums.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

QJsonArray expectedPhotos()
{
    const QByteArray bytes =
        PackageCopy::bytes(QStringLiteral(CORVANE_SHARED_DATA) + u"/iphoto-expected.json"_s);
    return QJsonDocument::fromJson(bytes).object().value("photos"_L1).toArray();
}

std::optional<double> number(const QJsonValue& value)
{
    return value.isDouble() ? std::optional<double>(value.toDouble()) : std::nullopt;
}

void expectSame(const PhotoFacts& photo, const QJsonObject& expected, const QString& package)
{
    SCOPED_TRACE(photo.id);
    const auto text = [&expected](QLatin1StringView key) { return expected.value(key).toString(); };
    EXPECT_EQ(photo.id, expected.value("id"_L1).toInteger());
    EXPECT_EQ(photo.guid, text("uuid"_L1));
    EXPECT_EQ(photo.masterGuid, text("masterUuid"_L1));
    EXPECT_EQ(photo.fileName, text("fileName"_L1));
    EXPECT_EQ(photo.name, text("name"_L1));
    EXPECT_EQ(photo.comment.isNull() ? u""_s : photo.comment, text("comment"_L1));
    EXPECT_EQ(photo.rating, expected.value("rating"_L1).toInt());
    EXPECT_EQ(photo.date, expected.value("imageDate"_L1).toDouble());
    EXPECT_EQ(photo.wallClock() + u'Z', text("dateUtcIso"_L1));
    EXPECT_EQ(photo.width, expected.value("width"_L1).toInt());
    EXPECT_EQ(photo.height, expected.value("height"_L1).toInt());
    EXPECT_EQ(photo.latitude, number(expected.value("latitude"_L1)));
    EXPECT_EQ(photo.longitude, number(expected.value("longitude"_L1)));
    EXPECT_EQ(photo.altitude, number(expected.value("altitude"_L1)));
    EXPECT_EQ(photo.raw, expected.value("isRaw"_L1).toBool());
    EXPECT_EQ(photo.edited, expected.value("hasEnabledAdjustments"_L1).toBool());
    EXPECT_EQ(photo.rollId, expected.value("rollId"_L1).toInteger());
    EXPECT_EQ(photo.originalPath, package + u'/' + text("originalPath"_L1));
    EXPECT_EQ(photo.imagePath, package + u'/' + text("imagePath"_L1));
    EXPECT_EQ(photo.thumbnailPath, package + u'/' + text("thumbnailPath"_L1));
    QStringList keywords;
    const QJsonArray names = expected.value("keywords"_L1).toArray();
    for (const auto& name : names) {
        keywords.append(name.toString());
    }
    keywords.sort(Qt::CaseInsensitive);
    EXPECT_EQ(photo.keywords, keywords);
}

class LibraryReaderTest : public LibraryFixture
{
protected:
    [[nodiscard]] PhotoFacts only()
    {
        const QList<PhotoFacts> photos = LibraryReader::photos(connection());
        EXPECT_EQ(photos.size(), 1);
        return photos.isEmpty() ? PhotoFacts() : photos.first();
    }

    Photo add()
    {
        Writer to = writer();
        return addPhoto(EventRows::createEvent(to, u"Walk"_s));
    }

    /// An event of photos taken at these seconds; their ids.
    QList<qint64> addEvent(const QList<double>& seconds)
    {
        Writer to = writer();
        const QString event = EventRows::createEvent(to, u"Walk"_s);
        QList<qint64> ids;
        for (const double second : seconds) {
            Kind kind;
            kind.date += second;
            ids.append(addPhoto(event, kind).visible);
        }
        EventRows::updateStatistics(to, event);
        return ids;
    }

    [[nodiscard]] LibrarySummary summary() { return LibraryReader::summary(connection(), {}); }

    [[nodiscard]] QStringList albumsOf(qint64 photo)
    {
        for (const PhotoFacts& facts : LibraryReader::photos(connection())) {
            if (facts.id == photo) {
                return facts.albums;
            }
        }
        return {};
    }
};

/// The master of a photo of the fixture as a file, for as long as this lives.
class MasterFile final
{
public:
    MasterFile(const QString& package, qint64 bytes)
        : m_masters(package + u"/Masters/2010"_s)
        , m_folder(m_masters + u"/05/01/20100501-120000"_s)
    {
        QFile file(path());
        m_made = QDir().mkpath(m_folder) && file.open(QIODevice::WriteOnly) && file.resize(bytes);
    }

    ~MasterFile()
    {
        QFile::remove(path());
        QDir().rmpath(m_folder);
    }

    MasterFile(const MasterFile&) = delete;
    MasterFile& operator=(const MasterFile&) = delete;

    [[nodiscard]] bool isMade() const { return m_made; }

    [[nodiscard]] QString path() const { return m_folder + u"/IMG_1.JPG"_s; }

    [[nodiscard]] QString folder() const { return m_folder; }

private:
    QString m_masters;
    QString m_folder;
    bool m_made{false};
};

} // namespace

TEST(RealLibraryReader, everyPhotoReadsAsItIsKnownToBe)
{
    PackageCopy library;
    if (!library.isPresent()) {
        return;
    }
    QHash<qint64, QJsonObject> expected;
    const QJsonArray all = expectedPhotos();
    for (const auto& photo : all) {
        expected.insert(photo.toObject().value("id"_L1).toInteger(), photo.toObject());
    }
    const QList<PhotoFacts> photos = LibraryReader::photos(library.connection());
    const QList<PhotoFacts> trashed = LibraryReader::trashedPhotos(library.connection());
    EXPECT_EQ(photos.size(), 13);
    EXPECT_EQ(trashed.size(), 2);
    EXPECT_EQ(photos.size() + trashed.size(), expected.size());
    for (const PhotoFacts& photo : photos + trashed) {
        expectSame(photo, expected.value(photo.id), library.package());
    }
}

TEST(RealLibraryReader, theSummaryCounts)
{
    PackageCopy library;
    if (!library.isPresent()) {
        return;
    }
    const LibrarySummary summary = LibraryReader::summary(library.connection(), {});
    EXPECT_EQ(summary.photos, 13);
    EXPECT_EQ(summary.rolls, 2);
    EXPECT_EQ(summary.albums, 4);
    EXPECT_EQ(summary.keywords, 33);
    EXPECT_EQ(summary.rawPhotos, 3);
    EXPECT_EQ(summary.trashedPhotos, 2);
    EXPECT_EQ(summary.missing, 13); // the pictures are not copied here
    EXPECT_TRUE(summary.writable);
}

TEST_F(LibraryReaderTest, anAltitudeThatIsNoneIsNotZero)
{
    add();
    EXPECT_FALSE(only().altitude.has_value());
    EXPECT_FALSE(only().latitude.has_value());
}

TEST_F(LibraryReaderTest, columnsOfAnotherTypeReadAsNothing)
{
    const Photo photo = add();
    Sql::execute(connection(),
                 "UPDATE RKVersion SET imageDate='yesterday', exifLatitude='north',"
                 " processedWidth='wide', mainRating=NULL WHERE modelId=?",
                 photo.visible);
    const PhotoFacts facts = only();
    EXPECT_EQ(facts.date, 0.0);
    EXPECT_FALSE(facts.latitude.has_value());
    EXPECT_EQ(facts.width, 0);
    EXPECT_EQ(facts.rating, 0);
    EXPECT_TRUE(facts.unknown.date && facts.unknown.width && facts.unknown.rating);
    EXPECT_EQ(facts.wallClock(), QString());
}

TEST_F(LibraryReaderTest, aNumberThatIsZeroIsKnown)
{
    const Photo photo = add();
    Sql::execute(connection(),
                 "UPDATE RKVersion SET imageDate=0, processedWidth=0, processedHeight=0,"
                 " mainRating=0 WHERE modelId=?",
                 photo.visible);
    const PhotoFacts facts = only();
    EXPECT_FALSE(facts.unknown.date || facts.unknown.width || facts.unknown.height ||
                 facts.unknown.rating);
    EXPECT_EQ(facts.wallClock(), u"2001-01-01T00:00:00"_s);
}

TEST_F(LibraryReaderTest, eventsThatBeginAtTheSameMomentAreNotMixed)
{
    const QList<qint64> first = addEvent({0.0, 60.0});
    const QList<qint64> second = addEvent({30.0, 0.0});
    QList<qint64> ids;
    for (const PhotoFacts& photo : LibraryReader::photos(connection())) {
        ids.append(photo.id);
    }
    EXPECT_EQ(ids, (QList<qint64>{first.at(0), first.at(1), second.at(1), second.at(0)}));
}

TEST_F(LibraryReaderTest, onlyRegularAlbumsOfTheUserCount)
{
    const Photo photo = add();
    Writer to = writer();
    for (const char* change : {"name='Kept'",
                               "serviceName='MobileMe'",
                               "isHidden=1",
                               "isInTrash=1",
                               "isMagic=1",
                               "folderUuid=''",
                               "albumSubclass=2"}) {
        const qint64 album = AlbumRows::createAlbum(to, QString::fromLatin1(change));
        AlbumRows::addPhotos(to, album, {photo.visible});
        connection().database().exec("UPDATE RKAlbum SET " + std::string(change) +
                                     " WHERE modelId=" + std::to_string(album));
    }
    const qint64 lastImport =
        number("SELECT modelId FROM RKAlbum WHERE uuid='lastImportAlbum' AND modelId>?", 0);
    AlbumRows::addPhotos(to, lastImport, {photo.visible});
    EXPECT_EQ(albumsOf(photo.visible), QStringList{u"Kept"_s});
    EXPECT_EQ(summary().albums, 1);
    EXPECT_EQ(RegularAlbums::ids(connection()).size(), 1);
    EXPECT_FALSE(RegularAlbums::holds(connection(), lastImport));
}

TEST_F(LibraryReaderTest, anOriginalThatMayNotBeReadIsNotMissing)
{
    add();
    EXPECT_TRUE(only().missing);
    EXPECT_FALSE(only().unreadable);
    const MasterFile master(package(), 1234);
    ASSERT_TRUE(master.isMade());
    EXPECT_EQ(only().bytes, 1234);
    EXPECT_FALSE(only().unreadable);
    const OrdinaryUser user({QFileInfo(package()).absolutePath()});
    {
        const WithPermissions closed(master.path(), 0);
        EXPECT_FALSE(only().missing);
        EXPECT_TRUE(only().unreadable);
        EXPECT_EQ(only().bytes, 1234);
        EXPECT_EQ(summary().missing, 0);
    }
    const WithPermissions closed(master.folder(), 0);
    EXPECT_FALSE(only().missing);
    EXPECT_TRUE(only().unreadable);
    EXPECT_EQ(only().bytes, 0);
}

TEST_F(LibraryReaderTest, aFolderInTheOriginalsPlaceIsNoFile)
{
    add();
    const MasterFile master(package(), 1);
    ASSERT_TRUE(master.isMade() && QFile::remove(master.path()));
    ASSERT_TRUE(QDir().mkdir(master.path()));
    EXPECT_TRUE(only().missing);
    EXPECT_TRUE(QDir().rmdir(master.path()));
}

TEST_F(LibraryReaderTest, theSummaryCountsWhatIsVisible)
{
    const MasterFile master(package(), 1000);
    ASSERT_TRUE(master.isMade());
    const QList<qint64> shown = addEvent({0.0, 60.0});
    const QList<qint64> hidden = addEvent({90.0});
    const QList<qint64> movie = addEvent({120.0});
    connection().database().exec("UPDATE RKMaster SET isTrulyRaw=1");
    Sql::execute(connection(), "UPDATE RKVersion SET isHidden=1 WHERE modelId=?", hidden.first());
    Sql::execute(connection(),
                 "UPDATE RKMaster SET type='VIDT' WHERE uuid="
                 "(SELECT masterUuid FROM RKVersion WHERE modelId=?)",
                 movie.first());
    const LibrarySummary counts = summary();
    EXPECT_EQ(counts.photos, 2);
    EXPECT_EQ(counts.rolls, 1);
    EXPECT_EQ(counts.rawPhotos, 2);
    EXPECT_EQ(counts.rawBytes, 2000);
}

TEST_F(LibraryReaderTest, copiesAreToldInWhateverLettersTheLibraryHasTheKeywords)
{
    const QList<qint64> photos = addEvent({0.0, 60.0, 120.0});
    Writer to = writer();
    PhotoRows::assignKeyword(to, photos.at(0), u"corvane processed"_s);
    // As the picture that defines the keywords.
    PhotoRows::assignKeyword(to, photos.at(1), u"corvane processed"_s);
    PhotoRows::assignKeyword(to, photos.at(1), u"CORVANE ORIGINAL"_s);
    EXPECT_EQ(summary().processedPhotos, 1);
}

TEST_F(LibraryReaderTest, aPathThatLeadsOutOfThePackageIsNone)
{
    const Photo photo = add();
    Sql::execute(
        connection(), "UPDATE RKMaster SET imagePath='../../x.jpg' WHERE uuid=?", photo.master);
    EXPECT_TRUE(only().originalPath.isEmpty());
    EXPECT_TRUE(only().missing);
}

TEST(PhotoFacts, theWallClockIsThatOfItsZone)
{
    PhotoFacts photo;
    photo.date = 561115092.9;
    photo.zoneName = u"GMT"_s;
    EXPECT_EQ(photo.wallClock(), u"2018-10-13T09:18:12"_s);
    photo.zoneName = u"Europe/Berlin"_s;
    EXPECT_EQ(photo.wallClock(), u"2018-10-13T11:18:12"_s);
    photo.date = -0.5;
    photo.zoneName = u"no such zone"_s;
    EXPECT_EQ(photo.wallClock(), u"2000-12-31T23:59:59"_s);
}

TEST(PathMapping, aNameIsFoundInEachSpellingThatTheMacTookForTheSame)
{
    const QTemporaryDir folder;
    const QString composed = QString::fromUtf8("B\u00fccher.JPG");
    ASSERT_TRUE(QDir(folder.path()).mkpath(u"Masters/2010"_s));
    const QString path =
        folder.path() + u"/Masters/2010/"_s + composed.normalized(QString::NormalizationForm_D);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    for (const QString& asked : {u"2010/"_s + composed, u"2010/"_s + composed.toLower()}) {
        EXPECT_EQ(PathMapping::master(folder.path(), {asked}), path);
    }
    EXPECT_EQ(PathMapping::master(folder.path(), {u"2010/none.jpg"_s}),
              folder.path() + u"/Masters/2010/none.jpg"_s);
    EXPECT_TRUE(PathMapping::master(folder.path(), {u"2010/x.jpg"_s, true}).isEmpty());
    const QString cut = u"2010/x"_s + QChar(u'\0') + u".jpg"_s;
    for (const QString& out : {u"/etc/passwd"_s, u"2010/../../x"_s, u".."_s, cut, QString()}) {
        EXPECT_TRUE(PathMapping::inside(folder.path(), "Masters"_L1, out).isEmpty());
    }
}

TEST(PathMapping, ofFoldersAndFilesEachCompositionFindsTheOther)
{
    const QString name = QString::fromUtf8("Z\u00fcrich/\u00c9t\u00e9.JPG");
    for (const auto onDisk : {QString::NormalizationForm_C, QString::NormalizationForm_D}) {
        const QTemporaryDir folder;
        const QString path = folder.path() + u"/Masters/"_s + name.normalized(onDisk);
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        for (const auto asked : {QString::NormalizationForm_C, QString::NormalizationForm_D}) {
            EXPECT_EQ(PathMapping::master(folder.path(), {name.normalized(asked)}), path);
            EXPECT_EQ(PathMapping::master(folder.path(), {name.normalized(asked).toLower()}), path);
        }
    }
}

TEST(PathMapping, onADiskThatLiesHereAReferenceCannotLeadOutOfIt)
{
    const QTemporaryDir disk;
    const QString root = disk.path();
    EXPECT_EQ(PathMapping::master(u"/L"_s, {u"a/b.jpg"_s, true, root}), root + u"/a/b.jpg"_s);
    for (const QString& out : {u"/etc/passwd"_s, u"a/../../x"_s, u".."_s, QString()}) {
        EXPECT_TRUE(PathMapping::master(u"/L"_s, {out, true, root}).isEmpty()) << out.toStdString();
    }
}

TEST_F(LibraryReaderTest, aLibraryOfAnOlderSchemaIsSummedUpWithoutTheColumnsItLacks)
{
    Writer to = writer();
    addPhoto(EventRows::createEvent(to, u"One"_s));
    connection().resetStatements();
    connection().database().exec("DROP INDEX RKMaster_burstUuid_index");
    connection().database().exec("ALTER TABLE RKMaster DROP COLUMN burstUuid");
    connection().database().exec("ALTER TABLE RKFolder DROP COLUMN minImageTimeZoneName");
    const LibrarySummary summary = LibraryReader::summary(connection(), {});
    EXPECT_EQ(summary.photos, 1);
    EXPECT_FALSE(summary.writable);
    EXPECT_TRUE(summary.problems.filter(u"rows"_s).isEmpty())
        << summary.problems.join(u'\n').toStdString();
}
