#pragma once

#include <QColor>
#include <QPalette>

/// The dark counterpart of the style's own palette.
inline QPalette darkPalette()
{
    QPalette palette;
    const QColor base(35, 35, 38);
    const QColor window(48, 48, 52);
    const QColor text(232, 232, 232);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, window);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::ToolTipBase, window);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, QColor(150, 150, 150));
    palette.setColor(QPalette::Highlight, QColor(60, 120, 190));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(120, 170, 240));
    palette.setColor(QPalette::Mid, QColor(70, 70, 74));
    palette.setColor(QPalette::Dark, QColor(28, 28, 30));
    palette.setColor(QPalette::Light, QColor(90, 90, 95));
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, QColor(130, 130, 130));
    }
    return palette;
}
