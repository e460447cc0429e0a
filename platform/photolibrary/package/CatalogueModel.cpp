#include "CatalogueModel.h"

#include "Clock.h"
#include "PropertyList.h"
#include "Queries.h"

#include <QDateTime>
#include <QLocale>
#include <QSet>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

using namespace CatalogueModel;

constexpr const char* kImages =
    "SELECT v.modelId, v.name, v.isFlagged, sc.stringProperty, v.uuid, f.modelId, f.uuid,"
    " v.mainRating, p.fullSizePreviewPath, m.imagePath, p.miniThumbnailPath, m.type, v.imageDate,"
    " v.exportImageChangeDate, v.exportMetadataChangeDate, v.exifLatitude, v.exifLongitude"
    " FROM RKVersion v JOIN RKMaster m ON m.uuid = v.masterUuid"
    " JOIN RKFolder f ON f.uuid = v.projectUuid"
    " LEFT JOIN prox.RKImageProxyState p ON p.versionUuid = v.uuid"
    " LEFT JOIN prop.RKIptcProperty ic ON ic.versionId = v.modelId"
    " AND ic.propertyKey = 'Caption/Abstract'"
    " LEFT JOIN prop.RKUniqueString sc ON sc.modelId = ic.stringId"
    " WHERE v.showInLibrary = 1 AND v.isInTrash = 0 AND v.isHidden = 0"
    " ORDER BY f.minImageDate, v.imageDate, v.modelId";

std::optional<double> realOf(const SQLite::Column& column)
{
    return column.isNull() ? std::nullopt : std::optional<double>(column.getDouble());
}

Image readImage(Sql::Query& query)
{
    Image image;
    int column = 0;
    const auto next = [&] { return query.column(column++); };
    image.id = next().getInt64();
    image.caption = Sql::text(next());
    image.flagged = next().getInt() != 0;
    image.comment = Sql::text(next());
    image.guid = Sql::text(next());
    image.roll = next().getInt64();
    image.event = Sql::text(next());
    image.rating = next().getInt64();
    const QString preview = Sql::text(next());
    const QString master = "Masters/"_L1 + Sql::text(next());
    image.imagePath = preview.isNull() ? master : "Previews/"_L1 + preview;
    image.originalPath = preview.isNull() ? QString() : master;
    image.thumbPath = "Thumbnails/"_L1 + Sql::text(next());
    image.movie = Sql::text(next()) == "VIDT"_L1;
    image.imageDate = next().getDouble();
    image.imageChanged = next().getDouble();
    image.metadataChanged = next().getDouble();
    image.latitude = realOf(next());
    image.longitude = realOf(next());
    return image;
}

/// Builds one catalogue from the databases and what the old one holds besides.
class Builder final
{
public:
    Builder(Connection& connection, const QVariantMap& old)
        : m_connection(connection)
        , m_old(old)
    {
    }

    [[nodiscard]] Catalogue build()
    {
        carryOver();
        readImages();
        addFixedAlbums();
        addEvents();
        addContainer(u"TopLevelAlbums"_s, std::nullopt, 0);
        return std::move(m_catalogue);
    }

private:
    void carryOver()
    {
        const QString version = m_old.value(u"Application Version"_s).toString();
        if (!version.isEmpty()) {
            m_catalogue.applicationVersion = version;
        }
        const QString archive = m_old.value(u"Archive Path"_s).toString();
        m_catalogue.archivePath = archive.isEmpty() ? m_connection.packagePath() : archive;
        m_catalogue.faces = m_old.value(u"List of Faces"_s).toMap();
        const QVariantMap images = m_old.value(u"Master Image List"_s).toMap();
        m_catalogue.zoneOffset = -QDateTime::currentDateTime().offsetFromUtc();
        for (auto image = images.cbegin(); image != images.cend(); ++image) {
            const QVariantMap record = image->toMap();
            const QVariantList faces = record.value(u"Faces"_s).toList();
            if (!faces.isEmpty()) {
                m_faces.insert(image.key().toLongLong(), faces);
            }
            const QVariant local = record.value(u"DateAsTimerInterval"_s);
            const QVariant universal = record.value(u"DateAsTimerIntervalGMT"_s);
            if (local.isValid() && universal.isValid()) {
                m_catalogue.zoneOffset = local.toDouble() - universal.toDouble();
            }
        }
        for (const QVariant& album : m_old.value(u"List of Albums"_s).toList()) {
            const QVariantMap record = album.toMap();
            m_oldAlbums.insert(record.value(u"GUID"_s).toString(), record);
        }
    }

    void readImages()
    {
        Sql::Query query(m_connection, kImages);
        while (query.next()) {
            Image image = readImage(query);
            image.faces = m_faces.value(image.id);
            m_byEvent[image.event].append(image.id);
            m_dates.insert(image.id, image.imageDate);
            m_catalogue.images.append(image);
        }
    }

    [[nodiscard]] QList<qint64> allIds() const
    {
        QList<qint64> ids;
        ids.reserve(m_catalogue.images.size());
        for (const Image& image : m_catalogue.images) {
            ids.append(image.id);
        }
        return ids;
    }

    /// What the old catalogue lists of an album that the databases do not give, without photos
    /// that are no longer visible.
    [[nodiscard]] QList<qint64> carriedKeys(const QString& guid) const
    {
        QList<qint64> keys;
        for (const QVariant& key : m_oldAlbums.value(guid).value(u"KeyList"_s).toList()) {
            const qint64 id = key.toString().toLongLong();
            if (m_dates.contains(id)) {
                keys.append(id);
            }
        }
        return keys;
    }

    /// Visible members in the order of their dates.
    [[nodiscard]] QList<qint64> members(qint64 album)
    {
        QList<qint64> keys;
        const QList<qint64> ids =
            Sql::integers(m_connection,
                          "SELECT v.modelId FROM RKAlbumVersion av JOIN RKVersion v"
                          " ON v.modelId = av.versionId WHERE av.albumId = ?"
                          " ORDER BY v.imageDate, v.modelId",
                          album);
        for (const qint64 id : ids) {
            if (m_dates.contains(id)) {
                keys.append(id);
            }
        }
        return keys;
    }

    void addFixed(const QString& guid, const QString& type, Kind kind, const QList<qint64>& keys)
    {
        Sql::Query query(
            m_connection, "SELECT modelId, name FROM RKAlbum WHERE uuid = ? LIMIT 1", guid);
        if (!query.next()) {
            return;
        }
        Album album;
        album.kind = kind;
        album.id = query.column(0).getInt64();
        album.name =
            m_oldAlbums.value(guid).value(u"AlbumName"_s, Sql::text(query.column(1))).toString();
        album.type = type;
        album.guid = guid;
        album.keys = keys;
        m_catalogue.albums.append(album);
    }

    void addFixedAlbums()
    {
        QList<qint64> flagged;
        for (const Image& image : std::as_const(m_catalogue.images)) {
            if (image.flagged) {
                flagged.append(image.id);
            }
        }
        addFixed(u"allPhotosAlbum"_s, u"99"_s, Kind::Photos, allIds());
        addFixed(u"flaggedAlbum"_s, u"Flagged"_s, Kind::Fixed, flagged);
        addFixed(u"lastNMonthsAlbum"_s,
                 u"Special Month"_s,
                 Kind::Fixed,
                 carriedKeys(u"lastNMonthsAlbum"_s));
        const std::optional<qint64> lastImport = Sql::firstInteger(
            m_connection, "SELECT modelId FROM RKAlbum WHERE uuid = 'lastImportAlbum'");
        if (lastImport) {
            addFixed(u"lastImportAlbum"_s, u"Regular"_s, Kind::Regular, members(*lastImport));
        }
    }

    void addEvents()
    {
        Sql::Query query(m_connection,
                         "SELECT f.modelId, f.uuid, f.name, f.minImageDate, v.modelId, a.modelId"
                         " FROM RKFolder f LEFT JOIN RKVersion v ON v.uuid = f.posterVersionUuid"
                         " LEFT JOIN RKAlbum a ON a.uuid = f.implicitAlbumUuid"
                         " WHERE f.folderType = 2 AND f.isMagic = 0 AND f.isInTrash = 0"
                         " ORDER BY f.minImageDate, f.modelId");
        while (query.next()) {
            Roll roll;
            roll.id = query.column(0).getInt64();
            roll.guid = Sql::text(query.column(1));
            roll.keys = m_byEvent.value(roll.guid);
            if (roll.keys.isEmpty()) {
                continue;
            }
            const double earliest = query.column(3).getDouble();
            roll.name = eventName(Sql::text(query.column(2)), earliest);
            roll.date = earliest + m_catalogue.zoneOffset;
            const qint64 poster = query.column(4).getInt64();
            roll.keyPhoto = roll.keys.contains(poster) ? poster : roll.keys.first();
            Album album;
            album.kind = Kind::Event;
            album.id = query.column(5).getInt64();
            album.name = roll.name;
            album.type = u"Event"_s;
            album.guid = roll.guid;
            album.keyPhoto = roll.keyPhoto;
            album.earliest = earliest;
            album.keys = roll.keys;
            m_catalogue.albums.append(album);
            m_catalogue.rolls.append(roll);
        }
    }

    /// An event without a name is shown by its date.
    [[nodiscard]] static QString eventName(const QString& name, double date)
    {
        if (!name.isEmpty()) {
            return name;
        }
        constexpr double kMilliseconds = 1000.0;
        const QDateTime moment = QDateTime::fromMSecsSinceEpoch(
            static_cast<qint64>(std::llround((date + kSecondsFrom1970To2001) * kMilliseconds)),
            Qt::UTC);
        return QLocale::c().toString(moment.date(), u"MMM d, yyyy"_s);
    }

    /// Albums and folders of a container, in the order of the sidebar, folders before what is in
    /// them. Returns the photos of all of them. `depth` ends folders that contain each other.
    QList<qint64> addContainer(const QString& container, std::optional<qint64> parent, int depth)
    {
        constexpr int kDeepest = 64;
        QList<qint64> all;
        if (depth > kDeepest) {
            return all;
        }
        const QStringList objects =
            Sql::texts(m_connection,
                       "SELECT uuid FROM (SELECT uuid, modelId FROM RKAlbum WHERE folderUuid = ?1"
                       " AND albumSubclass IN (2, 3) AND isMagic = 0 AND isInTrash = 0"
                       " AND isHidden = 0 UNION ALL SELECT uuid, modelId FROM RKFolder"
                       " WHERE parentFolderUuid = ?1 AND folderType = 1 AND isMagic = 0"
                       " AND isInTrash = 0) o ORDER BY coalesce((SELECT s.orderNumber FROM"
                       " RKCustomSortOrder s WHERE s.containerUuid = ?1 AND s.purpose = 'default'"
                       " AND s.objectUuid = o.uuid), 1000000000 + o.modelId)",
                       container);
        for (const QString& uuid : objects) {
            all += addAlbum(uuid, parent) ? m_catalogue.albums.last().keys
                                          : addFolder(uuid, parent, depth);
        }
        return all;
    }

    bool addAlbum(const QString& uuid, std::optional<qint64> parent)
    {
        Album album;
        {
            Sql::Query query(m_connection,
                             "SELECT modelId, name, albumSubclass, viewData FROM RKAlbum"
                             " WHERE uuid = ? AND albumSubclass IN (2, 3)",
                             uuid);
            if (!query.next()) {
                return false;
            }
            constexpr int kSmartSubclass = 2;
            album.id = query.column(0).getInt64();
            album.name = Sql::text(query.column(1));
            const bool smart = query.column(2).getInt() == kSmartSubclass;
            album.kind = smart ? Kind::Smart : Kind::Regular;
            album.type = smart ? u"Smart"_s : u"Regular"_s;
            album.songPath = songPath(Sql::blob(query.column(3)));
        }
        album.guid = uuid;
        album.parent = parent;
        album.keys = album.kind == Kind::Smart ? carriedKeys(uuid) : members(album.id);
        m_catalogue.albums.append(album);
        return true;
    }

    QList<qint64> addFolder(const QString& uuid, std::optional<qint64> parent, int depth)
    {
        Album folder;
        {
            Sql::Query query(m_connection,
                             "SELECT f.name, a.modelId FROM RKFolder f LEFT JOIN RKAlbum a"
                             " ON a.uuid = f.implicitAlbumUuid WHERE f.uuid = ?",
                             uuid);
            if (!query.next()) {
                return {};
            }
            folder.name = Sql::text(query.column(0));
            folder.id = query.column(1).getInt64();
        }
        folder.kind = Kind::Folder;
        folder.type = u"Folder"_s;
        folder.guid = uuid;
        folder.parent = parent;
        const qsizetype place = m_catalogue.albums.size();
        m_catalogue.albums.append(folder);
        QList<qint64> keys = addContainer(uuid, folder.id, depth + 1);
        std::sort(keys.begin(), keys.end(), [this](qint64 left, qint64 right) {
            return std::pair(m_dates.value(left), left) < std::pair(m_dates.value(right), right);
        });
        keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
        m_catalogue.albums[place].keys = keys;
        return keys;
    }

    /// The slideshow's music, one of the texts in the keyed archive of the album's view.
    [[nodiscard]] static QString songPath(const QByteArray& viewData)
    {
        const Result<QVariant> archive =
            viewData.isEmpty() ? Result<QVariant>(QVariant()) : PropertyList::parse(viewData);
        if (!archive.ok()) {
            return {};
        }
        for (const QVariant& object : archive.value().toMap().value(u"$objects"_s).toList()) {
            const QString text = object.toString();
            if (text.startsWith(u'/') && text.endsWith(".mp3"_L1)) {
                return text;
            }
        }
        return {};
    }

    Connection& m_connection;
    const QVariantMap& m_old;
    Catalogue m_catalogue;
    QHash<qint64, QVariantList> m_faces;
    QHash<QString, QVariantMap> m_oldAlbums;
    QHash<QString, QList<qint64>> m_byEvent; ///< visible photos in the order of their dates
    QHash<qint64, double> m_dates;           ///< of visible photos
};

} // namespace

CatalogueModel::Catalogue CatalogueModel::build(Connection& connection, const QVariantMap& old)
{
    return Builder(connection, old).build();
}
