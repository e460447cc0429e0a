#pragma once

#include <QLabel>
#include <QString>

/// Small explaining text below a control.
namespace SmallText
{

/// A label in a font somewhat smaller than that of `parent`, which owns it.
inline QLabel* label(const QString& text, QWidget* parent)
{
    auto* const label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    QFont font = parent->font();
    if (font.pointSizeF() > 0.0) {
        font.setPointSizeF(font.pointSizeF() * 0.9);
    }
    label->setFont(font);
    return label;
}

} // namespace SmallText
