#include "Catalogues.h"

#include "AlbumRows.h"
#include "CatalogueXml.h"
#include "EventRows.h"
#include "LibraryFixture.h"
#include "PhotoRows.h"
#include "PropertyList.h"
#include "QtPrinters.h"
#include "TrashRows.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr double kNow = 800000000.5;

class CataloguesTest : public LibraryFixture
{
protected:
    void SetUp() override
    {
        LibraryFixture::SetUp();
        Writer to = writer();
        m_event = EventRows::createEvent(to, u"Walk"_s);
        m_photo = addPhoto(m_event);
        Kind later;
        later.fileName = u"IMG_2.JPG"_s;
        later.date += 60.0;
        m_second = addPhoto(m_event, later);
        EventRows::updateStatistics(to, m_event);
    }

    [[nodiscard]] QString path() const { return package() + u"/AlbumData.xml"_s; }

    void writeCatalogues(bool expectOld)
    {
        const auto written = Catalogues::write(connection(), kNow);
        ASSERT_TRUE(written.ok()) << written.error().message.toStdString();
        EXPECT_EQ(written.value().oldFileRead, expectOld);
    }

    [[nodiscard]] QVariantMap catalogue() const
    {
        const Result<QVariant> read = PropertyList::read(path());
        EXPECT_TRUE(read.ok());
        return read.ok() ? read.value().toMap() : QVariantMap();
    }

    [[nodiscard]] QVariantMap record(qint64 id) const
    {
        const QVariantMap images = catalogue().value(u"Master Image List"_s).toMap();
        return images.value(QString::number(id)).toMap();
    }

    [[nodiscard]] QVariantMap album(const QString& guid) const
    {
        const QVariantList albums = catalogue().value(u"List of Albums"_s).toList();
        for (const QVariant& item : albums) {
            if (item.toMap().value(u"GUID"_s) == guid) {
                return item.toMap();
            }
        }
        return {};
    }

    void replaceOldFile(const QByteArray& bytes) const
    {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
    }

    QString m_event;
    Photo m_photo;
    Photo m_second;
};

QVariantList keys(std::initializer_list<qint64> ids)
{
    QVariantList list;
    for (const qint64 id : ids) {
        list.append(QString::number(id));
    }
    return list;
}

void makePipe(const QString& path)
{
    ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
}

void makeLinkToADevice(const QString& path)
{
    ASSERT_TRUE(QFile::link(u"/dev/zero"_s, path));
}

void makeHugeFile(const QString& path)
{
    ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));
    ASSERT_TRUE(QFile::resize(path, qint64{100} * 1024 * 1024 * 1024));
}

} // namespace

TEST_F(CataloguesTest, aMissingCatalogueIsMadeWithPathsOfThePackage)
{
    QFile::remove(path());
    writeCatalogues(false);
    EXPECT_EQ(catalogue().value(u"Archive Path"_s).toString(), package());
    EXPECT_EQ(record(m_photo.visible).value(u"GUID"_s).toString(), m_photo.visibleUuid);
    EXPECT_EQ(album(u"allPhotosAlbum"_s).value(u"KeyList"_s).toList(),
              keys({m_photo.visible, m_second.visible}));
    EXPECT_TRUE(QFileInfo::exists(package() + u"/iLifeShared/AlbumData2.xml"_s));
}

TEST_F(CataloguesTest, whatALinkLeadsToOutsideThePackageIsNeverWritten)
{
    const QString foreign = QFileInfo(package()).path() + u"/foreign"_s;
    const QString shared = package() + u"/iLifeShared/"_s;
    const QString stamp = shared + u"ApertureDatabaseTimestamp"_s;
    for (const QString& link : {path(), shared + u"AlbumData2.xml"_s}) {
        QFile::remove(path());
        QFile::remove(link);
        ASSERT_TRUE(QFile::link(foreign, link));
        const auto written = Catalogues::write(connection(), kNow);
        ASSERT_FALSE(written.ok());
        EXPECT_EQ(written.error().code, ErrorCode::LeadsOut);
        EXPECT_TRUE(written.error().message.contains(link));
        bool isTold = false;
        for (const Finding& finding : Catalogues::compare(connection())) {
            isTold = isTold || (finding.what == written.error().message && !finding.repairable);
        }
        EXPECT_TRUE(isTold) << link.toStdString();
        ASSERT_TRUE(QFile::remove(link));
    }
    QFile::remove(stamp);
    ASSERT_TRUE(QFile::link(foreign, stamp));
    QFile::remove(path());
    writeCatalogues(false);
    EXPECT_FALSE(QFileInfo::exists(foreign));
    ASSERT_TRUE(QFile::remove(stamp));
}

TEST_F(CataloguesTest, aCatalogueThatCannotBeReadIsLeftAsItIsAndSoIsTheBriefOne)
{
    const QString briefPath = package() + u"/iLifeShared/AlbumData2.xml"_s;
    const auto content = [](const QString& file) {
        QFile opened(file);
        return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray();
    };
    QFile::remove(path());
    writeCatalogues(false);
    EXPECT_TRUE(Catalogues::damage(package()).isNull());
    const QByteArray brief = content(briefPath);
    Writer to = writer();
    PhotoRows::setName(to, m_photo.visible, u"another"_s);
    for (const QByteArray& bytes : {QByteArray("<plist><dict><key>torn"),
                                    QByteArray("not xml"),
                                    QByteArray(""),
                                    QByteArray("<plist version=\"1.0\"><array/></plist>"),
                                    QByteArray("<plist version=\"1.0\"><dict/></plist>")}) {
        replaceOldFile(bytes);
        const auto written = Catalogues::write(connection(), kNow);
        ASSERT_TRUE(written.ok()) << written.error().message.toStdString();
        EXPECT_FALSE(written.value().oldFileRead);
        EXPECT_TRUE(written.value().leftAlone.contains(path())) << bytes.toStdString();
        EXPECT_TRUE(written.value().leftAlone.contains(u"remove it"_s));
        EXPECT_EQ(Catalogues::damage(package()), written.value().leftAlone);
        EXPECT_EQ(content(path()), bytes);
        EXPECT_EQ(content(briefPath), brief);
    }
    QFile::remove(path());
    EXPECT_TRUE(Catalogues::damage(package()).isNull());
    writeCatalogues(false);
    EXPECT_EQ(record(m_photo.visible).value(u"Caption"_s).toString(), u"another"_s);
}

TEST_F(CataloguesTest, aCatalogueThatIsNoFileOfItsKindIsNamedAndLeftAlone)
{
    const QString brief = package() + u"/iLifeShared/AlbumData2.xml"_s;
    for (const QString& file : {path(), brief}) {
        for (const auto make : {&makePipe, &makeLinkToADevice, &makeHugeFile}) {
            QFile::remove(file);
            make(file);
            const auto written = Catalogues::write(connection(), kNow);
            ASSERT_FALSE(written.ok());
            EXPECT_EQ(written.error().code, ErrorCode::Unreadable);
            EXPECT_TRUE(written.error().message.contains(file));
            const QList<Finding> findings = Catalogues::compare(connection());
            ASSERT_FALSE(findings.isEmpty());
            EXPECT_EQ(findings.last().what, written.error().message);
            EXPECT_FALSE(findings.last().repairable);
        }
        ASSERT_TRUE(QFile::remove(file));
    }
}

TEST_F(CataloguesTest, aPipeInThePlaceOfTheTimestampHoldsNobodyUp)
{
    const QString stamp = package() + u"/iLifeShared/ApertureDatabaseTimestamp"_s;
    QFile::remove(path());
    QFile::remove(stamp);
    makePipe(stamp);
    writeCatalogues(false);
    ASSERT_TRUE(QFile::remove(stamp));
}

TEST_F(CataloguesTest, whatOnlyTheOldFileKnowsIsCarriedOver)
{
    const QByteArray id = QByteArray::number(m_photo.visible);
    replaceOldFile(
        "<plist version=\"1.0\"><dict><key>Application Version</key><string>9.5</string>"
        "<key>Archive Path</key><string>/Users/me/My.photolibrary</string>"
        "<key>List of Albums</key><array><dict><key>GUID</key><string>lastNMonthsAlbum</string>"
        "<key>KeyList</key><array><string>99999</string><string>" +
        id +
        "</string></array></dict></array><key>List of Faces</key><dict><key>7</key><dict>"
        "<key>key</key><string>7</string><key>name</key><string>Ann</string>"
        "<key>key image</key><string>gone</string><key>PhotoCount</key><string>1</string>"
        "<key>Order</key><integer>0</integer><key>address &amp; more</key><dict><key>town</key>"
        "<string>Oslo\n\tcity</string></dict></dict></dict><key>Master Image List</key><dict>"
        "<key>" +
        id +
        "</key><dict><key>DateAsTimerInterval</key><real>3700.0</real>"
        "<key>DateAsTimerIntervalGMT</key><real>100.0</real><key>Faces</key><array><dict>"
        "<key>face key</key><string>7</string><key>rectangle</key><string>{{0, 0}, {1, 1}}"
        "</string><key>face index</key><integer>0</integer><key>sure</key><true/></dict></array>"
        "</dict></dict>"
        "</dict></plist>");
    writeCatalogues(true);
    EXPECT_EQ(catalogue().value(u"Application Version"_s).toString(), u"9.5"_s);
    EXPECT_EQ(record(m_second.visible).value(u"OriginalPath"_s).toString(),
              u"/Users/me/My.photolibrary/Masters/2010/05/01/20100501-120000/IMG_2.JPG"_s);
    const QVariantMap second = record(m_second.visible);
    EXPECT_EQ(second.value(u"DateAsTimerInterval"_s).toDouble() -
                  second.value(u"DateAsTimerIntervalGMT"_s).toDouble(),
              3600.0);
    EXPECT_EQ(record(m_photo.visible).value(u"Faces"_s).toList().size(), 1);
    EXPECT_FALSE(second.contains(u"Faces"_s));
    EXPECT_EQ(album(u"lastNMonthsAlbum"_s).value(u"KeyList"_s).toList(), keys({m_photo.visible}));
    const QVariantMap ann = catalogue().value(u"List of Faces"_s).toMap().value(u"7"_s).toMap();
    EXPECT_EQ(ann.value(u"name"_s).toString(), u"Ann"_s);
    EXPECT_FALSE(ann.contains(u"key image"_s)); // its photo is gone
    EXPECT_EQ(ann.value(u"address & more"_s).toMap().value(u"town"_s).toString(),
              u"Oslo\n\tcity"_s);
    const QVariantList faces = record(m_photo.visible).value(u"Faces"_s).toList();
    EXPECT_EQ(faces.first().toMap().value(u"sure"_s), QVariant(true));
}

TEST_F(CataloguesTest, settingsThatOnlyTheOldFileKnowsOfAnAlbumAreCarriedOver)
{
    replaceOldFile("<plist version=\"1.0\"><dict><key>List of Albums</key><array><dict>"
                   "<key>GUID</key><string>lastImportAlbum</string>"
                   "<key>Sort Order</key><string>3</string>"
                   "<key>TransitionSpeed</key><real>4.500000</real>"
                   "<key>ShuffleSlides</key><true/></dict></array>"
                   "<key>Master Image List</key><dict/></dict></plist>");
    writeCatalogues(true);
    const QVariantMap carried = album(u"lastImportAlbum"_s);
    EXPECT_EQ(carried.value(u"Sort Order"_s).toString(), u"3"_s);
    EXPECT_EQ(carried.value(u"TransitionSpeed"_s).toDouble(), 4.5);
    EXPECT_TRUE(carried.value(u"ShuffleSlides"_s).toBool());
    const QVariantMap flagged = album(u"flaggedAlbum"_s);
    EXPECT_EQ(flagged.value(u"Sort Order"_s).toString(), u"1"_s);
}

TEST_F(CataloguesTest, textThatXmlReservesIsReadAsItWas)
{
    Writer to = writer();
    const QString name = u"<Q & \"A\"> it's ü 📷"_s;
    PhotoRows::setName(to, m_photo.visible, name);
    PhotoRows::setComment(to, m_photo.visible, u"two\rlines\nand a bell\a"_s);
    writeCatalogues(true);
    EXPECT_EQ(record(m_photo.visible).value(u"Caption"_s).toString(), name);
    EXPECT_EQ(record(m_photo.visible).value(u"Comment"_s).toString(), u"two\rlines\nand a bell"_s);
    EXPECT_EQ(record(m_second.visible).value(u"Comment"_s).toString(), u" "_s);
}

TEST_F(CataloguesTest, aPhotoInTheTrashIsInNoList)
{
    Writer to = writer();
    const qint64 kept = AlbumRows::createAlbum(to, u"Kept"_s);
    AlbumRows::addPhotos(to, kept, {m_second.visible, m_photo.visible});
    EXPECT_EQ(TrashRows::moveToTrash(to, {m_photo.visible}), 1);
    writeCatalogues(true);
    EXPECT_TRUE(record(m_photo.visible).isEmpty());
    const QVariantList albums = catalogue().value(u"List of Albums"_s).toList();
    int holding = 0;
    for (const QVariant& item : albums) {
        const QVariantList list = item.toMap().value(u"KeyList"_s).toList();
        EXPECT_FALSE(list.contains(QString::number(m_photo.visible)));
        EXPECT_EQ(item.toMap().value(u"PhotoCount"_s).toLongLong(), list.size());
        holding += list.contains(QString::number(m_second.visible)) ? 1 : 0;
    }
    EXPECT_EQ(holding, 3); // all photos, the event, the album
    const QVariantMap roll = catalogue().value(u"List of Rolls"_s).toList().at(0).toMap();
    EXPECT_EQ(roll.value(u"KeyPhotoKey"_s).toString(), QString::number(m_second.visible));
}

TEST_F(CataloguesTest, anEventWhosePhotosAreAllInTheTrashIsLeftOut)
{
    Writer to = writer();
    EXPECT_EQ(TrashRows::moveToTrash(to, {m_photo.visible, m_second.visible}), 2);
    writeCatalogues(true);
    EXPECT_TRUE(catalogue().value(u"List of Rolls"_s).toList().isEmpty());
    EXPECT_TRUE(album(m_event).isEmpty());
}

TEST_F(CataloguesTest, anEventWithoutANameIsCalledByItsDay)
{
    Sql::execute(connection(), "UPDATE RKFolder SET name='' WHERE uuid=?", m_event);
    QFile::remove(path());
    writeCatalogues(false);
    const QVariantMap roll = catalogue().value(u"List of Rolls"_s).toList().at(0).toMap();
    EXPECT_EQ(roll.value(u"RollName"_s).toString(), u"May 1, 2010"_s);
    EXPECT_EQ(album(m_event).value(u"AlbumName"_s).toString(), u"May 1, 2010"_s);
}

TEST_F(CataloguesTest, albumsListTheirPhotosByDate)
{
    Writer to = writer();
    const qint64 id = AlbumRows::createAlbum(to, u"Both"_s);
    AlbumRows::addPhotos(to, id, {m_second.visible, m_photo.visible});
    const QString guid =
        Sql::firstText(connection(), "SELECT uuid FROM RKAlbum WHERE modelId=?", id);
    writeCatalogues(true);
    EXPECT_EQ(album(guid).value(u"KeyList"_s).toList(), keys({m_photo.visible, m_second.visible}));
    EXPECT_EQ(album(guid).value(u"Album Type"_s).toString(), u"Regular"_s);
    EXPECT_FALSE(album(guid).value(u"SongPath"_s).toString().isEmpty());
}

TEST_F(CataloguesTest, writingTwiceGivesTheSameBytes)
{
    writeCatalogues(true);
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray first = file.readAll();
    writeCatalogues(true);
    file.seek(0);
    EXPECT_EQ(file.readAll(), first); // the same file too: it is not replaced for nothing
}

TEST_F(CataloguesTest, otherProgramsAreToldTheTimeOfTheChange)
{
    const QString stamp = package() + u"/iLifeShared/ApertureDatabaseTimestamp"_s;
    writeCatalogues(true);
    EXPECT_EQ(QFileInfo(stamp).lastModified().toSecsSinceEpoch(), 978307200 + 800000000);
    EXPECT_EQ(QFileInfo(stamp).size(), 0);
}

TEST(CatalogueXml, numbersHaveAPointAndTheirDigitsInEveryLocale)
{
    EXPECT_EQ(CatalogueXml::fixed(519671936.0, 6), "519671936.000000");
    EXPECT_EQ(CatalogueXml::fixed(-0.5, 2), "-0.50");
    EXPECT_EQ(CatalogueXml::shortest(51.50357167), "51.50357167");
    EXPECT_EQ(CatalogueXml::shortest(-0.1318055), "-0.1318055");
    EXPECT_EQ(CatalogueXml::fixed(std::numeric_limits<double>::infinity(), 6), "0.000000");
}
