#include "PictureDamage.h"

#include "Correlation.h"
#include "MarkedCells.h"
#include "PlaceComparison.h"
#include "SceneComparison.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <utility>
#include <vector>

namespace
{

/// Deviation of lightness (0..1) below which a picture counts as flat.
constexpr double kFlatPicture = 0.02;

/// Below this likeness two pictures show different things; measured: the same scene 0.85 and
/// more, noise below 0.1.
constexpr double kOtherScene = 0.5;

constexpr int kCells = 8;

/// Lightness of one cell of kCells by kCells.
struct Cell {
    double lightest{0.0};
    double mean{0.0};
    double deviation{0.0};
};

Cell cellOf(const SmallPicture& picture, int column, int row)
{
    // Without a rim, into which the neighbours' light runs.
    constexpr double kCellSide = 1.0 / kCells;
    constexpr double kRim = 0.15;
    const QRectF inner((column + kRim) * kCellSide,
                       (row + kRim) * kCellSide,
                       (1.0 - 2.0 * kRim) * kCellSide,
                       (1.0 - 2.0 * kRim) * kCellSide);
    const SmallPicture part = picture.sampled(inner, {kCells, kCells});
    return {double{*std::ranges::max_element(part.values())}, part.mean(), part.deviation()};
}

double sidesOf(const SmallPicture& picture)
{
    return static_cast<double>(picture.original().width()) / picture.original().height();
}

/// Pictures of one shape lie one as the other.
bool haveSameShape(const SmallPicture& decoded, const SmallPicture& shown)
{
    constexpr double kSameShape = 0.02;
    return std::abs(sidesOf(decoded) / sidesOf(shown) - 1.0) <= kSameShape;
}

/// Whether whole parts are black that the preview shows light and varied: data lost inside a file
/// that keeps its length. Only for previews of the picture's own shape.
bool lacksParts(const SmallPicture& decoded, const SmallPicture& shown)
{
    constexpr double kBlack = 0.01;
    constexpr double kLight = 0.2;
    constexpr double kPatterned = 0.03;
    constexpr int kEnough = 2;
    if (!haveSameShape(decoded, shown)) {
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
    constexpr float kOther = 0.15F;
    constexpr int kSmallestThumbnail = 64;
    constexpr int kEnough = 3;
    const QSize thumbnail = shown.original();
    if (std::max(thumbnail.width(), thumbnail.height()) < kSmallestThumbnail ||
        !haveSameShape(decoded, shown)) {
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
    const MarkedCells marked(grid.width(), marksOf(picture.values(), expected.values(), kOther));
    return marked.largestPatch() >= kEnough;
}

/// The grid in whose rows edges are looked for.
constexpr QSize kEdgeGrid(16, 64);

/// Whether lightness changes near a place, 0..1 of the height of what both show, alike in both.
bool isEdgeInBoth(double place, const SmallPicture& picture, const SmallPicture& expected)
{
    constexpr int kNear = 3;
    constexpr double kBeyond = static_cast<double>(kNear) / kEdgeGrid.height();
    if (place < -kBeyond || place > 1.0 + kBeyond) {
        return false;
    }
    constexpr auto kChanges = static_cast<float>(2 * kNear * kEdgeGrid.width());
    constexpr float kVisible = 0.01F;
    constexpr float kSameChange = 0.5F;
    const int row = std::clamp(
        static_cast<int>(place * kEdgeGrid.height()), kNear, kEdgeGrid.height() - kNear - 1);
    float squares = 0.0F;
    float products = 0.0F;
    for (int y = row - kNear; y < row + kNear; ++y) {
        for (int x = 0; x < kEdgeGrid.width(); ++x) {
            const float change = picture.at(x, y + 1) - picture.at(x, y);
            squares += change * change;
            products += change * (expected.at(x, y + 1) - expected.at(x, y));
        }
    }
    return squares >= kVisible * kVisible * kChanges && products >= kSameChange * squares;
}

bool isMonochrome(const QImage& shown)
{
    return SceneComparison::isMonochrome(SceneComparison::Views::of(shown));
}

/// `isFiltered` tells whether the lightness of single colours may be any in what is shown.
std::optional<QString> complaintOf(const SmallPicture& decoded,
                                   const SmallPicture& shown,
                                   const std::function<bool()>& isFiltered)
{
    if (!SceneComparison::isStructured(shown)) {
        return std::nullopt;
    }
    if (lacksParts(decoded, shown)) {
        return QStringLiteral("a part of it decodes to nothing that its preview shows");
    }
    const PlaceComparison places(decoded, shown);
    if (places.hasLostPlaces() || (places.isDamaged() && !isFiltered())) {
        return QStringLiteral("a part of it does not show what its preview shows, its picture data "
                              "is corrupt");
    }
    if (places.isEmptyInPlaces()) {
        return QStringLiteral("a part of it decodes to nothing, its picture data is corrupt");
    }
    // A preview of another scene proves nothing: editors leave old ones behind.
    if (SceneComparison::isStructured(decoded) ||
        SceneComparison::likeness(decoded, shown) >= kOtherScene) {
        return std::nullopt;
    }
    if (decoded.deviation() < kFlatPicture) {
        return QStringLiteral("it decodes to nothing, though its preview shows a picture");
    }
    return QStringLiteral("it decodes to noise, though its preview shows a picture");
}

} // namespace

bool PictureDamage::areEdgesOfScene(const std::vector<double>& places,
                                    const SmallPicture& decoded,
                                    const SmallPicture& shown)
{
    const SceneComparison::Match match = SceneComparison::bestMatch(decoded, shown);
    if (match.likeness < kOtherScene) {
        return false;
    }
    const QRectF& area = match.overlay.first;
    const auto both = SceneComparison::laidOver(decoded, shown, match.overlay, kEdgeGrid);
    return std::ranges::all_of(places, [&](double place) {
        return isEdgeInBoth((place - area.top()) / area.height(), both.first, both.second);
    });
}

std::optional<QString> PictureDamage::complaint(const SmallPicture& decoded,
                                                const SmallPicture& shown,
                                                const QImage& preview)
{
    return complaintOf(decoded, shown, [&] { return isMonochrome(preview); });
}

std::optional<QString> PictureDamage::thumbnailComplaint(const SmallPicture& decoded,
                                                         const SmallPicture& shown)
{
    if (!SceneComparison::isStructured(shown)) {
        return std::nullopt;
    }
    if (auto found = complaintOf(decoded, shown, [] { return false; })) {
        return found;
    }
    return differsInPlaces(decoded, shown)
               ? std::optional(QStringLiteral("a part of it does not show what its thumbnail "
                                              "shows, its picture data is corrupt"))
               : std::nullopt;
}

std::optional<QString> PictureDamage::complaintOfFinished(const Bitmap& decoded,
                                                          const QImage& preview)
{
    return complaintOf(SmallPicture::of(decoded), SmallPicture::of(preview), [&] {
        return SceneComparison::isMonochrome(SceneComparison::Views::of(decoded)) !=
               isMonochrome(preview);
    });
}

std::optional<QString> PictureDamage::exifThumbnailComplaint(const Bitmap& decoded,
                                                             const QImage& thumbnail)
{
    return complaintOfFinished(decoded, thumbnail)
               ? std::optional(QStringLiteral(
                     "it does not show what its thumbnail shows, its picture data is corrupt or a "
                     "program changed the picture and left the thumbnail; look at it, and if it is "
                     "as it should be, save it anew with a thumbnail that shows it"))
               : std::nullopt;
}
