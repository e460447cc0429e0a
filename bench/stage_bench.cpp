// Each stage of a conversion by itself, in megapixels a second of all cores together (those of the
// picture that the stage makes; of the source when unpacking):
//   stage_bench [--benchmark_… options] FILE...

#include "ImageProperties.h"
#include "JpegDestination.h"
#include "JpegProof.h"
#include "MetadataSegments.h"
#include "Resampler.h"
#include "SourcePicture.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QImage>
#include <QList>
#include <QSize>

#include <benchmark/benchmark.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

constexpr double kQuality = 0.85;
constexpr double kHalf = 0.5;
/// Not a simple part of any side, so that every tap of the filter counts.
constexpr double kResampled = 0.61;

using State = benchmark::State;

void countPixels(State& state, QSize size)
{
    const double pixels = static_cast<double>(size.width()) * size.height();
    state.counters["MP/s"] =
        benchmark::Counter(pixels * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
}

std::optional<SourcePicture> opened(const QString& path)
{
    auto picture = SourcePicture::open(path);
    return picture.ok() ? std::optional(std::move(picture).value()) : std::nullopt;
}

QList<QImage> previewsOf(const SourcePicture& picture)
{
    return picture.preview() ? QList<QImage>{picture.preview()->image} : QList<QImage>{};
}

/// The picture in a part of its size.
auto rendered(SourcePicture&& picture, double part)
{
    const QList<QImage> previews = previewsOf(picture);
    const QSize size = part == 1.0 ? picture.size() : picture.size() * part;
    return std::move(picture).rendered(size, previews);
}

/// Reading, the checks of its structure, unpacking or decoding, and the judgement by its preview.
void open(State& state, const QString& path)
{
    QSize size;
    for (auto _ : state) {
        size = opened(path)->size();
    }
    countPixels(state, size);
}

void render(State& state, const QString& path, double part)
{
    QSize size;
    for (auto _ : state) {
        state.PauseTiming();
        auto picture = *opened(path);
        state.ResumeTiming();
        size = rendered(std::move(picture), part).value().size();
    }
    countPixels(state, size);
}

void resample(State& state, const QString& path)
{
    const Bitmap whole = std::move(*opened(path)).decoded();
    const QSize size = whole.size() * kResampled;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Resampler::scale(whole, size).ok());
    }
    countPixels(state, size);
}

void encode(State& state, const QString& path)
{
    const auto picture = rendered(*opened(path), 1.0);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            JpegDestination::encode(picture.value(), ImageProperties(), kQuality).ok());
    }
    countPixels(state, picture.value().size());
}

void prove(State& state, const QString& path)
{
    SourcePicture source = *opened(path);
    const QList<QImage> previews = previewsOf(source);
    const auto picture = rendered(std::move(source), 1.0);
    const auto jpeg = JpegDestination::encode(picture.value(), ImageProperties(), kQuality);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            JpegProof::prove(jpeg.value(), picture.value(), previews, JpegProof::Source::Sensor)
                .ok());
    }
    countPixels(state, picture.value().size());
}

/// What metadata cost a photo: read from the file and made the segments of its copy.
void metadata(State& state, const QString& path)
{
    const QSize size = opened(path)->size();
    for (auto _ : state) {
        const auto properties = ImageProperties::read(path);
        benchmark::DoNotOptimize(MetadataSegments::build(properties.value(), size, {}).size());
    }
}

void add(const QString& path)
{
    const std::string file = QFileInfo(path).fileName().toStdString();
    const auto stage = [&file](const std::string& name, auto&& measured) {
        benchmark::RegisterBenchmark((file + "/" + name).c_str(), measured)
            ->Unit(benchmark::kMillisecond)
            ->MeasureProcessCPUTime();
    };
    stage("open", [path](State& state) { open(state, path); });
    stage("render", [path](State& state) { render(state, path, 1.0); });
    stage("render half", [path](State& state) { render(state, path, kHalf); });
    stage("resample", [path](State& state) { resample(state, path); });
    stage("encode", [path](State& state) { encode(state, path); });
    stage("prove", [path](State& state) { prove(state, path); });
    stage("metadata", [path](State& state) { metadata(state, path); });
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    const QCoreApplication application(argc, argv);
    for (const QString& path : QCoreApplication::arguments().mid(1)) {
        const auto picture = SourcePicture::open(path);
        if (!picture.ok()) {
            qWarning("%s", qPrintable(picture.error().message));
            return 1;
        }
        add(path);
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
