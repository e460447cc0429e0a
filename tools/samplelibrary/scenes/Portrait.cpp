#include "Noise.h"
#include "Scene.h"

#include <array>
#include <cmath>
#include <numbers>

namespace
{

/// 0 in the middle of an ellipse, 1 on its rim.
float reachIn(float x, float y, float halfWidth, float halfHeight)
{
    return std::hypot(x / halfWidth, y / halfHeight);
}

/// A girl in a red pullover in a garden, lights blurred behind her. Drawn about the middle of
/// the picture: x from there, y from the picture's top, both in its heights.
class Portrait final : public Scene
{
public:
    explicit Portrait(const Framing& framing)
        : m_framing(framing)
        , m_noise(framing.seed)
        , m_iris(kIrises[framing.seed % kIrises.size()])
    {
    }

    [[nodiscard]] Colour at(float pictureX, float y) const override
    {
        const float x = pictureX - m_framing.aspect / 2.0F;
        if (const float reach = hairReach(x, y); reach < 1.0F && !isFace(x, y)) {
            if (y < 0.42F || std::abs(x) > 0.085F) {
                return hair(x, y, reach);
            }
        }
        if (isFace(x, y)) {
            return face(x, y);
        }
        if (isPullover(x, y)) {
            return wool(x, y);
        }
        if (std::abs(x) < 0.085F && y > 0.45F && y < 0.8F) {
            // The neck, in the shadow of the chin.
            const float lit =
                (0.95F - 1.6F * std::abs(x + 0.02F) / 0.17F * 0.5F) * smoothStep(0.56F, 0.74F, y);
            return kSkin * (0.28F + 0.5F * lit);
        }
        return garden(pictureX, y);
    }

private:
    static constexpr Colour kSkin{0.70F, 0.40F, 0.29F};
    static constexpr std::array<Colour, 3> kIrises{
        {{0.05F, 0.13F, 0.11F}, {0.07F, 0.14F, 0.28F}, {0.12F, 0.06F, 0.025F}}};
    static constexpr float kFaceY = 0.43F;

    [[nodiscard]] static bool isFace(float x, float y)
    {
        // The lower half tapers to the chin; the upper one ends at the fringe.
        const float narrowing =
            y > kFaceY ? 1.0F - 0.33F * smoothStep(kFaceY, kFaceY + 0.21F, y) : 1.0F;
        const float fringe = 0.295F + 0.012F * std::cos(x * 24.0F);
        return y > fringe && reachIn(x, y - kFaceY, 0.155F * narrowing, 0.205F) < 1.0F;
    }

    [[nodiscard]] static float hairReach(float x, float y)
    {
        if (y < 0.37F) {
            return reachIn(x, y - 0.37F, 0.195F, 0.205F);
        }
        const float halfWidth = 0.195F + 0.02F * smoothStep(0.37F, 0.6F, y);
        return y < 0.655F - 0.12F * std::abs(x) ? std::abs(x) / halfWidth : 2.0F;
    }

    [[nodiscard]] Colour hair(float x, float y, float reach) const
    {
        // Strands fan out from the crown and then hang down.
        const float strand = x / (0.12F + std::min(y, 0.45F));
        const float fine = m_noise.fractal(strand * 60.0F, y * 2.5F, 3);
        const float gloss = std::exp(-std::pow((y - 0.255F + 0.25F * x * x * 4.0F) * 17.0F, 2.0F));
        const Colour blond =
            mix(Colour{0.15F, 0.070F, 0.018F}, Colour{0.60F, 0.37F, 0.13F}, 0.5F + 0.85F * fine);
        return blond * ((0.62F + 0.55F * gloss) * (1.12F - 0.5F * reach * reach));
    }

    [[nodiscard]] Colour face(float x, float y) const
    {
        // As if the head were a ball, lit from the upper left.
        const float ballX = x / 0.165F;
        const float ballY = (y - kFaceY) / 0.24F;
        const float ballZ = std::sqrt(std::max(0.05F, 1.0F - ballX * ballX - ballY * ballY));
        const float lit = std::clamp(-0.36F * ballX - 0.34F * ballY + 0.80F * ballZ, 0.0F, 1.0F);
        const float pores = m_noise.at(x * 260.0F, y * 260.0F);
        Colour colour = kSkin * ((0.30F + 0.80F * lit) * (1.0F + 0.03F * pores));
        const float cheek =
            std::exp(-reachIn(std::abs(x) - 0.085F, y - 0.50F, 0.04F, 0.034F) * 1.3F);
        colour = mix(colour, colour * Colour{1.12F, 0.78F, 0.76F}, cheek);
        const float shadowOfFringe = 1.0F - 0.35F * (1.0F - smoothStep(0.29F, 0.335F, y));
        return features(x, y, nose(x, y, colour) * shadowOfFringe);
    }

    [[nodiscard]] static Colour nose(float x, float y, Colour skin)
    {
        const float along = smoothStep(0.40F, 0.50F, y) * (1.0F - smoothStep(0.505F, 0.525F, y));
        const float side = std::exp(-std::pow((x - 0.016F) * 75.0F, 2.0F)) * along;
        const float ridge = std::exp(-std::pow((x + 0.004F) * 95.0F, 2.0F)) * along;
        const float nostril =
            std::exp(-reachIn(std::abs(x) - 0.013F, y - 0.517F, 0.007F, 0.004F) * 1.4F);
        return skin * (1.0F - 0.22F * side + 0.16F * ridge) * (1.0F - 0.65F * nostril);
    }

    [[nodiscard]] Colour features(float x, float y, Colour skin) const
    {
        const float side = std::abs(x);
        const float brow = std::abs(y - 0.378F - std::pow((side - 0.058F) * 4.2F, 2.0F));
        if (brow < 0.0055F && side > 0.027F && side < 0.10F) {
            return mix(skin,
                       Colour{0.22F, 0.11F, 0.04F},
                       0.45F + 0.3F * m_noise.at(x * 320.0F, y * 90.0F));
        }
        const float lids = 0.0145F * (1.0F - std::pow((side - 0.062F) / 0.032F, 2.0F));
        const float fromEye = y - 0.412F;
        if (std::abs(fromEye) < lids) {
            return eye(x < 0.0F ? x + 0.062F : x - 0.062F, fromEye, lids);
        }
        if (lids > 0.0F && fromEye < 0.0F && fromEye > -lids - 0.004F) {
            return skin * 0.35F; // lashes
        }
        const float smile = 0.012F * std::pow(x / 0.05F, 2.0F);
        const float fromMouth = y - 0.567F + smile;
        const float lips = 0.014F * (1.0F - std::pow(x / 0.052F, 2.0F));
        if (std::abs(fromMouth) < lips) {
            const float parting = std::exp(-std::pow(fromMouth * 420.0F, 2.0F));
            const float gloss = std::exp(-reachIn(x + 0.008F, fromMouth - 0.006F, 0.02F, 0.003F));
            return Colour{0.50F, 0.13F, 0.11F} * (1.0F - 0.7F * parting) +
                   Colour{0.16F, 0.12F, 0.11F} * gloss;
        }
        return skin;
    }

    [[nodiscard]] Colour eye(float x, float y, float lids) const
    {
        const float distance = std::hypot(x, y);
        const float shadow = 0.5F + 0.5F * smoothStep(-lids, -lids * 0.3F, y);
        if (std::hypot(x + 0.004F, y + 0.004F) < 0.0022F) {
            return {1.3F, 1.3F, 1.3F}; // the sky in the eye
        }
        if (distance < 0.0055F) {
            return {0.004F, 0.004F, 0.004F};
        }
        if (distance < 0.0135F) {
            const float rays = 0.75F + 0.5F * m_noise.at(std::atan2(y, x) * 9.0F, distance * 90.0F);
            return m_iris * ((1.0F + 90.0F * distance) * rays * shadow);
        }
        return Colour{0.72F, 0.68F, 0.66F} * shadow;
    }

    [[nodiscard]] static bool isPullover(float x, float y)
    {
        const float shoulders = 0.70F + 0.30F * std::pow(std::abs(x) / 0.31F, 3.2F) * 0.55F;
        const float neckline = 0.765F - 3.2F * x * x;
        return y > shoulders && (std::abs(x) > 0.118F || y > neckline);
    }

    /// Knitted: columns of stitches that lean to the right and to the left by turns.
    [[nodiscard]] Colour wool(float x, float y) const
    {
        const float column = x * 62.0F;
        const float inColumn = column - std::floor(column) - 0.5F;
        const float stitch = y * 88.0F + std::abs(inColumn) * 1.6F;
        const float inStitch = stitch - std::floor(stitch) - 0.5F;
        const float raised =
            (1.0F - 2.2F * inStitch * inStitch) *
            (0.72F + 0.28F * std::abs(std::sin(inColumn * 2.0F * std::numbers::pi_v<float>)));
        const float folds = m_noise.fractal(x * 4.0F, y * 3.0F, 2);
        return Colour{0.33F, 0.030F, 0.040F} * (raised * (0.92F - 0.9F * x + 0.45F * folds));
    }

    [[nodiscard]] Colour garden(float x, float y) const
    {
        const float leaves = m_noise.fractal(x * 3.5F, y * 3.5F, 3);
        Colour colour =
            mix(Colour{0.030F, 0.065F, 0.018F}, Colour{0.13F, 0.20F, 0.065F}, 0.5F + leaves);
        // Points of light out of focus are discs with a brighter rim.
        constexpr float kPitch = 0.17F;
        const int column = static_cast<int>(std::floor(x / kPitch));
        const int row = static_cast<int>(std::floor(y / kPitch));
        for (int cell = 0; cell < 9; ++cell) {
            const int cellColumn = column + cell % 3 - 1;
            const int cellRow = row + cell / 3 - 1;
            const quint32 luck = scatter(m_framing.seed + 3, cellColumn, cellRow);
            const float dx = x - (static_cast<float>(cellColumn) + chance(luck, 1, 0)) * kPitch;
            const float dy = y - (static_cast<float>(cellRow) + chance(luck, 2, 0)) * kPitch;
            const float radius = 0.03F + 0.05F * chance(luck, 3, 0);
            const float reach = std::hypot(dx, dy) / radius;
            const float inside = (1.0F - smoothStep(0.96F, 1.02F, reach)) *
                                 (0.7F + 0.3F * smoothStep(0.7F, 0.95F, reach));
            const Colour light =
                mix(Colour{0.10F, 0.19F, 0.05F}, Colour{0.40F, 0.40F, 0.16F}, chance(luck, 4, 0));
            const float strength = luck % 9 == 0 ? 3.2F : chance(luck, 5, 0);
            colour = colour + light * (inside * strength);
        }
        return colour;
    }

    Framing m_framing;
    Noise m_noise;
    Colour m_iris;
};

} // namespace

std::unique_ptr<const Scene> Scenes::portrait(const Framing& framing)
{
    return std::make_unique<Portrait>(framing);
}
