#include "Interruption.h"

Interruption::Interruption(QObject* parent)
    : QObject(parent)
{
}

void Interruption::request()
{
    if (!m_requested.exchange(true)) {
        Q_EMIT requested();
    }
}
