#include "JpegEncoder.h"

#include "BitmapImage.h"
#include "JpegErrors.h"
#include "PictureLimits.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>

namespace
{

/// libjpeg's compressor and the file it grows, which must outlive a longjmp.
class Compressor final
{
public:
    Compressor();
    ~Compressor();
    Compressor(const Compressor&) = delete;
    Compressor& operator=(const Compressor&) = delete;

    [[nodiscard]] bool start(QSize size, const JpegEncoder::Options& options);
    [[nodiscard]] bool writeSegment(const JpegSegment& segment);
    [[nodiscard]] bool writeProfile(const QByteArray& icc);
    [[nodiscard]] bool writeRow(const JSAMPLE* row);
    [[nodiscard]] bool finish();

    [[nodiscard]] QByteArray file() const;
    [[nodiscard]] Error error() const;

private:
    JpegErrors m_errors;
    jpeg_compress_struct m_state{};
    unsigned char* m_memory{nullptr};
    unsigned long m_length{0};
};

Compressor::Compressor()
{
    m_state.err = m_errors.manager();
}

Compressor::~Compressor()
{
    jpeg_destroy_compress(&m_state);
    std::free(m_memory); // NOLINT(*-no-malloc): libjpeg allocates it so
}

bool Compressor::start(QSize size, const JpegEncoder::Options& options)
{
    const bool jfif = options.segments.isEmpty();
    return m_errors.run([&] {
        jpeg_create_compress(&m_state);
        jpeg_mem_dest(&m_state, &m_memory, &m_length);
        m_state.image_width = static_cast<JDIMENSION>(size.width());
        m_state.image_height = static_cast<JDIMENSION>(size.height());
        m_state.input_components = 3;
        m_state.in_color_space = JCS_RGB;
        jpeg_set_defaults(&m_state);
        jpeg_set_quality(&m_state, options.quality, TRUE);
        // libjpeg's default is 2 x 2 lightness samples for each of the colour ones.
        const int factor = options.chroma == JpegEncoder::Chroma::Full ? 1 : 2;
        m_state.comp_info[0].h_samp_factor = factor;
        m_state.comp_info[0].v_samp_factor = factor;
        m_state.dct_method = JDCT_ISLOW;
        m_state.optimize_coding = TRUE;
        m_state.write_JFIF_header = jfif ? TRUE : FALSE;
        if (options.scans == JpegEncoder::Scans::Progressive) {
            jpeg_simple_progression(&m_state);
        }
        jpeg_start_compress(&m_state, TRUE);
    });
}

bool Compressor::writeSegment(const JpegSegment& segment)
{
    return m_errors.run([&] {
        jpeg_write_marker(&m_state,
                          segment.marker,
                          reinterpret_cast<const JOCTET*>(segment.payload.constData()),
                          static_cast<unsigned>(segment.payload.size()));
    });
}

bool Compressor::writeProfile(const QByteArray& icc)
{
    return m_errors.run([&] {
        jpeg_write_icc_profile(&m_state,
                               reinterpret_cast<const JOCTET*>(icc.constData()),
                               static_cast<unsigned>(icc.size()));
    });
}

bool Compressor::writeRow(const JSAMPLE* row)
{
    // libjpeg reads the row and never writes it, whatever its signature says.
    JSAMPLE* rows[] = {const_cast<JSAMPLE*>(row)}; // NOLINT
    return m_errors.run([&] { jpeg_write_scanlines(&m_state, &rows[0], 1); });
}

bool Compressor::finish()
{
    return m_errors.run([this] { jpeg_finish_compress(&m_state); });
}

QByteArray Compressor::file() const
{
    return {reinterpret_cast<const char*>(m_memory), static_cast<qsizetype>(m_length)};
}

Error Compressor::error() const
{
    if (m_errors.outOfMemory()) {
        return {ErrorCode::OutOfSpace, QStringLiteral("memory is too short to encode the picture")};
    }
    return {ErrorCode::Internal,
            QStringLiteral("the picture could not be encoded: %1").arg(m_errors.text())};
}

bool writePicture(Compressor& compressor, const QImage& picture)
{
    for (int y = 0; y < picture.height(); ++y) {
        if (!compressor.writeRow(picture.constScanLine(y))) {
            return false;
        }
    }
    return compressor.finish();
}

Result<QByteArray> encodeChecked(const QImage& picture, const JpegEncoder::Options& options)
{
    Compressor compressor;
    if (!compressor.start(picture.size(), options)) {
        return compressor.error();
    }
    for (const JpegSegment& segment : options.segments) {
        if (!compressor.writeSegment(segment)) {
            return compressor.error();
        }
    }
    if (!options.iccProfile.isEmpty() && !compressor.writeProfile(options.iccProfile)) {
        return compressor.error();
    }
    if (!writePicture(compressor, picture)) {
        return compressor.error();
    }
    return compressor.file();
}

} // namespace

int JpegEncoder::libjpegQuality(double quality)
{
    // The comparison is false for what is no number.
    if (!(quality > 0.0)) {
        return 1;
    }
    return std::clamp(static_cast<int>(std::lround(std::min(quality, 1.0) * 100.0)), 1, 100);
}

Result<QByteArray> JpegEncoder::encode(const QImage& picture, const Options& options)
{
    if (!PictureLimits::holds(picture.width(), picture.height())) {
        return Error{ErrorCode::Internal,
                     QStringLiteral("a picture of %1 x %2 pixels cannot be a JPEG file")
                         .arg(picture.width())
                         .arg(picture.height())};
    }
    const bool tooLong = std::ranges::any_of(options.segments, [](const JpegSegment& segment) {
        return segment.payload.size() > JpegSegment::kLargestPayload;
    });
    if (tooLong) {
        return Error{ErrorCode::Internal,
                     QStringLiteral("the metadata are too large for a JPEG segment")};
    }
    Q_ASSERT(picture.format() == QImage::Format_RGB888);
    try {
        return encodeChecked(picture, options);
    } catch (const std::bad_alloc&) {
        return Error{ErrorCode::OutOfSpace,
                     QStringLiteral("memory is too short to encode the picture")};
    }
}

Result<QByteArray> JpegEncoder::encode(const Bitmap& bitmap, const Options& options)
{
    return encode(BitmapImage::toImage(bitmap), options);
}
