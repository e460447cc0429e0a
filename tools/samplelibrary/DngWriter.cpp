#include "DngWriter.h"

#include "Camera.h"
#include "CameraTags.h"
#include "LosslessJpeg.h"

#include <algorithm>
#include <utility>

namespace
{

constexpr int kTile = 256;

quint32 number(qint64 value)
{
    return static_cast<quint32>(value);
}

/// `position` mirrored into first .. first + length - 1. Mirroring about a pixel, not about an
/// edge, keeps even positions even: the filters stay in order.
int mirrored(int position, int first, int length)
{
    const int last = first + length - 1;
    const int inside = position < first ? 2 * first - position : position;
    return inside > last ? 2 * last - inside : inside;
}

} // namespace

int DngWriter::pictureLeft()
{
    return Sensor::kMaskedColumns + Sensor::kMargin;
}

int DngWriter::pictureTop()
{
    return Sensor::kMaskedRows + Sensor::kMargin;
}

DngWriter::DngWriter(QSize picture, ShotFacts facts)
    : m_picture(picture)
    , m_sensor(picture.width() + Sensor::kMaskedColumns + 2 * Sensor::kMargin,
               picture.height() + Sensor::kMaskedRows + 2 * Sensor::kMargin)
    , m_facts(std::move(facts))
    , m_values(static_cast<size_t>(m_sensor.width()) * static_cast<size_t>(m_sensor.height()))
{
}

void DngWriter::fillBorders(const Exposure& exposure)
{
    for (int y = 0; y < m_sensor.height(); ++y) {
        const int sourceY = mirrored(y, pictureTop(), m_picture.height());
        for (int x = 0; x < m_sensor.width(); ++x) {
            const int sourceX = mirrored(x, pictureLeft(), m_picture.width());
            if (x < Sensor::kMaskedColumns || y < Sensor::kMaskedRows) {
                m_values[index(x, y)] =
                    exposure.valueOf(0.0F, ~number(static_cast<qint64>(index(x, y))));
            } else if (sourceX != x || sourceY != y) {
                m_values[index(x, y)] = m_values[index(sourceX, sourceY)];
            }
        }
    }
}

void DngWriter::copyTile(int left, int top, std::vector<quint16>& tile) const
{
    // What a tile has beyond the sensor repeats the last row or columns: that costs few bytes.
    auto next = tile.begin();
    for (int y = top; y < top + kTile; ++y) {
        const int row = std::min(y, m_sensor.height() - 1);
        for (int x = left; x < left + kTile; ++x) {
            const int column = x < m_sensor.width() ? x : m_sensor.width() - 2 + x % 2;
            *next++ = m_values[index(column, row)];
        }
    }
}

QList<QByteArray> DngWriter::packTiles() const
{
    QList<QByteArray> tiles;
    std::vector<quint16> tile(size_t{kTile} * kTile);
    for (int top = 0; top < m_sensor.height(); top += kTile) {
        for (int left = 0; left < m_sensor.width(); left += kTile) {
            copyTile(left, top, tile);
            tiles.append(LosslessJpeg::encode(tile, kTile, kTile));
        }
    }
    return tiles;
}

/// `offset`: where the first tile will lie. Tags: DNG 1.4, chapter 4.
TiffTags DngWriter::rawDirectory(const QList<QByteArray>& tiles, quint32 offset) const
{
    QList<quint32> offsets;
    QList<quint32> lengths;
    for (const QByteArray& tile : tiles) {
        offsets.append(offset);
        lengths.append(number(tile.size()));
        offset += number(tile.size() + tile.size() % 2);
    }
    const quint32 width = number(m_sensor.width());
    const quint32 height = number(m_sensor.height());
    TiffTags tags;
    tags.setLongs(0x00FE, {0}); // the main picture
    tags.setLongs(0x0100, {width});
    tags.setLongs(0x0101, {height});
    tags.setShorts(0x0102, {16});
    tags.setShorts(0x0103, {7});     // JPEG, here the lossless process
    tags.setShorts(0x0106, {32803}); // colour filter array
    tags.setShorts(0x0115, {1});
    tags.setShorts(0x011C, {1});
    tags.setLongs(0x0142, {kTile});
    tags.setLongs(0x0143, {kTile});
    tags.setLongs(0x0144, offsets);
    tags.setLongs(0x0145, lengths);
    tags.setShorts(0x828D, {2, 2});
    tags.setBytes(0x828E, QByteArray("\0\1\1\2", 4)); // red, green; green, blue
    tags.setBytes(0xC616, QByteArray("\0\1\2", 3));
    tags.setShorts(0xC617, {1}); // the filters form a rectangle
    tags.setShorts(0xC619, {1, 1});
    tags.setRationals(0xC61A, {{Sensor::kBlackLevel, 1}});
    tags.setLongs(0xC61D, {Sensor::kWhiteLevel});
    tags.setRationals(0xC61E, {{1, 1}, {1, 1}});
    tags.setRationals(0xC61F, {{Sensor::kMargin, 1}, {Sensor::kMargin, 1}});
    tags.setRationals(0xC620, {{number(m_picture.width()), 1}, {number(m_picture.height()), 1}});
    tags.setLongs(0xC62D, {0}); // no split between the two greens
    tags.setRationals(0xC632, {{1, 1}});
    tags.setRationals(0xC65C, {{1, 1}});
    tags.setLongs(0xC68D, {Sensor::kMaskedRows, Sensor::kMaskedColumns, height, width});
    tags.setLongs(0xC68E, {0, 0, height, Sensor::kMaskedColumns});
    return tags;
}

/// `offset`: where the preview will lie. Tags: TIFF 6.0, sections 8 and 21, and DNG 1.4, chapter 4.
TiffTags
DngWriter::mainDirectory(const QByteArray& preview, QSize previewSize, quint32 offset) const
{
    TiffTags tags;
    CameraTags::addMain(tags, m_facts);
    tags.setLongs(0x00FE, {1}); // a reduced picture: the preview
    tags.setLongs(0x0100, {number(previewSize.width())});
    tags.setLongs(0x0101, {number(previewSize.height())});
    tags.setShorts(0x0102, {8, 8, 8});
    tags.setShorts(0x0103, {7}); // JPEG
    tags.setShorts(0x0106, {6}); // YCbCr
    tags.setLongs(0x0111, {offset});
    tags.setShorts(0x0115, {3});
    tags.setLongs(0x0116, {number(previewSize.height())});
    tags.setLongs(0x0117, {number(preview.size())});
    tags.setShorts(0x011C, {1});
    tags.setRationals(0x0211, {{299, 1000}, {587, 1000}, {114, 1000}});
    tags.setShorts(0x0212, {2, 2});
    tags.setRationals(0x0214, {{0, 1}, {255, 1}, {128, 1}, {255, 1}, {128, 1}, {255, 1}});
    tags.setBytes(0xC612, QByteArray("\1\4\0\0", 4));
    tags.setBytes(0xC613, QByteArray("\1\1\0\0", 4));
    tags.setAscii(0xC614, CameraTags::kModel);
    QList<TiffTags::SignedRational> matrix;
    for (const int element : Sensor::kColourMatrix) {
        matrix.append({element, 10000});
    }
    tags.setSignedRationals(0xC621, matrix);
    tags.setRationals(0xC627, {{1, 1}, {1, 1}, {1, 1}});
    QList<TiffTags::Rational> neutral;
    for (const int part : Sensor::kNeutral) {
        neutral.append({number(part), 100});
    }
    tags.setRationals(0xC628, neutral);
    tags.setSignedRationals(0xC62A, {{0, 1}});
    tags.setRationals(0xC62B, {{1, 1}});
    tags.setRationals(0xC62C, {{1, 1}});
    tags.setRationals(0xC62E, {{1, 1}});
    tags.setAscii(0xC62F, CameraTags::kSerialNumber);
    tags.setRationals(0xC630, {{18, 1}, {90, 1}, {2, 1}, {4, 1}});
    tags.setShorts(0xC65A, {21}); // D65
    tags.setLongs(0xC71A, {2});   // the preview is sRGB
    return tags;
}

QByteArray DngWriter::file(const QByteArray& preview, QSize previewSize, const Exposure& exposure)
{
    fillBorders(exposure);
    const QList<QByteArray> tiles = packTiles();
    const auto directories = [&](quint32 previewOffset) {
        TiffTags main = mainDirectory(preview, previewSize, previewOffset);
        const quint32 tilesOffset = previewOffset + number(preview.size() + preview.size() % 2);
        main.addDirectory(0x014A, rawDirectory(tiles, tilesOffset));
        main.addDirectory(CameraTags::kExifPointer, CameraTags::exif(m_facts, m_picture));
        if (m_facts.position) {
            main.addDirectory(CameraTags::kGpsPointer,
                              CameraTags::gps(*m_facts.position, m_facts.taken));
        }
        return main;
    };
    // How long the directories are does not depend on the offsets in them.
    const qint64 length = directories(0).length();
    QByteArray bytes = directories(number(TiffTags::kHeaderLength + length)).file();
    bytes += preview;
    for (const QByteArray& tile : tiles) {
        bytes.append(bytes.size() % 2, '\0');
        bytes += tile;
    }
    return bytes;
}
