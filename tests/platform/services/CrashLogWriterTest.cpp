#include "CrashLogWriter.h"

#include "Bundle.h"
#include "SignalText.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

using namespace Qt::StringLiterals;

namespace
{

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsSanitized = true;
#elif defined(__has_feature)
constexpr bool kIsSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kIsSanitized = false;
#endif

/// A crash is a process of its own: crashing_program, with a home and a state folder of its own.
class CrashLogWriterTest : public testing::Test
{
public:
    ~CrashLogWriterTest() override
    {
        m_process.kill();
        m_process.waitForFinished();
    }

protected:
    CrashLogWriterTest()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"HOME"_s, m_folder.filePath(u"home"_s));
        environment.insert(u"XDG_STATE_HOME"_s, m_folder.filePath(u"state"_s));
        // The sanitizers handle these signals themselves, and what was there before the program's
        // own handlers comes after them.
        for (const QString& name : {u"ASAN_OPTIONS"_s, u"TSAN_OPTIONS"_s, u"UBSAN_OPTIONS"_s}) {
            environment.insert(name,
                               environment.value(name) +
                                   ":handle_segv=0:handle_sigbus=0:handle_sigill=0:handle_sigfpe=0"
                                   ":handle_abort=0:handle_sigtrap=0"_L1);
        }
        m_process.setProcessEnvironment(environment);
        m_process.setWorkingDirectory(m_folder.path());
        m_process.setProgram(QStringLiteral(CORVANE_CRASHING_PROGRAM));
    }

    void setEnvironment(const QString& name, const QString& value)
    {
        QProcessEnvironment environment = m_process.processEnvironment();
        environment.insert(name, value);
        m_process.setProcessEnvironment(environment);
    }

    void start(const QString& kind)
    {
        m_process.setArguments({kind});
        m_process.start();
        ASSERT_TRUE(m_process.waitForStarted());
        m_id = m_process.processId();
    }

    /// Starts the program and waits until it can be sent a signal.
    void startAndWait(const QString& kind = u"wait"_s)
    {
        start(kind);
        ASSERT_TRUE(m_process.waitForReadyRead(60000));
        ASSERT_EQ(m_process.readAllStandardOutput(), "ready\n");
    }

    /// The signal that the program ended by; 0 when it ended by itself.
    int finish()
    {
        EXPECT_TRUE(m_process.waitForFinished(60000));
        return m_process.exitStatus() == QProcess::CrashExit ? m_process.exitCode() : 0;
    }

    int crash(const QString& kind)
    {
        start(kind);
        return finish();
    }

    [[nodiscard]] QString logFolder() const
    {
        return m_folder.filePath(u"state/corvane/Logs/DiagnosticReports"_s);
    }

    [[nodiscard]] QStringList logs() const
    {
        return QDir(logFolder()).entryList(QDir::Files | QDir::Hidden);
    }

    /// The content of the only log.
    [[nodiscard]] QString log() const
    {
        EXPECT_EQ(logs().size(), 1);
        QFile file(logFolder() + u'/' + logs().value(0));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return QString::fromUtf8(file.readAll());
    }

    /// What follows "LABEL: " on its line.
    [[nodiscard]] QString value(const QString& label) const
    {
        const QRegularExpression line(u"^%1: +(.*)$"_s.arg(label),
                                      QRegularExpression::MultilineOption);
        return line.match(log()).captured(1);
    }

    /// The lines under a headline, up to the next empty one.
    [[nodiscard]] QStringList section(const QString& headline) const
    {
        const QString begin = u'\n' + headline + u'\n';
        const qsizetype at = log().indexOf(begin);
        return at < 0 ? QStringList()
                      : log().mid(at + begin.size()).section(u"\n\n"_s, 0, 0).split(u'\n');
    }

    [[nodiscard]] QStringList stack() const { return section(u"Stack, the newest call first:"_s); }

    [[nodiscard]] QStringList modules() const
    {
        return section(u"Modules, their addresses and build ids:"_s);
    }

    /// The place of the first line of the stack that names the function; -1 when none does.
    [[nodiscard]] qsizetype callOf(const QString& function) const
    {
        const QStringList lines = stack();
        for (qsizetype index = 0; index < lines.size(); ++index) {
            if (lines.at(index).contains(u"] %1 + 0x"_s.arg(function))) {
                return index;
            }
        }
        return -1;
    }

    QTemporaryDir m_folder;
    QProcess m_process;
    qint64 m_id{0};
};

struct Fault {
    QString kind;
    int signal;
    QString name;
    QString function; ///< where it happens; empty: in the system's libraries
};

void PrintTo(const Fault& fault, std::ostream* stream)
{
    *stream << fault.kind.toStdString();
}

class CrashLogWriterFaultTest : public CrashLogWriterTest, public testing::WithParamInterface<Fault>
{
};

} // namespace

TEST_P(CrashLogWriterFaultTest, leavesALogAndEndsTheProcessAsEver)
{
    const Fault& fault = GetParam();
    EXPECT_EQ(crash(fault.kind), fault.signal);
    EXPECT_EQ(value(u"Signal"_s), u"%1 %2"_s.arg(fault.signal).arg(fault.name));
    EXPECT_FALSE(value(u"Code"_s).endsWith(u"unknown"_s)) << value(u"Code"_s).toStdString();
    EXPECT_TRUE(log().endsWith(u"\nEnd of the log\n"_s));
    EXPECT_GE(callOf(u"main"_s), 1);
    EXPECT_TRUE(stack().constFirst().startsWith(u"  0  "_s));
    if (!fault.function.isEmpty()) {
        EXPECT_EQ(callOf(fault.function), 0);
    }
}

/// A damaged heap is found by glibc; a sanitizer has a heap of its own.
std::vector<Fault> faults()
{
    std::vector<Fault> all{Fault{u"segv"_s, SIGSEGV, u"SIGSEGV"_s, u"writeToNowhere"_s},
                           Fault{u"bus"_s, SIGBUS, u"SIGBUS"_s, u"readBehindFile"_s},
                           Fault{u"ill"_s, SIGILL, u"SIGILL"_s, u"executeRubbish"_s},
                           Fault{u"fpe"_s, SIGFPE, u"SIGFPE"_s, u"divideByZero"_s},
                           Fault{u"abort"_s, SIGABRT, u"SIGABRT"_s, {}},
                           Fault{u"trap"_s, SIGTRAP, u"SIGTRAP"_s, {}},
                           Fault{u"sys"_s, SIGSYS, u"SIGSYS"_s, {}},
                           Fault{u"overflow"_s, SIGSEGV, u"SIGSEGV"_s, u"recurse"_s},
                           Fault{u"exception"_s, SIGABRT, u"SIGABRT"_s, {}}};
    if (!kIsSanitized) {
        all.push_back(Fault{u"heap"_s, SIGABRT, u"SIGABRT"_s, {}});
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(Each,
                         CrashLogWriterFaultTest,
                         testing::ValuesIn(faults()),
                         [](const testing::TestParamInfo<Fault>& fault) {
                             return fault.param.kind.toStdString();
                         });

TEST_F(CrashLogWriterTest, withoutACrashThereIsNeitherLogNorFolder)
{
    start(u"none"_s);
    EXPECT_EQ(finish(), 0);
    EXPECT_EQ(m_process.exitCode(), 0);
    EXPECT_FALSE(QFileInfo::exists(m_folder.filePath(u"state"_s)));
}

TEST_F(CrashLogWriterTest, theNameTellsApplicationTimeAndProcess)
{
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
    crash(u"abort"_s);
    const QRegularExpression pattern(
        uR"(^Corvane_(\d{4}-\d\d-\d\d)_(\d\d-\d\d-\d\d)_(\d+)\.crash$)"_s);
    const auto match = pattern.match(logs().value(0));
    ASSERT_TRUE(match.hasMatch()) << logs().value(0).toStdString();
    QDateTime time = QDateTime::fromString(match.captured(1) + u' ' + match.captured(2),
                                           u"yyyy-MM-dd HH-mm-ss"_s);
    time.setTimeSpec(Qt::UTC);
    EXPECT_GE(time, before);
    EXPECT_LE(time, QDateTime::currentDateTimeUtc());
    EXPECT_EQ(match.captured(3).toLongLong(), m_id);
    EXPECT_EQ(value(u"Date"_s), time.toString(u"yyyy-MM-dd HH:mm:ss"_s) + " UTC"_L1);
}

TEST_F(CrashLogWriterTest, theProgramIsSaid)
{
    crash(u"abort"_s);
    EXPECT_TRUE(log().startsWith(u"Program:      crashing_program (Corvane)\n"_s));
    EXPECT_EQ(value(u"Version"_s), u"1.2 (1.2.3)"_s);
    EXPECT_TRUE(value(u"System"_s).contains(QSysInfo::prettyProductName()));
    EXPECT_EQ(value(u"Process"_s).toLongLong(), m_id);
}

TEST_F(CrashLogWriterTest, theFactsAreThoseOfTheBundle)
{
    QFile information(m_folder.filePath(u"Info.plist"_s));
    ASSERT_TRUE(information.open(QIODevice::WriteOnly));
    information.write("<plist version=\"1.0\"><dict><key>CFBundleName</key><string>Name</string>"
                      "<key>CFBundleShortVersionString</key><string>1.0</string>"
                      "<key>CFBundleVersion</key><string>77</string></dict></plist>");
    information.close();
    const CrashLogFacts facts =
        CrashLogWriter::factsOf(Bundle(m_folder.path()), u"name-of-program"_s);
    EXPECT_EQ(facts.applicationName, u"Name"_s);
    EXPECT_EQ(facts.program, u"name-of-program"_s);
    EXPECT_EQ(facts.version, u"1.0"_s);
    EXPECT_EQ(facts.build, u"77"_s);
    EXPECT_EQ(facts.folder, QDir::homePath() + "/.local/state/corvane/Logs/DiagnosticReports"_L1);
}

TEST_F(CrashLogWriterTest, onlyTheOwnerMayReadIt)
{
    m_process.setChildProcessModifier([] { umask(0); });
    crash(u"abort"_s);
    EXPECT_EQ(QFile::permissions(logFolder() + u'/' + logs().value(0)) &
                  (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther |
                   QFile::ExeOwner | QFile::ReadOwner | QFile::WriteOwner),
              QFile::ReadOwner | QFile::WriteOwner);
}

TEST_F(CrashLogWriterTest, theFaultIsTold)
{
    crash(u"segv"_s);
    EXPECT_TRUE(value(u"Code"_s).startsWith(u"1 SEGV_MAPERR: "_s));
    EXPECT_EQ(value(u"Address"_s).toULongLong(nullptr, 16), 16U);
    EXPECT_EQ(value(u"Exception"_s), QString());
}

TEST_F(CrashLogWriterTest, aSignalFromOutsideIsLoggedWithItsSender)
{
    for (const int signal : {SIGSEGV, SIGABRT, SIGTRAP, SIGSYS, SIGBUS}) {
        startAndWait();
        ASSERT_EQ(kill(static_cast<pid_t>(m_id), signal), 0);
        EXPECT_EQ(finish(), signal);
        EXPECT_EQ(value(u"Code"_s), u"0 SI_USER: sent by a process"_s);
        EXPECT_EQ(value(u"Sent by"_s), u"process %1"_s.arg(getpid()));
        EXPECT_GT(callOf(u"main"_s), 0);
        ASSERT_TRUE(QFile::remove(logFolder() + u'/' + logs().value(0)));
    }
}

TEST_F(CrashLogWriterTest, signalsThatAreNoFaultsLeaveNoLog)
{
    startAndWait();
    ASSERT_EQ(kill(static_cast<pid_t>(m_id), SIGTERM), 0);
    EXPECT_EQ(finish(), SIGTERM);
    EXPECT_EQ(logs(), QStringList());
}

TEST_F(CrashLogWriterTest, whoeverHandledTheSignalBeforeSeesItAsItCame)
{
    EXPECT_EQ(crash(u"handled-before-segv"_s), 0);
    EXPECT_EQ(m_process.exitCode(), 42);
    EXPECT_EQ(m_process.readLine(), "signal 11 code 1 address 0x10 in writeToNowhere\n");
    EXPECT_TRUE(log().endsWith(u"\nEnd of the log\n"_s));
}

TEST_F(CrashLogWriterTest, whoeverHandledTheSignalBeforeSeesItInItsThread)
{
    EXPECT_EQ(crash(u"handled-before-thread"_s), 0);
    EXPECT_EQ(m_process.exitCode(), 42);
    EXPECT_EQ(m_process.readLine(),
              "signal 11 code 1 address 0x10 in writeToNowhere of another thread\n");
    EXPECT_FALSE(value(u"Thread"_s).endsWith(u"(main)"_s));
    EXPECT_TRUE(log().endsWith(u"\nEnd of the log\n"_s));
}

TEST_F(CrashLogWriterTest, afterTheLogAlarmsAreAsBefore)
{
    EXPECT_EQ(crash(u"handled-before-segv"_s), 0);
    m_process.readLine();
    EXPECT_EQ(m_process.readLine(), "alarms as before, 0 s left\n");
}

TEST_F(CrashLogWriterTest, whatIsSentAndWasIgnoredStaysIgnored)
{
    startAndWait(u"ignored-before-wait"_s);
    for (const int signal : SignalText::kOfFaults) {
        ASSERT_EQ(kill(static_cast<pid_t>(m_id), signal), 0);
    }
    // It comes after them.
    ASSERT_EQ(kill(static_cast<pid_t>(m_id), SIGTERM), 0);
    EXPECT_EQ(finish(), SIGTERM);
    EXPECT_EQ(logs(), QStringList());
}

TEST_F(CrashLogWriterTest, aFaultIsLoggedAlsoWhereItsSignalWasIgnored)
{
    for (const auto& [kind, signal] :
         {std::pair(u"segv"_s, SIGSEGV), std::pair(u"abort"_s, SIGABRT)}) {
        EXPECT_EQ(crash(u"ignored-before-"_s + kind), signal);
        EXPECT_TRUE(log().endsWith(u"\nEnd of the log\n"_s));
        ASSERT_TRUE(QFile::remove(logFolder() + u'/' + logs().value(0)));
    }
}

TEST_F(CrashLogWriterTest, anExceptionIsToldWithoutPaths)
{
    EXPECT_EQ(crash(u"exception"_s), SIGABRT);
    EXPECT_EQ(value(u"Exception"_s), u"std::runtime_error"_s);
    EXPECT_EQ(value(u"Text"_s), u"No \"<text>\" there"_s);
    EXPECT_FALSE(log().contains(u"anna"_s));
    // Where it was thrown: nothing was unwound.
    EXPECT_GT(callOf(u"__cxa_throw"_s), 0);
    EXPECT_GT(callOf(u"main"_s), callOf(u"__cxa_throw"_s));
    // The usual words on standard error are as ever.
    EXPECT_TRUE(m_process.readAllStandardError().contains("std::runtime_error"));
}

TEST_F(CrashLogWriterTest, anExceptionWithoutTextIsToldByItsType)
{
    EXPECT_EQ(crash(u"plain-exception"_s), SIGABRT);
    EXPECT_EQ(value(u"Exception"_s), u"(anonymous namespace)::PlainThing"_s);
    EXPECT_FALSE(log().contains(u"Text:"_s));
}

TEST_F(CrashLogWriterTest, anEndWithoutAnExceptionIsTold)
{
    EXPECT_EQ(crash(u"terminate"_s), SIGABRT);
    EXPECT_EQ(value(u"Exception"_s), u"none, std::terminate was called"_s);
}

TEST_F(CrashLogWriterTest, anExceptionInAThreadIsTold)
{
    EXPECT_EQ(crash(u"thread-exception"_s), SIGABRT);
    EXPECT_EQ(value(u"Exception"_s), u"std::out_of_range"_s);
    EXPECT_EQ(value(u"Text"_s), u"too far"_s);
    EXPECT_FALSE(value(u"Thread"_s).endsWith(u"(main)"_s));
}

TEST_F(CrashLogWriterTest, theThreadIsTold)
{
    EXPECT_EQ(crash(u"thread"_s), SIGSEGV);
    EXPECT_TRUE(value(u"Thread"_s).endsWith(u" \"busy worker\""_s))
        << value(u"Thread"_s).toStdString();
    EXPECT_NE(value(u"Thread"_s).section(u' ', 0, 0).toLongLong(), m_id);
    EXPECT_EQ(callOf(u"writeToNowhere"_s), 0);
    EXPECT_EQ(callOf(u"main"_s), -1);
}

TEST_F(CrashLogWriterTest, theMainThreadIsToldToBeIt)
{
    crash(u"segv"_s);
    EXPECT_EQ(value(u"Thread"_s), u"%1 \"crashing_progra\" (main)"_s.arg(m_id));
}

TEST_F(CrashLogWriterTest, ofADeepStackBothEndsAreTold)
{
    EXPECT_EQ(crash(u"overflow"_s), SIGSEGV);
    const QStringList lines = stack();
    ASSERT_EQ(lines.size(), 96 + 1 + 32);
    const QRegularExpression leftOut(u"^ +(\\d+) calls are left out$"_s);
    const qint64 count = leftOut.match(lines.at(96)).captured(1).toLongLong();
    EXPECT_GT(count, 1000);
    EXPECT_EQ(lines.constLast().trimmed().section(u' ', 0, 0).toLongLong(), 96 + count + 32 - 1);
    EXPECT_GT(callOf(u"main"_s), 97);
}

TEST_F(CrashLogWriterTest, theOverflowOfAThreadsStackIsLoggedOnItsSignalStack)
{
    EXPECT_EQ(crash(u"thread-overflow"_s), SIGSEGV);
    EXPECT_EQ(callOf(u"recurse"_s), 0);
    EXPECT_TRUE(log().endsWith(u"\nEnd of the log\n"_s));
}

// Where a call to nowhere came from is known of these two processors.
#if defined(__x86_64__) || defined(__aarch64__)
TEST_F(CrashLogWriterTest, aCallToNowhereIsToldWithItsCaller)
{
    EXPECT_EQ(crash(u"call"_s), SIGSEGV);
    EXPECT_EQ(stack().constFirst(), u"  0  0x0000000000000000 in no module"_s);
    EXPECT_EQ(callOf(u"callNowhere"_s), 1);
    EXPECT_GT(callOf(u"main"_s), 1);
}
#endif

TEST_F(CrashLogWriterTest, twoThreadsThatCrashLeaveOneLog)
{
    // The second crashes while the log of the first is written, and waits for its end.
    EXPECT_EQ(crash(u"two-threads"_s), SIGABRT);
    EXPECT_EQ(value(u"Signal"_s), u"6 SIGABRT"_s);
    EXPECT_TRUE(value(u"Thread"_s).endsWith(u"(main)"_s));
    EXPECT_EQ(callOf(u"writeToNowhere"_s), -1);
    EXPECT_TRUE(log().endsWith(u"\nEnd of the log\n"_s));
}

TEST_F(CrashLogWriterTest, aSecondCrashEndsTheProcessAtOnceAndLeavesWhatWasWritten)
{
    EXPECT_EQ(crash(u"second-crash"_s), SIGSEGV);
    EXPECT_EQ(value(u"Signal"_s), u"6 SIGABRT"_s);
    EXPECT_EQ(stack().constFirst().left(5), u"  0  "_s);
    EXPECT_FALSE(log().contains(u"End of the log"_s));
}

TEST_F(CrashLogWriterTest, anAbortWhileTheLogIsWrittenEndsTheProcessAtOnce)
{
    EXPECT_EQ(crash(u"abort-in-handler"_s), SIGABRT);
    EXPECT_EQ(value(u"Signal"_s), u"11 SIGSEGV"_s);
    EXPECT_EQ(stack().constFirst().left(5), u"  0  "_s);
    EXPECT_FALSE(log().contains(u"End of the log"_s));
}

TEST_F(CrashLogWriterTest, whatHangsEndsTheProcessAllTheSame)
{
    EXPECT_EQ(crash(u"hang"_s), SIGABRT);
    EXPECT_EQ(value(u"Signal"_s), u"6 SIGABRT"_s);
}

TEST_F(CrashLogWriterTest, withoutAFolderTheProgramCrashesWithoutALog)
{
    QFile inTheWay(m_folder.filePath(u"state"_s));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    EXPECT_EQ(crash(u"segv"_s), SIGSEGV);
    EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::Files), QStringList(u"state"_s));
    EXPECT_EQ(inTheWay.size(), 0);
}

TEST_F(CrashLogWriterTest, aCrashFindsTheFolderOrMakesIt)
{
    ASSERT_FALSE(QFileInfo::exists(logFolder()));
    EXPECT_EQ(crash(u"segv"_s), SIGSEGV);
    EXPECT_EQ(logs().size(), 1);
    EXPECT_EQ(crash(u"segv"_s), SIGSEGV);
    EXPECT_EQ(logs().size(), 2);
}

TEST_F(CrashLogWriterTest, aModuleWhoseFileWasMadeShorterStopsNothing)
{
    EXPECT_EQ(crash(u"emptied-module"_s), SIGSEGV);
    EXPECT_EQ(callOf(u"writeToNowhere"_s), 0);
    EXPECT_GT(callOf(u"main"_s), 0);
    EXPECT_EQ(modules().filter(u"[] emptied.so"_s).size(), 1);
    EXPECT_TRUE(log().endsWith(u"\nEnd of the log\n"_s));
}

TEST_F(CrashLogWriterTest, aProgramThatCanOpenNothingMoreLeavesAWholeLog)
{
    EXPECT_EQ(crash(u"no-descriptors"_s), SIGSEGV);
    EXPECT_EQ(callOf(u"writeToNowhere"_s), 0);
    // Mapped after the begin, so the list is that of the crash.
    EXPECT_EQ(modules().filter(u"emptied.so"_s).size(), 1);
    EXPECT_TRUE(log().endsWith(u"\nEnd of the log\n"_s));
}

TEST_F(CrashLogWriterTest, everyCallSaysWhichBuildOfWhatItIsIn)
{
    crash(u"abort"_s);
    const QRegularExpression call(
        uR"(^ *\d+  (\S+) \+ 0x[0-9a-f]+ \[([0-9a-f]*)\]( \S+ \+ 0x[0-9a-f]+)?$)"_s);
    const QStringList known = modules();
    for (const QString& line : stack()) {
        const auto match = call.match(line);
        ASSERT_TRUE(match.hasMatch()) << line.toStdString();
        const QString file = match.captured(1);
        if (match.captured(1).startsWith(u"crashing_program"_s) ||
            match.captured(1).startsWith(u"libc.so"_s)) {
            EXPECT_FALSE(match.captured(2).isEmpty()) << line.toStdString();
        }
        const QString id = u" [%1] "_s.arg(match.captured(2));
        EXPECT_TRUE(std::any_of(known.begin(), known.end(), [&](const QString& module) {
            return module.contains(id) && module.endsWith(file);
        })) << line.toStdString();
    }
}

TEST_F(CrashLogWriterTest, toolsFindTheLineOfACall)
{
    const QString tool = QStandardPaths::findExecutable(u"addr2line"_s);
    ASSERT_FALSE(tool.isEmpty()) << "it comes with the compiler: install binutils";
    crash(u"segv"_s);
    const QString address = stack().constFirst().section(u' ', 6, 6);
    ASSERT_TRUE(address.startsWith(u"0x"_s)) << stack().constFirst().toStdString();
    QProcess lookUp;
    lookUp.start(tool, {u"-fe"_s, QStringLiteral(CORVANE_CRASHING_PROGRAM), address});
    ASSERT_TRUE(lookUp.waitForFinished(60000));
    EXPECT_EQ(lookUp.readLine(), "writeToNowhere\n");
}

TEST_F(CrashLogWriterTest, onlyTheSystemsFoldersAreNamed)
{
    crash(u"abort"_s);
    const QStringList lines = modules();
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const QString& line) {
        return line.endsWith(u"] crashing_program"_s);
    }));
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const QString& line) {
        return line.contains(QRegularExpression(u"\\] /.*/libc\\.so"_s));
    }));
}

TEST_F(CrashLogWriterTest, noFolderBelowTheHomeIsNamed)
{
    setEnvironment(u"HOME"_s, u"/usr"_s);
    crash(u"abort"_s);
    EXPECT_FALSE(log().contains(u"/usr"_s));
    EXPECT_TRUE(log().contains(u"] libc.so"_s));
}

TEST_F(CrashLogWriterTest, nothingOfTheSurroundingsIsTold)
{
    setEnvironment(u"CORVANE_TEST_SECRET"_s, u"do-not-tell-this"_s);
    for (const QString& kind : {u"segv"_s, u"exception"_s, u"thread"_s}) {
        crash(kind);
        EXPECT_FALSE(log().contains(u"CORVANE_TEST_SECRET"_s));
        EXPECT_FALSE(log().contains(u"do-not-tell-this"_s));
        EXPECT_FALSE(log().contains(m_folder.path()));
        ASSERT_TRUE(QFile::remove(logFolder() + u'/' + logs().value(0)));
    }
}
