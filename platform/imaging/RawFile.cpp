#include "RawFile.h"

#include "LossyTiles.h"
#include "OpenMpThreads.h"
#include "PictureLimits.h"
#include "TiffStructure.h"

#include <algorithm>
#include <string_view>

namespace
{

/// PPG: the best of LibRaw's interpolations that gives the same pixels with any number of threads.
constexpr int kInterpolation = 2;

/// LibRaw's mark of a crop whose place in the sensor is not stated.
constexpr int kNoOrigin = 0xFFFF;

/// Cameras crop to other shapes and zoom by cropping: to a third of a side and, in a wide shape, to
/// less than that of the other. What would leave less than this part of a side is damage.
constexpr int kDeepestCrop = 8;

// DNG 1.4, chapter 4: where the picture meant for display lies in the active area.
constexpr quint16 kDefaultCropOrigin = 0xC61F;
constexpr quint16 kDefaultCropSize = 0xC620;

/// Warnings that mean that LibRaw was built without the decoder that the data need.
constexpr unsigned kLacksDecoder = LIBRAW_WARN_NO_JPEGLIB | LIBRAW_WARN_NO_JASPER;

Error errorOf(int status)
{
    switch (status) {
    case LIBRAW_FILE_UNSUPPORTED:
    case LIBRAW_REQUEST_FOR_NONEXISTENT_IMAGE:
    case LIBRAW_NOT_IMPLEMENTED:
        return {ErrorCode::Unsupported,
                QStringLiteral("it is no RAW photo of a kind that can be decoded")};
    case LIBRAW_UNSUFFICIENT_MEMORY:
    case LIBRAW_MEMPOOL_OVERFLOW:
        return {ErrorCode::OutOfSpace, QStringLiteral("there is not enough memory to decode it")};
    case LIBRAW_TOO_BIG:
        return {ErrorCode::Unsupported, QStringLiteral("it says that its picture is too large")};
    case LIBRAW_IO_ERROR:
        return {ErrorCode::Damaged, QStringLiteral("it ends before its picture does")};
    default:
        return {ErrorCode::Damaged,
                QStringLiteral("its picture data are corrupt (%1)")
                    .arg(QString::fromLatin1(libraw_strerror(status)))};
    }
}

void setParameters(libraw_output_params_t& parameters)
{
    parameters.use_camera_wb = 1;
    parameters.no_auto_bright = 1;
    parameters.output_bps = 16;
    parameters.gamm[0] = 1.0;
    parameters.gamm[1] = 1.0;
    parameters.output_color = 1; // sRGB primaries
    parameters.user_flip = 0;
    parameters.user_qual = kInterpolation;
    parameters.adjust_maximum_thr = 0.0F;
    parameters.highlight = 0; // clipped
}

/// LibRaw decodes the strips of compressed Fujifilm files in threads that share its input; one
/// thread keeps the order of its reads, and of its complaints, the same each time.
bool needsOneThread(const libraw_iparams_t& names)
{
    return std::string_view(&names.make[0]).starts_with("Fuji");
}

/// The crop that a DNG file's own tags state, in coordinates of the visible area; empty where none
/// is stated.
QRect cropOfDng(const QByteArray& bytes)
{
    const auto tiff = TiffStructure::parse(bytes);
    const TiffDirectory* const raw = tiff ? tiff->rawDirectory() : nullptr;
    if (raw == nullptr) {
        return {};
    }
    const auto origin = raw->values(kDefaultCropOrigin);
    const auto size = raw->values(kDefaultCropSize);
    if (origin.size() != 2 || size.size() != 2) {
        return {};
    }
    const auto whole = [](double value) {
        return static_cast<int>(std::clamp(value, 0.0, double(PictureLimits::kMaximumSide)));
    };
    return {whole(origin[0]), whole(origin[1]), whole(size[0]), whole(size[1])};
}

} // namespace

RawFile::RawFile(const QByteArray& bytes)
    : m_bytes(bytes)
{
    set_dataerror_handler(&RawFile::onDataError, this);
    // LibRaw reads the buffer and never writes it, whatever its signature says.
    m_openStatus = open_buffer(const_cast<char*>(bytes.constData()), // NOLINT
                               static_cast<std::size_t>(bytes.size()));
    if (imgdata.idata.dng_version != 0) {
        m_cropOfDng = cropOfDng(bytes);
    }
}

void RawFile::onDataError(void* object, const char* /*file*/, int /*offset*/)
{
    static_cast<RawFile*>(object)->m_dataErrors = true;
}

std::optional<Error> RawFile::unpackSensor()
{
    if (m_openStatus != LIBRAW_SUCCESS) {
        return errorOf(m_openStatus);
    }
    const auto& sizes = imgdata.sizes;
    if (!PictureLimits::holds(sizes.raw_width, sizes.raw_height) ||
        !PictureLimits::holds(sizes.width, sizes.height)) {
        return errorOf(LIBRAW_TOO_BIG);
    }
    if (!PictureLimits::isHeldBy(m_bytes.size(), sizes.raw_width, sizes.raw_height)) {
        return errorOf(LIBRAW_IO_ERROR);
    }
    setParameters(imgdata.params);
    const OpenMpThreads threads(needsOneThread(imgdata.idata));
    const int status = unpack();
    if (status != LIBRAW_SUCCESS) {
        return errorOf(status);
    }
    if (m_dataErrors) {
        return Error{ErrorCode::Damaged, QStringLiteral("its picture data are corrupt")};
    }
    if ((imgdata.process_warnings & kLacksDecoder) != 0) {
        return errorOf(LIBRAW_FILE_UNSUPPORTED);
    }
    return imgdata.idata.dng_version != 0 ? LossyTiles::failure(m_bytes) : std::nullopt;
}

Result<Bitmap> RawFile::processed()
{
    const QSize visible(imgdata.sizes.width, imgdata.sizes.height);
    const OpenMpThreads threads(needsOneThread(imgdata.idata));
    const int status = dcraw_process(); // reads some makers' corrections from the file
    recycle_datastream();
    if (status != LIBRAW_SUCCESS) {
        return errorOf(status);
    }
    if (m_dataErrors) {
        return Error{ErrorCode::Damaged, QStringLiteral("its picture data are corrupt")};
    }
    if ((imgdata.process_warnings & kLacksDecoder) != 0 || imgdata.image == nullptr) {
        return errorOf(LIBRAW_FILE_UNSUPPORTED);
    }
    return copyArea(keptArea(visible));
}

SensorColors RawFile::colors() const
{
    // What LibRaw has for cameras whose files do not say it.
    constexpr float kUnknown = -900.0F;
    constexpr float kMostStops = 3.0F;
    const auto& color = imgdata.color;
    SensorColors colors;
    if (imgdata.idata.colors == 3) {
        for (std::size_t i = 0; i < colors.toSrgb.size(); ++i) {
            colors.toSrgb.at(i) = static_cast<double>(color.rgb_cam[i / 3][i % 3]);
        }
    }
    const float stops = color.dng_levels.baseline_exposure;
    if (stops > kUnknown) {
        colors.stops = static_cast<double>(std::clamp(stops, -kMostStops, kMostStops));
    }
    return colors;
}

const libraw_thumbnail_t* RawFile::unpackPreview()
{
    return m_openStatus == LIBRAW_SUCCESS && unpack_thumb() == LIBRAW_SUCCESS ? &imgdata.thumbnail
                                                                              : nullptr;
}

// The crop in coordinates of the visible area; empty where none is stated.
QRect RawFile::statedCrop() const
{
    if (imgdata.idata.dng_version != 0) {
        // A maker note within speaks of the sensor, not of the pixels that were made of it: DNG
        // files come reduced and enlarged.
        return m_cropOfDng;
    }
    const auto& sizes = imgdata.sizes;
    const auto& inset = sizes.raw_inset_crop;
    const bool isStated = inset.cwidth > 0 && inset.cheight > 0 && inset.cleft != kNoOrigin &&
                          inset.ctop != kNoOrigin;
    return isStated ? QRect(inset.cleft - sizes.left_margin,
                            inset.ctop - sizes.top_margin,
                            inset.cwidth,
                            inset.cheight)
                    : QRect();
}

// The part of the picture that is kept; `visible` is the size before processing.
QRect RawFile::keptArea(QSize visible) const
{
    const auto& sizes = imgdata.sizes;
    const QRect all(0, 0, sizes.width, sizes.height);
    // Turned or stretched pictures no longer lie as the crop's coordinates say.
    if (visible != all.size()) {
        return all;
    }
    const QRect crop = statedCrop();
    const bool plausible = all.contains(crop) && crop.width() * kDeepestCrop >= all.width() &&
                           crop.height() * kDeepestCrop >= all.height();
    return plausible ? crop : all;
}

Bitmap RawFile::copyArea(const QRect& area) const
{
    const auto stride = static_cast<std::size_t>(imgdata.sizes.width);
    Bitmap bitmap(area.width(), area.height(), Transfer::Linear);
    const bool grey = imgdata.idata.colors == 1;
    for (int y = 0; y < area.height(); ++y) {
        const auto start = static_cast<std::size_t>(area.top() + y) * stride +
                           static_cast<std::size_t>(area.left());
        const ushort(*pixel)[4] = imgdata.image + start; // NOLINT(*-avoid-c-arrays)
        const auto row = bitmap.row(y);
        for (std::size_t i = 0; i < row.size(); i += 3, ++pixel) {
            row[i] = (*pixel)[0];
            row[i + 1] = (*pixel)[grey ? 0 : 1];
            row[i + 2] = (*pixel)[grey ? 0 : 2];
        }
    }
    return bitmap;
}
