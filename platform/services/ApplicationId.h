#pragma once

#include <QString>

/// The name under which the desktop program is installed: of its desktop entry, its icon and its
/// metadata, without their endings. Services of the desktop find the program's icon by it.
[[nodiscard]] inline QString applicationId()
{
    return QStringLiteral("io.github.corvane.Corvane");
}
