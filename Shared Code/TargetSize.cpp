#include "TargetSize.h"

#include "CorvaneDelegate.h"
#include "NumberValue.h"
#include "PictureLimits.h"

#include <QSizeF>

#include <algorithm>
#include <cmath>

namespace
{

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

/// Written so that a side that is not a number has no pixels, too.
bool hasPixels(QSizeF exact)
{
    return exact.width() > 0.0 && exact.height() > 0.0;
}

/// Whole pixels of a positive side; a longer one than any picture's is cut to what stays too long.
int wholeSide(double side)
{
    constexpr double kTooLong = PictureLimits::kMaximumSide + 1.0;
    return std::max(1, static_cast<int>(std::lround(std::min(side, kTooLong))));
}

QSize wholeSize(QSizeF exact)
{
    return {wholeSide(exact.width()), wholeSide(exact.height())};
}

bool isWithinLimits(QSize size)
{
    return PictureLimits::holds(size.width(), size.height());
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
    if (!hasPixels(exact)) {
        return std::nullopt;
    }
    const QSize whole = wholeSize(exact);
    return isWithinLimits(whole) ? std::make_optional(whole) : std::nullopt;
}

bool isTargetTooLarge(QSize pixels, const OutputSize& wanted)
{
    if (wanted.isOriginal()) {
        return false;
    }
    const QSizeF exact = exactSize(pixels.toSizeF(), wanted);
    return hasPixels(exact) && !isWithinLimits(wholeSize(exact));
}
