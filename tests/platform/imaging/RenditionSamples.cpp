#include "RenditionSamples.h"

#include <algorithm>

Bitmap RenditionSamples::applied(const Rendition& rendition, const Bitmap& linear)
{
    const Bitmap light = transformed(linear, rendition.matrix());
    Bitmap picture(light.pixelsWide(), light.pixelsHigh(), Transfer::Srgb);
    for (int y = 0; y < light.pixelsHigh(); ++y) {
        std::ranges::transform(light.row(y), picture.row(y).begin(), [&](quint16 value) {
            return rendition.tone(value);
        });
    }
    return picture;
}
