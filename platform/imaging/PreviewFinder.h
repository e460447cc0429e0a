#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>

#include <optional>

/// The previews inside RAW files. Any thread.
namespace PreviewFinder
{

/// The largest preview, as stored, of those that decode whole and show something; nothing where
/// there is none. Looked for where LibRaw knows of one and in the file's own TIFF directories.
[[nodiscard]] std::optional<QImage> largest(const QByteArray& bytes);

} // namespace PreviewFinder
