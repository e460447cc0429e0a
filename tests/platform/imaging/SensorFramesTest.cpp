#include "SensorFrames.h"

#include "BayerRenderer.h"
#include "BayerSamples.h"
#include "DemosaicingSamples.h"
#include "ImageBuilder.h"
#include "RawFile.h"
#include "RawPhoto.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

// What sensors measured. A cell of a mosaic has measured all three colours, so that a pixel of each
// makes a picture without a mosaic, which is given one anew.

namespace
{

/// A picture in the sensor's own colours.
struct Reference {
    Bitmap light;                    ///< as measured
    Bitmap balanced;                 ///< so that grey is grey
    std::array<double, 3> neutral{}; ///< what the sensor measures of grey
};

Bitmap cellsOf(const BayerMosaic& mosaic)
{
    Bitmap picture(mosaic.kept.width() / 2, mosaic.kept.height() / 2, Transfer::Linear);
    const auto lightAt = [&mosaic](int column, int row, std::size_t filter) {
        const float value = mosaic.values[row * mosaic.stride + column];
        return std::clamp(
            (value - mosaic.black.at(filter)) * mosaic.scale.at(filter), 0.0F, 65535.0F);
    };
    for (int y = 0; y < picture.pixelsHigh(); ++y) {
        for (int x = 0; x < picture.pixelsWide(); ++x) {
            std::array<float, 3> cell{};
            for (int place = 0; place < 4; ++place) {
                const int column = mosaic.kept.left() + 2 * x + place % 2;
                const int row = mosaic.kept.top() + 2 * y + place / 2;
                const auto filter = static_cast<std::size_t>(2 * (row % 2) + column % 2);
                cell.at(mosaic.colors.at(filter)) += lightAt(column, row, filter);
            }
            cell[BayerMosaic::Green] /= 2.0F;
            std::ranges::transform(
                cell, &picture.row(y)[3 * static_cast<std::size_t>(x)], [](float light) {
                    return static_cast<quint16>(std::lround(light));
                });
        }
    }
    return picture;
}

/// Each channel divided by what the sensor measures of grey.
Bitmap balancedBy(const std::array<double, 3>& neutral, Bitmap light)
{
    for (int y = 0; y < light.pixelsHigh(); ++y) {
        const auto row = light.row(y);
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i] =
                static_cast<quint16>(std::lround(std::min(row[i] / neutral.at(i % 3), 65535.0)));
        }
    }
    return light;
}

Reference referenceOf(const QByteArray& raw)
{
    const auto file = std::make_unique<RawFile>(raw);
    EXPECT_FALSE(file->unpackSensor());
    const auto mosaic = file->mosaic();
    if (!mosaic) {
        ADD_FAILURE() << "the sensor has no plain cells";
        return {};
    }
    Reference reference;
    reference.light = cellsOf(*mosaic);
    // In ten-thousandths, which files can state.
    std::ranges::transform(mosaic->balance, reference.neutral.begin(), [](float gain) {
        return std::round(10000.0 / static_cast<double>(gain)) / 10000.0;
    });
    reference.balanced = balancedBy(reference.neutral, reference.light);
    return reference;
}

double closenessOfOurs(const Reference& reference)
{
    const BayerSamples sensor(reference.light, BayerSamples::kPhases[0]);
    BayerMosaic mosaic = sensor.mosaic();
    std::ranges::transform(reference.neutral, mosaic.balance.begin(), [](double part) {
        return static_cast<float>(1.0 / part);
    });
    return Demosaicing::closeness(BayerRenderer(mosaic, kIdentityMatrix).linear(),
                                  reference.balanced);
}

double closenessOf(Demosaicing::Interpolation interpolation, const Reference& reference)
{
    const QByteArray mosaicked = ImageBuilder::dng(
        reference.light, {.crop = {}, .preview = {}, .neutral = reference.neutral});
    return Demosaicing::closeness(Demosaicing::byLibRaw(mosaicked, interpolation),
                                  reference.balanced);
}

/// Pixels whose red and blue are at their ends.
struct ClippedPixels {
    double all{0.0};
    double magenta{0.0};
};

ClippedPixels clippedPixelsOf(const Bitmap& frame)
{
    ClippedPixels clipped;
    for (int y = 0; y < frame.pixelsHigh(); ++y) {
        const auto row = frame.row(y);
        for (std::size_t i = 0; i < row.size(); i += 3) {
            if (row[i] == 65535 && row[i + 2] == 65535) {
                clipped.all += 1.0;
                // A mean of less green would be magenta.
                clipped.magenta += row[i + 1] < 58000 ? 1.0 : 0.0;
            }
        }
    }
    return clipped;
}

} // namespace

TEST(SensorFramesTest, coloursBetweenTheFiltersAreAsCloseAsPixelGroupingFindsThem)
{
    using Demosaicing::Interpolation;
    for (const QString& name : SensorFrames::names()) {
        const Reference reference = referenceOf(SensorFrames::read(name));
        const double ours = closenessOfOurs(reference);
        const double grouping = closenessOf(Interpolation::PixelGrouping, reference);
        EXPECT_GE(ours, grouping) << qPrintable(name);
        RecordProperty(name.toStdString(),
                       QStringLiteral("%1; pixel grouping %2, homogeneity %3, bilinear %4")
                           .arg(ours)
                           .arg(grouping)
                           .arg(closenessOf(Interpolation::Homogeneity, reference))
                           .arg(closenessOf(Interpolation::Bilinear, reference))
                           .toStdString());
    }
}

TEST(SensorFramesTest, lightThatClippedHasNoColour)
{
    // Specks of light smaller than a cell may have any colour.
    constexpr double kSpecks = 8.0;
    for (const QString& name : SensorFrames::names()) {
        const auto photo = RawPhoto::open(SensorFrames::read(name));
        ASSERT_TRUE(photo.ok()) << qPrintable(name);
        const ClippedPixels clipped = clippedPixelsOf(photo.value().linear());
        EXPECT_LE(clipped.magenta, 0.02 * clipped.all + kSpecks)
            << qPrintable(name) << " of " << clipped.all;
    }
}
