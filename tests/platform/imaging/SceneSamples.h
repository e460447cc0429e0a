#pragma once

#include "Bitmap.h"

#include <QImage>
#include <QSize>

/// Pictures as full of detail as photos, of the tests' own making.
namespace SceneSamples
{

/// Leaves of all sizes upon each other: edges everywhere, as in photos, at every scale.
[[nodiscard]] Bitmap leaves(QSize size, quint32 seed = 1);

/// A thumbnail of `side` pixels, averaged, or picked of single pixels as some encoders make it.
[[nodiscard]] QImage thumbnailOf(const Bitmap& bitmap, int side, Qt::TransformationMode mode);

} // namespace SceneSamples
