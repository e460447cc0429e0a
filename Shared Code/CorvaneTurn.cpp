#include "CorvaneScan.h"
#include "JpegConversion.h"
#include "PathText.h"
#include "ProgressIndicator.h"
#include "PropagateMetadata.h"
#include "SBUtils-iPhoto.h"
#include "SystemLog.h"
#include "Texts.h"
#include "UserDefaults.h"
#include "WaitForImport.h"
#include "helpers.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

// One photo's turn in the loop.

namespace
{

/// The name as the application knows it; albums may stand among the selected photos.
QString nameOf(const ScriptingObjectPtr& object)
{
    if (const auto photo = std::dynamic_pointer_cast<Photo>(object)) {
        return photo->name();
    }
    const auto album = std::dynamic_pointer_cast<Album>(object);
    return album ? album->name() : QString();
}

} // namespace

bool Corvane::takeTurn(Scan& scan, Turn& turn)
{
    estTimeRemaining(ScanStage::kConversion, scan.position, scan.count);
    m_delegate->progressIndicator().setDoubleValue(static_cast<double>(scan.position) + 1.0);
    if (const std::optional<QString> missing = findSource(scan, turn)) {
        stopWithAlert(*missing, Texts::conversionAbortedTitle());
        turn.outcome.kind = PhotoOutcome::Kind::Missing;
        turn.outcome.reason = Texts::fileMissing(turn.outcome.source);
        m_delegate->photoFinished(turn.outcome);
        return false;
    }
    if (!isSupported(scan, turn)) {
        endTurn(scan, turn, PhotoOutcome::Kind::Unsupported);
        return true;
    }
    if (turn.photo->losesKeyword()) {
        turn.outcome.reason = Texts::keywordLost(turn.outcome.source);
        endTurn(scan, turn, PhotoOutcome::Kind::Failed);
        return true;
    }
    turn.outcome.originalBytes = scan.at(scan.sizeList).toLongLong();
    scan.originalsTotal += turn.outcome.originalBytes;
    turn.jpegFile.setPath(scan.temporaryDirectory->path(),
                          PathText::withoutExtension(scan.at(scan.filenameList).toString()) +
                              u".jpg"_s);
    setStatus(Texts::converting());
    {
        const Result<ProvedJpeg> jpeg = convert(scan, turn);
        if (!jpeg.ok()) {
            // On purpose the position stays: the next photo meets this one's list entries.
            scan.failedSources.insert(turn.outcome.source);
            turn.outcome.kind = PhotoOutcome::Kind::Failed;
            turn.outcome.reason = jpeg.error().message;
            m_delegate->photoFinished(turn.outcome);
            return true;
        }
        import(scan, turn, jpeg.value());
    }
    waitForImport(*m_photoApplication, m_services.clock);
    turn.jpegFile.remove();
    fileAndPropagate(scan, turn);
    tagAndRemoveOriginal(scan, turn);
    endTurn(scan, turn, PhotoOutcome::Kind::Converted);
    return true;
}

std::optional<QString> Corvane::findSource(const Scan& scan, Turn& turn)
{
    const QString name = scan.at(scan.filenameList).toString();
    const QVariant path = scan.at(scan.pathList);
    const std::optional<QString> originalPath =
        turn.photo ? turn.photo->originalPath() : std::nullopt;
    setCount(name);
    const QVariant original = originalPath ? QVariant(*originalPath) : QVariant();
    const QVariant source = scan.processingOption ? original : path;
    if (source.isNull()) {
        return Texts::imageMissing(nameOf(turn.object));
    }
    turn.outcome.source = source.toString();
    turn.height = turn.photo ? turn.photo->height() : 0;
    if (!helpers::fileExists(source, *m_delegate)) {
        return Texts::imageMissing(name, turn.outcome.source);
    }
    return std::nullopt;
}

bool Corvane::isSupported(const Scan& scan, Turn& turn)
{
    const QString& source = turn.outcome.source;
    const bool isReadable = scan.readableExtensions.contains(PathText::extension(source));
    if (isReadable && turn.height != 0) {
        return true;
    }
    systemLog(u"Unsupported file "_s + source);
    turn.outcome.reason = isReadable ? Texts::noHeight(source) : Texts::unreadableType(source);
    return false;
}

Result<ProvedJpeg> Corvane::convert(const Scan& scan, const Turn& turn)
{
    if (scan.failedSources.contains(turn.outcome.source)) {
        return Error{ErrorCode::Damaged, Texts::failedEarlier(turn.outcome.source)};
    }
    return JpegConversion::convert(turn.outcome.source, *turn.photo, *m_delegate);
}

void Corvane::import(Scan& scan, Turn& turn, const ProvedJpeg& jpeg)
{
    setStatus(Texts::importing());
    turn.jpegFile.write(jpeg.bytes);
    scan.convertedTotal += jpeg.bytes.size();
    turn.outcome.jpegBytes = jpeg.bytes.size();
    turn.outcome.pixels = jpeg.picture.size();
    turn.outcome.importedAs = QFileInfo(turn.jpegFile.path()).fileName();
    turn.transaction->expect(jpeg);
    scan.photoLibraryAlbum->importFrom(turn.jpegFile.path(), true, scan.photoLibraryAlbum);
}

void Corvane::fileAndPropagate(const Scan& scan, Turn& turn)
{
    setStatus(Texts::propagatingMetadata());
    const QList<PhotoPtr> imported = m_photoApplication->lastImportAlbum()->photos();
    if (imported.size() != 1) {
        return;
    }
    const PhotoPtr& copy = imported.first();
    turn.outcome.newPhotoId = copy->id();
    const AlbumPtr album = albumOfTurn(scan, turn);
    copy->addTo(album);
    propagateMetadata(*turn.photo, *copy, *m_photoApplication);
    if (scan.tagEnabled) {
        m_sbutils->tagImage(copy, Texts::processedKeyword());
    }
}

AlbumPtr Corvane::albumOfTurn(const Scan& scan, Turn& turn)
{
    AlbumPtr album = scan.defaultAlbum;
    QString name = Texts::defaultAlbumName();
    if (scan.albumNames) {
        name = scan.albumNames->value(static_cast<qsizetype>(scan.position));
        album = findAlbum(name);
        if (!album) {
            createAlbum(name);
            album = findAlbum(name);
        }
    }
    turn.outcome.album = album ? name : QString();
    return album;
}

void Corvane::tagAndRemoveOriginal(const Scan& scan, const Turn& turn)
{
    if (scan.tagEnabled) {
        m_sbutils->tagImage(turn.photo, Texts::originalKeyword());
    }
    if (m_services.defaults.boolValue(u"TrashEnabled"_s)) {
        turn.photo->removeFrom(scan.photoLibraryAlbum);
    }
}

void Corvane::endTurn(Scan& scan, Turn& turn, PhotoOutcome::Kind kind)
{
    ++scan.position;
    turn.transaction->commit();
    turn.outcome.kind = kind;
    m_delegate->photoFinished(turn.outcome);
}
