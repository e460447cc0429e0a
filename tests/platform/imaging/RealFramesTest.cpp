#include "BitmapImage.h"
#include "DemosaicingSamples.h"
#include "ImageBuilder.h"
#include "RawPhoto.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

// What real cameras saw, made into pictures without any mosaic and given a mosaic anew.

namespace
{

/// Frames of several makers' sensors, small and large, in daylight and in dim light.
const QStringList kFrames{u"masters/IMG_1994.cr2"_s,
                          u"masters/IMG_1997.cr2"_s,
                          u"raw/panasonic_lx3.rw2"_s,
                          u"raw/canon_d30.crw"_s,
                          u"raw/nikon_d1.nef"_s};

QByteArray frameOf(const QString& name)
{
    QFile file(QDir(QStringLiteral(CORVANE_SHARED_DATA)).filePath(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(name);
    return file.readAll();
}

Bitmap lightOf(const QByteArray& raw)
{
    const auto photo = RawPhoto::open(raw);
    EXPECT_TRUE(photo.ok());
    return photo.ok() ? photo.value().linear() : Bitmap();
}

/// The middle of a frame, four pixels of it for each of the picture.
Bitmap superPixels(const Bitmap& frame, QSize most)
{
    const QSize size = (frame.size() / 2).boundedTo(most);
    const QPoint first((frame.pixelsWide() - 2 * size.width()) / 2,
                       (frame.pixelsHigh() - 2 * size.height()) / 2);
    Bitmap picture(size.width(), size.height(), Transfer::Linear);
    for (int y = 0; y < size.height(); ++y) {
        const auto upper = frame.row(first.y() + 2 * y);
        const auto lower = frame.row(first.y() + 2 * y + 1);
        const auto into = picture.row(y);
        for (std::size_t i = 0; i < into.size(); ++i) {
            const std::size_t at = 3 * (static_cast<std::size_t>(first.x()) + i / 3 * 2) + i % 3;
            into[i] = static_cast<quint16>(
                (upper[at] + upper[at + 3] + lower[at] + lower[at + 3] + 2) / 4);
        }
    }
    return picture;
}

} // namespace

TEST(RealFramesTest, coloursBetweenTheFiltersAreAsCloseAsPixelGroupingFindsThem)
{
    for (const QString& name : kFrames) {
        const Bitmap scene = superPixels(lightOf(frameOf(name)), {1000, 800});
        const QByteArray mosaicked = ImageBuilder::dng(scene);
        const double ours = Demosaicing::closeness(lightOf(mosaicked), scene);
        const double theirs =
            Demosaicing::closeness(Demosaicing::byPixelGrouping(mosaicked), scene);
        RecordProperty(name.toStdString(), std::to_string(ours) + " to " + std::to_string(theirs));
        EXPECT_GE(ours, theirs) << qPrintable(name);
    }
}

TEST(RealFramesTest, lightThatClippedHasNoColour)
{
    // Specks of light smaller than a cell may have any colour.
    constexpr double kSpecks = 8.0;
    for (const QString& name : kFrames) {
        const Bitmap frame = lightOf(frameOf(name));
        double clipped = 0.0;
        double magenta = 0.0;
        for (int y = 0; y < frame.pixelsHigh(); ++y) {
            const auto row = frame.row(y);
            for (std::size_t i = 0; i < row.size(); i += 3) {
                // Red and blue are at their ends: a mean of less green would be magenta.
                if (row[i] == 65535 && row[i + 2] == 65535) {
                    clipped += 1.0;
                    magenta += row[i + 1] < 58000 ? 1.0 : 0.0;
                }
            }
        }
        EXPECT_LE(magenta, 0.02 * clipped + kSpecks) << qPrintable(name) << " of " << clipped;
    }
}
