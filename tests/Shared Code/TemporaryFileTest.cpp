#include "TemporaryFile.h"

#include "QtPrinters.h"
#include "Scripting.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <cstring>

using namespace Qt::StringLiterals;

namespace
{

class TemporaryFileTest : public testing::Test
{
protected:
    [[nodiscard]] QString folder() const { return m_folder.path() + u'/'; }

    [[nodiscard]] QStringList files() const
    {
        return QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }

    QTemporaryDir m_folder;
};

TEST_F(TemporaryFileTest, itHoldsWhatWasWrittenAndGoesWithTheObject)
{
    {
        TemporaryFile file;
        file.setPath(folder(), u"IMG_1.jpg"_s);
        EXPECT_TRUE(files().isEmpty());
        file.write("bytes");
        QFile written(m_folder.filePath(u"IMG_1.jpg"_s));
        ASSERT_TRUE(written.open(QIODevice::ReadOnly));
        EXPECT_EQ(written.readAll(), "bytes");
        EXPECT_EQ(file.path(), written.fileName());
    }
    EXPECT_TRUE(files().isEmpty());
}

TEST_F(TemporaryFileTest, removingDeletesItAtOnce)
{
    TemporaryFile file;
    file.setPath(folder(), u"IMG_1.jpg"_s);
    file.write("bytes");
    file.remove();
    EXPECT_TRUE(files().isEmpty());
}

TEST_F(TemporaryFileTest, aFileThatItDidNotWriteStays)
{
    QFile other(m_folder.filePath(u"IMG_1.jpg"_s));
    ASSERT_TRUE(other.open(QIODevice::WriteOnly));
    other.close();
    {
        TemporaryFile file;
        file.setPath(folder(), u"IMG_1.jpg"_s);
    }
    EXPECT_EQ(files(), QStringList{u"IMG_1.jpg"_s});
}

TEST_F(TemporaryFileTest, aNameThatLeadsOutOfTheFolderRaises)
{
    TemporaryFile file;
    EXPECT_THROW(file.setPath(folder(), u"../IMG_1.jpg"_s), ScriptingException);
    EXPECT_THROW(file.setPath(folder(), u"a/b.jpg"_s), ScriptingException);
    EXPECT_THROW(file.setPath(folder(), u"a"_s + QChar(u'\0') + u".jpg"_s), ScriptingException);
}

TEST_F(TemporaryFileTest, aDiskThatIsFullHalfWayRaisesWithTheReasonAndWhatToDo)
{
    TemporaryFile file;
    file.setPath(folder(), u"IMG_1.jpg"_s);
    // A limit on file sizes fails a write half-way as a full disk does.
    rlimit before = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small = {.rlim_cur = 10'000, .rlim_max = before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    QString reason;
    try {
        file.write(QByteArray(50'000, 'x'));
    } catch (const ScriptingException& exception) {
        reason = exception.reason();
    }
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);
    const QString why = QString::fromLocal8Bit(std::strerror(EFBIG));
    EXPECT_TRUE(reason.contains(why)) << reason.toStdString();
    EXPECT_TRUE(reason.contains(u"make room"_s) && reason.contains(file.path()))
        << reason.toStdString();
}

TEST_F(TemporaryFileTest, aFileThatCannotBeWrittenRaisesWithItsPath)
{
    TemporaryFile file;
    file.setPath(folder() + u"missing/"_s, u"IMG_1.jpg"_s);
    try {
        file.write("bytes");
        FAIL() << "nothing was raised";
    } catch (const ScriptingException& exception) {
        EXPECT_EQ(exception.name(), u"WriteFailed"_s);
        EXPECT_TRUE(exception.reason().contains(file.path()));
    }
}

} // namespace
