#include "Catalogues.h"

#include "AtomicFile.h"
#include "CatalogueModel.h"
#include "CatalogueWriter.h"
#include "Clock.h"
#include "PropertyList.h"
#include "SystemLog.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace
{

void touchTimestamp(const QString& path, double now)
{
    constexpr double kMilliseconds = 1000.0;
    QFile file(path);
    // The time of the file is the whole message; a library without it gets one.
    if (file.open(QIODevice::ReadWrite)) {
        file.setFileTime(
            QDateTime::fromMSecsSinceEpoch(
                static_cast<qint64>((now + kSecondsFrom1970To2001) * kMilliseconds), Qt::UTC),
            QFileDevice::FileModificationTime);
    }
}

} // namespace

Result<Catalogues::CarriedOver> Catalogues::write(Connection& connection, double now)
{
    const QString& package = connection.packagePath();
    const QString path = package + "/AlbumData.xml"_L1;
    const Result<QVariant> old = PropertyList::read(path);
    if (!old.ok() && QFileInfo::exists(path)) {
        systemLog(
            u"The old catalogue tells nothing and is written anew: %1"_s.arg(old.error().message));
    }
    const QVariantMap oldEntries = old.ok() ? old.value().toMap() : QVariantMap();
    const CatalogueModel::Catalogue catalogue = CatalogueModel::build(connection, oldEntries);
    Result<void> written = AtomicFile::write(path, CatalogueWriter::albumData(catalogue));
    if (!written.ok()) {
        return written.error();
    }
    const QString shared = package + "/iLifeShared"_L1;
    written = AtomicFile::makeFolder(shared);
    if (written.ok()) {
        written = AtomicFile::write(shared + "/AlbumData2.xml"_L1,
                                    CatalogueWriter::albumData2(catalogue));
    }
    if (!written.ok()) {
        return written.error();
    }
    touchTimestamp(shared + "/ApertureDatabaseTimestamp"_L1, now);
    return CarriedOver{!oldEntries.isEmpty()};
}
