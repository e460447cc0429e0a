#pragma once

#include "Changes.h"
#include "Connection.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QTemporaryDir>

#include <memory>

/// Databases, sidecars and catalogues of a library that iPhoto 9.6.1 itself wrote, copied to a
/// temporary folder and open; none where that library is not at hand.
class PackageCopy final
{
public:
    PackageCopy();

    [[nodiscard]] bool isPresent() const { return m_connection != nullptr; }

    [[nodiscard]] Connection& connection() { return *m_connection; }

    [[nodiscard]] QString package() const;

    /// Every master, album, folder and whatever else a sidecar tells of.
    [[nodiscard]] Changes everything();

    /// Bytes of all sidecars and catalogues, by path below the package.
    [[nodiscard]] QMap<QString, QByteArray> files() const;

    /// Bytes of one file, empty when there is none.
    [[nodiscard]] static QByteArray bytes(const QString& path);

private:
    [[nodiscard]] bool copyTree(const QString& from, const QString& to);

    QTemporaryDir m_folder;
    std::unique_ptr<Connection> m_connection;
};
