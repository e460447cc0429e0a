#pragma once

#include "Clock.h"

#include <QList>

#include <mutex>

/// A clock that stands still until told otherwise; sleeping moves it on and takes no time.
class FakeClock final : public Clock
{
public:
    explicit FakeClock(double now = 0.0)
        : m_now(now)
    {
    }

    [[nodiscard]] double now() const override
    {
        const std::lock_guard guard(m_mutex);
        return m_now;
    }

    void sleep(double seconds) override
    {
        const std::lock_guard guard(m_mutex);
        m_now += seconds;
        m_sleeps.append(seconds);
    }

    void advance(double seconds)
    {
        const std::lock_guard guard(m_mutex);
        m_now += seconds;
    }

    /// Every sleep so far, in order.
    [[nodiscard]] QList<double> sleeps() const
    {
        const std::lock_guard guard(m_mutex);
        return m_sleeps;
    }

private:
    mutable std::mutex m_mutex;
    double m_now;
    QList<double> m_sleeps;
};
