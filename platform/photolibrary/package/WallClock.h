#pragma once

#include <QDateTime>
#include <QString>

/// Dates of a library as a clock on the wall shows them. Any thread.
namespace WallClock
{

/// The moment, in seconds since 2001-01-01T00:00:00 UTC with fractions, in the zone of that name
/// ("Europe/Berlin"). "GMT", no name, and one that cannot name a zone mean as it is. Invalid for a
/// date that no calendar has.
[[nodiscard]] QDateTime of(double date, const QString& zone = {});

} // namespace WallClock
