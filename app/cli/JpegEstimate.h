#pragma once

#include <QtGlobal>

class UserDefaults;
class QSize;

/// How large the JPEG of a photo may become. How much detail a picture holds cannot be known
/// without encoding it, so the estimate is a range.
namespace JpegEstimate
{

struct Range {
    qint64 lowest{0}; ///< bytes
    qint64 highest{0};
};

/// `pixels`: the photo's size. The quality and the output size are those of the settings.
/// No bytes where the output size leaves no pixels.
[[nodiscard]] Range bytes(const QSize& pixels, const UserDefaults& settings);

} // namespace JpegEstimate
