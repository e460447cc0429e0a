#include "FoldersInTrash.h"

#include "Queries.h"

QSet<QString> FoldersInTrash::of(Connection& connection)
{
    const QStringList uuids = Sql::texts(
        connection,
        "WITH RECURSIVE gone(uuid) AS (SELECT uuid FROM RKFolder WHERE isInTrash > 0"
        " UNION SELECT f.uuid FROM gone g JOIN RKFolder f ON f.parentFolderUuid = g.uuid)"
        " SELECT uuid FROM gone");
    return {uuids.begin(), uuids.end()};
}
