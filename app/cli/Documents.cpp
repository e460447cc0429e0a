#include "Documents.h"

#include "JsonText.h"
#include "PhotoEntryWriter.h"

#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace
{

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
    return JsonText::withoutSteering(QJsonDocument(document).toJson(QJsonDocument::Indented));
}

void Documents::writeList(const QString& library,
                          const QString& version,
                          const QList<PhotoFacts>& photos,
                          const std::function<void(const QByteArray&)>& write)
{
    constexpr qsizetype kPiece = qsizetype{64} * 1024;
    constexpr QByteArrayView kOpening("\n    \"photos\": [\n"); // no text holds a line end
    const QByteArray empty =
        text({{u"library"_s, library}, {u"version"_s, version}, {u"photos"_s, QJsonArray()}});
    const qsizetype head = empty.indexOf(kOpening) + kOpening.size();
    QByteArray piece = empty.first(head);
    PhotoEntryWriter writer(piece);
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
