#include "CatalogueReader.h"

#include "AlbumTree.h"
#include "Clock.h"
#include "Queries.h"
#include "WallClock.h"

#include <QDateTime>
#include <QHash>
#include <QLocale>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

/// No library with a hidden photo was at hand: that the catalogue leaves it out is concluded from
/// what it is for, other programs' lists of photos to choose from.
constexpr const char* kPhotosOfCatalogue =
    "SELECT v.modelId, v.uuid, v.name, v.isFlagged, s.stringProperty, f.modelId, v.mainRating,"
    " p.fullSizePreviewPath, m.imagePath, m.fileIsReference, d.name, m.type,"
    " v.exportImageChangeDate, v.imageDate, v.exportMetadataChangeDate, p.miniThumbnailPath,"
    " v.exifLatitude, v.exifLongitude"
    " FROM RKVersion v"
    " JOIN RKFolder f ON f.uuid = v.projectUuid"
    " JOIN RKMaster m ON m.uuid = v.masterUuid"
    " LEFT JOIN RKVolume d ON d.uuid = m.fileVolumeUuid"
    " LEFT JOIN prox.RKImageProxyState p ON p.versionUuid = v.uuid"
    " LEFT JOIN prop.RKIptcProperty c ON c.versionId = v.modelId"
    " AND c.propertyKey = 'Caption/Abstract'"
    " LEFT JOIN prop.RKUniqueString s ON s.modelId = c.stringId"
    " WHERE v.showInLibrary = 1 AND v.isInTrash = 0 AND v.isHidden = 0"
    " ORDER BY f.minImageDate, v.imageDate, v.modelId";

std::optional<double> real(const SQLite::Column& column)
{
    const bool isNumber = column.isInteger() || column.isFloat();
    const double number = isNumber ? column.getDouble() : 0.0;
    return isNumber && std::isfinite(number) ? std::optional<double>(number) : std::nullopt;
}

CataloguePhoto photoOf(Sql::Query& row)
{
    int index = 0;
    CataloguePhoto photo;
    photo.id = row.column(index++).getInt64();
    photo.guid = Sql::text(row.column(index++));
    photo.name = Sql::text(row.column(index++));
    photo.flagged = row.column(index++).getInt64() != 0;
    photo.comment = Sql::text(row.column(index++));
    photo.roll = row.column(index++).getInt64();
    photo.rating = row.column(index++).getInt64();
    photo.preview = Sql::text(row.column(index++));
    photo.master = Sql::text(row.column(index++));
    photo.isReference = row.column(index++).getInt64() != 0;
    const QString volume = Sql::text(row.column(index++));
    if (photo.isReference) {
        photo.master = (volume.isEmpty() ? u"/"_s : u"/Volumes/"_s + volume + u'/') + photo.master;
    }
    photo.isMovie = Sql::text(row.column(index++)) == "VIDT"_L1;
    photo.imageChanged = real(row.column(index++));
    photo.date = real(row.column(index++));
    photo.metadataChanged = real(row.column(index++));
    photo.thumbnail = Sql::text(row.column(index++));
    photo.latitude = real(row.column(index++));
    photo.longitude = real(row.column(index++));
    return photo;
}

/// How far the local time that import groups are named for is behind GMT, in whole quarters of an
/// hour; 0 when nothing was imported.
double offsetOfImports(Connection& connection)
{
    Sql::Query query(connection,
                     "SELECT g.importYear||g.importMonth||g.importDay||g.importTime,"
                     " min(m.createDate) FROM RKImportGroup g JOIN RKMaster m"
                     " ON m.importGroupUuid = g.uuid GROUP BY g.modelId ORDER BY g.modelId");
    constexpr double kQuarter = 900.0;
    constexpr double kFarthest = 14.0 * 3600.0; // no zone is farther from GMT
    while (query.next()) {
        QDateTime local = QDateTime::fromString(Sql::text(query.column(0)), u"yyyyMMddHHmmss"_s);
        local.setTimeSpec(Qt::UTC);
        const std::optional<double> moment = real(query.column(1));
        if (local.isValid() && moment) {
            const double wall =
                static_cast<double>(local.toSecsSinceEpoch()) - kSecondsFrom1970To2001;
            const double offset = std::round((*moment - wall) / kQuarter) * kQuarter;
            if (std::abs(offset) <= kFarthest) {
                return offset;
            }
        }
    }
    return 0.0;
}

/// An event without a name is shown as its day; that the day's text is this one everywhere is
/// concluded from one library.
QString dayText(double date)
{
    return QLocale::c().toString(WallClock::of(date), u"MMM d, yyyy"_s);
}

class ModelReader final
{
public:
    ModelReader(Connection& connection, const OldCatalogue& old)
        : m_connection(connection)
        , m_old(old)
    {
    }

    [[nodiscard]] CatalogueModel read()
    {
        const std::optional<double> offset = m_old.offset();
        m_model.offset = offset ? *offset : offsetOfImports(m_connection);
        readPhotos();
        readRolls();
        readMembers();
        readBuiltInAlbums();
        const auto members = [this](qint64 album) { return m_members.value(album); };
        m_model.userAlbums = AlbumTree(m_connection, members, [this](const QString& guid) {
                                 return carriedOver(guid);
                             }).read();
        sortFolders();
        carrySettingsOver(m_model.builtInAlbums);
        carrySettingsOver(m_model.userAlbums);
        return std::move(m_model);
    }

private:
    void readPhotos();
    void readRolls();
    void readMembers();
    void readBuiltInAlbums();
    void sortFolders();
    void carrySettingsOver(QList<CatalogueAlbum>& albums) const;
    [[nodiscard]] QList<qint64> photosOfBuiltIn(const CatalogueAlbum& album) const;

    void sortByDate(QList<qint64>& photos) const
    {
        std::sort(photos.begin(), photos.end(), [this](qint64 left, qint64 right) {
            return m_places.value(left) < m_places.value(right);
        });
    }

    /// What the old catalogue has in an album, as far as it is still to be seen.
    [[nodiscard]] std::optional<OldCatalogue::Album> carriedOver(const QString& guid) const
    {
        std::optional<OldCatalogue::Album> album = m_old.album(guid);
        if (album) {
            album->photos.removeIf([this](qint64 id) { return !m_places.contains(id); });
        }
        return album;
    }

    Connection& m_connection;
    const OldCatalogue& m_old;
    CatalogueModel m_model;
    QHash<qint64, qsizetype> m_places; ///< of each visible photo among all, by date
    QHash<QString, qint64> m_ids;      ///< of each visible photo, by GUID
    QHash<qint64, QList<qint64>> m_members;
};

void ModelReader::carrySettingsOver(QList<CatalogueAlbum>& albums) const
{
    for (CatalogueAlbum& album : albums) {
        if (const std::optional<OldCatalogue::Album> old = m_old.album(album.guid)) {
            album.settings = old->settings;
        }
    }
}

void ModelReader::readPhotos()
{
    Sql::Query row(m_connection, kPhotosOfCatalogue);
    while (row.next()) {
        CataloguePhoto photo = photoOf(row);
        if (photo.isReference) {
            const OldCatalogue::Image old = m_old.image(photo.id);
            const QString known = old.originalPath.isEmpty() && photo.preview.isNull()
                                      ? old.imagePath
                                      : old.originalPath;
            photo.master = known.isEmpty() ? photo.master : known;
        }
        m_model.photos.append(photo);
        m_ids.insert(photo.guid, photo.id);
    }
    QList<std::pair<double, qint64>> byDate;
    for (const CataloguePhoto& photo : m_model.photos) {
        byDate.append({photo.date.value_or(0.0), photo.id});
    }
    std::sort(byDate.begin(), byDate.end());
    for (qsizetype place = 0; place < byDate.size(); ++place) {
        m_places.insert(byDate.at(place).second, place);
    }
}

void ModelReader::readRolls()
{
    QHash<qint64, QList<qint64>> photos;
    QHash<qint64, double> dates;
    for (const CataloguePhoto& photo : m_model.photos) {
        if (!photos.contains(photo.roll)) {
            dates.insert(photo.roll, photo.date.value_or(0.0));
        }
        photos[photo.roll].append(photo.id);
    }
    Sql::Query row(m_connection,
                   "SELECT f.modelId, f.uuid, f.name, a.modelId, f.posterVersionUuid,"
                   " f.minImageDate FROM RKFolder f LEFT JOIN RKAlbum a"
                   " ON a.uuid = f.implicitAlbumUuid ORDER BY f.minImageDate, f.modelId");
    while (row.next()) {
        CatalogueRoll roll;
        roll.id = row.column(0).getInt64();
        roll.photos = photos.value(roll.id);
        if (roll.photos.isEmpty()) {
            continue;
        }
        roll.guid = Sql::text(row.column(1));
        roll.name = Sql::text(row.column(2));
        roll.albumId = row.column(3).getInt64();
        const qint64 poster = m_ids.value(Sql::text(row.column(4)));
        roll.keyPhoto = roll.photos.contains(poster) ? poster : roll.photos.first();
        roll.date = real(row.column(5)).value_or(dates.value(roll.id));
        if (roll.name.isEmpty()) {
            const QString known = m_old.rollName(roll.id);
            roll.name = known.isEmpty() ? dayText(roll.date) : known;
        }
        m_model.rolls.append(roll);
    }
}

void ModelReader::readMembers()
{
    Sql::Query row(m_connection, "SELECT albumId, versionId FROM RKAlbumVersion");
    while (row.next()) {
        const qint64 photo = row.column(1).getInt64();
        if (m_places.contains(photo)) {
            m_members[row.column(0).getInt64()].append(photo);
        }
    }
    for (QList<qint64>& photos : m_members) {
        sortByDate(photos);
    }
}

/// What a built-in album shows, of which all but the photos is known.
QList<qint64> ModelReader::photosOfBuiltIn(const CatalogueAlbum& album) const
{
    if (album.kind == CatalogueAlbum::Kind::Regular) {
        return m_members.value(album.id);
    }
    if (album.guid == "lastNMonthsAlbum"_L1) {
        return carriedOver(album.guid).value_or(OldCatalogue::Album()).photos;
    }
    QList<qint64> photos;
    for (const CataloguePhoto& photo : m_model.photos) {
        if (album.kind == CatalogueAlbum::Kind::All || photo.flagged) {
            photos.append(photo.id);
        }
    }
    return photos;
}

void ModelReader::readBuiltInAlbums()
{
    using Kind = CatalogueAlbum::Kind;

    struct BuiltIn {
        QString guid;
        Kind kind;
        QString type;
    };

    const QList<BuiltIn> known{{u"allPhotosAlbum"_s, Kind::All, u"99"_s},
                               {u"flaggedAlbum"_s, Kind::Query, u"Flagged"_s},
                               {u"lastNMonthsAlbum"_s, Kind::Query, u"Special Month"_s},
                               {u"lastImportAlbum"_s, Kind::Regular, u"Regular"_s}};
    for (const BuiltIn& item : known) {
        Sql::Query row(m_connection, "SELECT modelId, name FROM RKAlbum WHERE uuid=?", item.guid);
        if (!row.next()) {
            continue;
        }
        CatalogueAlbum album;
        album.kind = item.kind;
        album.type = item.type;
        album.guid = item.guid;
        album.id = row.column(0).getInt64();
        album.name = Sql::text(row.column(1));
        album.photos = photosOfBuiltIn(album);
        m_model.builtInAlbums.append(album);
    }
}

void ModelReader::sortFolders()
{
    for (CatalogueAlbum& album : m_model.userAlbums) {
        if (album.kind == CatalogueAlbum::Kind::Folder) {
            sortByDate(album.photos);
        }
    }
}

} // namespace

CatalogueModel CatalogueReader::read(Connection& connection, const OldCatalogue& old)
{
    return ModelReader(connection, old).read();
}
