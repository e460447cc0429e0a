#pragma once

#include "Bitmap.h"

#include <array>
#include <memory>

/// The transfer function of sRGB (IEC 61966-2-1) over 16-bit values, as tables that hold the
/// rounded exact value of every input. Immutable; any thread, several at once.
class SrgbTransfer final
{
public:
    /// The tables, made at first use and shared from then on.
    [[nodiscard]] static const SrgbTransfer& tables();

    /// Linear light 0..65535 to the encoded value 0..65535.
    [[nodiscard]] quint16 encoded(quint16 linear) const { return m_encoded[linear]; }

    /// Encoded value 0..65535 to linear light 0..65535.
    [[nodiscard]] quint16 linear(quint16 encoded) const { return m_linear[encoded]; }

    /// Linear light to the encoded value 0..255, rounded once.
    [[nodiscard]] quint8 encodedByte(quint16 linear) const { return m_encodedByte[linear]; }

    /// The functions themselves, of 0..1.
    [[nodiscard]] static double encodedFrom(double linear);
    [[nodiscard]] static double linearFrom(double encoded);

    /// The picture with the wanted transfer; pixels that have it already are passed on.
    [[nodiscard]] static Bitmap converted(Bitmap bitmap, Transfer wanted);

private:
    SrgbTransfer();

    static constexpr std::size_t kValues = 65536;
    std::array<quint16, kValues> m_encoded{};
    std::array<quint16, kValues> m_linear{};
    std::array<quint8, kValues> m_encodedByte{};
};

/// An encoded 16-bit value rounded to 8 bits (65535 is 255).
[[nodiscard]] constexpr quint8 roundedByte(quint16 encoded)
{
    return static_cast<quint8>((static_cast<quint32>(encoded) + 128U) / 257U);
}

/// An 8-bit value widened to 16 bits without loss (255 is 65535).
[[nodiscard]] constexpr quint16 widened(quint8 byte)
{
    return static_cast<quint16>(byte * 257U);
}
