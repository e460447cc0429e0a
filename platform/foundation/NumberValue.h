#pragma once

#include <QString>
#include <QVariant>

/// What a loosely typed value means as a number or a switch: settings and the controller's number
/// objects arrive as text, integer, real or boolean; and how a number is shown. Any thread.
namespace NumberValue
{

/// The integer part: reals are cut towards zero, text is read as far as it is an integer ("7x" is
/// 7, "abc" is 0). What does not fit becomes the nearest integer that does; no number is 0.
[[nodiscard]] qint64 integer(const QVariant& value);

/// Text is read as far as it is a decimal number; what is no number is 0.0.
[[nodiscard]] double real(const QVariant& value);

/// Numbers: whether not 0. Text: whether it starts, after blanks, sign and zeros, with one of
/// "YyTt123456789".
[[nodiscard]] bool boolean(const QVariant& value);

/// The number with two decimals, as C's "%.2f" gives it where the decimal separator is a point:
/// what lies exactly between two texts goes to the even one (0.625 is "0.62"), which Qt's own
/// formatting does otherwise.
[[nodiscard]] QString withTwoDecimals(double number);

} // namespace NumberValue
