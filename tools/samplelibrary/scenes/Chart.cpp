#include "Noise.h"
#include "Scene.h"

#include <array>
#include <cmath>
#include <numbers>

namespace
{

constexpr int kColumns = 6;
constexpr float kPatchPitch = 0.135F;
constexpr float kPatchSide = 0.115F;
constexpr float kPatchLeft = 0.13F;
constexpr float kPatchTop = 0.15F;
constexpr Colour kBackground{0.165F, 0.165F, 0.165F};

constexpr Colour grey(float level)
{
    return {level, level, level};
}

/// The colours of everyday things, of light, of print, and greys; linear light, none saturated
/// beyond what the camera can hold.
constexpr std::array<Colour, Scenes::kChartPatches> kPatches{{
    {0.155F, 0.082F, 0.055F},
    {0.520F, 0.290F, 0.210F},
    {0.110F, 0.190F, 0.330F},
    {0.085F, 0.135F, 0.045F},
    {0.230F, 0.200F, 0.430F},
    {0.130F, 0.500F, 0.410F},
    {0.680F, 0.195F, 0.030F},
    {0.065F, 0.100F, 0.370F},
    {0.540F, 0.082F, 0.110F},
    {0.100F, 0.042F, 0.140F},
    {0.340F, 0.500F, 0.045F},
    {0.740F, 0.360F, 0.030F},
    {0.034F, 0.046F, 0.280F},
    {0.055F, 0.290F, 0.062F},
    {0.420F, 0.030F, 0.042F},
    {0.800F, 0.590F, 0.020F},
    {0.490F, 0.085F, 0.290F},
    {0.030F, 0.240F, 0.380F},
    grey(0.820F),
    grey(0.570F),
    grey(0.350F),
    grey(0.190F),
    grey(0.085F),
    grey(0.028F),
}};

/// Full colours along a circle of hues.
Colour hue(float turn)
{
    const auto channel = [turn](float shift) {
        return 0.06F +
               0.5F * (0.5F + 0.5F * std::cos((turn - shift) * 2.0F * std::numbers::pi_v<float>));
    };
    return {channel(0.0F), channel(1.0F / 3.0F), channel(2.0F / 3.0F)};
}

constexpr bool within(float value, float first, float last)
{
    return value >= first && value < last;
}

/// A target for trying a camera out: patches of colour, a star, rings, ramps, a slanted edge; its
/// upper left corner lies in full light and is clipped.
class Chart final : public Scene
{
public:
    explicit Chart(const Framing& framing)
        : m_framing(framing)
        , m_paper(framing.seed)
    {
    }

    [[nodiscard]] Colour at(float x, float y) const override
    {
        // The paper's grain is faint; it keeps the flat parts from being perfectly flat.
        const float grain = 1.0F + 0.01F * m_paper.at(x * 90.0F, y * 90.0F);
        return printed(x, y) * grain;
    }

private:
    [[nodiscard]] Colour printed(float x, float y) const
    {
        const float aspect = m_framing.aspect;
        if (x < 0.05F && y < 0.05F) {
            return grey(1.6F);
        }
        if (x < 0.03F || y < 0.03F || x > aspect - 0.03F || y > 0.97F) {
            const auto square = static_cast<int>(x / 0.015F) + static_cast<int>(y / 0.015F);
            return square % 2 == 0 ? grey(0.84F) : grey(0.02F);
        }
        if (const auto column =
                static_cast<int>((x - kPatchLeft + kPatchSide / 2.0F) / kPatchPitch),
            row = static_cast<int>((y - kPatchTop + kPatchSide / 2.0F) / kPatchPitch);
            within(x, kPatchLeft - kPatchSide / 2.0F, kPatchLeft + kPatchPitch * kColumns) &&
            within(y, kPatchTop - kPatchSide / 2.0F, kPatchTop + kPatchPitch * 4.0F) &&
            column < kColumns && row < 4) {
            const Scenes::ChartPatch patch = Scenes::chartPatch(row * kColumns + column);
            if (std::abs(x - patch.x) < kPatchSide / 2.0F &&
                std::abs(y - patch.y) < kPatchSide / 2.0F) {
                return patch.colour;
            }
        }
        return figures(x, y);
    }

    [[nodiscard]] Colour figures(float x, float y) const
    {
        const float middle =
            (kPatchLeft + kPatchPitch * kColumns + m_framing.aspect) / 2.0F - 0.02F;
        const float distanceStar = std::hypot(x - middle, y - 0.3F);
        if (distanceStar < 0.2F) {
            const float turn = std::atan2(y - 0.3F, x - middle);
            const float edge = 2.0F * m_framing.pixel * 18.0F / std::max(distanceStar, 0.002F);
            return grey(mix(0.02F, 0.82F, smoothStep(-edge, edge, std::sin(turn * 36.0F))));
        }
        const float distanceRings = std::hypot(x - middle, y - 0.73F);
        if (distanceRings < 0.2F) {
            // A zone plate: the rings grow finer outwards.
            return grey(0.35F + 0.3F * std::cos(distanceRings * distanceRings * 3000.0F));
        }
        if (within(x, 0.07F, 0.33F) && within(y, 0.66F, 0.92F)) {
            const float alongX =
                (x - 0.2F) * 0.9962F + (y - 0.79F) * 0.0872F; // turned by 5 degrees
            const float alongY = (y - 0.79F) * 0.9962F - (x - 0.2F) * 0.0872F;
            const float outside = std::max(std::abs(alongX), std::abs(alongY)) - 0.075F;
            return grey(mix(0.045F, 0.7F, smoothStep(-m_framing.pixel, m_framing.pixel, outside)));
        }
        if (within(x, 0.38F, 0.95F)) {
            const float share = (x - 0.38F) / 0.57F;
            if (within(y, 0.68F, 0.78F)) {
                return grey(share * share * 0.9F);
            }
            if (within(y, 0.81F, 0.91F)) {
                return hue(share);
            }
        }
        return kBackground;
    }

    Framing m_framing;
    Noise m_paper;
};

} // namespace

std::unique_ptr<const Scene> Scenes::chart(const Framing& framing)
{
    return std::make_unique<Chart>(framing);
}

Scenes::ChartPatch Scenes::chartPatch(int index)
{
    const int row = index / kColumns;
    const int column = index % kColumns;
    return {.x = kPatchLeft + kPatchPitch * static_cast<float>(column),
            .y = kPatchTop + kPatchPitch * static_cast<float>(row),
            .side = kPatchSide,
            .colour = kPatches.at(static_cast<size_t>(index))};
}
