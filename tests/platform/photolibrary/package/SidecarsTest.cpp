#include "Sidecars.h"

#include "AlbumRows.h"
#include "EventRows.h"
#include "LibraryFixture.h"
#include "PhotoRows.h"
#include "PropertyList.h"
#include "QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr double kLater = 800000900.0;

class SidecarsTest : public LibraryFixture
{
protected:
    void SetUp() override
    {
        LibraryFixture::SetUp();
        Writer to = writer();
        m_event = EventRows::createEvent(to, u"Walk"_s);
        m_photo = addPhoto(m_event);
        changes().masters.insert(m_photo.master);
        follow(m_now);
    }

    void follow(double now)
    {
        const Result<void> written = Sidecars::write(connection(), changes(), now);
        ASSERT_TRUE(written.ok()) << written.error().message.toStdString();
    }

    [[nodiscard]] QString versionPath(int number) const
    {
        return package() + u"/Database/Versions/2010/05/01/20100501-120000/"_s + m_photo.master +
               u"/Version-"_s + QString::number(number) + u".apversion"_s;
    }

    [[nodiscard]] static QVariantMap content(const QString& path)
    {
        const Result<QVariant> read = PropertyList::read(path);
        EXPECT_TRUE(read.ok()) << path.toStdString();
        return read.ok() ? read.value().toMap() : QVariantMap();
    }

    static void put(const QString& path, const QVariantMap& map)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(PropertyList::toBinary(map).value());
    }

    QString m_event;
    Photo m_photo;
};

} // namespace

TEST_F(SidecarsTest, aPhotoHasOneOfItsMasterAndOneOfEachVersion)
{
    const QVariantMap master = content(QFileInfo(versionPath(0)).path() + u"/Master.apmaster"_s);
    EXPECT_EQ(master.value(u"uuid"_s).toString(), m_photo.master);
    EXPECT_EQ(master.value(u"isInTrash"_s), QVariant(false));
    EXPECT_FALSE(master.contains(u"hasNotes"_s));
    EXPECT_EQ(content(versionPath(0)).value(u"modelId"_s).toLongLong(), m_photo.imported);
    const QVariantMap visible = content(versionPath(1));
    EXPECT_EQ(visible.value(u"modelId"_s).toLongLong(), m_photo.visible);
    EXPECT_EQ(visible.value(u"showInLibrary"_s), QVariant(true));
    EXPECT_EQ(visible.value(u"imageDate"_s).value<PropertyList::Date>().secondsSince2001,
              294408000.0);
    EXPECT_EQ(visible.value(u"imageProxyState"_s).toMap().value(u"thumbnailsCurrent"_s),
              QVariant(true));
    EXPECT_FALSE(visible.contains(u"masterId"_s));
    EXPECT_FALSE(visible.contains(u"stackUuid"_s)); // NULL
}

TEST_F(SidecarsTest, whatTheUserChangesComesThroughAndGoesAgain)
{
    Writer to = writer();
    PhotoRows::setComment(to, m_photo.visible, u"At the lake"_s);
    PhotoRows::setAltitude(to, m_photo.visible, -12.25);
    PhotoRows::setRating(to, m_photo.visible, 4);
    PhotoRows::assignKeyword(to, m_photo.visible, u"Lake"_s);
    follow(m_now);
    QVariantMap visible = content(versionPath(1));
    EXPECT_EQ(visible.value(u"iptcProperties"_s).toMap().value(u"Caption/Abstract"_s).toString(),
              u"At the lake"_s);
    EXPECT_EQ(visible.value(u"exifProperties"_s).toMap().value(u"Altitude"_s).toDouble(), -12.25);
    EXPECT_EQ(visible.value(u"mainRating"_s).toLongLong(), 4);
    EXPECT_EQ(visible.value(u"keywords"_s).toList(), QVariantList({u"Lake"_s}));
    PhotoRows::setComment(to, m_photo.visible, QString());
    PhotoRows::setAltitude(to, m_photo.visible, std::nullopt);
    Sql::execute(connection(), "DELETE FROM RKKeywordForVersion");
    follow(m_now);
    visible = content(versionPath(1));
    EXPECT_FALSE(visible.contains(u"iptcProperties"_s));
    EXPECT_FALSE(visible.value(u"exifProperties"_s).toMap().contains(u"Altitude"_s));
    EXPECT_FALSE(visible.contains(u"keywords"_s));
    EXPECT_FALSE(content(versionPath(0)).contains(u"keywords"_s));
}

TEST_F(SidecarsTest, anAltitudeThatChangesByAHairIsWritten)
{
    Writer to = writer();
    PhotoRows::setAltitude(to, m_photo.visible, 100.0);
    follow(m_now);
    PhotoRows::setAltitude(to, m_photo.visible, 100.00001);
    follow(m_now);
    const QVariantMap exif = content(versionPath(1)).value(u"exifProperties"_s).toMap();
    EXPECT_EQ(exif.value(u"Altitude"_s).toDouble(), 100.00001);
}

TEST_F(SidecarsTest, keysThatNobodyHereKnowsSurvive)
{
    QVariantMap visible = content(versionPath(1));
    visible.insert(u"fromTheFuture"_s, QVariantList({1LL, u"two"_s}));
    put(versionPath(1), visible);
    Writer to = writer();
    PhotoRows::setRating(to, m_photo.visible, 3);
    follow(kLater);
    const QVariantMap after = content(versionPath(1));
    EXPECT_EQ(after.value(u"fromTheFuture"_s), visible.value(u"fromTheFuture"_s));
    EXPECT_EQ(after.value(u"mainRating"_s).toLongLong(), 3);
    EXPECT_EQ(after.value(u"plistWriteTimestamp"_s).value<PropertyList::Date>().secondsSince2001,
              kLater);
}

TEST_F(SidecarsTest, aFileThatSaysWhatItShouldStaysUntouched)
{
    follow(kLater);
    EXPECT_EQ(content(versionPath(1))
                  .value(u"plistWriteTimestamp"_s)
                  .value<PropertyList::Date>()
                  .secondsSince2001,
              m_now);
}

TEST_F(SidecarsTest, aUuidThatLooksLikeAPlaceholderNamesItsFolderAsItIs)
{
    const QString uuid = u"%1wyqoryRvq%2GmBdFBisA"_s;
    Sql::execute(connection(), "UPDATE RKMaster SET uuid=? WHERE uuid=?", uuid, m_photo.master);
    Sql::execute(
        connection(), "UPDATE RKVersion SET masterUuid=? WHERE masterUuid=?", uuid, m_photo.master);
    changes().masters.insert(uuid);
    m_photo.master = uuid;
    follow(m_now);
    for (const int number : {0, 1}) {
        EXPECT_EQ(content(versionPath(number)).value(u"masterUuid"_s).toString(), uuid);
    }
}

TEST_F(SidecarsTest, versionsTellTheMinorVersionOfTheDatabases)
{
    EXPECT_EQ(content(versionPath(1)).value(u"minorVersion"_s).toLongLong(), 226);
    Sql::execute(connection(),
                 "UPDATE RKAdminData SET propertyValue='221' WHERE propertyArea='database' AND"
                 " propertyName='versionMinor'");
    follow(kLater);
    EXPECT_EQ(content(versionPath(1)).value(u"minorVersion"_s).toLongLong(), 221);
}

TEST_F(SidecarsTest, aDamagedSidecarIsMadeAnew)
{
    QFile file(versionPath(1));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write("bplist00 torn");
    file.close();
    follow(kLater);
    EXPECT_EQ(content(versionPath(1)).value(u"uuid"_s).toString(), m_photo.visibleUuid);
}

TEST_F(SidecarsTest, whatALinkLeadsToOutsideThePackageIsNeverWritten)
{
    const QString foreign = QFileInfo(package()).path() + u"/thesis.txt"_s;
    {
        QFile file(foreign);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("ten years");
    }
    const QString path = versionPath(1);
    for (const QString& target : {foreign, foreign + u".not there"_s}) {
        ASSERT_TRUE(QFile::remove(path));
        ASSERT_TRUE(QFile::link(target, path));
        const Result<void> written = Sidecars::write(connection(), changes(), m_now);
        ASSERT_FALSE(written.ok());
        EXPECT_EQ(written.error().code, ErrorCode::LeadsOut);
        EXPECT_TRUE(written.error().message.contains(path));
        EXPECT_TRUE(QFile::remove(versionPath(0)));
        EXPECT_FALSE(Sidecars::write(connection(), changes(), m_now).ok());
        EXPECT_TRUE(QFileInfo::exists(versionPath(0))) << "those beside it follow";
        const Sidecars::Comparison compared = Sidecars::compare(connection(), changes());
        EXPECT_TRUE(compared.lagging.masters.isEmpty());
        EXPECT_EQ(compared.unreadable, QStringList{written.error().message});
    }
    EXPECT_FALSE(QFileInfo::exists(foreign + u".not there"_s));
    QFile file(foreign);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "ten years");
    ASSERT_TRUE(QFile::remove(path));
    follow(m_now);
    EXPECT_EQ(content(path).value(u"modelId"_s).toLongLong(), m_photo.visible);
    ASSERT_TRUE(QFile::remove(foreign));
}

TEST_F(SidecarsTest, inAWholeFolderThatIsALinkTheyAreWritten)
{
    const QString albums = package() + u"/Database/Albums"_s;
    const QString elsewhere = QFileInfo(package()).path() + u"/Albums elsewhere"_s;
    ASSERT_TRUE(QDir().rename(albums, elsewhere));
    ASSERT_TRUE(QFile::link(elsewhere, albums));
    Writer to = writer();
    const qint64 id = AlbumRows::createAlbum(to, u"Lakes"_s);
    const QString album =
        Sql::firstText(connection(), "SELECT uuid FROM RKAlbum WHERE modelId=?", id);
    changes().albums.insert(album);
    const Result<void> written = Sidecars::write(connection(), changes(), m_now);
    EXPECT_TRUE(written.ok()) << written.error().message.toStdString();
    const QString name = album + u".apalbum"_s;
    EXPECT_TRUE(QFileInfo::exists(elsewhere + u'/' + name));
    ASSERT_TRUE(QFile::remove(albums));
    ASSERT_TRUE(QDir().rename(elsewhere, albums));
    QFile::remove(albums + u'/' + name);
}

TEST_F(SidecarsTest, aMasterThatIsGoneOrLeadsOutOfThePackageIsPassedOver)
{
    changes().masters.insert(u"nobody"_s);
    Sql::execute(connection(),
                 "UPDATE RKMaster SET imagePath='../../../../outside/x.jpg' WHERE uuid=?",
                 m_photo.master);
    follow(kLater);
    EXPECT_FALSE(QFileInfo::exists(package() + u"/../outside"_s));
    EXPECT_FALSE(QFileInfo::exists(package() + u"/outside"_s));
}

TEST_F(SidecarsTest, ofAReferenceWithoutAnImportGroupNothingIsWritten)
{
    changes().masters.insert(m_photo.master);
    Sql::execute(connection(),
                 "UPDATE RKMaster SET fileIsReference=1, importGroupUuid=NULL,"
                 " imagePath='Pictures/x.jpg' WHERE uuid=?",
                 m_photo.master);
    follow(kLater);
    EXPECT_FALSE(QFileInfo::exists(package() + u"/Database/Versions/Pictures"_s));
}

TEST_F(SidecarsTest, anAlbumTellsItsPhotosAndGoesWithItsRow)
{
    Writer to = writer();
    const qint64 id = AlbumRows::createAlbum(to, u"Both"_s);
    AlbumRows::addPhotos(to, id, {m_photo.visible});
    const QString uuid =
        Sql::firstText(connection(), "SELECT uuid FROM RKAlbum WHERE modelId=?", id);
    changes().albums.insert(uuid);
    follow(m_now);
    const QString path = package() + u"/Database/Albums/"_s + uuid + u".apalbum"_s;
    const QVariantMap album = content(path);
    EXPECT_EQ(album.value(u"versionUuids"_s).toList(), QVariantList({m_photo.visibleUuid}));
    EXPECT_EQ(album.value(u"InfoDictionary"_s).toMap().value(u"name"_s).toString(), u"Both"_s);
    EXPECT_FALSE(album.value(u"InfoDictionary"_s).toMap().contains(u"versionCount"_s));
    Sql::execute(connection(), "DELETE FROM RKAlbum WHERE modelId=?", id);
    follow(m_now);
    EXPECT_FALSE(QFileInfo::exists(path));
}

TEST_F(SidecarsTest, aFolderTellsTheOrderOfWhatItHolds)
{
    Writer to = writer();
    const qint64 first = AlbumRows::createAlbum(to, u"A"_s);
    const qint64 second = AlbumRows::createAlbum(to, u"B"_s);
    changes().folders.insert(u"TopLevelAlbums"_s);
    follow(m_now);
    QVariantList expected;
    for (const qint64 id : {first, second}) {
        expected.append(
            Sql::firstText(connection(), "SELECT uuid FROM RKAlbum WHERE modelId=?", id));
    }
    const QVariantMap folder = content(package() + u"/Database/Folders/TopLevelAlbums.apfolder"_s);
    EXPECT_EQ(folder.value(u"CustomOrderList"_s).toMap().value(u"default"_s).toList(), expected);
    const QVariantMap event =
        content(package() + u"/Database/Folders/"_s + m_event + u".apfolder"_s);
    EXPECT_EQ(event.value(u"projectVersion"_s).toLongLong(), 8);
    EXPECT_FALSE(event.contains(u"minImageDate"_s));
}

TEST_F(SidecarsTest, newKeywordsJoinTheListAndOthersStayInPlace)
{
    changes().keywords = true;
    follow(m_now);
    Writer to = writer();
    const qint64 id = PhotoRows::defineKeyword(to, u"Lake"_s);
    const QString path = package() + u"/Database/Keywords.plist"_s;
    const QVariantList before = content(path).value(u"keywords"_s).toList();
    follow(m_now);
    QVariantList after = content(path).value(u"keywords"_s).toList();
    const QVariantMap added = after.takeLast().toMap();
    EXPECT_EQ(added.value(u"modelId"_s).toLongLong(), id);
    EXPECT_EQ(added.value(u"name"_s).toString(), u"Lake"_s);
    EXPECT_EQ(after, before);
}

TEST_F(SidecarsTest, theNameOfAKeywordThatIsLostStaysWhileAllElseFollows)
{
    Writer to = writer();
    PhotoRows::assignKeyword(to, m_photo.visible, u"Lake"_s);
    follow(m_now);
    Sql::execute(connection(), "DELETE FROM RKKeyword WHERE name='Lake'");
    PhotoRows::assignKeyword(to, m_photo.visible, u"Shore"_s);
    PhotoRows::setRating(to, m_photo.visible, 4);
    follow(m_now);
    const QVariantMap visible = content(versionPath(1));
    EXPECT_EQ(visible.value(u"mainRating"_s).toLongLong(), 4);
    EXPECT_EQ(visible.value(u"keywords"_s).toList(), QVariantList({u"Shore"_s, u"Lake"_s}));
    const QVariantList list =
        content(package() + u"/Database/Keywords.plist"_s).value(u"keywords"_s).toList();
    QStringList names;
    for (const QVariant& keyword : list) {
        names.append(keyword.toMap().value(u"name"_s).toString());
    }
    EXPECT_TRUE(names.contains(u"Lake"_s) && names.contains(u"Shore"_s));
    EXPECT_TRUE(Sidecars::compare(connection(), changes()).stale.isEmpty());
}

TEST_F(SidecarsTest, whereAKeywordIsLostAnotherOneThatIsTakenOffGoesAllTheSame)
{
    Writer to = writer();
    PhotoRows::assignKeyword(to, m_photo.visible, u"Lake"_s);
    PhotoRows::assignKeyword(to, m_photo.visible, u"Shore"_s);
    follow(m_now);
    Sql::execute(connection(), "DELETE FROM RKKeyword WHERE name='Lake'");
    Sql::execute(connection(),
                 "DELETE FROM RKKeywordForVersion WHERE keywordId="
                 "(SELECT modelId FROM RKKeyword WHERE name='Shore')");
    follow(m_now);
    EXPECT_EQ(content(versionPath(1)).value(u"keywords"_s).toList(), QVariantList({u"Lake"_s}));
}

TEST_F(SidecarsTest, theNameOfALostKeywordStaysAlsoWhenSomebodyDefinesItAnew)
{
    Writer to = writer();
    PhotoRows::assignKeyword(to, m_photo.visible, u"Lake"_s);
    follow(m_now);
    Sql::execute(connection(), "DELETE FROM RKKeyword WHERE name='Lake'");
    static_cast<void>(PhotoRows::defineKeyword(to, u"Lake"_s));
    PhotoRows::setRating(to, m_photo.visible, 4);
    follow(m_now);
    EXPECT_EQ(content(versionPath(1)).value(u"keywords"_s).toList(), QVariantList({u"Lake"_s}));
}

TEST_F(SidecarsTest, theCountsOfTheLibraryFollow)
{
    const QVariantMap model = content(package() + u"/Database/DataModelVersion.plist"_s);
    EXPECT_EQ(model.value(u"masterCount"_s).toLongLong(), 1);
    EXPECT_EQ(model.value(u"versionCount"_s).toLongLong(), 1);
    EXPECT_EQ(model.value(u"DatabaseVersion"_s).toLongLong(), 110);
    EXPECT_EQ(model.value(u"adminProperties"_s).toMap().value(u"database|isIPhotoLibrary"_s),
              QVariant(true));
}
