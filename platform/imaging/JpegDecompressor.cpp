#include "JpegDecompressor.h"

#include "ColorProfile.h"
#include "ExifColor.h"

#include <jerror.h>

#include <cstdlib>

namespace
{

/// Scans of a progressive file; each is a pass over the whole picture, so a crafted file could
/// otherwise keep the decoder busy for hours.
constexpr int kMaximumScans = 500;

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr QByteArrayView kExifSignature("Exif\0\0", 6);

/// Whether one of the saved segments is an Exif block that says so.
bool saysAdobeRgb(jpeg_saved_marker_ptr segment)
{
    for (; segment != nullptr; segment = segment->next) {
        const QByteArrayView payload(reinterpret_cast<const char*>(segment->data),
                                     static_cast<qsizetype>(segment->data_length));
        if (segment->marker == kExifMarker && payload.startsWith(kExifSignature)) {
            return ExifColor::isAdobeRgb(payload.sliced(kExifSignature.size()));
        }
    }
    return false;
}

} // namespace

JpegDecompressor::JpegDecompressor(QByteArrayView bytes)
    : m_bytes(bytes)
{
    m_state.err = m_errors.manager();
    m_progress.progress_monitor = onProgress;
}

JpegDecompressor::~JpegDecompressor()
{
    jpeg_destroy_decompress(&m_state);
}

void JpegDecompressor::onProgress(j_common_ptr codec)
{
    const auto* const state = reinterpret_cast<j_decompress_ptr>(codec);
    if (state->input_scan_number > kMaximumScans) {
        codec->err->msg_code = JWRN_BOGUS_PROGRESSION;
        (*codec->err->error_exit)(codec);
    }
}

bool JpegDecompressor::readHeader()
{
    return m_errors.run([this] {
        jpeg_create_decompress(&m_state);
        m_state.progress = &m_progress;
        jpeg_mem_src(&m_state,
                     reinterpret_cast<const unsigned char*>(m_bytes.data()),
                     static_cast<unsigned long>(m_bytes.size()));
        jpeg_save_markers(&m_state, kExifMarker, 0xFFFF);
        jpeg_save_markers(&m_state, JPEG_APP0 + 2, 0xFFFF);
        jpeg_read_header(&m_state, TRUE);
    });
}

QByteArray JpegDecompressor::iccProfile()
{
    JOCTET* data = nullptr;
    unsigned length = 0;
    if (!m_errors.run([&] { jpeg_read_icc_profile(&m_state, &data, &length); }) ||
        data == nullptr) {
        return saysAdobeRgb(m_state.marker_list) ? ColorProfile::adobeRgb() : QByteArray();
    }
    QByteArray profile(reinterpret_cast<const char*>(data), static_cast<qsizetype>(length));
    std::free(data); // NOLINT(*-no-malloc): libjpeg allocates it so
    return profile == ColorProfile::sRgb() ? QByteArray() : profile;
}

bool JpegDecompressor::statesColors() const
{
    for (auto* segment = m_state.marker_list; segment != nullptr; segment = segment->next) {
        const QByteArrayView payload(reinterpret_cast<const char*>(segment->data),
                                     static_cast<qsizetype>(segment->data_length));
        if (payload.startsWith(kExifSignature) || payload.startsWith("ICC_PROFILE")) {
            return true;
        }
    }
    return false;
}

void JpegDecompressor::reduceBy(int denominator)
{
    m_state.scale_num = 1;
    m_state.scale_denom = static_cast<unsigned>(denominator);
}

bool JpegDecompressor::start()
{
    return m_errors.run([this] {
        switch (m_state.jpeg_color_space) {
        case JCS_GRAYSCALE:
            m_state.out_color_space = JCS_GRAYSCALE;
            break;
        case JCS_CMYK:
        case JCS_YCCK:
            m_state.out_color_space = JCS_CMYK;
            break;
        default:
            m_state.out_color_space = JCS_RGB;
        }
        m_state.dct_method = JDCT_ISLOW;
        jpeg_start_decompress(&m_state);
    });
}

bool JpegDecompressor::readRow(JSAMPLE* row)
{
    JSAMPLE* rows[] = {row}; // NOLINT(*-avoid-c-arrays): what libjpeg takes
    return m_errors.run([&] { jpeg_read_scanlines(&m_state, &rows[0], 1); });
}

bool JpegDecompressor::finish()
{
    return m_errors.run([this] { jpeg_finish_decompress(&m_state); });
}
