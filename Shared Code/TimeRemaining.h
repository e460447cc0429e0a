#pragma once

#include <QString>

#include <array>
#include <functional>

class Clock;
class UserDefaults;

/// Estimates how long a scan still takes, and learns from it how fast each stage goes on this
/// machine. What was learnt is kept in the settings when a scan reaches its end. One object serves
/// one scan; one thread at a time.
class TimeRemaining final
{
public:
    /// Reads the four learnt rates (items per second): "estStartupRate", "estDataLoadingRate",
    /// "estAlbumLoadingRate" (1.0 where none is stored) and "estConversionRate" (0.1). `defaults`
    /// and `clock` outlive the object.
    TimeRemaining(UserDefaults& defaults, Clock& clock);

    /// Takes note that `curIdx` of `totalCount` items of the stage are done and hands the text of
    /// the remaining time to `show`, on the calling thread. Stages: 0 start-up, 1 data loading,
    /// 2 album loading, 3 conversion, 4 end, which stores the rates; any other is logged and has no
    /// time left.
    ///
    /// Learning comes after: what `show` raises passes through, and nothing is learnt then.
    /// The rate of a stage is a running mean in which the stored rate counts as the first sample.
    /// It is taken as computed: no time elapsed makes it infinite, a clock set back negative.
    void update(quint64 stage,
                quint64 curIdx,
                quint64 totalCount,
                const std::function<void(const QString& text)>& show);

    /// "HH:MM:SS", hours not limited to two digits; "00:00:00" for what is no duration (negative,
    /// infinite, not a number). Hours, minutes and seconds are each counted from the whole duration
    /// in 64 bits without sign; a count that does not fit is the largest that does.
    [[nodiscard]] static QString text(double seconds);

private:
    static constexpr quint64 kStages = 4;

    [[nodiscard]] double estimate(quint64 stage, quint64 curIdx, quint64 totalCount) const;
    void learn(quint64 stage, quint64 curIdx, double elapsed);
    void store();

    UserDefaults& m_defaults;
    Clock& m_clock;
    std::array<double, kStages> m_rates{};
    double m_prevTime{0.0};
    quint64 m_prevIdx{0};
};
