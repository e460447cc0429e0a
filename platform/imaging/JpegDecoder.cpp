#include "JpegDecoder.h"

#include "ColorProfile.h"
#include "JpegDecompressor.h"
#include "PictureLimits.h"
#include "SrgbTransfer.h"

#include <QColorSpace>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <new>
#include <span>
#include <utility>
#include <vector>

namespace
{

/// Turns libjpeg's rows into sRGB rows of 16 bits.
class JpegRowConversion final
{
public:
    JpegRowConversion(const jpeg_decompress_struct& state, const QByteArray& icc)
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

Error noMemoryToDecode()
{
    return {ErrorCode::OutOfSpace, QStringLiteral("there is not enough memory to decode it")};
}

Error errorOf(const JpegErrors& errors)
{
    if (errors.outOfMemory()) {
        return noMemoryToDecode();
    }
    return {ErrorCode::Damaged,
            QStringLiteral("its picture does not decode (%1)").arg(errors.text())};
}

/// Decodes to the last row, each given to `takeRow` with its number.
template <typename TakeRow>
std::optional<Error> decodeRows(JpegDecompressor& source, const TakeRow& takeRow)
{
    const auto& state = source.state();
    std::vector<JSAMPLE> row(static_cast<std::size_t>(state.output_width) *
                             static_cast<std::size_t>(state.output_components));
    for (int y = 0; y < static_cast<int>(state.output_height); ++y) {
        // The first complaint decides: what follows it would be invented.
        if (!source.readRow(row.data()) || source.errors().damaged()) {
            return errorOf(source.errors());
        }
        takeRow(row, y);
    }
    return source.finish() && !source.errors().damaged() ? std::nullopt
                                                         : std::optional(errorOf(source.errors()));
}

Result<Bitmap> decodedBitmap(JpegDecompressor& source, const QByteArray& icc)
{
    const auto& state = source.state();
    Bitmap bitmap(static_cast<int>(state.output_width),
                  static_cast<int>(state.output_height),
                  Transfer::Srgb);
    JpegRowConversion conversion(state, icc);
    const auto failure = decodeRows(source, [&](std::span<const JSAMPLE> row, int y) {
        conversion.convert(row, bitmap.row(y));
    });
    return failure ? Result<Bitmap>(*failure) : Result<Bitmap>(std::move(bitmap));
}

Result<QImage> decodedImage(JpegDecompressor& source, const QByteArray& icc)
{
    const auto& state = source.state();
    QImage image(static_cast<int>(state.output_width),
                 static_cast<int>(state.output_height),
                 QImage::Format_RGB888);
    if (image.isNull()) {
        return noMemoryToDecode();
    }
    if (source.statesColors()) {
        image.setColorSpace(QColorSpace::SRgb);
    }
    const bool isSrgb = state.output_components == 3 && icc.isEmpty();
    JpegRowConversion conversion(state, icc);
    std::vector<quint16> wide(std::size_t{3} * state.output_width);
    const auto failure = decodeRows(source, [&](std::span<const JSAMPLE> row, int y) {
        uchar* const into = image.scanLine(y);
        if (isSrgb) {
            std::ranges::copy(row, into);
        } else {
            conversion.convert(row, wide);
            std::ranges::transform(wide, into, roundedByte);
        }
    });
    return failure ? Result<QImage>(*failure) : Result<QImage>(std::move(image));
}

/// Reads the header, averages pixels as wanted, and decodes by `decode`.
template <typename Picture, typename Decode>
Result<Picture> decodedBy(QByteArrayView bytes, int denominator, const Decode& decode)
{
    try {
        JpegDecompressor source(bytes);
        if (!source.readHeader()) {
            return errorOf(source.errors());
        }
        const auto& state = source.state();
        if (!PictureLimits::holds(state.image_width, state.image_height)) {
            return Error{ErrorCode::Unsupported,
                         QStringLiteral("it says it has %1 by %2 pixels, which is too large")
                             .arg(state.image_width)
                             .arg(state.image_height)};
        }
        if (!PictureLimits::isHeldBy(bytes.size(), state.image_width, state.image_height)) {
            return Error{ErrorCode::Damaged,
                         QStringLiteral("it says it has %1 by %2 pixels and is too short for them")
                             .arg(state.image_width)
                             .arg(state.image_height)};
        }
        source.reduceBy(denominator);
        const QByteArray icc = source.iccProfile();
        if (!source.start()) {
            return errorOf(source.errors());
        }
        return decode(source, icc);
    } catch (const std::bad_alloc&) {
        return noMemoryToDecode();
    }
}

} // namespace

Result<Bitmap> JpegDecoder::decode(QByteArrayView bytes)
{
    return decodedBy<Bitmap>(bytes, 1, decodedBitmap);
}

Result<QImage> JpegDecoder::decodeReduced(QByteArrayView bytes, int denominator)
{
    return decodedBy<QImage>(bytes, denominator, decodedImage);
}

int JpegDecoder::denominatorFor(QSize size, int longestSide)
{
    int denominator = 8;
    while (denominator > 1 && std::max(size.width(), size.height()) < longestSide * denominator) {
        denominator /= 2;
    }
    return denominator;
}

std::optional<QSize> JpegDecoder::size(QByteArrayView bytes)
{
    JpegDecompressor source(bytes);
    if (!source.readHeader()) {
        return std::nullopt;
    }
    return QSize(static_cast<int>(source.state().image_width),
                 static_cast<int>(source.state().image_height));
}

double JpegDecoder::meanError(QByteArrayView bytes)
{
    JpegDecompressor source(bytes);
    if (!source.readHeader() || source.state().num_components < 1) {
        return 0.0;
    }
    const int table = source.state().comp_info[0].quant_tbl_no;
    if (table < 0 || table >= NUM_QUANT_TBLS || source.state().quant_tbl_ptrs[table] == nullptr) {
        return 0.0;
    }
    return source.state().quant_tbl_ptrs[table]->quantval[0] / 2.0 / DCTSIZE;
}
