#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>

#include <optional>

/// The previews inside RAW files. Any thread.
namespace PreviewFinder
{

/// The largest preview, as it lies in the file, of those that decode whole and show something;
/// nothing where there is none. Looked for where LibRaw knows of one and in the file's own TIFF
/// directories. A large one is averaged down, to no less than 1024 pixels on its longest
/// side.
[[nodiscard]] std::optional<QImage> largest(const QByteArray& bytes);

} // namespace PreviewFinder
