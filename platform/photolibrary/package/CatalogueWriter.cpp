#include "CatalogueWriter.h"

#include "CatalogueXml.h"

#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

using Kind = CatalogueAlbum::Kind;

constexpr int kMajorVersion = 2;
constexpr int kMinorVersion = 0;

/// Decimals of the catalogue's numbers.
constexpr int kDateDecimals = 6;
constexpr int kEventDateDecimals = 2;
constexpr int kSpeedDecimals = 6;

QByteArray dateText(double date)
{
    return CatalogueXml::fixed(date, kDateDecimals);
}

QString joined(const QList<qint64>& ids)
{
    QStringList texts;
    for (const qint64 id : ids) {
        texts.append(QString::number(id));
    }
    return texts.join(u',');
}

void writeHead(CatalogueXml& xml)
{
    xml.line(0, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
    xml.line(0, "<plist version=\"1.0\">");
    xml.line(0, "<dict>");
}

void writeEnd(CatalogueXml& xml)
{
    xml.line(0, "</dict>");
    xml.line(0, "</plist>");
}

/// The list of a folder and of an event's roll is indented less than that of an album.
void writeAlbum(CatalogueXml& xml, const CatalogueAlbum& album)
{
    const bool isFolder = album.kind == Kind::Folder;
    xml.line(2, "<dict>");
    xml.integer(3, "AlbumId", album.id);
    xml.string(3, "AlbumName", album.name);
    if (isFolder) {
        xml.string(3, "GUID", album.guid);
    }
    if (album.parent) {
        xml.integer(3, "Parent", *album.parent);
    }
    xml.string(3, "Album Type", album.type);
    if (!isFolder) {
        xml.string(3, "GUID", album.guid);
    }
    if (album.kind == Kind::All) {
        xml.inlineBoolean(3, "Master", true);
    }
    if (!album.songPath.isEmpty()) {
        xml.string(3, "SongPath", album.songPath);
    }
    if (album.kind == Kind::Regular) {
        xml.real(3,
                 "TransitionSpeed",
                 CatalogueXml::fixed(album.settings.transitionSpeed, kSpeedDecimals));
        xml.inlineBoolean(3, "ShuffleSlides", album.settings.isShuffled);
    }
    if (album.kind == Kind::Regular || album.kind == Kind::Query) {
        xml.string(3, "Sort Order", album.settings.sortOrder);
    }
    xml.ids(3, "KeyList", album.photos, isFolder ? 3 : 4);
    xml.integer(3, "PhotoCount", album.photos.size());
    xml.line(2, "</dict>");
}

void writeEventAlbum(CatalogueXml& xml, const CatalogueRoll& roll)
{
    xml.line(2, "<dict>");
    xml.integer(3, "AlbumId", roll.albumId);
    xml.string(3, "GUID", roll.guid);
    xml.string(3, "AlbumName", roll.name);
    xml.string(3, "Album Type", u"Event"_s);
    xml.string(3, "Sort Order", u"1"_s);
    xml.string(3, "KeyPhotoKey", QString::number(roll.keyPhoto));
    xml.real(3,
             "ProjectEarliestDateAsTimerInterval",
             CatalogueXml::fixed(roll.date, kEventDateDecimals));
    xml.ids(3, "KeyList", roll.photos, 4);
    xml.integer(3, "PhotoCount", roll.photos.size());
    xml.line(2, "</dict>");
}

void writeRoll(CatalogueXml& xml, const CatalogueRoll& roll, double offset)
{
    xml.line(2, "<dict>");
    xml.integer(3, "RollID", roll.id);
    xml.string(3, "ProjectUuid", roll.guid);
    xml.string(3, "RollName", roll.name);
    xml.real(3, "RollDateAsTimerInterval", dateText(roll.date + offset));
    xml.string(3, "KeyPhotoKey", QString::number(roll.keyPhoto));
    xml.integer(3, "PhotoCount", roll.photos.size());
    xml.ids(3, "KeyList", roll.photos, 3);
    xml.line(2, "</dict>");
}

/// What was said of a face before under keys that are not known here.
void writeOtherKeys(CatalogueXml& xml, const QVariantMap& face, const QStringList& known)
{
    for (auto entry = face.begin(); entry != face.end(); ++entry) {
        if (!known.contains(entry.key())) {
            xml.carriedOver(entry.key(), entry.value());
        }
    }
}

/// Names of faces as the catalogue before had them, without a key image that is gone.
void writeFaceNames(CatalogueXml& xml, const QVariantMap& faces, const QSet<QString>& guids)
{
    QList<std::pair<qint64, QString>> order;
    for (auto entry = faces.begin(); entry != faces.end(); ++entry) {
        order.append({entry.value().toMap().value(u"Order"_s).toLongLong(), entry.key()});
    }
    std::sort(order.begin(), order.end());
    xml.line(1, "<key>List of Faces</key>");
    xml.line(1, "<dict>");
    for (const auto& [place, key] : order) {
        const QVariantMap face = faces.value(key).toMap();
        const QString image = face.value(u"key image"_s).toString();
        xml.line(2, "<key>" + CatalogueXml::escaped(key) + "</key>");
        xml.line(3, "<dict>");
        xml.string(3, "key", face.value(u"key"_s).toString());
        xml.string(3, "name", face.value(u"name"_s).toString());
        if (guids.contains(image)) {
            xml.string(3, "key image", image);
            xml.integer(
                3, "key image face index", face.value(u"key image face index"_s).toLongLong());
        }
        xml.string(3, "PhotoCount", face.value(u"PhotoCount"_s).toString());
        xml.integer(3, "Order", place);
        writeOtherKeys(xml,
                       face,
                       {u"key"_s,
                        u"name"_s,
                        u"key image"_s,
                        u"key image face index"_s,
                        u"PhotoCount"_s,
                        u"Order"_s});
        xml.line(3, "</dict>");
    }
    xml.line(1, "</dict>");
}

void writeFaces(CatalogueXml& xml, const QVariantList& faces)
{
    xml.line(3, "<key>Faces</key>");
    xml.line(4, "<array>");
    for (const QVariant& item : faces) {
        const QVariantMap face = item.toMap();
        const QByteArray key = CatalogueXml::escaped(face.value(u"face key"_s).toString());
        const QByteArray rectangle = CatalogueXml::escaped(face.value(u"rectangle"_s).toString());
        xml.line(5, "<dict>");
        xml.line(6,
                 "<key>face key</key><string>" + key +
                     "</string>\t\t\t\t\t\t<key>rectangle</key><string>" + rectangle + "</string>");
        xml.line(6,
                 "<key>face index</key><integer>" +
                     QByteArray::number(face.value(u"face index"_s).toLongLong()) + "</integer>");
        writeOtherKeys(xml, face, {u"face key"_s, u"rectangle"_s, u"face index"_s});
        xml.line(5, "</dict>");
    }
    xml.line(5, "</array>");
}

void writeDates(CatalogueXml& xml, const CataloguePhoto& photo, double offset)
{
    if (photo.imageChanged) {
        xml.real(3, "ModDateAsTimerInterval", dateText(*photo.imageChanged));
    }
    if (photo.date) {
        xml.real(3, "DateAsTimerInterval", dateText(*photo.date + offset));
        xml.real(3, "DateAsTimerIntervalGMT", dateText(*photo.date));
    }
    if (photo.metadataChanged) {
        xml.real(3, "MetaModDateAsTimerInterval", dateText(*photo.metadataChanged));
    }
}

void writePhoto(CatalogueXml& xml,
                const CataloguePhoto& photo,
                const QString& archivePath,
                const OldCatalogue::Image& old,
                double offset)
{
    const QString master =
        photo.isReference ? photo.master : archivePath + u"/Masters/"_s + photo.master;
    const bool hasPreview = !photo.preview.isNull();
    xml.line(2, "<key>" + QByteArray::number(photo.id) + "</key>");
    xml.line(2, "<dict>");
    xml.string(3, "Caption", photo.name);
    if (photo.flagged) {
        xml.line(3, "<key>Flagged</key>");
        xml.line(3, "<true/>");
    }
    xml.string(3, "Comment", photo.comment.isEmpty() ? u" "_s : photo.comment);
    xml.string(3, "GUID", photo.guid);
    xml.integer(3, "Roll", photo.roll);
    xml.integer(3, "Rating", photo.rating);
    xml.string(3, "ImagePath", hasPreview ? archivePath + u"/Previews/"_s + photo.preview : master);
    xml.string(3, "MediaType", photo.isMovie ? u"Movie"_s : u"Image"_s);
    writeDates(xml, photo, old.offset.value_or(offset));
    if (hasPreview) {
        xml.string(3, "OriginalPath", master);
    }
    if (!photo.thumbnail.isNull()) {
        xml.string(3, "ThumbPath", archivePath + u"/Thumbnails/"_s + photo.thumbnail);
    }
    if (photo.latitude) {
        xml.inlineReal(3, "latitude", CatalogueXml::shortest(*photo.latitude));
    }
    if (photo.longitude) {
        xml.inlineReal(3, "longitude", CatalogueXml::shortest(*photo.longitude));
    }
    if (!old.faces.isEmpty()) {
        writeFaces(xml, old.faces);
    }
    xml.line(2, "</dict>");
}

/// The brief catalogue leaves out folders, and the type of the album of all photos.
void writeBriefAlbum(CatalogueXml& xml, const CatalogueAlbum& album)
{
    if (album.kind == Kind::Folder) {
        return;
    }
    xml.line(0, "<dict>");
    xml.integer(0, "AlbumId", album.id);
    xml.string(0, "AlbumName", album.name);
    if (album.kind != Kind::All) {
        xml.string(0, "Album Type", album.type);
    }
    xml.string(0, "GUID", album.guid);
    if (album.kind == Kind::All) {
        xml.inlineBoolean(0, "Master", true);
    }
    if (!album.songPath.isEmpty()) {
        xml.string(0, "SongPath", album.songPath);
    }
    if (album.kind == Kind::Regular) {
        xml.real(0, "TransitionSpeed", CatalogueXml::shortest(album.settings.transitionSpeed));
        xml.inlineBoolean(0, "ShuffleSlides", album.settings.isShuffled);
    }
    xml.string(0, "KeyListString", joined(album.photos));
    xml.integer(0, "PhotoCount", album.photos.size());
    xml.line(0, "</dict>");
}

void writeBriefRoll(CatalogueXml& xml, const CatalogueRoll& roll, double offset)
{
    xml.line(0, "<dict>");
    xml.integer(0, "RollID", roll.id);
    xml.string(0, "RollName", roll.name);
    xml.real(0, "RollDateAsTimerInterval", dateText(roll.date + offset));
    xml.string(0, "KeyPhotoKey", QString::number(roll.keyPhoto));
    xml.integer(0, "PhotoCount", roll.photos.size());
    xml.string(0, "KeyListString", joined(roll.photos));
    xml.line(0, "</dict>");
}

} // namespace

CatalogueWriter::CatalogueWriter(const CatalogueModel& model,
                                 const OldCatalogue& old,
                                 QString archivePath)
    : m_model(model)
    , m_old(old)
    , m_archivePath(std::move(archivePath))
{
}

QString CatalogueWriter::headText(const QString& key, const QString& usual) const
{
    const QString known = m_old.text(key);
    return known.isNull() ? usual : known;
}

QByteArray CatalogueWriter::full() const
{
    CatalogueXml xml(CatalogueXml::Layout::Indented);
    writeHead(xml);
    xml.string(1, "Application Version", headText(u"Application Version"_s, u"9.4"_s));
    xml.string(1, "Archive Path", m_archivePath);
    xml.string(1, "ArchiveId", headText(u"ArchiveId"_s, u"1"_s));
    xml.integer(1, "Major Version", kMajorVersion);
    xml.integer(1, "Minor Version", kMinorVersion);
    xml.line(1, "<key>List of Albums</key>");
    xml.line(1, "<array>");
    for (const CatalogueAlbum& album : m_model.builtInAlbums) {
        writeAlbum(xml, album);
    }
    for (const CatalogueRoll& roll : m_model.rolls) {
        writeEventAlbum(xml, roll);
    }
    for (const CatalogueAlbum& album : m_model.userAlbums) {
        writeAlbum(xml, album);
    }
    xml.line(1, "</array>");
    xml.line(1, "<key>List of Rolls</key>");
    xml.line(1, "<array>");
    for (const CatalogueRoll& roll : m_model.rolls) {
        writeRoll(xml, roll, m_model.offset);
    }
    xml.line(1, "</array>");
    QSet<QString> guids;
    for (const CataloguePhoto& photo : m_model.photos) {
        guids.insert(photo.guid);
    }
    writeFaceNames(xml, m_old.faces(), guids);
    xml.line(1, "<key>Master Image List</key>");
    xml.line(1, "<dict>");
    for (const CataloguePhoto& photo : m_model.photos) {
        writePhoto(xml, photo, m_archivePath, m_old.image(photo.id), m_model.offset);
    }
    xml.line(1, "</dict>");
    writeEnd(xml);
    return xml.bytes();
}

QByteArray CatalogueWriter::brief() const
{
    CatalogueXml xml(CatalogueXml::Layout::Flat);
    writeHead(xml);
    xml.string(0, "Application Version", headText(u"Application Version"_s, u"9.4"_s));
    xml.string(0, "Archive Path", m_archivePath);
    xml.string(0, "ArchiveId", headText(u"ArchiveId"_s, u"1"_s));
    xml.string(0, "Movie Serial Number", u"0"_s);
    xml.line(0, "<key>List of Albums</key>");
    xml.line(0, "<array>");
    for (const CatalogueAlbum& album : m_model.builtInAlbums) {
        writeBriefAlbum(xml, album);
    }
    for (const CatalogueAlbum& album : m_model.userAlbums) {
        writeBriefAlbum(xml, album);
    }
    xml.line(0, "</array>");
    xml.line(0, "<key>List of Rolls</key>");
    xml.line(0, "<array>");
    for (const CatalogueRoll& roll : m_model.rolls) {
        writeBriefRoll(xml, roll, m_model.offset);
    }
    xml.line(0, "</array>");
    writeEnd(xml);
    return xml.bytes();
}
