#include "CatalogueWriter.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

using namespace CatalogueModel;

/// Escapes what XML needs, the apostrophe too, as iPhoto does; control characters, which XML 1.0
/// cannot hold, are dropped.
QByteArray escaped(const QString& text)
{
    QByteArray result;
    const QByteArray bytes = text.toUtf8();
    result.reserve(bytes.size());
    for (const char byte : bytes) {
        switch (byte) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '\'':
            result += "&apos;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            if (static_cast<unsigned char>(byte) >= 0x20 || byte == '\t' || byte == '\n') {
                result += byte;
            }
        }
    }
    return result;
}

QByteArray fixed(double number, int decimals)
{
    return QByteArray::number(number, 'f', decimals);
}

/// Writes keys and values at a depth of tabs; without tabs for the compact file.
class Lines final
{
public:
    explicit Lines(bool compact)
        : m_compact(compact)
    {
    }

    [[nodiscard]] QByteArray take() { return std::move(m_bytes); }

    void line(int depth, const QByteArray& text)
    {
        if (!m_compact) {
            m_bytes.append(depth, '\t');
        }
        m_bytes += text;
        m_bytes += '\n';
    }

    void string(int depth, const char* key, const QString& value)
    {
        line(depth, QByteArray("<key>") + key + "</key>");
        line(depth, "<string>" + escaped(value) + "</string>");
    }

    void integer(int depth, const char* key, qint64 value)
    {
        line(depth, QByteArray("<key>") + key + "</key>");
        line(depth, "<integer>" + QByteArray::number(value) + "</integer>");
    }

    void real(int depth, const char* key, const QByteArray& value)
    {
        line(depth, QByteArray("<key>") + key + "</key>");
        line(depth, "<real>" + value + "</real>");
    }

    void header()
    {
        m_bytes += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n";
    }

    void footer() { m_bytes += "</dict>\n</plist>\n"; }

    void keyList(int depth, int itemDepth, const QList<qint64>& keys)
    {
        line(depth, "<key>KeyList</key>");
        line(depth, "<array>");
        for (const qint64 key : keys) {
            line(itemDepth, "<string>" + QByteArray::number(key) + "</string>");
        }
        line(depth, "</array>");
    }

private:
    bool m_compact;
    QByteArray m_bytes;
};

constexpr int kTop = 1;
constexpr int kEntry = 3;    ///< keys of an album, roll or record
constexpr int kListItem = 4; ///< items of a key list, where they are indented
constexpr int kDateDigits = 6;

QString joined(const QList<qint64>& keys)
{
    QStringList texts;
    texts.reserve(keys.size());
    for (const qint64 key : keys) {
        texts.append(QString::number(key));
    }
    return texts.join(u',');
}

void writeFolder(Lines& lines, const Album& album)
{
    lines.integer(kEntry, "AlbumId", album.id);
    lines.string(kEntry, "AlbumName", album.name);
    lines.string(kEntry, "GUID", album.guid);
    if (album.parent) {
        lines.integer(kEntry, "Parent", *album.parent);
    }
    lines.string(kEntry, "Album Type", album.type);
    lines.keyList(kEntry, kEntry, album.keys);
}

void writeEvent(Lines& lines, const Album& album)
{
    lines.integer(kEntry, "AlbumId", album.id);
    lines.string(kEntry, "GUID", album.guid);
    lines.string(kEntry, "AlbumName", album.name);
    lines.string(kEntry, "Album Type", album.type);
    lines.string(kEntry, "Sort Order", u"1"_s);
    lines.string(kEntry, "KeyPhotoKey", QString::number(album.keyPhoto));
    lines.real(kEntry, "ProjectEarliestDateAsTimerInterval", fixed(album.earliest, 2));
    lines.keyList(kEntry, kListItem, album.keys);
}

void writeAlbum(Lines& lines, const Album& album)
{
    lines.integer(kEntry, "AlbumId", album.id);
    lines.string(kEntry, "AlbumName", album.name);
    if (album.parent) {
        lines.integer(kEntry, "Parent", *album.parent);
    }
    lines.string(kEntry, "Album Type", album.type);
    lines.string(kEntry, "GUID", album.guid);
    if (album.kind == Kind::Photos) {
        lines.line(kEntry, "<key>Master</key><true/>");
    } else {
        if (!album.songPath.isEmpty()) {
            lines.string(kEntry, "SongPath", album.songPath);
        }
        if (album.kind == Kind::Regular) {
            lines.real(kEntry, "TransitionSpeed", "1.000000");
            lines.line(kEntry, "<key>ShuffleSlides</key><false/>");
        }
        lines.string(kEntry, "Sort Order", u"1"_s);
    }
    lines.keyList(kEntry, kListItem, album.keys);
}

void writeAlbums(Lines& lines, const QList<Album>& albums)
{
    lines.line(kTop, "<key>List of Albums</key>");
    lines.line(kTop, "<array>");
    for (const Album& album : albums) {
        lines.line(kTop + 1, "<dict>");
        if (album.kind == Kind::Folder) {
            writeFolder(lines, album);
        } else if (album.kind == Kind::Event) {
            writeEvent(lines, album);
        } else {
            writeAlbum(lines, album);
        }
        lines.integer(kEntry, "PhotoCount", album.keys.size());
        lines.line(kTop + 1, "</dict>");
    }
    lines.line(kTop, "</array>");
}

void writeRolls(Lines& lines, const QList<Roll>& rolls)
{
    lines.line(kTop, "<key>List of Rolls</key>");
    lines.line(kTop, "<array>");
    for (const Roll& roll : rolls) {
        lines.line(kTop + 1, "<dict>");
        lines.integer(kEntry, "RollID", roll.id);
        lines.string(kEntry, "ProjectUuid", roll.guid);
        lines.string(kEntry, "RollName", roll.name);
        lines.real(kEntry, "RollDateAsTimerInterval", fixed(roll.date, kDateDigits));
        lines.string(kEntry, "KeyPhotoKey", QString::number(roll.keyPhoto));
        lines.integer(kEntry, "PhotoCount", roll.keys.size());
        lines.keyList(kEntry, kEntry, roll.keys);
        lines.line(kTop + 1, "</dict>");
    }
    lines.line(kTop, "</array>");
}

void writePeople(Lines& lines, const QVariantMap& faces)
{
    QList<std::pair<qint64, QString>> order;
    for (auto face = faces.cbegin(); face != faces.cend(); ++face) {
        order.append({face->toMap().value(u"Order"_s).toLongLong(), face.key()});
    }
    std::sort(order.begin(), order.end());
    lines.line(kTop, "<key>List of Faces</key>");
    lines.line(kTop, "<dict>");
    for (const auto& [place, key] : std::as_const(order)) {
        const QVariantMap face = faces.value(key).toMap();
        lines.line(kTop + 1, "<key>" + escaped(key) + "</key>");
        lines.line(kEntry, "<dict>");
        lines.string(kEntry, "key", face.value(u"key"_s).toString());
        lines.string(kEntry, "name", face.value(u"name"_s).toString());
        lines.string(kEntry, "key image", face.value(u"key image"_s).toString());
        lines.integer(
            kEntry, "key image face index", face.value(u"key image face index"_s).toLongLong());
        lines.string(kEntry, "PhotoCount", face.value(u"PhotoCount"_s).toString());
        lines.integer(kEntry, "Order", place);
        lines.line(kEntry, "</dict>");
    }
    lines.line(kTop, "</dict>");
}

void writeFaces(Lines& lines, const QVariantList& faces)
{
    lines.line(kEntry, "<key>Faces</key>");
    lines.line(kListItem, "<array>");
    for (const QVariant& entry : faces) {
        const QVariantMap face = entry.toMap();
        lines.line(kListItem + 1, "<dict>");
        lines.line(kListItem + 2,
                   "<key>face key</key><string>" + escaped(face.value(u"face key"_s).toString()) +
                       "</string>\t\t\t\t\t\t<key>rectangle</key><string>" +
                       escaped(face.value(u"rectangle"_s).toString()) + "</string>");
        lines.line(kListItem + 2,
                   "<key>face index</key><integer>" +
                       QByteArray::number(face.value(u"face index"_s).toLongLong()) + "</integer>");
        lines.line(kListItem + 1, "</dict>");
    }
    lines.line(kListItem + 1, "</array>");
}

void writePlace(Lines& lines, const Image& image)
{
    constexpr int kPlaceDigits = 10;
    const auto place = [&lines](const char* key, double degrees) {
        lines.line(kEntry,
                   QByteArray("<key>") + key + "</key><real>" +
                       QByteArray::number(degrees, 'g', kPlaceDigits) + "</real>");
    };
    if (image.latitude) {
        place("latitude", *image.latitude);
    }
    if (image.longitude) {
        place("longitude", *image.longitude);
    }
}

void writeImage(Lines& lines, const Catalogue& catalogue, const Image& image)
{
    const QString root = catalogue.archivePath + u'/';
    lines.line(kTop + 1, "<key>" + QByteArray::number(image.id) + "</key>");
    lines.line(kTop + 1, "<dict>");
    lines.string(kEntry, "Caption", image.caption);
    if (image.flagged) {
        lines.line(kEntry, "<key>Flagged</key><true/>");
    }
    lines.string(kEntry, "Comment", image.comment.isEmpty() ? u" "_s : image.comment);
    lines.string(kEntry, "GUID", image.guid);
    lines.integer(kEntry, "Roll", image.roll);
    lines.integer(kEntry, "Rating", image.rating);
    lines.string(kEntry, "ImagePath", root + image.imagePath);
    lines.string(kEntry, "MediaType", image.movie ? u"Movie"_s : u"Image"_s);
    lines.real(kEntry, "ModDateAsTimerInterval", fixed(image.imageChanged, kDateDigits));
    lines.real(
        kEntry, "DateAsTimerInterval", fixed(image.imageDate + catalogue.zoneOffset, kDateDigits));
    lines.real(kEntry, "DateAsTimerIntervalGMT", fixed(image.imageDate, kDateDigits));
    lines.real(kEntry, "MetaModDateAsTimerInterval", fixed(image.metadataChanged, kDateDigits));
    if (!image.originalPath.isEmpty()) {
        lines.string(kEntry, "OriginalPath", root + image.originalPath);
    }
    lines.string(kEntry, "ThumbPath", root + image.thumbPath);
    writePlace(lines, image);
    if (!image.faces.isEmpty()) {
        writeFaces(lines, image.faces);
    }
    lines.line(kTop + 1, "</dict>");
}

void writeShortAlbum(Lines& lines, const Album& album)
{
    lines.line(0, "<dict>");
    lines.integer(0, "AlbumId", album.id);
    lines.string(0, "AlbumName", album.name);
    if (album.kind != Kind::Photos) {
        lines.string(0, "Album Type", album.type);
    }
    lines.string(0, "GUID", album.guid);
    if (album.kind == Kind::Photos) {
        lines.line(0, "<key>Master</key><true/>");
    }
    if (!album.songPath.isEmpty()) {
        lines.string(0, "SongPath", album.songPath);
    }
    if (album.kind == Kind::Regular) {
        lines.real(0, "TransitionSpeed", "1");
        lines.line(0, "<key>ShuffleSlides</key><false/>");
    }
    lines.string(0, "KeyListString", joined(album.keys));
    lines.integer(0, "PhotoCount", album.keys.size());
    lines.line(0, "</dict>");
}

} // namespace

QByteArray CatalogueWriter::albumData(const Catalogue& catalogue)
{
    constexpr int kMajorVersion = 2;
    Lines lines(false);
    lines.header();
    lines.string(kTop, "Application Version", catalogue.applicationVersion);
    lines.string(kTop, "Archive Path", catalogue.archivePath);
    lines.string(kTop, "ArchiveId", u"1"_s);
    lines.integer(kTop, "Major Version", kMajorVersion);
    lines.integer(kTop, "Minor Version", 0);
    writeAlbums(lines, catalogue.albums);
    writeRolls(lines, catalogue.rolls);
    writePeople(lines, catalogue.faces);
    lines.line(kTop, "<key>Master Image List</key>");
    lines.line(kTop, "<dict>");
    for (const Image& image : catalogue.images) {
        writeImage(lines, catalogue, image);
    }
    lines.line(kTop, "</dict>");
    lines.footer();
    return lines.take();
}

QByteArray CatalogueWriter::albumData2(const Catalogue& catalogue)
{
    Lines lines(true);
    lines.header();
    lines.string(0, "Application Version", catalogue.applicationVersion);
    lines.string(0, "Archive Path", catalogue.archivePath);
    lines.string(0, "ArchiveId", u"1"_s);
    lines.string(0, "Movie Serial Number", u"0"_s);
    lines.line(0, "<key>List of Albums</key>");
    lines.line(0, "<array>");
    for (const Album& album : catalogue.albums) {
        if (album.kind != Kind::Event && album.kind != Kind::Folder) {
            writeShortAlbum(lines, album);
        }
    }
    lines.line(0, "</array>");
    lines.line(0, "<key>List of Rolls</key>");
    lines.line(0, "<array>");
    for (const Roll& roll : catalogue.rolls) {
        lines.line(0, "<dict>");
        lines.integer(0, "RollID", roll.id);
        lines.string(0, "RollName", roll.name);
        lines.real(0, "RollDateAsTimerInterval", fixed(roll.date, kDateDigits));
        lines.string(0, "KeyPhotoKey", QString::number(roll.keyPhoto));
        lines.integer(0, "PhotoCount", roll.keys.size());
        lines.string(0, "KeyListString", joined(roll.keys));
        lines.line(0, "</dict>");
    }
    lines.line(0, "</array>");
    lines.footer();
    return lines.take();
}
