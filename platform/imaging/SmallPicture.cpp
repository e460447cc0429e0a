#include "SmallPicture.h"

#include "Correlation.h"
#include "SrgbTransfer.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <span>

namespace
{

constexpr int kLongestSide = 96;

/// What each channel adds to a value.
struct Weights {
    float red{0.0F};
    float green{0.0F};
    float blue{0.0F};

    /// Of values of which `full` is the most.
    [[nodiscard]] Weights over(float full) const { return {red / full, green / full, blue / full}; }
};

Weights weightsOf(SmallPicture::View view)
{
    switch (view) {
    case SmallPicture::View::RedBlue:
        return {.red = 1.0F, .green = 0.0F, .blue = -1.0F};
    case SmallPicture::View::GreenMagenta:
        return {.red = -0.5F, .green = 1.0F, .blue = -0.5F};
    case SmallPicture::View::Lightness:
        break;
    }
    // The sRGB primaries (ITU-R BT.709).
    return {.red = 0.2126F, .green = 0.7152F, .blue = 0.0722F};
}

QSize smallSize(QSize size)
{
    if (size.width() <= kLongestSide && size.height() <= kLongestSide) {
        return size;
    }
    return size.scaled(kLongestSide, kLongestSide, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

/// The values of a row of pixels, each part of them as `stored` makes it.
template <typename Value, typename Stored>
void weigh(const Value* pixel, const Weights& weights, std::span<float> into, const Stored& stored)
{
    for (float& value : into) {
        value = weights.red * static_cast<float>(stored(pixel[0])) +
                weights.green * static_cast<float>(stored(pixel[1])) +
                weights.blue * static_cast<float>(stored(pixel[2]));
        pixel += 3;
    }
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

/// A point between two values of a line, `part` of the way from one to the other.
struct Point {
    std::size_t before{0};
    std::size_t after{0};
    float part{0.0F};
};

/// `count` points spread over a part of a side of `side` values, given in fractions of it.
std::vector<Point> pointsOf(double start, double length, int count, int side)
{
    std::vector<Point> points;
    points.reserve(static_cast<std::size_t>(count));
    for (int index = 0; index < count; ++index) {
        const double position =
            std::clamp((start + length * (index + 0.5) / count) * side - 0.5, 0.0, side - 1.0);
        const int before = static_cast<int>(position);
        points.push_back({.before = static_cast<std::size_t>(before),
                          .after = static_cast<std::size_t>(std::min(before + 1, side - 1)),
                          .part = static_cast<float>(position - before)});
    }
    return points;
}

float between(float before, float after, float part)
{
    return before + (after - before) * part;
}

/// The averages of a line of values, as its shares say.
void averageLine(std::span<const double> line,
                 const std::vector<Share>& shares,
                 std::span<float> into)
{
    // One part more, of which the last pixel has nothing.
    std::vector<double> sums(into.size() + 1, 0.0);
    for (std::size_t x = 0; x < line.size(); ++x) {
        const Share& share = shares[x];
        sums[share.part] += share.here * line[x];
        sums[share.part + 1] += share.next * line[x];
    }
    std::transform(sums.begin(), sums.end() - 1, into.begin(), [](double sum) {
        return static_cast<float>(sum);
    });
}

/// Averages of the source by area, `into` being no larger than `from`; `rowValues` gives a source
/// row's values. Whole pixels alone would lay pictures of different sizes out of register.
template <typename RowValues>
void average(QSize from, QSize into, const RowValues& rowValues, std::vector<float>& values)
{
    const std::vector<Share> columns = sharesOf(from.width(), into.width());
    const std::vector<Share> rows = sharesOf(from.height(), into.height());
    const auto width = static_cast<std::size_t>(into.width());
    std::vector<float> row(columns.size());
    // Of the rows of a part together: the many are added up first, then the sums are cut.
    std::vector<double> line(columns.size(), 0.0);
    for (std::size_t y = 0; y < rows.size(); ++y) {
        const Share& share = rows[y];
        rowValues(static_cast<int>(y), row);
        for (std::size_t x = 0; x < row.size(); ++x) {
            line[x] += share.here * static_cast<double>(row[x]);
        }
        if (y + 1 == rows.size() || rows[y + 1].part != share.part) {
            averageLine(line, columns, std::span(values).subspan(share.part * width, width));
            for (std::size_t x = 0; x < row.size(); ++x) {
                line[x] = share.next * static_cast<double>(row[x]);
            }
        }
    }
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
    const Weights weights = weightsOf(view).over(65535.0F);
    const auto rowValues = [&](int y, std::vector<float>& row) {
        const quint16* const values = bitmap.row(y).data();
        if (isEncodedFirst) {
            weigh(values, weights, row, [&](quint16 value) { return tables.encoded(value); });
        } else {
            weigh(values, weights, row, std::identity());
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
    const Weights weights = weightsOf(view).over(255.0F);
    const auto rowValues = [&](int y, std::vector<float>& row) {
        weigh(rgb.constScanLine(y), weights, row, std::identity());
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
    const auto columns = pointsOf(area.left(), area.width(), size.width(), m_width);
    const auto rows = pointsOf(area.top(), area.height(), size.height(), m_height);
    float* value = result.m_values.data();
    for (const Point& row : rows) {
        const float* const upper = &m_values[row.before * static_cast<std::size_t>(m_width)];
        const float* const lower = &m_values[row.after * static_cast<std::size_t>(m_width)];
        for (const Point& column : columns) {
            *value++ = between(between(upper[column.before], upper[column.after], column.part),
                               between(lower[column.before], lower[column.after], column.part),
                               row.part);
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
    for (std::vector<float>* const values : {&here, &right, &below}) {
        values->reserve(m_values.size());
    }
    for (int y = 0; y + 1 < m_height; ++y) {
        for (int x = 0; x + 1 < m_width; ++x) {
            here.push_back(at(x, y));
            right.push_back(at(x + 1, y));
            below.push_back(at(x, y + 1));
        }
    }
    return std::min(Correlation::ofValues(here, right), Correlation::ofValues(here, below));
}
