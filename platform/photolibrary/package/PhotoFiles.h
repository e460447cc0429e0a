#pragma once

#include "Connection.h"
#include "TrashRows.h"

#include <QSet>
#include <QStringList>

/// Gathers the files of photos that are being deleted: names them while the rows still exist, and
/// at the end leaves out whatever a remaining photo uses.
class PhotoFiles final
{
public:
    explicit PhotoFiles(Connection& connection);

    /// Its rendered pictures. While its row exists.
    void addVersion(qint64 versionId);
    /// The sidecar of the version with that number, which is gone while its master stays.
    void addVersionSidecar(const QString& master, qint64 versionNumber);
    /// Its original, unless that lies outside the package, and its sidecars. While its row exists.
    void addMaster(const QString& uuid);

    /// After all rows are deleted.
    [[nodiscard]] TrashRows::Leftovers leftovers();

private:
    /// Whether a path of the package is left, since it leads out of it.
    [[nodiscard]] bool isKeptOutside(const QString& path) const;
    /// The group of a master's import, by which its sidecars lie; empty for one that leads out.
    [[nodiscard]] QString groupOf(const QString& master) const;
    void addRendered(const QString& root, const QString& path, const QString& version);

    Connection& m_connection;
    QStringList m_sidecarFolders;
    QStringList m_sidecars; ///< of single versions
    QStringList m_renderedFolders;
    QStringList m_masters;  ///< relative to Masters
    QSet<QString> m_groups; ///< "YYYY/MM/DD/STAMP"
};
