#pragma once

#include "NumberValue.h"

#include <QCoreApplication>
#include <QString>
#include <QStringList>

/// Every sentence that engine and bridge show to a person: alerts, labels, the notification and
/// the reasons why a photo was not converted. English is the key of the translation and what is
/// shown without one. Any thread.
namespace Texts
{

inline QString translated(const char* english)
{
    return QCoreApplication::translate("Corvane", english);
}

// Names that the program gives to things in the library; never translated, since they are looked
// up again.
inline QString defaultAlbumName()
{
    return QStringLiteral("Corvane For iPhoto");
}

inline QString originalKeyword()
{
    return QStringLiteral("Corvane Original");
}

inline QString processedKeyword()
{
    return QStringLiteral("Corvane Processed");
}

inline QString productName()
{
    return QStringLiteral("Corvane");
}

// Labels
inline QString ready()
{
    return translated("Ready");
}

inline QString loadingData()
{
    return translated("Loading Data");
}

inline QString converting()
{
    return translated("Converting");
}

inline QString importing()
{
    return translated("Importing");
}

inline QString propagatingMetadata()
{
    return translated("Propagating Metadata");
}

/// The remaining time when nothing is known of it.
inline QString noTimeRemaining()
{
    return QStringLiteral("--:--:--");
}

inline QString keepAwayFromPhotoApplication()
{
    return translated("WARNING: Do not use iPhoto while a scan is in progress except to respond "
                      "to iPhoto dialog messages.");
}

// Alert titles
inline QString errorTitle()
{
    return translated("Error");
}

inline QString unsupportedVersionTitle()
{
    return translated("Unsupported Version");
}

inline QString missingKeywordsTitle()
{
    return translated("Missing Keywords");
}

inline QString unableToProcessTitle()
{
    return translated("Unable To Process");
}

inline QString unableToContinueTitle()
{
    return translated("Unable To Continue");
}

inline QString conversionAbortedTitle()
{
    return translated("Conversion Aborted");
}

inline QString allDoneTitle()
{
    return translated("All Done");
}

// Alert messages
inline QString communicationFailed(const QString& exceptionName, const QString& reason)
{
    return translated("A serious error has occurred in communicating with iPhoto.\n%1\n%2")
        .arg(exceptionName, reason);
}

inline QString unsupportedVersion()
{
    return translated("This version of Corvane is compatible with iPhoto '11 Versions 9.x.y only.");
}

/// Each keyword stands on a line of its own after a tab.
inline QString missingKeywords(const QStringList& keywords, const QString& product)
{
    QString list;
    for (const QString& keyword : keywords) {
        list += QLatin1Char('\t') + keyword + QLatin1Char('\n');
    }
    return translated("iPhoto is missing the following keywords:\n\n%1\nTo add keywords in iPhoto "
                      "use the menu item Window->Manage My Keywords.  Then click \"Edit "
                      "Keywords\".  There is a + button on the lower left which adds new "
                      "keywords.\n\nYou may not continue without adding these keywords. Once you "
                      "have, click on okay and %2 will check that they have been entered "
                      "correctly.")
        .arg(list, product);
}

inline QString nothingSelected()
{
    return translated("You need to select the photos you want me to process");
}

inline QString itemsNotOpened()
{
    return translated("You need to deal with the item(s) that iPhoto could not open because the "
                      "original referenced item could not be found.");
}

/// The library names no file for the photo.
inline QString imageMissing(const QString& name)
{
    return translated("The image %1 is missing from the file system and therefore could not be "
                      "converted.\n\nSomehow iPhoto has lost track of this image.\n\nIf you have "
                      "many images in such a state you may want to consider using our utility "
                      "\"Trelby For iPhoto\" which scans your library for all missing image "
                      "files.")
        .arg(name);
}

/// The file that the library names is not there, or may not be read.
inline QString imageMissing(const QString& name, const QString& path)
{
    return translated("The image %1 is missing from the file system and therefore could not be "
                      "converted.\nSomehow iPhoto has lost track of this image which should have "
                      "been located at:\n%2\n\nIf you have many images in such a state you may "
                      "want to consider using our utility \"Trelby For iPhoto\" which scans your "
                      "library for all such missing image files.")
        .arg(name, path);
}

/// A byte count in units of 1,048,576 bytes, with two decimals.
inline QString megabytes(qint64 bytes)
{
    return NumberValue::withTwoDecimals(static_cast<double>(bytes) / 1024.0 / 1024.0);
}

inline QString finished(qint64 originalsBytes, qint64 convertedBytes)
{
    return translated("Corvane finished processing. - Check your keywords for Corvane Original "
                      "and Corvane Processed.\n\nStats:\nOriginals: %1 MB\nConverted: %2 "
                      "MB\nSavings: %3 MB")
        .arg(megabytes(originalsBytes),
             megabytes(convertedBytes),
             megabytes(originalsBytes - convertedBytes));
}

// The notification
inline QString notificationTitle()
{
    return translated("Conversion Complete");
}

inline QString notificationText()
{
    return translated("Corvane has finished processing.");
}

// Why a photo was not converted, for reports
inline QString unreadableType(const QString& path)
{
    return translated("%1 is of a type that cannot be read").arg(path);
}

/// `path` is empty where the library names no file.
inline QString fileMissing(const QString& path)
{
    return path.isEmpty() ? translated("The library names no file for it")
                          : translated("%1 is missing or may not be read").arg(path);
}

inline QString noHeight(const QString& path)
{
    return translated("The library gives no height for %1").arg(path);
}

inline QString failedEarlier(const QString& path)
{
    return translated("%1 failed earlier in this scan").arg(path);
}

inline QString pictureOfAnotherPhoto(const QString& path)
{
    return translated("%1 is no file of this photo").arg(path);
}

inline QString keywordLost(const QString& path)
{
    return translated("No copy of %1 is made, since a keyword of the photo is gone from the "
                      "library and the copy would not have it. Let iPhoto repair the library, or "
                      "restore it from a backup")
        .arg(path);
}

inline QString noPixelsLeft(const QString& path)
{
    return translated("The output size leaves no pixels of %1").arg(path);
}

// Why a scan cannot go on
inline QString temporaryFileNotWritten(const QString& path, const QString& reason)
{
    return translated("The temporary file %1 could not be written (%2): make room on its disk, or "
                      "set TMPDIR to another folder.")
        .arg(path, reason);
}

inline QString unusableFileName(const QString& name)
{
    return translated("The library names an image \"%1\", which cannot be a file's name").arg(name);
}

inline QString rollWithoutName(qint64 rollId)
{
    return translated("Roll %1 has no name in AlbumData.xml").arg(rollId);
}

} // namespace Texts
