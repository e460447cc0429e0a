#include "Noise.h"

#include "Colour.h"

#include <cmath>
#include <numbers>

namespace
{

constexpr int kPeriod = 128;

constexpr float fade(float value)
{
    return value * value * value * (value * (value * 6.0F - 15.0F) + 10.0F);
}

} // namespace

Noise::Noise(quint32 seed)
{
    m_gradients.reserve(size_t{kPeriod} * kPeriod);
    for (int y = 0; y < kPeriod; ++y) {
        for (int x = 0; x < kPeriod; ++x) {
            const float angle = chance(seed, x, y) * 2.0F * std::numbers::pi_v<float>;
            // The factor brings the extremes of 2D gradient noise (0.7) to about 1.
            m_gradients.push_back({std::cos(angle) * 1.4F, std::sin(angle) * 1.4F});
        }
    }
}

float Noise::at(float x, float y) const
{
    const float left = std::floor(x);
    const float top = std::floor(y);
    const auto column = static_cast<quint32>(static_cast<int>(left)) % kPeriod;
    const auto row = static_cast<quint32>(static_cast<int>(top)) % kPeriod;
    const auto nextColumn = (column + 1) % kPeriod;
    const auto nextRow = (row + 1) % kPeriod;
    const float dx = x - left;
    const float dy = y - top;
    const auto slope = [this](quint32 gridX, quint32 gridY, float offsetX, float offsetY) {
        const Gradient& gradient = m_gradients[gridY * kPeriod + gridX];
        return gradient.x * offsetX + gradient.y * offsetY;
    };
    const float shareX = fade(dx);
    const float upper =
        mix(slope(column, row, dx, dy), slope(nextColumn, row, dx - 1.0F, dy), shareX);
    const float lower = mix(slope(column, nextRow, dx, dy - 1.0F),
                            slope(nextColumn, nextRow, dx - 1.0F, dy - 1.0F),
                            shareX);
    return mix(upper, lower, fade(dy));
}

float Noise::fractal(float x, float y, int octaves) const
{
    float sum = 0.0F;
    float strength = 0.5F;
    for (int octave = 0; octave < octaves; ++octave) {
        sum += at(x, y) * strength;
        // The shift keeps the grids of the layers from coinciding.
        x = x * 2.0F + 17.3F;
        y = y * 2.0F + 5.7F;
        strength *= 0.5F;
    }
    return sum;
}
