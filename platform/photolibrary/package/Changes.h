#pragma once

#include <QSet>
#include <QString>

/// What a transaction changed that property lists outside the databases tell as well. They are
/// written again after the commit.
struct Changes {
    QSet<QString> masters; ///< uuids; stands for the master and all its versions
    QSet<QString> albums;  ///< uuids
    QSet<QString> folders; ///< uuids of folders and events
    bool keywords{false};
    bool adminData{false};
    bool catalogues{false};

    [[nodiscard]] bool isEmpty() const
    {
        return masters.isEmpty() && albums.isEmpty() && folders.isEmpty() && !keywords &&
               !adminData && !catalogues;
    }

    void unite(const Changes& other)
    {
        masters.unite(other.masters);
        albums.unite(other.albums);
        folders.unite(other.folders);
        keywords = keywords || other.keywords;
        adminData = adminData || other.adminData;
        catalogues = catalogues || other.catalogues;
    }
};
