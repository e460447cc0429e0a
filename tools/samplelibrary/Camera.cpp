#include "Camera.h"

#include "Noise.h"

#include <algorithm>
#include <cmath>

namespace
{

using Matrix = std::array<std::array<float, 3>, 3>;

/// From linear sRGB to CIE XYZ, D65 (IEC 61966-2-1).
constexpr Matrix kXyzOfLight{
    {{0.4124F, 0.3576F, 0.1805F}, {0.2126F, 0.7152F, 0.0722F}, {0.0193F, 0.1192F, 0.9505F}}};

constexpr Matrix sensorOfLight()
{
    Matrix product{};
    for (size_t row = 0; row < 3; ++row) {
        for (size_t column = 0; column < 3; ++column) {
            for (size_t i = 0; i < 3; ++i) {
                const auto factor =
                    static_cast<float>(Sensor::kColourMatrix[row * 3 + i]) / 10000.0F;
                product[row][column] += factor * kXyzOfLight[i][column];
            }
        }
    }
    return product;
}

/// Electrons that fill a pixel at ISO 100, and the read noise in electrons: a good sensor.
constexpr float kFullWell = 40000.0F;
constexpr float kReadNoise = 4.0F;
constexpr int kNormalBits = 12;

} // namespace

Colour Sensor::filtered(Colour light)
{
    static constexpr Matrix kMatrix = sensorOfLight();
    const auto filter = [light](const std::array<float, 3>& row) {
        return row[0] * light.red + row[1] * light.green + row[2] * light.blue;
    };
    return {filter(kMatrix[0]), filter(kMatrix[1]), filter(kMatrix[2])};
}

Exposure::Exposure(int iso, quint32 seed)
    : m_fullWell(kFullWell * 100.0F / static_cast<float>(iso))
    , m_readVariance(kReadNoise * kReadNoise)
    , m_seed(seed)
{
    // The sum of twelve even chances is close to normal and has the deviation 1.
    m_normal.reserve(size_t{1} << kNormalBits);
    for (int i = 0; i < 1 << kNormalBits; ++i) {
        float sum = -6.0F;
        for (int part = 0; part < 12; ++part) {
            sum += chance(0xCA3E7A, i, part);
        }
        m_normal.push_back(sum);
    }
}

quint16 Exposure::valueOf(float signal, quint32 position) const
{
    constexpr auto kRange = static_cast<float>(Sensor::kWhiteLevel - Sensor::kBlackLevel);
    const float lit = std::max(signal, 0.0F);
    const float electrons = lit * m_fullWell;
    const float normal =
        m_normal[scatter(m_seed, static_cast<int>(position), 0) >> (32 - kNormalBits)];
    const float noisy = lit + normal * std::sqrt(electrons + m_readVariance) / m_fullWell;
    const float value = static_cast<float>(Sensor::kBlackLevel) + noisy * kRange + 0.5F;
    return static_cast<quint16>(std::clamp(value, 0.0F, static_cast<float>(Sensor::kWhiteLevel)));
}
