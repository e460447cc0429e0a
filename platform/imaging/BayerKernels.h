#pragma once

#include <QtGlobal>

#include <array>

/// The arithmetic of BayerRenderer over rows of light, written so that compilers make it work on
/// many pixels at once. Rows are split by the parity of their columns: "sites" are the places of
/// red or blue in a row, "greens" the places between them. Any thread.
namespace BayerKernels
{

using Matrix = std::array<float, 9>;

/// How values become light.
struct Light {
    float black{0.0F};
    float scale{1.0F};
    float white{65535.0F};
};

/// Light of `count` pairs of values, clipped to 0..white.
void prepare(const quint16* values, int count, Light first, Light second, float* even, float* odd);

/// The highest of `count` values of one filter in a row, each the second after the one before.
[[nodiscard]] quint16 highest(const quint16* values, int count);

/// How many of them are at least `bound`.
[[nodiscard]] int countFrom(quint16 bound, const quint16* values, int count);

/// The row of a site and its surroundings; each pointer stands at the first site's.
struct SiteRows {
    const float* site{nullptr};     ///< the sites of this row
    const float* left{nullptr};     ///< the greens at their left
    const float* right{nullptr};    ///< and at their right
    const float* above{nullptr};    ///< the greens above them
    const float* below{nullptr};    ///< and below
    const float* twoAbove{nullptr}; ///< the sites two rows above
    const float* twoBelow{nullptr}; ///< and below
};

/// Green at the sites, and what the sites have more than green.
void greensAtSites(const SiteRows& rows, int count, float* green, float* difference);

/// Three channels of pixels, planar.
struct Planes {
    quint16* red{nullptr};
    quint16* green{nullptr};
    quint16* blue{nullptr};
};

/// Green and differences at the sites of the rows above and below, each at the left and at the
/// right of this row's sites.
struct Corners {
    const float* greenAbove{nullptr};
    const float* greenBelow{nullptr};
    const float* above{nullptr};
    const float* below{nullptr};
};

/// Pixels at the sites, `matrix` applied. The corners' pointers stand at the left ones.
void pixelsAtSites(const float* site,
                   const float* green,
                   const Corners& corners,
                   bool siteIsRed,
                   int count,
                   const Matrix& matrix,
                   const Planes& into);

/// Pixels at the greens: the differences at the left (and, one further, at the right) of them, and
/// above and below.
void pixelsAtGreens(const float* green,
                    const float* left,
                    const float* above,
                    const float* below,
                    bool siteIsRed,
                    int count,
                    const Matrix& matrix,
                    const Planes& into);

/// Pixels of whole cells.
struct Cells {
    const float* red{nullptr};
    const float* firstGreen{nullptr};
    const float* secondGreen{nullptr};
    const float* blue{nullptr};
};

void pixelsOfCells(const Cells& cells, int count, const Matrix& matrix, const Planes& into);

} // namespace BayerKernels
