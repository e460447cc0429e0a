#include "MastersOfPhoto.h"

#include "Queries.h"

QStringList MastersOfPhoto::of(Connection& connection, qint64 versionId)
{
    const QString own =
        Sql::firstText(connection, "SELECT masterUuid FROM RKVersion WHERE modelId=?", versionId);
    QStringList partners{
        Sql::firstText(
            connection, "SELECT rawMasterUuid FROM RKVersion WHERE modelId=?", versionId),
        Sql::firstText(
            connection, "SELECT nonRawMasterUuid FROM RKVersion WHERE modelId=?", versionId),
        Sql::firstText(connection, "SELECT alternateMasterUuid FROM RKMaster WHERE uuid=?", own)};
    partners.removeDuplicates();
    QStringList masters{own};
    for (const QString& partner : partners) {
        const bool isPhotoItself =
            Sql::firstInteger(
                connection,
                "SELECT modelId FROM RKVersion WHERE masterUuid=? AND showInLibrary=1",
                partner)
                .has_value();
        if (!partner.isEmpty() && partner != own && !isPhotoItself) {
            masters.append(partner);
        }
    }
    return masters;
}

bool MastersOfPhoto::isShown(Connection& connection, const QString& master)
{
    // The signs keep SQLite to the index of the master: by that of the trash it would look at
    // nearly every photo.
    for (const char* sql : {"SELECT modelId FROM RKVersion WHERE masterUuid=? AND "
                            "showInLibrary=1 AND +isInTrash=0",
                            "SELECT modelId FROM RKVersion WHERE rawMasterUuid=? AND "
                            "showInLibrary=1 AND +isInTrash=0",
                            "SELECT modelId FROM RKVersion WHERE nonRawMasterUuid=? AND "
                            "showInLibrary=1 AND +isInTrash=0"}) {
        if (Sql::firstInteger(connection, sql, master).has_value()) {
            return true;
        }
    }
    return false;
}

QList<qint64> MastersOfPhoto::hiddenVersions(Connection& connection, const QString& master)
{
    return Sql::integers(
        connection, "SELECT modelId FROM RKVersion WHERE masterUuid=? AND showInLibrary=0", master);
}
