#include "RawFile.h"

#include "ImageBuilder.h"
#include "JpegEncoder.h"
#include "LossyTiles.h"
#include "SensorGaps.h"

#include <QtEndian>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace
{

constexpr QSize kSensorSize(320, 256);
constexpr quint16 kBlackLevel = 3000;

/// What a sensor measured, of which the lower half is one value.
Bitmap halfOf(quint16 value)
{
    Bitmap light = ImageBuilder::noise(kSensorSize);
    for (int y = 0; y < light.pixelsHigh(); ++y) {
        for (quint16& measured : light.row(y)) {
            measured = static_cast<quint16>(y < light.pixelsHigh() / 2 ? kBlackLevel + measured / 2
                                                                       : value);
        }
    }
    return light;
}

/// Only the left half of that, so that no row is one value from end to end.
Bitmap quarterOf(quint16 value)
{
    Bitmap light = halfOf(value);
    const int half = light.pixelsHigh() / 2;
    for (int y = half; y < light.pixelsHigh(); ++y) {
        const auto row = light.row(y);
        std::ranges::copy(light.row(y - half).subspan(row.size() / 2),
                          row.subspan(row.size() / 2).begin());
    }
    return light;
}

bool hasGaps(const Bitmap& light, std::optional<quint32> black, quint32 white = 65535)
{
    const QByteArray bytes =
        ImageBuilder::dng(light, {.crop = {}, .preview = {}, .black = black, .white = white});
    const auto file = std::make_unique<RawFile>(bytes);
    EXPECT_FALSE(file->unpackSensor().has_value());
    const auto values = file->sensorValues();
    return values && SensorGaps::isFoundIn(*values);
}

QByteArray lossyTile(QSize size = kSensorSize)
{
    JpegEncoder::Options options;
    options.scans = JpegEncoder::Scans::Sequential;
    const auto jpeg = JpegEncoder::encode(ImageBuilder::noise(size), options);
    EXPECT_TRUE(jpeg.ok());
    return jpeg.ok() ? jpeg.value() : QByteArray();
}

QByteArray lossyDng(const QByteArray& tile)
{
    return ImageBuilder::dng(
        ImageBuilder::scene(kSensorSize),
        {.crop = {}, .preview = {}, .demosaiced = true, .white = 255, .lossy = tile});
}

std::optional<Error> failureOfLossy(const QByteArray& tile)
{
    return std::make_unique<RawFile>(lossyDng(tile))->unpackSensor();
}

QByteArray little(quint32 number)
{
    const quint32 bytes = qToLittleEndian(number);
    return {reinterpret_cast<const char*>(&bytes), 4};
}

QByteArray replaced(QByteArray dng, const QByteArray& entry, const QByteArray& by)
{
    EXPECT_EQ(dng.count(entry), 1);
    return dng.replace(entry, by);
}

/// The file with another length of its tile than that which it has.
QByteArray withTileLength(const QByteArray& dng, qsizetype length, qsizetype stated)
{
    const QByteArray entry = QByteArray("\x17\x01\x04\0\x01\0\0\0", 8);
    return replaced(dng,
                    entry + little(static_cast<quint32>(length)),
                    entry + little(static_cast<quint32>(stated)));
}

/// The file with a second tile after the one that it has, beyond the end of its picture.
QByteArray withTileBeyondPicture(const QByteArray& tile, const QByteArray& surplus)
{
    const QByteArray dng = lossyDng(tile);
    const auto first = little(static_cast<quint32>(dng.size() - tile.size()));
    const auto second = little(static_cast<quint32>(dng.size()));
    const auto places = little(static_cast<quint32>(dng.size() + surplus.size()));
    const QByteArray entry = QByteArray("\x11\x01\x04\0", 4);
    return replaced(dng, entry + little(1) + first, entry + little(2) + places) + surplus + first +
           second;
}

/// The file with filters of 6 rows and columns in place of those of 2.
QByteArray withFiltersOfSix(const QByteArray& dng)
{
    const QByteArray sides = QByteArray("\x8D\x82\x03\0\x02\0\0\0", 8);
    const QByteArray colors = QByteArray("\x8E\x82\x01\0", 4);
    QByteArray filters;
    for (const char* const row : {"GBGGRG", "RGRBGB", "GBGGRG", "GRGGBG", "BGBRGR", "GRGGBG"}) {
        filters += row;
    }
    filters.replace('R', '\0').replace('G', '\1').replace('B', '\2');
    const QByteArray wider =
        replaced(dng, sides + QByteArray("\2\0\2\0", 4), sides + QByteArray("\6\0\6\0", 4));
    return replaced(wider,
                    colors + little(4) + QByteArray("\0\1\1\2", 4),
                    colors + little(36) + little(static_cast<quint32>(dng.size()))) +
           filters;
}

int periodOf(const QByteArray& dng)
{
    const auto file = std::make_unique<RawFile>(dng);
    EXPECT_FALSE(file->unpackSensor().has_value());
    const auto values = file->sensorValues();
    return values ? values->period : 0;
}

} // namespace

TEST(RawFileTest, aWholeLossyTileIsNoDamage)
{
    const auto failure = failureOfLossy(lossyTile());
    EXPECT_FALSE(failure.has_value()) << qPrintable(failure->message);
}

TEST(RawFileTest, aLossyTileWithAPartGoneIsDamaged)
{
    QByteArray tile = lossyTile();
    tile.replace(tile.size() / 2, 200, QByteArray(200, '\0'));
    const auto failure = failureOfLossy(tile);
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->code, ErrorCode::Damaged);
}

TEST(RawFileTest, aLossyTileIsJudgedToItsEndWhateverLengthIsStated)
{
    const QByteArray good = lossyTile();
    QByteArray damaged = good;
    damaged.replace(damaged.size() / 2, 200, QByteArray(200, '\0'));
    for (const qsizetype stated : {qsizetype{0}, qsizetype{100}, good.size() - 2}) {
        const auto failureOf = [&](const QByteArray& tile) {
            return std::make_unique<RawFile>(withTileLength(lossyDng(tile), tile.size(), stated))
                ->unpackSensor();
        };
        EXPECT_FALSE(failureOf(good).has_value()) << stated;
        EXPECT_TRUE(failureOf(damaged).has_value()) << stated;
    }
}

TEST(RawFileTest, aLossyTileThatStatesMorePixelsThanItsPlaceIsDamaged)
{
    const auto failure = failureOfLossy(lossyTile({kSensorSize.width(), kSensorSize.height() + 8}));
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->code, ErrorCode::Damaged);
}

TEST(RawFileTest, aLossyTileThatIsWiderThanItsPlaceIsDamagedHoweverLowItIs)
{
    const auto failure = failureOfLossy(lossyTile({kSensorSize.width() + 8, 8}));
    ASSERT_TRUE(failure.has_value());
    EXPECT_TRUE(failure->message.contains(u"larger than its place"));
}

TEST(RawFileTest, aLossyTileMayBeLargerThanThePictureOnlyAsFarAsItIsFilledUp)
{
    // Its width stays the picture's, its height is stated to be nearly any.
    const auto failureOf = [](int height) {
        const QByteArray strips = QByteArray("\x16\x01\x04\0\x01\0\0\0", 8);
        const QByteArray tiles = QByteArray("\x43\x01\x04\0\x01\0\0\0", 8);
        return LossyTiles::failure(replaced(lossyDng(lossyTile({kSensorSize.width(), height})),
                                            strips + little(kSensorSize.height()),
                                            tiles + little(65000)));
    };
    EXPECT_FALSE(failureOf(kSensorSize.height() + 1024).has_value());
    const auto failure = failureOf(kSensorSize.height() + 1032);
    ASSERT_TRUE(failure.has_value());
    EXPECT_TRUE(failure->message.contains(u"larger than its place"));
}

TEST(RawFileTest, ofStripsAndTilesInOneDirectoryTheTilesAreJudged)
{
    const QByteArray good = lossyTile();
    QByteArray damaged = good;
    damaged.replace(damaged.size() / 2, 200, QByteArray(200, '\0'));
    const auto failureOf = [](const QByteArray& strip, const QByteArray& tile) {
        const QByteArray dng = lossyDng(strip);
        const QByteArray one = QByteArray("\x04\0\x01\0\0\0", 6);
        const QByteArray rows = QByteArray("\x16\x01", 2) + one + little(kSensorSize.height());
        const QByteArray tiles =
            QByteArray("\x44\x01", 2) + one + little(static_cast<quint32>(dng.size()));
        return LossyTiles::failure(replaced(dng, rows, tiles) + tile);
    };
    EXPECT_FALSE(failureOf(damaged, good).has_value());
    EXPECT_TRUE(failureOf(good, damaged).has_value());
}

TEST(RawFileTest, lossyTilesThatThePictureDoesNotNeedAreNotDecoded)
{
    QByteArray damaged = lossyTile();
    damaged.replace(damaged.size() / 2, 200, QByteArray(200, '\0'));
    const QByteArray good = lossyTile();
    EXPECT_FALSE(std::make_unique<RawFile>(withTileBeyondPicture(good, damaged))->unpackSensor());
    EXPECT_TRUE(std::make_unique<RawFile>(withTileBeyondPicture(damaged, good))->unpackSensor());
}

TEST(RawFileTest, valuesTellAfterHowManyRowsTheirFiltersRepeat)
{
    const Bitmap light = ImageBuilder::noise(kSensorSize);
    const QByteArray cells = ImageBuilder::dng(light, {.crop = {}, .preview = {}});
    EXPECT_EQ(periodOf(cells), 2);
    EXPECT_EQ(periodOf(withFiltersOfSix(cells)), 6);
    EXPECT_EQ(periodOf(ImageBuilder::dng(light, {.crop = {}, .preview = {}, .demosaiced = true})),
              1);
}

TEST(RawFileTest, shadowsThatClipAtABlackOfEachPlaceAreNoGap)
{
    EXPECT_FALSE(hasGaps(quarterOf(kBlackLevel), kBlackLevel));
    EXPECT_TRUE(hasGaps(quarterOf(0), kBlackLevel));
}

TEST(RawFileTest, levelsBeyondAllValuesHideNoGap)
{
    for (const quint32 level : {65536U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_TRUE(hasGaps(halfOf(20000), {}, level)) << level;
        EXPECT_TRUE(hasGaps(halfOf(20000), level)) << level;
    }
}
