#include "Documents.h"

#include "TextLayout.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

/// All of them stand inside strings and in the basic plane, so one escape each will do.
bool steersTerminal(QChar character)
{
    const bool isPrintableAscii = character >= u' ' && character <= u'~';
    if (isPrintableAscii || character == u'\n') {
        return false; // nearly every one: asked first
    }
    return character.category() == QChar::Other_Control ||
           character.category() == QChar::Separator_Line ||
           character.category() == QChar::Separator_Paragraph ||
           TextLayout::isDirectionMark(character.unicode());
}

QByteArray withoutSteering(const QByteArray& json)
{
    const QString plain = QString::fromUtf8(json);
    QString escaped;
    escaped.reserve(plain.size());
    qsizetype taken = 0; // up to where `plain` is in `escaped`
    for (qsizetype index = 0; index < plain.size(); ++index) {
        const QChar character = plain.at(index);
        if (steersTerminal(character)) {
            escaped += QStringView(plain).sliced(taken, index - taken);
            escaped += u"\\u%1"_s.arg(character.unicode(), 4, 16, QLatin1Char('0'));
            taken = index + 1;
        }
    }
    escaped += QStringView(plain).sliced(taken);
    return escaped.toUtf8();
}

/// The value alone, as it stands in any document.
QByteArray textOf(const QJsonValue& value)
{
    const QByteArray array =
        QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact); // "[value]"
    return withoutSteering(array.sliced(1, array.size() - 2));
}

/// Writes photos into the text of a list, laid out as Qt does: a tree of values for each photo
/// takes several times as long.
class EntryWriter final
{
public:
    explicit EntryWriter(QByteArray& text)
        : m_text(text)
    {
    }

    /// Qt sorts keys too.
    void write(const PhotoFacts& photo)
    {
        m_text += "        {\n";
        entry("albums", photo.albums);
        entry("altitude", photo.altitude);
        entry("bytes", photo.bytes);
        entry("comment", photo.comment);
        entryOrNull("date", photo.wallClock());
        entry("edited", photo.edited);
        entry("filename", photo.fileName);
        entry("guid", photo.guid);
        entry("height", unless(photo.unknown.height, photo.height));
        entry("hidden", photo.hidden);
        entry("id", photo.id);
        entryOrNull("imagePath", photo.imagePath);
        entry("keywords", photo.keywords);
        entry("latitude", photo.latitude);
        entry("longitude", photo.longitude);
        entry("missing", photo.missing);
        entry("name", photo.name);
        entryOrNull("originalPath", photo.originalPath);
        entryOrNull("previewPath", photo.previewPath);
        entry("rating", unless(photo.unknown.rating, photo.rating));
        entry("raw", photo.raw);
        roll(photo);
        entry("rotated", photo.rotated);
        entryOrNull("thumbnailPath", photo.thumbnailPath);
        entry("title", photo.name);
        entry("width", unless(photo.unknown.width, photo.width));
        m_text.chop(2); // the last one's comma
        m_text += "\n        }";
    }

private:
    static constexpr QByteArrayView kNull{"null"};

    static std::optional<qint64> unless(bool isUnknown, int number)
    {
        return isUnknown ? std::nullopt : std::optional<qint64>(number);
    }

    void key(const char* name) { m_text.append("            \"").append(name).append("\": "); }

    void end() { m_text += ",\n"; }

    void string(const QString& text)
    {
        const auto isPlain = [](QChar character) {
            return character >= u' ' && character <= u'~' && character != u'"' &&
                   character != u'\\';
        };
        if (std::ranges::all_of(text, isPlain)) { // nearly all are
            m_text.append('"').append(text.toLatin1()).append('"');
        } else {
            m_text += textOf(text);
        }
    }

    void entry(const char* name, bool value)
    {
        key(name);
        m_text += value ? "true" : "false";
        end();
    }

    void entry(const char* name, qint64 value) { entry(name, std::optional(value)); }

    void entry(const char* name, const std::optional<qint64>& value)
    {
        key(name);
        m_text += value ? QByteArray::number(*value) : kNull;
        end();
    }

    void entry(const char* name, const std::optional<double>& value)
    {
        key(name);
        m_text += value ? textOf(*value) : kNull;
        end();
    }

    void entry(const char* name, const QString& value)
    {
        key(name);
        string(value);
        end();
    }

    void entryOrNull(const char* name, const QString& value)
    {
        key(name);
        if (value.isEmpty()) {
            m_text += kNull;
        } else {
            string(value);
        }
        end();
    }

    void entry(const char* name, const QStringList& values)
    {
        key(name);
        m_text += "[\n";
        for (qsizetype index = 0; index < values.size(); ++index) {
            m_text += "                ";
            string(values.at(index));
            m_text += index + 1 < values.size() ? ",\n" : "\n";
        }
        m_text += "            ]";
        end();
    }

    void roll(const PhotoFacts& photo)
    {
        key("roll");
        if (photo.rollId == 0) {
            m_text += kNull;
        } else {
            m_text += "{\n                \"id\": " + QByteArray::number(photo.rollId) +
                      ",\n                \"name\": ";
            string(photo.rollName);
            m_text += "\n            }";
        }
        end();
    }

    QByteArray& m_text;
};

QJsonArray findingsArray(const QList<Finding>& findings)
{
    QJsonArray array;
    for (const Finding& finding : findings) {
        array += QJsonObject{{u"what"_s, finding.what},
                             {u"where"_s, finding.where},
                             {u"repairable"_s, finding.repairable}};
    }
    return array;
}

} // namespace

QJsonObject
Documents::info(const QString& library, const QString& version, const LibrarySummary& summary)
{
    return {
        {u"library"_s, library},
        {u"version"_s, version},
        {u"photos"_s, summary.photos},
        {u"rolls"_s, summary.rolls},
        {u"albums"_s, summary.albums},
        {u"keywords"_s, summary.keywords},
        {u"raw"_s, QJsonObject{{u"photos"_s, summary.rawPhotos}, {u"bytes"_s, summary.rawBytes}}},
        {u"processed"_s, QJsonObject{{u"photos"_s, summary.processedPhotos}}},
        {u"trash"_s,
         QJsonObject{{u"photos"_s, summary.trashedPhotos}, {u"bytes"_s, summary.trashedBytes}}},
        {u"missing"_s, summary.missing},
        {u"writable"_s, summary.writable},
        {u"problems"_s, QJsonArray::fromStringList(summary.problems)},
    };
}

QJsonObject Documents::trash(const QList<PhotoFacts>& photos)
{
    QJsonArray array;
    qint64 bytes = 0;
    for (const PhotoFacts& photo : photos) {
        array += QJsonObject{
            {u"id"_s, photo.id},
            {u"filename"_s, photo.fileName},
            {u"bytes"_s, photo.bytes},
        };
        bytes += photo.bytes;
    }
    return {{u"photos"_s, array}, {u"bytes"_s, bytes}};
}

QJsonObject Documents::verify(const QList<Finding>& findings)
{
    return {{u"problems"_s, findingsArray(findings)}};
}

QJsonObject Documents::repair(const RepairReport& report)
{
    return {{u"problems"_s, findingsArray(report.left)},
            {u"mended"_s, findingsArray(report.mended)},
            {u"failures"_s, QJsonArray::fromStringList(report.failures)},
            {u"backup"_s, textOrNull(report.backup)},
            {u"stopped"_s, report.stopped}};
}

QJsonObject Documents::backup(const LibraryBackup& backup)
{
    return {{u"date"_s, backup.name},
            {u"moment"_s, backup.moment.toString(Qt::ISODateWithMs)},
            {u"path"_s, backup.path},
            {u"bytes"_s, backup.bytes},
            {u"photos"_s, backup.photos ? QJsonValue(*backup.photos) : QJsonValue()}};
}

QJsonObject Documents::backups(const QList<LibraryBackup>& backups)
{
    QJsonArray array;
    for (const LibraryBackup& one : backups) {
        array += backup(one);
    }
    return {{u"backups"_s, array}};
}

QJsonObject Documents::restored(const LibraryBackups::Restored& restored)
{
    return {{u"restored"_s, backup(restored.from)},
            {u"before"_s, restored.before},
            {u"kept"_s, QJsonArray::fromStringList(restored.kept)},
            {u"lagging"_s, QJsonArray::fromStringList(restored.lagging)}};
}

QByteArray Documents::text(const QJsonObject& document)
{
    return withoutSteering(QJsonDocument(document).toJson(QJsonDocument::Indented));
}

void Documents::writeList(const QString& library,
                          const QString& version,
                          const QList<PhotoFacts>& photos,
                          const std::function<void(const QByteArray&)>& write)
{
    constexpr qsizetype kPiece = 64 * 1024;
    constexpr QByteArrayView kOpening("\n    \"photos\": [\n"); // no text holds a line end
    const QByteArray empty =
        text({{u"library"_s, library}, {u"version"_s, version}, {u"photos"_s, QJsonArray()}});
    const qsizetype head = empty.indexOf(kOpening) + kOpening.size();
    QByteArray piece = empty.first(head);
    EntryWriter writer(piece);
    for (qsizetype index = 0; index < photos.size(); ++index) {
        writer.write(photos.at(index));
        piece += index + 1 < photos.size() ? ",\n" : "\n";
        if (piece.size() >= kPiece) {
            write(piece);
            piece.clear();
        }
    }
    write(piece + empty.sliced(head));
}

QJsonValue Documents::textOrNull(const QString& text)
{
    return text.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
}
