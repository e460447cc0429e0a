#include "SmallPicture.h"

#include "Correlation.h"
#include "SrgbTransfer.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>

namespace
{

constexpr int kLongestSide = 96;

/// What each channel adds to a value.
struct Weights {
    double red{0.0};
    double green{0.0};
    double blue{0.0};
};

Weights weightsOf(SmallPicture::View view)
{
    switch (view) {
    case SmallPicture::View::RedBlue:
        return {.red = 1.0, .green = 0.0, .blue = -1.0};
    case SmallPicture::View::GreenMagenta:
        return {.red = -0.5, .green = 1.0, .blue = -0.5};
    case SmallPicture::View::Lightness:
        break;
    }
    // The sRGB primaries (ITU-R BT.709).
    return {.red = 0.2126, .green = 0.7152, .blue = 0.0722};
}

QSize smallSize(QSize size)
{
    if (size.width() <= kLongestSide && size.height() <= kLongestSide) {
        return size;
    }
    return size.scaled(kLongestSide, kLongestSide, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

/// How a source pixel is shared out between the parts that a side is cut into: no pixel is longer
/// than a part, so it lies in one or across the border of two.
struct Share {
    std::size_t part{0};
    double here{0.0};
    double next{0.0}; ///< in the part after that one
};

/// The shares of all pixels of a side of `from` pixels cut into `into` parts, in fractions of a
/// part.
std::vector<Share> sharesOf(int from, int into)
{
    std::vector<Share> shares;
    shares.reserve(static_cast<std::size_t>(from));
    for (int pixel = 0; pixel < from; ++pixel) {
        // In units of a part's `from`th, of which a pixel has `into`.
        const qint64 start = qint64{pixel} * into;
        const qint64 part = start / from;
        const qint64 here = std::min<qint64>(into, (part + 1) * from - start);
        shares.push_back({.part = static_cast<std::size_t>(part),
                          .here = static_cast<double>(here) / from,
                          .next = static_cast<double>(into - here) / from});
    }
    return shares;
}

void addShared(const Share& share, std::span<const double> line, std::vector<double>& sums)
{
    for (std::size_t i = 0; i < line.size(); ++i) {
        sums[share.part * line.size() + i] += share.here * line[i];
    }
    if (share.next > 0.0) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            sums[(share.part + 1) * line.size() + i] += share.next * line[i];
        }
    }
}

/// Averages of the source by area, `into` being no larger than `from`; `rowValues` gives a source
/// row's values. Whole pixels alone would lay pictures of different sizes out of register.
template <typename RowValues>
void average(QSize from, QSize into, const RowValues& rowValues, std::vector<float>& values)
{
    const std::vector<Share> columns = sharesOf(from.width(), into.width());
    const std::vector<Share> rows = sharesOf(from.height(), into.height());
    std::vector<double> sums(values.size(), 0.0);
    // One part more, of which the last pixel has nothing.
    std::vector<double> line(static_cast<std::size_t>(into.width()) + 1, 0.0);
    std::vector<float> row(static_cast<std::size_t>(from.width()));
    for (std::size_t y = 0; y < rows.size(); ++y) {
        rowValues(static_cast<int>(y), row);
        std::ranges::fill(line, 0.0);
        for (std::size_t x = 0; x < row.size(); ++x) {
            const Share& share = columns[x];
            const auto value = static_cast<double>(row[x]);
            line[share.part] += share.here * value;
            line[share.part + 1] += share.next * value;
        }
        addShared(rows[y], std::span(line).first(line.size() - 1), sums);
    }
    std::ranges::transform(
        sums, values.begin(), [](double sum) { return static_cast<float>(sum); });
}

} // namespace

SmallPicture::SmallPicture(QSize size, QSize original)
    : m_width(size.width())
    , m_height(size.height())
    , m_original(original)
    , m_values(static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height()))
{
}

SmallPicture SmallPicture::of(const Bitmap& bitmap, View view)
{
    SmallPicture small(smallSize(bitmap.size()), bitmap.size());
    const SrgbTransfer& tables = SrgbTransfer::tables();
    const bool isLinear = bitmap.transfer() == Transfer::Linear;
    // Light is averaged as it is; differences of colours are those of encoded values.
    const bool isEncodedFirst = isLinear && view != View::Lightness;
    const Weights weights = weightsOf(view);
    const auto rowValues = [&](int y, std::vector<float>& row) {
        const auto values = bitmap.row(y);
        const auto value = [&](std::size_t index) {
            const quint16 stored = values[index];
            return static_cast<double>(isEncodedFirst ? tables.encoded(stored) : stored);
        };
        for (std::size_t x = 0; x < row.size(); ++x) {
            row[x] =
                static_cast<float>((weights.red * value(3 * x) + weights.green * value(3 * x + 1) +
                                    weights.blue * value(3 * x + 2)) /
                                   65535.0);
        }
    };
    average(bitmap.size(), {small.m_width, small.m_height}, rowValues, small.m_values);
    if (isLinear && !isEncodedFirst) {
        for (float& value : small.m_values) {
            const auto linear = static_cast<quint16>(std::lround(value * 65535.0F));
            value = static_cast<float>(tables.encoded(linear)) / 65535.0F;
        }
    }
    return small;
}

SmallPicture SmallPicture::of(const QImage& image, View view)
{
    const QImage rgb = image.convertToFormat(QImage::Format_RGB888);
    SmallPicture small(smallSize(rgb.size()), rgb.size());
    const Weights weights = weightsOf(view);
    const auto rowValues = [&](int y, std::vector<float>& row) {
        const uchar* pixel = rgb.constScanLine(y);
        for (float& value : row) {
            value = static_cast<float>(
                (weights.red * pixel[0] + weights.green * pixel[1] + weights.blue * pixel[2]) /
                255.0);
            pixel += 3;
        }
    };
    average(rgb.size(), {small.m_width, small.m_height}, rowValues, small.m_values);
    return small;
}

SmallPicture SmallPicture::turned() const
{
    SmallPicture result({m_height, m_width}, m_original.transposed());
    std::size_t next = 0;
    for (int y = 0; y < result.m_height; ++y) {
        for (int x = 0; x < result.m_width; ++x) {
            result.m_values[next++] = at(y, m_height - 1 - x);
        }
    }
    return result;
}

SmallPicture SmallPicture::averaged(QSize size) const
{
    SmallPicture result(size.boundedTo({m_width, m_height}), m_original);
    const auto rowValues = [this](int y, std::vector<float>& row) {
        for (std::size_t x = 0; x < row.size(); ++x) {
            row[x] = at(static_cast<int>(x), y);
        }
    };
    average({m_width, m_height}, {result.m_width, result.m_height}, rowValues, result.m_values);
    return result;
}

SmallPicture SmallPicture::sampled(const QRectF& area, QSize size) const
{
    SmallPicture result(size, m_original);
    const auto place = [](double start, double length, int index, int count, int side) {
        const double position = (start + length * (index + 0.5) / count) * side - 0.5;
        return std::clamp(position, 0.0, side - 1.0);
    };
    std::size_t next = 0;
    for (int y = 0; y < size.height(); ++y) {
        const double row = place(area.top(), area.height(), y, size.height(), m_height);
        const int top = static_cast<int>(row);
        const int bottom = std::min(top + 1, m_height - 1);
        for (int x = 0; x < size.width(); ++x) {
            const double column = place(area.left(), area.width(), x, size.width(), m_width);
            const int left = static_cast<int>(column);
            const int right = std::min(left + 1, m_width - 1);
            const auto across = static_cast<float>(column - left);
            const float upper = std::lerp(at(left, top), at(right, top), across);
            const float lower = std::lerp(at(left, bottom), at(right, bottom), across);
            result.m_values[next++] = std::lerp(upper, lower, static_cast<float>(row - top));
        }
    }
    return result;
}

double SmallPicture::mean() const
{
    return m_values.empty() ? 0.0
                            : std::accumulate(m_values.begin(), m_values.end(), 0.0) /
                                  static_cast<double>(m_values.size());
}

double SmallPicture::deviation() const
{
    const double middle = mean();
    double sum = 0.0;
    for (const float value : m_values) {
        sum += (value - middle) * (value - middle);
    }
    return m_values.empty() ? 0.0 : std::sqrt(sum / static_cast<double>(m_values.size()));
}

double SmallPicture::neighbourCorrelation() const
{
    std::vector<float> here;
    std::vector<float> right;
    std::vector<float> below;
    for (int y = 0; y + 1 < m_height; ++y) {
        for (int x = 0; x + 1 < m_width; ++x) {
            here.push_back(at(x, y));
            right.push_back(at(x + 1, y));
            below.push_back(at(x, y + 1));
        }
    }
    return std::min(Correlation::ofValues(here, right), Correlation::ofValues(here, below));
}
