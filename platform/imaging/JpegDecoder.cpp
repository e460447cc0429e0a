#include "JpegDecoder.h"

#include "ColorProfile.h"
#include "ExifColor.h"
#include "JpegErrors.h"
#include "PictureLimits.h"
#include "SrgbTransfer.h"

#include <jerror.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <new>

namespace
{

/// Scans of a progressive file; each is a pass over the whole picture, so a crafted file could
/// otherwise keep the decoder busy for hours.
constexpr int kMaximumScans = 500;

constexpr int kExifMarker = JPEG_APP0 + 1;

/// libjpeg's decompressor and everything that must outlive a longjmp out of it.
class Decompressor final
{
public:
    explicit Decompressor(QByteArrayView bytes);
    ~Decompressor();
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;

    [[nodiscard]] bool readHeader();
    /// The embedded one, or Adobe's where the Exif block says so; empty for sRGB.
    [[nodiscard]] QByteArray iccProfile();
    [[nodiscard]] bool start();
    [[nodiscard]] bool readRow(JSAMPLE* row);
    [[nodiscard]] bool finish();

    [[nodiscard]] const jpeg_decompress_struct& state() const { return m_state; }

    [[nodiscard]] const JpegErrors& errors() const { return m_errors; }

private:
    static void onProgress(j_common_ptr codec);

    JpegErrors m_errors;
    jpeg_decompress_struct m_state{};
    jpeg_progress_mgr m_progress{};
    QByteArrayView m_bytes;
};

Decompressor::Decompressor(QByteArrayView bytes)
    : m_bytes(bytes)
{
    m_state.err = m_errors.manager();
    m_progress.progress_monitor = onProgress;
}

Decompressor::~Decompressor()
{
    jpeg_destroy_decompress(&m_state);
}

void Decompressor::onProgress(j_common_ptr codec)
{
    const auto* const state = reinterpret_cast<j_decompress_ptr>(codec);
    if (state->input_scan_number > kMaximumScans) {
        codec->err->msg_code = JWRN_BOGUS_PROGRESSION;
        (*codec->err->error_exit)(codec);
    }
}

bool Decompressor::readHeader()
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

/// Whether one of the saved segments is an Exif block that says so.
bool saysAdobeRgb(jpeg_saved_marker_ptr segment)
{
    for (; segment != nullptr; segment = segment->next) {
        const QByteArrayView payload(reinterpret_cast<const char*>(segment->data),
                                     static_cast<qsizetype>(segment->data_length));
        const QByteArrayView signature("Exif\0\0", 6);
        if (segment->marker == kExifMarker && payload.startsWith(signature)) {
            return ExifColor::isAdobeRgb(payload.sliced(signature.size()));
        }
    }
    return false;
}

QByteArray Decompressor::iccProfile()
{
    JOCTET* data = nullptr;
    unsigned length = 0;
    if (!m_errors.run([&] { jpeg_read_icc_profile(&m_state, &data, &length); }) ||
        data == nullptr) {
        return saysAdobeRgb(m_state.marker_list) ? ColorProfile::adobeRgb() : QByteArray();
    }
    QByteArray profile(reinterpret_cast<const char*>(data), static_cast<qsizetype>(length));
    std::free(data); // NOLINT(*-no-malloc): libjpeg allocates it so
    return profile;
}

bool Decompressor::start()
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

bool Decompressor::readRow(JSAMPLE* row)
{
    JSAMPLE* rows[] = {row}; // NOLINT(*-avoid-c-arrays): what libjpeg takes
    return m_errors.run([&] { jpeg_read_scanlines(&m_state, &rows[0], 1); });
}

bool Decompressor::finish()
{
    return m_errors.run([this] { jpeg_finish_decompress(&m_state); });
}

/// Turns libjpeg's rows into sRGB rows of 16 bits.
class RowConversion final
{
public:
    RowConversion(const jpeg_decompress_struct& state, const QByteArray& icc)
        : m_channels(static_cast<std::size_t>(state.output_components))
        , m_inverted(state.saw_Adobe_marker != 0)
        , m_widened(static_cast<std::size_t>(state.output_width) * m_channels)
    {
        if (!icc.isEmpty()) {
            m_profile = ColorProfile::ToSrgb::create(icc, layout());
        }
    }

    void convert(std::span<const JSAMPLE> from, std::span<quint16> into)
    {
        if (m_profile) {
            for (std::size_t i = 0; i < m_widened.size(); ++i) {
                m_widened[i] = widened(from[i]);
            }
            m_profile->convert(m_widened, into);
        } else if (m_channels == 3) {
            for (std::size_t i = 0; i < into.size(); ++i) {
                into[i] = widened(from[i]);
            }
        } else if (m_channels == 1) {
            for (std::size_t i = 0; i < into.size(); ++i) {
                into[i] = widened(from[i / 3]);
            }
        } else {
            convertInks(from, into);
        }
    }

private:
    [[nodiscard]] ColorProfile::Layout layout() const
    {
        if (m_channels == 1) {
            return ColorProfile::Layout::Grey16;
        }
        if (m_channels == 4) {
            return m_inverted ? ColorProfile::Layout::InvertedCmyk16 : ColorProfile::Layout::Cmyk16;
        }
        return ColorProfile::Layout::Rgb16;
    }

    /// Without a profile: what an ideal ink lets through times what black lets through.
    void convertInks(std::span<const JSAMPLE> from, std::span<quint16> into) const
    {
        const auto paper = [this](JSAMPLE ink) {
            return m_inverted ? static_cast<quint32>(ink) : 255U - ink;
        };
        for (std::size_t i = 0; i < into.size(); ++i) {
            const std::size_t pixel = i / 3 * 4;
            const quint32 product = paper(from[pixel + i % 3]) * paper(from[pixel + 3]);
            into[i] = static_cast<quint16>((product * 65535U + 32512U) / 65025U);
        }
    }

    std::size_t m_channels;
    bool m_inverted;
    std::vector<quint16> m_widened;
    std::optional<ColorProfile::ToSrgb> m_profile;
};

Error errorOf(const JpegErrors& errors)
{
    if (errors.outOfMemory()) {
        return {ErrorCode::OutOfSpace, QStringLiteral("there is not enough memory to decode it")};
    }
    return {ErrorCode::Damaged,
            QStringLiteral("its picture does not decode (%1)").arg(errors.text())};
}

Result<Bitmap> decodeRows(Decompressor& source)
{
    const QByteArray icc = source.iccProfile();
    if (!source.start()) {
        return errorOf(source.errors());
    }
    const auto& state = source.state();
    const int width = static_cast<int>(state.output_width);
    const int height = static_cast<int>(state.output_height);
    Bitmap bitmap(width, height, Transfer::Srgb);
    RowConversion conversion(state, icc);
    std::vector<JSAMPLE> row(static_cast<std::size_t>(state.output_width) *
                             static_cast<std::size_t>(state.output_components));
    for (int y = 0; y < height; ++y) {
        // The first complaint decides: what follows it would be invented.
        if (!source.readRow(row.data()) || source.errors().damaged()) {
            return errorOf(source.errors());
        }
        conversion.convert(row, bitmap.row(y));
    }
    if (!source.finish() || source.errors().damaged()) {
        return errorOf(source.errors());
    }
    return bitmap;
}

} // namespace

Result<Bitmap> JpegDecoder::decode(QByteArrayView bytes)
{
    try {
        Decompressor source(bytes);
        if (!source.readHeader()) {
            return errorOf(source.errors());
        }
        if (!PictureLimits::holds(source.state().image_width, source.state().image_height)) {
            return Error{ErrorCode::Unsupported,
                         QStringLiteral("it says it has %1 by %2 pixels, which is too large")
                             .arg(source.state().image_width)
                             .arg(source.state().image_height)};
        }
        return decodeRows(source);
    } catch (const std::bad_alloc&) {
        return Error{ErrorCode::OutOfSpace,
                     QStringLiteral("there is not enough memory to decode it")};
    }
}

std::optional<QSize> JpegDecoder::size(QByteArrayView bytes)
{
    Decompressor source(bytes);
    if (!source.readHeader()) {
        return std::nullopt;
    }
    return QSize(static_cast<int>(source.state().image_width),
                 static_cast<int>(source.state().image_height));
}

double JpegDecoder::quantisationError(QByteArrayView bytes)
{
    Decompressor source(bytes);
    if (!source.readHeader() || source.state().num_components < 1) {
        return 0.0;
    }
    const int table = source.state().comp_info[0].quant_tbl_no;
    if (table < 0 || table >= NUM_QUANT_TBLS || source.state().quant_tbl_ptrs[table] == nullptr) {
        return 0.0;
    }
    double squares = 0.0;
    for (const UINT16 step : source.state().quant_tbl_ptrs[table]->quantval) {
        squares += step * step / 4.0;
    }
    return std::sqrt(squares / DCTSIZE2);
}
