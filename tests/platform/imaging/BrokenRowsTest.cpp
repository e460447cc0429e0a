#include "ImageBuilder.h"
#include "JpegDestination.h"
#include "SourcePicture.h"
#include "SrgbTransfer.h"

#include <QRect>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>

using namespace Qt::StringLiterals;

// RAW files whose rows break off: damage, but where it lies outside of the picture, or the preview
// shows an edge there too.

namespace
{

constexpr QSize kWallSize(480, 320);

/// Half of the wall's rows and less, from the fifth on.
constexpr QRect kCrop(2, 4, 470, 150);

/// A wall with the noise of a sensor, and a darker one from a row on, level to the pixel.
Bitmap wall(int darkerFrom = kWallSize.height())
{
    std::mt19937 random(3);
    Bitmap light(kWallSize.width(), kWallSize.height(), Transfer::Linear);
    for (int y = 0; y < light.pixelsHigh(); ++y) {
        const auto base = static_cast<std::size_t>(y < darkerFrom ? 20000 : 6000);
        std::size_t x = 0;
        for (quint16& value : light.row(y)) {
            value = static_cast<quint16>(base + 10 * (x++ / 3) + random() % 400);
        }
    }
    return light;
}

Bitmap croppedTo(const QRect& area, const Bitmap& light)
{
    Bitmap cropped(area.width(), area.height(), light.transfer());
    for (int y = 0; y < area.height(); ++y) {
        const auto from = light.row(area.top() + y).subspan(3 * std::size_t(area.left()));
        std::copy_n(from.begin(), cropped.row(y).size(), cropped.row(y).begin());
    }
    return cropped;
}

/// Gives the data of an area one value.
Bitmap overwritten(Bitmap light, const QRect& area, quint16 value = 0)
{
    for (int y = area.top(); y <= area.bottom(); ++y) {
        const auto row = light.row(y);
        std::fill_n(row.begin() + 3 * std::ptrdiff_t{area.left()}, 3 * area.width(), value);
    }
    return light;
}

Bitmap overwrittenFrom(int row, int count, quint16 value = 0)
{
    return overwritten(wall(), {0, row, kWallSize.width(), count}, value);
}

QByteArray previewOf(const Bitmap& light)
{
    const auto jpeg =
        JpegDestination::encodePlain(SrgbTransfer::converted(light, Transfer::Srgb), 0.9);
    EXPECT_TRUE(jpeg.ok());
    return jpeg.ok() ? jpeg.value() : QByteArray();
}

/// Whether a file of that light passes; a failure is of damage.
bool isWhole(const Bitmap& light, const std::optional<QSize>& crop, const QByteArray& preview = {})
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"photo.dng"_s);
    ImageBuilder::write(path, ImageBuilder::dng(light, {.crop = crop, .preview = preview}));
    const auto opened = SourcePicture::open(path);
    if (!opened.ok()) {
        EXPECT_EQ(opened.error().code, ErrorCode::Damaged) << qPrintable(opened.error().message);
    }
    return opened.ok();
}

} // namespace

TEST(BrokenRowsTest, aRawPhotoWithoutAPreviewFailsWhereAFewRowsAreOverwritten)
{
    EXPECT_TRUE(isWhole(wall(), {}));
    EXPECT_FALSE(isWhole(overwrittenFrom(220, 8, 0), {}));
    EXPECT_FALSE(isWhole(overwrittenFrom(220, 8, 65535), {}));
    Bitmap noisy = wall();
    std::mt19937 random(1);
    for (int row = 220; row < 228; ++row) {
        std::ranges::generate(noisy.row(row), [&] { return static_cast<quint16>(random()); });
    }
    EXPECT_FALSE(isWhole(noisy, {}));
}

TEST(BrokenRowsTest, aLevelEdgeThatThePreviewShowsTooIsNoDamage)
{
    EXPECT_TRUE(isWhole(wall(200), {}, previewOf(wall(200))));
    // One that shows the wall without the edge does not excuse it.
    EXPECT_FALSE(isWhole(wall(200), {}, previewOf(wall())));
}

TEST(BrokenRowsTest, anEdgeIsLookedForWhereItLiesInACroppedPicture)
{
    const Bitmap light = wall(100);
    EXPECT_TRUE(isWhole(light, kCrop.size(), previewOf(croppedTo(kCrop, light))));
    EXPECT_FALSE(isWhole(light, kCrop.size(), previewOf(croppedTo(kCrop, wall()))));
}

TEST(BrokenRowsTest, whatBreaksOutsideOfTheCropIsNotInThePicture)
{
    EXPECT_TRUE(isWhole(overwrittenFrom(kCrop.bottom() + 50, 8), kCrop.size()));
    EXPECT_FALSE(isWhole(overwrittenFrom(kCrop.bottom() - 50, 8), kCrop.size()));
}

TEST(BrokenRowsTest, anEdgeOfTheSceneExcusesNoOtherBreak)
{
    const QByteArray preview = previewOf(wall(200));
    const QRect strip(50, 80, 300, 5);
    EXPECT_TRUE(isWhole(wall(200), {}, preview));
    EXPECT_FALSE(isWhole(overwritten(wall(200), strip), {}, preview));
}

TEST(BrokenRowsTest, theOutermostRowsOfAStatedPictureAreJudged)
{
    const int rows = kCrop.height() / 33;
    EXPECT_FALSE(isWhole(overwrittenFrom(kCrop.bottom() + 1 - rows, 50), kCrop.size()));
    EXPECT_FALSE(isWhole(overwrittenFrom(0, kCrop.top() + rows), kCrop.size()));
}
