#include "Noise.h"
#include "Scene.h"

#include <cmath>
#include <vector>

namespace
{

constexpr float kStreet = 0.7F;
constexpr float kStorey = 0.083F;
constexpr float kWindowPitch = 0.058F;
constexpr float kLampPitch = 0.42F;
constexpr float kLampHeight = 0.42F;

/// A street of old houses at night, lamps and lit windows, all of it again on the wet road.
class NightStreet final : public Scene
{
public:
    explicit NightStreet(const Framing& framing)
        : m_framing(framing)
        , m_noise(framing.seed)
        , m_lampShift(0.12F + 0.2F * chance(framing.seed, 1, 0))
    {
        float left = -0.2F * chance(framing.seed, 2, 0);
        for (int number = 0; left < framing.aspect; ++number) {
            // Houses are a whole number of windows wide.
            const auto windows = static_cast<float>(4 + scatter(framing.seed, number, 3) % 4);
            const auto storeys = static_cast<float>(4 + scatter(framing.seed, number, 4) % 3);
            m_houses.push_back({.left = left,
                                .width = windows * kWindowPitch,
                                .eaves = kStreet - storeys * kStorey,
                                .tint = chance(framing.seed, number, 5),
                                .number = number});
            left += m_houses.back().width;
        }
    }

    [[nodiscard]] Colour at(float x, float y) const override
    {
        return y < kStreet ? above(x, y, m_framing.pixel) : road(x, y);
    }

private:
    struct House {
        float left;
        float width;
        float eaves;
        float tint;
        int number;
    };

    [[nodiscard]] const House& houseAt(float x) const
    {
        for (const House& house : m_houses) {
            if (x < house.left + house.width) {
                return house;
            }
        }
        return m_houses.back();
    }

    /// All that stands or hangs above the road; `blur` softens the lamps.
    [[nodiscard]] Colour above(float x, float y, float blur) const
    {
        const House& house = houseAt(x);
        const float inHouse = (x - house.left) / house.width;
        const float roof = house.eaves - 0.06F * (1.0F - std::abs(2.0F * inHouse - 1.0F));
        const Colour scenery = y < roof          ? sky(x, y)
                               : y < house.eaves ? tiles(x, y)
                                                 : facade(x, y, house);
        return scenery + lamps(x, y, blur);
    }

    [[nodiscard]] Colour sky(float x, float y) const
    {
        const float cloud = m_noise.fractal(x * 2.0F, y * 5.0F, 4);
        return mix(Colour{0.0035F, 0.005F, 0.014F},
                   Colour{0.020F, 0.014F, 0.016F},
                   y * 1.3F + 0.25F * cloud);
    }

    [[nodiscard]] Colour tiles(float x, float y) const
    {
        return Colour{0.020F, 0.012F, 0.009F} * (1.0F + 0.4F * m_noise.at(x * 90.0F, y * 60.0F));
    }

    [[nodiscard]] Colour facade(float x, float y, const House& house) const
    {
        const int column = static_cast<int>(std::floor((x - house.left) / kWindowPitch));
        const int storey = static_cast<int>(std::floor((kStreet - y) / kStorey));
        const float inX = (x - house.left) / kWindowPitch - static_cast<float>(column) - 0.5F;
        const float inY = (kStreet - y) / kStorey - static_cast<float>(storey) - 0.5F;
        const float grain = m_noise.fractal(x * 50.0F, y * 50.0F, 3);
        const Colour plaster =
            mix(Colour{0.040F, 0.026F, 0.016F}, Colour{0.030F, 0.030F, 0.030F}, house.tint) *
            (1.0F + 0.5F * grain);
        if (std::abs(inX) > 0.26F || std::abs(inY) > 0.32F) {
            return plaster;
        }
        const bool bar = std::abs(inX) < 0.025F || std::abs(inY - 0.1F) < 0.02F;
        const quint32 luck = scatter(m_framing.seed + 1, column + 40 * house.number, storey);
        if (bar) {
            return plaster * 0.5F;
        }
        if (luck % 100 > 36) {
            return Colour{0.008F, 0.009F, 0.012F} *
                   (1.3F + 0.7F * m_noise.at(x * 20.0F, y * 20.0F));
        }
        const Colour lamp =
            mix(Colour{0.95F, 0.52F, 0.17F}, Colour{0.85F, 0.80F, 0.62F}, chance(luck, 1, 0));
        const float curtain = 0.75F + 0.25F * std::sin(inX * 60.0F + chance(luck, 2, 0) * 6.0F);
        return lamp * (0.35F + 0.6F * chance(luck, 3, 0)) * curtain * (0.85F - 0.5F * inY);
    }

    /// The light of the nearest lamps and their posts' is added; posts are too thin to matter.
    [[nodiscard]] Colour lamps(float x, float y, float blur) const
    {
        const float place = std::floor((x - m_lampShift) / kLampPitch + 0.5F);
        Colour light;
        for (int beside = -1; beside <= 1; ++beside) {
            const float lampX = m_lampShift + (place + static_cast<float>(beside)) * kLampPitch;
            const float distance = std::hypot(x - lampX, y - kLampHeight);
            light = light + Colour{0.62F, 0.34F, 0.11F} * std::exp(-distance * 11.0F);
            if (beside == 0) {
                const float bulb = 1.0F - smoothStep(0.013F - blur, 0.013F + blur, distance);
                light = light + Colour{5.0F, 4.2F, 2.8F} * bulb;
                light = light + post(x - lampX, y);
            }
        }
        return light;
    }

    [[nodiscard]] Colour post(float fromPost, float y) const
    {
        const float nearness =
            1.0F - smoothStep(0.002F, 0.002F + 2.0F * m_framing.pixel, std::abs(fromPost));
        return y > kLampHeight + 0.013F ? Colour{0.035F, 0.030F, 0.022F} * nearness : Colour{};
    }

    [[nodiscard]] Colour road(float x, float y) const
    {
        const float depth = y - kStreet;
        const float distance = 1.0F / (depth + 0.12F);
        const float ripple = m_noise.fractal(x * distance * 3.0F, distance * 16.0F, 3);
        const float stretch = ripple * (0.01F + 0.30F * depth);
        const float mirrorY = std::clamp(kStreet - depth * 0.9F + stretch, 0.0F, kStreet - 0.001F);
        const Colour mirrored = above(x + ripple * 0.03F, mirrorY, 0.01F);
        const float stones = m_noise.at(x * distance * 9.0F, distance * 40.0F);
        const float wet = smoothStep(-0.35F, 0.25F, m_noise.fractal(x * 2.5F + 7.0F, y * 6.0F, 3));
        const Colour ground = Colour{0.034F, 0.026F, 0.020F} * (1.0F + 0.5F * stones);
        return ground + mirrored * (0.12F + 0.5F * wet) * (1.0F - 1.2F * depth);
    }

    Framing m_framing;
    Noise m_noise;
    float m_lampShift;
    std::vector<House> m_houses;
};

} // namespace

std::unique_ptr<const Scene> Scenes::nightStreet(const Framing& framing)
{
    return std::make_unique<NightStreet>(framing);
}
