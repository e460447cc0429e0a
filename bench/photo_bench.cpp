// Seconds a photo for each step of a conversion, on the files given on the command line.

#include "ImageProperties.h"
#include "JpegDestination.h"
#include "JpegProof.h"
#include "LibraryCreator.h"
#include "PhotoLibrary.h"
#include "SourcePicture.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QList>
#include <QTemporaryDir>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kRounds = 3;
constexpr double kQuality = 0.8;
constexpr double kScale = 0.5;

/// Median seconds of `kRounds` runs.
double medianSeconds(const std::function<void()>& work)
{
    std::vector<double> seconds;
    for (int round = 0; round < kRounds; ++round) {
        QElapsedTimer timer;
        timer.start();
        work();
        seconds.push_back(static_cast<double>(timer.nsecsElapsed()) * 1e-9);
    }
    std::ranges::nth_element(seconds, seconds.begin() + kRounds / 2);
    return seconds[kRounds / 2];
}

double peakMegabytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

/// Imports the JPEG into a new library as a scan would, once a round; seconds a photo.
double librarySeconds(const QByteArray& jpeg)
{
    const QTemporaryDir folder;
    const QString package = folder.filePath(u"Bench.photolibrary"_s);
    const QString picture = folder.filePath(u"picture.jpg"_s);
    QFile file(picture);
    if (!LibraryCreator::create(package).ok() || !file.open(QIODevice::WriteOnly) ||
        file.write(jpeg) != jpeg.size()) {
        return 0.0;
    }
    file.close();
    auto opened = PhotoLibrary::open(package, {Access::Write, false});
    if (!opened.ok()) {
        return 0.0;
    }
    PhotoLibrary& library = *opened.value();
    const auto application = library.applicationWithBundleIdentifier(u"com.apple.iPhoto"_s);
    const auto whole = application->photoLibraryAlbum();
    return medianSeconds([&] {
        const auto turn = library.beginPhotoTurn();
        whole->importFrom(picture, true, whole);
        for (const PhotoPtr& photo : application->lastImportAlbum()->photos()) {
            photo->setComment(u"a comment"_s);
            photo->setRating(3);
            photo->select();
            application->assignKeywordString(u"Corvane Processed"_s);
        }
        turn->commit();
    });
}

/// The picture of a file in a part of its size, as a scan without a library renders it; null where
/// there is none.
QImage renderedPart(const QString& path, double part)
{
    auto opened = SourcePicture::open(path);
    if (!opened.ok()) {
        return {};
    }
    SourcePicture picture = std::move(opened).value();
    QList<QImage> references;
    if (picture.preview()) {
        references.append(picture.preview()->image);
    }
    const QSize size = picture.size() * part;
    auto rendered = std::move(picture).rendered(size, references);
    return rendered.ok() ? std::move(rendered).value() : QImage();
}

bool report(const QString& path)
{
    const auto opened = SourcePicture::open(path);
    if (!opened.ok()) {
        std::printf("%-28s %s\n",
                    qPrintable(QFileInfo(path).fileName()),
                    qPrintable(opened.error().message));
        return false;
    }
    const QImage rendered = renderedPart(path, 1.0);
    const auto properties = ImageProperties::read(path);
    const ImageProperties metadata = properties.ok() ? properties.value() : ImageProperties();
    QByteArray jpeg;

    const double open = medianSeconds([&] { static_cast<void>(SourcePicture::open(path).ok()); });
    const double whole = medianSeconds([&] { static_cast<void>(renderedPart(path, 1.0)); });
    const double half = medianSeconds([&] { static_cast<void>(renderedPart(path, kScale)); });
    const double read = medianSeconds([&] { static_cast<void>(ImageProperties::read(path).ok()); });
    const double encode = medianSeconds([&] {
        auto encoded = JpegDestination::encode(rendered, metadata, kQuality);
        jpeg = encoded.ok() ? std::move(encoded).value() : QByteArray();
    });
    const double proof = medianSeconds([&] {
        static_cast<void>(JpegProof::prove(jpeg, rendered, {}, JpegProof::Source::Sensor).ok());
    });
    std::printf("%-28s %5.1f MP %7.3f %7.3f %7.3f %8.3f %7.3f %7.3f %7.3f %6.2f MB\n",
                qPrintable(QFileInfo(path).fileName()),
                rendered.width() * 1e-6 * rendered.height(),
                open,
                whole - open,
                half - open,
                read,
                encode,
                proof,
                librarySeconds(jpeg),
                static_cast<double>(jpeg.size()) / 1048576.0);
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    std::printf("median seconds of %d runs, quality %.2f, scale %.2f\n", kRounds, kQuality, kScale);
    std::printf("%-28s %8s %7s %7s %7s %8s %7s %7s %7s %9s\n",
                "file",
                "size",
                "open",
                "render",
                "half",
                "metadata",
                "encode",
                "proof",
                "library",
                "JPEG");
    bool good = true;
    for (const QString& path : QCoreApplication::arguments().mid(1)) {
        good = report(path) && good;
    }
    std::printf("peak memory %.0f MB\n", peakMegabytes());
    return good ? 0 : 1;
}
