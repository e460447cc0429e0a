#pragma once

#include <algorithm>

/// Light in linear sRGB primaries (IEC 61966-2-1); 1 is the brightest that a picture holds, what
/// shines more is above it. Arithmetic is per channel.
struct Colour {
    float red{0.0F};
    float green{0.0F};
    float blue{0.0F};
};

[[nodiscard]] constexpr Colour operator+(Colour left, Colour right)
{
    return {left.red + right.red, left.green + right.green, left.blue + right.blue};
}

[[nodiscard]] constexpr Colour operator*(Colour left, Colour right)
{
    return {left.red * right.red, left.green * right.green, left.blue * right.blue};
}

[[nodiscard]] constexpr Colour operator*(Colour colour, float factor)
{
    return {colour.red * factor, colour.green * factor, colour.blue * factor};
}

/// `first` at share 0, `second` at share 1; beyond that the line is prolonged.
template <typename Value>
[[nodiscard]] constexpr Value mix(Value first, Value second, float share)
{
    return first * (1.0F - share) + second * share;
}

/// 0 up to `low`, 1 from `high`, a smooth cubic between; with low > high it falls instead.
[[nodiscard]] constexpr float smoothStep(float low, float high, float value)
{
    const float share = std::clamp((value - low) / (high - low), 0.0F, 1.0F);
    return share * share * (3.0F - 2.0F * share);
}
