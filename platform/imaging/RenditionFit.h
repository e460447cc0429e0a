#pragma once

#include "Bitmap.h"
#include "Rendition.h"

#include <QImage>
#include <QList>

/// What is known of a sensor's colours.
struct SensorColors {
    /// From the sensor's colours, white balanced, to linear sRGB.
    ColorMatrix toSrgb{kIdentityMatrix};
    /// By how much the maker's own software lightens its pictures (DNG's BaselineExposure).
    double stops{0.0};
};

/// Finds how a photo has to be rendered to look like a picture that was made of it. Any thread;
/// deterministic.
namespace RenditionFit
{

/// `light`: the photo as it was decoded, Transfer::Linear, averaged down (ReducedPicture).
/// `references`: pictures that may show it, turned in any way.
///
/// The largest reference that shows the scene in colour is followed, in exposure, a tone curve, two
/// gains of the sensor's colours and a saturation, in this order of trust. Places that differ from
/// it otherwise, by the reference's sharpening, retouching or cropping, have little weight. Where
/// no reference shows the scene in colour it is the neutral rendition, whatever the photo shows.
[[nodiscard]] Rendition
of(const Bitmap& light, const SensorColors& colors, const QList<QImage>& references);

} // namespace RenditionFit
