#pragma once

#include "Bitmap.h"

#include <QByteArray>
#include <QSize>
#include <QString>

#include <array>
#include <optional>

/// Pictures and picture files that tests make for themselves. Always the same for the same
/// arguments.
namespace ImageBuilder
{

/// A scene: a bright sky, a dark ground, a round and a square thing, colours in all channels.
[[nodiscard]] Bitmap scene(QSize size, Transfer transfer = Transfer::Srgb);

/// One value in all channels of all pixels.
[[nodiscard]] Bitmap flat(QSize size, quint16 value, Transfer transfer = Transfer::Srgb);

/// Every value by chance.
[[nodiscard]] Bitmap noise(QSize size, quint32 seed = 1);

/// A night sky as a sensor sees it, linear: noise about black, and so many points of light.
[[nodiscard]] Bitmap night(QSize size, int stars, quint32 seed = 1);

/// The sensor data and tags of a DNG file.
struct RawFile {
    std::optional<QSize> crop; ///< DefaultCropSize, 2 pixels from the left and 4 from the top
    QByteArray preview;        ///< a JPEG file, in a directory of its own; none if empty
    QByteArray secondPreview{};
    int orientation{1};
    std::array<double, 3> neutral{1.0, 1.0, 1.0}; ///< what the sensor measures of grey
    bool demosaiced{false};                       ///< all three colours in each pixel
    std::optional<quint32> black{};               ///< of each place in a pattern of two by two
    quint32 white{65535};
    QByteArray lossy{}; ///< a JPEG file of that size, in place of demosaiced data; none if empty
};

/// An uncompressed 16-bit DNG file (little-endian, RGGB) whose camera sees linear sRGB.
[[nodiscard]] QByteArray dng(const Bitmap& linear, const RawFile& details = {});

/// Mean absolute difference of two pictures of one size, 0..1 of encoded values.
[[nodiscard]] double difference(const Bitmap& first, const Bitmap& second);

/// Writes a file; fails the test where it cannot.
void write(const QString& path, const QByteArray& bytes);

} // namespace ImageBuilder
