#include "ProcessFixture.h"

#include <QJsonArray>

#include <pty.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

using namespace Qt::StringLiterals;

namespace
{

class MainTest : public ProcessFixture
{
protected:
    /// Enough photos for a signal to come in the midst of them.
    void addPhotos()
    {
        auto opened = PhotoLibrary::open(library(), {.access = Access::Write, .afterCrash = false});
        ASSERT_TRUE(opened.ok());
        for (int i = 0; i < 40; ++i) {
            importPhoto(*opened.value(), u"Photo %1.jpg"_s.arg(i), u"Many"_s, 10 + i);
        }
        ASSERT_TRUE(opened.value()->close().ok());
    }

    /// Waits for words on standard error. False when the process ended before.
    bool waitForError(const QByteArray& words)
    {
        QByteArray seen;
        while (!seen.contains(words)) {
            if (!m_process.waitForReadyRead(30000)) {
                return false;
            }
            seen += m_process.readAllStandardError();
        }
        return true;
    }

    /// By a checker that knows nothing of the program, where it lies beside the source tree.
    void expectAcceptedLibrary()
    {
        const QString script = QStringLiteral(CORVANE_SHARED_DATA "/../accept/librarycheck.py");
        if (QFile::exists(script)) {
            QProcess check;
            check.start(u"python3"_s, {u"-B"_s, script, library()});
            ASSERT_TRUE(check.waitForFinished(120000));
            EXPECT_EQ(check.exitCode(), 0) << check.readAllStandardOutput().toStdString();
        }
    }

    /// The test's own folder is closed to others.
    void openForAll()
    {
        ASSERT_TRUE(QFile::setPermissions(m_folder.path(),
                                          QFile::permissions(m_folder.path()) | QFile::ReadOther |
                                              QFile::ExeOther));
    }

    void interruptInTheMidst(int signal)
    {
        addPhotos();
        m_process.setReadChannel(QProcess::StandardError);
        start({u"scan"_s,
               library(),
               u"--all"_s,
               u"--no-tag"_s,
               u"--trash"_s,
               u"--report"_s,
               reportPath()});
        ASSERT_TRUE(waitForError("Found 0 images with issues"));
        const qint64 process = m_process.processId();
        ASSERT_GT(process, 0);
        ASSERT_EQ(kill(static_cast<pid_t>(process), signal), 0);
        EXPECT_EQ(finish(), 130);

        qsizetype converted = 0;
        const QJsonArray entries = report().value(u"photos"_s).toArray();
        EXPECT_EQ(entries.size(), 43);
        for (const auto& entry : entries) {
            converted += entry.toObject().value(u"outcome"_s).toString() == u"converted"_s ? 1 : 0;
        }
        EXPECT_LT(converted, 43);
        EXPECT_EQ(photos().size(), 43); // every copy took its original's place
        EXPECT_EQ(run({u"info"_s, library()}), 0);
        EXPECT_TRUE(m_out.contains("In the trash:      " + QByteArray::number(converted) + " ("))
            << m_out.toStdString();
        EXPECT_TRUE(m_out.endsWith("Problems:          none\n"));
    }
};

/// The arguments of the program, so that somebody runs it to whom files can be forbidden.
QStringList asOrdinaryUser(QProcess& process, const QStringList& arguments)
{
    if (geteuid() != 0) {
        return arguments;
    }
    process.setProgram(u"setpriv"_s);
    return QStringList{u"--reuid=65534"_s,
                       u"--regid=65534"_s,
                       u"--clear-groups"_s,
                       QStringLiteral(CORVANE_CLI)} +
           arguments;
}

/// What a process writes to a terminal of 80 columns.
class OnTerminal final
{
    Q_DISABLE_COPY_MOVE(OnTerminal)
public:
    explicit OnTerminal(QProcess& process)
    {
        const winsize size{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
        m_open = openpty(&m_far, &m_near, nullptr, nullptr, &size) == 0;
        process.setChildProcessModifier([near = m_near] {
            dup2(near, STDIN_FILENO);
            dup2(near, STDERR_FILENO);
        });
    }

    ~OnTerminal()
    {
        if (m_open) {
            close(m_far);
            close(m_near);
        }
    }

    [[nodiscard]] bool isOpen() const { return m_open; }

    /// All that has been written; the process has ended.
    [[nodiscard]] QByteArray written() const
    {
        int waiting = 0;
        ioctl(m_far, FIONREAD, &waiting);
        QByteArray bytes(waiting, '\0');
        const ssize_t count = read(m_far, bytes.data(), static_cast<std::size_t>(bytes.size()));
        bytes.resize(count < 0 ? 0 : static_cast<qsizetype>(count));
        return bytes;
    }

private:
    int m_far{-1};
    int m_near{-1};
    bool m_open{false};
};

} // namespace

TEST_F(MainTest, theVersionIsSaid)
{
    start({u"--version"_s});
    EXPECT_EQ(finish(), 0);
    EXPECT_TRUE(m_process.readAllStandardOutput().startsWith("corvane-cli "));
    EXPECT_EQ(m_process.readAllStandardError(), QByteArray());
}

TEST_F(MainTest, anInterruptEndsAScanOrderly)
{
    interruptInTheMidst(SIGINT);
}

TEST_F(MainTest, aTerminationEndsAScanOrderly)
{
    interruptInTheMidst(SIGTERM);
}

TEST_F(MainTest, aCrashInTheMidstOfAScanLeavesALogAndASoundLibrary)
{
    addPhotos();
    QProcessEnvironment environment = m_process.processEnvironment();
    environment.insert(u"XDG_STATE_HOME"_s, m_home.filePath(u"state"_s));
    m_process.setProcessEnvironment(environment);
    m_process.setChildProcessModifier([] {
        const rlimit limit{.rlim_cur = 1, .rlim_max = 1}; // leave no core
        setrlimit(RLIMIT_CORE, &limit);
    });
    m_process.setReadChannel(QProcess::StandardError);
    start({u"scan"_s, library(), u"--all"_s, u"--no-tag"_s, u"--trash"_s});
    ASSERT_TRUE(waitForError("Found 0 images with issues"));
    const qint64 process = m_process.processId();
    ASSERT_GT(process, 0);
    ASSERT_EQ(kill(static_cast<pid_t>(process), SIGSEGV), 0);
    EXPECT_EQ(finish(), -1);
    EXPECT_EQ(m_process.exitCode(), SIGSEGV);

    const QDir logs(m_home.filePath(u"state/corvane/Logs/DiagnosticReports"_s));
    const QStringList names = logs.entryList(QDir::Files);
    ASSERT_EQ(names.size(), 1);
    EXPECT_TRUE(names.first().startsWith(u"Corvane_"_s));
    EXPECT_TRUE(names.first().endsWith(u"_%1.crash"_s.arg(process)));
    QFile log(logs.filePath(names.first()));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    const QByteArray content = log.readAll();
    EXPECT_TRUE(content.startsWith("Program:      corvane-cli (Corvane)\n"));
    EXPECT_TRUE(content.contains("\nSignal:       11 SIGSEGV\n"));
    EXPECT_TRUE(content.endsWith("\nEnd of the log\n"));
    EXPECT_FALSE(content.contains(library().toUtf8()));

    start({u"info"_s, library()});
    EXPECT_EQ(finish(), 0);
    EXPECT_TRUE(m_process.readAllStandardOutput().endsWith("Problems:          none\n"));
    // It can be written to, too.
    start({u"scan"_s, library(), u"--all"_s, u"--no-tag"_s, u"--after-crash"_s, u"--quiet"_s});
    EXPECT_EQ(finish(), 0);
    start({u"info"_s, library()});
    EXPECT_EQ(finish(), 0);
    EXPECT_TRUE(m_process.readAllStandardOutput().endsWith("Problems:          none\n"));
    EXPECT_EQ(logs.entryList(QDir::Files), names);
    // What lagged behind the databases has caught up.
    expectAcceptedLibrary();
}

TEST_F(MainTest, progressIsRedrawnOnATerminal)
{
    const OnTerminal terminal(m_process);
    ASSERT_TRUE(terminal.isOpen());
    start({u"check"_s, library()});
    EXPECT_EQ(finish(), 0);
    const QByteArray written = terminal.written();
    EXPECT_TRUE(written.startsWith("Checking  [########----------------]  1/3  "))
        << written.toStdString();
    EXPECT_TRUE(written.endsWith("\r\x1b[K"));
    EXPECT_EQ(m_process.readAllStandardOutput(), "3 photos checked, nothing wrong.\n");
}

TEST_F(MainTest, withNoColorNothingIsRedrawn)
{
    QProcessEnvironment environment = m_process.processEnvironment();
    environment.insert(u"NO_COLOR"_s, u"1"_s);
    m_process.setProcessEnvironment(environment);
    const OnTerminal terminal(m_process);
    ASSERT_TRUE(terminal.isOpen());
    start({u"check"_s, library()});
    EXPECT_EQ(finish(), 0);
    const QByteArray written = terminal.written();
    EXPECT_TRUE(written.startsWith("1 of 3: ")) << written.toStdString();
    EXPECT_FALSE(written.contains('\x1b'));
}

TEST_F(MainTest, outputThatNobodyTakesIsAnErrorAndNoCrash)
{
    m_process.setStandardOutputFile(u"/dev/full"_s);
    start({u"list"_s, library()});
    EXPECT_EQ(finish(), 1);
    EXPECT_EQ(m_process.readAllStandardError(), "Standard output could not be written.\n");
}

TEST_F(MainTest, aReaderThatHasSeenEnoughIsNoError)
{
    m_process.setProgram(u"bash"_s);
    start({u"-c"_s,
           u"\"$0\" list \"$1\" | true; echo ${PIPESTATUS[0]}"_s,
           QStringLiteral(CORVANE_CLI),
           library()});
    EXPECT_EQ(finish(), 0);
    EXPECT_EQ(m_process.readAllStandardOutput(), "0\n");
    EXPECT_EQ(m_process.readAllStandardError(), QByteArray());
}

TEST_F(MainTest, anInterruptEndsASampleAndLeavesNothing)
{
    const QString sample = m_folder.filePath(u"Sample.photolibrary"_s);
    start({u"sample"_s, m_folder.path(), u"--photos"_s, u"500"_s, u"--megapixels"_s, u"0.3"_s});
    // The first original says that the library is open and being filled.
    while (QDir(sample + u"/Masters"_s).isEmpty() && m_process.state() == QProcess::Running) {
        m_process.waitForFinished(20);
    }
    ASSERT_EQ(kill(static_cast<pid_t>(m_process.processId()), SIGINT), 0);
    EXPECT_EQ(finish(), 130);
    EXPECT_EQ(m_process.readAllStandardError(), "Interrupted.\n");
    EXPECT_EQ(m_process.readAllStandardOutput(), QByteArray());
    EXPECT_FALSE(QFileInfo::exists(sample));
}

TEST_F(MainTest, aMasterThatMayNotBeReadIsNotMissing)
{
    const PhotoFacts closed = photo(u"Wood.jpg"_s);
    ASSERT_TRUE(QFile::setPermissions(closed.originalPath, {}));
    openForAll();
    start(asOrdinaryUser(
        m_process, {u"list"_s, library(), u"--json"_s, u"--id"_s, QString::number(closed.id)}));
    EXPECT_EQ(finish(), 0);
    const QJsonObject listed = QJsonDocument::fromJson(m_process.readAllStandardOutput())
                                   .object()
                                   .value(u"photos"_s)
                                   .toArray()
                                   .first()
                                   .toObject();
    EXPECT_FALSE(listed.value(u"missing"_s).toBool(true));
    EXPECT_EQ(listed.value(u"bytes"_s).toInteger(), closed.bytes);

    start(asOrdinaryUser(m_process, {u"list"_s, library(), u"--present"_s}));
    EXPECT_EQ(finish(), 0);
    EXPECT_EQ(m_process.readAllStandardOutput().count('\n'), 2);
    EXPECT_EQ(m_process.readAllStandardError(),
              "1 photo is left out: its master is missing or unreadable.\n");
}

TEST_F(MainTest, aSettingsFileThatMayNotBeReadIsWrongUsage)
{
    QFile file(defaultsPath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(file.setPermissions({}));
    openForAll();
    start(asOrdinaryUser(m_process, {u"info"_s, library(), u"--defaults"_s, defaultsPath()}));
    EXPECT_EQ(finish(), 2);
    EXPECT_TRUE(m_process.readAllStandardError().startsWith(
        "The settings file " + defaultsPath().toUtf8() + " cannot be read: permission denied.\n"));
}

TEST_F(MainTest, aLibraryThatIsNotReadableForTheUserIsRefused)
{
    const QString database = library() + u"/Database/apdb/Library.apdb"_s;
    ASSERT_TRUE(QFile::setPermissions(database, {}));
    openForAll();
    start(asOrdinaryUser(m_process, {u"list"_s, library()}));
    EXPECT_EQ(finish(), 3);
    const QByteArray said = m_process.readAllStandardError();
    EXPECT_TRUE(said.contains(library().toUtf8())) << said.toStdString();
    EXPECT_TRUE(said.contains("cannot be read")) << said.toStdString();
}
