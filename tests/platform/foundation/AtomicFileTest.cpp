#include "AtomicFile.h"

#include "FlushRecorder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

using namespace Qt::StringLiterals;

namespace
{

class AtomicFileTest : public testing::Test
{
protected:
    [[nodiscard]] QString inFolder(const QString& name) const { return m_folder.filePath(name); }

    [[nodiscard]] static QByteArray content(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
    }

    static void make(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    [[nodiscard]] QStringList names() const
    {
        return QDir(m_folder.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    QTemporaryDir m_folder;
};

struct stat statusOf(const QString& path)
{
    struct stat status = {};
    EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
    return status;
}

TEST_F(AtomicFileTest, aNewFileHoldsTheBytesAndNothingElseStays)
{
    ASSERT_TRUE(AtomicFile::write(inFolder(u"new"_s), "bytes").ok());
    EXPECT_EQ(content(inFolder(u"new"_s)), "bytes");
    EXPECT_EQ(names(), QStringList{u"new"_s});
}

TEST_F(AtomicFileTest, aNewFileGetsThePermissionsOfTheUmask)
{
    const mode_t before = ::umask(027);
    ASSERT_TRUE(AtomicFile::write(inFolder(u"new"_s), "bytes").ok());
    ::umask(before);
    EXPECT_EQ(statusOf(inFolder(u"new"_s)).st_mode & 07777U, 0640U);
}

TEST_F(AtomicFileTest, aFolderTakesOverPermissionsAndOwnerOfAnother)
{
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(u"old"_s));
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(u"new"_s));
    const QByteArray native = QFile::encodeName(inFolder(u"old"_s));
    const bool mayChown = ::chown(native.constData(), 4321, 1234) == 0;
    ASSERT_EQ(::chmod(native.constData(), 0751), 0);
    ASSERT_TRUE(AtomicFile::takeOver(inFolder(u"old"_s), inFolder(u"new"_s)).ok());
    const struct stat status = statusOf(inFolder(u"new"_s));
    EXPECT_EQ(status.st_mode & 07777U, 0751U);
    EXPECT_EQ(status.st_uid, mayChown ? 4321U : ::getuid());
    EXPECT_EQ(status.st_gid, mayChown ? 1234U : ::getgid());
    EXPECT_FALSE(AtomicFile::takeOver(inFolder(u"absent"_s), inFolder(u"new"_s)).ok());
}

TEST_F(AtomicFileTest, aReplacedFileKeepsPermissionsOwnerAndExtendedAttributes)
{
    const QString path = inFolder(u"old"_s);
    make(path, "before");
    const QByteArray native = QFile::encodeName(path);
    const bool mayChown = ::chown(native.constData(), 4321, 1234) == 0;
    ASSERT_EQ(::chmod(native.constData(), 0604), 0);
    const bool hasAttributes = ::setxattr(native.constData(), "user.tag", "red", 3, 0) == 0;

    ASSERT_TRUE(AtomicFile::write(path, "after").ok());

    EXPECT_EQ(content(path), "after");
    const struct stat status = statusOf(path);
    EXPECT_EQ(status.st_mode & 07777U, 0604U);
    EXPECT_EQ(status.st_uid, mayChown ? 4321U : ::getuid());
    EXPECT_EQ(status.st_gid, mayChown ? 1234U : ::getgid());
    char value[8] = {};
    EXPECT_EQ(::getxattr(native.constData(), "user.tag", value, sizeof(value)),
              hasAttributes ? 3 : -1);
    EXPECT_STREQ(value, hasAttributes ? "red" : "");
}

TEST_F(AtomicFileTest, whoHasTheOldFileOpenKeepsReadingTheOldBytes)
{
    make(inFolder(u"old"_s), "before");
    QFile reader(inFolder(u"old"_s));
    ASSERT_TRUE(reader.open(QIODevice::ReadOnly));
    ASSERT_TRUE(AtomicFile::write(inFolder(u"old"_s), "after").ok());
    EXPECT_EQ(reader.readAll(), "before");
}

TEST_F(AtomicFileTest, aSymbolicLinkIsFollowedAndStays)
{
    ASSERT_TRUE(QDir(m_folder.path()).mkpath(u"deep/er"_s));
    make(inFolder(u"deep/real"_s), "before");
    ASSERT_TRUE(QFile::link(u"../real"_s, inFolder(u"deep/er/link"_s)));
    ASSERT_TRUE(QFile::link(u"deep/er"_s, inFolder(u"door"_s)));
    ASSERT_TRUE(QFile::link(u"door/link"_s, inFolder(u"first"_s)));

    ASSERT_TRUE(AtomicFile::write(inFolder(u"first"_s), "after").ok());

    EXPECT_EQ(content(inFolder(u"deep/real"_s)), "after");
    EXPECT_TRUE(QFileInfo(inFolder(u"first"_s)).isSymLink());
    EXPECT_TRUE(QFileInfo(inFolder(u"deep/er/link"_s)).isSymLink());
    EXPECT_EQ(names(), (QStringList{u"deep"_s, u"door"_s, u"first"_s}));
}

TEST_F(AtomicFileTest, aLinkToNothingMakesTheFileItPointsTo)
{
    ASSERT_TRUE(QFile::link(u"target"_s, inFolder(u"link"_s)));
    ASSERT_TRUE(AtomicFile::write(inFolder(u"link"_s), "bytes").ok());
    EXPECT_EQ(content(inFolder(u"target"_s)), "bytes");
}

TEST_F(AtomicFileTest, linksThatGoInCirclesAreNotWritable)
{
    ASSERT_TRUE(QFile::link(u"b"_s, inFolder(u"a"_s)));
    ASSERT_TRUE(QFile::link(u"a"_s, inFolder(u"b"_s)));
    const Result<void> written = AtomicFile::write(inFolder(u"a"_s), "bytes");
    ASSERT_FALSE(written.ok());
    EXPECT_EQ(written.error().code, ErrorCode::NotWritable);
}

TEST_F(AtomicFileTest, refusingLeavesAnExistingFileAlone)
{
    make(inFolder(u"old"_s), "before");
    const Result<void> written =
        AtomicFile::write(inFolder(u"old"_s), "after", AtomicFile::Existing::Refuse);
    ASSERT_FALSE(written.ok());
    EXPECT_EQ(written.error().code, ErrorCode::NotWritable);
    EXPECT_TRUE(written.error().message.contains(inFolder(u"old"_s)));
    EXPECT_EQ(content(inFolder(u"old"_s)), "before");
    EXPECT_EQ(names(), QStringList{u"old"_s});
}

TEST_F(AtomicFileTest, refusingStillMakesAFileThatIsNotThere)
{
    ASSERT_TRUE(AtomicFile::write(inFolder(u"new"_s), "bytes", AtomicFile::Existing::Refuse).ok());
    EXPECT_EQ(content(inFolder(u"new"_s)), "bytes");
    EXPECT_EQ(names(), QStringList{u"new"_s});
}

TEST_F(AtomicFileTest, aMissingFolderIsNotFoundAndNotMade)
{
    const Result<void> written = AtomicFile::write(inFolder(u"none/file"_s), "bytes");
    ASSERT_FALSE(written.ok());
    EXPECT_EQ(written.error().code, ErrorCode::NotFound);
    EXPECT_TRUE(written.error().message.contains(inFolder(u"none/file"_s)));
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(AtomicFileTest, aFolderInThePlaceOfTheFileIsNotWritable)
{
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(u"folder"_s));
    const Result<void> written = AtomicFile::write(inFolder(u"folder"_s), "bytes");
    ASSERT_FALSE(written.ok());
    EXPECT_EQ(written.error().code, ErrorCode::NotWritable);
    EXPECT_TRUE(QFileInfo(inFolder(u"folder"_s)).isDir());
}

TEST_F(AtomicFileTest, aDiskThatIsFullHalfWayLeavesTheOldFile)
{
    make(inFolder(u"old"_s), "before");
    // A limit on file sizes fails a write half-way as a full disk does.
    rlimit before = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small = {.rlim_cur = 10'000, .rlim_max = before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const Result<void> written = AtomicFile::write(inFolder(u"old"_s), QByteArray(50'000, 'x'));
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);

    ASSERT_FALSE(written.ok());
    EXPECT_EQ(written.error().code, ErrorCode::OutOfSpace);
    EXPECT_TRUE(written.error().message.contains(inFolder(u"old"_s)));
    EXPECT_EQ(content(inFolder(u"old"_s)), "before");
    EXPECT_EQ(names(), QStringList{u"old"_s});
}

TEST_F(AtomicFileTest, theLongestNameThatAFileCanHaveIsWritten)
{
    const QString name(255, u'n');
    ASSERT_TRUE(AtomicFile::write(inFolder(name), "bytes").ok());
    EXPECT_EQ(names(), QStringList{name});
}

TEST_F(AtomicFileTest, foldersAreMadeWithTheirParents)
{
    ASSERT_TRUE(AtomicFile::makeFolder(inFolder(u"a/b/c"_s)).ok());
    EXPECT_TRUE(QFileInfo(inFolder(u"a/b/c"_s)).isDir());
    EXPECT_TRUE(AtomicFile::makeFolder(inFolder(u"a/b"_s)).ok()) << "one that is there is fine";
}

TEST_F(AtomicFileTest, whatRootMakesBelongsToWhomTheFolderBelongsTo)
{
    const QString folder = inFolder(u"of-somebody"_s);
    ASSERT_TRUE(QDir().mkdir(folder));
    // Only root can give it away; for anybody else all of it stays one's own.
    const bool mayChown = ::chown(QFile::encodeName(folder).constData(), 4321, 1234) == 0;
    ASSERT_TRUE(AtomicFile::write(folder + "/file"_L1, "bytes").ok());
    ASSERT_TRUE(AtomicFile::makeFolder(folder + "/a/b"_L1).ok());
    for (const QString& made : {u"/file"_s, u"/a"_s, u"/a/b"_s}) {
        const struct stat status = statusOf(folder + made);
        EXPECT_EQ(status.st_uid, mayChown ? 4321U : ::getuid()) << made.toStdString();
        EXPECT_EQ(status.st_gid, mayChown ? 1234U : ::getgid()) << made.toStdString();
    }
}

TEST_F(AtomicFileTest, aFileInTheWayOfAFolderIsAnError)
{
    make(inFolder(u"file"_s), "bytes");
    EXPECT_EQ(AtomicFile::makeFolder(inFolder(u"file"_s)).error().code, ErrorCode::NotFound);
    EXPECT_EQ(AtomicFile::makeFolder(inFolder(u"file/deeper"_s)).error().code, ErrorCode::NotFound);
    EXPECT_EQ(content(inFolder(u"file"_s)), "bytes");
}

TEST_F(AtomicFileTest, aFolderIsFlushedWithTheFoldersThatLeadToIt)
{
    ASSERT_TRUE(QDir().mkpath(inFolder(u"a/b/c"_s)));
    const FlushRecorder recorder;
    ASSERT_TRUE(AtomicFile::flushWithParents(inFolder(u"a/b/c"_s)).ok());
    const QString top = QFileInfo(m_folder.path()).canonicalFilePath();
    for (const QString& folder : {top, top + u"/a"_s, top + u"/a/b"_s, top + u"/a/b/c"_s}) {
        EXPECT_TRUE(recorder.flushed().contains(folder)) << folder.toStdString();
    }
}

TEST_F(AtomicFileTest, aMissingFolderCannotBeFlushedWithItsParents)
{
    EXPECT_EQ(AtomicFile::flushWithParents(inFolder(u"none"_s)).error().code, ErrorCode::NotFound);
}

TEST_F(AtomicFileTest, onlyAFolderCanBeFlushed)
{
    EXPECT_TRUE(AtomicFile::flushFolder(m_folder.path()).ok());
    EXPECT_EQ(AtomicFile::flushFolder(inFolder(u"none"_s)).error().code, ErrorCode::NotFound);
}

TEST(AtomicFileErrors, fullDisksAndQuotasAreOutOfSpaceAndNameTheFile)
{
    for (const int number : {ENOSPC, EDQUOT}) {
        const Error error = AtomicFile::errorFromErrno(number, u"write"_s, u"/photos/a"_s);
        EXPECT_EQ(error.code, ErrorCode::OutOfSpace);
        EXPECT_TRUE(error.message.startsWith(u"Could not write \"/photos/a\": "_s));
    }
}

TEST(AtomicFileErrors, eachReasonHasItsCode)
{
    const auto codeOf = [](int number) {
        return AtomicFile::errorFromErrno(number, u"write"_s, u"/a"_s).code;
    };
    EXPECT_EQ(codeOf(ENOENT), ErrorCode::NotFound);
    EXPECT_EQ(codeOf(EACCES), ErrorCode::NotWritable);
    EXPECT_EQ(codeOf(EROFS), ErrorCode::NotWritable);
    EXPECT_EQ(codeOf(EBUSY), ErrorCode::InUse);
    EXPECT_EQ(codeOf(EMFILE), ErrorCode::Internal);
}

} // namespace
