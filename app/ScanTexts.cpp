#include "ScanTexts.h"

#include <QCoreApplication>

QString ScanTexts::notConverted(qint64 photos)
{
    return QCoreApplication::translate("ScanTexts",
                                       photos == 1 ? "%1 photo was not converted"
                                                   : "%1 photos were not converted")
        .arg(photos);
}

QString ScanTexts::photoWithReason(const QString& name, qint64 id, const QString& reason)
{
    return QCoreApplication::translate("ScanTexts", "%1 (photo %2): %3")
        .arg(name, QString::number(id), reason);
}

QString ScanTexts::noReason()
{
    return QCoreApplication::translate("ScanTexts", "no reason was given");
}

QString ScanTexts::otherName(const QString& name, qint64 id, const QString& importedAs)
{
    return QCoreApplication::translate("ScanTexts",
                                       "The copy of %1 (photo %2) bears another name: %3")
        .arg(name, QString::number(id), importedAs);
}
