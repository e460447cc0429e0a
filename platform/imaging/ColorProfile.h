#pragma once

#include "Bitmap.h"

#include <QByteArray>

#include <optional>

/// ICC colour profiles through lcms2. Any thread, several at once.
namespace ColorProfile
{

/// How the values of a source row lie in memory.
enum class Layout : quint8 {
    Grey16,         ///< one 16-bit value a pixel
    Rgb16,          ///< three
    Cmyk16,         ///< four, 65535 is full ink
    InvertedCmyk16, ///< four, 0 is full ink (as JPEG files of printing programs store it)
};

/// A colour by its place in the CIE diagram (x, y).
struct Chromaticity {
    double x{0.0};
    double y{0.0};
};

/// The colours that full red, green and blue have, and all three together.
struct Primaries {
    Chromaticity red;
    Chromaticity green;
    Chromaticity blue;
    Chromaticity white;
};

inline constexpr Primaries kSrgbPrimaries{
    .red = {0.64, 0.33}, .green = {0.30, 0.60}, .blue = {0.15, 0.06}, .white = {0.3127, 0.3290}};

/// From an encoded value to light: (a * value + b) ^ gamma from `d` on, c * value below.
struct Curve {
    double gamma{1.0};
    double a{1.0};
    double b{0.0};
    double c{0.0};
    double d{0.0};
    friend bool operator==(const Curve&, const Curve&) = default;
};

/// IEC 61966-2-1, 5.2.
inline constexpr Curve kSrgbCurve{
    .gamma = 2.4, .a = 1.0 / 1.055, .b = 0.055 / 1.055, .c = 1.0 / 12.92, .d = 0.04045};

/// An ICC profile for R, G, B of these primaries and this curve; empty where no light has them.
[[nodiscard]] QByteArray made(const Primaries& primaries, const Curve& curve);

/// An sRGB profile (ICC version 2.1 class "mntr"), for embedding. Always the same bytes.
[[nodiscard]] const QByteArray& sRgb();

/// A profile of Adobe RGB (1998).
[[nodiscard]] const QByteArray& adobeRgb();

/// Converts rows of a source profile to sRGB encoded R, G, B, 16 bits; perceptual intent with
/// black point kept. One object serves one thread.
class ToSrgb final
{
public:
    /// Nothing where the bytes are no profile, or one of another kind than the layout.
    [[nodiscard]] static std::optional<ToSrgb> create(const QByteArray& icc, Layout layout);

    ToSrgb(ToSrgb&& other) noexcept;
    ToSrgb& operator=(ToSrgb&& other) noexcept;
    ToSrgb(const ToSrgb&) = delete;
    ToSrgb& operator=(const ToSrgb&) = delete;
    ~ToSrgb();

    /// `from`: pixels in the layout; `into`: three values a pixel. Both may be the same memory
    /// where the layout is Rgb16.
    void convert(std::span<const quint16> from, std::span<quint16> into) const;

private:
    explicit ToSrgb(void* transform)
        : m_transform(transform)
    {
    }

    void* m_transform{nullptr};
};

/// Converts a whole picture of the profile `icc` in place: one for R, G, B, or one for grey where
/// the picture has no colours. Leaves it as it is where the profile is another.
void convertToSrgb(Bitmap& bitmap, const QByteArray& icc);

} // namespace ColorProfile
