#pragma once

#include <QString>
#include <QStringList>

/// Every sentence that the command line program itself says; those of engine and controller are
/// theirs, and those of both faces in CareTexts and ScanTexts. English is the key of the
/// translation. Any thread.
namespace CommandLineTexts
{

// Usage
[[nodiscard]] QString noCommand();
/// Of arguments that nothing takes.
[[nodiscard]] QString notExpected(const QStringList& arguments);
/// Of arguments that stand before the name of the command.
[[nodiscard]] QString beforeCommand(const QStringList& arguments, const QString& command);
/// `command` is empty for the program as a whole.
[[nodiscard]] QString howToSeeHelp(const QString& command);
/// An option that takes a file was given an empty name.
[[nodiscard]] QString fileNotNamed(const QString& option);
[[nodiscard]] QString defaultsIsFolder(const QString& path);
[[nodiscard]] QString defaultsIsNoFile(const QString& path);
[[nodiscard]] QString defaultsNotReadable(const QString& path);
/// `given`: the value of --volume.
[[nodiscard]] QString noVolume(const QString& given);
[[nodiscard]] QString emptyNeedsYes();
[[nodiscard]] QString reportFolderMissing(const QString& path);
[[nodiscard]] QString reportIsFolder(const QString& path);
[[nodiscard]] QString reportIsNoFile(const QString& path);
[[nodiscard]] QString reportNotWritable(const QString& path);
[[nodiscard]] QString reportInLibrary(const QString& path);
/// The report could not be written after all, though it could be before.
[[nodiscard]] QString reportNotWritten(const QString& path);
[[nodiscard]] QString outputNotWritten();

// Selection
[[nodiscard]] QString noPhotoWithId(qint64 id);
[[nodiscard]] QString noPhotoInRoll(const QString& name);
[[nodiscard]] QString noPhotoInAlbum(const QString& name);
[[nodiscard]] QString noPhotoWithKeyword(const QString& name);
[[nodiscard]] QString leftOut(qint64 photos);
[[nodiscard]] QString nothingSelected();
[[nodiscard]] QString allConverted();

// Questions
[[nodiscard]] QString pressEnter();
[[nodiscard]] QString nobodyToAnswer();
[[nodiscard]] QString stoppedWhileAsking();
[[nodiscard]] QString askToEmpty(qint64 photos, qint64 bytes);

// Scan
[[nodiscard]] QString editsNotShown(qint64 photos);
[[nodiscard]] QString encodedAgain(qint64 photos);
/// A line of progress where lines cannot be drawn again.
[[nodiscard]] QString photoFinished(qint64 position, qint64 total, const QString& name);
[[nodiscard]] QString interrupted();
[[nodiscard]] QString scanInterrupted();
[[nodiscard]] QString missingMasterHint();
[[nodiscard]] QString removedOriginalsHint(const QString& library);
[[nodiscard]] QString notConvertedHead(qint64 photos);
[[nodiscard]] QString photoWithReason(const QString& name, qint64 id, const QString& reason);
[[nodiscard]] QString otherName(const QString& name, qint64 id, const QString& importedAs);

// Dry run
[[nodiscard]] QString dryRunSummary(qint64 convertible, qint64 selected);
/// `lowest` to `highest`: between which bounds the copies may lie.
[[nodiscard]] QString dryRunBytes(qint64 originals, qint64 lowest, qint64 highest);
[[nodiscard]] QString wouldStopAtMissing(qint64 masters);

// Check
[[nodiscard]] QString checking();
[[nodiscard]] QString checked(qint64 photos, qint64 bad);
[[nodiscard]] QString masterWithoutPath();
[[nodiscard]] QString volumeOffline(const QString& name);
[[nodiscard]] QString fileMissing(const QString& path);
[[nodiscard]] QString fileUnreadable(const QString& path);
/// `extension` may be empty.
[[nodiscard]] QString typeNotReadable(const QString& extension);
[[nodiscard]] QString noHeight();

// Trash
[[nodiscard]] QString trashEmpty();
[[nodiscard]] QString trashTotal(qint64 photos, qint64 bytes);
[[nodiscard]] QString notInTrash(qint64 id);
[[nodiscard]] QString putBack(qint64 photos);
[[nodiscard]] QString emptied(qint64 photos, qint64 bytes);
[[nodiscard]] QString notEmptied();

// Verify
[[nodiscard]] QString finding(const QString& where, const QString& what);
[[nodiscard]] QString verified(qint64 findings, qint64 repairable, const QString& library);
/// `backup`: folder of the copy made before; null where there was nothing to mend.
[[nodiscard]] QString mended(qint64 findings, const QString& backup);

// Backup
[[nodiscard]] QString backupMade(const QString& name, qint64 bytes, const QString& path);
[[nodiscard]] QString
backupRestored(const QString& name, const QString& localTime, const QString& before);
[[nodiscard]] QString verifyAfterRestore(const QString& library);
[[nodiscard]] QString dateNotNamed();

// Sample
[[nodiscard]] QString writing();
[[nodiscard]] QString samplePhoto(qint64 position, qint64 total);
[[nodiscard]] QString sampleWritten(const QString& path);

// Info: the names of what is counted
enum class InfoRow : quint8 {
    Library,
    Version,
    Photos,
    Rolls,
    Albums,
    Keywords,
    Raw,
    Processed,
    Trash,
    Missing,
    Writable,
    Problems,
};
[[nodiscard]] QString infoRow(InfoRow row);
[[nodiscard]] QString countWithVolumes(qint64 count, const QStringList& offline);
[[nodiscard]] QString countWithBytes(qint64 count, qint64 bytes);
[[nodiscard]] QString yes();
[[nodiscard]] QString no();
/// `sentence`: the reason.
[[nodiscard]] QString noBecause(const QString& sentence);
[[nodiscard]] QString none();

} // namespace CommandLineTexts
