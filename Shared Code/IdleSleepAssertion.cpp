#include "IdleSleepAssertion.h"

#include "PowerManagement.h"

using namespace Qt::StringLiterals;

namespace
{

constexpr quint32 kLevelOn = 255;

} // namespace

IdleSleepAssertion::IdleSleepAssertion(PowerManagement& power)
    : m_power(power)
{
}

IdleSleepAssertion::~IdleSleepAssertion()
{
    release();
}

void IdleSleepAssertion::create()
{
    m_successPreventSleep = m_power.createAssertion(
        u"NoIdleSleepAssertion"_s, kLevelOn, u"Corvane conversion in progress"_s, m_assertionID);
}

void IdleSleepAssertion::release()
{
    if (m_successPreventSleep == 0) {
        m_power.releaseAssertion(m_assertionID);
        m_successPreventSleep = kNotCreated;
    }
}
