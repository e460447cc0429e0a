#include "CieLab.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace
{

/// The cube root and the straight line below it, at equal distances.
class LightnessTable final
{
public:
    LightnessTable()
    {
        for (std::size_t i = 0; i < m_values.size(); ++i) {
            const double part = static_cast<double>(i) / kSteps;
            m_values.at(i) = static_cast<float>(
                part > 216.0 / 24389.0 ? std::cbrt(part) : (24389.0 / 27.0 * part + 16.0) / 116.0);
        }
    }

    [[nodiscard]] float at(float part) const
    {
        const float place = std::clamp(part, 0.0F, 1.0F) * kSteps;
        const auto below = std::min(static_cast<std::size_t>(place), kSteps - 1);
        const float from = m_values[below];
        return from + (m_values[below + 1] - from) * (place - static_cast<float>(below));
    }

private:
    static constexpr std::size_t kSteps = 4096;
    std::array<float, kSteps + 1> m_values{};
};

} // namespace

CieLab CieLab::of(std::span<const float, 3> light)
{
    static const LightnessTable kTable;
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
