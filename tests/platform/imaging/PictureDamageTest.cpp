#include "PictureDamage.h"

#include "BitmapImage.h"
#include "DamageSamples.h"
#include "ImageBuilder.h"
#include "SceneSamples.h"

#include <QBuffer>
#include <QMarginsF>
#include <QTransform>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace DamageSamples;

namespace
{

/// Leaves below a smooth sky that ends sharply at the row `horizon`.
Bitmap landscape(int horizon)
{
    Bitmap picture = SceneSamples::leaves(kLandscape);
    for (int x = 0; x < kLandscape.width(); ++x) {
        fill(picture, {x, 0, 1, horizon}, static_cast<quint16>(50000 + x));
    }
    return picture;
}

/// Leaves, and from the row `from` on squares that hardly differ.
Bitmap faintBelow(int from)
{
    Bitmap picture = SceneSamples::leaves(kLandscape);
    for (int y = from; y < kLandscape.height(); ++y) {
        for (int x = 0; x < kLandscape.width(); ++x) {
            const int value = (x / 40 + y / 40) % 2 == 0 ? 30000 : 30800;
            fill(picture, {x, y, 1, 1}, static_cast<quint16>(value));
        }
    }
    return picture;
}

/// What such parts of the sides leave of a picture, in fractions.
QImage croppedBy(const Bitmap& picture, const QMarginsF& parts)
{
    const QRectF all(0.0, 0.0, picture.pixelsWide(), picture.pixelsHigh());
    const QMarginsF margins(parts.left() * all.width(),
                            parts.top() * all.height(),
                            parts.right() * all.width(),
                            parts.bottom() * all.height());
    return BitmapImage::toImage(picture)
        .copy((all - margins).toAlignedRect())
        .scaled(600, 600, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

/// Leaves whose colours are a tenth of what they were.
Bitmap paleLeaves()
{
    Bitmap picture = SceneSamples::leaves(kLandscape);
    for (int y = 0; y < picture.pixelsHigh(); ++y) {
        const auto row = picture.row(y);
        for (std::size_t i = 0; i < row.size(); i += 3) {
            const int grey = (row[i] + row[i + 1] + row[i + 2]) / 3;
            for (quint16& value : row.subspan(i, 3)) {
                value = static_cast<quint16>(grey + (value - grey) / 10);
            }
        }
    }
    return picture;
}

QImage compressed(const QImage& image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    EXPECT_TRUE(image.save(&buffer, "JPG", 85));
    return QImage::fromData(bytes, "JPG");
}

QMarginsF evenly(double part)
{
    return {part, part, part, part};
}

std::optional<QString> complaint(const Bitmap& picture, const QImage& preview)
{
    return PictureDamage::complaint(SmallPicture::of(picture), SmallPicture::of(preview), preview);
}

} // namespace

TEST(PictureDamageTest, aSceneIsNotDoubtedForThePreviewOfAnother)
{
    const Bitmap picture = ImageBuilder::scene({320, 240});
    const QImage other = BitmapImage::toImage(picture).mirrored(false, true);
    EXPECT_FALSE(complaint(picture, other).has_value());
    EXPECT_FALSE(complaint(picture, QImage()).has_value());
}

TEST(PictureDamageTest, aPictureThatShowsItsPreviewInAPartOnlyIsDamaged)
{
    const QSize size(1200, 800);
    const Bitmap picture = SceneSamples::leaves(size);
    const Bitmap other = SceneSamples::leaves(size, 2);
    const QImage preview = SceneSamples::thumbnailOf(picture, 1024, Qt::SmoothTransformation);
    EXPECT_FALSE(complaint(picture, preview).has_value());
    for (const int good : {160, 300, 500, 650}) {
        Bitmap below = picture;
        Bitmap right = picture;
        for (int y = 0; y < size.height(); ++y) {
            const auto from = other.row(y);
            if (y >= good) {
                std::ranges::copy(from, below.row(y).begin());
            }
            std::ranges::copy(from.subspan(3 * static_cast<std::size_t>(good)),
                              right.row(y).begin() + 3 * std::ptrdiff_t{good});
        }
        EXPECT_TRUE(complaint(below, preview).has_value()) << good;
        EXPECT_TRUE(complaint(right, preview).has_value()) << good;
    }
}

TEST(PictureDamageTest, noScenesAreTakenForPartsOfEachOther)
{
    constexpr quint32 kScenes = 6;
    const QSize size(600, 400);
    for (quint32 one = 1; one <= kScenes; ++one) {
        const Bitmap picture = SceneSamples::leaves(size, one);
        for (quint32 other = 1; other <= kScenes; ++other) {
            const QImage preview = SceneSamples::thumbnailOf(
                SceneSamples::leaves(size, other), 300, Qt::SmoothTransformation);
            EXPECT_FALSE(complaint(picture, preview).has_value()) << one << ' ' << other;
        }
    }
}

TEST(PictureDamageTest, aPreviewBentBackFromItsLensIsAlike)
{
    const QSize size(900, 600);
    const Bitmap picture = SceneSamples::leaves(size);
    // A barrel: three hundredths of the way to the middle at the corners.
    Bitmap bent = picture;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const double right = x - size.width() / 2.0;
            const double down = y - size.height() / 2.0;
            const double part = std::hypot(right, down) / std::hypot(450.0, 300.0);
            const double by = 1.0 - 0.03 * part * part;
            const int fromX = static_cast<int>(size.width() / 2.0 + right * by);
            const int fromY = static_cast<int>(size.height() / 2.0 + down * by);
            std::copy_n(&picture.row(fromY)[3 * static_cast<std::size_t>(fromX)],
                        3,
                        &bent.row(y)[3 * static_cast<std::size_t>(x)]);
        }
    }
    const QImage preview = SceneSamples::thumbnailOf(bent, 600, Qt::SmoothTransformation);
    EXPECT_FALSE(complaint(picture, preview).has_value());
}

TEST(PictureDamageTest, aSmoothSkyIsNoDamageWhereThePreviewIsCropped)
{
    for (const int horizon : {127, 227, 327}) {
        const Bitmap picture = landscape(horizon);
        for (const QMarginsF& parts : {evenly(0.02),
                                       evenly(0.024), // enlarged by a twentieth
                                       evenly(0.03),
                                       QMarginsF(0.0, 0.03, 0.0, 0.0),
                                       QMarginsF(0.0, 0.04, 0.0, 0.0)}) {
            EXPECT_FALSE(complaint(picture, croppedBy(picture, parts)).has_value())
                << horizon << ' ' << parts.left() << ' ' << parts.top();
        }
    }
}

TEST(PictureDamageTest, garbageBelowASmoothSkyIsFound)
{
    const Bitmap picture = landscape(227);
    for (const double cropped : {0.0, 0.02, 0.03}) {
        const QImage preview = croppedBy(picture, evenly(cropped));
        for (const QRect& area : {QRect(0, 500, 1200, 100), QRect(0, 480, 1200, 320)}) {
            Bitmap damaged = picture;
            fillWithNoise(damaged, area);
            EXPECT_TRUE(complaint(damaged, preview).has_value()) << cropped << ' ' << area.height();
        }
    }
}

TEST(PictureDamageTest, aPreviewThroughAColourFilterTellsOnlyWhatIsLost)
{
    const Bitmap picture = redLeavesBelow();
    Bitmap damaged = picture;
    fill(damaged, {150, 100, 600, 300}, 20000);
    const QImage preview = compressed(croppedBy(throughRedFilter(picture), {}));
    EXPECT_FALSE(complaint(picture, preview).has_value());
    EXPECT_TRUE(complaint(damaged, preview).has_value());
}

TEST(PictureDamageTest, aPaleSceneIsNoneInBlackAndWhite)
{
    const Bitmap picture = paleLeaves();
    const QImage preview = compressed(croppedBy(picture, {}));
    EXPECT_FALSE(complaint(picture, preview).has_value());
    EXPECT_TRUE(complaint(shifted(picture, 480), preview).has_value());
}

TEST(PictureDamageTest, detailWhereThePreviewHasHardlyAnyIsDamage)
{
    const Bitmap good = faintBelow(500);
    const QImage preview = croppedBy(good, {});
    EXPECT_FALSE(complaint(good, preview).has_value());
    Bitmap damaged = good;
    const Bitmap other = SceneSamples::leaves(kLandscape, 2);
    for (int y = 500; y < kLandscape.height(); ++y) {
        std::ranges::copy(other.row(y), damaged.row(y).begin());
    }
    EXPECT_TRUE(complaint(damaged, preview).has_value());
}

TEST(PictureDamageTest, aPreviewCroppedOffItsMiddleIsNoDamage)
{
    const Bitmap picture = SceneSamples::leaves(kLandscape);
    for (const QMarginsF& parts : {QMarginsF(0.1, 0.0, 0.0, 0.0), QMarginsF(0.0, 0.1, 0.1, 0.0)}) {
        const QImage preview = croppedBy(picture, parts);
        EXPECT_FALSE(complaint(picture, preview).has_value()) << parts.left() << ' ' << parts.top();
    }
}

TEST(PictureDamageTest, garbageBelowIsNotTakenForACrop)
{
    Bitmap picture = SceneSamples::leaves(kLandscape);
    const QImage preview = croppedBy(picture, {});
    const QImage cropped = croppedBy(picture, evenly(0.02));
    fillWithNoise(picture, {0, 480, 1200, 320});
    EXPECT_TRUE(complaint(picture, preview).has_value());
    EXPECT_TRUE(complaint(picture, cropped).has_value());
}

TEST(PictureDamageTest, whatIsLeftOfAPictureDoesNotExcuseTheRest)
{
    Bitmap picture = SceneSamples::leaves(kLandscape);
    QList<QImage> previews;
    for (const double part : {0.0, 0.02, 0.04, 0.06, 0.08, 0.1}) {
        previews.append(croppedBy(picture, {0.0, 0.0, 0.0, part}));
        previews.append(croppedBy(picture, {0.0, 0.0, part, part}));
    }
    fillWithNoise(picture, {0, 240, 1200, 560});
    for (const QImage& preview : previews) {
        EXPECT_TRUE(complaint(picture, preview).has_value())
            << preview.width() << " by " << preview.height();
    }
}

TEST(PictureDamageTest, emptyPlacesAreDamageWhateverThePreviewShows)
{
    const QSize size(600, 400);
    Bitmap picture = ImageBuilder::scene(size);
    const QImage other =
        SceneSamples::thumbnailOf(SceneSamples::leaves(size, 3), 300, Qt::SmoothTransformation);
    EXPECT_FALSE(complaint(picture, other).has_value());
    Bitmap black = picture;
    fill(black, {0, 150, 600, 250}, 0);
    EXPECT_TRUE(complaint(black, other).has_value());
    // Sensors clip at white.
    fill(picture, {0, 150, 600, 250}, 65535);
    EXPECT_FALSE(complaint(picture, other).has_value());
}

TEST(PictureDamageTest, anEvenSkyThatThePreviewShowsAsWellIsNoDamage)
{
    // Just below white, as some sensors clip; turned upside down the preview has leaves there.
    for (const quint16 sky : {quint16{60000}, quint16{64000}}) {
        Bitmap picture = SceneSamples::leaves(kLandscape);
        fill(picture, {0, 0, 1200, 360}, sky);
        EXPECT_FALSE(complaint(picture, croppedBy(picture, {})).has_value()) << sky;
    }
}

TEST(PictureDamageTest, anEvenQuarterIsDamageWhereThePreviewShowsSomething)
{
    const Bitmap whole = SceneSamples::leaves(kLandscape);
    const QImage preview = croppedBy(whole, {});
    const QImage turned = preview.transformed(QTransform().rotate(180));
    const QImage other = croppedBy(SceneSamples::leaves(kLandscape, 3), {});
    for (const quint16 value : {quint16{0}, quint16{32768}, quint16{60000}}) {
        Bitmap picture = whole;
        fill(picture, {0, 380, 640, 420}, value);
        for (const QImage& shown : {preview, turned, other}) {
            EXPECT_TRUE(complaint(picture, shown).has_value()) << value;
        }
    }
}

TEST(PictureDamageTest, aBreakBeyondWhatThePreviewShowsIsNoEdgeOfTheScene)
{
    const Bitmap picture = landscape(120); // a horizon at 0.15 of the height
    const auto shown = SmallPicture::of(croppedBy(picture, {0.0, 0.12, 0.0, 0.12}));
    const auto areEdges = [&](double place) {
        return PictureDamage::areEdgesOfScene({place}, SmallPicture::of(picture), shown);
    };
    EXPECT_TRUE(areEdges(0.15));
    EXPECT_TRUE(areEdges(0.11)); // as near as the preview is known to lie
    EXPECT_FALSE(areEdges(0.02));
}
