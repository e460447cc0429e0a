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

/// An sRGB profile (ICC version 2.1 class "mntr"), for embedding. Always the same bytes.
[[nodiscard]] const QByteArray& sRgb();

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

/// Converts a whole picture of the profile `icc` in place; leaves it as it is where the profile is
/// none for R, G, B.
void convertToSrgb(Bitmap& bitmap, const QByteArray& icc);

} // namespace ColorProfile
