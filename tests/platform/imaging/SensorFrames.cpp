#include "SensorFrames.h"

#include "ImageBuilder.h"
#include "SceneSamples.h"
#include "SrgbTransfer.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <random>

using namespace Qt::StringLiterals;

namespace
{

const QString kMade = u"made"_s;

/// Of several makers' sensors of two megapixels and more, in daylight and in dim light.
const QStringList kOfCameras{u"masters/DSC03584.dng"_s,
                             u"masters/IMG_1994.cr2"_s,
                             u"masters/IMG_1997.cr2"_s,
                             u"raw/canon_d30.crw"_s,
                             u"raw/gopro_hero7_gps.dng"_s,
                             u"raw/nikon_d1.nef"_s,
                             u"raw/panasonic_lx3.rw2"_s};

/// About as real sensors have them: what grey measures beside green, and a noise that grows with
/// the root of light over one that is always there.
constexpr std::array<double, 3> kNeutral{0.47, 1.0, 0.66};
constexpr double kNoiseOfDark = 60.0;
constexpr double kNoiseOfWhite = 650.0;

/// Leaves with veins as fine as a lens shows them, and among them a lamp that is too bright for the
/// sensor.
QByteArray madeFrame()
{
    constexpr QSize kSize(1600, 1200);
    constexpr double kExposure = 0.8;
    constexpr double kLamp = 1.5 * 65535.0;
    constexpr double kRadius = 150.0;
    Bitmap light = SrgbTransfer::converted(SceneSamples::leaves(kSize), Transfer::Linear);
    std::mt19937 random(1);
    const auto chance = [&random] { return static_cast<double>(random()) / 4294967296.0 - 0.5; };
    for (int y = 0; y < kSize.height(); ++y) {
        const auto row = light.row(y);
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::size_t pixel = i / 3;
            const auto x = static_cast<double>(pixel);
            const double veins = 1.0 + 0.2 * std::sin(x * y / 1500.0);
            const bool isLamp = std::hypot(x - 900.0, y - 500.0) < kRadius;
            const double value = kNeutral.at(i % 3) * (isLamp ? kLamp : kExposure * veins * row[i]);
            const double noise =
                std::hypot(kNoiseOfDark, kNoiseOfWhite * std::sqrt(value / 65535.0));
            // Four even chances are nearly a normal one; their variance is a third.
            const double step = (chance() + chance() + chance() + chance()) * std::sqrt(3.0);
            row[i] =
                static_cast<quint16>(std::lround(std::clamp(value + noise * step, 0.0, 65535.0)));
        }
    }
    return ImageBuilder::dng(light, {.crop = {}, .preview = {}, .neutral = kNeutral});
}

QDir folderOfCameras()
{
    return {QStringLiteral(CORVANE_SHARED_DATA)};
}

} // namespace

QStringList SensorFrames::names()
{
    QStringList names{kMade};
    std::ranges::copy_if(kOfCameras, std::back_inserter(names), [](const QString& name) {
        return folderOfCameras().exists(name);
    });
    return names;
}

QByteArray SensorFrames::read(const QString& name)
{
    if (name == kMade) {
        return madeFrame();
    }
    QFile file(folderOfCameras().filePath(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(name);
    return file.readAll();
}
