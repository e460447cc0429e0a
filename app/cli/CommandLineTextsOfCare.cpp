#include "CareTexts.h"
#include "CommandLineTexts.h"
#include "TextLayout.h"
#include "Translation.h"

using namespace Qt::StringLiterals;
using Translation::translated;

// What the commands say that look after a library: verify and backup.

QString CommandLineTexts::finding(const QString& where, const QString& what)
{
    return u"%1: %2"_s.arg(TextLayout::escaped(where), TextLayout::printable(what));
}

QString CommandLineTexts::verified(qint64 findings, qint64 repairable, const QString& library)
{
    if (findings == 0) {
        return CareTexts::allAgrees();
    }
    const QString found = CareTexts::differs(findings);
    return repairable == 0
               ? found
               : found + u' ' + CareTexts::canBeMended(repairable) +
                     u":\ncorvane-cli verify --repair "_s + TextLayout::shellQuoted(library);
}

QString CommandLineTexts::mended(qint64 findings, const QString& backup)
{
    return backup.isNull() ? CareTexts::nothingToMend()
                           : CareTexts::mended(findings) + u' ' +
                                 CareTexts::backupMadeBefore(TextLayout::escaped(backup));
}

QString CommandLineTexts::backupMade(const QString& name, qint64 bytes, const QString& path)
{
    return CareTexts::backupMade(name, TextLayout::megabytes(bytes), TextLayout::escaped(path));
}

QString CommandLineTexts::backupRestored(const QString& name,
                                         const QString& localTime,
                                         const QString& before)
{
    return CareTexts::backupRestored(name, localTime, TextLayout::escaped(before));
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
