// What a scan does for one photo, as a process of its own, to be measured beside other programs:
//   one_photo convert SOURCE JPEG    the conversion and its proof, --times N times over
//   one_photo prove SOURCE           prints the CPU seconds that the proof of its JPEG takes
//   one_photo library SOURCE PACKAGE makes a library that holds the RAW photo --times N times

#include "FakeDelegate.h"
#include "FakePhotoApplication.h"
#include "JpegConversion.h"
#include "JpegDestination.h"
#include "JpegProof.h"
#include "LargeLibrary.h"
#include "PictureMemory.h"
#include "SourcePicture.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>

#include <sys/resource.h>

#include <cstdio>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

struct Task {
    QString source;
    QString target;
    double quality{0.0};
    float scale{1.0F};
    int times{1};
};

int failure(const QString& message)
{
    std::fprintf(stderr, "one_photo: %s\n", qPrintable(message));
    return 1;
}

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

int convert(const Task& task)
{
    FakePhotoApplication application;
    const PhotoPtr photo = application.photoHandle(application.addPhotoFile(task.source));
    FakeDelegate delegate;
    delegate.quality = task.quality;
    delegate.scale = task.scale;
    QByteArray bytes;
    for (int time = 0; time < task.times; ++time) {
        const Result<ProvedJpeg> jpeg = JpegConversion::convert(task.source, *photo, delegate);
        if (!jpeg.ok()) {
            return failure(jpeg.error().message);
        }
        bytes = jpeg.value().bytes;
    }
    QFile file(task.target);
    const bool written = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    return written ? 0 : failure(u"%1 cannot be written"_s.arg(task.target));
}

int prove(const Task& task)
{
    auto opened = SourcePicture::open(task.source);
    if (!opened.ok()) {
        return failure(opened.error().message);
    }
    SourcePicture picture = std::move(opened).value();
    QList<QImage> references;
    if (picture.preview()) {
        references.append(picture.preview()->image);
    }
    const QSize size = picture.size();
    const auto rendered = std::move(picture).rendered(size, references);
    if (!rendered.ok()) {
        return failure(rendered.error().message);
    }
    const auto jpeg = JpegDestination::encode(rendered.value(), ImageProperties(), task.quality);
    if (!jpeg.ok()) {
        return failure(jpeg.error().message);
    }
    const double begin = cpuSeconds();
    const auto proof =
        JpegProof::prove(jpeg.value(), rendered.value(), references, JpegProof::Source::Sensor);
    std::printf("%.4f\n", cpuSeconds() - begin);
    return proof.ok() ? 0 : failure(proof.error().message);
}

/// As many RAW photos as JPEG ones; scans of RAW photos pass these by.
int makeLibrary(const Task& task)
{
    const Result<void> made = LargeLibrary::make(task.target, 2 * task.times, task.source);
    return made.ok() ? 0 : failure(made.error().message);
}

} // namespace

int main(int argc, char** argv)
{
    PictureMemory::prepare();
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption quality(u"quality"_s, u"0 to 1."_s, u"Q"_s, u"0.85"_s);
    const QCommandLineOption scale(u"scale"_s, u"Of each side."_s, u"F"_s, u"1"_s);
    const QCommandLineOption times(u"times"_s, u"How often."_s, u"N"_s, u"1"_s);
    parser.addOptions({quality, scale, times});
    parser.addPositionalArgument(u"verb"_s, u"convert, prove or library"_s);
    parser.addPositionalArgument(u"source"_s, u"A picture file."_s);
    parser.addPositionalArgument(u"target"_s, u"A JPEG file, or the library to make."_s);
    parser.process(application);
    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() < 2 || (arguments.size() < 3 && arguments[0] != u"prove"_s)) {
        parser.showHelp(2);
    }
    const Task task{.source = arguments[1],
                    .target = arguments.value(2),
                    .quality = parser.value(quality).toDouble(),
                    .scale = parser.value(scale).toFloat(),
                    .times = parser.value(times).toInt()};
    if (arguments[0] == u"convert"_s) {
        return convert(task);
    }
    if (arguments[0] == u"prove"_s) {
        return prove(task);
    }
    return arguments[0] == u"library"_s ? makeLibrary(task)
                                        : failure(u"%1 is no verb"_s.arg(arguments[0]));
}
