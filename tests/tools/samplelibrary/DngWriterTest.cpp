#include "DngWriter.h"

#include "Camera.h"
#include "ImageProperties.h"
#include "ImageSource.h"
#include "JpegRows.h"
#include "LosslessJpegReader.h"
#include "TiffReader.h"

#include <QFile>
#include <QPoint>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

constexpr QSize kPicture(280, 200);
constexpr QSize kPreview(70, 50);

/// A value of the test picture; each pixel has one of its own as far as 14 bits go.
quint16 valueAt(int x, int y)
{
    return static_cast<quint16>(600 + (x * 37 + y * 91) % 12000);
}

ShotFacts facts()
{
    ShotFacts shot;
    shot.taken = QDateTime(QDate(2011, 5, 14), QTime(8, 42, 17, 310), Qt::UTC);
    shot.orientation = Orientation::TurnAnticlockwise;
    shot.position = Place{-12.5, 7.25, 100.5};
    return shot;
}

/// It shows something: decoders take no notice of previews that are all one grey.
QByteArray stripedPreview()
{
    JpegRows rows(kPreview, 90);
    for (int y = 0; y < kPreview.height(); ++y) {
        const auto level = static_cast<quint8>(y / 10 % 2 == 0 ? 40 : 210);
        rows.addRow(std::vector<quint8>(static_cast<size_t>(kPreview.width()) * 3, level));
    }
    return rows.finish().value();
}

/// Index of a pixel among rows of `width`.
size_t indexOf(int x, int y, int width)
{
    return static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x);
}

/// A tile's values to their places among rows of that size. What reaches beyond fills the tile up.
void placeTile(const LosslessJpegReader& tile,
               QPoint corner,
               QSize size,
               std::vector<quint16>& rows)
{
    for (int y = 0; y < tile.height; ++y) {
        for (int x = 0; x < tile.width; ++x) {
            const int column = corner.x() + x;
            const int row = corner.y() + y;
            if (column < size.width() && row < size.height()) {
                rows[indexOf(column, row, size.width())] = tile.values[indexOf(x, y, tile.width)];
            }
        }
    }
}

class DngWriterTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_folder.isValid());
        DngWriter writer(kPicture, facts());
        for (int y = 0; y < kPicture.height(); ++y) {
            for (int x = 0; x < kPicture.width(); ++x) {
                writer.setValue(x, y, valueAt(x, y));
            }
        }
        m_bytes = writer.file(m_preview, kPreview, Exposure(100, 1));
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(m_bytes), m_bytes.size());
    }

    [[nodiscard]] QString path() const { return m_folder.filePath(u"test.dng"_s); }

    /// The sensor's values, put together from the tiles of the file.
    [[nodiscard]] std::vector<quint16> sensor(int& width, int& height) const
    {
        const TiffReader reader(m_bytes);
        const auto raw = reader.directory(reader.value(reader.first().at(0x014A)));
        width = static_cast<int>(reader.value(raw.at(0x0100)));
        height = static_cast<int>(reader.value(raw.at(0x0101)));
        const int tile = static_cast<int>(reader.value(raw.at(0x0142)));
        if (tile == 0) {
            ADD_FAILURE() << "no tiles";
            return {};
        }
        const int tilesAcross = (width + tile - 1) / tile;
        std::vector<quint16> values(static_cast<size_t>(width) * static_cast<size_t>(height));
        for (int i = 0; i < static_cast<int>(raw.at(0x0144).count); ++i) {
            const auto decoded = LosslessJpegReader::read(
                reader.bytes(reader.value(raw.at(0x0144), i), reader.value(raw.at(0x0145), i)));
            if (!decoded || decoded->width != tile || decoded->height != tile) {
                ADD_FAILURE() << "tile " << i << " does not decode";
                return values;
            }
            const QPoint corner(i % tilesAcross * tile, i / tilesAcross * tile);
            placeTile(*decoded, corner, QSize(width, height), values);
        }
        return values;
    }

    QTemporaryDir m_folder;
    QByteArray m_preview{stripedPreview()};
    QByteArray m_bytes;
};

} // namespace

TEST_F(DngWriterTest, everyValueOfThePictureIsInTheTiles)
{
    int width = 0;
    int height = 0;
    const auto values = sensor(width, height);
    ASSERT_FALSE(values.empty());
    ASSERT_EQ(width, kPicture.width() + Sensor::kMaskedColumns + 2 * Sensor::kMargin);
    ASSERT_EQ(height, kPicture.height() + Sensor::kMaskedRows + 2 * Sensor::kMargin);
    const int left = Sensor::kMaskedColumns + Sensor::kMargin;
    const int top = Sensor::kMaskedRows + Sensor::kMargin;
    for (int y = 0; y < kPicture.height(); ++y) {
        for (int x = 0; x < kPicture.width(); ++x) {
            ASSERT_EQ(values[indexOf(x + left, y + top, width)], valueAt(x, y)) << x << ", " << y;
        }
    }
}

TEST_F(DngWriterTest, maskedPixelsAreDarkAndTheMarginContinuesThePicture)
{
    int width = 0;
    int height = 0;
    const auto values = sensor(width, height);
    const int left = Sensor::kMaskedColumns + Sensor::kMargin;
    const int top = Sensor::kMaskedRows + Sensor::kMargin;
    ASSERT_FALSE(values.empty());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const quint16 value = values[indexOf(x, y, width)];
            if (x < Sensor::kMaskedColumns || y < Sensor::kMaskedRows) {
                ASSERT_NEAR(value, Sensor::kBlackLevel, 16) << x << ", " << y;
            }
        }
    }
    // Two pixels beyond the edge lies what is two pixels inside: a filter of the same colour.
    EXPECT_EQ(values[indexOf(left - 2, top + 50, width)], valueAt(2, 50));
    EXPECT_EQ(values[indexOf(left + 50, top - 3, width)], valueAt(50, 3));
    EXPECT_EQ(values[indexOf(left + 9, top + kPicture.height() + 7, width)],
              valueAt(9, kPicture.height() - 9));
}

TEST_F(DngWriterTest, areaCropAndLevelsAreStated)
{
    const TiffReader reader(m_bytes);
    const auto raw = reader.directory(reader.value(reader.first().at(0x014A)));
    EXPECT_EQ(reader.value(raw.at(0xC68D), 0), static_cast<quint32>(Sensor::kMaskedRows));
    EXPECT_EQ(reader.value(raw.at(0xC68D), 1), static_cast<quint32>(Sensor::kMaskedColumns));
    EXPECT_EQ(reader.value(raw.at(0xC61F), 0), static_cast<quint32>(Sensor::kMargin));
    EXPECT_EQ(reader.value(raw.at(0xC620), 0), static_cast<quint32>(kPicture.width()));
    EXPECT_EQ(reader.value(raw.at(0xC620), 2), static_cast<quint32>(kPicture.height()));
    EXPECT_EQ(reader.value(raw.at(0xC61A)), static_cast<quint32>(Sensor::kBlackLevel));
    EXPECT_EQ(reader.value(raw.at(0xC61D)), static_cast<quint32>(Sensor::kWhiteLevel));
}

TEST_F(DngWriterTest, thePreviewLiesWhereTheFirstDirectorySays)
{
    const TiffReader reader(m_bytes);
    const auto main = reader.first();
    EXPECT_EQ(reader.value(main.at(0x00FE)), 1U);
    EXPECT_EQ(reader.bytes(reader.value(main.at(0x0111)), reader.value(main.at(0x0117))),
              m_preview);
    const auto preview = ImageSource::embeddedPreview(path());
    ASSERT_TRUE(preview.has_value());
    EXPECT_EQ(preview->size(), kPreview);
}

TEST_F(DngWriterTest, metadataIsReadBack)
{
    const auto properties = ImageProperties::read(path());
    ASSERT_TRUE(properties.ok());
    const ImageFacts read = properties.value().facts();
    EXPECT_EQ(read.orientation, 8);
    EXPECT_EQ(read.dateTaken, facts().taken);
    EXPECT_EQ(read.texts.value(u"Model"_s), u"Corvane Sample Camera"_s);
    EXPECT_NEAR(read.latitude.value_or(0.0), -12.5, 1e-8);
    EXPECT_NEAR(read.longitude.value_or(0.0), 7.25, 1e-8);
    EXPECT_NEAR(read.altitude.value_or(0.0), 100.5, 1e-8);
}

TEST_F(DngWriterTest, decodesToTheDefaultCropAsTheSensorLies)
{
    const auto decoded = ImageSource::decode(path());
    ASSERT_TRUE(decoded.ok()) << decoded.error().message.toStdString();
    EXPECT_EQ(decoded.value().size(), kPicture);
}

TEST_F(DngWriterTest, aFileThatEndsEarlyIsRefusedByTheDecoder)
{
    QFile file(path());
    ASSERT_TRUE(file.resize(m_bytes.size() * 3 / 4));
    EXPECT_FALSE(ImageSource::decode(path()).ok());
}
