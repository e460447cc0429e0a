#include "TemporaryDirectory.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utime.h>

using namespace Qt::StringLiterals;

namespace
{

/// The system's temporary directory is a folder of the test's own.
class TemporaryDirectoryTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_system.isValid());
        m_before = qgetenv("TMPDIR");
        qputenv("TMPDIR", m_system.path().toUtf8());
    }

    void TearDown() override
    {
        m_before.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", m_before);
    }

    [[nodiscard]] QStringList names() const
    {
        return QDir(m_system.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }

    QTemporaryDir m_system;
    QByteArray m_before;
};

/// What Qt says while it lives.
class Messages final
{
public:
    Messages()
    {
        store().clear();
        m_previous = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString& text) { store() += text; });
    }

    ~Messages() { qInstallMessageHandler(m_previous); }

    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

    [[nodiscard]] static QStringList seen() { return store(); }

private:
    static QStringList& store()
    {
        static QStringList texts;
        return texts;
    }

    QtMessageHandler m_previous{nullptr};
};

void makeFile(const QString& path)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write("x"), 1);
}

TEST_F(TemporaryDirectoryTest, itIsPrivateAndGoneWithAllItsContentAtTheEnd)
{
    QString path;
    {
        const Result<TemporaryDirectory> made = TemporaryDirectory::create();
        ASSERT_TRUE(made.ok());
        path = made.value().path();
        EXPECT_TRUE(path.startsWith(m_system.path()));
        EXPECT_TRUE(path.endsWith(u'/'));
        struct stat status = {};
        ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0700U);
        ASSERT_TRUE(QDir(path).mkpath(u"deep/er"_s));
        makeFile(path + u"deep/er/file"_s);
    }
    EXPECT_FALSE(QFileInfo::exists(path));
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(TemporaryDirectoryTest, itGoesWithoutAWord)
{
    const Messages messages;
    {
        const Result<TemporaryDirectory> made = TemporaryDirectory::create();
        ASSERT_TRUE(made.ok());
        makeFile(made.value().path() + u"file"_s);
    }
    EXPECT_EQ(Messages::seen(), QStringList());
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(TemporaryDirectoryTest, whatLinksInItLeadToStays)
{
    const QTemporaryDir other;
    makeFile(other.filePath(u"mine"_s));
    {
        const Result<TemporaryDirectory> made = TemporaryDirectory::create();
        ASSERT_TRUE(made.ok());
        ASSERT_TRUE(QFile::link(other.path(), made.value().path() + u"link"_s));
        ASSERT_TRUE(QFile::link(u"/nowhere"_s, made.value().path() + u"dangling"_s));
        makeFile(made.value().path() + u".hidden"_s);
    }
    EXPECT_EQ(names(), QStringList{QFileInfo(other.path()).fileName()});
    EXPECT_TRUE(QFileInfo::exists(other.filePath(u"mine"_s)));
}

TEST_F(TemporaryDirectoryTest, movingItKeepsTheFolder)
{
    Result<TemporaryDirectory> made = TemporaryDirectory::create();
    ASSERT_TRUE(made.ok());
    TemporaryDirectory moved = std::move(made).value();
    const QString path = moved.path();
    EXPECT_TRUE(QFileInfo(path).isDir());
    moved = std::move(TemporaryDirectory::create()).value();
    EXPECT_NE(moved.path(), path);
    EXPECT_TRUE(QFileInfo(moved.path()).isDir());
}

TEST_F(TemporaryDirectoryTest, aLivingRunsFolderStays)
{
    const Result<TemporaryDirectory> first = TemporaryDirectory::create();
    const Result<TemporaryDirectory> second = TemporaryDirectory::create();
    ASSERT_TRUE(first.ok() && second.ok());
    EXPECT_TRUE(QFileInfo(first.value().path()).isDir());
    EXPECT_EQ(names().size(), 2);
}

TEST_F(TemporaryDirectoryTest, aKilledRunsFolderIsRemovedByTheNext)
{
    const pid_t child = ::fork();
    if (child == 0) {
        // Ends without any destructor, as a killed run does.
        const Result<TemporaryDirectory> made = TemporaryDirectory::create();
        QFile file(made.ok() ? made.value().path() + u"half.jpg"_s : QString());
        const bool written =
            file.open(QIODevice::WriteOnly) && file.write("x") == 1 && file.flush();
        ::_exit(written ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    ASSERT_EQ(names().size(), 1);
    const QString left = m_system.filePath(names().first() + u"/half.jpg"_s);
    ASSERT_TRUE(QFileInfo::exists(left));

    const Messages messages;
    const Result<TemporaryDirectory> made = TemporaryDirectory::create();
    ASSERT_TRUE(made.ok());
    EXPECT_FALSE(QFileInfo::exists(left));
    EXPECT_EQ(names().size(), 1);
    EXPECT_EQ(Messages::seen(), QStringList());
}

TEST_F(TemporaryDirectoryTest, foldersThatAreNoRunsAreLeftAlone)
{
    const QDir system(m_system.path());
    // Not locked yet, of another name, and a link to somebody's folder with a lock file in it.
    ASSERT_TRUE(system.mkdir(u"corvane-abcdef"_s));
    ASSERT_TRUE(system.mkpath(u"corvane-backup"_s));
    makeFile(system.filePath(u"corvane-backup/photo.jpg"_s));
    const utimbuf longAgo = {.actime = 1'000'000, .modtime = 1'000'000};
    ::utime(QFile::encodeName(system.filePath(u"corvane-backup"_s)).constData(), &longAgo);
    const QTemporaryDir other;
    makeFile(other.filePath(u"lock"_s));
    ASSERT_TRUE(QFile::link(other.path(), system.filePath(u"corvane-linked"_s)));

    const Result<TemporaryDirectory> made = TemporaryDirectory::create();

    ASSERT_TRUE(made.ok());
    EXPECT_TRUE(system.exists(u"corvane-abcdef"_s));
    EXPECT_TRUE(system.exists(u"corvane-backup/photo.jpg"_s));
    EXPECT_TRUE(system.exists(u"corvane-linked"_s));
    EXPECT_TRUE(QFileInfo::exists(other.filePath(u"lock"_s)));
}

TEST_F(TemporaryDirectoryTest, anEmptyFolderThatWasNeverLockedGoesAfterAnHour)
{
    const QDir system(m_system.path());
    ASSERT_TRUE(system.mkdir(u"corvane-abcdef"_s));
    const utimbuf longAgo = {.actime = 1'000'000, .modtime = 1'000'000};
    ::utime(QFile::encodeName(system.filePath(u"corvane-abcdef"_s)).constData(), &longAgo);
    const Result<TemporaryDirectory> made = TemporaryDirectory::create();
    ASSERT_TRUE(made.ok());
    EXPECT_FALSE(system.exists(u"corvane-abcdef"_s));
}

TEST_F(TemporaryDirectoryTest, aFolderWhoseRunEndedWhileItLockedItGoesAfterAnHour)
{
    const QDir system(m_system.path());
    const utimbuf longAgo = {.actime = 1'000'000, .modtime = 1'000'000};
    for (const QString& name : {u"corvane-abcdef"_s, u"corvane-backup"_s, u"corvane-ghijkl"_s}) {
        ASSERT_TRUE(system.mkdir(name));
        makeFile(system.filePath(name + u"/lock"_s)); // not what a lock holds
        if (name != u"corvane-ghijkl"_s) {
            const QString lock = system.filePath(name + u"/lock"_s);
            ::utime(QFile::encodeName(lock).constData(), &longAgo);
        }
    }
    makeFile(system.filePath(u"corvane-backup/photo.jpg"_s));
    const Result<TemporaryDirectory> made = TemporaryDirectory::create();
    ASSERT_TRUE(made.ok());
    EXPECT_FALSE(system.exists(u"corvane-abcdef"_s));
    EXPECT_TRUE(system.exists(u"corvane-backup/photo.jpg"_s)) << "it holds something else";
    EXPECT_TRUE(system.exists(u"corvane-ghijkl/lock"_s)) << "it may be just about to be locked";
}

TEST_F(TemporaryDirectoryTest, whereNoneCanBeMadeTheErrorNamesTheFolder)
{
    qputenv("TMPDIR", "/nonexistent/temporary");
    const Result<TemporaryDirectory> made = TemporaryDirectory::create();
    ASSERT_FALSE(made.ok());
    EXPECT_TRUE(made.error().message.contains(u"/nonexistent/temporary"_s));
}

} // namespace
