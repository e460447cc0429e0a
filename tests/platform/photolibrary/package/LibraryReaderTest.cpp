#include "LibraryReader.h"

#include "EventRows.h"
#include "LibraryFixture.h"
#include "PackageCopy.h"
#include "PathMapping.h"
#include "QtPrinters.h"

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
    for (const QJsonValue& name : names) {
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
    for (const QJsonValue& photo : all) {
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
        EXPECT_EQ(PathMapping::master(folder.path(), asked, false), path);
    }
    EXPECT_EQ(PathMapping::master(folder.path(), u"2010/none.jpg"_s, false),
              folder.path() + u"/Masters/2010/none.jpg"_s);
    EXPECT_TRUE(PathMapping::master(folder.path(), u"2010/x.jpg"_s, true).isEmpty());
    for (const QString& out : {u"/etc/passwd"_s, u"2010/../../x"_s, u".."_s, QString()}) {
        EXPECT_TRUE(PathMapping::inside(folder.path(), "Masters"_L1, out).isEmpty());
    }
}
