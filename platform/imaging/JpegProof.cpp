#include "JpegProof.h"

#include "ByteAverages.h"
#include "JpegDecoder.h"
#include "ReducedPicture.h"
#include "SceneComparison.h"
#include "SrgbTransfer.h"
#include "Tasks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>

namespace
{

/// A picture with fewer pixels on its longest side is decoded at full size, so that enough is left
/// to tell scenes by.
constexpr int kFewestBlocks = 128;

// What rounding and the clipping of coloured pixels add to the quantisation's error, in levels: to
// the mean of a row of blocks, to a single one, and to a channel of the whole. Measured on checks
// and noise of pure colours in every quality: 4, 28 and 9 at most.
constexpr double kErrorOfRow = 6.0;
constexpr double kErrorOfBlock = 40.0;
constexpr double kErrorOfChannel = 12.0;

/// Colour differences have coarser steps than lightness, and count more in a channel.
constexpr double kChannelFactor = 2.0;

/// Pixels a side of the blocks that are compared, those that JPEG codes.
constexpr int kBlock = 8;

/// Deviation of lightness (0..1): what a picture has, and what a flat one has at most.
constexpr double kVaried = 0.02;
constexpr double kFlat = 0.004;

/// How many times the light of one rendering of a scene may be that of another: four stops. A
/// linear rendering of a photo taken with a highlight programme is two to three stops darker than
/// its preview.
constexpr double kLightBound = 16.0;

Error failed(ErrorCode code, const QString& what)
{
    return {code, QStringLiteral("the finished JPEG did not pass its proof: %1").arg(what)};
}

/// What was made is not what was to be made: the fault is this program's, or the machine's.
Error unlikeEncoded(const QString& what)
{
    return failed(ErrorCode::Internal, what);
}

/// The picture may not be the photo's.
Error damaged(const QString& what)
{
    return failed(ErrorCode::Damaged, what);
}

/// How far the means of blocks lie apart, in levels of 0..255.
class Differences final
{
public:
    /// Adds a row of blocks, R, G and B each.
    void add(std::span<const uchar> decoded, std::span<const uchar> encoded)
    {
        m_ofRow = 0.0;
        for (std::size_t i = 0; i < decoded.size(); i += 3) {
            double lightness = 0.0;
            for (std::size_t channel = 0; channel < 3; ++channel) {
                const int difference = decoded[i + channel] - encoded[i + channel];
                lightness += kLightness.at(channel) * difference;
                m_channels.at(channel) += difference;
            }
            m_ofRow += std::abs(lightness);
            m_ofBlock = std::max(m_ofBlock, std::abs(lightness));
        }
        const double blocks = static_cast<double>(decoded.size()) / 3.0;
        m_ofRow /= blocks;
        m_blocks += blocks;
    }

    /// The mean of the last row's.
    [[nodiscard]] double ofRow() const { return m_ofRow; }

    /// The largest of a block.
    [[nodiscard]] double ofBlock() const { return m_ofBlock; }

    /// The largest of a channel over all blocks together.
    [[nodiscard]] double drift() const
    {
        return std::max(
                   {std::abs(m_channels[0]), std::abs(m_channels[1]), std::abs(m_channels[2])}) /
               m_blocks;
    }

private:
    /// The lightness that JPEG codes (ITU-R BT.601).
    static constexpr std::array<double, 3> kLightness{0.299, 0.587, 0.114};

    double m_ofRow{0.0};
    double m_ofBlock{0.0};
    double m_blocks{0.0};
    std::array<double, 3> m_channels{};
};

/// Every row of blocks and every block must be as close as the quantisation keeps it, and no
/// channel may drift. Both pictures are means of blocks, `error` the quantisation's.
std::optional<Error> compare(const QImage& decoded, const QImage& encoded, double error)
{
    Differences differences;
    const auto values = std::size_t{3} * static_cast<std::size_t>(decoded.width());
    for (int y = 0; y < decoded.height(); ++y) {
        differences.add({decoded.constScanLine(y), values}, {encoded.constScanLine(y), values});
        if (differences.ofRow() > error + kErrorOfRow ||
            differences.ofBlock() > error + kErrorOfBlock) {
            return unlikeEncoded(
                QStringLiteral("from row %1 on it is not the picture that was encoded")
                    .arg(y * kBlock));
        }
    }
    return differences.drift() > kChannelFactor * error + kErrorOfChannel
               ? std::optional(unlikeEncoded(
                     QStringLiteral("its colours are not those of the picture that was encoded")))
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
std::optional<Error> contradiction(const SceneComparison::Views& picture,
                                   const QImage& reference,
                                   JpegProof::Source source)
{
    const auto shown = SceneComparison::Views::of(ReducedPicture::of(reference));
    if (!SceneComparison::isStructured(shown.lightness)) {
        return std::nullopt;
    }
    const auto match = SceneComparison::bestMatch(picture.lightness, shown.lightness);
    if (match.likeness < SceneComparison::kSameScene) {
        return std::nullopt;
    }
    // Also where the picture is too dark to show any structure but the reference's.
    if (isFarApart(meanLight(picture.lightness), meanLight(shown.lightness))) {
        return damaged(QStringLiteral("it is far darker or lighter than the preview of the photo"));
    }
    const bool mayLackColors =
        source == JpegProof::Source::Finished && SceneComparison::isMonochrome(picture);
    if (!mayLackColors && SceneComparison::hasOtherColors(picture, shown, match.overlay)) {
        return damaged(QStringLiteral("its colours are not those of the preview of the photo"));
    }
    return std::nullopt;
}

std::optional<Error>
contradiction(const QImage& decoded, const QList<QImage>& references, JpegProof::Source source)
{
    if (references.isEmpty()) {
        return std::nullopt;
    }
    const auto picture = SceneComparison::Views::of(ReducedPicture::of(decoded));
    for (const QImage& reference : references) {
        if (auto failure = contradiction(picture, reference, source)) {
            return failure;
        }
    }
    return std::nullopt;
}

/// `decoded`: averaged by `denominator`; `encodedBlocks`: what was encoded, by kBlock.
std::optional<Error>
difference(const QImage& decoded, int denominator, const QImage& encodedBlocks, double error)
{
    const QImage decodedBlocks =
        denominator == kBlock ? decoded : ByteAverages::of(decoded, kBlock / denominator);
    if (decodedBlocks.isNull() || encodedBlocks.isNull()) {
        return Error{ErrorCode::OutOfSpace,
                     QStringLiteral("memory is too short to prove the finished JPEG")};
    }
    const auto deviation = [](const QImage& image) { return SmallPicture::of(image).deviation(); };
    if (deviation(decodedBlocks) < kFlat && deviation(encodedBlocks) >= kVaried) {
        return unlikeEncoded(QStringLiteral("it shows nothing where the source shows something"));
    }
    return compare(decodedBlocks, encodedBlocks, error);
}

} // namespace

Result<void> JpegProof::prove(const QByteArray& jpeg,
                              const QImage& encoded,
                              const QList<QImage>& references,
                              Source source)
{
    const QSize size = JpegDecoder::size(jpeg).value_or(encoded.size());
    const int denominator = JpegDecoder::denominatorFor(size, kFewestBlocks) == kBlock ? kBlock : 1;
    const auto [decoded, encodedBlocks] =
        Tasks::both([&] { return JpegDecoder::decodeReduced(jpeg, denominator); },
                    [&] { return ByteAverages::of(encoded, kBlock); });
    if (!decoded.ok()) {
        return decoded.error().code == ErrorCode::OutOfSpace
                   ? decoded.error()
                   : unlikeEncoded(decoded.error().message);
    }
    if (size != encoded.size()) {
        return unlikeEncoded(QStringLiteral("it has %1 by %2 pixels instead of %3 by %4")
                                 .arg(size.width())
                                 .arg(size.height())
                                 .arg(encoded.width())
                                 .arg(encoded.height()));
    }
    if (const auto failure =
            difference(decoded.value(), denominator, encodedBlocks, JpegDecoder::meanError(jpeg))) {
        return *failure;
    }
    if (const auto failure = contradiction(decoded.value(), references, source)) {
        return *failure;
    }
    return {};
}
