#pragma once

#include <QString>
#include <QVariant>

/// A value as a log line shows it, the way the platform that the program comes from prints its
/// property lists: dictionaries in braces, arrays in parentheses, one entry a line, indented by
/// four blanks; texts quoted unless they consist of the letters A to Z and a to z and of digits
/// only. A null value reads "<null>". At the top level a text stands as it is.
[[nodiscard]] QString describe(const QVariant& value);
