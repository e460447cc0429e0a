#pragma once

#include <QByteArray>

/// ICC profiles that tests make for themselves.
namespace ProfileSamples
{

/// For grey values that are proportional to light.
[[nodiscard]] QByteArray linearGrey();

} // namespace ProfileSamples
