#pragma once

#include "Rendition.h"

/// Renditions as their definition says, without any shortcut of the program's.
namespace RenditionSamples
{

/// What the rendition makes of linear light, in 16 bits, sRGB encoded.
[[nodiscard]] Bitmap applied(const Rendition& rendition, const Bitmap& linear);

} // namespace RenditionSamples
