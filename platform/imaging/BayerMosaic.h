#pragma once

#include <QRect>
#include <QSize>

#include <array>

/// What a sensor measured behind colour filters that repeat every two pixels, two of the four green
/// and on a diagonal (B. E. Bayer, US patent 3971065). A view: the values must outlive it.
struct BayerMosaic {
    enum Color : quint8 { Red = 0, Green = 1, Blue = 2 };

    const quint16* values{nullptr}; ///< of the first visible pixel
    qsizetype stride{0};            ///< values from row to row
    QSize visible;                  ///< pixels that see light
    QRect kept;                     ///< those that are the picture

    // Of the four places of the visible area's first two rows and columns, row by row.
    std::array<Color, 4> colors{Red, Green, Green, Blue};
    std::array<float, 4> black{};           ///< what a value is without light
    std::array<float, 4> scale{1, 1, 1, 1}; ///< light of a value above black: 65535 is the most

    /// Light from which on a value says no more than that there was more, 65535 at most.
    float white{65535.0F};
    /// Gains of red, green and blue that make grey grey; the least is 1.
    std::array<float, 3> balance{1, 1, 1};

    /// Whether the filters lie as said and there are enough pixels to tell colours by.
    [[nodiscard]] bool isValid() const
    {
        constexpr int kFewest = 8;
        const bool greensOnDiagonal =
            (colors[0] == Green && colors[3] == Green && colors[1] != Green && colors[2] != Green &&
             colors[1] != colors[2]) ||
            (colors[1] == Green && colors[2] == Green && colors[0] != Green && colors[3] != Green &&
             colors[0] != colors[3]);
        return greensOnDiagonal && visible.width() >= kFewest && visible.height() >= kFewest &&
               QRect({0, 0}, visible).contains(kept) && kept.width() >= 2 && kept.height() >= 2;
    }
};
