#pragma once

#include <QByteArray>

#include <span>

/// The lossless process of JPEG (ITU-T T.81, annex H), as DNG files store sensor values.
namespace LosslessJpeg
{

/// One tile of `width` x `height` values, row by row; both even and at least 2. The tile is coded
/// as two interleaved components of half the width, so that each value is predicted from its
/// neighbour of the same filter colour (predictor 1); the Huffman table is made for the tile.
/// Any thread.
[[nodiscard]] QByteArray encode(std::span<const quint16> values, int width, int height);

} // namespace LosslessJpeg
