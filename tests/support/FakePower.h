#pragma once

#include "PowerManagement.h"

#include <QStringList>

#include <mutex>

/// Power management that records every call ("create TYPE LEVEL NAME", "release ID") and answers
/// as told.
class FakePower final : public PowerManagement
{
public:
    /// What the next creations return; 0 is success.
    void setResult(qint32 result)
    {
        const std::lock_guard guard(m_mutex);
        m_result = result;
    }

    [[nodiscard]] QStringList calls() const
    {
        const std::lock_guard guard(m_mutex);
        return m_calls;
    }

    [[nodiscard]] qint32 createAssertion(const QString& type,
                                         quint32 level,
                                         const QString& name,
                                         quint32& assertionId) override
    {
        const std::lock_guard guard(m_mutex);
        m_calls.append(QStringLiteral("create %1 %2 %3").arg(type).arg(level).arg(name));
        if (m_result == 0) {
            assertionId = ++m_lastId;
        }
        return m_result;
    }

    void releaseAssertion(quint32 assertionId) override
    {
        const std::lock_guard guard(m_mutex);
        m_calls.append(QStringLiteral("release %1").arg(assertionId));
    }

private:
    mutable std::mutex m_mutex;
    qint32 m_result{0};
    quint32 m_lastId{0};
    QStringList m_calls;
};
