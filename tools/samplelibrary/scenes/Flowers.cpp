#include "Noise.h"
#include "Scene.h"

#include <array>
#include <cmath>
#include <numbers>
#include <optional>

namespace
{

constexpr std::array<Colour, 7> kPetals{{{0.82F, 0.60F, 0.03F},
                                         {0.66F, 0.025F, 0.075F},
                                         {0.20F, 0.075F, 0.50F},
                                         {0.80F, 0.80F, 0.80F},
                                         {0.72F, 0.30F, 0.44F},
                                         {0.80F, 0.22F, 0.015F},
                                         {0.82F, 0.66F, 0.10F}}};

/// A bed of flowers from above, in two storeys over the green.
class Flowers final : public Scene
{
public:
    explicit Flowers(const Framing& framing)
        : m_framing(framing)
        , m_noise(framing.seed)
    {
    }

    [[nodiscard]] Colour at(float x, float y) const override
    {
        for (const Storey& storey : kStoreys) {
            const int column = static_cast<int>(std::floor(x / storey.pitch));
            const int row = static_cast<int>(std::floor(y / storey.pitch));
            for (int cell = 0; cell < 9; ++cell) {
                if (const auto colour =
                        flower(x, y, storey, {column + cell % 3 - 1, row + cell / 3 - 1})) {
                    return *colour;
                }
            }
        }
        return green(x, y);
    }

private:
    struct Storey {
        float pitch;
        float radius;
        float light;
        quint32 seed;
    };

    struct Cell {
        int column;
        int row;
    };

    static constexpr std::array<Storey, 2> kStoreys{
        {{.pitch = 0.20F, .radius = 0.075F, .light = 1.0F, .seed = 11},
         {.pitch = 0.13F, .radius = 0.050F, .light = 0.55F, .seed = 23}}};

    /// The flower of a cell, if the cell has one and it covers the point.
    [[nodiscard]] std::optional<Colour>
    flower(float x, float y, const Storey& storey, Cell cell) const
    {
        const quint32 luck = scatter(m_framing.seed + storey.seed, cell.column, cell.row);
        const float dx = x - (static_cast<float>(cell.column) + chance(luck, 1, 0)) * storey.pitch;
        const float dy = y - (static_cast<float>(cell.row) + chance(luck, 2, 0)) * storey.pitch;
        const float radius = storey.radius * (0.75F + 0.3F * chance(luck, 3, 0));
        const float squared = dx * dx + dy * dy;
        if (squared > radius * radius || luck % 10 < 2) {
            return std::nullopt;
        }
        const float reach = std::sqrt(squared) / radius;
        if (reach < 0.24F) {
            return heart(dx / radius, dy / radius, reach) * storey.light;
        }
        const auto petals = static_cast<float>(7 + luck / 16 % 4);
        const float turn =
            (std::atan2(dy, dx) / (2.0F * std::numbers::pi_v<float>)+chance(luck, 4, 0)) * petals;
        const float inPetal =
            std::abs(turn - std::floor(turn) - 0.5F) * 2.0F; // 0 in the middle, 1 at the rim
        if (reach > 1.0F - 0.42F * std::pow(inPetal, 2.6F)) {
            return std::nullopt;
        }
        const float lines = 1.0F + 0.10F * std::sin(inPetal * 19.0F);
        const float depth = (0.62F + 0.42F * reach) * (1.0F - 0.32F * inPetal * inPetal) * lines;
        const Colour petal = kPetals[luck / 256 % kPetals.size()] * (depth * storey.light);
        return petal + dew(dx / radius, dy / radius, luck) * storey.light;
    }

    /// The yellow middle, made of many small heads.
    [[nodiscard]] static Colour heart(float x, float y, float reach)
    {
        const float heads = std::sin(x * 62.0F + y * 21.0F) * std::sin(y * 62.0F - x * 21.0F);
        return Colour{0.52F, 0.31F, 0.02F} * ((0.75F + 0.45F * heads) * (1.25F - 1.6F * reach));
    }

    /// Drops of dew throw the sun back from some flowers.
    [[nodiscard]] static Colour dew(float x, float y, quint32 luck)
    {
        const float dropX = (chance(luck, 5, 0) - 0.5F) * 1.1F;
        const float dropY = (chance(luck, 6, 0) - 0.5F) * 1.1F;
        const float distance = std::hypot(x - dropX, y - dropY);
        return Colour{2.5F, 2.5F, 2.4F} * (1.0F - smoothStep(0.015F, 0.035F, distance));
    }

    [[nodiscard]] Colour green(float x, float y) const
    {
        // Blades wind about: the noise is read at places that noise has moved.
        const float windX = m_noise.at(x * 7.0F, y * 7.0F);
        const float windY = m_noise.at(x * 7.0F + 60.0F, y * 7.0F + 30.0F);
        const float blades = m_noise.fractal(x * 26.0F + 3.5F * windX, y * 9.0F + 3.0F * windY, 3);
        const float deep = smoothStep(-0.45F, 0.55F, blades);
        return mix(Colour{0.005F, 0.010F, 0.003F}, Colour{0.095F, 0.165F, 0.030F}, deep);
    }

    Framing m_framing;
    Noise m_noise;
};

} // namespace

std::unique_ptr<const Scene> Scenes::flowers(const Framing& framing)
{
    return std::make_unique<Flowers>(framing);
}
