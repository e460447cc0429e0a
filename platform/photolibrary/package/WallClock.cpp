#include "WallClock.h"

#include "Clock.h"

#include <QTimeZone>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

/// Whether the name is one of the zones' database: letters, digits and a few signs, in parts. Qt
/// opens the file of that name below the system's zones, whatever else it leads to.
bool isNameOfZone(const QString& zone)
{
    constexpr qsizetype kLongest = 64;
    constexpr QLatin1StringView kSigns("/_+-");
    return zone.size() <= kLongest && !zone.startsWith(u'/') &&
           std::ranges::all_of(zone, [&](QChar sign) {
               return sign < QChar(u'\x80') && (sign.isLetterOrNumber() || kSigns.contains(sign));
           });
}

} // namespace

QDateTime WallClock::of(double date, const QString& zone)
{
    constexpr double kMilliseconds = 1000.0;
    constexpr double kFarthest = 8e12; // some 250,000 years, in seconds
    const double unix = date + kSecondsFrom1970To2001;
    if (!(std::abs(unix) < kFarthest)) {
        return {};
    }
    QDateTime moment = QDateTime::fromMSecsSinceEpoch(
        static_cast<qint64>(std::floor(unix * kMilliseconds)), Qt::UTC);
    if (zone.isEmpty() || zone == "GMT"_L1 || !isNameOfZone(zone)) {
        return moment;
    }
    const QTimeZone shown(zone.toUtf8());
    return shown.isValid() ? moment.toTimeZone(shown) : moment;
}
