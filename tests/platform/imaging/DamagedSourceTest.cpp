#include "BitmapImage.h"
#include "HeifSamples.h"
#include "ImageBuilder.h"
#include "JpegDestination.h"
#include "SceneSamples.h"
#include "SourcePicture.h"
#include "SrgbTransfer.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <span>
#include <string>

using namespace Qt::StringLiterals;

// Files whose picture data were destroyed in part must fail, or give the picture that they gave.

namespace
{

constexpr QSize kDamagedSize(480, 320);
constexpr std::array kShares{10, 30, 50, 70, 90, 95}; ///< in hundredths of the data

// Where more is destroyed the rest is too little to tell a part from another scene: of data that
// were moved and are still a picture, and of HEIF files, which go to pieces as a whole.
constexpr int kMostMoved = 90;
constexpr int kMostOfHeif = 70;
constexpr quint32 kSeeds = 3;

QByteArray previewOf(const Bitmap& scene)
{
    const auto jpeg = JpegDestination::encodePlain(scene, 0.9);
    EXPECT_TRUE(jpeg.ok());
    return jpeg.ok() ? jpeg.value() : QByteArray();
}

/// Where data lie in a file, and what is done to a part of them.
struct Range {
    qsizetype start{0};
    qsizetype length{0};
};

enum class Kind : quint8 { Zeros, Ones, Chance, Shifted, Reversed };

constexpr std::array kKinds{Kind::Zeros, Kind::Ones, Kind::Chance, Kind::Shifted, Kind::Reversed};

QByteArray destroyed(QByteArray bytes, const Range& range, Kind kind, std::mt19937& random)
{
    const auto data =
        std::span(bytes.data(), static_cast<std::size_t>(bytes.size()))
            .subspan(static_cast<std::size_t>(range.start), static_cast<std::size_t>(range.length));
    switch (kind) {
    case Kind::Zeros:
        std::ranges::fill(data, '\0');
        break;
    case Kind::Ones:
        std::ranges::fill(data, '\xFF');
        break;
    case Kind::Chance:
        std::ranges::generate(data, [&] { return static_cast<char>(random()); });
        break;
    case Kind::Shifted: {
        // By a part of a row at least: less than that is a small step in the picture.
        const auto by = std::min<std::size_t>(data.size(), 2 * (60 + random() % 4000));
        std::rotate(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(by), data.end());
        break;
    }
    case Kind::Reversed:
        std::ranges::reverse(data);
        break;
    }
    return bytes;
}

/// The picture as a conversion has it, small; null where the file fails.
QImage pictureOf(const QString& path)
{
    auto opened = SourcePicture::open(path);
    if (!opened.ok()) {
        EXPECT_EQ(opened.error().code, ErrorCode::Damaged) << qPrintable(opened.error().message);
        return {};
    }
    SourcePicture picture = std::move(opened).value();
    QList<QImage> references;
    if (picture.preview()) {
        references.append(picture.preview()->image);
    }
    const QSize size = picture.size();
    const auto image = std::move(picture).rendered(size, references);
    EXPECT_TRUE(image.ok());
    return image.ok() ? image.value() : QImage();
}

/// The share of places, of 32 a side, in which the pictures differ by more than a tenth.
double shareOfOthers(const QImage& picture, const QImage& good)
{
    constexpr int kPlacesASide = 32;
    const auto reduced = [](const QImage& image) {
        return image.scaled(
            kPlacesASide, kPlacesASide, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    };
    const QImage one = reduced(picture);
    const QImage other = reduced(good);
    int count = 0;
    for (int y = 0; y < kPlacesASide; ++y) {
        for (int x = 0; x < kPlacesASide; ++x) {
            const QColor a = one.pixelColor(x, y);
            const QColor b = other.pixelColor(x, y);
            const int most = std::max({std::abs(a.red() - b.red()),
                                       std::abs(a.green() - b.green()),
                                       std::abs(a.blue() - b.blue())});
            count += most > 25 ? 1 : 0;
        }
    }
    return static_cast<double>(count) / (kPlacesASide * kPlacesASide);
}

class DamagedSourceTest : public testing::TestWithParam<Kind>
{
protected:
    /// Destroys parts of the file's data, at the end, near the begin and between.
    void
    expectNoGarbage(const QByteArray& file, const Range& data, const QString& name, int mostShare)
    {
        const QString path = m_folder.filePath(name);
        ImageBuilder::write(path, file);
        const QImage good = pictureOf(path);
        ASSERT_FALSE(good.isNull());
        for (const int share : kShares) {
            if (share > mostShare) {
                break;
            }
            for (quint32 seed = 0; seed < kSeeds; ++seed) {
                std::mt19937 random(seed);
                const qsizetype length = data.length * share / 100;
                const qsizetype spare = data.length - length;
                const qsizetype start =
                    seed == 0 ? spare : spare * static_cast<qsizetype>(random() % 100) / 100;
                ImageBuilder::write(
                    path, destroyed(file, {data.start + start, length}, GetParam(), random));
                const QImage picture = pictureOf(path);
                if (!picture.isNull()) {
                    EXPECT_LT(shareOfOthers(picture, good), 0.02)
                        << share << " of 100, seed " << seed;
                }
            }
        }
    }

    QTemporaryDir m_folder;
};

TEST_P(DamagedSourceTest, aRawPhotoFailsOrIsRight)
{
    for (const bool demosaiced : {false, true}) {
        const Bitmap scene = SceneSamples::leaves(kDamagedSize, 7);
        const QByteArray file =
            ImageBuilder::dng(SrgbTransfer::converted(scene, Transfer::Linear),
                              {.crop = {}, .preview = previewOf(scene), .demosaiced = demosaiced});
        const qsizetype length =
            qsizetype{2} * kDamagedSize.width() * kDamagedSize.height() * (demosaiced ? 3 : 1);
        const bool isMoved = GetParam() == Kind::Shifted || GetParam() == Kind::Reversed;
        expectNoGarbage(file,
                        {file.size() - length, length},
                        u"photo.dng"_s,
                        isMoved ? kMostMoved : kShares.back());
    }
}

TEST(GoneDataTest, aRawPhotoWithoutAPreviewFailsWhereItsDataAreGone)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"photo.dng"_s);
    const Bitmap light =
        SrgbTransfer::converted(SceneSamples::leaves(kDamagedSize, 7), Transfer::Linear);
    for (const bool demosaiced : {false, true}) {
        const QByteArray file =
            ImageBuilder::dng(light, {.crop = {}, .preview = {}, .demosaiced = demosaiced});
        const qsizetype length =
            qsizetype{2} * kDamagedSize.width() * kDamagedSize.height() * (demosaiced ? 3 : 1);
        ImageBuilder::write(path, file);
        ASSERT_TRUE(SourcePicture::open(path).ok());
        std::mt19937 random(1);
        for (const int share : {7, 10, 30, 50, 70, 95}) {
            for (const int begin : {0, 37, 100}) {
                const Range gone{file.size() - length + length * (100 - share) / 100 * begin / 100,
                                 length * share / 100};
                ImageBuilder::write(path, destroyed(file, gone, Kind::Zeros, random));
                const auto opened = SourcePicture::open(path);
                ASSERT_FALSE(opened.ok()) << share << " of 100 from " << begin;
                EXPECT_EQ(opened.error().code, ErrorCode::Damaged);
            }
        }
    }
}

TEST_P(DamagedSourceTest, aHeifPhotoFailsOrIsRight)
{
    const Bitmap scene = SceneSamples::leaves(kDamagedSize / 2, 8);
    const Bitmap thumbnail =
        BitmapImage::fromImage(SceneSamples::thumbnailOf(scene, 160, Qt::SmoothTransformation));
    const QByteArray file = HeifSamples::file(scene, {.thumbnail = thumbnail});
    // The picture's data come first in the file's box of data, those of the thumbnail last.
    const qsizetype start = file.indexOf("mdat") + 8;
    expectNoGarbage(file, {start, (file.size() - start) * 3 / 4}, u"photo.heic"_s, kMostOfHeif);
}

std::string nameOf(const testing::TestParamInfo<Kind>& kind)
{
    constexpr std::array kNames{"Zeros", "Ones", "Chance", "Shifted", "Reversed"};
    return kNames.at(static_cast<std::size_t>(kind.param));
}

INSTANTIATE_TEST_SUITE_P(Kinds, DamagedSourceTest, testing::ValuesIn(kKinds), nameOf);

} // namespace
