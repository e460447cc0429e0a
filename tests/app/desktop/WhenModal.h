#pragma once

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <utility>

/// As soon as a dialog holds the program up, does something with it.
inline void whenModal(std::function<void(QWidget&)> action)
{
    auto* const timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, action = std::move(action)] {
        QWidget* const dialog = QApplication::activeModalWidget();
        if (dialog == nullptr) {
            return;
        }
        timer->stop();
        timer->deleteLater();
        action(*dialog);
    });
    timer->start(10);
}
