#pragma once

#include "JpegErrors.h"

#include <QByteArray>
#include <QByteArrayView>

/// libjpeg's decompressor and everything that must outlive a longjmp out of it. Each step gives
/// false where libjpeg gave up. The bytes must outlive it. Any one thread.
class JpegDecompressor final
{
public:
    explicit JpegDecompressor(QByteArrayView bytes);
    ~JpegDecompressor();
    JpegDecompressor(const JpegDecompressor&) = delete;
    JpegDecompressor& operator=(const JpegDecompressor&) = delete;

    [[nodiscard]] bool readHeader();
    /// The embedded one, or Adobe's where the Exif block says so; empty for sRGB.
    [[nodiscard]] QByteArray iccProfile();
    /// Whether an Exif block or a profile tells of its colours, which are else only taken for sRGB.
    [[nodiscard]] bool statesColors() const;
    /// Rows of pixels averaged over squares of `denominator` (1, 2, 4 or 8) a side: less work, all
    /// data are read nevertheless. After the header.
    void reduceBy(int denominator);
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
