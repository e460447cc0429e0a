#pragma once

#include "BayerMosaic.h"
#include "Bitmap.h"
#include "RenditionFit.h"
#include "Result.h"
#include "SensorValues.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QRect>

#include <libraw/libraw.h>

#include <array>
#include <cstddef>
#include <optional>

/// LibRaw over a file in memory, which must live until mosaic() gave one, or processed() or
/// unpackPreview() are done. Half a megabyte: not for a stack. Any one thread at a time.
class RawFile final : private LibRaw
{
public:
    explicit RawFile(const QByteArray& bytes);

    /// Reads the sensor's data. Errors: Damaged (also for data that LibRaw or LossyTiles
    /// complains of), Unsupported, OutOfSpace; they name no file.
    [[nodiscard]] std::optional<Error> unpackSensor();

    /// The sensor's data in the area that is the picture. After unpackSensor() and before anything
    /// is made of them; nothing where they are of a kind that cannot be judged. They live as long
    /// as this.
    [[nodiscard]] std::optional<SensorValues> sensorValues() const;

    /// The sensor's data where they lie in plain cells of red, green and blue, as the camera's
    /// white balance or, unknown, daylight has them; nothing where they are any other. They live as
    /// long as this, which is done with the file then.
    [[nodiscard]] std::optional<BayerMosaic> mosaic();

    /// The picture as LibRaw makes it of unpacked data of any kind: Transfer::Linear, camera white
    /// balance. Reads more of the file, and is done with it. Errors as above.
    [[nodiscard]] Result<Bitmap> processed();

    [[nodiscard]] SensorColors colors() const;

    /// The preview that LibRaw finds the largest, as stored in the file; nothing where there is
    /// none. Lives as long as this.
    [[nodiscard]] const libraw_thumbnail_t* unpackPreview();

private:
    /// LibRaw's numbers of the filters of the first two rows' first two columns.
    using Filters = std::array<std::size_t, 4>;

    static void onDataError(void* object, const char* file, int offset);
    [[nodiscard]] bool isVisibleAreaHeld(int valuesOfPixel) const;
    [[nodiscard]] QRect statedCrop() const;
    [[nodiscard]] QRect keptArea(QSize visible) const;
    [[nodiscard]] std::optional<std::array<float, 4>> multipliers() const;
    [[nodiscard]] bool
    setLight(BayerMosaic& mosaic, const Filters& filters, const std::array<float, 4>& gains) const;
    [[nodiscard]] Bitmap copyArea(const QRect& area) const;

    QByteArrayView m_bytes;
    QRect m_cropOfDng; ///< as cropOfDng() finds it
    int m_openStatus{0};
    bool m_dataErrors{false};
};
