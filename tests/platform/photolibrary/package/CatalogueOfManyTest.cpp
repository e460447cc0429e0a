#include "CatalogueXml.h"
#include "Catalogues.h"
#include "EventRows.h"
#include "LibraryFixture.h"
#include "PackageCopy.h"
#include "PropertyList.h"
#include "QtPrinters.h"
#include "Uuid.h"

#include <QFile>
#include <QHash>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kPhotos = 3000;
constexpr int kEvents = 20;
constexpr int kPhotosOfAnEvent = kPhotos / kEvents;
constexpr qint64 kFirstId = 1000000; ///< above whatever the library holds
constexpr double kFirstDate = 294408000.0;
constexpr double kWritten = 800000000.5;

/// Photos in the order of their dates; rows are made in another order.
struct ManyPhoto {
    qint64 id{0};
    int place{0};
    QString uuid;
    qint64 event{0};
};

/// What the photo at that place is like, each kind as often as its divisor says.
double dateOf(int place)
{
    return kFirstDate + place * 60.0 + 0.125;
}

QString nameOf(int place)
{
    return u"No. %1 <&> \"ü\" 'é' 📷"_s.arg(place);
}

bool hasComment(int place)
{
    return place % 3 == 0;
}

bool hasPreview(int place)
{
    return place % 4 == 0;
}

bool hasPosition(int place)
{
    return place % 5 == 0;
}

bool isFlagged(int place)
{
    return place % 7 == 0;
}

QString groupOf(int place)
{
    return u"2010/05/01/20100501-%1"_s.arg(place, 6, 10, QChar(u'0'));
}

QVariantList keysOf(const QList<ManyPhoto>& photos)
{
    QVariantList keys;
    for (const ManyPhoto& photo : photos) {
        keys.append(QString::number(photo.id));
    }
    return keys;
}

} // namespace

/// A library of some thousand photos, and the catalogues that are written of it.
class CatalogueOfMany : public LibraryFixture
{
protected:
    void SetUp() override
    {
        LibraryFixture::SetUp();
        // The package is shared with other tests.
        for (const QString& path : paths()) {
            m_filesBefore.insert(path, PackageCopy::bytes(path));
            QFile::remove(path);
        }
        Writer to = writer();
        for (int i = 0; i < kEvents; ++i) {
            m_events.append(EventRows::createEvent(to, u"Event %1"_s.arg(i)));
        }
        m_photos.resize(kPhotos);
        constexpr int kStride = 7919; // a prime: every place comes once
        for (int i = 0; i < kPhotos; ++i) {
            addPhotoAt(i * kStride % kPhotos, kFirstId + qint64{2} * i);
        }
        for (const QString& event : std::as_const(m_events)) {
            EventRows::updateStatistics(to, event);
        }
    }

    void TearDown() override
    {
        for (auto file = m_filesBefore.cbegin(); file != m_filesBefore.cend(); ++file) {
            QFile::remove(file.key());
            QFile restored(file.key());
            if (!file.value().isEmpty() && restored.open(QIODevice::WriteOnly)) {
                restored.write(file.value());
            }
        }
        LibraryFixture::TearDown();
    }

    [[nodiscard]] QString fullPath() const { return package() + u"/AlbumData.xml"_s; }

    [[nodiscard]] QString briefPath() const { return package() + u"/iLifeShared/AlbumData2.xml"_s; }

    [[nodiscard]] QStringList paths() const { return {fullPath(), briefPath()}; }

    [[nodiscard]] const QList<ManyPhoto>& photos() const { return m_photos; }

    [[nodiscard]] QList<ManyPhoto> photosOf(int event) const
    {
        return m_photos.mid(qsizetype{event} * kPhotosOfAnEvent, kPhotosOfAnEvent);
    }

    [[nodiscard]] const QString& eventAt(int index) const { return m_events.at(index); }

    void writeCatalogues()
    {
        const auto written = Catalogues::write(connection(), kWritten);
        ASSERT_TRUE(written.ok()) << written.error().message.toStdString();
        ASSERT_TRUE(written.value().leftAlone.isNull());
    }

    [[nodiscard]] static QVariantMap read(const QString& path)
    {
        const Result<QVariant> list = PropertyList::read(path);
        EXPECT_TRUE(list.ok());
        return list.ok() ? list.value().toMap() : QVariantMap();
    }

    /// The record of a photo as the catalogue has to have it.
    [[nodiscard]] QVariantMap recordOf(const ManyPhoto& photo) const
    {
        const int place = photo.place;
        const QString master =
            package() + u"/Masters/"_s + groupOf(place) + u"/IMG_%1.JPG"_s.arg(place);
        const QString rendered = groupOf(place) + u'/' + photo.uuid;
        QVariantMap record{
            {u"Caption"_s, nameOf(place)},
            {u"Comment"_s, hasComment(place) ? u"two\nlines of %1"_s.arg(place) : u" "_s},
            {u"GUID"_s, photo.uuid},
            {u"Roll"_s, photo.event},
            {u"Rating"_s, qlonglong{place % 6}},
            {u"ImagePath"_s,
             hasPreview(place) ? package() + u"/Previews/"_s + rendered + u"/p.jpg"_s : master},
            {u"MediaType"_s, u"Image"_s},
            {u"ModDateAsTimerInterval"_s, dateOf(place) + 1.0},
            {u"DateAsTimerInterval"_s, dateOf(place)},
            {u"DateAsTimerIntervalGMT"_s, dateOf(place)},
            {u"MetaModDateAsTimerInterval"_s, dateOf(place) + 2.0},
            {u"ThumbPath"_s, package() + u"/Thumbnails/"_s + rendered + u"/t.jpg"_s}};
        if (isFlagged(place)) {
            record.insert(u"Flagged"_s, true);
        }
        if (hasPreview(place)) {
            record.insert(u"OriginalPath"_s, master);
        }
        if (hasPosition(place)) {
            record.insert(u"latitude"_s, -place / 64.0);
            record.insert(u"longitude"_s, place / 32.0);
        }
        return record;
    }

private:
    void addPhotoAt(int place, qint64 id);
    void addComment(int place, qint64 id);

    QMap<QString, QByteArray> m_filesBefore;
    QStringList m_events;
    QList<ManyPhoto> m_photos;
};

void CatalogueOfMany::addPhotoAt(int place, qint64 id)
{
    const QString event = m_events.at(place / kPhotosOfAnEvent);
    ManyPhoto& photo = m_photos[place];
    photo.id = id;
    photo.place = place;
    photo.uuid = Uuid::create();
    photo.event =
        Sql::firstInteger(connection(), "SELECT modelId FROM RKFolder WHERE uuid=?", event)
            .value_or(0);
    const QString master = Uuid::create();
    const QVariant latitude = hasPosition(place) ? QVariant(-place / 64.0) : QVariant();
    const QVariant longitude = hasPosition(place) ? QVariant(place / 32.0) : QVariant();
    Sql::execute(connection(),
                 "INSERT INTO RKMaster(modelId,uuid,projectUuid,fileName,imagePath,type,"
                 "fileIsReference,isInTrash) VALUES(?,?,?,?,?,'IMGT',0,0)",
                 id,
                 master,
                 event,
                 u"IMG_%1.JPG"_s.arg(place),
                 groupOf(place) + u"/IMG_%1.JPG"_s.arg(place));
    Sql::execute(connection(),
                 "INSERT INTO RKVersion(modelId,uuid,name,versionNumber,masterUuid,masterId,"
                 "projectUuid,imageTimeZoneName,imageDate,mainRating,isHidden,isFlagged,isOriginal,"
                 "isInTrash,showInLibrary,exportImageChangeDate,exportMetadataChangeDate,"
                 "exifLatitude,exifLongitude)"
                 " VALUES(?1,?2,?3,1,?4,?1,?5,'GMT',?6,?7,0,?8,0,0,1,?6+1,?6+2,?9,?10)",
                 id,
                 photo.uuid,
                 nameOf(place),
                 master,
                 event,
                 dateOf(place),
                 place % 6,
                 isFlagged(place) ? 1 : 0,
                 latitude,
                 longitude);
    const QString rendered = groupOf(place) + u'/' + photo.uuid;
    Sql::execute(connection(),
                 "INSERT INTO RKImageProxyState(modelId,versionUuid,versionId,miniThumbnailPath,"
                 "fullSizePreviewPath) VALUES(?1,?2,?1,?3,?4)",
                 id,
                 photo.uuid,
                 rendered + u"/t.jpg"_s,
                 hasPreview(place) ? rendered + u"/p.jpg"_s : QString());
    if (hasComment(place)) {
        addComment(place, id);
    }
}

void CatalogueOfMany::addComment(int place, qint64 id)
{
    Sql::execute(connection(),
                 "INSERT INTO RKUniqueString(modelId,stringProperty) VALUES(?,?)",
                 id,
                 u"two\nlines of %1"_s.arg(place));
    Sql::execute(connection(),
                 "INSERT INTO RKIptcProperty(modelId,versionId,propertyKey,stringId,searchStringId)"
                 " VALUES(?1,?1,'Caption/Abstract',?1,?1)",
                 id);
}

TEST_F(CatalogueOfMany, everyPhotoIsReadAsItWasWritten)
{
    writeCatalogues();
    const QVariantMap images = read(fullPath()).value(u"Master Image List"_s).toMap();
    ASSERT_EQ(images.size(), kPhotos);
    int different = 0;
    for (const ManyPhoto& photo : photos()) {
        const QVariantMap record = images.value(QString::number(photo.id)).toMap();
        if (record != recordOf(photo) && ++different == 1) {
            EXPECT_EQ(record, recordOf(photo)) << "the first one of those that differ";
        }
    }
    EXPECT_EQ(different, 0);
}

TEST_F(CatalogueOfMany, everyListHasItsPhotosInTheOrderOfTheirDates)
{
    writeCatalogues();
    const QVariantMap full = read(fullPath());
    QHash<QString, QVariantMap> albums;
    const QVariantList listed = full.value(u"List of Albums"_s).toList();
    for (const QVariant& album : listed) {
        albums.insert(album.toMap().value(u"GUID"_s).toString(), album.toMap());
    }
    EXPECT_EQ(albums.value(u"allPhotosAlbum"_s).value(u"KeyList"_s).toList(), keysOf(photos()));
    QList<ManyPhoto> flagged = photos();
    flagged.removeIf([](const ManyPhoto& photo) { return !isFlagged(photo.place); });
    EXPECT_EQ(albums.value(u"flaggedAlbum"_s).value(u"KeyList"_s).toList(), keysOf(flagged));
    const QVariantList rolls = full.value(u"List of Rolls"_s).toList();
    ASSERT_EQ(rolls.size(), kEvents);
    for (int i = 0; i < kEvents; ++i) {
        const QVariantMap roll = rolls.at(i).toMap();
        EXPECT_EQ(roll.value(u"ProjectUuid"_s).toString(), eventAt(i));
        EXPECT_EQ(roll.value(u"RollName"_s).toString(), u"Event %1"_s.arg(i));
        EXPECT_EQ(roll.value(u"RollDateAsTimerInterval"_s).toDouble(),
                  dateOf(i * kPhotosOfAnEvent));
        EXPECT_EQ(roll.value(u"PhotoCount"_s).toInt(), kPhotosOfAnEvent);
        EXPECT_EQ(roll.value(u"KeyList"_s).toList(), keysOf(photosOf(i)));
        EXPECT_EQ(albums.value(eventAt(i)).value(u"KeyList"_s).toList(), keysOf(photosOf(i)));
    }
}

TEST_F(CatalogueOfMany, theBriefOneTellsTheSameLists)
{
    writeCatalogues();
    const QVariantMap brief = read(briefPath());
    const auto joined = [](const QList<ManyPhoto>& list) {
        QStringList keys;
        for (const QVariant& key : keysOf(list)) {
            keys.append(key.toString());
        }
        return keys.join(u',');
    };
    const QVariantMap all = brief.value(u"List of Albums"_s).toList().first().toMap();
    EXPECT_EQ(all.value(u"GUID"_s).toString(), u"allPhotosAlbum"_s);
    EXPECT_EQ(all.value(u"KeyListString"_s).toString(), joined(photos()));
    const QVariantList rolls = brief.value(u"List of Rolls"_s).toList();
    ASSERT_EQ(rolls.size(), kEvents);
    for (int i = 0; i < kEvents; ++i) {
        EXPECT_EQ(rolls.at(i).toMap().value(u"KeyListString"_s).toString(), joined(photosOf(i)));
    }
}

TEST_F(CatalogueOfMany, readAndWrittenAgainNoByteOfItChanges)
{
    writeCatalogues();
    const QByteArray full = PackageCopy::bytes(fullPath());
    const QByteArray brief = PackageCopy::bytes(briefPath());
    ASSERT_GT(full.size(), kPhotos * 500);
    writeCatalogues();
    EXPECT_TRUE(PackageCopy::bytes(fullPath()) == full);
    EXPECT_TRUE(PackageCopy::bytes(briefPath()) == brief);
}

TEST_F(CatalogueOfMany, aChangeOfOneChangesOneLine)
{
    writeCatalogues();
    const QList<QByteArray> before = PackageCopy::bytes(fullPath()).split('\n');
    const QByteArray brief = PackageCopy::bytes(briefPath());
    const ManyPhoto& photo = photos().at(kPhotos / 2);
    Sql::execute(
        connection(), "UPDATE RKVersion SET name=? WHERE modelId=?", u"another"_s, photo.id);
    writeCatalogues();
    const QList<QByteArray> after = PackageCopy::bytes(fullPath()).split('\n');
    ASSERT_EQ(after.size(), before.size());
    QList<QByteArray> changed;
    for (qsizetype line = 0; line < after.size(); ++line) {
        if (after.at(line) != before.at(line)) {
            changed << before.at(line).trimmed() << after.at(line).trimmed();
        }
    }
    EXPECT_EQ(
        changed,
        (QList<QByteArray>{"<string>" + CatalogueXml::escaped(nameOf(photo.place)) + "</string>",
                           "<string>another</string>"}));
    EXPECT_TRUE(PackageCopy::bytes(briefPath()) == brief) << "it tells no names of photos";
}
