#pragma once

#include "Colour.h"

#include <QtGlobal>

#include <array>
#include <vector>

/// The sensor of the simulated camera: red, green, green, blue filters, 14 bits. A green pixel is
/// full at light of 1; the red and blue filters let less through.
namespace Sensor
{

inline constexpr int kBlackLevel = 512;
inline constexpr int kWhiteLevel = 16383;
/// Columns at the left and rows at the top that light does not reach.
inline constexpr int kMaskedColumns = 16;
inline constexpr int kMaskedRows = 8;
/// Lit pixels around the picture proper; even, so that the filters keep their order.
inline constexpr int kMargin = 8;

/// From CIE XYZ under D65 to the camera's own primaries, in ten thousandths, row by row: a
/// plausible matrix for filters of this kind. White (0.9505, 1, 1.089) comes out as kNeutral.
inline constexpr std::array<int, 9> kColourMatrix{
    9250, -1778, -1390, -2774, 11902, 675, -956, 2016, 4953};
/// What the sensor sees of white, in hundredths.
inline constexpr std::array<int, 3> kNeutral{55, 100, 65};

/// Light as the three filters let it through; may be slightly negative for saturated colours.
[[nodiscard]] Colour filtered(Colour light);

} // namespace Sensor

/// Turns the light of a pixel into the value that the camera stores: shot noise of the photons and
/// read noise of the circuits, then 14 bits. Immutable once made: any thread.
class Exposure final
{
public:
    /// `iso` 100 or more: the higher, the fewer photons make a full pixel.
    Exposure(int iso, quint32 seed);

    /// `signal`: share of a full pixel. `position` picks the noise: the same position, the same
    /// noise.
    [[nodiscard]] quint16 valueOf(float signal, quint32 position) const;

private:
    std::vector<float> m_normal; ///< normally distributed, deviation 1
    float m_fullWell;            ///< electrons in a full pixel
    float m_readVariance;        ///< electrons squared
    quint32 m_seed;
};
