#pragma once

#include "Bitmap.h"
#include "ToneCurve.h"

#include <QImage>

#include <array>
#include <optional>
#include <vector>

/// Nine numbers row by row: what R, G and B become of R, G and B.
using ColorMatrix = std::array<double, 9>;

inline constexpr ColorMatrix kIdentityMatrix{1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0};

/// `left` after `right`.
[[nodiscard]] ColorMatrix multiplied(const ColorMatrix& left, const ColorMatrix& right);

/// The inverse; the identity where there is none.
[[nodiscard]] ColorMatrix inverted(const ColorMatrix& matrix);

/// The light of a picture, Transfer::Linear, after a matrix, clipped.
[[nodiscard]] Bitmap transformed(Bitmap light, const ColorMatrix& matrix);

/// How the light that a sensor saw becomes a picture: a matrix in linear light, then one tone curve
/// for all channels. Immutable; any thread.
class Rendition final
{
public:
    /// Between the curves that were fitted to the previews of several makers' cameras: a little
    /// lighter in the middle, softer towards both ends.
    static constexpr ToneCurve::Slopes kCommonSlopes{0.56, 1.46, 1.58, 1.15, 0.63, 0.42};
    /// How much lighter than the sensor's own scale cameras render.
    static constexpr double kCommonStops = 0.15;

    /// A matrix and the factor of light after it.
    struct Parts {
        ColorMatrix matrix{};
        double gain{1.0};
    };

    /// The same colours by a matrix that keeps clipped light white: full light stays full in every
    /// channel, and just so in the least.
    [[nodiscard]] static Parts scaled(ColorMatrix matrix, double stops);

    /// Light is multiplied by 2 to the power of `stops`, clipped, and sRGB encoded on its way into
    /// the curve.
    Rendition(const ColorMatrix& matrix, double stops, const ToneCurve& curve);

    /// The same for the light of a sensor that gets these gains before anything else, in place of
    /// the camera's.
    [[nodiscard]] Rendition with(const std::array<double, 3>& balance) const;

    /// The sensor's gains; nothing where they are the camera's.
    [[nodiscard]] const std::optional<std::array<double, 3>>& balance() const { return m_balance; }

    /// What is used where nothing tells how the photo should look: colours as they are and the
    /// curve of a common camera, `stops` brighter than that.
    [[nodiscard]] static Rendition neutral(double stops = 0.0);

    /// Of linear R, G, B. Clipped light stays without colour: no row of it sums up to less than 1.
    [[nodiscard]] const ColorMatrix& matrix() const { return m_matrix; }

    /// Linear light 0..65535 after the matrix to the sRGB encoded value 0..65535.
    [[nodiscard]] quint16 tone(quint16 light) const { return m_tones[light]; }

    /// All tones by light, rounded to 8 bits.
    [[nodiscard]] std::vector<quint8> byteTones() const;

    /// The picture of light that the matrix was applied to: sRGB encoded, Format_RGB888. Null where
    /// memory is too short.
    [[nodiscard]] QImage toned(const Bitmap& light) const;

private:
    ColorMatrix m_matrix{};
    std::optional<std::array<double, 3>> m_balance;
    std::vector<quint16> m_tones;
};
