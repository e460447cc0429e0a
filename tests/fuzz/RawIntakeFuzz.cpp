#include "FileStructure.h"
#include "FuzzTarget.h"
#include "ImageProperties.h"
#include "PreviewFinder.h"
#include "RawPhoto.h"
#include "TiffStructure.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

/// Larger pictures only cost time.
constexpr qint64 kPixels = qint64{1024} * 1024;

/// Pixels of the largest picture that a TIFF-based file states, as far as they matter.
qint64 statedPixels(const QByteArray& bytes)
{
    constexpr quint16 kWidth = 0x0100;
    constexpr quint16 kHeight = 0x0101;
    qint64 pixels = 0;
    if (const auto tiff = TiffStructure::parse(bytes)) {
        static_cast<void>(tiff->statesRaw());
        static_cast<void>(tiff->rawDirectory());
        for (const TiffDirectory& directory : tiff->directories()) {
            static_cast<void>(directory.pictureRanges());
            const auto width = std::min<quint64>(directory.number(kWidth), kPixels);
            const auto height = std::min<quint64>(directory.number(kHeight), kPixels);
            pixels = std::max(pixels, static_cast<qint64>(width * height));
        }
    }
    return pixels;
}

} // namespace

/// Any bytes either are a RAW photo that can be rendered in every size, or are refused.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const FileType type = FileTypes::detect(bytes, u"photo.dng"_s);
    static_cast<void>(FileStructure::complaint(bytes, type));
    if (type != FileType::Raw || statedPixels(bytes) > kPixels) {
        return 0;
    }
    static_cast<void>(ImageProperties::fromBytes(bytes).ok());
    static_cast<void>(PreviewFinder::largest(bytes, PreviewFinder::isAny));
    Result<RawPhoto> photo = RawPhoto::open(bytes);
    if (!photo.ok()) {
        return 0;
    }
    RawPhoto raw = std::move(photo).value();
    const Rendition rendition = RenditionFit::of(raw.reduced(), raw.colors(), {});
    static_cast<void>(raw.someRows());
    const int part = bytes.size() % 2 == 0 ? 1 : 3;
    const QSize wanted(std::max(1, raw.size().width() / part),
                       std::max(1, raw.size().height() / part));
    static_cast<void>(std::move(raw).rendered(rendition, wanted).ok());
    return 0;
}
