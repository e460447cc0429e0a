#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// RAW files of sensors with plain cells, as cameras wrote them and one of the tests' own making.
namespace SensorFrames
{

/// The one that is made, and, where they lie beside the sources, cameras' files.
[[nodiscard]] QStringList names();

/// Fails the test where the file cannot be read.
[[nodiscard]] QByteArray read(const QString& name);

} // namespace SensorFrames
