#include "TrashRows.h"

#include "EventRows.h"
#include "MastersOfPhoto.h"
#include "Queries.h"
#include "RowIdIndexes.h"

#include <QSet>

#include <algorithm>

namespace
{

void markVersion(Writer& writer, qint64 versionId, bool inTrash)
{
    RowIdIndexes::follow(writer, "RKVersion", {versionId}, [&] {
        Sql::execute(writer.connection,
                     "UPDATE RKVersion SET isInTrash=? WHERE modelId=?",
                     inTrash ? 1 : 0,
                     versionId);
    });
}

/// The master and the version as imported go where the photo goes.
void markMaster(Writer& writer, const QString& master, bool inTrash)
{
    const std::optional<qint64> id =
        Sql::firstInteger(writer.connection, "SELECT modelId FROM RKMaster WHERE uuid=?", master);
    if (!id) {
        return;
    }
    RowIdIndexes::follow(writer, "RKMaster", {*id}, [&] {
        Sql::execute(writer.connection,
                     "UPDATE RKMaster SET isInTrash=? WHERE modelId=?",
                     inTrash ? 1 : 0,
                     *id);
    });
    for (const qint64 hidden : MastersOfPhoto::hiddenVersions(writer.connection, master)) {
        markVersion(writer, hidden, inTrash);
    }
    writer.changes.masters.insert(master);
}

QSet<QString> eventsOf(Connection& connection, qint64 versionId)
{
    QSet<QString> events;
    for (const QString& event :
         Sql::texts(connection, "SELECT projectUuid FROM RKVersion WHERE modelId=?", versionId)) {
        events.insert(event);
    }
    return events;
}

bool isPhotoInTrash(Connection& connection, qint64 versionId, bool inTrash)
{
    const std::optional<qint64> state =
        Sql::firstInteger(connection,
                          "SELECT isInTrash<>0 FROM RKVersion WHERE modelId=? AND showInLibrary=1",
                          versionId);
    return state && (*state != 0) == inTrash;
}

int move(Writer& writer, const QList<qint64>& versionIds, bool inTrash)
{
    int moved = 0;
    QSet<QString> events;
    for (const qint64 versionId : versionIds) {
        if (!isPhotoInTrash(writer.connection, versionId, !inTrash)) {
            continue;
        }
        const QStringList masters = MastersOfPhoto::of(writer.connection, versionId);
        markVersion(writer, versionId, inTrash);
        for (const QString& master : masters) {
            // A master that another visible version shows stays with that one.
            if (!inTrash || !MastersOfPhoto::isShown(writer.connection, master)) {
                markMaster(writer, master, inTrash);
            }
        }
        writer.changes.masters.insert(masters.first());
        events.unite(eventsOf(writer.connection, versionId));
        ++moved;
    }
    for (const QString& event : std::as_const(events)) {
        EventRows::updateStatistics(writer, event);
    }
    if (moved > 0) {
        writer.changes.adminData = true; // it tells the number of masters outside the trash
        writer.changes.catalogues = true;
    }
    return moved;
}

} // namespace

int TrashRows::moveToTrash(Writer& writer, const QList<qint64>& versionIds)
{
    return move(writer, versionIds, true);
}

int TrashRows::restore(Writer& writer, const QList<qint64>& versionIds)
{
    return move(writer, versionIds, false);
}
