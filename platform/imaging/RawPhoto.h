#pragma once

#include "BayerRenderer.h"
#include "Bitmap.h"
#include "Preview.h"
#include "RenditionFit.h"
#include "Result.h"

#include <QByteArray>
#include <QImage>

#include <memory>
#include <optional>
#include <vector>

class RawFile;

/// What the sensor's data show of damage in the picture. A value type.
struct SensorFaults {
    bool hasGaps{false};        ///< a large part is gone (SensorGaps)
    std::vector<double> breaks; ///< where rows break off, 0..1 of the height (SensorBreaks)
};

/// A RAW photo whose sensor data were read with LibRaw: camera white balance, highlights clipped,
/// as the sensor's rows lie. The size is the camera's own crop where the metadata states where it
/// lies, else LibRaw's visible area. Sensors with plain cells of red, green and blue are rendered
/// by BayerRenderer, any other data by LibRaw. Any one thread at a time; deterministic.
class RawPhoto final
{
public:
    /// Data that LibRaw complains of are an error. Errors: Damaged, Unsupported, OutOfSpace; they
    /// name no file.
    [[nodiscard]] static Result<RawPhoto> open(const QByteArray& bytes);

    /// The preview that LibRaw finds the largest, as it lies in the file, averaged down where at
    /// least `longestSide` pixels remain on its longest side; nothing where there is none that
    /// decodes.
    [[nodiscard]] static std::optional<Preview> preview(const QByteArray& bytes, int longestSide);

    [[nodiscard]] QSize size() const;

    [[nodiscard]] const SensorFaults& faults() const { return m_faults; }

    [[nodiscard]] const SensorColors& colors() const { return m_colors; }

    /// Transfer::Linear, at full size.
    [[nodiscard]] Bitmap linear() const;

    /// Some hundred rows of that, spread over the picture.
    [[nodiscard]] Bitmap someRows() const;

    /// Transfer::Linear, averaged down (ReducedPicture), in the colours that colors() tells.
    [[nodiscard]] const Bitmap& reduced() const { return m_reduced; }

    /// The picture, sRGB encoded, Format_RGB888. Where the size is at most half in both directions
    /// it is made of the cells of the sensor. The sensor's data are given up as soon as they are
    /// not needed. Errors: OutOfSpace, Internal.
    [[nodiscard]] Result<QImage> rendered(const Rendition& rendition, QSize size) &&;

private:
    [[nodiscard]] static Result<RawPhoto> made(std::shared_ptr<RawFile> file);
    [[nodiscard]] Bitmap light(const Rendition& rendition, bool halved) &&;

    RawPhoto(std::shared_ptr<RawFile> file,
             const BayerRenderer& renderer,
             const SensorColors& colors);
    RawPhoto(Bitmap linear, const SensorColors& colors);

    // The first two are one kind of photo, the third the other.
    std::shared_ptr<RawFile> m_file; ///< holds what the renderer looks at
    std::optional<BayerRenderer> m_renderer;
    Bitmap m_linear;
    Bitmap m_reduced;
    SensorColors m_colors;
    SensorFaults m_faults;
};
