#include "TimeRemaining.h"

#include "Clock.h"
#include "SystemLog.h"
#include "UserDefaults.h"

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace
{

struct StoredRate {
    QLatin1StringView key;
    double fallback{0.0};
};

constexpr std::array<StoredRate, 4> kStoredRates{{
    {"estStartupRate"_L1, 1.0},
    {"estDataLoadingRate"_L1, 1.0},
    {"estAlbumLoadingRate"_L1, 1.0},
    {"estConversionRate"_L1, 0.1},
}};

constexpr quint64 kEndOfScan = 4;

/// Cut to an integer, or the nearest one that fits; 0 for what is no number.
quint64 wholePart(double number)
{
    constexpr double kTwoTo64 = 18446744073709551616.0;
    if (!std::isfinite(number) || number < 0.0) {
        return 0;
    }
    return number >= kTwoTo64 ? std::numeric_limits<quint64>::max() : static_cast<quint64>(number);
}

} // namespace

TimeRemaining::TimeRemaining(UserDefaults& defaults, Clock& clock)
    : m_defaults(defaults)
    , m_clock(clock)
{
    for (quint64 stage = 0; stage < kStages; ++stage) {
        const double stored = defaults.doubleValue(kStoredRates.at(stage).key);
        m_rates.at(stage) = stored == 0.0 ? kStoredRates.at(stage).fallback : stored;
    }
}

void TimeRemaining::update(quint64 stage,
                           quint64 curIdx,
                           quint64 totalCount,
                           const std::function<void(const QString& text)>& show)
{
    if (m_prevTime == 0.0) {
        m_prevTime = m_clock.now();
    }
    const double now = m_clock.now();
    const double remaining = estimate(stage, curIdx, totalCount);
    if (stage == kEndOfScan) {
        store();
    } else if (stage > kEndOfScan) {
        systemLog(u"Unknown stage for estTimeRemaining"_s);
    }
    show(text(remaining));
    if (m_prevIdx < curIdx && stage < kStages) {
        learn(stage, curIdx, now - m_prevTime);
    }
    m_prevTime = now;
    m_prevIdx = curIdx;
}

QString TimeRemaining::text(double seconds)
{
    const quint64 hours = wholePart(seconds / 3600.0);
    const quint64 minutes = wholePart(seconds / 60.0) % 60;
    const quint64 remainder = wholePart(seconds) % 60;
    return u"%1:%2:%3"_s.arg(hours, 2, 10, QLatin1Char('0'))
        .arg(minutes, 2, 10, QLatin1Char('0'))
        .arg(remainder, 2, 10, QLatin1Char('0'));
}

double TimeRemaining::estimate(quint64 stage, quint64 curIdx, quint64 totalCount) const
{
    if (stage >= kStages) {
        return 0.0;
    }
    double seconds = static_cast<double>(totalCount - curIdx) / m_rates.at(stage);
    for (quint64 later = stage + 1; later < kStages; ++later) {
        seconds += static_cast<double>(totalCount) / m_rates.at(later);
    }
    return seconds;
}

void TimeRemaining::learn(quint64 stage, quint64 curIdx, double elapsed)
{
    double& rate = m_rates.at(stage);
    const auto samples = static_cast<double>(m_prevIdx) + 1.0;
    const auto items = static_cast<double>(curIdx - m_prevIdx);
    rate = (samples * rate + items / elapsed) / (static_cast<double>(curIdx) + 1.0);
}

void TimeRemaining::store()
{
    for (quint64 stage = 0; stage < kStages; ++stage) {
        m_defaults.setDouble(kStoredRates.at(stage).key, m_rates.at(stage));
    }
}
