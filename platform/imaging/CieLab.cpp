#include "CieLab.h"

#include "SampledFunction.h"

#include <algorithm>
#include <cmath>

namespace
{

/// The cube root and the straight line below it.
double lightnessOf(double part)
{
    return part > 216.0 / 24389.0 ? std::cbrt(part) : (24389.0 / 27.0 * part + 16.0) / 116.0;
}

} // namespace

CieLab CieLab::of(std::span<const float, 3> light)
{
    static const SampledFunction<4096> kTable(lightnessOf);
    const float red = std::clamp(light[0], 0.0F, 1.0F);
    const float green = std::clamp(light[1], 0.0F, 1.0F);
    const float blue = std::clamp(light[2], 0.0F, 1.0F);
    // IEC 61966-2-1, 5.2, each row divided by its sum, which is white's.
    const float x = kTable.at(0.433953F * red + 0.376219F * green + 0.189828F * blue);
    const float y = kTable.at(0.212673F * red + 0.715152F * green + 0.072175F * blue);
    const float z = kTable.at(0.017756F * red + 0.109468F * green + 0.872776F * blue);
    return {.lightness = 116.0F * y - 16.0F,
            .redGreen = 500.0F * (x - y),
            .yellowBlue = 200.0F * (y - z)};
}
