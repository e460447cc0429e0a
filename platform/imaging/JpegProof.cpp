#include "JpegProof.h"

#include "JpegDecoder.h"
#include "ReducedPicture.h"
#include "SceneComparison.h"
#include "SrgbTransfer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <optional>

namespace
{

/// What rounding and the clipping of coloured pixels add to the quantisation's error, in levels.
constexpr double kOtherErrors = 6.0;

/// Rows that are compared together; JPEG codes 8 or 16 at a time.
constexpr int kBandRows = 16;

/// Deviation of lightness (0..1): what a picture has, and what a flat one has at most.
constexpr double kVaried = 0.02;
constexpr double kFlat = 0.004;

/// How many times the light of one rendering of a scene may be that of another: four stops. A
/// linear rendering of a photo taken with a highlight programme is two to three stops darker than
/// its preview.
constexpr double kLightBound = 16.0;

/// Sums over some rows, in levels of 0..255.
struct Differences {
    double lightness{0.0}; ///< absolute
    std::array<double, 3> channels{};
    double pixels{0.0};

    void add(const Differences& other)
    {
        lightness += other.lightness;
        pixels += other.pixels;
        for (std::size_t i = 0; i < channels.size(); ++i) {
            channels.at(i) += other.channels.at(i);
        }
    }
};

Error damaged(const QString& what)
{
    return {ErrorCode::Damaged,
            QStringLiteral("The finished JPEG did not pass its proof: %1.").arg(what)};
}

Differences compareRows(const Bitmap& first, const Bitmap& second, int from, int end)
{
    // The lightness that JPEG codes (ITU-R BT.601), in thousandths.
    constexpr int kRed = 299;
    constexpr int kGreen = 587;
    constexpr int kBlue = 114;
    const SrgbTransfer& tables = SrgbTransfer::tables();
    const bool linear = second.transfer() == Transfer::Linear;
    const auto level = [&](quint16 value) -> int {
        return linear ? tables.encodedByte(value) : roundedByte(value);
    };
    std::array<qint64, 3> channels{};
    qint64 lightness = 0;
    for (int y = from; y < end; ++y) {
        const auto one = first.row(y);
        const auto two = second.row(y);
        for (std::size_t i = 0; i < one.size(); i += 3) {
            const int red = roundedByte(one[i]) - level(two[i]);
            const int green = roundedByte(one[i + 1]) - level(two[i + 1]);
            const int blue = roundedByte(one[i + 2]) - level(two[i + 2]);
            channels[0] += red;
            channels[1] += green;
            channels[2] += blue;
            lightness += std::abs(kRed * red + kGreen * green + kBlue * blue);
        }
    }
    Differences sums;
    sums.lightness = static_cast<double>(lightness) / (kRed + kGreen + kBlue);
    for (std::size_t i = 0; i < channels.size(); ++i) {
        sums.channels.at(i) = static_cast<double>(channels.at(i));
    }
    sums.pixels = static_cast<double>(end - from) * first.pixelsWide();
    return sums;
}

/// Every band of rows must be as close as the quantisation keeps it, and no channel may drift.
std::optional<Error> compare(const Bitmap& decoded, const Bitmap& encoded, double bound)
{
    Differences all;
    for (int y = 0; y < decoded.pixelsHigh(); y += kBandRows) {
        const int end = std::min(y + kBandRows, decoded.pixelsHigh());
        const Differences band = compareRows(decoded, encoded, y, end);
        if (band.lightness / band.pixels > bound) {
            return damaged(
                QStringLiteral("from row %1 on it is not the picture that was encoded").arg(y));
        }
        all.add(band);
    }
    const bool drifted = std::ranges::any_of(
        all.channels, [&](double sum) { return std::abs(sum) / all.pixels > bound; });
    return drifted ? std::optional(damaged(QStringLiteral(
                         "its colours are not those of the picture that was encoded")))
                   : std::nullopt;
}

/// The mean light (0..1) of sRGB encoded lightness.
double meanLight(const SmallPicture& lightness)
{
    double sum = 0.0;
    for (const float value : lightness.values()) {
        const double encoded = std::clamp(static_cast<double>(value), 0.0, 1.0);
        sum += SrgbTransfer::tables().linear(static_cast<quint16>(std::lround(encoded * 65535.0)));
    }
    return sum / 65535.0 / std::max(1.0, static_cast<double>(lightness.values().size()));
}

bool isFarApart(double light, double other)
{
    return light > other * kLightBound || other > light * kLightBound;
}

/// What speaks against the picture where the reference shows the same scene.
std::optional<Error> contradiction(const SceneComparison::Views& picture, const QImage& reference)
{
    const auto shown = SceneComparison::Views::of(reference);
    if (!SceneComparison::isStructured(shown.lightness) ||
        SceneComparison::likeness(picture.lightness, shown.lightness) <
            SceneComparison::kSameScene) {
        return std::nullopt;
    }
    // Also where the picture is too dark to show any structure but the reference's.
    if (isFarApart(meanLight(picture.lightness), meanLight(shown.lightness))) {
        return damaged(QStringLiteral("it is far darker or lighter than the preview of the photo"));
    }
    if (SceneComparison::hasOtherColors(picture, shown)) {
        return damaged(QStringLiteral("its colours are not those of the preview of the photo"));
    }
    return std::nullopt;
}

std::optional<Error> contradiction(const Bitmap& decoded, const QList<QImage>& references)
{
    if (references.isEmpty()) {
        return std::nullopt;
    }
    const auto picture = SceneComparison::Views::of(ReducedPicture::of(decoded));
    for (const QImage& reference : references) {
        if (auto failure = contradiction(picture, reference)) {
            return failure;
        }
    }
    return std::nullopt;
}

} // namespace

Result<void>
JpegProof::prove(const QByteArray& jpeg, const Bitmap& encoded, const QList<QImage>& references)
{
    const Result<Bitmap> decoded = JpegDecoder::decode(jpeg);
    if (!decoded.ok()) {
        return Error{decoded.error().code, damaged(decoded.error().message).message};
    }
    if (decoded.value().size() != encoded.size()) {
        return damaged(QStringLiteral("it has %1 by %2 pixels instead of %3 by %4")
                           .arg(decoded.value().pixelsWide())
                           .arg(decoded.value().pixelsHigh())
                           .arg(encoded.pixelsWide())
                           .arg(encoded.pixelsHigh()));
    }
    const auto deviation = [](const Bitmap& bitmap) {
        return SmallPicture::of(ReducedPicture::of(bitmap)).deviation();
    };
    if (deviation(decoded.value()) < kFlat && deviation(encoded) >= kVaried) {
        return damaged(QStringLiteral("it shows nothing where the source shows something"));
    }
    const double bound = JpegDecoder::quantisationError(jpeg) + kOtherErrors;
    if (const auto failure = compare(decoded.value(), encoded, bound)) {
        return *failure;
    }
    if (const auto failure = contradiction(decoded.value(), references)) {
        return *failure;
    }
    return {};
}

Result<Bitmap> JpegProof::decodeWhole(const QByteArray& jpeg)
{
    return JpegDecoder::decode(jpeg);
}
