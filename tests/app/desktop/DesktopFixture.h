#pragma once

#include "ControllerFixture.h"
#include "CorvaneWindow.h"
#include "DesktopPresenter.h"
#include "ForecastLabel.h"
#include "WhenModal.h"

#include <QAbstractButton>
#include <QApplication>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

/// The main window over a controller whose presenter is the desktop's own.
class DesktopFixture : public ControllerFixture
{
protected:
    Presenter& presenter() override { return m_desktopPresenter; }

    void TearDown() override
    {
        m_window.reset();
        m_controller.reset();
    }

    /// Wakes the controller and shows its window.
    CorvaneWindow& showWindow()
    {
        wake();
        m_window = std::make_unique<CorvaneWindow>(*m_controller, m_defaults);
        m_desktopPresenter.setWindow(m_window.get());
        m_window->show();
        return *m_window;
    }

    /// The widget of that name in the window or its sheets.
    template <typename Widget>
    Widget& child(const QString& name)
    {
        auto* const found = m_window->findChild<Widget*>(name);
        if (found == nullptr) {
            throw std::runtime_error("no widget " + name.toStdString());
        }
        return *found;
    }

    QAbstractButton& button(const QString& name) { return child<QAbstractButton>(name); }

    /// Where a check box or radio button listens, which is not its whole width.
    static void click(QAbstractButton& target)
    {
        QTest::mouseClick(&target,
                          Qt::LeftButton,
                          Qt::NoModifier,
                          QPoint(target.height() / 2, target.height() / 2));
    }

    void click(const QString& name) { click(button(name)); }

    /// Handles what is waiting, deletions included.
    static void settle()
    {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    [[nodiscard]] QString forecast()
    {
        return child<ForecastLabel>(QStringLiteral("pressForecast")).plainText();
    }

    DesktopPresenter m_desktopPresenter;
    std::unique_ptr<CorvaneWindow> m_window;
};
