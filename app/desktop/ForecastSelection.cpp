#include "ForecastSelection.h"

#include "ImageSource.h"
#include "PathText.h"

#include <QSet>

using namespace Qt::StringLiterals;

namespace
{

class Counter
{
public:
    void
    count(const PhotoFacts& photo, const QString& source, bool isMissing, ForecastSources& into)
    {
        const bool isReadable =
            isMissing || (photo.height != 0 && m_readable.contains(PathText::extension(source)));
        into.missing += isMissing ? 1 : 0;
        if (photo.movie) {
            ++(isReadable && !isMissing ? into.movieFrames : into.skippedMovies);
        } else if (!isReadable) {
            ++into.unreadable;
        } else if (photo.raw) {
            ++into.raw;
            into.rawBytes += photo.bytes;
        } else {
            ++(isJpeg(photo.fileName) ? into.jpegs : into.others);
        }
    }

private:
    static bool isJpeg(const QString& fileName)
    {
        const QString extension = PathText::extension(fileName).toLower();
        return extension == "jpg"_L1 || extension == "jpeg"_L1;
    }

    const QSet<QString> m_readable{ImageSource::readableExtensions().begin(),
                                   ImageSource::readableExtensions().end()};
};

} // namespace

ForecastSelection ForecastSelection::of(const QList<PhotoFacts>& photos)
{
    ForecastSelection selection;
    Counter counter;
    for (const PhotoFacts& photo : photos) {
        counter.count(photo, photo.originalPath, photo.missing, selection.originals);
        // Where there is no picture of its own, the original is what is shown.
        const bool hasNoPicture =
            photo.imagePath.isEmpty() || (photo.missing && photo.imagePath == photo.originalPath);
        counter.count(photo, photo.imagePath, hasNoPicture, selection.displayed);
        if (!photo.movie && (photo.edited || photo.rotated)) {
            ++selection.editedOrRotated;
        }
    }
    return selection;
}
