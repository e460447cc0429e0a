#include "TextField.h"

void TextField::setStringValue(const QString& value)
{
    {
        const std::lock_guard guard(m_mutex);
        m_value = value;
    }
    emit stringValueChanged(value);
}

QString TextField::stringValue() const
{
    const std::lock_guard guard(m_mutex);
    return m_value;
}
