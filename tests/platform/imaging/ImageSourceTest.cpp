#include "ImageSource.h"

#include "BitmapImage.h"
#include "HeifSamples.h"
#include "ImageBuilder.h"
#include "JpegDestination.h"
#include "JpegEncoder.h"
#include "MetadataSegments.h"
#include "ProfileSamples.h"
#include "QtPrinters.h"
#include "SceneSamples.h"

#include <QColorSpace>
#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

constexpr QSize kSize(240, 180);

QByteArray jpegOf(const Bitmap& bitmap)
{
    const auto jpeg = JpegDestination::encodePlain(bitmap, 0.9);
    return jpeg.ok() ? jpeg.value() : QByteArray();
}

/// A JPEG of one picture whose Exif block has a thumbnail of another, and states that size.
QByteArray jpegWithThumbnail(const Bitmap& shown, const Bitmap& ofThumbnail, QSize stated)
{
    const QImage small = SceneSamples::thumbnailOf(ofThumbnail, 160, Qt::SmoothTransformation);
    JpegEncoder::Options options;
    options.segments = MetadataSegments::build(
        ImageProperties(), stated, JpegDestination::encodePlain(small, 0.9).value());
    return JpegEncoder::encode(shown, options).value();
}

class ImageSourceTest : public testing::Test
{
protected:
    [[nodiscard]] QString file(const QString& name, const QByteArray& bytes) const
    {
        QString path = m_folder.filePath(name);
        ImageBuilder::write(path, bytes);
        return path;
    }

    void expectDamaged(const QString& name, const QByteArray& bytes) const
    {
        const auto decoded = ImageSource::decode(file(name, bytes));
        ASSERT_FALSE(decoded.ok()) << qPrintable(name);
        EXPECT_EQ(decoded.error().code, ErrorCode::Damaged);
        EXPECT_TRUE(decoded.error().message.contains(name));
    }

    QTemporaryDir m_folder;
};

} // namespace

TEST_F(ImageSourceTest, readableExtensionsStandInBothCasesAndInOrder)
{
    const QStringList& all = ImageSource::readableExtensions();
    for (const QString& extension : all) {
        EXPECT_TRUE(all.contains(extension.toLower()));
        EXPECT_TRUE(all.contains(extension.toUpper()));
    }
    EXPECT_TRUE(std::is_sorted(all.begin(), all.end()));
    EXPECT_TRUE(all.contains(u"cr2"_s));
    EXPECT_TRUE(all.contains(u"NEF"_s));
    EXPECT_TRUE(all.contains(u"jpg"_s));
}

TEST_F(ImageSourceTest, kindIsToldByContentNotByName)
{
    const auto decoded =
        ImageSource::decode(file(u"photo.png"_s, jpegOf(ImageBuilder::scene(kSize))));
    ASSERT_TRUE(decoded.ok()) << qPrintable(decoded.error().message);
    EXPECT_EQ(decoded.value().size(), kSize);
}

TEST_F(ImageSourceTest, missingFileIsNotFound)
{
    const auto decoded = ImageSource::decode(m_folder.filePath(u"none.cr2"_s));
    ASSERT_FALSE(decoded.ok());
    EXPECT_EQ(decoded.error().code, ErrorCode::NotFound);
}

TEST_F(ImageSourceTest, textIsUnsupported)
{
    const auto decoded = ImageSource::decode(file(u"letter.txt"_s, "Dear all"));
    ASSERT_FALSE(decoded.ok());
    EXPECT_EQ(decoded.error().code, ErrorCode::Unsupported);
}

TEST_F(ImageSourceTest, emptyFileIsDamaged)
{
    expectDamaged(u"empty.nef"_s, {});
}

TEST_F(ImageSourceTest, rawDecodesToTheLightOfItsScene)
{
    const Bitmap scene = ImageBuilder::scene(kSize, Transfer::Linear);
    const auto decoded = ImageSource::decode(file(u"photo.dng"_s, ImageBuilder::dng(scene)));
    ASSERT_TRUE(decoded.ok()) << qPrintable(decoded.error().message);
    EXPECT_EQ(decoded.value().transfer(), Transfer::Linear);
    ASSERT_EQ(decoded.value().size(), kSize);
    EXPECT_LT(ImageBuilder::difference(decoded.value(), scene), 0.03);
}

TEST_F(ImageSourceTest, rawIsNotTurnedByItsOrientation)
{
    const Bitmap scene = ImageBuilder::scene(kSize, Transfer::Linear);
    const auto decoded = ImageSource::decode(file(
        u"photo.dng"_s, ImageBuilder::dng(scene, {.crop = {}, .preview = {}, .orientation = 6})));
    ASSERT_TRUE(decoded.ok());
    EXPECT_EQ(decoded.value().size(), kSize);
}

TEST_F(ImageSourceTest, rawIsCroppedAsTheCameraStates)
{
    const QSize crop(232, 172);
    const Bitmap scene = ImageBuilder::scene(kSize, Transfer::Linear);
    const auto whole = ImageSource::decode(file(u"whole.dng"_s, ImageBuilder::dng(scene)));
    const auto cropped = ImageSource::decode(
        file(u"cropped.dng"_s,
             ImageBuilder::dng(scene, {.crop = crop, .preview = {}, .orientation = 1})));
    ASSERT_TRUE(whole.ok() && cropped.ok());
    ASSERT_EQ(cropped.value().size(), crop);
    for (int y = 0; y < crop.height(); ++y) {
        const auto expected =
            whole.value().row(y + 4).subspan(std::size_t{2} * 3, std::size_t(crop.width()) * 3);
        ASSERT_TRUE(std::ranges::equal(cropped.value().row(y), expected)) << y;
    }
}

TEST_F(ImageSourceTest, rawIsCroppedAsDeepAsTheCameraStates)
{
    // A square, a zoom by cropping, and a wide shape.
    for (const QSize crop : {QSize(172, 172), QSize(84, 62), QSize(236, 60)}) {
        const auto cropped = ImageSource::decode(
            file(u"cropped.dng"_s,
                 ImageBuilder::dng(ImageBuilder::scene(kSize, Transfer::Linear),
                                   {.crop = crop, .preview = {}, .orientation = 1})));
        ASSERT_TRUE(cropped.ok());
        EXPECT_EQ(cropped.value().size(), crop);
    }
}

TEST_F(ImageSourceTest, aCropThatCannotBeMeantIsIgnored)
{
    // Nothing, next to nothing, and what reaches beyond the sensor.
    for (const QSize crop : {QSize(0, 0), QSize(12, 100), QSize(100, 8), QSize(240, 172)}) {
        const auto decoded = ImageSource::decode(
            file(u"odd.dng"_s,
                 ImageBuilder::dng(ImageBuilder::scene(kSize, Transfer::Linear),
                                   {.crop = crop, .preview = {}, .orientation = 1})));
        ASSERT_TRUE(decoded.ok());
        EXPECT_EQ(decoded.value().size(), kSize);
    }
}

TEST_F(ImageSourceTest, rawDecodesTheSameEachTime)
{
    const QString path =
        file(u"photo.dng"_s, ImageBuilder::dng(ImageBuilder::scene(kSize, Transfer::Linear)));
    const auto first = ImageSource::decode(path);
    const auto second = ImageSource::decode(path);
    ASSERT_TRUE(first.ok() && second.ok());
    EXPECT_EQ(ImageBuilder::difference(first.value(), second.value()), 0.0);
}

TEST_F(ImageSourceTest, rawThatEndsBeforeItsStripIsDamaged)
{
    const QByteArray whole = ImageBuilder::dng(ImageBuilder::scene(kSize, Transfer::Linear));
    expectDamaged(u"oneByte.dng"_s, whole.chopped(1));
    expectDamaged(u"half.dng"_s, whole.first(whole.size() / 2));
    expectDamaged(u"head.dng"_s, whole.first(100));
}

TEST_F(ImageSourceTest, rawOfNoiseIsDamagedAlsoWithoutAPreview)
{
    expectDamaged(u"noise.dng"_s, ImageBuilder::dng(ImageBuilder::noise(kSize)));
}

TEST_F(ImageSourceTest, rawOfDarknessOrOfANightSkyDecodesAlsoWithoutAPreview)
{
    for (const QSize size : {kSize, QSize(800, 600)}) {
        for (const int stars : {0, 50, 1000}) {
            const QString path =
                file(u"night.dng"_s, ImageBuilder::dng(ImageBuilder::night(size, stars)));
            const auto checked = ImageSource::check(path);
            EXPECT_TRUE(checked.ok())
                << stars << qPrintable(checked.ok() ? QString() : checked.error().message);
        }
    }
}

TEST_F(ImageSourceTest, rawOfNoiseOrNothingIsDamagedWhereThePreviewShowsAScene)
{
    const ImageBuilder::RawFile details{
        .crop = {}, .preview = jpegOf(ImageBuilder::scene({160, 120})), .orientation = 1};
    expectDamaged(u"noise.dng"_s, ImageBuilder::dng(ImageBuilder::noise(kSize), details));
    expectDamaged(u"nothing.dng"_s, ImageBuilder::dng(ImageBuilder::flat(kSize, 0), details));
}

TEST_F(ImageSourceTest, rawWithAHoleInItsDataIsDamagedWhereThePreviewShowsMore)
{
    const Bitmap scene = ImageBuilder::scene(kSize, Transfer::Linear);
    const ImageBuilder::RawFile details{
        .crop = {}, .preview = jpegOf(ImageBuilder::scene({160, 120})), .orientation = 1};
    const QByteArray whole = ImageBuilder::dng(scene, details);
    ASSERT_TRUE(ImageSource::check(file(u"whole.dng"_s, whole)).ok());
    // The rows from the second quarter to the middle.
    const qsizetype data = whole.size() - qsizetype{2} * kSize.width() * kSize.height();
    const qsizetype rows = qsizetype{2} * kSize.width() * 45;
    expectDamaged(u"hole.dng"_s,
                  whole.first(data + rows) + QByteArray(rows, '\0') +
                      whole.sliced(data + 2 * rows));
}

TEST_F(ImageSourceTest, darknessWithAFlatPreviewDecodes)
{
    const ImageBuilder::RawFile details{
        .crop = {}, .preview = jpegOf(ImageBuilder::flat({160, 120}, 0)), .orientation = 1};
    const QString path =
        file(u"dark.dng"_s, ImageBuilder::dng(ImageBuilder::night({800, 600}, 0), details));
    EXPECT_TRUE(ImageSource::check(path).ok());
    EXPECT_FALSE(ImageSource::embeddedPreview(path).has_value());
}

TEST_F(ImageSourceTest, embeddedPreviewIsGivenAsStored)
{
    const ImageBuilder::RawFile details{
        .crop = {}, .preview = jpegOf(ImageBuilder::scene({160, 120})), .orientation = 8};
    const QString path = file(
        u"photo.dng"_s, ImageBuilder::dng(ImageBuilder::scene(kSize, Transfer::Linear), details));
    ASSERT_TRUE(ImageSource::check(path).ok());
    const auto preview = ImageSource::embeddedPreview(path);
    ASSERT_TRUE(preview.has_value());
    EXPECT_EQ(preview->size(), QSize(160, 120));
}

TEST_F(ImageSourceTest, heifOfNoiseOrNothingIsDamagedWhereItsThumbnailShowsAScene)
{
    const HeifSamples::Options options{.thumbnail = ImageBuilder::scene(kSize)};
    const QByteArray whole = HeifSamples::file(ImageBuilder::scene(kSize), options);
    EXPECT_TRUE(ImageSource::check(file(u"whole.heic"_s, whole)).ok());
    expectDamaged(u"noise.heic"_s, HeifSamples::file(ImageBuilder::noise(kSize), options));
    expectDamaged(u"nothing.heic"_s, HeifSamples::file(ImageBuilder::flat(kSize, 0), options));
}

TEST_F(ImageSourceTest, heifOfNoiseIsDamagedWithoutAThumbnail)
{
    expectDamaged(u"alone.heic"_s, HeifSamples::file(ImageBuilder::noise(kSize)));
}

TEST_F(ImageSourceTest, aJpegThatShowsOtherThanItsThumbnailInPartIsDamaged)
{
    const QSize size(480, 320);
    const Bitmap scene = SceneSamples::leaves(size);
    EXPECT_TRUE(
        ImageSource::check(file(u"whole.jpg"_s, jpegWithThumbnail(scene, scene, size))).ok());
    Bitmap overwritten = scene;
    const Bitmap other = SceneSamples::leaves(size, 5);
    for (int y = size.height() / 2; y < size.height(); ++y) {
        std::ranges::copy(other.row(y), overwritten.row(y).begin());
    }
    expectDamaged(u"damaged.jpg"_s, jpegWithThumbnail(overwritten, scene, size));
    // What changed the picture's size left the thumbnail as it was.
    const QByteArray edited = jpegWithThumbnail(overwritten, scene, size * 2);
    EXPECT_TRUE(ImageSource::check(file(u"edited.jpg"_s, edited)).ok());
}

TEST_F(ImageSourceTest, tiffThatIsNoiseInPartIsDamaged)
{
    Bitmap overwritten = ImageBuilder::scene(kSize);
    const Bitmap noise = ImageBuilder::noise(kSize);
    for (int y = kSize.height() / 2; y < kSize.height(); ++y) {
        std::ranges::copy(noise.row(y), overwritten.row(y).begin());
    }
    const QString path = m_folder.filePath(u"photo.tif"_s);
    ASSERT_TRUE(BitmapImage::toImage(ImageBuilder::scene(kSize)).save(path));
    EXPECT_TRUE(ImageSource::check(path).ok());
    ASSERT_TRUE(BitmapImage::toImage(overwritten).save(path));
    const auto checked = ImageSource::check(path);
    ASSERT_FALSE(checked.ok());
    EXPECT_EQ(checked.error().code, ErrorCode::Damaged);
}

TEST_F(ImageSourceTest, aDitheredScanIsNoNoise)
{
    const QImage grey = BitmapImage::toImage(ImageBuilder::scene({1200, 900}));
    const QString path = m_folder.filePath(u"scan.tif"_s);
    ASSERT_TRUE(grey.convertToFormat(QImage::Format_Mono, Qt::MonoOnly).save(path));
    const auto checked = ImageSource::check(path);
    EXPECT_TRUE(checked.ok()) << qPrintable(checked.ok() ? QString() : checked.error().message);
}

TEST_F(ImageSourceTest, aHalftoneInGreyOrWithAPaletteIsNoNoise)
{
    const QSize size(1200, 900);
    const Bitmap scene = ImageBuilder::scene(size);
    const Bitmap thresholds = ImageBuilder::noise(size);
    Bitmap halftone(size.width(), size.height(), Transfer::Srgb);
    for (int y = 0; y < size.height(); ++y) {
        const auto row = halftone.row(y);
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::size_t green = i / 3 * 3 + 1;
            row[i] = scene.row(y)[green] > thresholds.row(y)[green] ? 65535 : 0;
        }
    }
    const QImage image = BitmapImage::toImage(halftone);
    for (const auto format : {QImage::Format_Grayscale8, QImage::Format_Indexed8}) {
        const QString path = m_folder.filePath(u"halftone.tif"_s);
        ASSERT_TRUE(image.convertToFormat(format).save(path));
        const auto checked = ImageSource::check(path);
        EXPECT_TRUE(checked.ok()) << qPrintable(checked.ok() ? QString() : checked.error().message);
    }
}

TEST_F(ImageSourceTest, aHeifPhotoPassesByTheThumbnailThatItsEncoderMade)
{
    // Of half the size of what is given.
    for (const QSize thumbnail : {QSize(200, 150), QSize(320, 240), QSize(512, 384)}) {
        const HeifSamples::Options options{.thumbnail = SceneSamples::leaves(thumbnail)};
        const QString path =
            file(u"photo.heic"_s, HeifSamples::file(SceneSamples::leaves(thumbnail), options));
        const auto checked = ImageSource::check(path);
        EXPECT_TRUE(checked.ok()) << thumbnail.width() / 2;
    }
}

TEST_F(ImageSourceTest, theThumbnailOfAHeifFileIsItsPreview)
{
    const QByteArray bytes =
        HeifSamples::file(ImageBuilder::scene(kSize), {.thumbnail = ImageBuilder::scene(kSize)});
    const auto preview = ImageSource::embeddedPreview(file(u"photo.heic"_s, bytes));
    ASSERT_TRUE(preview.has_value());
    EXPECT_EQ(preview->size(), QSize(120, 90));
}

TEST_F(ImageSourceTest, pictureOfSixteenBitsKeepsThem)
{
    const Bitmap scene = ImageBuilder::scene(kSize);
    QImage image(kSize, QImage::Format_RGBX64);
    for (int y = 0; y < kSize.height(); ++y) {
        auto* pixel = reinterpret_cast<QRgba64*>(image.scanLine(y));
        const auto row = scene.row(y);
        for (std::size_t i = 0; i < row.size(); i += 3) {
            *pixel++ = QRgba64::fromRgba64(row[i], row[i + 1], row[i + 2], 65535);
        }
    }
    for (const QString& name : {u"photo.png"_s, u"photo.tif"_s}) {
        const QString path = m_folder.filePath(name);
        ASSERT_TRUE(image.save(path));
        const auto decoded = ImageSource::decode(path);
        ASSERT_TRUE(decoded.ok()) << qPrintable(decoded.error().message);
        EXPECT_EQ(ImageBuilder::difference(decoded.value(), scene), 0.0) << qPrintable(name);
    }
}

TEST_F(ImageSourceTest, theProfileOfAGreyPictureHolds)
{
    QImage image(kSize, QImage::Format_Grayscale8);
    image.fill(54);
    image.setColorSpace(QColorSpace::fromIccProfile(ProfileSamples::linearGrey()));
    for (const QString& name : {u"grey.png"_s, u"grey.tif"_s}) {
        const QString path = m_folder.filePath(name);
        ASSERT_TRUE(image.save(path));
        const auto decoded = ImageSource::decode(path);
        ASSERT_TRUE(decoded.ok()) << qPrintable(decoded.error().message);
        // IEC 61966-2-1 encodes a light of 54 / 255 as 0.4978.
        EXPECT_NEAR(decoded.value().row(90)[360], 32624, 300) << qPrintable(name);
    }
}

TEST_F(ImageSourceTest, truncatedPicturesAreDamaged)
{
    const QImage image = BitmapImage::toImage(ImageBuilder::scene(kSize));
    for (const QString& name :
         {u"photo.png"_s, u"photo.tif"_s, u"photo.jpg"_s, u"photo.bmp"_s, u"photo.webp"_s}) {
        const QString path = m_folder.filePath(name);
        ASSERT_TRUE(image.save(path));
        QFile stored(path);
        ASSERT_TRUE(stored.open(QIODevice::ReadOnly));
        const QByteArray bytes = stored.readAll();
        expectDamaged(u"half-"_s + name, bytes.first(bytes.size() / 2));
    }
}

TEST_F(ImageSourceTest, filesOfManyCamerasDecode)
{
    for (const QString& folder : {u"/raw"_s, u"/masters"_s}) {
        const QDir files(QStringLiteral(CORVANE_SHARED_DATA) + folder);
        for (const QFileInfo& info : files.entryInfoList(QDir::Files)) {
            const auto result = ImageSource::check(info.filePath());
            EXPECT_TRUE(result.ok())
                << qPrintable(result.ok() ? QString() : result.error().message);
        }
    }
}

TEST_F(ImageSourceTest, brokenFilesOfManyCamerasFailWithAReason)
{
    const QDir files(QStringLiteral(CORVANE_SHARED_DATA "/broken"));
    for (const QFileInfo& info : files.entryInfoList(QDir::Files)) {
        const auto result = ImageSource::decode(info.filePath());
        ASSERT_FALSE(result.ok()) << qPrintable(info.fileName());
        EXPECT_TRUE(result.error().message.contains(info.fileName()));
        EXPECT_TRUE(result.error().code == ErrorCode::Damaged ||
                    result.error().code == ErrorCode::Unsupported);
    }
}

TEST_F(ImageSourceTest, filesOfCamerasHaveTheSizeThatTheCameraStates)
{
    const QList<std::pair<QString, QSize>> stated{{u"masters/IMG_1994.cr2"_s, {3648, 2736}},
                                                  {u"masters/IMG_1997.cr2"_s, {3648, 2736}},
                                                  {u"raw/canon_d30.crw"_s, {2160, 1440}},
                                                  {u"raw/panasonic_lx3.rw2"_s, {3648, 2736}},
                                                  {u"raw/skia_rotated_small.dng"_s, {600, 338}}};
    const QDir data(QStringLiteral(CORVANE_SHARED_DATA));
    for (const auto& [name, size] : stated) {
        if (!data.exists(name)) {
            continue;
        }
        const auto decoded = ImageSource::decode(data.filePath(name));
        ASSERT_TRUE(decoded.ok()) << qPrintable(name);
        EXPECT_EQ(decoded.value().size(), size) << qPrintable(name);
    }
}
