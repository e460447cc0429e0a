#pragma once

#include "Result.h"

#include <QByteArray>

struct heif_image_handle;

/// The colours of a picture in a HEIF file. Any thread.
namespace HeifColors
{

/// The ICC profile of the picture: its own, else one made of the primaries and the curve that it
/// names (ISO/IEC 23091-2, tables 2 and 3); empty where it is sRGB or says nothing. Errors:
/// Unsupported, for light that no screen of 8 bits shows as it is meant (PQ, HLG, logarithms).
[[nodiscard]] Result<QByteArray> profileOf(const heif_image_handle& handle);

} // namespace HeifColors
