#pragma once

#include <QString>

/// Keeps the machine from idle sleep by named assertions. Any thread; a call may wait for the
/// session's services for at most two seconds.
class PowerManagement
{
public:
    virtual ~PowerManagement() = default;
    /// Creates an assertion of the given type, "NoIdleSleepAssertion" here, level 255 = on.
    /// `assertionId` receives its id. Returns 0 on success; anything else means that there is no
    /// assertion (no bus, refused) and nothing to release.
    [[nodiscard]] virtual qint32 createAssertion(const QString& type,
                                                 quint32 level,
                                                 const QString& name,
                                                 quint32& assertionId) = 0;
    virtual void releaseAssertion(quint32 assertionId) = 0;
};
