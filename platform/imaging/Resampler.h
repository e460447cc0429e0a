#pragma once

#include "Bitmap.h"
#include "Result.h"

namespace Resampler
{

/// Scales to the given size in pixels (both at least 1) with a Lanczos-3 filter, in linear light,
/// 16 bits (zimg). Any thread. Errors: OutOfSpace (memory), Internal.
[[nodiscard]] Result<Bitmap> scale(const Bitmap& bitmap, QSize size);

} // namespace Resampler
