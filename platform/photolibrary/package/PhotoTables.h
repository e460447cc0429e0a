#pragma once

#include "Connection.h"
#include "Volumes.h"

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>

/// Names by photo: keywords or albums.
using NamesByPhoto = QHash<qint64, QStringList>;

/// What a listing needs of a row of RKMaster.
struct MasterRow {
    QString fileName;
    QString imagePath;
    bool isReference{false};
    bool isRaw{false};
    bool isMovie{false};
    QString originalVersionUuid;
    QString volumeUuid;
};

/// The same of RKFolder.
struct EventRow {
    qint64 id{0};
    QString name;
    std::optional<double> date; ///< of its first photo
};

/// The same of RKImageProxyState.
struct ProxyRow {
    bool hasPreview{false}; ///< also where its path is of an unexpected type
    QString preview;
    QString miniature;
};

/// What the rows of photos refer to, by uuid or by id: each table is read once from begin to end
/// and joined in memory, since looking up every photo's rows in SQLite's indexes takes thrice as
/// long. A value type.
struct PhotoTables {
    QHash<QString, MasterRow> masters;
    QHash<QString, std::optional<double>> rotationsAsImported;
    QHash<QString, EventRow> events;
    QHash<QString, ProxyRow> proxies;
    QHash<qint64, QString> comments;
    QHash<qint64, double> altitudes;
    NamesByPhoto keywords;
    QSet<qint64> keywordLosers;
    NamesByPhoto albums;
    QHash<QString, Volumes::Volume> volumes;

    /// As of now; errors: SQLite::Exception.
    [[nodiscard]] static PhotoTables read(Connection& connection);
};
