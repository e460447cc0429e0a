#include "Noise.h"
#include "Scene.h"

#include <array>
#include <cmath>
#include <vector>

namespace
{

/// The line of a range of hills against the sky, sampled once for the whole picture.
class Ridge final
{
public:
    /// `height`: of the line below the picture's top; `swing`: how far it departs from that;
    /// `detail`: hills in a picture height; `shift` picks the part of the noise.
    struct Shape {
        float height;
        float swing;
        float detail;
        float shift;
    };

    Ridge(const Noise& noise, Shape shape, float aspect)
        : m_samplesPerHeight(static_cast<float>(kSamples - 2) / aspect)
    {
        m_line.reserve(kSamples);
        for (int i = 0; i < kSamples; ++i) {
            const float x = static_cast<float>(i) / m_samplesPerHeight;
            m_line.push_back(shape.height -
                             shape.swing *
                                 noise.fractal(x * shape.detail + shape.shift, shape.shift, 6));
        }
    }

    [[nodiscard]] float at(float x) const
    {
        const float position = std::clamp(x * m_samplesPerHeight, 0.0F, float{kSamples} - 2.0F);
        const auto sample = static_cast<size_t>(position);
        return mix(m_line[sample], m_line[sample + 1], position - static_cast<float>(sample));
    }

private:
    static constexpr int kSamples = 4096;
    float m_samplesPerHeight;
    std::vector<float> m_line;
};

/// The share of a disc (the sun, say) at this distance from its middle, with a soft rim.
float disc(float distance, float radius, float rim)
{
    return 1.0F - smoothStep(radius - rim, radius + rim, distance);
}

/// Ranges of hills under a morning sky, a meadow in front.
class Hills final : public Scene
{
public:
    explicit Hills(const Framing& framing)
        : m_framing(framing)
        , m_noise(framing.seed)
        , m_sunX(framing.aspect * (0.35F + 0.3F * chance(framing.seed, 1, 0)))
    {
        for (int range = 0; range < kRanges; ++range) {
            const auto nearness = static_cast<float>(range);
            m_ranges.emplace_back(m_noise,
                                  Ridge::Shape{.height = 0.39F + 0.075F * nearness,
                                               .swing = 0.13F - 0.02F * nearness,
                                               .detail = 2.2F - 0.3F * nearness,
                                               .shift = 9.0F * nearness + 3.0F},
                                  framing.aspect);
        }
        m_ranges.emplace_back(
            m_noise,
            Ridge::Shape{.height = 0.715F, .swing = 0.02F, .detail = 1.0F, .shift = 61.0F},
            framing.aspect);
    }

    [[nodiscard]] Colour at(float x, float y) const override
    {
        if (y > m_ranges.back().at(x)) {
            return meadow(x, y);
        }
        for (int range = kRanges - 1; range >= 0; --range) {
            const float line = m_ranges[static_cast<size_t>(range)].at(x);
            if (y > line) {
                return hill(x, y, range, y - line);
            }
        }
        return sky(x, y);
    }

private:
    static constexpr int kRanges = 4;

    [[nodiscard]] Colour sky(float x, float y) const
    {
        const Colour blue = mix(
            Colour{0.075F, 0.19F, 0.52F}, Colour{0.50F, 0.66F, 0.86F}, smoothStep(-0.1F, 0.45F, y));
        const float distance = std::hypot(x - m_sunX, y - 0.11F);
        const Colour glow{0.5F, 0.46F, 0.40F};
        const Colour air = blue + glow * std::exp(-distance * 6.5F);
        const float cover = m_noise.fractal(x * 1.3F, y * 6.0F + 40.0F, 5);
        const float cloud = smoothStep(0.12F, 0.45F, cover) * 0.75F;
        const Colour lit =
            mix(air,
                Colour{0.74F, 0.73F, 0.74F} * (0.75F + 0.7F * std::max(0.0F, 0.4F - cover)),
                cloud);
        return lit + Colour{6.0F, 5.8F, 5.2F} * disc(distance, 0.028F, 1.5F * m_framing.pixel);
    }

    [[nodiscard]] Colour hill(float x, float y, int range, float depth) const
    {
        const auto nearness = static_cast<float>(range) / (kRanges - 1);
        const float folds =
            m_noise.fractal(x * 14.0F + static_cast<float>(range) * 11.0F, y * 26.0F, 3);
        const Colour ground =
            mix(Colour{0.13F, 0.085F, 0.035F}, Colour{0.17F, 0.14F, 0.06F}, folds + 0.5F);
        const Colour lit = ground * (0.95F + 0.8F * folds * nearness - 0.6F * depth);
        // The further away, the more of the air's own light is seen.
        const float haze = 0.80F - 0.72F * nearness;
        return mix(lit, Colour{0.36F, 0.47F, 0.64F}, haze);
    }

    [[nodiscard]] Colour meadow(float x, float y) const
    {
        // A plane seen from above it: what lies nearer to the horizon is further away.
        const float distance = 0.30F / (y - 0.60F);
        const float across = (x - m_framing.aspect / 2.0F) * distance;
        const float along = distance * 6.0F;
        const float blades = m_noise.fractal(across * 46.0F, along * 9.0F + across * 4.0F, 3);
        const float patches = m_noise.at(across * 3.0F + 50.0F, along * 1.3F);
        const Colour grass =
            mix(Colour{0.045F, 0.105F, 0.016F}, Colour{0.17F, 0.27F, 0.05F}, 0.5F + blades);
        const Colour dry =
            mix(grass, Colour{0.27F, 0.20F, 0.10F}, smoothStep(0.35F, 0.7F, patches) * 0.7F);
        return blossom(across * 26.0F, along * 8.0F, dry);
    }

    [[nodiscard]] Colour blossom(float across, float along, Colour grass) const
    {
        static constexpr std::array<Colour, 4> kBlossoms{{{0.85F, 0.85F, 0.82F},
                                                          {0.80F, 0.66F, 0.04F},
                                                          {0.30F, 0.22F, 0.55F},
                                                          {0.60F, 0.08F, 0.07F}}};
        const int column = static_cast<int>(std::floor(across));
        const int row = static_cast<int>(std::floor(along));
        const quint32 luck = scatter(m_framing.seed, column, row);
        if (luck % 5 != 0) {
            return grass;
        }
        const float middleX = 0.3F + 0.4F * chance(luck, 1, 0);
        const float middleY = 0.3F + 0.4F * chance(luck, 2, 0);
        const float distance =
            std::hypot(across - std::floor(across) - middleX, along - std::floor(along) - middleY);
        return mix(grass, kBlossoms[luck / 5 % kBlossoms.size()], disc(distance, 0.17F, 0.05F));
    }

    Framing m_framing;
    Noise m_noise;
    float m_sunX;
    std::vector<Ridge> m_ranges;
};

/// The sun going down beyond a lake.
class Lake final : public Scene
{
public:
    explicit Lake(const Framing& framing)
        : m_framing(framing)
        , m_noise(framing.seed)
        , m_far(m_noise,
                {.height = 0.42F, .swing = 0.08F, .detail = 1.6F, .shift = 3.0F},
                framing.aspect)
        , m_near(m_noise,
                 {.height = 0.465F, .swing = 0.07F, .detail = 1.1F, .shift = 27.0F},
                 framing.aspect)
        , m_sunX(framing.aspect * (0.32F + 0.3F * chance(framing.seed, 1, 0)))
    {
    }

    [[nodiscard]] Colour at(float x, float y) const override
    {
        return y < kShore ? air(x, y, m_framing.pixel * 1.5F) : water(x, y);
    }

private:
    static constexpr float kShore = 0.5F;

    /// Everything above the water line; `rim` blurs the sun's edge.
    [[nodiscard]] Colour air(float x, float y, float rim) const
    {
        if (y > m_near.at(x)) {
            const float woods = m_noise.at(x * 30.0F, y * 50.0F);
            return Colour{0.042F, 0.036F, 0.036F} * (1.0F + 0.3F * woods);
        }
        if (y > m_far.at(x)) {
            return Colour{0.26F, 0.15F, 0.14F};
        }
        const Colour high = mix(
            Colour{0.07F, 0.09F, 0.36F}, Colour{0.52F, 0.29F, 0.46F}, smoothStep(-0.05F, 0.26F, y));
        const Colour sky = mix(high, Colour{0.95F, 0.45F, 0.26F}, smoothStep(0.15F, 0.47F, y));
        const float distance = std::hypot(x - m_sunX, y - 0.32F);
        const Colour glowing = sky + Colour{0.55F, 0.32F, 0.16F} * std::exp(-distance * 5.0F);
        const float cover = m_noise.fractal(x * 1.1F + 30.0F, y * 9.0F + 20.0F, 4);
        const Colour clouded =
            mix(glowing, Colour{0.85F, 0.26F, 0.21F}, smoothStep(0.1F, 0.3F, cover) * 0.75F);
        return clouded + Colour{5.0F, 4.4F, 3.6F} * disc(distance, 0.031F, rim);
    }

    [[nodiscard]] Colour water(float x, float y) const
    {
        const float depth = y - kShore;
        // Waves seem smaller towards the shore; each tilts the mirror that the water is.
        const float distance = 1.0F / (depth + 0.03F);
        const float waves = m_noise.fractal(x * distance * 0.9F, distance * 14.0F, 3);
        const float tilt = waves * (0.02F + 0.55F * depth);
        const float mirrorY = std::clamp(kShore - depth * 0.85F + tilt, 0.0F, kShore - 0.001F);
        const float mirrorX = x + tilt * 0.25F;
        const Colour mirrored = air(mirrorX, mirrorY, 0.012F);
        const Colour deep{0.020F, 0.045F, 0.10F};
        return mix(mirrored * 0.80F, deep, smoothStep(0.0F, 0.9F, depth) * 0.5F + 0.08F);
    }

    Framing m_framing;
    Noise m_noise;
    Ridge m_far;
    Ridge m_near;
    float m_sunX;
};

} // namespace

std::unique_ptr<const Scene> Scenes::hills(const Framing& framing)
{
    return std::make_unique<Hills>(framing);
}

std::unique_ptr<const Scene> Scenes::lake(const Framing& framing)
{
    return std::make_unique<Lake>(framing);
}
