#include "ImportRows.h"

#include "Clock.h"
#include "EventRows.h"
#include "ImportGroup.h"
#include "ImportProperties.h"
#include "ModelIds.h"
#include "PhotoRows.h"
#include "Queries.h"
#include "RowIdIndexes.h"
#include "RowInsert.h"
#include "Uuid.h"

#include <QLocale>

#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

/// FourCC as a number, as RKMaster.imageFormat has it ("JPEG", "cr2 ", "dng ").
qint64 fourCharacterCode(const QString& letters)
{
    const QByteArray code = letters.toLatin1().leftJustified(4, ' ', true);
    qint64 number = 0;
    for (const char letter : code) {
        number = number << 8 | static_cast<unsigned char>(letter);
    }
    return number;
}

/// What the steps of one import share.
struct Import {
    Writer& writer;
    const PreparedPicture& picture;
    const ImportIdentity& identity;
    qint64 master{0};
    qint64 version{0};  ///< Version-1, what the user sees
    qint64 original{0}; ///< Version-0, as imported
    double imageDate{0.0};
    QString title;
    QList<qint64> keywords;
};

/// Insertion stores whole seconds as integers, as the library does.
QVariant seconds(double moment)
{
    return moment == std::floor(moment) ? QVariant(static_cast<qlonglong>(moment))
                                        : QVariant(moment);
}

/// The wall clock as if it were UTC; a picture without a date gets the moment of its import.
double wallClockOf(const ImageFacts& facts)
{
    QDateTime wall = facts.dateTaken.value_or(QDateTime());
    if (!wall.isValid()) {
        const QDateTime now = QDateTime::currentDateTime();
        wall = QDateTime(now.date(), now.time(), Qt::UTC);
    }
    return static_cast<double>(wall.toMSecsSinceEpoch()) / 1000.0 - kSecondsFrom1970To2001;
}

QString insertImportGroup(Writer& writer, const QDateTime& stamp)
{
    QString uuid = Uuid::create();
    const QString name = QLocale::c().toString(stamp, u"yyyy-MM-dd '@' hh:mm:ss AP"_s);
    RowInsert("RKImportGroup")
        .set("modelId", ModelIds::allocate(writer, "RKImportGroup"))
        .set("uuid", uuid)
        .set("importYear", stamp.toString(u"yyyy"_s))
        .set("importMonth", stamp.toString(u"MM"_s))
        .set("importDay", stamp.toString(u"dd"_s))
        .set("importTime", stamp.toString(u"HHmmss"_s))
        .set("name", name)
        .into(writer);
    return uuid;
}

void insertMaster(const Import& import, const QString& group)
{
    const PreparedPicture& picture = import.picture;
    const ImportIdentity& identity = import.identity;
    constexpr int kPixelFormatRaw = 6;
    constexpr int kPixelFormatOther = 9;
    // In every row of a library at hand. What 9 stands for, and whether the application would look
    // for faces in a master with 0, is concluded; a copy shows the same faces as its original.
    constexpr int kFaceDetectionDone = 9;
    const QString type = picture.raw ? picture.fileName.section(u'.', -1).toLower() : u"JPEG"_s;
    const QString profile = picture.facts.colorProfileName.isEmpty()
                                ? u"sRGB IEC61966-2.1"_s
                                : picture.facts.colorProfileName;
    RowInsert("RKMaster")
        .set("modelId", import.master)
        .set("uuid", identity.masterUuid)
        .set("name", picture.baseName)
        .set("projectUuid", identity.eventUuid)
        .set("importGroupUuid", group)
        .set("originalVersionUuid", identity.originalUuid)
        .set("originalVersionName", picture.baseName)
        .set("fileName", picture.fileName)
        .set("type", u"IMGT"_s)
        .set("subtype", picture.raw ? u"RAWST"_s : u"JPGST"_s)
        .set("fileIsReference", 0)
        .set("isExternallyEditable", 0)
        .set("isTrulyRaw", picture.raw ? 1 : 0)
        .set("isMissing", 0)
        .set("hasAttachments", 0)
        .set("hasNotes", 0)
        .set("hasFocusPoints", 0)
        .set("imagePath", identity.masterPath(picture))
        .set("fileSize", picture.bytes.size())
        .set("pixelFormat", picture.raw ? kPixelFormatRaw : kPixelFormatOther)
        .set("imageDate", seconds(import.imageDate))
        .set("fileCreationDate", seconds(picture.fileCreated))
        .set("fileModificationDate", seconds(std::floor(picture.fileModified)))
        .set("originalFileName", picture.fileName)
        .set("originalFileSize", picture.bytes.size())
        .set("imageFormat", fourCharacterCode(type))
        .set("importedBy", 1)
        .set("createDate", seconds(import.writer.now))
        .set("isInTrash", 0)
        .set("faceDetectionState", kFaceDetectionDone)
        .set("colorSpaceName", picture.raw ? QVariant() : QVariant(profile))
        .into(import.writer);
}

/// What both versions have alike.
RowInsert versionRow(const Import& import)
{
    const PreparedPicture& picture = import.picture;
    const ImportIdentity& identity = import.identity;
    RowInsert row("RKVersion");
    row.set("fileName", picture.fileName)
        .set("masterUuid", identity.masterUuid)
        .set("masterId", import.master)
        .set("rawMasterUuid", picture.raw ? QVariant(identity.masterUuid) : QVariant())
        .set("nonRawMasterUuid", picture.raw ? QVariant() : QVariant(identity.masterUuid))
        .set("projectUuid", identity.eventUuid)
        .set("imageTimeZoneName", u"GMT"_s)
        .set("imageDate", seconds(import.imageDate))
        .set("mainRating", 0)
        .set("isHidden", 0)
        .set("isFlagged", 0)
        .set("isEditable", 1)
        .set("colorLabelIndex", -1)
        .set("masterHeight", picture.stored.height())
        .set("masterWidth", picture.stored.width())
        .set("processedHeight", picture.shown.height())
        .set("processedWidth", picture.shown.width())
        .set("rotation", picture.rotation)
        // A RAW photo's own decoding counts as an adjustment that is not an edit.
        .set("hasAdjustments", picture.raw ? 1 : 0)
        .set("hasEnabledAdjustments", 0)
        .set("hasNotes", 0)
        .set("createDate", seconds(import.writer.now))
        .set("isInTrash", 0)
        .set("thumbnailGroup", identity.eventUuid)
        .set("exifLatitude", picture.latitude ? QVariant(*picture.latitude) : QVariant())
        .set("exifLongitude", picture.longitude ? QVariant(*picture.longitude) : QVariant())
        .set("faceDetectionIsFromPreview", 0)
        .set("hasKeywords", import.keywords.isEmpty() ? 0 : 1);
    return row;
}

void insertVersions(const Import& import)
{
    const PreparedPicture& picture = import.picture;
    const bool isUpright = picture.preview.isEmpty();
    constexpr int kFullTurn = 360;
    // As photos at hand have them; what they mean is not known.
    constexpr int kRenderVersionShown = 3;
    constexpr int kTurnedByFile = 4;
    versionRow(import)
        .set("modelId", import.version)
        .set("uuid", import.identity.versionUuid)
        .set("name", import.title)
        .set("versionNumber", 1)
        .set("isOriginal", 0)
        .set("exportImageChangeDate", seconds(isUpright ? picture.fileModified : import.writer.now))
        .set("exportMetadataChangeDate", seconds(import.writer.now))
        .set("renderVersion", kRenderVersionShown)
        .set("adjSeqNum", isUpright ? 0 : 1)
        .set("supportedStatus", 1)
        .set("showInLibrary", 1)
        .set("editState", isUpright || picture.raw ? 0 : kTurnedByFile)
        .set("contentVersion", 0)
        .set("propertiesVersion", 0)
        .set("faceDetectionRotationFromMaster", (kFullTurn - picture.rotation) % kFullTurn)
        .into(import.writer);
    versionRow(import)
        .set("modelId", import.original)
        .set("uuid", import.identity.originalUuid)
        .set("name", picture.baseName)
        .set("versionNumber", 0)
        .set("isOriginal", 1)
        .set("renderVersion", 1)
        .set("adjSeqNum", 0)
        .set("supportedStatus", 0)
        .set("showInLibrary", 0)
        .into(import.writer);
}

void insertKeywordAssignments(const Import& import)
{
    for (const qint64 version : {import.version, import.original}) {
        for (const qint64 keyword : import.keywords) {
            RowInsert("RKKeywordForVersion")
                .set("modelId", ModelIds::allocate(import.writer, "RKKeywordForVersion"))
                .set("versionId", version)
                .set("keywordId", keyword)
                .into(import.writer);
        }
    }
}

qint64 insertProxyState(const Import& import)
{
    const PreparedPicture& picture = import.picture;
    const ImportIdentity& identity = import.identity;
    constexpr int kTinySide = 128;
    const QSize tiny = picture.shown.scaled(kTinySide, kTinySide, Qt::KeepAspectRatio);
    const bool hasPreview = !picture.preview.isEmpty();
    const qint64 id = ModelIds::allocate(import.writer, "RKImageProxyState");
    RowInsert row("prox.RKImageProxyState");
    row.set("modelId", id)
        .set("versionUuid", identity.versionUuid)
        .set("versionId", import.version)
        .set("thumbnailsCurrent", 1)
        .set("miniThumbnailsCurrent", 1)
        // The packed tiny thumbnails are not written. That the application makes them again where
        // none is current and their place is 0, the one that no photo has, is concluded.
        .set("tinyThumbnailsCurrent", 0)
        .set("fullSizePreviewUpToDate", 1)
        .set("thumbnailCacheIndex", 0)
        .set("thumbnailRendered", 0)
        .set("previewRendered", 0)
        .set("previewJpegHeight", picture.shown.height())
        .set("previewJpegWidth", picture.shown.width())
        .set("previewToMasterRotation", 0)
        .set("fullSizePreviewPath",
             hasPreview ? QVariant(identity.previewPath(picture)) : QVariant())
        .set("fullSizePreviewChangeDate", seconds(import.writer.now))
        .set("thumbnailPath", identity.thumbnailPath(picture))
        .set("thumbnailHeight", picture.thumbnailSize.height())
        .set("thumbnailWidth", picture.thumbnailSize.width())
        .set("thumbnailFilesize", picture.thumbnail.size())
        .set("previewFilesize", hasPreview ? picture.preview.size() : picture.bytes.size())
        .set("miniThumbnailHeight", picture.miniatureSize.height())
        .set("miniThumbnailWidth", picture.miniatureSize.width())
        .set("tinyThumbnailHeight", tiny.height())
        .set("tinyThumbnailWidth", tiny.width())
        .set("miniThumbnailPath", identity.miniaturePath(picture))
        .set("miniThumbnailFilesize", picture.miniature.size());
    for (const char* column : {"previewJpegRotation",
                               "thumbnailRotation",
                               "miniThumbnailRotation",
                               "tinyThumbnailRotation",
                               "microThumbnailRotation"}) {
        row.set(column, picture.rotation);
    }
    row.into(import.writer);
    return id;
}

} // namespace

QString ImportIdentity::masterPath(const PreparedPicture& picture) const
{
    return ImportGroup::folder(stamp) + u'/' + picture.fileName;
}

QString ImportIdentity::thumbnailPath(const PreparedPicture& picture) const
{
    return ImportGroup::folder(stamp) + u'/' + versionUuid + u'/' + picture.baseName +
           "_1024.jpg"_L1;
}

QString ImportIdentity::miniaturePath(const PreparedPicture& picture) const
{
    return ImportGroup::folder(stamp) + u'/' + versionUuid + u'/' + picture.baseName + ".jpg"_L1;
}

QString ImportIdentity::previewPath(const PreparedPicture& picture) const
{
    return miniaturePath(picture);
}

qint64
ImportRows::insert(Writer& writer, const PreparedPicture& picture, const ImportIdentity& identity)
{
    Import import{writer, picture, identity, 0, 0, 0, 0.0, {}, {}};
    for (const QString& keyword : picture.facts.keywords) {
        const qint64 id =
            keyword.trimmed().isEmpty() ? 0 : PhotoRows::defineKeyword(writer, keyword);
        if (id != 0 && !import.keywords.contains(id)) {
            import.keywords.append(id);
        }
    }
    const QString group = insertImportGroup(writer, identity.stamp);
    import.master = ModelIds::allocate(writer, "RKMaster");
    import.version = ModelIds::allocate(writer, "RKVersion");
    import.original = ModelIds::allocate(writer, "RKVersion");
    import.imageDate = wallClockOf(picture.facts);
    import.title = picture.facts.title.isEmpty() ? picture.baseName : picture.facts.title;
    insertMaster(import, group);
    insertVersions(import);
    insertKeywordAssignments(import);
    const qint64 proxy = insertProxyState(import);
    RowIdIndexes::addRows(writer, "RKMaster", {import.master});
    RowIdIndexes::addRows(writer, "RKVersion", {import.version, import.original});
    RowIdIndexes::addRows(writer, "RKImageProxyState", {proxy});
    ImportProperties::insert(writer,
                             picture,
                             {import.version,
                              import.original,
                              import.title,
                              import.imageDate,
                              Sql::firstText(writer.connection,
                                             "SELECT name FROM RKFolder WHERE uuid = ?",
                                             identity.eventUuid)});
    EventRows::updateStatistics(writer, identity.eventUuid);
    writer.changes.masters.insert(identity.masterUuid);
    writer.changes.folders.insert(identity.eventUuid);
    writer.changes.adminData = true;
    writer.changes.catalogues = true;
    return import.version;
}
