#pragma once

#include "PictureIntake.h"
#include "Writer.h"

#include <QDateTime>
#include <QString>

/// The names that an imported picture gets in the library.
struct ImportIdentity {
    QString masterUuid;
    QString originalUuid; ///< of Version-0, the picture as imported
    QString versionUuid;  ///< of Version-1, the photo
    QDateTime stamp;      ///< moment of the import group, local time
    QString eventUuid;

    // Paths relative to Masters, Thumbnails and Previews.
    [[nodiscard]] QString masterPath(const PreparedPicture& picture) const;
    [[nodiscard]] QString thumbnailPath(const PreparedPicture& picture) const; ///< 1024 pixels
    [[nodiscard]] QString miniaturePath(const PreparedPicture& picture) const; ///< 360 pixels
    [[nodiscard]] QString previewPath(const PreparedPicture& picture) const;
};

/// The rows of an import. Errors: SQLite::Exception.
namespace ImportRows
{

/// Inserts import group, master, both versions, their properties and keywords and the proxy state,
/// all indexes and statistics in step. Returns the photo's id (Version-1).
[[nodiscard]] qint64
insert(Writer& writer, const PreparedPicture& picture, const ImportIdentity& identity);

} // namespace ImportRows
