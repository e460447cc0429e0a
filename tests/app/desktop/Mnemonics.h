#pragma once

#include <QAction>
#include <QLabel>
#include <QMenuBar>
#include <QRegularExpression>
#include <QStringList>
#include <QWidget>

/// The letter that a text gives a control as its mnemonic; empty where it has none. A doubled
/// ampersand is one that is read.
inline QString mnemonicIn(QString text)
{
    text.remove(QStringLiteral("&&"));
    static const QRegularExpression marked(QStringLiteral("&(\\w)"));
    return marked.match(text).captured(1).toLower();
}

/// The mnemonics of everything of a window that is to be seen, its menu bar included; each control
/// of its own, so that one that is there twice is there twice.
inline QStringList mnemonicsOf(const QWidget& window)
{
    QStringList letters;
    const auto add = [&letters](const QString& text) {
        if (const QString letter = mnemonicIn(text); !letter.isEmpty()) {
            letters += letter;
        }
    };
    const QList<QWidget*> widgets = window.findChildren<QWidget*>();
    for (const QWidget* const widget : widgets) {
        if (widget->window() != &window || !widget->isVisible()) {
            continue;
        }
        if (const auto* const bar = qobject_cast<const QMenuBar*>(widget)) {
            for (const QAction* const action : bar->actions()) {
                add(action->text());
            }
        } else if (const auto* const label = qobject_cast<const QLabel*>(widget)) {
            add(label->buddy() == nullptr ? QString() : label->text());
        } else if (widget->focusPolicy() != Qt::NoFocus || widget->property("title").isValid()) {
            add(widget->property("text").toString());
            add(widget->property("title").toString());
        }
    }
    return letters;
}
