#include "CommandFixture.h"

#include <QDateTime>

using namespace Qt::StringLiterals;

namespace
{

using LibraryCommandTest = CommandFixture;

} // namespace

TEST_F(LibraryCommandTest, whatIsNoLibraryIsNamedAndEndsWithThree)
{
    const QString nowhere = m_folder.filePath(u"nowhere"_s);
    for (const char* command : {"list", "info", "check", "trash", "scan"}) {
        EXPECT_EQ(run({QString::fromLatin1(command), nowhere}), 3);
        EXPECT_TRUE(m_err.contains(nowhere.toUtf8())) << m_err.toStdString();
        EXPECT_EQ(m_out, QByteArray());
    }
}

TEST_F(LibraryCommandTest, aPathWithALineEndStaysOnItsLine)
{
    EXPECT_EQ(run({u"list"_s, m_folder.filePath(u"no\nwhere"_s)}), 3);
    EXPECT_EQ(m_err.count('\n'), 1) << m_err.toStdString();
    EXPECT_TRUE(m_err.contains("/no\\nwhere"));
}

TEST_F(LibraryCommandTest, aRequestToStopWhileOpeningEndsWith130)
{
    m_interruption->request();
    EXPECT_EQ(run({u"list"_s, library()}), 130);
    EXPECT_EQ(m_out, QByteArray());
    EXPECT_EQ(m_err, "Interrupted.\n");
}

TEST_F(LibraryCommandTest, wrongUsageEndsWithTwoAndSaysHowToSeeHelp)
{
    EXPECT_EQ(run({u"list"_s}), 2);
    EXPECT_EQ(m_err, "LIBRARY is required\nRun “corvane-cli list --help” to see how it is used.\n");
    EXPECT_EQ(run({}), 2);
    EXPECT_EQ(run({u"--version"_s}), 0);
    EXPECT_TRUE(m_out.startsWith("corvane-cli "));
}

TEST_F(LibraryCommandTest, whatIsInDoubtIsSaidBeforeAnythingIsWritten)
{
    EXPECT_EQ(run({u"trash"_s, u"--restore"_s, library()}), 0);
    EXPECT_EQ(m_err, "") << "its own changes of a moment ago are no sign of others";
    QFile database(library() + u"/Database/apdb/Library.apdb"_s);
    ASSERT_TRUE(database.open(QIODevice::ReadWrite));
    ASSERT_TRUE(database.setFileTime(QDateTime::currentDateTimeUtc().addSecs(-5),
                                     QFileDevice::FileModificationTime));
    database.close();
    EXPECT_EQ(run({u"trash"_s, u"--restore"_s, library()}), 0);
    EXPECT_TRUE(m_err.startsWith("The databases of the library")) << m_err.toStdString();
    EXPECT_TRUE(m_err.contains("quit it before anything is written")) << m_err.toStdString();
}
