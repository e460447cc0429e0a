#pragma once

#include <span>

/// A colour of CIE 1976 L*a*b* (CIE 15:2004, 8.2.1) relative to the white of sRGB.
struct CieLab {
    float lightness{0.0F};  ///< 0..100
    float redGreen{0.0F};   ///< a*
    float yellowBlue{0.0F}; ///< b*

    /// Of linear sRGB R, G, B (0..1; what is beyond is clipped), within 0.01. Any thread.
    [[nodiscard]] static CieLab of(std::span<const float, 3> light);
};
