#pragma once

#include "AddressBook.h"
#include "Bundle.h"
#include "CrashReporterServices.h"
#include "FakeAddressBook.h"
#include "FakeClock.h"
#include "FakeSystemControl.h"
#include "FakeTrash.h"
#include "LogRecorder.h"
#include "LoopbackServer.h"
#include "QtPrinters.h"
#include "UserDefaults.h"
#include "ZTBCrashReporterWindow.h"
#include "ZTBCrashReporterWindowController.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

/// The window that offers a crash log, over its controller and a server of the test.
class CrashWindowFixture : public testing::Test
{
protected:
    using Controller = ZTBCrashReporterWindowController;

    void TearDown() override
    {
        if (m_window) {
            m_window->end();
        }
        settle();
    }

    CrashReporterServices services()
    {
        return {.defaults = m_defaults,
                .bundle = m_bundle,
                .clock = m_clock,
                .systemControl = m_system,
                .addressBook = m_addressBook,
                .trash = m_trash,
                .libraries = {},
                .loadWindow = [this](Controller& owner) {
                    m_life = &owner;
                    m_window = new ZTBCrashReporterWindow(owner, m_defaults);
                    return CrashReportWindowPtr(m_window.data());
                }};
    }

    /// Shows the window of a log with that content.
    ZTBCrashReporterWindow& show(const QByteArray& content = "first line\nsecond line\n")
    {
        QFile file(m_path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
            throw std::runtime_error("the log cannot be written");
        }
        file.close();
        Controller::showWindowForCrashLogPath(services(), m_path, m_server.url());
        return *m_window;
    }

    Controller& controller() { return *m_life; }

    template <typename Widget = QWidget>
    Widget& child(const QString& name)
    {
        auto* const found = m_window->findChild<Widget*>(name);
        if (found == nullptr) {
            throw std::runtime_error("no widget " + name.toStdString());
        }
        return *found;
    }

    void click(const QString& name) { child<QAbstractButton>(name).click(); }

    /// The sheet that is up; null when there is none.
    QMessageBox* sheet()
    {
        return m_window->findChild<QMessageBox*>(QStringLiteral("submissionSheet"));
    }

    /// Presses Report and waits for the sheet.
    void report()
    {
        click(QStringLiteral("reportButton"));
        ASSERT_TRUE(QTest::qWaitFor([this] { return sheet() != nullptr; }, 30000));
    }

    /// Handles what is waiting, deletions included.
    static void settle()
    {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    QTemporaryDir m_folder;
    LogRecorder m_log;
    UserDefaults m_defaults{m_folder.filePath(QStringLiteral("defaults.plist"))};
    const Bundle m_bundle{QStringLiteral(":/corvane")};
    FakeClock m_clock;
    FakeSystemControl m_system;
    FakeAddressBook m_addressBook;
    FakeTrash m_trash;
    LoopbackServer m_server;
    const QString m_path{m_folder.filePath(QStringLiteral("Corvane_1.crash"))};
    QPointer<ZTBCrashReporterWindow> m_window;
    QPointer<Controller> m_life;
};
