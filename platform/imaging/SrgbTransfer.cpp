#include "SrgbTransfer.h"

#include <cmath>

namespace
{

constexpr double kFullLight = 65535.0;

} // namespace

// IEC 61966-2-1, 5.2 and 5.3.
double SrgbTransfer::encodedFrom(double linear)
{
    return linear <= 0.0031308 ? linear * 12.92 : 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055;
}

double SrgbTransfer::linearFrom(double encoded)
{
    return encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
}

SrgbTransfer::SrgbTransfer()
{
    for (std::size_t value = 0; value < kValues; ++value) {
        const double part = static_cast<double>(value) / kFullLight;
        const double encodedPart = encodedFrom(part);
        m_encoded[value] = static_cast<quint16>(std::lround(encodedPart * kFullLight));
        m_encodedByte[value] = static_cast<quint8>(std::lround(encodedPart * 255.0));
        m_linear[value] = static_cast<quint16>(std::lround(linearFrom(part) * kFullLight));
    }
}

const SrgbTransfer& SrgbTransfer::tables()
{
    static const std::unique_ptr<const SrgbTransfer> kTables(new SrgbTransfer);
    return *kTables;
}

Bitmap SrgbTransfer::converted(Bitmap bitmap, Transfer wanted)
{
    if (bitmap.isNull() || bitmap.transfer() == wanted) {
        return bitmap;
    }
    const auto& table = wanted == Transfer::Srgb ? tables().m_encoded : tables().m_linear;
    Bitmap result(bitmap.pixelsWide(), bitmap.pixelsHigh(), wanted);
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        const auto from = std::as_const(bitmap).row(y);
        const auto into = result.row(y);
        for (std::size_t i = 0; i < from.size(); ++i) {
            into[i] = table[from[i]];
        }
    }
    return result;
}
