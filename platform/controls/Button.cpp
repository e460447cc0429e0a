#include "Button.h"

void Button::setEnabled(bool enabled)
{
    m_enabled = enabled;
    emit enabledChanged(enabled);
}
