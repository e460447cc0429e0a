#include "AlbumTree.h"

#include "FoldersInTrash.h"
#include "PropertyList.h"
#include "Queries.h"
#include "Schema.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

/// Deeper nesting is no tree that the application made.
constexpr int kDeepest = 64;

/// The value under `key` in the first dictionary of a keyed archive that has it.
QString archivedText(const QByteArray& archive, const QString& key)
{
    const Result<QVariant> parsed = PropertyList::parse(archive);
    if (!parsed.ok()) {
        return {};
    }
    const QVariantList objects = parsed.value().toMap().value(u"$objects"_s).toList();
    const auto object = [&objects](const QVariant& reference) {
        const quint64 index = reference.value<PropertyList::Uid>().value;
        return index < static_cast<quint64>(objects.size())
                   ? objects.at(static_cast<qsizetype>(index))
                   : QVariant();
    };
    for (const QVariant& item : objects) {
        const QVariantMap dictionary = item.toMap();
        const QVariantList keys = dictionary.value(u"NS.keys"_s).toList();
        const QVariantList values = dictionary.value(u"NS.objects"_s).toList();
        for (qsizetype index = 0; index < std::min(keys.size(), values.size()); ++index) {
            if (object(keys.at(index)).toString() == key) {
                return object(values.at(index)).toString();
            }
        }
    }
    return {};
}

} // namespace

AlbumTree::AlbumTree(Connection& connection, Members members, CarriedOver carriedOver)
    : m_connection(connection)
    , m_members(std::move(members))
    , m_carriedOver(std::move(carriedOver))
{
}

QList<CatalogueAlbum> AlbumTree::read()
{
    readFolders();
    readAlbums();
    readOrder();
    append(u"TopLevelAlbums"_s, std::nullopt, 0);
    appendRest();
    return m_albums;
}

void AlbumTree::readAlbums()
{
    const QSet<QString> foldersInTrash = FoldersInTrash::of(m_connection);
    Sql::Query row(m_connection,
                   "SELECT modelId, uuid, name, folderUuid, albumSubclass, viewData FROM RKAlbum"
                   " WHERE albumSubclass IN (2, 3) AND isInTrash = 0 AND isHidden = 0"
                   " AND isMagic = 0 AND folderUuid <> '' AND uuid NOT IN ('lastImportAlbum',"
                   " 'rotationAlbum') ORDER BY modelId");
    while (row.next()) {
        Node node;
        node.album.id = row.column(0).getInt64();
        node.album.guid = Sql::text(row.column(1));
        node.album.name = Sql::text(row.column(2));
        node.container = Sql::text(row.column(3));
        if (foldersInTrash.contains(node.container)) {
            continue;
        }
        const std::optional<OldCatalogue::Album> old = m_carriedOver(node.album.guid);
        if (row.column(4).getInt() == Schema::kSubclassOfQueries) {
            if (!old) {
                continue; // nobody here can tell what its rule finds
            }
            node.album.kind = CatalogueAlbum::Kind::Query;
            node.album.type = old->type.isEmpty() ? u"Smart"_s : old->type;
            node.album.photos = old->photos;
        } else {
            node.album.type = old && !old->type.isEmpty() ? old->type : u"Regular"_s;
            node.album.photos = m_members(node.album.id);
            node.album.songPath = songPath(Sql::blob(row.column(5)));
        }
        m_known.append(node.album.guid);
        m_nodes.insert(node.album.guid, node);
    }
}

void AlbumTree::readFolders()
{
    Sql::Query row(m_connection,
                   "SELECT a.modelId, f.uuid, f.name, f.parentFolderUuid FROM RKFolder f"
                   " LEFT JOIN RKAlbum a ON a.uuid = f.implicitAlbumUuid WHERE f.folderType = 1"
                   " AND f.isMagic = 0 AND f.isInTrash = 0 AND f.isHidden = 0 ORDER BY f.modelId");
    while (row.next()) {
        Node node;
        node.isFolder = true;
        node.album.kind = CatalogueAlbum::Kind::Folder;
        node.album.type = u"Folder"_s;
        node.album.id = row.column(0).getInt64();
        node.album.guid = Sql::text(row.column(1));
        node.album.name = Sql::text(row.column(2));
        node.container = Sql::text(row.column(3));
        m_known.append(node.album.guid);
        m_nodes.insert(node.album.guid, node);
    }
}

void AlbumTree::readOrder()
{
    for (const QString& guid : std::as_const(m_known)) {
        m_children[m_nodes.value(guid).container].append(guid);
    }
    Sql::Query row(m_connection,
                   "SELECT containerUuid, objectUuid FROM RKCustomSortOrder"
                   " WHERE purpose = 'default' ORDER BY orderNumber, modelId");
    while (row.next()) {
        m_order[Sql::text(row.column(0))].append(Sql::text(row.column(1)));
    }
}

QStringList AlbumTree::childrenOf(const QString& container) const
{
    const QStringList held = m_children.value(container);
    QSet<QString> left(held.begin(), held.end());
    QStringList children;
    for (const QStringList& guids : {m_order.value(container), held}) {
        for (const QString& guid : guids) {
            if (left.remove(guid)) {
                children.append(guid);
            }
        }
    }
    return children;
}

QSet<qint64> AlbumTree::append(const QString& container, std::optional<qint64> parent, int depth)
{
    QSet<qint64> all;
    const QStringList children = childrenOf(container);
    for (const QString& guid : children) {
        if (m_done.contains(guid) || depth > kDeepest) {
            continue;
        }
        m_done.insert(guid);
        const Node node = m_nodes.value(guid);
        const qsizetype place = m_albums.size();
        m_albums.append(node.album);
        m_albums[place].parent = parent;
        if (node.isFolder) {
            const QSet<qint64> photos = append(guid, node.album.id, depth + 1);
            m_albums[place].photos = QList<qint64>(photos.begin(), photos.end());
        }
        const QList<qint64>& photos = m_albums.at(place).photos;
        all.unite(QSet<qint64>(photos.begin(), photos.end()));
    }
    return all;
}

void AlbumTree::appendRest()
{
    // Albums that lie elsewhere than below the top level, published ones for instance.
    for (const QString& guid : std::as_const(m_known)) {
        const Node node = m_nodes.value(guid);
        if (!node.isFolder && !m_done.contains(guid)) {
            m_albums.append(node.album);
        }
    }
}

QString AlbumTree::songPath(const QByteArray& viewData) const
{
    return viewData.isEmpty() ? QString() : archivedText(viewData, u"Song_Path"_s);
}
