#include "Volumes.h"

#include "Queries.h"

#include <QFileInfo>

namespace
{

/// Names are compared as the Mac composes them, however they were typed here.
QString folderFor(const Connection& connection, const QString& name)
{
    const QString composed = name.normalized(QString::NormalizationForm_C);
    const QMap<QString, QString>& folders = connection.volumeFolders();
    for (auto entry = folders.cbegin(); entry != folders.cend(); ++entry) {
        if (entry.key().normalized(QString::NormalizationForm_C) == composed &&
            QFileInfo(entry.value()).isDir()) {
            return QFileInfo(entry.value()).absoluteFilePath();
        }
    }
    return {};
}

} // namespace

QHash<QString, Volumes::Volume> Volumes::all(Connection& connection)
{
    // No library at hand has a referenced master. That one without a volume lies on the Mac's own
    // disk, its path counted from the root, is concluded from how other programs read such rows.
    QHash<QString, Volume> volumes{{QString(), {kOwnDisk, folderFor(connection, kOwnDisk)}}};
    const bool isKept =
        Sql::firstInteger(connection,
                          "SELECT 1 FROM main.sqlite_master WHERE type='table' AND name='RKVolume'")
            .has_value();
    if (!isKept) { // in an older schema
        return volumes;
    }
    Sql::Query query(connection, "SELECT uuid, name FROM RKVolume WHERE uuid <> ''");
    while (query.next()) {
        const QString name = Sql::text(query.column(1));
        volumes.insert(Sql::text(query.column(0)), {name, folderFor(connection, name)});
    }
    return volumes;
}

Volumes::Volume Volumes::of(Connection& connection, const QString& uuid)
{
    return all(connection).value(uuid, Volume{uuid, QString()});
}
