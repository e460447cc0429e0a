#pragma once

#include "Connection.h"
#include "Result.h"

#include <QByteArray>
#include <QList>
#include <QString>

/// The rendered pictures that the databases name: previews and thumbnails.
/// Thread: the connection's. Errors: SQLite::Exception.
namespace ProxyFiles
{

enum class Kind : quint8 {
    Preview,   ///< full size, where the original does not show what the photo shows
    Thumbnail, ///< longest side 1024
    Miniature, ///< longest side 360
};

/// A file that is not there.
struct Missing {
    qint64 version{0}; ///< id of the visible version
    QString fileName;  ///< of the photo's original
    Kind kind{Kind::Preview};
    QString relativePath; ///< to the package
    bool leadsOut{false}; ///< of the package, so that it is no file to be made
};

/// Previews come before the thumbnails that are made from them.
[[nodiscard]] QList<Missing> missing(Connection& connection);

/// Whether the picture can be made anew: a thumbnail from the preview, where the photo has one,
/// else from the original; a preview from an original that is neither RAW nor edited or turned by
/// the user. Only looks at what is there.
[[nodiscard]] bool canBeMade(Connection& connection, const Missing& missing);
/// The bytes of that file. Errors: NotFound, Unreadable, Damaged, Unsupported, OutOfSpace.
[[nodiscard]] Result<QByteArray> make(Connection& connection, const Missing& missing);

} // namespace ProxyFiles
