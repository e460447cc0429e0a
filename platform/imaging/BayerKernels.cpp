#include "BayerKernels.h"

#include <cmath>
#include <utility>

// Compilers make a version of each function for the wider registers of newer processors as well;
// both give the same values, since neither may fuse multiplications and additions.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__SANITIZE_ADDRESS__) &&                  \
    !defined(__SANITIZE_THREAD__) && !defined(__clang__)
#define CORVANE_VECTORS __attribute__((target_clones("avx2", "default")))
#else
#define CORVANE_VECTORS
#endif

namespace
{

constexpr float kWhite = 65535.0F;

/// Squared gradients below this are the sensor's noise, or none.
constexpr float kNoGradient = 4.0e5F;
constexpr float kNoCornerGradient = 64.0F;

inline float least(float one, float other)
{
    return one < other ? one : other;
}

inline float most(float one, float other)
{
    return one > other ? one : other;
}

inline float clipped(float light)
{
    return least(most(light, 0.0F), kWhite);
}

inline quint16 stored(float light)
{
    return static_cast<quint16>(static_cast<int>(clipped(light) + 0.5F));
}

/// The columns in the order of the site's colour, green and the other colour.
BayerKernels::Matrix inOrderOfSite(const BayerKernels::Matrix& matrix, bool siteIsRed)
{
    BayerKernels::Matrix ordered = matrix;
    if (!siteIsRed) {
        for (std::size_t row = 0; row < ordered.size(); row += 3) {
            std::swap(ordered[row], ordered[row + 2]);
        }
    }
    return ordered;
}

} // namespace

CORVANE_VECTORS
void BayerKernels::prepare(const quint16* __restrict values,
                           int count,
                           Light first,
                           Light second,
                           float* __restrict even,
                           float* __restrict odd)
{
    for (int i = 0; i < count; ++i) {
        even[i] = least(most((static_cast<float>(values[2 * i]) - first.black) * first.scale, 0.0F),
                        first.white);
        odd[i] =
            least(most((static_cast<float>(values[2 * i + 1]) - second.black) * second.scale, 0.0F),
                  second.white);
    }
}

CORVANE_VECTORS
quint16 BayerKernels::highest(const quint16* values, int count)
{
    quint16 most = 0;
    for (int i = 0; i < count; ++i) {
        most = values[2 * i] > most ? values[2 * i] : most;
    }
    return most;
}

CORVANE_VECTORS
int BayerKernels::countFrom(quint16 bound, const quint16* values, int count)
{
    int found = 0;
    for (int i = 0; i < count; ++i) {
        found += values[2 * i] >= bound ? 1 : 0;
    }
    return found;
}

CORVANE_VECTORS
void BayerKernels::greensAtSites(const SiteRows& rows,
                                 int count,
                                 float* __restrict green,
                                 float* __restrict difference)
{
    const float* const site = rows.site;
    const float* const left = rows.left;
    const float* const right = rows.right;
    const float* const above = rows.above;
    const float* const below = rows.below;
    const float* const twoAbove = rows.twoAbove;
    const float* const twoBelow = rows.twoBelow;
    for (int i = 0; i < count; ++i) {
        const float twice = 2.0F * site[i];
        const float bendAcross = twice - site[i - 1] - site[i + 1];
        const float bendDown = twice - twoAbove[i] - twoBelow[i];
        const float across = 0.5F * (left[i] + right[i]) + 0.25F * bendAcross;
        const float down = 0.5F * (above[i] + below[i]) + 0.25F * bendDown;
        const float insideAcross =
            least(most(across, least(left[i], right[i])), most(left[i], right[i]));
        const float insideDown =
            least(most(down, least(above[i], below[i])), most(above[i], below[i]));
        const float slopeAcross = std::fabs(left[i] - right[i]) + std::fabs(bendAcross);
        const float slopeDown = std::fabs(above[i] - below[i]) + std::fabs(bendDown);
        const float weightAcross = slopeDown * slopeDown + kNoGradient;
        const float weightDown = slopeAcross * slopeAcross + kNoGradient;
        const float value =
            (insideAcross * weightAcross + insideDown * weightDown) / (weightAcross + weightDown);
        green[i] = value;
        difference[i] = site[i] - value;
    }
}

CORVANE_VECTORS
void BayerKernels::pixelsAtSites(const float* __restrict site,
                                 const float* __restrict green,
                                 const Corners& corners,
                                 bool siteIsRed,
                                 int count,
                                 const Matrix& matrix,
                                 const Planes& into)
{
    const float* const greenAbove = corners.greenAbove;
    const float* const greenBelow = corners.greenBelow;
    const float* const above = corners.above;
    const float* const below = corners.below;
    const Matrix m = inOrderOfSite(matrix, siteIsRed);
    quint16* __restrict const redInto = into.red;
    quint16* __restrict const greenInto = into.green;
    quint16* __restrict const blueInto = into.blue;
    for (int i = 0; i < count; ++i) {
        const float here = green[i];
        const float falling = std::fabs(above[i] - below[i + 1]) + std::fabs(greenAbove[i] - here) +
                              std::fabs(greenBelow[i + 1] - here) + kNoCornerGradient;
        const float rising = std::fabs(above[i + 1] - below[i]) +
                             std::fabs(greenAbove[i + 1] - here) + std::fabs(greenBelow[i] - here) +
                             kNoCornerGradient;
        const float more =
            ((above[i] + below[i + 1]) * rising + (above[i + 1] + below[i]) * falling) /
            (falling + rising);
        const float otherLight = clipped(here + 0.5F * more);
        redInto[i] = stored(m[0] * site[i] + m[1] * here + m[2] * otherLight);
        greenInto[i] = stored(m[3] * site[i] + m[4] * here + m[5] * otherLight);
        blueInto[i] = stored(m[6] * site[i] + m[7] * here + m[8] * otherLight);
    }
}

CORVANE_VECTORS
void BayerKernels::pixelsAtGreens(const float* __restrict green,
                                  const float* __restrict left,
                                  const float* __restrict above,
                                  const float* __restrict below,
                                  bool siteIsRed,
                                  int count,
                                  const Matrix& matrix,
                                  const Planes& into)
{
    const Matrix m = inOrderOfSite(matrix, siteIsRed);
    quint16* __restrict const redInto = into.red;
    quint16* __restrict const greenInto = into.green;
    quint16* __restrict const blueInto = into.blue;
    for (int i = 0; i < count; ++i) {
        const float here = green[i];
        const float ownLight = clipped(here + 0.5F * (left[i] + left[i + 1]));
        const float otherLight = clipped(here + 0.5F * (above[i] + below[i]));
        redInto[i] = stored(m[0] * ownLight + m[1] * here + m[2] * otherLight);
        greenInto[i] = stored(m[3] * ownLight + m[4] * here + m[5] * otherLight);
        blueInto[i] = stored(m[6] * ownLight + m[7] * here + m[8] * otherLight);
    }
}

CORVANE_VECTORS
void BayerKernels::pixelsOfCells(const Cells& cells,
                                 int count,
                                 const Matrix& matrix,
                                 const Planes& into)
{
    const float* const red = cells.red;
    const float* const firstGreen = cells.firstGreen;
    const float* const secondGreen = cells.secondGreen;
    const float* const blue = cells.blue;
    const Matrix m = matrix;
    quint16* __restrict const redInto = into.red;
    quint16* __restrict const greenInto = into.green;
    quint16* __restrict const blueInto = into.blue;
    for (int i = 0; i < count; ++i) {
        const float green = 0.5F * (firstGreen[i] + secondGreen[i]);
        redInto[i] = stored(m[0] * red[i] + m[1] * green + m[2] * blue[i]);
        greenInto[i] = stored(m[3] * red[i] + m[4] * green + m[5] * blue[i]);
        blueInto[i] = stored(m[6] * red[i] + m[7] * green + m[8] * blue[i]);
    }
}
