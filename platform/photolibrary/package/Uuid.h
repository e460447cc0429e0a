#pragma once

#include <QString>

/// Names of library objects: 22 characters, base64 of a random UUID with "%" for "/". They also
/// name files.
namespace Uuid
{

[[nodiscard]] QString create();

/// Whether a text from a database may become one component of a path: not empty, ".", "..", without
/// "/" and NUL.
[[nodiscard]] bool isSafeName(const QString& text);

} // namespace Uuid
