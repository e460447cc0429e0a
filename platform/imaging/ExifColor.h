#pragma once

#include <QByteArrayView>

/// What an Exif block says of the colours of a picture that carries no profile. Any thread.
namespace ExifColor
{

/// Whether `exif`, a TIFF structure, says Adobe RGB: no sRGB, and the interoperability rules of
/// the optional colour space (JEITA CP-3461, DCF 2.0, 4.7.5). False for anything that is damaged.
[[nodiscard]] bool isAdobeRgb(QByteArrayView exif);

} // namespace ExifColor
