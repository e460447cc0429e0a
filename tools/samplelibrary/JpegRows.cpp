#include "JpegRows.h"

#include <jpeglib.h>

#include <csetjmp>
#include <cstdio>
#include <cstdlib>

struct JpegRows::Encoder {
    jpeg_error_mgr errors{};
    jpeg_compress_struct compress{};
    std::jmp_buf escape{};
    unsigned char* bytes{nullptr};
    unsigned long length{0};
    bool failed{false};
};

namespace
{

/// Runs `call` on the encoder. The encoder's error routine must not return, so it jumps back to
/// here; from then on the encoder is left alone. `call` holds nothing that wants destruction.
template <typename Encoder, typename Call>
void guarded(Encoder& encoder, Call call)
{
    if (encoder.failed) {
        return;
    }
    if (setjmp(encoder.escape) != 0) {
        encoder.failed = true;
        return;
    }
    call(encoder.compress);
}

} // namespace

JpegRows::JpegRows(QSize size, int quality)
    : m_encoder(std::make_unique<Encoder>())
{
    Encoder& encoder = *m_encoder;
    encoder.compress.err = jpeg_std_error(&encoder.errors);
    encoder.compress.client_data = &encoder;
    encoder.errors.error_exit = [](j_common_ptr common) {
        std::longjmp(static_cast<Encoder*>(common->client_data)->escape, 1);
    };
    encoder.errors.output_message = [](j_common_ptr) {};
    guarded(encoder, [&encoder, size, quality](jpeg_compress_struct& compress) {
        jpeg_create_compress(&compress);
        compress.client_data = &encoder;
        jpeg_mem_dest(&compress, &encoder.bytes, &encoder.length);
        compress.image_width = static_cast<JDIMENSION>(size.width());
        compress.image_height = static_cast<JDIMENSION>(size.height());
        compress.input_components = 3;
        compress.in_color_space = JCS_RGB;
        jpeg_set_defaults(&compress);
        jpeg_set_quality(&compress, quality, TRUE);
        jpeg_start_compress(&compress, TRUE);
    });
}

JpegRows::~JpegRows()
{
    jpeg_destroy_compress(&m_encoder->compress);
    std::free(m_encoder->bytes); // the encoder's memory destination allocates with malloc
}

void JpegRows::addApp1(const QByteArray& body)
{
    if (body.isEmpty()) {
        return;
    }
    guarded(*m_encoder, [&body](jpeg_compress_struct& compress) {
        jpeg_write_marker(&compress,
                          JPEG_APP0 + 1,
                          reinterpret_cast<const JOCTET*>(body.constData()),
                          static_cast<unsigned int>(body.size()));
    });
}

void JpegRows::addRow(std::span<const quint8> row)
{
    guarded(*m_encoder, [row](jpeg_compress_struct& compress) {
        // The interface lacks a const; the encoder only reads.
        JSAMPROW pointer = const_cast<JSAMPROW>(row.data());
        jpeg_write_scanlines(&compress, &pointer, 1);
    });
}

Result<QByteArray> JpegRows::finish()
{
    guarded(*m_encoder, [](jpeg_compress_struct& compress) { jpeg_finish_compress(&compress); });
    if (m_encoder->failed) {
        return Error{ErrorCode::OutOfSpace, QStringLiteral("JPEG encoder")};
    }
    return QByteArray(reinterpret_cast<const char*>(m_encoder->bytes),
                      static_cast<qsizetype>(m_encoder->length));
}
