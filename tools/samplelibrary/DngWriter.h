#pragma once

#include "Shot.h"
#include "TiffTags.h"

#include <QByteArray>
#include <QSize>

#include <vector>

class Exposure;

/// Writes a RAW photo as a camera would: Digital Negative (DNG 1.4) with an embedded JPEG preview,
/// and the values of the sensor in tiles of lossless JPEG. Around the picture lie a margin of lit
/// pixels and a masked border, as Sensor has them. Any one thread at a time.
class DngWriter final
{
public:
    /// `picture`: the default crop, even sides.
    DngWriter(QSize picture, ShotFacts facts);

    /// Sets the value of a pixel of the picture (not of its borders).
    void setValue(int x, int y, quint16 value)
    {
        m_values[index(x + pictureLeft(), y + pictureTop())] = value;
    }

    /// The file, once all values are set: margins continue the picture, masked pixels hold what
    /// `exposure` makes of darkness. `preview`: a JPEG of the size `previewSize` that lies as the
    /// sensor does.
    [[nodiscard]] QByteArray
    file(const QByteArray& preview, QSize previewSize, const Exposure& exposure);

private:
    [[nodiscard]] static int pictureLeft();
    [[nodiscard]] static int pictureTop();

    [[nodiscard]] size_t index(int x, int y) const
    {
        return static_cast<size_t>(y) * static_cast<size_t>(m_sensor.width()) +
               static_cast<size_t>(x);
    }

    void fillBorders(const Exposure& exposure);
    void copyTile(int left, int top, std::vector<quint16>& tile) const;
    [[nodiscard]] QList<QByteArray> packTiles() const;
    [[nodiscard]] TiffTags rawDirectory(const QList<QByteArray>& tiles, quint32 offset) const;
    [[nodiscard]] TiffTags
    mainDirectory(const QByteArray& preview, QSize previewSize, quint32 offset) const;

    QSize m_picture;
    QSize m_sensor;
    ShotFacts m_facts;
    std::vector<quint16> m_values;
};
