#pragma once

#include "Bundle.h"
#include "CorvaneAppDelegate.h"
#include "FakeClock.h"
#include "FakeNotifications.h"
#include "FakePhotoApplication.h"
#include "FakePower.h"
#include "FakePresenter.h"
#include "FakeWorkspace.h"
#include "LogRecorder.h"
#include "UserDefaults.h"

#include <QEventLoop>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

/// A controller over doubles of everything it is given, with settings of its own.
class ControllerFixture : public testing::Test
{
protected:
    /// Makes the controller; what happened before it counts as stored by an earlier run.
    CorvaneAppDelegate& make()
    {
        m_controller = std::make_unique<CorvaneAppDelegate>(
            ControllerServices{.bridge = m_application,
                               .defaults = m_defaults,
                               .bundle = m_bundle,
                               .presenter = presenter(),
                               .workspace = m_workspace,
                               .power = m_power,
                               .notifications = m_notifications,
                               .clock = m_clock,
                               .checkForNewCrashes = [this] {
                                   if (m_checkForNewCrashes) {
                                       m_checkForNewCrashes();
                                   }
                               }});
        return *m_controller;
    }

    /// What the controller shows things with.
    virtual Presenter& presenter() { return m_presenter; }

    /// Makes the controller and wakes it.
    CorvaneAppDelegate& wake()
    {
        make().awakeFromNib();
        m_presenter.clear();
        return *m_controller;
    }

    /// Runs the main event loop until no scan is left.
    void waitForScans()
    {
        while (m_controller->isScanning()) {
            QEventLoop loop;
            QObject::connect(
                m_controller.get(), &CorvaneAppDelegate::scanEnded, &loop, &QEventLoop::quit);
            loop.exec();
        }
    }

    /// Runs the callable on a thread of its own and the main event loop meanwhile.
    static void runOnWorker(std::function<void()> callable)
    {
        const std::unique_ptr<QThread> worker(QThread::create(std::move(callable)));
        QEventLoop loop;
        QObject::connect(worker.get(), &QThread::finished, &loop, &QEventLoop::quit);
        worker->start();
        loop.exec();
        worker->wait();
    }

    QTemporaryDir m_folder;
    LogRecorder m_log;
    UserDefaults m_defaults{m_folder.filePath(QStringLiteral("defaults.plist"))};
    Bundle m_bundle{QStringLiteral(":/corvane")};
    FakePhotoApplication m_application;
    FakePresenter m_presenter;
    FakeWorkspace m_workspace;
    FakePower m_power;
    FakeNotifications m_notifications;
    FakeClock m_clock;
    std::function<void()> m_checkForNewCrashes;
    std::unique_ptr<CorvaneAppDelegate> m_controller;
};
