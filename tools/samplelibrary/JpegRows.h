#pragma once

#include "Result.h"

#include <QByteArray>
#include <QSize>

#include <memory>
#include <span>

/// Encodes a JPEG picture row by row, so that no more than the encoded bytes is held in memory.
/// Baseline, 4:2:0, sRGB. Any one thread at a time.
class JpegRows final
{
public:
    /// `quality` 1 to 100, sides 1 to 65500 pixels.
    JpegRows(QSize size, int quality);
    ~JpegRows();
    JpegRows(const JpegRows&) = delete;
    JpegRows& operator=(const JpegRows&) = delete;

    /// The body of an APP1 segment; before the first row. An empty one is left out.
    void addApp1(const QByteArray& body);
    /// `row`: width * 3 values, R, G, B, sRGB encoded. From the top.
    void addRow(std::span<const quint8> row);
    /// The file, once all rows are in. Errors: OutOfSpace (what the encoder lacks is memory).
    [[nodiscard]] Result<QByteArray> finish();

private:
    struct Encoder;
    std::unique_ptr<Encoder> m_encoder;
};
