#include "WholeFile.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr qint64 kMost = 1024;

class WholeFileTest : public testing::Test
{
protected:
    void write(const QByteArray& bytes) const
    {
        QFile file(m_path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    void expectUnreadable(const QString& reason) const
    {
        const Result<QByteArray> read = WholeFile::read(m_path, kMost);
        ASSERT_FALSE(read.ok());
        EXPECT_EQ(read.error().code, ErrorCode::Unreadable);
        EXPECT_TRUE(read.error().message.contains(m_path)) << qPrintable(read.error().message);
        EXPECT_TRUE(read.error().message.contains(reason)) << qPrintable(read.error().message);
    }

    QTemporaryDir m_folder;
    QString m_path{m_folder.filePath(u"file"_s)};
};

TEST_F(WholeFileTest, aFileOfTheMostBytesIsReadToItsEnd)
{
    const QByteArray bytes = QByteArray(kMost - 1, 'x') + 'y';
    write(bytes);
    EXPECT_EQ(WholeFile::read(m_path, kMost).value(), bytes);
}

TEST_F(WholeFileTest, anEmptyFileHasBytesThoughNone)
{
    write({});
    const Result<QByteArray> read = WholeFile::read(m_path, kMost);
    ASSERT_TRUE(read.ok());
    EXPECT_TRUE(read.value().isEmpty());
    EXPECT_FALSE(read.value().isNull());
}

TEST_F(WholeFileTest, aFileThatALinkLeadsToIsRead)
{
    write("text");
    const QString link = m_folder.filePath(u"link"_s);
    ASSERT_TRUE(QFile::link(m_path, link));
    EXPECT_EQ(WholeFile::read(link, kMost).value(), "text");
}

TEST_F(WholeFileTest, aSparseFileOfAHundredGigabytesIsRefused)
{
    write({});
    ASSERT_TRUE(QFile::resize(m_path, qint64{100} * 1024 * 1024 * 1024));
    expectUnreadable(u"restore it from a backup"_s);
}

TEST_F(WholeFileTest, aPipeIsRefusedWithoutWaiting)
{
    ASSERT_EQ(::mkfifo(QFile::encodeName(m_path).constData(), 0600), 0);
    expectUnreadable(u"no plain file"_s);
}

TEST_F(WholeFileTest, aLinkToADeviceIsRefused)
{
    ASSERT_TRUE(QFile::link(u"/dev/zero"_s, m_path));
    expectUnreadable(u"no plain file"_s);
}

TEST_F(WholeFileTest, aFolderIsRefused)
{
    ASSERT_EQ(::mkdir(QFile::encodeName(m_path).constData(), 0700), 0);
    expectUnreadable(u"no plain file"_s);
}

TEST_F(WholeFileTest, whatIsMissingIsNotFound)
{
    EXPECT_EQ(WholeFile::read(m_path, kMost).error().code, ErrorCode::NotFound);
    ASSERT_TRUE(QFile::link(m_folder.filePath(u"nothing"_s), m_path));
    EXPECT_EQ(WholeFile::read(m_path, kMost).error().code, ErrorCode::NotFound);
}

} // namespace
