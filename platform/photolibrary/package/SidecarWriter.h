#pragma once

#include "Changes.h"
#include "Connection.h"
#include "Queries.h"
#include "Result.h"
#include "SidecarOutput.h"

#include <QString>
#include <QVariantMap>

/// Makes of each sidecar what the databases say and gives it to an output; see Sidecars::write().
/// Objects that are gone are given as removed. Thread: the connection's. Errors: Unreadable, those
/// of the output; SQLite::Exception.
class SidecarWriter final
{
public:
    SidecarWriter(Connection& connection, SidecarOutput& output)
        : m_connection(connection)
        , m_output(output)
    {
    }

    /// Where the sidecars of a master and of its versions lie: absolute, whether or not it exists.
    /// Empty where the databases tell none in the package.
    [[nodiscard]] static QString folderOfMaster(Connection& connection, const QString& uuid);

    /// Everything that `changes` names. One that cannot be read or put keeps no other from
    /// following; the first error is returned.
    [[nodiscard]] Result<void> put(const Changes& changes);
    [[nodiscard]] Result<void> putMaster(const QString& uuid);
    [[nodiscard]] Result<void> putAlbum(const QString& uuid);
    [[nodiscard]] Result<void> putFolder(const QString& uuid);

private:
    [[nodiscard]] Result<void> putMasterFile(const QString& uuid, const QString& folder);
    void mirrorMaster(QVariantMap& content, const QString& uuid);
    void mirrorAlbum(QVariantMap& content, Sql::Query& row);
    void mirrorPhotos(QVariantMap& content, qint64 album);
    void mirrorCustomOrder(QVariantMap& content, const QString& uuid);

    Connection& m_connection;
    SidecarOutput& m_output;
};
