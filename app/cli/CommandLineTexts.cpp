#include "CommandLineTexts.h"

#include "ScanTexts.h"
#include "TextLayout.h"
#include "Translation.h"

using namespace Qt::StringLiterals;
using Translation::counted;
using Translation::translated;

QString CommandLineTexts::noCommand()
{
    return translated(
        "A command is missing: scan, list, info, check, trash, verify, backup or sample.");
}

QString CommandLineTexts::notExpected(const QStringList& arguments)
{
    return translated(arguments.size() == 1 ? "The following argument was not expected: %1"
                                            : "The following arguments were not expected: %1")
        .arg(TextLayout::escaped(arguments.join(u' ')));
}

QString CommandLineTexts::beforeCommand(const QStringList& arguments, const QString& command)
{
    return translated("Not expected before the command “%1”: %2. What a command takes follows "
                      "its name.")
        .arg(command, TextLayout::escaped(arguments.join(u' ')));
}

QString CommandLineTexts::howToSeeHelp(const QString& command)
{
    return command.isEmpty()
               ? translated("Run “corvane-cli --help” to see how it is used.")
               : translated("Run “corvane-cli %1 --help” to see how it is used.").arg(command);
}

QString CommandLineTexts::fileNotNamed(const QString& option)
{
    return translated("%1 needs the name of a file, but was given none.").arg(option);
}

QString CommandLineTexts::defaultsIsFolder(const QString& path)
{
    return translated("The settings file %1 cannot be used: that is a folder.")
        .arg(TextLayout::escaped(path));
}

QString CommandLineTexts::defaultsIsNoFile(const QString& path)
{
    return translated("The settings file %1 cannot be used: that is no regular file.")
        .arg(TextLayout::escaped(path));
}

QString CommandLineTexts::defaultsNotReadable(const QString& path)
{
    return translated("The settings file %1 cannot be read: permission denied.")
        .arg(TextLayout::escaped(path));
}

QString CommandLineTexts::noVolume(const QString& given)
{
    return translated("--volume needs the name of a disk and a folder that is there, NAME=FOLDER, "
                      "but was given: %1")
        .arg(TextLayout::escaped(given));
}

QString CommandLineTexts::emptyNeedsYes()
{
    return translated("Without a terminal to ask on, --empty needs --yes: it deletes photos for "
                      "good.");
}

QString CommandLineTexts::reportFolderMissing(const QString& path)
{
    return translated("The report cannot be written to %1: its folder does not exist.")
        .arg(TextLayout::escaped(path));
}

QString CommandLineTexts::reportIsFolder(const QString& path)
{
    return translated("The report cannot be written to %1: that is a folder.")
        .arg(TextLayout::escaped(path));
}

QString CommandLineTexts::reportIsNoFile(const QString& path)
{
    return translated("The report cannot be written to %1: that is no regular file.")
        .arg(TextLayout::escaped(path));
}

QString CommandLineTexts::reportNotWritable(const QString& path)
{
    return translated("The report cannot be written to %1: permission denied.")
        .arg(TextLayout::escaped(path));
}

QString CommandLineTexts::reportInLibrary(const QString& path)
{
    return translated("The report cannot be written to %1: that is inside the library.")
        .arg(TextLayout::escaped(path));
}

QString CommandLineTexts::reportNotWritten(const QString& path)
{
    return translated("The report could not be written to %1.").arg(TextLayout::escaped(path));
}

QString CommandLineTexts::outputNotWritten()
{
    return translated("Standard output could not be written.");
}

QString CommandLineTexts::noPhotoWithId(qint64 id)
{
    return translated("No photo with the id %1 can be selected.").arg(id);
}

QString CommandLineTexts::noPhotoInRoll(const QString& name)
{
    return translated("There is no event “%1” with photos in it.").arg(TextLayout::escaped(name));
}

QString CommandLineTexts::noPhotoInAlbum(const QString& name)
{
    return translated("There is no album “%1” with photos in it.").arg(TextLayout::escaped(name));
}

QString CommandLineTexts::noPhotoWithKeyword(const QString& name)
{
    return translated("No photo carries the keyword “%1”.").arg(TextLayout::escaped(name));
}

QString CommandLineTexts::leftOut(qint64 photos)
{
    return counted(photos,
                   "%1 photo is left out: its master is missing or unreadable.",
                   "%1 photos are left out: their masters are missing or unreadable.");
}

QString CommandLineTexts::nothingSelected()
{
    return translated("No photo matches the selection.");
}

QString CommandLineTexts::allConverted()
{
    return translated("No photo matches the selection: all RAW photos are converted already.");
}

QString CommandLineTexts::pressEnter()
{
    return translated("Press Enter to go on.");
}

QString CommandLineTexts::nobodyToAnswer()
{
    return translated("The alert cannot be answered, because there is no terminal to ask on.");
}

QString CommandLineTexts::stoppedWhileAsking()
{
    return translated("The scan was asked to stop.");
}

QString CommandLineTexts::askToEmpty(qint64 photos, qint64 bytes)
{
    return counted(photos,
                   "%1 photo (%2) will be deleted for good. Have a copy of the whole library on "
                   "another disk first. Type yes to go on:",
                   "%1 photos (%2) will be deleted for good. Have a copy of the whole library on "
                   "another disk first. Type yes to go on:")
        .arg(TextLayout::megabytes(bytes));
}

QString CommandLineTexts::editsNotShown(qint64 photos)
{
    return counted(photos,
                   "%1 selected photo was edited or turned in iPhoto; its copy will not show "
                   "that, because the original file is converted. --displayed converts what "
                   "iPhoto shows.",
                   "%1 selected photos were edited or turned in iPhoto; their copies will not "
                   "show that, because the original files are converted. --displayed converts "
                   "what iPhoto shows.");
}

QString CommandLineTexts::encodedAgain(qint64 photos)
{
    return counted(photos,
                   "%1 selected photo is no RAW photo and will be encoded again.",
                   "%1 selected photos are no RAW photos and will be encoded again.");
}

QString CommandLineTexts::photoFinished(qint64 position, qint64 total, const QString& name)
{
    return translated("%1 of %2: %3")
        .arg(QString::number(position), QString::number(total), TextLayout::printable(name));
}

QString CommandLineTexts::interrupted()
{
    return translated("Interrupted.");
}

QString CommandLineTexts::scanInterrupted()
{
    return translated("Interrupted. What was converted before is complete and stays in the "
                      "library.");
}

QString CommandLineTexts::missingMasterHint()
{
    return translated("--present leaves out photos whose master is missing or unreadable.");
}

QString CommandLineTexts::removedOriginalsHint(const QString& library)
{
    return translated("The originals are in the library's trash; their space comes back with: "
                      "corvane-cli trash --empty %1")
        .arg(TextLayout::shellQuoted(library));
}

QString CommandLineTexts::notConvertedHead(qint64 photos)
{
    return ScanTexts::notConverted(photos) + u':';
}

QString CommandLineTexts::photoWithReason(const QString& name, qint64 id, const QString& reason)
{
    return ScanTexts::photoWithReason(
        TextLayout::printable(name), id, TextLayout::printable(reason));
}

QString CommandLineTexts::otherName(const QString& name, qint64 id, const QString& importedAs)
{
    return ScanTexts::otherName(TextLayout::printable(name), id, TextLayout::printable(importedAs));
}

QString CommandLineTexts::dryRunSummary(qint64 convertible, qint64 selected)
{
    return translated("Dry run: %1 of %2 selected photos would be converted.")
        .arg(convertible)
        .arg(selected);
}

QString CommandLineTexts::dryRunBytes(qint64 originals, qint64 lowest, qint64 highest)
{
    return translated("Originals: %1\nConverted: %2 to %3 (an estimate)\nSavings: %4 to %5 (an "
                      "estimate)")
        .arg(TextLayout::megabytes(originals),
             TextLayout::megabytes(lowest),
             TextLayout::megabytes(highest),
             TextLayout::megabytes(originals - highest),
             TextLayout::megabytes(originals - lowest));
}

QString CommandLineTexts::wouldStopAtMissing(qint64 masters)
{
    return counted(masters,
                   "%1 master is missing: a scan would stop there. --present leaves such photos "
                   "out.",
                   "%1 masters are missing: a scan would stop at the first. --present leaves "
                   "such photos out.");
}

QString CommandLineTexts::checking()
{
    return translated("Checking");
}

QString CommandLineTexts::checked(qint64 photos, qint64 bad)
{
    const QString number = counted(photos, "%1 photo checked", "%1 photos checked");
    return bad == 0
               ? translated("%1, nothing wrong.").arg(number)
               : translated("%1, something is wrong with %2.").arg(number, QString::number(bad));
}

QString CommandLineTexts::masterWithoutPath()
{
    return translated("The master is offline, or its path leads out of the library.");
}

QString CommandLineTexts::volumeOffline(const QString& name)
{
    return translated("The master is offline: it lies on the disk “%1” of the Mac, and where that "
                      "is here is not known. --volume NAME=FOLDER tells it.")
        .arg(TextLayout::escaped(name));
}

QString CommandLineTexts::fileMissing(const QString& path)
{
    return translated("The file %1 is missing.").arg(TextLayout::escaped(path));
}

QString CommandLineTexts::fileUnreadable(const QString& path)
{
    return translated("The file %1 cannot be read: permission denied.")
        .arg(TextLayout::escaped(path));
}

QString CommandLineTexts::typeNotReadable(const QString& extension)
{
    return extension.isEmpty()
               ? translated("A file without an extension is not of a readable type.")
               : translated("Files with the extension “%1” are not of a readable type.")
                     .arg(TextLayout::escaped(extension));
}

QString CommandLineTexts::noHeight()
{
    return translated("The library says that the photo has no height.");
}

QString CommandLineTexts::trashEmpty()
{
    return translated("The trash is empty.");
}

QString CommandLineTexts::trashTotal(qint64 photos, qint64 bytes)
{
    return counted(photos, "%1 photo in the trash, %2", "%1 photos in the trash, %2")
        .arg(TextLayout::megabytes(bytes));
}

QString CommandLineTexts::notInTrash(qint64 id)
{
    return translated("Photo %1 is not in the trash.").arg(id);
}

QString CommandLineTexts::putBack(qint64 photos)
{
    return counted(photos, "%1 photo was put back.", "%1 photos were put back.");
}

QString CommandLineTexts::emptied(qint64 photos, qint64 bytes)
{
    return counted(photos,
                   "%1 photo was deleted for good; %2 are free again.",
                   "%1 photos were deleted for good; %2 are free again.")
        .arg(TextLayout::megabytes(bytes));
}

QString CommandLineTexts::notEmptied()
{
    return translated("Nothing was deleted.");
}

QString CommandLineTexts::writing()
{
    return translated("Writing");
}

QString CommandLineTexts::samplePhoto(qint64 position, qint64 total)
{
    return translated("Photo %1 of %2").arg(position).arg(total);
}

QString CommandLineTexts::sampleWritten(const QString& path)
{
    return translated("The sample library is %1").arg(TextLayout::escaped(path));
}

QString CommandLineTexts::infoRow(InfoRow row)
{
    switch (row) {
    case InfoRow::Library:
        return translated("Library:");
    case InfoRow::Version:
        return translated("Version:");
    case InfoRow::Photos:
        return translated("Photos:");
    case InfoRow::Rolls:
        return translated("Events:");
    case InfoRow::Albums:
        return translated("Albums:");
    case InfoRow::Keywords:
        return translated("Keywords:");
    case InfoRow::Raw:
        return translated("RAW photos:");
    case InfoRow::Processed:
        return translated("Converted copies:");
    case InfoRow::Trash:
        return translated("In the trash:");
    case InfoRow::Missing:
        return translated("Missing masters:");
    case InfoRow::Writable:
        return translated("Writable:");
    case InfoRow::Problems:
        return translated("Problems:");
    }
    Q_UNREACHABLE();
}

QString CommandLineTexts::countWithVolumes(qint64 count, const QStringList& offline)
{
    QStringList names;
    for (const QString& name : offline) {
        names += TextLayout::printable(name);
    }
    return names.isEmpty() ? QString::number(count)
                           : translated("%1 (some on disks that are not at hand: %2)")
                                 .arg(QString::number(count), names.join(u", "_s));
}

QString CommandLineTexts::countWithBytes(qint64 count, qint64 bytes)
{
    return u"%1 (%2)"_s.arg(QString::number(count), TextLayout::megabytes(bytes));
}

QString CommandLineTexts::yes()
{
    return translated("yes");
}

QString CommandLineTexts::no()
{
    return translated("no");
}

QString CommandLineTexts::noBecause(const QString& sentence)
{
    return translated("no. %1").arg(sentence);
}

QString CommandLineTexts::none()
{
    return translated("none");
}
