#include "Rendition.h"

#include "SampledFunction.h"
#include "SrgbTransfer.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace
{

constexpr double kFullTone = 65535.0;

using FloatMatrix = std::array<float, 9>;

void transformRow(std::span<quint16> row, const FloatMatrix& m)
{
    const auto stored = [](float value) {
        return static_cast<quint16>(std::clamp(value + 0.5F, 0.0F, 65535.0F));
    };
    for (std::size_t i = 0; i < row.size(); i += 3) {
        const auto red = static_cast<float>(row[i]);
        const auto green = static_cast<float>(row[i + 1]);
        const auto blue = static_cast<float>(row[i + 2]);
        row[i] = stored(m[0] * red + m[1] * green + m[2] * blue);
        row[i + 1] = stored(m[3] * red + m[4] * green + m[5] * blue);
        row[i + 2] = stored(m[6] * red + m[7] * green + m[8] * blue);
    }
}

} // namespace

ColorMatrix multiplied(const ColorMatrix& left, const ColorMatrix& right)
{
    ColorMatrix product{};
    for (std::size_t i = 0; i < product.size(); ++i) {
        const std::size_t row = i / 3 * 3;
        const std::size_t column = i % 3;
        product.at(i) = left.at(row) * right.at(column) + left.at(row + 1) * right.at(column + 3) +
                        left.at(row + 2) * right.at(column + 6);
    }
    return product;
}

ColorMatrix inverted(const ColorMatrix& matrix)
{
    const auto& [a, b, c, d, e, f, g, h, i] = matrix;
    const double determinant = a * (e * i - f * h) - b * (d * i - f * g) + c * (d * h - e * g);
    // The comparison is false for what is no number.
    if (!(std::abs(determinant) > 1e-6)) {
        return kIdentityMatrix;
    }
    ColorMatrix inverse{e * i - f * h,
                        c * h - b * i,
                        b * f - c * e, //
                        f * g - d * i,
                        a * i - c * g,
                        c * d - a * f, //
                        d * h - e * g,
                        b * g - a * h,
                        a * e - b * d};
    for (double& value : inverse) {
        value /= determinant;
    }
    return inverse;
}

Bitmap transformed(Bitmap light, const ColorMatrix& matrix)
{
    if (matrix == kIdentityMatrix) {
        return light;
    }
    FloatMatrix floats{};
    std::ranges::transform(
        matrix, floats.begin(), [](double value) { return static_cast<float>(value); });
    for (int y = 0; y < light.pixelsHigh(); ++y) {
        transformRow(light.row(y), floats);
    }
    return light;
}

Rendition::Parts Rendition::scaled(ColorMatrix matrix, double stops)
{
    const double least = std::min({matrix[0] + matrix[1] + matrix[2],
                                   matrix[3] + matrix[4] + matrix[5],
                                   matrix[6] + matrix[7] + matrix[8]});
    const double scale = least > 0.0 ? 1.0 / least : 1.0;
    for (double& value : matrix) {
        value *= scale;
    }
    return {.matrix = matrix, .gain = std::exp2(stops) / scale};
}

Rendition::Rendition(const ColorMatrix& matrix, double stops, const ToneCurve& curve)
    : m_tones(65536)
{
    const auto [scaledMatrix, gain] = scaled(matrix, stops);
    m_matrix = scaledMatrix;
    const SrgbTransfer& tables = SrgbTransfer::tables();
    const SampledFunction<4096> toneOf([&curve](double encoded) { return curve.at(encoded); });
    for (std::size_t light = 0; light < m_tones.size(); ++light) {
        // Between the table's values, which lie too far apart for the gains of dark photos.
        const double wanted = std::min(static_cast<double>(light) * gain, kFullTone);
        const auto below = static_cast<quint16>(wanted);
        const auto above = static_cast<quint16>(std::min<int>(below + 1, 65535));
        const double encoded =
            std::lerp(tables.encoded(below), tables.encoded(above), wanted - below);
        const auto tone = static_cast<double>(toneOf.at(static_cast<float>(encoded / kFullTone)));
        m_tones[light] = static_cast<quint16>(std::lround(std::clamp(tone, 0.0, 1.0) * kFullTone));
    }
}

Rendition Rendition::neutral(double stops)
{
    return {kIdentityMatrix, kCommonStops + stops, ToneCurve(kCommonSlopes)};
}

Rendition Rendition::with(const std::array<double, 3>& balance) const
{
    Rendition other = *this;
    other.m_balance = balance;
    return other;
}

std::vector<quint8> Rendition::byteTones() const
{
    std::vector<quint8> tones(m_tones.size());
    std::ranges::transform(m_tones, tones.begin(), roundedByte);
    return tones;
}

QImage Rendition::toned(const Bitmap& light) const
{
    QImage picture(light.size(), QImage::Format_RGB888);
    const std::vector<quint8> tones = byteTones();
    for (int y = 0; y < picture.height(); ++y) {
        std::ranges::transform(
            light.row(y), picture.scanLine(y), [&tones](quint16 value) { return tones[value]; });
    }
    return picture;
}
