#include "CommandFixture.h"

using namespace Qt::StringLiterals;

namespace
{

using SampleCommandTest = CommandFixture;

} // namespace

TEST_F(SampleCommandTest, theLibraryIsNamedAndCanBeListed)
{
    const QString folder = m_folder.path();
    EXPECT_EQ(run({u"sample"_s, folder, u"--photos"_s, u"2"_s, u"--megapixels"_s, u"0.1"_s}), 0)
        << m_err.toStdString();
    EXPECT_EQ(m_out, "The sample library is " + folder.toUtf8() + "/Sample.photolibrary\n");
    EXPECT_EQ(run({u"list"_s, folder + u"/Sample.photolibrary"_s, u"--raw"_s}), 0);
    EXPECT_EQ(m_out.count('\n'), 2);
}

TEST_F(SampleCommandTest, aRequestToStopLeavesNothingBehind)
{
    m_interruption->request();
    EXPECT_EQ(run({u"sample"_s, m_folder.path(), u"--photos"_s, u"2"_s}), 130);
    EXPECT_EQ(m_err, "Interrupted.\n");
    EXPECT_EQ(m_out, QByteArray());
    EXPECT_FALSE(QFile::exists(m_folder.filePath(u"Sample.photolibrary"_s)));
}

TEST_F(SampleCommandTest, nothingIsWrittenIntoALibrary)
{
    EXPECT_EQ(run({u"sample"_s, library() + u"/Masters"_s}), 2);
    EXPECT_TRUE(m_err.contains("lies inside the library")) << m_err.toStdString();
    EXPECT_TRUE(m_err.endsWith("Run “corvane-cli sample --help” to see how it is used.\n"));
}

TEST_F(SampleCommandTest, aPathWithALineEndStaysOnItsLine)
{
    EXPECT_EQ(run({u"sample"_s, m_folder.filePath(u"no\nne"_s)}), 2);
    EXPECT_EQ(m_err.count('\n'), 2) << m_err.toStdString();
    EXPECT_TRUE(m_err.contains("no\\nne"));
}

TEST_F(SampleCommandTest, nothingIsWrittenOverAndAMissingFolderIsWrongUsage)
{
    const QString taken = m_folder.filePath(u"Sample.photolibrary"_s);
    QFile file(taken);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(run({u"sample"_s, m_folder.path()}), 2);
    EXPECT_TRUE(m_err.contains(taken.toUtf8() + "\" exists already: name another folder"))
        << m_err.toStdString();
    EXPECT_TRUE(m_err.endsWith("Run “corvane-cli sample --help” to see how it is used.\n"));
    EXPECT_EQ(run({u"sample"_s, m_folder.filePath(u"none"_s)}), 2);
    EXPECT_TRUE(m_err.contains("none"));
}
