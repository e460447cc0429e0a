#pragma once

#include <QtGlobal>

class PowerManagement;

/// Keeps the machine from idle sleep while photos are converted. One thread at a time.
class IdleSleepAssertion final
{
public:
    /// Takes nothing yet. `power` outlives the object.
    explicit IdleSleepAssertion(PowerManagement& power);
    /// Releases what is still held.
    ~IdleSleepAssertion();
    IdleSleepAssertion(const IdleSleepAssertion&) = delete;
    IdleSleepAssertion& operator=(const IdleSleepAssertion&) = delete;

    /// Takes the assertion. Where that fails the scan runs without it, and nobody is told.
    void create();
    /// Releases it; does nothing when none is held.
    void release();

private:
    static constexpr qint32 kNotCreated = -1;

    PowerManagement& m_power;
    quint32 m_assertionID{0};
    /// What the create call answered; 0 is success.
    qint32 m_successPreventSleep{kNotCreated};
};
