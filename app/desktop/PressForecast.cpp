#include "PressForecast.h"

#include "NumberValue.h"
#include "Texts.h"

#include <QLocale>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace
{

const ForecastSources& sourcesOf(const PressForecast::Facts& facts)
{
    return facts.settings.processingOption ? facts.selection.originals : facts.selection.displayed;
}

bool isByEvent(const ForecastSettings& settings)
{
    return settings.albumEnabled && !settings.libraryKnown;
}

bool isLongLimited(const OutputSize& size)
{
    return size.longLocked;
}

/// Where neither side is locked, the short one counts.
bool isShortLimited(const OutputSize& size)
{
    return size.shortLocked || !size.longLocked;
}

/// In units of 1024, named as people name them.
QString bytesInWords(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat);
}

} // namespace

QList<PressForecast::Line> PressForecast::lines(const Facts& facts)
{
    if (facts.scanning) {
        return whileScanning(facts.settings);
    }
    Lines lines;
    addBlocks(lines, facts);
    if (!lines.isEmpty()) {
        return lines;
    }
    if (facts.selection.checking) {
        lines.append({Severity::Information,
                      tr("The library is still being checked; a scan begins when that is done.")});
    }
    const ForecastSources& sources = sourcesOf(facts);
    addMissing(lines, sources);
    addPhotos(lines, sources);
    addSkipped(lines, sources);
    addSource(lines, facts);
    addPicture(lines, facts.settings);
    addFiling(lines, facts.settings);
    addOriginals(lines, facts.settings);
    return lines;
}

QString PressForecast::counted(int count, const char* one, const char* many)
{
    return tr(count == 1 ? one : many).arg(QLocale().toString(count));
}

PressForecast::Lines PressForecast::whileScanning(const ForecastSettings& settings)
{
    Lines lines{
        {Severity::Information,
         tr("A scan is running. Quality, size and removal may be changed: they count from the next "
            "photo on. The other settings count from the next scan on.")}};
    if (settings.trashEnabled) {
        lines.append(
            {Severity::Warning, tr("Each converted original goes to the library's trash.")});
    }
    return lines;
}

void PressForecast::addBlocks(Lines& lines, const Facts& facts)
{
    addLibraryBlocks(lines, facts);
    addSizeBlocks(lines, facts.settings.outputSize);
}

void PressForecast::addLibraryBlocks(Lines& lines, const Facts& facts)
{
    if (!facts.selection.libraryOpen) {
        lines.append({Severity::Blocked,
                      tr("Open a library first: File > Open Library in the library window.")});
        return;
    }
    if (!facts.selection.whyReadOnly.isEmpty()) {
        lines.append(
            {Severity::Blocked,
             tr("Nothing can be written to this library. %1").arg(facts.selection.whyReadOnly)});
    }
    const ForecastSources& sources = sourcesOf(facts);
    if (sources.count() == 0) {
        lines.append({Severity::Blocked, tr("Select photos in the library window.")});
    } else if (sources.converted() == 0 && sources.missing == 0) {
        lines.append({Severity::Blocked,
                      counted(sources.count(),
                              QT_TR_NOOP("%1 selected item cannot be converted and is "
                                         "skipped. Select photos in the library window."),
                              QT_TR_NOOP("None of the %1 selected items can be converted; all are "
                                         "skipped. Select photos in the library window."))});
    }
}

void PressForecast::addSizeBlocks(Lines& lines, const OutputSize& size)
{
    if (!size.fixedSize) {
        if (!(size.scaleFactor > 0.0F)) {
            lines.append({Severity::Blocked,
                          tr("Choose an output size: none is in effect yet, so every conversion "
                             "would fail. A stored fixed size takes effect when it is clicked.")});
        }
        return;
    }
    if (isLongLimited(size) && size.longSize <= 0) {
        lines.append({Severity::Blocked,
                      tr("The long side is set to no pixels, so every conversion would fail. Click "
                         "“Fixed size” and give it a length.")});
    }
    if (isShortLimited(size) && size.shortSize <= 0) {
        lines.append({Severity::Blocked,
                      tr("The short side is set to no pixels, so every conversion would fail. "
                         "Click “Fixed size” and give it a length.")});
    }
}

void PressForecast::addPhotos(Lines& lines, const ForecastSources& sources)
{
    QStringList again;
    if (sources.jpegs > 0) {
        again += counted(sources.jpegs, QT_TR_NOOP("%1 JPEG"), QT_TR_NOOP("%1 JPEGs"));
    }
    if (sources.others > 0) {
        again += counted(
            sources.others, QT_TR_NOOP("%1 other picture"), QT_TR_NOOP("%1 other pictures"));
    }
    const QString others = again.join(tr(" and "));
    if (sources.raw == 0) {
        if (!others.isEmpty()) {
            lines.append({Severity::Information, tr("Re-encodes %1; none is RAW.").arg(others)});
        }
        return;
    }
    const QString raw =
        counted(sources.raw, QT_TR_NOOP("%1 RAW photo"), QT_TR_NOOP("%1 RAW photos"));
    const QString bytes = bytesInWords(sources.rawBytes);
    lines.append({Severity::Information,
                  others.isEmpty()
                      ? tr("Converts %1, %2.").arg(raw, bytes)
                      : tr("Converts %1, %2, and re-encodes %3.").arg(raw, bytes, others)});
}

void PressForecast::addSkipped(Lines& lines, const ForecastSources& sources)
{
    if (sources.movieFrames > 0) {
        lines.append({Severity::Warning,
                      counted(sources.movieFrames,
                              QT_TR_NOOP("Makes a still picture of %1 movie."),
                              QT_TR_NOOP("Makes a still picture of each of %1 movies."))});
    }
    if (sources.skippedMovies > 0) {
        lines.append({Severity::Information,
                      counted(sources.skippedMovies,
                              QT_TR_NOOP("Skips %1 movie."),
                              QT_TR_NOOP("Skips %1 movies."))});
    }
    if (sources.unreadable > 0) {
        lines.append({Severity::Information,
                      counted(sources.unreadable,
                              QT_TR_NOOP("Skips %1 photo of a type that cannot be read."),
                              QT_TR_NOOP("Skips %1 photos of a type that cannot be read."))});
    }
}

void PressForecast::addSource(Lines& lines, const Facts& facts)
{
    if (!facts.settings.processingOption) {
        lines.append({Severity::Information,
                      tr("Takes each picture as iPhoto shows it; where the library keeps no such "
                         "picture, the original file.")});
        return;
    }
    if (facts.selection.editedOrRotated > 0) {
        lines.append(
            {Severity::Warning,
             counted(facts.selection.editedOrRotated,
                     QT_TR_NOOP("%1 photo was edited or turned in iPhoto. Its copy loses that, "
                                "since the original file is converted."),
                     QT_TR_NOOP("%1 photos were edited or turned in iPhoto. Their copies lose "
                                "that, since the original files are converted."))});
    }
}

QString PressForecast::sizeInWords(const OutputSize& size)
{
    if (size.fixedSize) {
        if (isLongLimited(size) && isShortLimited(size)) {
            return tr("at most %1 by %2 pixels").arg(size.longSize).arg(size.shortSize);
        }
        return isLongLimited(size)
                   ? tr("with a long side of at most %1 pixels").arg(size.longSize)
                   : tr("with a short side of at most %1 pixels").arg(size.shortSize);
    }
    if (size.isOriginal()) {
        return tr("in full size");
    }
    const double percent = static_cast<double>(size.scaleFactor) * 100.0;
    return tr("with sides of %1 % of the original's").arg(QLocale().toString(percent, 'g', 3));
}

void PressForecast::addPicture(Lines& lines, const ForecastSettings& settings)
{
    const OutputSize& size = settings.outputSize;
    lines.append({Severity::Information,
                  tr("Writes JPEGs of quality %1 %2.")
                      .arg(NumberValue::withTwoDecimals(settings.quality), sizeInWords(size))});
    if (size.fixedSize && isLongLimited(size) && isShortLimited(size)) {
        lines.append({Severity::Warning,
                      tr("Each side is reduced to its limit by itself: pictures of other "
                         "proportions are distorted.")});
    }
}

void PressForecast::addFiling(Lines& lines, const ForecastSettings& settings)
{
    const QString album = Texts::defaultAlbumName();
    if (isByEvent(settings)) {
        lines.append({Severity::Information,
                      tr("Asks for the library and files the copies by event, into one album per "
                         "event.")});
    } else if (settings.albumEnabled) {
        lines.append({Severity::Warning,
                      tr("Files the copies into the album “%1” this time. Filing by event comes "
                         "with the press after this one.")
                          .arg(album)});
    } else {
        lines.append(
            {Severity::Information, tr("Files the copies into the album “%1”.").arg(album)});
    }
    lines.append({Severity::Information,
                  settings.tagEnabled
                      ? tr("Adds the keyword “%1” to originals and “%2” to copies.")
                            .arg(Texts::originalKeyword(), Texts::processedKeyword())
                      : tr("Marks neither originals nor copies with keywords.")});
}

void PressForecast::addOriginals(Lines& lines, const ForecastSettings& settings)
{
    if (!settings.trashEnabled) {
        lines.append({Severity::Information, tr("The originals stay where they are.")});
        return;
    }
    lines.append({Severity::Warning, tr("Each converted original goes to the library's trash.")});
    if (!isByEvent(settings)) {
        lines.append({Severity::Warning,
                      tr("The photos leave their events: the copies come as an event of their "
                         "own.")});
    }
}

void PressForecast::addMissing(Lines& lines, const ForecastSources& sources)
{
    if (sources.missing > 0) {
        lines.append({Severity::Warning,
                      counted(sources.missing,
                              QT_TR_NOOP("The file of %1 selected photo is missing. The scan stops "
                                         "there; photos after it are not converted."),
                              QT_TR_NOOP("The files of %1 selected photos are missing. The scan "
                                         "stops at the first of them; photos after it are not "
                                         "converted."))});
    }
}
