#include "ImageBuilder.h"

#include "SrgbTransfer.h"

#include <QFile>
#include <QtEndian>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <map>
#include <random>
#include <vector>

namespace
{

std::array<double, 3> sceneColour(double x, double y)
{
    const double sun = std::hypot(x - 0.7, y - 0.3);
    if (sun < 0.12) {
        return {0.95, 0.85, 0.3};
    }
    if (x > 0.15 && x < 0.4 && y > 0.45 && y < 0.8) {
        return {0.6 + 0.2 * y, 0.15, 0.1 + 0.2 * x};
    }
    if (y > 0.6) {
        return {0.15 + 0.1 * x, 0.3 * (1.2 - y) + 0.1, 0.08};
    }
    return {0.45 + 0.2 * x, 0.6 - 0.2 * y, 0.9 - 0.3 * y};
}

/// Collects the entries of one TIFF directory and what they point to.
class Directory final
{
public:
    void shorts(quint16 tag, const std::vector<quint16>& values) { add(tag, 3, values); }

    void longs(quint16 tag, const std::vector<quint32>& values) { add(tag, 4, values); }

    void bytes(quint16 tag, quint16 type, const QByteArray& values)
    {
        m_entries[tag] = {type, static_cast<quint32>(values.size()), values};
    }

    /// Signed (type 10) or unsigned (type 5) fractions of 10000.
    void fractions(quint16 tag, quint16 type, const std::vector<double>& values)
    {
        QByteArray data;
        for (const double value : values) {
            append(data, static_cast<quint32>(static_cast<qint32>(std::lround(value * 10000))));
            append(data, quint32{10000});
        }
        m_entries[tag] = {type, static_cast<quint32>(values.size()), data};
    }

    [[nodiscard]] quint32 length() const
    {
        quint32 total = 2 + 12 * static_cast<quint32>(m_entries.size()) + 4;
        for (const auto& [tag, entry] : m_entries) {
            total +=
                entry.data.size() > 4 ? static_cast<quint32>(entry.data.size() + 1) / 2 * 2 : 0;
        }
        return total;
    }

    [[nodiscard]] QByteArray written(quint32 offset, quint32 next) const
    {
        QByteArray head;
        QByteArray tail;
        append(head, static_cast<quint16>(m_entries.size()));
        const quint32 tailStart = offset + 2 + 12 * static_cast<quint32>(m_entries.size()) + 4;
        for (const auto& [tag, entry] : m_entries) {
            append(head, tag);
            append(head, entry.type);
            append(head, entry.count);
            if (entry.data.size() <= 4) {
                head += entry.data.leftJustified(4, '\0');
            } else {
                append(head, tailStart + static_cast<quint32>(tail.size()));
                tail += entry.data;
                tail += QByteArray(tail.size() % 2, '\0');
            }
        }
        append(head, next);
        return head + tail;
    }

    template <typename Number>
    static void append(QByteArray& into, Number number)
    {
        const Number little = qToLittleEndian(number);
        into.append(reinterpret_cast<const char*>(&little), sizeof(Number));
    }

private:
    struct Entry {
        quint16 type{0};
        quint32 count{0};
        QByteArray data;
    };

    template <typename Number>
    void add(quint16 tag, quint16 type, const std::vector<Number>& values)
    {
        QByteArray data;
        for (const Number value : values) {
            append(data, value);
        }
        m_entries[tag] = {type, static_cast<quint32>(values.size()), data};
    }

    std::map<quint16, Entry> m_entries;
};

Directory rawDirectory(const Bitmap& linear, const ImageBuilder::RawFile& details, quint32 data)
{
    const auto width = static_cast<quint32>(linear.pixelsWide());
    const auto height = static_cast<quint32>(linear.pixelsHigh());
    Directory raw;
    raw.longs(0x00FE, {0});
    raw.longs(0x0100, {width});
    raw.longs(0x0101, {height});
    constexpr quint16 kFilters = 32803;
    constexpr quint16 kLinearRaw = 34892;
    const quint32 samples = details.demosaiced ? 3 : 1;
    const bool isLossy = !details.lossy.isEmpty();
    constexpr quint16 kLossyJpeg = 34892;
    raw.shorts(0x0102, std::vector<quint16>(samples, isLossy ? 8 : 16));
    raw.shorts(0x0103, {isLossy ? kLossyJpeg : quint16{1}});
    raw.shorts(0x0106, {details.demosaiced ? kLinearRaw : kFilters});
    raw.bytes(0x010F, 2, QByteArrayLiteral("Corvane\0"));
    raw.bytes(0x0110, 2, QByteArrayLiteral("Test Camera\0"));
    raw.longs(0x0111, {data});
    raw.shorts(0x0112, {static_cast<quint16>(details.orientation)});
    raw.shorts(0x0115, {static_cast<quint16>(samples)});
    raw.longs(0x0116, {height});
    raw.longs(
        0x0117,
        {isLossy ? static_cast<quint32>(details.lossy.size()) : width * height * samples * 2});
    if (!details.demosaiced) {
        raw.shorts(0x828D, {2, 2});
        raw.bytes(0x828E, 1, QByteArray("\0\1\1\2", 4));
    }
    raw.bytes(0xC612, 1, QByteArray("\1\4\0\0", 4));
    raw.bytes(0xC614, 2, QByteArrayLiteral("Corvane Test Camera\0"));
    if (details.black) {
        raw.shorts(0xC619, {2, 2});
        raw.longs(0xC61A, std::vector<quint32>(4, *details.black));
    }
    raw.longs(0xC61D, {details.white});
    // XYZ to linear sRGB (IEC 61966-2-1): the camera's colours are those of sRGB.
    raw.fractions(
        0xC621, 10, {3.2406, -1.5372, -0.4986, -0.9689, 1.8758, 0.0415, 0.0557, -0.2040, 1.0570});
    raw.fractions(0xC628, 5, {details.neutral.begin(), details.neutral.end()});
    raw.shorts(0xC65A, {21});
    if (details.crop) {
        raw.longs(0xC61F, {2, 4});
        raw.longs(0xC620,
                  {static_cast<quint32>(details.crop->width()),
                   static_cast<quint32>(details.crop->height())});
    }
    return raw;
}

Directory previewDirectory(const QByteArray& jpeg, quint32 start)
{
    Directory preview;
    preview.longs(0x00FE, {1});
    preview.shorts(0x0103, {6});
    preview.longs(0x0201, {start});
    preview.longs(0x0202, {static_cast<quint32>(jpeg.size())});
    return preview;
}

QByteArray sensorData(const Bitmap& linear, bool demosaiced)
{
    QByteArray data;
    for (int y = 0; y < linear.pixelsHigh(); ++y) {
        const auto row = linear.row(y);
        if (demosaiced) {
            for (const quint16 value : row) {
                Directory::append(data, value);
            }
            continue;
        }
        for (int x = 0; x < linear.pixelsWide(); ++x) {
            const auto channel = static_cast<std::size_t>(y % 2 + x % 2);
            Directory::append(data, row[3 * static_cast<std::size_t>(x) + channel]);
        }
    }
    return data;
}

} // namespace

Bitmap ImageBuilder::scene(QSize size, Transfer transfer)
{
    Bitmap bitmap(size.width(), size.height(), Transfer::Srgb);
    for (int y = 0; y < size.height(); ++y) {
        auto* value = bitmap.row(y).data();
        for (int x = 0; x < size.width(); ++x) {
            const auto colour = sceneColour((x + 0.5) / size.width(), (y + 0.5) / size.height());
            for (const double part : colour) {
                *value++ = static_cast<quint16>(std::lround(part * 65535.0));
            }
        }
    }
    return SrgbTransfer::converted(std::move(bitmap), transfer);
}

Bitmap ImageBuilder::flat(QSize size, quint16 value, Transfer transfer)
{
    Bitmap bitmap(size.width(), size.height(), transfer);
    for (int y = 0; y < size.height(); ++y) {
        std::ranges::fill(bitmap.row(y), value);
    }
    return bitmap;
}

Bitmap ImageBuilder::noise(QSize size, quint32 seed)
{
    Bitmap bitmap(size.width(), size.height(), Transfer::Srgb);
    std::mt19937 random(seed);
    for (int y = 0; y < size.height(); ++y) {
        for (quint16& value : bitmap.row(y)) {
            value = static_cast<quint16>(random() & 0xFFFFU);
        }
    }
    return bitmap;
}

Bitmap ImageBuilder::night(QSize size, int stars, quint32 seed)
{
    constexpr quint32 kNoise = 1200;
    Bitmap bitmap(size.width(), size.height(), Transfer::Linear);
    std::mt19937 random(seed);
    for (int y = 0; y < size.height(); ++y) {
        for (quint16& value : bitmap.row(y)) {
            value = static_cast<quint16>(random() % kNoise);
        }
    }
    for (int star = 0; star < stars; ++star) {
        const int x = static_cast<int>(random() % static_cast<quint32>(size.width() - 1));
        const int y = static_cast<int>(random() % static_cast<quint32>(size.height() - 1));
        const auto light = static_cast<quint16>(random() % 60000 + kNoise);
        for (int pixel = 0; pixel < 4; ++pixel) {
            const auto row = bitmap.row(y + pixel / 2);
            std::fill_n(&row[3 * static_cast<std::size_t>(x + pixel % 2)], 3, light);
        }
    }
    return bitmap;
}

QByteArray ImageBuilder::dng(const Bitmap& linear, const RawFile& details)
{
    constexpr quint32 kHeader = 8;
    QList<QByteArray> previews{details.preview, details.secondPreview};
    previews.removeAll(QByteArray());
    quint32 directory = kHeader + rawDirectory(linear, details, 0).length();
    quint32 data =
        directory + static_cast<quint32>(previews.size()) * previewDirectory({}, 0).length();
    QByteArray directories;
    QByteArray pictures;
    for (qsizetype i = 0; i < previews.size(); ++i) {
        const Directory written = previewDirectory(previews[i], data);
        directory += written.length();
        directories +=
            written.written(directory - written.length(), i + 1 < previews.size() ? directory : 0);
        pictures += previews[i] + QByteArray(previews[i].size() % 2, '\0');
        data += static_cast<quint32>(previews[i].size() + previews[i].size() % 2);
    }
    QByteArray file("II*\0\x08\0\0\0", kHeader);
    const Directory raw = rawDirectory(linear, details, data);
    file += raw.written(kHeader, previews.isEmpty() ? 0 : kHeader + raw.length());
    return file + directories + pictures +
           (details.lossy.isEmpty() ? sensorData(linear, details.demosaiced) : details.lossy);
}

double ImageBuilder::difference(const Bitmap& first, const Bitmap& second)
{
    EXPECT_EQ(first.size(), second.size());
    const Bitmap one = SrgbTransfer::converted(first, Transfer::Srgb);
    const Bitmap two = SrgbTransfer::converted(second, Transfer::Srgb);
    double sum = 0.0;
    for (int y = 0; y < std::min(one.pixelsHigh(), two.pixelsHigh()); ++y) {
        const auto a = one.row(y);
        const auto b = two.row(y);
        for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
            sum += std::abs(a[i] - b[i]) / 65535.0;
        }
    }
    return sum / (3.0 * one.pixelsWide() * one.pixelsHigh());
}

void ImageBuilder::write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
    ASSERT_EQ(file.write(bytes), bytes.size());
}
