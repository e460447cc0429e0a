#pragma once

#include "Writer.h"

#include <QString>

#include <optional>

/// What Properties.apdb holds of a photo beyond its row: texts and numbers by key. Texts are shared
/// rows of their own; a second, lower-case one serves the search.
/// Errors: SQLite::Exception.
namespace Properties
{

/// The three tables of texts.
enum class Texts : quint8 {
    Iptc,  ///< of the file or the user: "Caption/Abstract", "Byline"
    Other, ///< of the library: "FileName", "VersionName"
    Exif,  ///< of the camera: "Model"
};

/// Replaces the text of a version. An empty one stays as an empty text.
void setString(
    Writer& writer, Texts kind, qint64 versionId, const QString& key, const QString& text);
void remove(Writer& writer, Texts kind, qint64 versionId, const QString& key);
/// Replaces the number of a version among those of the camera: "Altitude", "CaptureYear".
void setNumber(Writer& writer, qint64 versionId, const QString& key, double number);
void removeNumber(Writer& writer, qint64 versionId, const QString& key);
/// Replaces a number of the library's own, such as "FileSize".
void setOtherNumber(Writer& writer, qint64 versionId, const QString& key, double number);
/// Deletes everything of a version; for a photo that is deleted for good.
void removeAll(Writer& writer, qint64 versionId);

/// Null when there is none.
[[nodiscard]] QString
text(Connection& connection, Texts kind, qint64 versionId, const QString& key);
[[nodiscard]] std::optional<double>
number(Connection& connection, qint64 versionId, const QString& key);

} // namespace Properties
