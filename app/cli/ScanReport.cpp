#include "ScanReport.h"

#include "Documents.h"

#include <QJsonArray>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

QString outcomeWord(PhotoOutcome::Kind kind, bool dryRun)
{
    using enum PhotoOutcome::Kind;
    switch (kind) {
    case NotReached:
        return u"not reached"_s;
    case Converted:
        return dryRun ? u"would convert"_s : u"converted"_s;
    case Unsupported:
        return u"unsupported"_s;
    case Failed:
        return u"failed"_s;
    case Missing:
        return u"missing"_s;
    }
    Q_UNREACHABLE();
}

void insertConversion(QJsonObject& object, const PhotoOutcome& outcome)
{
    object.insert(u"newId"_s,
                  outcome.newPhotoId == 0 ? QJsonValue(QJsonValue::Null)
                                          : QJsonValue(outcome.newPhotoId));
    object.insert(u"importedAs"_s, outcome.importedAs);
    object.insert(u"album"_s, Documents::textOrNull(outcome.album));
    object.insert(u"jpegBytes"_s, outcome.jpegBytes);
    object.insert(u"width"_s, outcome.pixels.width());
    object.insert(u"height"_s, outcome.pixels.height());
}

QJsonObject entryObject(const ScannedPhoto& entry, bool dryRun)
{
    const PhotoOutcome& outcome = entry.outcome;
    QJsonObject object{
        {u"id"_s, entry.id},
        {u"filename"_s, entry.filename},
        {u"source"_s, Documents::textOrNull(outcome.source)},
        {u"outcome"_s, outcomeWord(outcome.kind, dryRun)},
    };
    if (!dryRun && outcome.kind == PhotoOutcome::Kind::Converted) {
        insertConversion(object, outcome);
    }
    if (outcome.originalBytes > 0) {
        object.insert(u"originalBytes"_s, outcome.originalBytes);
    }
    if (!outcome.reason.isEmpty()) {
        object.insert(u"reason"_s, outcome.reason);
    }
    return object;
}

} // namespace

ScanReport ScanReport::before(const QString& library, const QList<PhotoFacts>& selection)
{
    ScanReport report;
    report.library = library;
    for (const PhotoFacts& photo : selection) {
        report.photos += ScannedPhoto{.id = photo.id, .filename = photo.fileName, .outcome = {}};
    }
    return report;
}

qsizetype ScanReport::count(PhotoOutcome::Kind kind) const
{
    return std::ranges::count_if(
        photos, [kind](const ScannedPhoto& entry) { return entry.outcome.kind == kind; });
}

bool ScanReport::isComplete() const
{
    return count(PhotoOutcome::Kind::Converted) == photos.size();
}

qint64 ScanReport::originalsBytes() const
{
    qint64 bytes = 0;
    for (const ScannedPhoto& entry : photos) {
        bytes += entry.outcome.originalBytes;
    }
    return bytes;
}

qint64 ScanReport::convertedBytes() const
{
    qint64 bytes = 0;
    for (const ScannedPhoto& entry : photos) {
        bytes += entry.outcome.jpegBytes;
    }
    return bytes;
}

QJsonObject ScanReport::document() const
{
    const auto unlessDry = [this](qint64 bytes) {
        return dryRun ? QJsonValue(QJsonValue::Null) : QJsonValue(bytes);
    };
    QJsonArray entries;
    for (const ScannedPhoto& entry : photos) {
        entries += entryObject(entry, dryRun);
    }
    return {
        {u"library"_s, library},
        {u"dryRun"_s, dryRun},
        {u"selected"_s, photos.size()},
        {u"converted"_s, dryRun ? 0 : count(PhotoOutcome::Kind::Converted)},
        {u"originalsBytes"_s, originalsBytes()},
        {u"convertedBytes"_s, unlessDry(convertedBytes())},
        {u"savingsBytes"_s, unlessDry(originalsBytes() - convertedBytes())},
        {u"stopped"_s,
         stopped ? QJsonValue(QJsonObject{{u"title"_s, stopped->messageText},
                                          {u"text"_s, stopped->informativeText}})
                 : QJsonValue(QJsonValue::Null)},
        {u"photos"_s, entries},
    };
}
