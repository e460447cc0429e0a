#include "TargetSize.h"

#include "CorvaneDelegate.h"
#include "NumberValue.h"

#include <QSizeF>

#include <algorithm>
#include <cmath>

namespace
{

constexpr double kLongestJpegSide = 65535.0;

QSizeF bothLocked(QSizeF pixels, double longSize, double shortSize)
{
    if (pixels.width() > pixels.height()) {
        return {std::min(longSize, pixels.width()), std::min(shortSize, pixels.height())};
    }
    return {std::min(shortSize, pixels.width()), std::min(longSize, pixels.height())};
}

QSizeF oneLocked(QSizeF pixels, double limit, bool isLongLimited)
{
    const bool isUpright = pixels.height() >= pixels.width();
    if (isLongLimited == isUpright) {
        const double height = std::min(limit, pixels.height());
        return {pixels.width() * std::min(1.0, height / pixels.height()), height};
    }
    const double width = std::min(limit, pixels.width());
    return {width, pixels.height() * std::min(1.0, width / pixels.width())};
}

QSizeF exactSize(QSizeF pixels, const OutputSize& wanted)
{
    if (!wanted.fixedSize) {
        return pixels * static_cast<double>(wanted.scaleFactor);
    }
    const auto longSize = static_cast<double>(wanted.longSize);
    const auto shortSize = static_cast<double>(wanted.shortSize);
    if (wanted.longLocked && wanted.shortLocked) {
        return bothLocked(pixels, longSize, shortSize);
    }
    return oneLocked(pixels, wanted.longLocked ? longSize : shortSize, wanted.longLocked);
}

/// Whole pixels, or 0 for what cannot be a side.
int wholeSide(double side)
{
    // Written so that a side that is not a number fails, too.
    if (!(side > 0.0 && side <= kLongestJpegSide)) {
        return 0;
    }
    return std::max(1, static_cast<int>(std::lround(side)));
}

} // namespace

OutputSize OutputSize::of(const CorvaneDelegate& delegate)
{
    return OutputSize{.scaleFactor = delegate.scaleFactor(),
                      .fixedSize = delegate.fixedSize(),
                      .longSize = NumberValue::integer(delegate.longSize()),
                      .shortSize = NumberValue::integer(delegate.shortSize()),
                      .longLocked = delegate.longLocked(),
                      .shortLocked = delegate.shortLocked()};
}

std::optional<QSize> targetSize(QSize pixels, const OutputSize& wanted)
{
    if (wanted.isOriginal()) {
        return pixels;
    }
    const QSizeF exact = exactSize(pixels.toSizeF(), wanted);
    const QSize whole(wholeSide(exact.width()), wholeSide(exact.height()));
    return whole.isEmpty() ? std::nullopt : std::make_optional(whole);
}
