#pragma once

#include "BayerMosaic.h"
#include "Bitmap.h"

#include <array>
#include <vector>

/// A sensor that saw a picture through filters of red, green and blue.
class BayerSamples final
{
public:
    using Phase = std::array<BayerMosaic::Color, 4>;

    /// The four ways in which the filters can lie.
    static constexpr std::array<Phase, 4> kPhases{
        Phase{BayerMosaic::Red, BayerMosaic::Green, BayerMosaic::Green, BayerMosaic::Blue},
        Phase{BayerMosaic::Green, BayerMosaic::Red, BayerMosaic::Blue, BayerMosaic::Green},
        Phase{BayerMosaic::Green, BayerMosaic::Blue, BayerMosaic::Red, BayerMosaic::Green},
        Phase{BayerMosaic::Blue, BayerMosaic::Green, BayerMosaic::Green, BayerMosaic::Red}};

    /// Its values are those of the picture. Beside the pixels that it shows it has some that are
    /// no light.
    BayerSamples(const Bitmap& picture, const Phase& phase);

    /// One colour in all pixels.
    [[nodiscard]] static Bitmap flat(QSize size, std::array<quint16, 3> color);

    /// Multiplies the values of each filter and adds what it has without light; the mosaic tells
    /// it.
    void distort(const std::array<int, 4>& black, const std::array<float, 4>& gains);

    /// Valid as long as this.
    [[nodiscard]] BayerMosaic mosaic() const;

private:
    QSize m_size;
    Phase m_phase;
    std::array<float, 4> m_black{};
    std::array<float, 4> m_scale{1.0F, 1.0F, 1.0F, 1.0F};
    std::vector<quint16> m_values;
};
