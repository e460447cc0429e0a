#include "LibraryFacts.h"

#include "WallClock.h"

#include <QDateTime>

using namespace Qt::StringLiterals;

QString PhotoFacts::wallClock() const
{
    const QDateTime moment = unknown.date ? QDateTime() : WallClock::of(date, zoneName);
    return moment.isValid() ? moment.toString(u"yyyy-MM-ddTHH:mm:ss"_s) : QString();
}
