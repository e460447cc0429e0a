#include "ZTBCrashReporter.h"

#include "Assertion.h"
#include "CrashReporterFixture.h"
#include "NamedException.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <climits>
#include <filesystem>

using namespace Qt::StringLiterals;

namespace
{

/// Which log is offered, and when none is.
class ZTBCrashReporterTest : public CrashReporterFixture
{
protected:
    void SetUp() override
    {
        CrashReporterFixture::SetUp();
        setAddress(u"http://127.0.0.1:1/submit"_s);
    }

    void check() { ZTBCrashReporter::checkForNewCrashes(services()); }

    /// The log in the window that is up; null when there is no window.
    [[nodiscard]] QString offered() const
    {
        return m_record.owner == nullptr ? QString() : m_record.owner->crashLogPath();
    }

    [[nodiscard]] QStringList paths() { return ZTBCrashReporter::crashLogPaths(services()); }

    /// The same, in an order that can be foretold.
    [[nodiscard]] QStringList sortedPaths()
    {
        QStringList sorted = paths();
        sorted.sort();
        return sorted;
    }
};

TEST_F(ZTBCrashReporterTest, aLogThatIsLaterThanTheLastReportIsOffered)
{
    setLastReport(kNow);
    const QString log = makeLog(u"Corvane_2014-02-03_04-06-46_1.crash"_s, kNow + 1.0);
    check();
    EXPECT_EQ(offered(), log);
    EXPECT_TRUE(m_record.visible);
    EXPECT_EQ(m_record.owner->submissionURL(), QUrl(u"http://127.0.0.1:1/submit"_s));
    EXPECT_EQ(lastReport(), kNow) << "looking advances nothing";
    EXPECT_TRUE(m_log.entries().isEmpty());
}

TEST_F(ZTBCrashReporterTest, onTheFirstLaunchOldLogsAreNotOfferedAndTheDateIsNow)
{
    makeLog(u"Corvane_old.crash"_s, kNow - 10.0);
    check();
    EXPECT_EQ(m_record.windows, 0);
    EXPECT_EQ(lastReport(), kNow);
}

TEST_F(ZTBCrashReporterTest, theFirstLaunchDateIsExactToItsFraction)
{
    m_clock.advance(0.75);
    makeLog(u"Corvane_before.crash"_s, kNow + 0.5);
    check();
    EXPECT_EQ(m_record.windows, 0);
    check();
    EXPECT_EQ(m_record.windows, 0) << "nor on the next launch within the same second";
    makeLog(u"Corvane_after.crash"_s, kNow + 0.875);
    check();
    EXPECT_EQ(offered(), logsIn(library()) + u"/Corvane_after.crash"_s);
}

TEST_F(ZTBCrashReporterTest, aLogOfExactlyTheStoredDateIsNotOffered)
{
    setLastReport(kNow);
    makeLog(u"Corvane.crash"_s, kNow);
    check();
    EXPECT_EQ(m_record.windows, 0);
    makeLog(u"Corvane.crash"_s, kNow + 0.001);
    check();
    EXPECT_EQ(m_record.windows, 1);
}

TEST_F(ZTBCrashReporterTest, ofTwoNewLogsOnlyTheFirstInTheOrderOfEnumerationIsOffered)
{
    setLastReport(kNow);
    for (int number = 0; number < 50; ++number) {
        makeLog(u"Corvane_%1.crash"_s.arg(number * 37 % 50), kNow - 5.0);
    }
    // The folder's own order, by another way.
    QStringList order;
    for (const auto& entry : std::filesystem::directory_iterator(logsIn(library()).toStdString())) {
        order.append(QString::fromStdString(entry.path().string()));
    }
    ASSERT_EQ(order.size(), 50);
    EXPECT_EQ(paths(), order);
    // Of the new ones the first is the oldest; then the newest.
    for (const double step : {1.0, -1.0}) {
        double date = kNow + 100.0;
        for (const QString& path : order.sliced(1)) {
            date += step;
            setModified(path, date);
        }
        check();
        EXPECT_EQ(offered(), order.at(1));
        m_record.owner->windowWillClose();
    }
    EXPECT_EQ(m_record.windows, 2);
}

TEST_F(ZTBCrashReporterTest, aLogWhoseDateCannotBeReadIsPassedOverSilently)
{
    setLastReport(kNow);
    // A file that its folder lists, at a path that is longer than any the system takes.
    const QString top = logsIn(library()) + u"/Corvane_deep"_s;
    QString folder = top;
    while (folder.size() < PATH_MAX - 200) {
        folder += u'/' + QString(100, u'd');
    }
    ASSERT_TRUE(QDir().mkpath(folder));
    const int descriptor = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(descriptor, 0);
    const QByteArray name(220, 'f');
    const int file = ::openat(descriptor, name.constData(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    EXPECT_GE(file, 0);
    ::close(file);
    for (QString above = folder; above != logsIn(library()); above = QFileInfo(above).path()) {
        setModified(above, kNow - 5.0);
    }
    EXPECT_TRUE(paths().contains(folder + u'/' + QString::fromLatin1(name)));
    check();
    EXPECT_EQ(m_record.windows, 0);
    const QString log = makeLog(u"Corvane.crash"_s);
    check();
    EXPECT_EQ(offered(), log);
    EXPECT_TRUE(m_log.entries().isEmpty());
    EXPECT_EQ(::unlinkat(descriptor, name.constData(), 0), 0);
    ::close(descriptor);
}

TEST_F(ZTBCrashReporterTest, aServerIsGivenAMinuteOfSilence)
{
    const CrashReporterServices given{.defaults = m_defaults,
                                      .bundle = *m_bundle,
                                      .clock = m_clock,
                                      .systemControl = m_system,
                                      .addressBook = m_addressBook,
                                      .trash = m_trash,
                                      .libraries = {},
                                      .loadWindow = {}};
    EXPECT_EQ(given.patience, std::chrono::seconds(60));
}

TEST_F(ZTBCrashReporterTest, anOlderLogIsPassedOver)
{
    setLastReport(kNow);
    makeLog(u"Corvane_a.crash"_s, kNow + 5.0);
    makeLog(u"Corvane_b.crash"_s, kNow + 5.0);
    const QStringList order = paths();
    setModified(order.first(), kNow - 5.0);
    check();
    EXPECT_EQ(offered(), order.last());
}

TEST_F(ZTBCrashReporterTest, theUsersAddressOverridesTheBundles)
{
    setInfo({{u"CFBundleName"_s, u"Corvane"_s},
             {u"ZTBCrashReporterCrashSubmissionURL"_s, u"https://bundle.example/"_s}});
    setLastReport(kNow);
    makeLog(u"Corvane.crash"_s);
    check();
    EXPECT_EQ(m_record.owner->submissionURL(), QUrl(u"http://127.0.0.1:1/submit"_s));
    m_record.owner->windowWillClose();
    m_defaults.remove(u"ZTBCrashReporterCrashSubmissionURL"_s);
    check();
    EXPECT_EQ(m_record.owner->submissionURL(), QUrl(u"https://bundle.example/"_s));
}

TEST_F(ZTBCrashReporterTest, withoutAnAddressItRaisesBeforeAnyLogIsLookedAt)
{
    m_defaults.remove(u"ZTBCrashReporterCrashSubmissionURL"_s);
    try {
        check();
        FAIL() << "nothing was raised";
    } catch (const GeneralException& exception) {
        EXPECT_EQ(exception.name(), u"Missing ZTBCrashReporterCrashSubmissionURL"_s);
        EXPECT_EQ(
            exception.reason(),
            u"You must specify the URL for crash log submission as the "
            "ZTBCrashReporterCrashSubmissionURL in either Info.plist or the user defaults!"_s);
    }
    EXPECT_EQ(lastReport(), -1.0);
}

TEST_F(ZTBCrashReporterTest, anAddressThatIsNoUrlFailsOnlyWhenALogIsOffered)
{
    setLastReport(kNow);
    for (const QString& address : {u""_s, u"http://not a url:x/"_s}) {
        setAddress(address);
        EXPECT_NO_THROW(check());
    }
    makeLog(u"Corvane.crash"_s);
    for (const QString& address : {u""_s, u"http://not a url:x/"_s}) {
        setAddress(address);
        try {
            check();
            ADD_FAILURE() << "nothing was raised";
        } catch (const AssertionFailure& failure) {
            EXPECT_EQ(failure.description(),
                      u"Invalid parameter not satisfying: nil != submissionURL"_s);
        }
    }
    EXPECT_EQ(m_record.windows, 0);
}

TEST_F(ZTBCrashReporterTest, whereTheUsersFolderIsThereTheMachinesIsNotSearched)
{
    setLastReport(kNow);
    makeLogIn(machineLibrary(), u"Corvane.crash"_s, kNow + 5.0);
    EXPECT_EQ(ZTBCrashReporter::crashLogDirectories(services()),
              QStringList{logsIn(machineLibrary())});
    EXPECT_EQ(paths().size(), 1);
    ASSERT_TRUE(QDir().mkpath(logsIn(library())));
    EXPECT_EQ(ZTBCrashReporter::crashLogDirectories(services()), QStringList{logsIn(library())});
    EXPECT_EQ(paths(), QStringList());
    check();
    EXPECT_EQ(m_record.windows, 0);
}

TEST_F(ZTBCrashReporterTest, aFileInPlaceOfTheFolderIsNoFolder)
{
    ASSERT_TRUE(QDir().mkpath(library() + u"/Logs"_s));
    ASSERT_TRUE(write(logsIn(library()), "a file"));
    EXPECT_EQ(ZTBCrashReporter::crashLogDirectories(services()), QStringList());
    EXPECT_EQ(paths(), QStringList());
    EXPECT_NO_THROW(check());
}

TEST_F(ZTBCrashReporterTest, whatBeginsWithTheNameIsTakenWhateverItIs)
{
    const QStringList taken{makeLog(u"Corvane"_s),
                            makeLog(u"Corvane \u00e4 b.txt"_s),
                            makeLog(u"CorvaneX_of another application.crash"_s),
                            makeLog(u"Corvane_folder/anything"_s)};
    makeLog(u"corvane.crash"_s);
    makeLog(u" Corvane.crash"_s);
    makeLog(u"Other.crash"_s);
    makeLog(u"Retired/Corvane.crash"_s);
    makeLog(u".Corvane.crash"_s);
    QStringList expected = taken;
    expected.append(logsIn(library()) + u"/Corvane_folder"_s);
    expected.sort();
    EXPECT_EQ(sortedPaths(), expected);
}

TEST_F(ZTBCrashReporterTest, aBundleWithoutANameHasNoLogs)
{
    makeLog(u"Corvane.crash"_s);
    setInfo({});
    EXPECT_EQ(paths(), QStringList());
}

TEST_F(ZTBCrashReporterTest, withoutLogsNothingHappens)
{
    check();
    check();
    EXPECT_EQ(m_record.windows, 0);
    EXPECT_TRUE(m_log.entries().isEmpty());
    EXPECT_FALSE(QFile::exists(library())) << "and no folder is made";
}

TEST_F(ZTBCrashReporterTest, anIgnoredLogIsOfferedAgainOnTheNextLaunch)
{
    setLastReport(kNow);
    const QString log = makeLog(u"Corvane.crash"_s);
    check();
    m_record.owner->ignoreReport(nullptr);
    m_record.owner->windowWillClose();
    check();
    EXPECT_EQ(m_record.windows, 2);
    EXPECT_EQ(offered(), log);
}

TEST_F(ZTBCrashReporterTest, aDiscardedLogIsNotOfferedAgain)
{
    setLastReport(kNow);
    makeLog(u"Corvane.crash"_s);
    check();
    m_record.owner->discardReport(nullptr);
    m_record.owner->windowWillClose();
    check();
    EXPECT_EQ(m_record.windows, 1);
    EXPECT_EQ(lastReport(), kNow);
}

} // namespace
