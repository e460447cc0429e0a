#pragma once

#include <QAbstractButton>
#include <QLabel>
#include <QWidget>

#include <gtest/gtest.h>

/// Every label and button of the window that is to be seen lies within what is around it, and has
/// room for its text. What scrolls, and what shortens its text by itself, is let be.
inline void expectNothingIsCutOff(const QWidget& window)
{
    const QList<QWidget*> widgets = window.findChildren<QWidget*>();
    int looked = 0;
    for (const QWidget* const widget : widgets) {
        const auto* const label = qobject_cast<const QLabel*>(widget);
        const bool isText =
            label != nullptr || qobject_cast<const QAbstractButton*>(widget) != nullptr;
        const QWidget* const around = widget->parentWidget();
        const bool scrolls = around != nullptr && around->inherits("QAbstractScrollArea");
        if (widget->window() != &window || !widget->isVisible() || !isText || scrolls ||
            (around != nullptr &&
             around->objectName() == QStringLiteral("qt_scrollarea_viewport"))) {
            continue;
        }
        ++looked;
        const std::string name =
            (widget->objectName() + u' ' + widget->property("text").toString()).toStdString();
        const QRect place(widget->mapTo(&window, QPoint()), widget->size());
        EXPECT_TRUE(window.rect().contains(place)) << name;
        EXPECT_TRUE(around->rect().contains(widget->geometry())) << name;
        EXPECT_GE(widget->width(), widget->minimumSizeHint().width()) << name;
        if (label != nullptr && label->wordWrap()) {
            EXPECT_GE(label->height(), label->heightForWidth(label->width())) << name;
        } else {
            EXPECT_GE(widget->height(), widget->minimumSizeHint().height()) << name;
        }
    }
    EXPECT_GT(looked, 2) << "there is something to look at";
}
