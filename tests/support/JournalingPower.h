#pragma once

#include "Journal.h"
#include "PowerManagement.h"

#include <memory>

/// Power management that writes "power.create TYPE LEVEL NAME" and "power.release ID" into a
/// journal that it shares with other fakes, so that its calls are seen among theirs.
class JournalingPower final : public PowerManagement
{
public:
    explicit JournalingPower(std::shared_ptr<Journal> journal)
        : m_journal(std::move(journal))
    {
    }

    qint32 result{0}; ///< what creating answers

    /// Assertions made and not released.
    [[nodiscard]] int held() const { return m_held; }

    [[nodiscard]] qint32 createAssertion(const QString& type,
                                         quint32 level,
                                         const QString& name,
                                         quint32& assertionId) override
    {
        m_journal->add(QStringLiteral("power.create %1 %2 %3").arg(type).arg(level).arg(name));
        if (result == 0) {
            assertionId = 4711;
            ++m_held;
        }
        return result;
    }

    void releaseAssertion(quint32 assertionId) override
    {
        m_journal->add(QStringLiteral("power.release %1").arg(assertionId));
        --m_held;
    }

private:
    std::shared_ptr<Journal> m_journal;
    int m_held{0};
};
