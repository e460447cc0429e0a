#include "CareTexts.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace
{

QString translated(const char* english)
{
    return QCoreApplication::translate("CareTexts", english);
}

/// One text for a single thing, another one for none or many; "%1" stands for the number.
QString counted(qint64 count, const char* one, const char* many)
{
    return translated(count == 1 ? one : many).arg(count);
}

} // namespace

QString CareTexts::allAgrees()
{
    return translated("Databases, sidecars, catalogues and files agree.");
}

QString CareTexts::differs(qint64 findings)
{
    return counted(findings, "%1 thing differs.", "%1 things differ.");
}

QString CareTexts::canBeMended(qint64 findings)
{
    return counted(findings,
                   "%1 can be mended without a choice, after a backup",
                   "%1 can be mended without a choice, after a backup");
}

QString CareTexts::nothingToMend()
{
    return translated("There was nothing to mend.");
}

QString CareTexts::mended(qint64 findings)
{
    return counted(findings, "%1 thing was mended.", "%1 things were mended.");
}

QString CareTexts::backupMadeBefore(const QString& path)
{
    return translated("The backup made before is %1").arg(path);
}

QString CareTexts::notMendedYet(qint64 findings)
{
    return findings == 0 ? translated("The repair was stopped before all was looked at again.")
                         : counted(findings,
                                   "The repair was stopped: %1 thing is not known to be mended.",
                                   "The repair was stopped: %1 things are not known to be mended.");
}

QString CareTexts::leftAsItWas(qint64 findings)
{
    return findings == 0
               ? allAgrees()
               : counted(findings,
                         "%1 thing was left as it was: it needs a choice of yours.",
                         "%1 things were left as they were: they need a choice of yours.");
}

QString CareTexts::localTime(const QDateTime& moment)
{
    return moment.toLocalTime().toString(u"yyyy-MM-dd HH:mm:ss"_s);
}

QString CareTexts::backupMade(const QString& name, const QString& size, const QString& path)
{
    return translated("The backup %1 (%2) is %3").arg(name, size, path);
}

QString CareTexts::noBackups()
{
    return translated("There are no backups of this library yet.");
}

QString CareTexts::photosOfBackup(qint64 photos)
{
    return counted(photos, "%1 photo", "%1 photos");
}

QString CareTexts::damagedBackup()
{
    return translated("damaged");
}

QString
CareTexts::backupRestored(const QString& name, const QString& localTime, const QString& before)
{
    return translated("The library is as it was in the backup %1 (of %2). The backup of what it "
                      "was before is %3")
        .arg(name, localTime, before);
}

QString CareTexts::filesKept(qint64 files)
{
    return counted(files,
                   "%1 file in the library belongs to no photo of it now, and is kept:",
                   "%1 files in the library belong to no photo of it now, and are kept:");
}
