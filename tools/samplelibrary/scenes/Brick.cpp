#include "Noise.h"
#include "Scene.h"

#include <cmath>
#include <numbers>
#include <optional>

namespace
{

constexpr float kBrickHeight = 0.0375F;
constexpr float kBrickWidth = 0.112F;
constexpr float kMortar = 0.0035F;
constexpr float kLeafPitch = 0.026F;

/// Signed distance from a rectangle around (0, 0): negative inside.
float outsideOf(float x, float y, float halfWidth, float halfHeight)
{
    return std::max(std::abs(x) - halfWidth, std::abs(y) - halfHeight);
}

/// A brick wall in late sun with a window in it and ivy climbing up at the right.
class BrickWall final : public Scene
{
public:
    explicit BrickWall(const Framing& framing)
        : m_framing(framing)
        , m_noise(framing.seed)
        , m_windowX(framing.aspect * (0.5F + 0.12F * chance(framing.seed, 1, 0)))
        , m_shadowTop(0.05F + 0.25F * chance(framing.seed, 2, 0))
    {
    }

    [[nodiscard]] Colour at(float x, float y) const override
    {
        // The shadow of the roof opposite falls across the wall.
        const float edge = y - m_shadowTop - x * 0.33F;
        const float sun = smoothStep(-0.02F, 0.02F, edge);
        const Colour light = mix(Colour{0.36F, 0.40F, 0.50F}, Colour{1.05F, 0.98F, 0.86F}, sun);
        if (const auto leaf = ivy(x, y)) {
            return *leaf * light;
        }
        const float windowX = x - m_windowX;
        const float windowY = y - kWindowY;
        if (outsideOf(windowX, windowY, 0.235F, 0.285F) < 0.0F) {
            return window(windowX, windowY, light, sun);
        }
        const bool sill = outsideOf(windowX, windowY - 0.365F, 0.31F, 0.024F) < 0.0F;
        if (sill || outsideOf(windowX, windowY, 0.28F, 0.345F) < 0.0F) {
            return stone(x, y) * light * (sill ? 1.12F : 1.0F) * underLeaves(x, y);
        }
        return bricks(x, y) * light * underLeaves(x, y);
    }

private:
    static constexpr float kWindowY = 0.47F;

    [[nodiscard]] Colour stone(float x, float y) const
    {
        return Colour{0.50F, 0.44F, 0.34F} *
               (1.0F + 0.35F * m_noise.fractal(x * 40.0F, y * 40.0F, 3));
    }

    [[nodiscard]] Colour bricks(float x, float y) const
    {
        const float rowPosition = y / kBrickHeight;
        const int row = static_cast<int>(std::floor(rowPosition));
        // Every second row is set off by half a brick.
        const float columnPosition = x / kBrickWidth + (row % 2 == 0 ? 0.0F : 0.5F);
        const int column = static_cast<int>(std::floor(columnPosition));
        const float wobble = 0.0012F * m_noise.at(x * 70.0F, y * 70.0F);
        const float inY = std::abs(rowPosition - static_cast<float>(row) - 0.5F) * kBrickHeight;
        const float inX =
            std::abs(columnPosition - static_cast<float>(column) - 0.5F) * kBrickWidth;
        const float outside =
            std::max(inX - kBrickWidth / 2.0F, inY - kBrickHeight / 2.0F) + kMortar / 2.0F + wobble;
        const float grain = m_noise.fractal(x * 120.0F, y * 160.0F, 3);
        const quint32 seed = m_framing.seed;
        const float burnt = chance(seed, column, row);
        const Colour clay = mix(Colour{0.19F, 0.050F, 0.028F}, Colour{0.52F, 0.19F, 0.095F}, burnt);
        const float pits = smoothStep(0.45F, 0.6F, m_noise.at(x * 210.0F, y * 210.0F));
        const Colour brick = clay * (1.0F + 0.6F * grain) * (1.0F - 0.55F * pits);
        const Colour mortar = Colour{0.30F, 0.27F, 0.23F} * (1.0F + 0.4F * grain);
        return mix(brick, mortar, smoothStep(-m_framing.pixel, m_framing.pixel, outside));
    }

    [[nodiscard]] Colour window(float x, float y, Colour light, float sun) const
    {
        // Two sashes with two panes each.
        const float paneX = std::abs(x) - 0.1125F;
        const float paneY = std::abs(y) - 0.1375F;
        const float frame = outsideOf(paneX, paneY, 0.093F, 0.118F);
        if (frame > 0.0F) {
            const float grain = m_noise.at(x * 12.0F + y * 140.0F, y * 12.0F + x * 140.0F);
            const float bevel = frame < 0.006F ? 0.75F : 1.0F;
            return Colour{0.055F, 0.22F, 0.21F} * light * (bevel + 0.12F * grain);
        }
        const float roof = 0.06F + 0.07F * m_noise.fractal(x * 5.0F + 9.0F, 3.0F, 3);
        const Colour sky = mix(Colour{0.17F, 0.27F, 0.52F}, Colour{0.50F, 0.60F, 0.76F}, y + 0.5F);
        const Colour mirrored =
            mix(sky, Colour{0.020F, 0.022F, 0.026F}, smoothStep(roof - 0.004F, roof + 0.004F, y));
        const float folds =
            0.6F + 0.4F * std::sin(x * 130.0F + 3.0F * m_noise.at(x * 9.0F, y * 2.0F));
        const float curtain = smoothStep(0.04F, 0.12F, std::abs(x) - 0.02F) * 0.20F * folds;
        const Colour glass =
            (mirrored + Colour{0.36F, 0.32F, 0.26F} * curtain) * (0.55F + 0.45F * sun);
        // The sun itself is caught in one of the lower panes.
        const float glint = std::hypot(x - 0.15F, y - 0.052F);
        return glass + Colour{6.0F, 5.2F, 4.0F} * std::exp(-glint * 190.0F);
    }

    /// How thick the ivy grows at a point: none below 0.
    [[nodiscard]] float growth(float x, float y) const
    {
        const float fromRight = m_framing.aspect - x;
        const float reach = 0.34F + 0.22F * y * y;
        return (reach - fromRight) * 2.6F + 1.1F * m_noise.fractal(x * 4.0F, y * 4.0F + 31.0F, 3);
    }

    /// The ivy's shade on what lies behind.
    [[nodiscard]] float underLeaves(float x, float y) const
    {
        return 1.0F - 0.62F * smoothStep(-0.05F, 0.35F, growth(x - 0.006F, y - 0.009F));
    }

    [[nodiscard]] std::optional<Colour> ivy(float x, float y) const
    {
        if (x < m_framing.aspect - 0.95F) {
            return std::nullopt;
        }
        const int column = static_cast<int>(std::floor(x / kLeafPitch));
        const int row = static_cast<int>(std::floor(y / kLeafPitch));
        // Leaves of lower rows hang over those above them.
        for (int below = 1; below >= -1; --below) {
            for (int beside = -1; beside <= 1; ++beside) {
                if (const auto colour = leaf(x, y, column + beside, row + below)) {
                    return colour;
                }
            }
        }
        return std::nullopt;
    }

    /// The leaf of that cell, if it covers the point.
    [[nodiscard]] std::optional<Colour> leaf(float x, float y, int column, int row) const
    {
        const quint32 luck = scatter(m_framing.seed + 7, column, row);
        const float middleX = (static_cast<float>(column) + chance(luck, 1, 0)) * kLeafPitch;
        const float middleY = (static_cast<float>(row) + chance(luck, 2, 0)) * kLeafPitch;
        const float dx = x - middleX;
        const float dy = y - middleY;
        const float distance = std::hypot(dx, dy);
        const float radius = kLeafPitch * (0.55F + 0.35F * chance(luck, 3, 0));
        if (distance > radius || growth(middleX, middleY) < chance(luck, 4, 0) * 0.7F) {
            return std::nullopt;
        }
        const float turn = std::atan2(dy, dx) + (chance(luck, 5, 0) - 0.5F) * 1.6F;
        const float angle = turn - std::numbers::pi_v<float> / 2.0F;
        const float outline = radius * (0.66F + 0.34F * std::cos(angle * 5.0F));
        if (distance > outline) {
            return std::nullopt;
        }
        const float vein = std::abs(std::sin(angle * 2.5F)) < 0.07F ? 1.35F : 1.0F;
        const Colour green =
            mix(Colour{0.030F, 0.095F, 0.012F}, Colour{0.13F, 0.26F, 0.035F}, chance(luck, 6, 0));
        return green * vein * (0.75F + 0.4F * distance / radius);
    }

    Framing m_framing;
    Noise m_noise;
    float m_windowX;
    float m_shadowTop;
};

} // namespace

std::unique_ptr<const Scene> Scenes::brickWall(const Framing& framing)
{
    return std::make_unique<BrickWall>(framing);
}
