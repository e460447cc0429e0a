#include "Documents.h"

#include "TextLayout.h"

#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace
{

QJsonValue numberOrNull(const std::optional<double>& number)
{
    return number ? QJsonValue(*number) : QJsonValue(QJsonValue::Null);
}

QJsonValue unlessUnknown(bool isUnknown, const QJsonValue& value)
{
    return isUnknown ? QJsonValue(QJsonValue::Null) : value;
}

QJsonValue roll(const PhotoFacts& photo)
{
    return photo.rollId == 0
               ? QJsonValue(QJsonValue::Null)
               : QJsonValue(QJsonObject{{u"id"_s, photo.rollId}, {u"name"_s, photo.rollName}});
}

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

QJsonObject photoObject(const PhotoFacts& photo)
{
    return {
        {u"id"_s, photo.id},
        {u"guid"_s, photo.guid},
        {u"filename"_s, photo.fileName},
        {u"name"_s, photo.name},
        {u"title"_s, photo.name},
        {u"comment"_s, photo.comment},
        {u"rating"_s, unlessUnknown(photo.unknown.rating, photo.rating)},
        {u"date"_s, Documents::textOrNull(photo.wallClock())},
        {u"width"_s, unlessUnknown(photo.unknown.width, photo.width)},
        {u"height"_s, unlessUnknown(photo.unknown.height, photo.height)},
        {u"latitude"_s, numberOrNull(photo.latitude)},
        {u"longitude"_s, numberOrNull(photo.longitude)},
        {u"altitude"_s, numberOrNull(photo.altitude)},
        {u"keywords"_s, QJsonArray::fromStringList(photo.keywords)},
        {u"albums"_s, QJsonArray::fromStringList(photo.albums)},
        {u"roll"_s, roll(photo)},
        {u"imagePath"_s, Documents::textOrNull(photo.imagePath)},
        {u"originalPath"_s, Documents::textOrNull(photo.originalPath)},
        {u"previewPath"_s, Documents::textOrNull(photo.previewPath)},
        {u"thumbnailPath"_s, Documents::textOrNull(photo.thumbnailPath)},
        {u"raw"_s, photo.raw},
        {u"edited"_s, photo.edited},
        {u"rotated"_s, photo.rotated},
        {u"hidden"_s, photo.hidden},
        {u"bytes"_s, photo.bytes},
        {u"missing"_s, photo.missing},
    };
}

/// The photo as it stands in the list's text.
QByteArray entryOf(const PhotoFacts& photo)
{
    constexpr QByteArrayView kBefore("{\n    \"photos\": [\n");
    constexpr QByteArrayView kAfter("\n    ]\n}\n");
    const QByteArray text =
        Documents::text({{u"photos"_s, QJsonArray{QJsonValue(photoObject(photo))}}});
    Q_ASSERT(text.startsWith(kBefore) && text.endsWith(kAfter));
    return text.sliced(kBefore.size(), text.size() - kBefore.size() - kAfter.size());
}

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
Documents::list(const QString& library, const QString& version, const QList<PhotoFacts>& photos)
{
    QJsonArray array;
    for (const PhotoFacts& photo : photos) {
        array += photoObject(photo);
    }
    return {{u"library"_s, library}, {u"version"_s, version}, {u"photos"_s, array}};
}

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
            {u"backup"_s, textOrNull(report.backup)}};
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
    const QString plain =
        QString::fromUtf8(QJsonDocument(document).toJson(QJsonDocument::Indented));
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

void Documents::writeList(const QString& library,
                          const QString& version,
                          const QList<PhotoFacts>& photos,
                          const std::function<void(const QByteArray&)>& write)
{
    constexpr qsizetype kPiece = 64 * 1024;
    constexpr QByteArrayView kOpening("\n    \"photos\": [\n"); // no text holds a line end
    const QByteArray empty = text(list(library, version, {}));
    const qsizetype head = empty.indexOf(kOpening) + kOpening.size();
    QByteArray piece = empty.first(head);
    for (qsizetype index = 0; index < photos.size(); ++index) {
        piece += entryOf(photos.at(index));
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
