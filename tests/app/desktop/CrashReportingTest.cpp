#include "CrashReporting.h"

#include "Bundle.h"
#include "Directories.h"
#include "FakeClock.h"
#include "LoopbackServer.h"
#include "NamedException.h"
#include "PropertyList.h"
#include "UserDefaults.h"
#include "ZTBCrashReporterWindow.h"

#include <QAbstractButton>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace
{

/// The reporter over what the desktop program gives it: the user's own folders and trash.
class CrashReportingTest : public testing::Test
{
protected:
    void SetUp() override
    {
        qputenv("XDG_STATE_HOME", QFile::encodeName(m_folder.filePath(u"state"_s)));
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder.filePath(u"data"_s)));
        ASSERT_TRUE(QDir().mkpath(QFileInfo(m_log).path()));
        m_defaults.setValue(u"ZTBCrashReporterLastCrashReportDate"_s,
                            QVariant::fromValue(PropertyList::Date{0.0}));
        m_defaults.setValue(u"ZTBCrashReporterCrashSubmissionURL"_s, m_server.url().toString());
        writeLog();
        launch();
    }

    void TearDown() override
    {
        m_reporting.reset();
        qunsetenv("XDG_STATE_HOME");
        qunsetenv("XDG_DATA_HOME");
    }

    void launch() { m_reporting = std::make_unique<CrashReporting>(m_defaults, m_bundle, m_clock); }

    void writeLog()
    {
        QFile file(m_log);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("it crashed\n");
    }

    void click(const QString& button)
    {
        m_reporting->window()->findChild<QAbstractButton*>(button)->click();
    }

    QTemporaryDir m_folder;
    UserDefaults m_defaults{m_folder.filePath(u"defaults.plist"_s)};
    const Bundle m_bundle{u":/corvane"_s};
    FakeClock m_clock;
    LoopbackServer m_server;
    const QString m_log{
        m_folder.filePath(u"state/corvane/Logs/DiagnosticReports/Corvane_1.crash"_s)};
    std::unique_ptr<CrashReporting> m_reporting;
};

TEST_F(CrashReportingTest, aLogOfTheUsersFolderIsOffered)
{
    EXPECT_EQ(m_reporting->window(), nullptr);
    m_reporting->checkForNewCrashes();
    ASSERT_NE(m_reporting->window(), nullptr);
    EXPECT_TRUE(m_reporting->window()->isVisible());
}

TEST_F(CrashReportingTest, withoutAnAddressItRaises)
{
    m_defaults.remove(u"ZTBCrashReporterCrashSubmissionURL"_s);
    EXPECT_THROW(m_reporting->checkForNewCrashes(), GeneralException);
    EXPECT_EQ(m_reporting->window(), nullptr);
}

TEST_F(CrashReportingTest, aReportGoesItsWholeWayOnce)
{
    m_server.setAnswer("ok\n");
    m_reporting->checkForNewCrashes();
    click(u"reportButton"_s);
    QMessageBox* sheet = nullptr;
    ASSERT_TRUE(QTest::qWaitFor(
        [this, &sheet] {
            sheet = m_reporting->window()->findChild<QMessageBox*>(u"submissionSheet"_s);
            return sheet != nullptr;
        },
        30000));
    sheet->button(QMessageBox::Ok)->click();
    EXPECT_FALSE(QFile::exists(m_log));
    ASSERT_EQ(m_server.requests().size(), 1);
    EXPECT_TRUE(m_server.requests().first().body.contains("\r\n\r\nit crashed\n\r\n"));
    launch();
    m_reporting->checkForNewCrashes();
    EXPECT_EQ(m_reporting->window(), nullptr) << "no second window";
}

TEST_F(CrashReportingTest, aDiscardedLogLiesInTheTrash)
{
    m_reporting->checkForNewCrashes();
    click(u"discardButton"_s);
    EXPECT_FALSE(QFile::exists(m_log));
    EXPECT_TRUE(QFile::exists(m_folder.filePath(u"data/Trash/files/Corvane_1.crash"_s)));
}

TEST_F(CrashReportingTest, theWindowEndsWithTheProgramAlsoWhileSendingAndHidden)
{
    m_reporting->checkForNewCrashes();
    click(u"reportButton"_s);
    ASSERT_TRUE(QTest::qWaitFor([this] { return !m_server.requests().isEmpty(); }, 30000));
    const QPointer<ZTBCrashReporterWindow> sending(m_reporting->window());
    m_reporting.reset();
    EXPECT_TRUE(sending.isNull());

    launch();
    m_reporting->checkForNewCrashes();
    click(u"ignoreButton"_s);
    const QPointer<ZTBCrashReporterWindow> hidden(m_reporting->window());
    EXPECT_FALSE(hidden.isNull());
    m_reporting.reset();
    EXPECT_TRUE(hidden.isNull());
    EXPECT_TRUE(QFile::exists(m_log));
}

TEST_F(CrashReportingTest, aWindowThatWasClosedIsForgotten)
{
    m_reporting->checkForNewCrashes();
    m_reporting->window()->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(m_reporting->window(), nullptr);
}

} // namespace
