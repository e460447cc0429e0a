#include "DesktopWorkspace.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace
{

class DesktopWorkspaceTest : public testing::Test
{
protected:
    void SetUp() override
    {
        m_path = qgetenv("PATH");
        qputenv("PATH", m_folder.path().toUtf8());
    }

    void TearDown() override { qputenv("PATH", m_path); }

    QTemporaryDir m_folder;
    QByteArray m_path;
};

TEST_F(DesktopWorkspaceTest, thePageGoesToTheDesktopsOpener)
{
    const QString fifo = m_folder.filePath(u"opened"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    QFile script(m_folder.filePath(u"xdg-open"_s));
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("#!/bin/sh\necho noise\necho noise >&2\necho \"$# $1\" > '" + fifo.toUtf8() +
                 "'\n");
    script.close();
    ASSERT_TRUE(script.setPermissions(QFile::ReadOwner | QFile::ExeOwner));

    DesktopWorkspace workspace;
    EXPECT_TRUE(workspace.open(QUrl(u"https://corvane.example/a b"_s)));
    QFile opened(fifo); // Reading waits until the script has written.
    ASSERT_TRUE(opened.open(QIODevice::ReadOnly));
    EXPECT_EQ(opened.readAll(), "1 https://corvane.example/a%20b\n");
}

TEST_F(DesktopWorkspaceTest, whereNothingOpensPagesTheAnswerIsNo)
{
    DesktopWorkspace workspace;
    EXPECT_FALSE(workspace.open(QUrl(u"https://corvane.example"_s)));
}

TEST_F(DesktopWorkspaceTest, whatIsNoAddressIsNotOpened)
{
    DesktopWorkspace workspace;
    EXPECT_FALSE(workspace.open(QUrl()));
    EXPECT_FALSE(workspace.open(QUrl(u"-option"_s)));
}

} // namespace
