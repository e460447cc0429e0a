#include "SceneComparison.h"

#include "Correlation.h"
#include "SrgbTransfer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace
{

/// Smaller pictures hold too little to prove anything.
constexpr int kSmallestSide = 24;

/// Deviation of lightness (0..1) below which a picture counts as flat.
constexpr double kFlat = 0.02;

/// Neighbours in small pictures of scenes correlate by 0.7 and more, those of noise by about 0.
constexpr double kSceneNeighbours = 0.6;
constexpr double kNoiseNeighbours = 0.25;

/// Mean step between neighbouring pixels at full size (0..1); mere darkness, as of a dark room,
/// stays below it.
constexpr double kNoiseStep = 0.001;

/// Below this likeness two pictures show different things; measured: the same scene 0.85 and
/// more, noise below 0.1.
constexpr double kOtherScene = 0.5;

constexpr int kGrid = 64;
constexpr int kCells = 8;

/// Centred part of a picture of the shape `own` (width by height) that has the shape `wanted`.
QRectF fitted(double own, double wanted)
{
    if (own > wanted) {
        const double part = wanted / own;
        return {(1.0 - part) / 2.0, 0.0, part, 1.0};
    }
    const double part = own / wanted;
    return {0.0, (1.0 - part) / 2.0, 1.0, part};
}

double shapeOf(const SmallPicture& picture)
{
    return static_cast<double>(picture.original().width()) / picture.original().height();
}

double gridCorrelation(const SmallPicture& first,
                       const QRectF& firstArea,
                       const SmallPicture& second,
                       const QRectF& secondArea)
{
    const QSize grid(kGrid, kGrid);
    return Correlation::ofRanks(first.sampled(firstArea, grid).values(),
                                second.sampled(secondArea, grid).values());
}

double bestFit(const SmallPicture& first, const SmallPicture& second)
{
    const QRectF whole(0.0, 0.0, 1.0, 1.0);
    const double firstShape = shapeOf(first);
    const double secondShape = shapeOf(second);
    // Beyond this they are no turns of each other.
    constexpr double kDifferent = 1.5;
    if (firstShape > secondShape * kDifferent || secondShape > firstShape * kDifferent) {
        return -1.0;
    }
    return std::max({gridCorrelation(first, whole, second, whole),
                     gridCorrelation(first, fitted(firstShape, secondShape), second, whole),
                     gridCorrelation(first, whole, second, fitted(secondShape, firstShape))});
}

/// Lightness of one cell of kCells by kCells.
struct Cell {
    double lightest{0.0};
    double mean{0.0};
    double deviation{0.0};
};

Cell cellOf(const SmallPicture& picture, int column, int row)
{
    // Without a rim, into which the neighbours' light runs.
    constexpr double kSide = 1.0 / kCells;
    constexpr double kRim = 0.15;
    const QRectF inner((column + kRim) * kSide,
                       (row + kRim) * kSide,
                       (1.0 - 2.0 * kRim) * kSide,
                       (1.0 - 2.0 * kRim) * kSide);
    const SmallPicture part = picture.sampled(inner, {kCells, kCells});
    return {double{*std::ranges::max_element(part.values())}, part.mean(), part.deviation()};
}

/// Whether whole parts are black that the preview shows light and varied: data lost inside a file
/// that keeps its length. Only for previews of the picture's own shape, which lie as it does.
bool lacksParts(const SmallPicture& decoded, const SmallPicture& shown)
{
    constexpr double kBlack = 0.01;
    constexpr double kLight = 0.2;
    constexpr double kPatterned = 0.03;
    constexpr double kSameShape = 0.02;
    constexpr int kEnough = 2;
    if (std::abs(shapeOf(decoded) / shapeOf(shown) - 1.0) > kSameShape) {
        return false;
    }
    int missing = 0;
    std::vector<float> decodedRest;
    std::vector<float> shownRest;
    for (int cell = 0; cell < kCells * kCells; ++cell) {
        const Cell preview = cellOf(shown, cell % kCells, cell / kCells);
        const Cell picture = cellOf(decoded, cell % kCells, cell / kCells);
        if (preview.mean <= kLight || picture.lightest >= kBlack) {
            decodedRest.push_back(static_cast<float>(picture.mean));
            shownRest.push_back(static_cast<float>(preview.mean));
        } else if (preview.deviation > kPatterned) {
            ++missing;
        }
    }
    // What is left must be the same scene, lest the preview is one of another.
    return missing >= kEnough && Correlation::ofRanks(decodedRest, shownRest) >= kOtherScene;
}

double meanStep(const Bitmap& bitmap)
{
    // A few hundred rows are enough, spread over the picture.
    const int rowStep = std::max(1, bitmap.pixelsHigh() / 256);
    const SrgbTransfer& tables = SrgbTransfer::tables();
    const bool linear = bitmap.transfer() == Transfer::Linear;
    const auto encoded = [&](quint16 value) { return linear ? tables.encoded(value) : value; };
    double sum = 0.0;
    double count = 0.0;
    for (int y = 0; y < bitmap.pixelsHigh(); y += rowStep) {
        const auto row = bitmap.row(y);
        for (std::size_t i = 4; i < row.size(); i += 3) {
            sum += std::abs(encoded(row[i]) - encoded(row[i - 3])) / 65535.0;
            count += 1.0;
        }
    }
    return count > 0.0 ? sum / count : 0.0;
}

} // namespace

bool SceneComparison::isStructured(const SmallPicture& picture)
{
    return picture.width() >= kSmallestSide && picture.height() >= kSmallestSide &&
           picture.deviation() >= kFlat && picture.neighbourCorrelation() >= kSceneNeighbours;
}

double SceneComparison::likeness(const SmallPicture& first, const SmallPicture& second)
{
    double best = -1.0;
    SmallPicture turned = second;
    for (int quarter = 0; quarter < 4; ++quarter) {
        best = std::max(best, bestFit(first, turned));
        turned = turned.turned();
    }
    return best;
}

bool SceneComparison::isNoise(const Bitmap& bitmap)
{
    const SmallPicture small = SmallPicture::of(bitmap);
    if (small.width() < kSmallestSide || small.height() < kSmallestSide) {
        return false;
    }
    return small.neighbourCorrelation() < kNoiseNeighbours && meanStep(bitmap) >= kNoiseStep;
}

std::optional<QString> SceneComparison::complaint(const Bitmap& decoded,
                                                  const std::optional<QImage>& preview)
{
    const SmallPicture small = SmallPicture::of(decoded);
    const SmallPicture shown = SmallPicture::of(preview.value_or(QImage()));
    if (!isStructured(shown)) {
        return isNoise(decoded) ? std::optional(QStringLiteral(
                                      "it decodes to noise, its picture data is corrupt"))
                                : std::nullopt;
    }
    if (lacksParts(small, shown)) {
        return QStringLiteral("a part of it decodes to nothing that its preview shows");
    }
    // A preview of another scene proves nothing: editors leave old ones behind.
    if (likeness(small, shown) >= kOtherScene || isStructured(small)) {
        return std::nullopt;
    }
    if (small.deviation() < kFlat) {
        return QStringLiteral("it decodes to nothing, though its preview shows a picture");
    }
    return QStringLiteral("it decodes to noise, though its preview shows a picture");
}
