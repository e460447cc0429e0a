#pragma once

#include <QtGlobal>

#include <vector>

/// A number that looks random and depends on the arguments alone: multiply-xorshift rounds, y
/// joining in after the first so that no combination of small arguments cancels out. Any thread.
[[nodiscard]] constexpr quint32 scatter(quint32 seed, int x, int y)
{
    quint32 bits = seed * 0x9E3779B1U + static_cast<quint32>(x) * 0x85EBCA77U;
    bits = (bits ^ (bits >> 15)) * 0x2C1B3C6DU;
    bits += static_cast<quint32>(y) * 0xC2B2AE3DU;
    bits = (bits ^ (bits >> 12)) * 0x297A2D39U;
    return bits ^ (bits >> 15);
}

/// scatter() as a number from 0 up to, but without, 1.
[[nodiscard]] constexpr float chance(quint32 seed, int x, int y)
{
    return static_cast<float>(scatter(seed, x, y) >> 8) * 0x1p-24F;
}

/// Smooth noise over the plane with features of size 1 (gradient noise after Perlin). It repeats
/// after 128 in either direction. Immutable once made: any thread.
class Noise final
{
public:
    explicit Noise(quint32 seed);

    /// About -1 to 1, 0 on average.
    [[nodiscard]] float at(float x, float y) const;
    /// `octaves` layers, each twice as fine and half as strong as the one before; about -1 to 1.
    [[nodiscard]] float fractal(float x, float y, int octaves) const;

private:
    struct Gradient {
        float x;
        float y;
    };

    std::vector<Gradient> m_gradients;
};
