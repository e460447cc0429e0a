#pragma once

#include "Result.h"

#include <QImage>
#include <QSize>
#include <QString>

/// Picture files as images to look at. Any thread, several at once.
namespace PictureFile
{

/// Which side of the stored pixels is up.
enum class Turn : quint8 {
    AsTagged, ///< the file's orientation tag is obeyed
    AsStored, ///< the pixels are upright already, whatever a tag says
};

/// The picture in sRGB, 32 bits a pixel, fitted into `within` (pixels) with its aspect kept; never
/// enlarged. RAW photos look as their previews do.
/// Errors name the file: NotFound, Unreadable, Unsupported, Damaged, OutOfSpace (memory).
[[nodiscard]] Result<QImage> read(const QString& path, QSize within, Turn turn);

} // namespace PictureFile
