#pragma once

/// Time and waiting, behind a seam so that tests decide both. Any thread.
class Clock
{
public:
    virtual ~Clock() = default;
    /// Seconds since 2001-01-01T00:00:00 UTC, with fractions.
    [[nodiscard]] virtual double now() const = 0;
    /// Blocks the calling thread.
    virtual void sleep(double seconds) = 0;
};

/// The machine's clock.
class SystemClock final : public Clock
{
public:
    [[nodiscard]] double now() const override;
    void sleep(double seconds) override;
};

/// Seconds between 1970-01-01 and 2001-01-01, both 00:00:00 UTC.
inline constexpr double kSecondsFrom1970To2001 = 978307200.0;
