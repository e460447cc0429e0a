#pragma once

#include "CatalogueModel.h"
#include "Connection.h"
#include "OldCatalogue.h"

#include <QHash>
#include <QSet>

#include <functional>

/// Reads the user's albums and folders in the order of the sidebar: depth first, each container by
/// its own order, what that order does not name last. Errors: SQLite::Exception.
class AlbumTree final
{
public:
    /// The visible photos of an album, by date.
    using Members = std::function<QList<qint64>(qint64 album)>;
    /// What the catalogue before tells of an album: what a rule found is not in the databases.
    using CarriedOver = std::function<std::optional<OldCatalogue::Album>(const QString& guid)>;

    AlbumTree(Connection& connection, Members members, CarriedOver carriedOver);

    /// Photos of folders are those of all that they hold, each once, in no order.
    [[nodiscard]] QList<CatalogueAlbum> read();

private:
    /// A row of an album, or of a folder with its implicit album.
    struct Node {
        CatalogueAlbum album;
        QString container;
        bool isFolder{false};
    };

    void readAlbums();
    void readFolders();
    void readOrder();
    /// Appends what a container holds; returns its photos.
    QSet<qint64> append(const QString& container, std::optional<qint64> parent, int depth);
    void appendRest();
    [[nodiscard]] QStringList childrenOf(const QString& container) const;
    [[nodiscard]] QString songPath(const QByteArray& viewData) const;

    Connection& m_connection;
    Members m_members;
    CarriedOver m_carriedOver;
    QHash<QString, Node> m_nodes;
    QStringList m_known; ///< keys of m_nodes, oldest first
    QHash<QString, QStringList> m_order;
    QHash<QString, QStringList> m_children;
    QSet<QString> m_done;
    QList<CatalogueAlbum> m_albums;
};
