#include "CommandLineTexts.h"
#include "TextLayout.h"
#include "Translation.h"

using namespace Qt::StringLiterals;
using Translation::counted;
using Translation::translated;

// What the commands say that look after a library: verify and backup.

QString CommandLineTexts::finding(const QString& where, const QString& what)
{
    return u"%1: %2"_s.arg(TextLayout::escaped(where), TextLayout::printable(what));
}

QString CommandLineTexts::verified(qint64 findings, qint64 repairable, const QString& library)
{
    if (findings == 0) {
        return translated("Databases, sidecars, catalogues and files agree.");
    }
    const QString found = counted(findings, "%1 thing differs.", "%1 things differ.");
    return repairable == 0
               ? found
               : found + u' ' +
                     counted(repairable,
                             "%1 can be mended without a choice, after a backup:",
                             "%1 can be mended without a choice, after a backup:") +
                     u"\ncorvane-cli verify --repair "_s + TextLayout::shellQuoted(library);
}

QString CommandLineTexts::mended(qint64 findings, const QString& backup)
{
    if (backup.isNull()) {
        return translated("There was nothing to mend.");
    }
    return counted(findings, "%1 thing was mended.", "%1 things were mended.") + u' ' +
           translated("The backup made before is %1").arg(TextLayout::escaped(backup));
}

QString CommandLineTexts::leftAsItWas(qint64 findings)
{
    return findings == 0 ? translated("Databases, sidecars, catalogues and files agree.")
                         : counted(findings,
                                   "%1 thing was left as it was: it needs a choice of yours.",
                                   "%1 things were left as they were: they need a choice of "
                                   "yours.");
}

QString CommandLineTexts::backupMade(const QString& name, qint64 bytes, const QString& path)
{
    return translated("The backup %1 (%2) is %3")
        .arg(name, TextLayout::megabytes(bytes), TextLayout::escaped(path));
}

QString CommandLineTexts::noBackups()
{
    return translated("There are no backups of this library yet.");
}

QString CommandLineTexts::photosOfBackup(qint64 photos)
{
    return counted(photos, "%1 photo", "%1 photos");
}

QString CommandLineTexts::damagedBackup()
{
    return translated("damaged");
}

QString CommandLineTexts::backupRestored(const QString& name,
                                         const QString& localTime,
                                         const QString& before)
{
    return translated(
               "The library is as it was in the backup %1 (of %2). The backup of what it was "
               "before is %3")
        .arg(name, localTime, TextLayout::escaped(before));
}

QString CommandLineTexts::filesKept(qint64 files)
{
    return counted(files,
                   "%1 file in the library belongs to no photo of it now, and is kept:",
                   "%1 files in the library belong to no photo of it now, and are kept:");
}

QString CommandLineTexts::verifyAfterRestore(const QString& library)
{
    return translated("What else does not agree with it is told by: corvane-cli verify %1")
        .arg(TextLayout::shellQuoted(library));
}

QString CommandLineTexts::dateNotNamed()
{
    return translated("--restore needs the date of a backup, but was given none.");
}
