#include "ReportFile.h"

#include "Console.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

class ReportFileTest : public testing::Test
{
protected:
    ReportFileTest()
    {
        m_output.open(QIODevice::WriteOnly);
        m_error.open(QIODevice::WriteOnly);
        EXPECT_TRUE(QDir(m_folder.path()).mkdir(u"L.photolibrary"_s));
    }

    [[nodiscard]] QString in(const QString& name) const { return m_folder.filePath(name); }

    [[nodiscard]] QString obstacle(const QString& path) const
    {
        return ReportFile(path).obstacle(in(u"L.photolibrary"_s)).value_or(QString());
    }

    QTemporaryDir m_folder;
    QBuffer m_output;
    QBuffer m_error;
    Console m_console{m_output, m_error, {}};
};

} // namespace

TEST_F(ReportFileTest, aPathThatCannotBeWrittenIsNoticedBeforehand)
{
    EXPECT_EQ(obstacle(in(u"none/r.json"_s)),
              u"The report cannot be written to %1: its folder does not exist."_s.arg(
                  in(u"none/r.json"_s)));
    EXPECT_EQ(obstacle(m_folder.path()),
              u"The report cannot be written to %1: that is a folder."_s.arg(m_folder.path()));
    EXPECT_EQ(obstacle(u"/dev/null"_s),
              u"The report cannot be written to /dev/null: that is no regular file."_s);
    EXPECT_EQ(obstacle(in(u"r.json"_s)), QString());
    EXPECT_EQ(obstacle(u"-"_s), QString());
}

TEST_F(ReportFileTest, nothingIsWrittenIntoTheLibraryNotEvenThroughALink)
{
    const QString direct = in(u"L.photolibrary/r.json"_s);
    EXPECT_EQ(obstacle(direct),
              u"The report cannot be written to %1: that is inside the library."_s.arg(direct));
    ASSERT_TRUE(QFile::link(in(u"L.photolibrary"_s), in(u"link"_s)));
    EXPECT_TRUE(obstacle(in(u"link/r.json"_s)).endsWith(u"that is inside the library."_s));
}

TEST_F(ReportFileTest, aLinkToAFileThatIsNotThereYetIsFollowed)
{
    const auto link = [this](const QString& target, const QString& name) {
        return ::symlink(QFile::encodeName(target).constData(),
                         QFile::encodeName(in(name)).constData()) == 0;
    };
    ASSERT_TRUE(link(in(u"L.photolibrary/r.json"_s), u"inside"_s));
    ASSERT_TRUE(link(u"inside"_s, u"chain"_s));
    ASSERT_TRUE(link(u"none/r.json"_s, u"nowhere"_s));
    ASSERT_TRUE(link(u"circle"_s, u"circle"_s));
    ASSERT_TRUE(link(u"r.json"_s, u"outside"_s));
    EXPECT_TRUE(obstacle(in(u"inside"_s)).endsWith(u"that is inside the library."_s));
    EXPECT_TRUE(obstacle(in(u"chain"_s)).endsWith(u"that is inside the library."_s));
    EXPECT_TRUE(obstacle(in(u"nowhere"_s)).endsWith(u"its folder does not exist."_s));
    EXPECT_TRUE(obstacle(in(u"circle"_s)).endsWith(u"that is no regular file."_s));
    EXPECT_EQ(obstacle(in(u"outside"_s)), QString());
    ASSERT_TRUE(ReportFile(in(u"outside"_s)).write("{}\n", m_console).ok());
    EXPECT_TRUE(QFile::exists(in(u"r.json"_s)));
}

TEST_F(ReportFileTest, theSystemsNamesOfStandardOutputAreStandardOutput)
{
    for (const QString& name : {u"/dev/stdout"_s, u"/dev/fd/1"_s, u"/proc/self/fd/1"_s}) {
        EXPECT_TRUE(ReportFile(name).isStandardOutput());
        EXPECT_EQ(obstacle(name), QString());
    }
    EXPECT_EQ(obstacle(u"/dev/stderr"_s),
              u"The report cannot be written to /dev/stderr: that is no regular file."_s);
}

TEST_F(ReportFileTest, theDocumentReplacesAnOlderReport)
{
    const ReportFile report(in(u"r.json"_s));
    ASSERT_TRUE(report.write("{1}\n", m_console).ok());
    ASSERT_TRUE(report.write("{2}\n", m_console).ok());
    QFile file(in(u"r.json"_s));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "{2}\n");
}

TEST_F(ReportFileTest, aDashIsStandardOutput)
{
    ASSERT_TRUE(ReportFile(u"-"_s).write("{}\n", m_console).ok());
    EXPECT_EQ(m_output.data(), "{}\n");
}
