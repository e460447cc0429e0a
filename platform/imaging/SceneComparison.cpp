#include "SceneComparison.h"

#include "Correlation.h"
#include "SrgbTransfer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <utility>
#include <vector>

using SceneComparison::Overlay;

namespace
{

/// Smaller pictures hold too little to prove anything.
constexpr int kSmallestSide = 24;

/// Deviation of lightness (0..1) below which a picture counts as flat.
constexpr double kFlat = 0.02;

/// Neighbours in small pictures of scenes correlate by 0.7 and more, those of noise by about 0.
constexpr double kSceneNeighbours = 0.6;
constexpr double kNoiseNeighbours = 0.25;

/// Mean step between neighbouring pixels at full size (0..1). Measured: values by chance 0.17 and
/// more; a dark frame or a sky of stars below 0.08, since most of it is black.
constexpr double kNoiseStep = 0.12;

/// Values by chance are as often light as dark; clipping makes them lighter.
constexpr double kDarkestNoise = 0.3;

/// Nothing but noise around black in fewer pixels than any camera's sensor has is what is left of
/// a file that was cut down.
constexpr qint64 kSmallestPhoto = 640LL * 480;
constexpr double kBlackMean = 0.01;
constexpr double kBlackStep = 0.001;

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

SmallPicture turnedBy(SmallPicture picture, int turns)
{
    for (int quarter = 0; quarter < turns; ++quarter) {
        picture = picture.turned();
    }
    return picture;
}

/// The values of both pictures at the same places.
std::pair<SmallPicture, SmallPicture>
laidOver(const SmallPicture& first, const SmallPicture& second, const Overlay& overlay)
{
    const QSize grid(kGrid, kGrid);
    return {first.sampled(overlay.first, grid),
            turnedBy(second, overlay.turns).sampled(overlay.second, grid)};
}

double correlationOf(const std::pair<SmallPicture, SmallPicture>& pictures)
{
    return Correlation::ofRanks(pictures.first.values(), pictures.second.values());
}

/// The ways to lay pictures of these shapes (width by height) over each other.
std::vector<Overlay> overlays(double firstShape, double secondShape)
{
    // Beyond this they are no turns of each other.
    constexpr double kDifferent = 1.5;
    std::vector<Overlay> all;
    for (int turns = 0; turns < 4; ++turns) {
        const double shape = turns % 2 == 0 ? secondShape : 1.0 / secondShape;
        if (firstShape > shape * kDifferent || shape > firstShape * kDifferent) {
            continue;
        }
        all.push_back({.turns = turns});
        all.push_back({.turns = turns, .first = fitted(firstShape, shape)});
        all.push_back({.turns = turns, .second = fitted(shape, firstShape)});
    }
    return all;
}

/// Whether one view of the colour depends on lightness alone.
bool isTonedIn(const SmallPicture& lightness, const SmallPicture& color)
{
    constexpr std::size_t kSteps = 16;
    constexpr double kColored = 0.015;
    std::array<double, kSteps> sums{};
    std::array<double, kSteps> squares{};
    std::array<double, kSteps> counts{};
    for (std::size_t i = 0; i < color.values().size(); ++i) {
        const auto part = static_cast<double>(lightness.values()[i]) * kSteps;
        const auto step = static_cast<std::size_t>(std::clamp(part, 0.0, kSteps - 1.0));
        const auto value = static_cast<double>(color.values()[i]);
        sums.at(step) += value;
        squares.at(step) += value * value;
        counts.at(step) += 1.0;
    }
    double rest = 0.0;
    for (std::size_t step = 0; step < kSteps; ++step) {
        rest += squares.at(step) - sums.at(step) * sums.at(step) / std::max(counts.at(step), 1.0);
    }
    return rest <= kColored * kColored * static_cast<double>(color.values().size());
}

/// Whether the colours are far apart on the whole, or one picture's are where the other's are not,
/// as after an exchange of channels.
bool isContrary(const std::pair<SmallPicture, SmallPicture>& colors)
{
    constexpr double kBound = 0.4;
    constexpr double kColored = 0.03;
    constexpr double kContrary = -0.5;
    if (std::abs(colors.first.mean() - colors.second.mean()) > kBound) {
        return true;
    }
    return colors.first.deviation() >= kColored && colors.second.deviation() >= kColored &&
           correlationOf(colors) <= kContrary;
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

/// Cells of a grid, row by row, that are marked or not.
class MarkedCells final
{
public:
    MarkedCells(int width, std::vector<bool> marks)
        : m_width(width)
        , m_marks(std::move(marks))
    {
    }

    /// How many cells the largest patch has of those that touch by a side. Unmarks them all.
    [[nodiscard]] int takeLargestPatch()
    {
        int largest = 0;
        for (std::size_t cell = 0; cell < m_marks.size(); ++cell) {
            largest = std::max(largest, takePatchAt(static_cast<int>(cell)));
        }
        return largest;
    }

private:
    int takePatchAt(int first)
    {
        std::vector<int> found;
        take(first, found);
        for (std::size_t next = 0; next < found.size(); ++next) {
            const int cell = found[next];
            take(cell - m_width, found);
            take(cell + m_width, found);
            if (cell % m_width > 0) {
                take(cell - 1, found);
            }
            if (cell % m_width < m_width - 1) {
                take(cell + 1, found);
            }
        }
        return static_cast<int>(found.size());
    }

    void take(int cell, std::vector<int>& found)
    {
        if (cell >= 0 && cell < std::ssize(m_marks) && m_marks[static_cast<std::size_t>(cell)]) {
            m_marks[static_cast<std::size_t>(cell)] = false;
            found.push_back(cell);
        }
    }

    int m_width;
    std::vector<bool> m_marks;
};

/// The cells in which a picture is compared with a thumbnail of it. Makers of thumbnails average,
/// or pick single pixels, and round positions: a cell must hold several pixels of the thumbnail to
/// forget that.
QSize cellsOf(QSize thumbnail)
{
    constexpr int kPixelsOfACell = 5;
    constexpr int kMostCells = 32;
    const int longest = std::max(thumbnail.width(), thumbnail.height());
    const int cells = std::clamp(longest / kPixelsOfACell, 1, kMostCells);
    return thumbnail.scaled(cells, cells, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

/// Marks where the lightness of cells differs by more than `other` from what most do: what all
/// places have in common is a matter of tone.
std::vector<bool>
marksOf(const std::vector<float>& values, const std::vector<float>& expected, float other)
{
    std::vector<float> steps;
    std::ranges::transform(values, expected, std::back_inserter(steps), std::minus<float>());
    std::vector<float> sorted = steps;
    const auto middle = sorted.begin() + std::ssize(sorted) / 2;
    std::ranges::nth_element(sorted, middle);
    std::vector<bool> marks;
    std::ranges::transform(steps, std::back_inserter(marks), [&](float step) {
        return std::abs(step - *middle) > other;
    });
    return marks;
}

/// Whether a place differs that should not where the rest is alike: the thumbnail was made of the
/// very picture. Only for thumbnails of the picture's own shape, which lie as it does. Measured
/// over good photos with thumbnails of 64 to 320 pixels, averaged, picked and by libheif: patches
/// of 2 cells at most.
bool differsInPlaces(const SmallPicture& decoded, const SmallPicture& shown)
{
    constexpr double kSameShape = 0.02;
    constexpr float kOther = 0.15F;
    constexpr int kSmallestThumbnail = 64;
    constexpr int kEnough = 3;
    const QSize thumbnail = shown.original();
    if (std::max(thumbnail.width(), thumbnail.height()) < kSmallestThumbnail ||
        std::abs(shapeOf(decoded) / shapeOf(shown) - 1.0) > kSameShape) {
        return false;
    }
    const QSize grid = cellsOf(thumbnail)
                           .boundedTo({decoded.width(), decoded.height()})
                           .boundedTo({shown.width(), shown.height()});
    const SmallPicture picture = decoded.averaged(grid);
    const SmallPicture expected = shown.averaged(grid);
    if (Correlation::ofRanks(picture.values(), expected.values()) < kOtherScene) {
        return false;
    }
    MarkedCells marked(grid.width(), marksOf(picture.values(), expected.values(), kOther));
    return marked.takeLargestPatch() >= kEnough;
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

SceneComparison::Match SceneComparison::bestMatch(const SmallPicture& first,
                                                  const SmallPicture& second)
{
    Match best;
    for (const Overlay& overlay : overlays(shapeOf(first), shapeOf(second))) {
        const double likeness = correlationOf(laidOver(first, second, overlay));
        if (likeness > best.likeness) {
            best = {.overlay = overlay, .likeness = likeness};
        }
    }
    return best;
}

double SceneComparison::likeness(const SmallPicture& first, const SmallPicture& second)
{
    return bestMatch(first, second).likeness;
}

bool SceneComparison::isToned(const Views& shown)
{
    return isTonedIn(shown.lightness, shown.redBlue) &&
           isTonedIn(shown.lightness, shown.greenMagenta);
}

SceneComparison::Views SceneComparison::Views::of(const Bitmap& bitmap)
{
    return {.lightness = SmallPicture::of(bitmap),
            .redBlue = SmallPicture::of(bitmap, SmallPicture::View::RedBlue),
            .greenMagenta = SmallPicture::of(bitmap, SmallPicture::View::GreenMagenta)};
}

SceneComparison::Views SceneComparison::Views::of(const QImage& image)
{
    return {.lightness = SmallPicture::of(image),
            .redBlue = SmallPicture::of(image, SmallPicture::View::RedBlue),
            .greenMagenta = SmallPicture::of(image, SmallPicture::View::GreenMagenta)};
}

bool SceneComparison::hasOtherColors(const Views& picture, const Views& shown)
{
    const Overlay overlay = bestMatch(picture.lightness, shown.lightness).overlay;
    const SmallPicture lightness = laidOver(picture.lightness, shown.lightness, overlay).second;
    const auto redBlue = laidOver(picture.redBlue, shown.redBlue, overlay);
    const auto greenMagenta = laidOver(picture.greenMagenta, shown.greenMagenta, overlay);
    if (isTonedIn(lightness, redBlue.second) && isTonedIn(lightness, greenMagenta.second)) {
        return false;
    }
    return isContrary(redBlue) || isContrary(greenMagenta);
}

bool SceneComparison::isNoise(const Bitmap& bitmap)
{
    return isNoise(SmallPicture::of(bitmap), bitmap.size(), bitmap);
}

bool SceneComparison::isNoise(const SmallPicture& small, QSize size, const Bitmap& rows)
{
    if (small.width() < kSmallestSide || small.height() < kSmallestSide) {
        return false;
    }
    if (small.neighbourCorrelation() >= kNoiseNeighbours) {
        return false;
    }
    const double step = meanStep(rows);
    const bool isRemnant = qint64{size.width()} * size.height() < kSmallestPhoto &&
                           small.mean() < kBlackMean && step >= kBlackStep;
    return isRemnant || (step >= kNoiseStep && small.mean() >= kDarkestNoise);
}

std::optional<QString> SceneComparison::complaint(const Bitmap& decoded,
                                                  const std::optional<QImage>& preview)
{
    return complaint(SmallPicture::of(decoded), preview, [&] { return isNoise(decoded); });
}

std::optional<QString> SceneComparison::complaint(const SmallPicture& small,
                                                  const std::optional<QImage>& preview,
                                                  const std::function<bool()>& isNoise)
{
    const SmallPicture shown = SmallPicture::of(preview.value_or(QImage()));
    if (!isStructured(shown)) {
        return isNoise() ? std::optional(
                               QStringLiteral("it decodes to noise, its picture data is corrupt"))
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

std::optional<QString> SceneComparison::thumbnailComplaint(const Bitmap& decoded,
                                                           const QImage& thumbnail)
{
    const SmallPicture shown = SmallPicture::of(thumbnail);
    if (!isStructured(shown)) {
        return std::nullopt;
    }
    if (auto found = complaint(decoded, thumbnail)) {
        return found;
    }
    return differsInPlaces(SmallPicture::of(decoded), shown)
               ? std::optional(QStringLiteral("a part of it does not show what its thumbnail "
                                              "shows, its picture data is corrupt"))
               : std::nullopt;
}
