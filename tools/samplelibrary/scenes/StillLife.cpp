#include "Noise.h"
#include "Scene.h"

#include <array>
#include <cmath>
#include <vector>

namespace
{

/// A point or direction of space: x to the right, y up, z away from the camera.
struct Vector {
    float x{0.0F};
    float y{0.0F};
    float z{0.0F};
};

Vector operator+(Vector left, Vector right)
{
    return {left.x + right.x, left.y + right.y, left.z + right.z};
}

Vector operator-(Vector left, Vector right)
{
    return {left.x - right.x, left.y - right.y, left.z - right.z};
}

Vector operator*(Vector vector, float factor)
{
    return {vector.x * factor, vector.y * factor, vector.z * factor};
}

float dot(Vector left, Vector right)
{
    return left.x * right.x + left.y * right.y + left.z * right.z;
}

Vector unit(Vector vector)
{
    return vector * (1.0F / std::sqrt(dot(vector, vector)));
}

enum class Fruit : quint8 { Orange, Apple, Lime, Plum, Lemon };

/// Round fruit on a wooden table before a wall, by the light of a window at the left.
class StillLife final : public Scene
{
public:
    explicit StillLife(const Framing& framing)
        : m_framing(framing)
        , m_noise(framing.seed)
        , m_toLight(unit({-0.62F, 0.75F, -0.55F}))
    {
        static constexpr std::array<Fruit, 7> kBowl{Fruit::Orange,
                                                    Fruit::Apple,
                                                    Fruit::Lime,
                                                    Fruit::Plum,
                                                    Fruit::Lemon,
                                                    Fruit::Apple,
                                                    Fruit::Plum};
        const int shift = static_cast<int>(framing.seed % kBowl.size());
        for (int i = 0; i < static_cast<int>(kBowl.size()); ++i) {
            const Fruit fruit = kBowl[static_cast<size_t>(i + shift) % kBowl.size()];
            const float radius = radiusOf(fruit) * (0.95F + 0.1F * chance(framing.seed, i, 1));
            // Two staggered rows: the fruit touch the table and nearly each other.
            const bool behind = i % 2 == 1;
            const float x = (static_cast<float>(i) - 3.0F) * 0.36F +
                            0.06F * (chance(framing.seed, i, 2) - 0.5F);
            const float z = (behind ? 0.42F : -0.18F) + 0.16F * chance(framing.seed, i, 3);
            m_fruit.push_back({.middle = {x, radius, z}, .radius = radius, .kind = fruit});
        }
    }

    [[nodiscard]] Colour at(float x, float y) const override
    {
        const Vector direction = unit({x - m_framing.aspect / 2.0F, 0.42F - y, 1.5F});
        const Ball* nearest = nullptr;
        float distance = 1e9F;
        for (const Ball& ball : m_fruit) {
            const Vector offset = kCamera - ball.middle;
            const float half = dot(offset, direction);
            const float root = half * half - dot(offset, offset) + ball.radius * ball.radius;
            if (root > 0.0F && -half - std::sqrt(root) < distance) {
                distance = -half - std::sqrt(root);
                nearest = &ball;
            }
        }
        if (nearest != nullptr) {
            return skin(*nearest, kCamera + direction * distance, direction);
        }
        const float toTable = -kCamera.y / direction.y;
        const Vector onTable = kCamera + direction * toTable;
        if (direction.y < 0.0F && onTable.z < kTableEnd) {
            return table(onTable);
        }
        return wall(x, y);
    }

private:
    static constexpr Vector kCamera{0.0F, 0.50F, -2.9F};
    static constexpr float kTableEnd = 1.15F;

    struct Ball {
        Vector middle;
        float radius;
        Fruit kind;
    };

    static float radiusOf(Fruit fruit)
    {
        switch (fruit) {
        case Fruit::Orange:
            return 0.235F;
        case Fruit::Apple:
            return 0.225F;
        case Fruit::Lime:
            return 0.19F;
        case Fruit::Plum:
            return 0.18F;
        case Fruit::Lemon:
            break;
        }
        return 0.165F;
    }

    [[nodiscard]] Colour peel(const Ball& ball, Vector normal) const
    {
        const float turn = std::atan2(normal.z, normal.x);
        const float grain = m_noise.fractal(
            normal.x * 7.0F + ball.middle.x * 9.0F, normal.y * 7.0F + normal.z * 5.0F, 3);
        switch (ball.kind) {
        case Fruit::Orange:
            return Colour{0.82F, 0.29F, 0.015F} *
                   (1.0F + 0.18F * m_noise.at(turn * 30.0F, normal.y * 30.0F));
        case Fruit::Apple: {
            const float stripes =
                m_noise.fractal(turn * 7.0F, normal.y * 1.6F + ball.middle.x * 5.0F, 4);
            return mix(Colour{0.68F, 0.50F, 0.10F},
                       Colour{0.52F, 0.045F, 0.030F},
                       smoothStep(-0.25F, 0.2F, stripes));
        }
        case Fruit::Lime:
            return mix(Colour{0.16F, 0.30F, 0.025F}, Colour{0.42F, 0.52F, 0.06F}, 0.5F + grain);
        case Fruit::Plum:
            return mix(Colour{0.050F, 0.016F, 0.055F},
                       Colour{0.20F, 0.11F, 0.22F},
                       smoothStep(-0.1F, 0.6F, grain));
        case Fruit::Lemon:
            break;
        }
        return Colour{0.84F, 0.66F, 0.025F} *
               (1.0F + 0.15F * m_noise.at(turn * 24.0F, normal.y * 24.0F));
    }

    [[nodiscard]] Colour skin(const Ball& ball, Vector point, Vector direction) const
    {
        const Vector normal = (point - ball.middle) * (1.0F / ball.radius);
        const float facing = dot(normal, m_toLight);
        const float lit = std::max(0.0F, facing * 0.92F + 0.08F) * (1.0F - shade(point, &ball));
        // The table gives some of its light back from below.
        const Colour around =
            mix(Colour{0.13F, 0.15F, 0.17F}, Colour{0.20F, 0.12F, 0.06F}, 0.5F - 0.5F * normal.y);
        const Vector halfway = unit(m_toLight - direction);
        const float shine = std::pow(std::max(0.0F, dot(normal, halfway)),
                                     ball.kind == Fruit::Orange ? 60.0F : 180.0F);
        const float stalk = smoothStep(0.965F, 0.985F, normal.y);
        const Colour colour = mix(peel(ball, normal), Colour{0.05F, 0.03F, 0.015F}, stalk);
        return colour * (around + Colour{1.0F, 0.95F, 0.86F} * lit) +
               Colour{1.5F, 1.5F, 1.45F} * shine;
    }

    /// How much of the light the fruit take from a point, 0 to 1: by how close the way to the
    /// light passes their middles.
    [[nodiscard]] float shade(Vector point, const Ball* self) const
    {
        float taken = 0.0F;
        for (const Ball& ball : m_fruit) {
            const Vector offset = ball.middle - point;
            const float along = dot(offset, m_toLight);
            if (&ball == self || along < 0.0F) {
                continue;
            }
            const float passing = std::sqrt(std::max(0.0F, dot(offset, offset) - along * along));
            const float softness = 0.03F + 0.12F * along;
            taken = std::max(
                taken, 1.0F - smoothStep(ball.radius - softness, ball.radius + softness, passing));
        }
        return taken;
    }

    [[nodiscard]] Colour table(Vector point) const
    {
        const float rings = m_noise.fractal(point.x * 1.2F, point.z * 13.0F, 4);
        const float fibres = m_noise.at(point.x * 6.0F, point.z * 120.0F);
        const Colour wood =
            mix(Colour{0.13F, 0.058F, 0.022F}, Colour{0.40F, 0.22F, 0.10F}, 0.5F + rings * 0.8F);
        float contact = 1.0F;
        for (const Ball& ball : m_fruit) {
            const float reach =
                std::hypot(point.x - ball.middle.x, point.z - ball.middle.z) / ball.radius;
            contact *= mix(0.25F, 1.0F, smoothStep(0.0F, 1.1F, reach));
        }
        const float lit = 0.28F * contact + 0.62F * (1.0F - shade(point, nullptr));
        return wood * (lit * (1.0F + 0.16F * fibres));
    }

    [[nodiscard]] Colour wall(float x, float y) const
    {
        const float plaster = m_noise.fractal(x * 3.0F + 20.0F, y * 3.0F, 5);
        const float falloff = 1.05F - 0.45F * x / m_framing.aspect;
        return Colour{0.155F, 0.19F, 0.185F} * (falloff * (1.0F + 0.28F * plaster));
    }

    Framing m_framing;
    Noise m_noise;
    Vector m_toLight;
    std::vector<Ball> m_fruit;
};

} // namespace

std::unique_ptr<const Scene> Scenes::stillLife(const Framing& framing)
{
    return std::make_unique<StillLife>(framing);
}
