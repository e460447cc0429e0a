#include "TextView.h"

void TextView::setString(const QString& text)
{
    if (text == m_string) {
        return;
    }
    m_string = text;
    emit stringChanged(text);
}

void TextView::setPlaceholderString(const QString& text)
{
    m_placeholder = text;
    emit placeholderStringChanged(text);
}

void TextView::setTypingFontSize(double points)
{
    m_typingFontSize = points;
    emit typingFontSizeChanged(points);
}
