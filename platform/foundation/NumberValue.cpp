#include "NumberValue.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace
{

bool isText(const QVariant& value)
{
    return value.typeId() == QMetaType::QString || value.typeId() == QMetaType::QByteArray;
}

bool isReal(const QVariant& value)
{
    return value.typeId() == QMetaType::Double || value.typeId() == QMetaType::Float;
}

/// Without leading blanks and without a leading plus sign, which std::from_chars does not take.
QByteArray numberText(const QVariant& value)
{
    const QByteArray text = value.toString().trimmed().toUtf8();
    return text.startsWith('+') ? text.mid(1) : text;
}

qint64 integerOfText(const QByteArray& text)
{
    qint64 number = 0;
    const auto [end, error] = std::from_chars(text.cbegin(), text.cend(), number);
    if (error == std::errc::result_out_of_range) {
        return text.startsWith('-') ? std::numeric_limits<qint64>::min()
                                    : std::numeric_limits<qint64>::max();
    }
    return number;
}

qint64 integerOfReal(double number)
{
    constexpr double kTwoTo63 = 9223372036854775808.0;
    if (std::isnan(number)) {
        return 0;
    }
    if (number >= kTwoTo63) {
        return std::numeric_limits<qint64>::max();
    }
    if (number < -kTwoTo63) {
        return std::numeric_limits<qint64>::min();
    }
    return static_cast<qint64>(number);
}

} // namespace

qint64 NumberValue::integer(const QVariant& value)
{
    if (isText(value)) {
        return integerOfText(numberText(value));
    }
    if (isReal(value)) {
        return integerOfReal(value.toDouble());
    }
    if (value.typeId() == QMetaType::ULongLong) {
        constexpr quint64 kLargest = std::numeric_limits<qint64>::max();
        return static_cast<qint64>(std::min(value.toULongLong(), kLargest));
    }
    return value.toLongLong();
}

double NumberValue::real(const QVariant& value)
{
    if (!isText(value)) {
        return value.toDouble();
    }
    const QByteArray text = numberText(value);
    double number = 0.0;
    const auto [end, error] = std::from_chars(text.cbegin(), text.cend(), number);
    return error == std::errc() ? number : 0.0;
}

bool NumberValue::boolean(const QVariant& value)
{
    if (!isText(value)) {
        return isReal(value) ? value.toDouble() != 0.0 : value.toLongLong() != 0;
    }
    const QString text = value.toString().trimmed();
    qsizetype start = text.startsWith(u'+') || text.startsWith(u'-') ? 1 : 0;
    while (start < text.size() && text.at(start) == u'0') {
        ++start;
    }
    return start < text.size() && "YyTt123456789"_L1.contains(text.at(start));
}

QString NumberValue::withTwoDecimals(double number)
{
    // The largest double has 309 digits before the point.
    std::array<char, 320> text = {};
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed, 2);
    Q_ASSERT(error == std::errc());
    return QString::fromLatin1(text.data(), end - text.data());
}
