#include "BitmapImage.h"

#include "SrgbTransfer.h"

#include <QColorSpace>
#include <QRgba64>

#include <algorithm>

namespace
{

constexpr quint32 kOpaque = 65535;

quint16 onWhite(quint32 value, quint32 alpha)
{
    return static_cast<quint16>((value * alpha + kOpaque * (kOpaque - alpha) + kOpaque / 2) /
                                kOpaque);
}

void copyRow(const QRgba64* from, std::span<quint16> into)
{
    for (std::size_t i = 0; i < into.size(); i += 3, ++from) {
        const quint32 alpha = from->alpha();
        into[i] = onWhite(from->red(), alpha);
        into[i + 1] = onWhite(from->green(), alpha);
        into[i + 2] = onWhite(from->blue(), alpha);
    }
}

/// Bytes, all opaque.
Bitmap widenedFrom(const QImage& image)
{
    Bitmap bitmap(image.width(), image.height(), Transfer::Srgb);
    for (int y = 0; y < image.height(); ++y) {
        const auto row = bitmap.row(y);
        std::transform(
            image.constScanLine(y), image.constScanLine(y) + std::ssize(row), row.begin(), widened);
    }
    return bitmap;
}

} // namespace

QImage BitmapImage::toImage(const Bitmap& bitmap)
{
    if (bitmap.isNull()) {
        return {};
    }
    QImage image(bitmap.size(), QImage::Format_RGB888);
    const SrgbTransfer& tables = SrgbTransfer::tables();
    for (int y = 0; y < image.height(); ++y) {
        const auto from = bitmap.row(y);
        uchar* into = image.scanLine(y);
        for (const quint16 value : from) {
            *into++ = bitmap.transfer() == Transfer::Linear ? tables.encodedByte(value)
                                                            : roundedByte(value);
        }
    }
    return image;
}

Bitmap BitmapImage::fromImage(const QImage& image)
{
    if (image.isNull()) {
        return {};
    }
    if (image.format() == QImage::Format_RGB888) {
        return widenedFrom(image);
    }
    Bitmap bitmap(image.width(), image.height(), Transfer::Srgb);
    // Row by row, so that no second picture of 64 bits a pixel is held.
    for (int y = 0; y < image.height(); ++y) {
        const QImage row =
            image.copy(0, y, image.width(), 1).convertToFormat(QImage::Format_RGBA64);
        copyRow(reinterpret_cast<const QRgba64*>(row.constScanLine(0)), bitmap.row(y));
    }
    return bitmap;
}

void BitmapImage::convertToSrgb(QImage& image)
{
    const QColorSpace sRgb(QColorSpace::SRgb);
    if (image.colorSpace().isValid() && image.colorSpace() != sRgb) {
        image.convertToColorSpace(sRgb);
    }
}
