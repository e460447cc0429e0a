#pragma once

#include "ImageProperties.h"
#include "ProvedJpeg.h"
#include "Result.h"

#include <QByteArray>
#include <QSize>
#include <QString>

#include <optional>

/// A picture on its way into a library: the file's bytes, what is made from it, and what it says of
/// itself. Nothing is written yet.
struct PreparedPicture {
    QByteArray bytes;     ///< the file, unchanged
    QByteArray thumbnail; ///< JPEG, upright, longest side at most 1024
    QByteArray miniature; ///< JPEG, upright, longest side at most 360
    QByteArray preview;   ///< JPEG, upright, full size; empty when the file shows upright itself
    QString fileName;
    QString baseName; ///< without extension
    bool raw{false};
    QSize stored; ///< pixels as the file stores them
    QSize shown;  ///< pixels upright
    QSize thumbnailSize;
    QSize miniatureSize;
    int rotation{0};                ///< clockwise degrees from stored to shown
    std::optional<double> latitude; ///< signed degrees
    std::optional<double> longitude;
    double fileCreated{0.0}; ///< seconds since 2001-01-01 UTC
    double fileModified{0.0};
    ImageFacts facts;
};

/// Reads pictures and makes what a library keeps of them. Any thread.
namespace PictureIntake
{

/// Whether a file of that name can be kept: one path component, at most 255 bytes.
[[nodiscard]] bool isUsableName(const QString& name);

/// A JPEG, decoded whole before anything else, unless `proved` tells what its bytes hold. Errors:
/// NotFound, Unreadable, Damaged (no JPEG that decodes), Unsupported (unusable name), OutOfSpace.
[[nodiscard]] Result<PreparedPicture> jpeg(const QString& path,
                                           const QString& fileName,
                                           const std::optional<ProvedJpeg>& proved = std::nullopt);

/// A RAW master with the JPEG that shows it upright in full size.
[[nodiscard]] Result<PreparedPicture>
raw(const QString& path, const QString& fileName, const QByteArray& preview);

/// Only what a library renders of a picture of any readable type but RAW: thumbnail, miniature, and
/// the preview where the file does not show upright itself; with sizes, rotation and facts. Errors:
/// NotFound, Unreadable, Damaged, Unsupported, OutOfSpace.
[[nodiscard]] Result<PreparedPicture> rendered(const QString& path);

} // namespace PictureIntake
