#pragma once

#include "Bundle.h"
#include "CrashReporterServices.h"
#include "FakeAddressBook.h"
#include "FakeClock.h"
#include "FakeCrashReportWindow.h"
#include "FakeSystemControl.h"
#include "FakeTrash.h"
#include "LogRecorder.h"
#include "PropertyList.h"
#include "QtPrinters.h"
#include "UserDefaults.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <cmath>
#include <memory>

/// The crash reporter over doubles of everything it is given, with Library folders, settings and a
/// bundle of its own.
class CrashReporterFixture : public testing::Test
{
protected:
    /// 2014-02-03T04:05:06 UTC, in seconds since 2001.
    static constexpr double kNow = 413093106.0;

    void SetUp() override
    {
        ASSERT_TRUE(m_folder.isValid());
        setInfo({{QStringLiteral("CFBundleName"), QStringLiteral("Corvane")},
                 {QStringLiteral("CFBundleIdentifier"), QStringLiteral("example.Corvane")},
                 {QStringLiteral("CFBundleVersion"), QStringLiteral("77")},
                 {QStringLiteral("CFBundleShortVersionString"), QStringLiteral("1.2")}});
    }

    void TearDown() override
    {
        if (m_record.owner != nullptr) {
            m_record.owner->windowWillClose();
        }
        settle();
    }

    void setInfo(const QVariantMap& info)
    {
        const Result<QByteArray> bytes = PropertyList::toXml(info);
        ASSERT_TRUE(bytes.ok());
        ASSERT_TRUE(write(m_folder.filePath(QStringLiteral("Info.plist")), bytes.value()));
        m_bundle = std::make_unique<Bundle>(m_folder.path());
    }

    [[nodiscard]] CrashReporterServices services()
    {
        return {.defaults = m_defaults,
                .bundle = *m_bundle,
                .clock = m_clock,
                .systemControl = m_system,
                .addressBook = m_addressBook,
                .trash = m_trash,
                .libraries = {library(), machineLibrary()},
                .loadWindow =
                    [this](ZTBCrashReporterWindowController& owner) {
                        return CrashReportWindowPtr(new FakeCrashReportWindow(owner, m_record));
                    },
                .patience = m_patience};
    }

    [[nodiscard]] QString library() const { return m_folder.filePath(QStringLiteral("user")); }

    [[nodiscard]] QString machineLibrary() const
    {
        return m_folder.filePath(QStringLiteral("machine"));
    }

    [[nodiscard]] static QString logsIn(const QString& library)
    {
        return library + QStringLiteral("/Logs/DiagnosticReports");
    }

    static bool write(const QString& path, const QByteArray& content)
    {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    }

    /// Writes a log into the folder of the user's logs and answers its path.
    QString makeLog(const QString& name, double modified = kNow + 100.0)
    {
        return makeLogIn(library(), name, modified);
    }

    static QString makeLogIn(const QString& library, const QString& name, double modified)
    {
        QString path = logsIn(library) + u'/' + name;
        EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        EXPECT_TRUE(write(path, "the content of the log\n"));
        setModified(path, modified);
        return path;
    }

    static void setModified(const QString& path, double date)
    {
        const double since1970 = date + kSecondsFrom1970To2001;
        const double whole = std::floor(since1970);
        timespec time{};
        time.tv_sec = static_cast<time_t>(whole);
        time.tv_nsec = std::lround((since1970 - whole) * 1e9);
        const timespec times[2] = {time, time};
        EXPECT_EQ(
            ::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, AT_SYMLINK_NOFOLLOW),
            0);
    }

    void setLastReport(double date)
    {
        m_defaults.setValue(QStringLiteral("ZTBCrashReporterLastCrashReportDate"),
                            QVariant::fromValue(PropertyList::Date{date}));
    }

    /// Whole seconds, as the settings keep dates; none: -1.
    [[nodiscard]] double lastReport() const
    {
        const QVariant value =
            m_defaults.value(QStringLiteral("ZTBCrashReporterLastCrashReportDate"));
        return value.isValid() ? value.value<PropertyList::Date>().secondsSince2001 : -1.0;
    }

    void setAddress(const QString& address)
    {
        m_defaults.setValue(QStringLiteral("ZTBCrashReporterCrashSubmissionURL"), address);
    }

    /// Handles what is waiting, deletions included.
    static void settle()
    {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// Runs the event loop until the condition holds; NO when it never does.
    template <typename Condition>
    [[nodiscard]] static bool waitUntil(Condition condition)
    {
        constexpr int kPatienceMilliseconds = 30000;
        constexpr int kSliceMilliseconds = 20;
        const QDeadlineTimer deadline(kPatienceMilliseconds);
        while (!condition() && !deadline.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, kSliceMilliseconds);
        }
        return condition();
    }

    QTemporaryDir m_folder;
    LogRecorder m_log;
    UserDefaults m_defaults{m_folder.filePath(QStringLiteral("defaults.plist"))};
    std::unique_ptr<Bundle> m_bundle;
    FakeClock m_clock{kNow};
    FakeSystemControl m_system;
    FakeAddressBook m_addressBook;
    FakeTrash m_trash;
    WindowRecord m_record;
    std::chrono::milliseconds m_patience{std::chrono::seconds(30)};
};
