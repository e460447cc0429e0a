#pragma once

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QWidget>

#include <gtest/gtest.h>

/// Answers the open panel that is up with a path, or, with none, by Cancel.
inline void answerOpenPanel(QWidget& panel, const QString& path)
{
    auto* const buttons = panel.findChild<QDialogButtonBox*>(QStringLiteral("buttonBox"));
    ASSERT_NE(buttons, nullptr) << "no open panel is up";
    if (path.isEmpty()) {
        buttons->button(QDialogButtonBox::Cancel)->click();
        return;
    }
    panel.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(path);
    buttons->button(QDialogButtonBox::Open)->click();
}
