#include "CommandFixture.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

class VerifyCommandTest : public CommandFixture
{
protected:
    void SetUp() override
    {
        CommandFixture::SetUp();
        qputenv("XDG_STATE_HOME", QFile::encodeName(m_folder.filePath(u"state"_s)));
    }

    void TearDown() override { qunsetenv("XDG_STATE_HOME"); }

    [[nodiscard]] QString brief() const { return library() + u"/iLifeShared/AlbumData2.xml"_s; }
};

TEST_F(VerifyCommandTest, ofASoundLibraryItSaysSo)
{
    EXPECT_EQ(run({u"verify"_s, library()}), 0);
    EXPECT_EQ(m_out, "Databases, sidecars, catalogues and files agree.\n");
    EXPECT_EQ(run({u"verify"_s, library(), u"--json"_s}), 0);
    EXPECT_TRUE(document().value(u"problems"_s).isArray());
    EXPECT_EQ(document().value(u"problems"_s).toArray().size(), 0);
    EXPECT_EQ(run({u"verify"_s, library(), u"--repair"_s}), 0);
    EXPECT_TRUE(m_out.startsWith("There was nothing to mend.\n")) << m_out.toStdString();
}

TEST_F(VerifyCommandTest, whatDiffersIsToldAndMendedOnRequest)
{
    ASSERT_TRUE(QFile::remove(brief()));
    EXPECT_EQ(run({u"verify"_s, library()}), 1);
    EXPECT_EQ(m_out,
              "iLifeShared/AlbumData2.xml: The brief catalogue AlbumData2.xml is missing.\n"
              "1 thing differs. 1 can be mended without a choice, after a backup:\n"
              "corvane-cli verify --repair '" +
                  library().toUtf8() + "'\n");
    EXPECT_FALSE(QFile::exists(brief()));
    EXPECT_EQ(run({u"verify"_s, library(), u"--json"_s}), 1);
    const QJsonObject problem = document().value(u"problems"_s).toArray().first().toObject();
    EXPECT_EQ(problem.value(u"where"_s).toString(), u"iLifeShared/AlbumData2.xml"_s);
    EXPECT_TRUE(problem.value(u"what"_s).isString());
    EXPECT_TRUE(problem.value(u"repairable"_s).toBool());
    EXPECT_EQ(run({u"verify"_s, library(), u"--repair"_s}), 0);
    EXPECT_TRUE(m_out.contains("1 thing was mended. The backup made before is ")) << m_out.data();
    EXPECT_TRUE(QFile::exists(brief()));
    EXPECT_EQ(run({u"verify"_s, library()}), 0);
}

TEST_F(VerifyCommandTest, whatIsLeftMakesTheExitStatusOne)
{
    ASSERT_TRUE(QFile::remove(photo(u"Lake.jpg"_s).originalPath));
    ASSERT_TRUE(QFile::remove(brief()));
    EXPECT_EQ(run({u"verify"_s, library(), u"--repair"_s, u"--json"_s}), 1);
    EXPECT_EQ(document().value(u"mended"_s).toArray().size(), 1);
    const QJsonArray left = document().value(u"problems"_s).toArray();
    ASSERT_EQ(left.size(), 1);
    EXPECT_FALSE(left.first().toObject().value(u"repairable"_s).toBool());
    EXPECT_TRUE(QFile::exists(document().value(u"backup"_s).toString()));
}

TEST_F(VerifyCommandTest, anErrorAfterTheBackupIsToldWithThePlaceOfTheBackup)
{
    ASSERT_TRUE(QFile::remove(library() + u"/AlbumData.xml"_s));
    ASSERT_TRUE(QFile::remove(brief()) && QDir().mkdir(brief()));
    EXPECT_EQ(run({u"verify"_s, library(), u"--repair"_s, u"--json"_s}), 3);
    EXPECT_TRUE(QFile::exists(document().value(u"backup"_s).toString()));
    EXPECT_TRUE(document().value(u"stopped"_s).toBool());
    const QJsonArray failures = document().value(u"failures"_s).toArray();
    ASSERT_EQ(failures.size(), 1);
    EXPECT_EQ(m_err.count(failures.first().toString().toUtf8()), 1)
        << "once, though closing fails as well: " << m_err.toStdString();
}

TEST_F(VerifyCommandTest, afterCrashIsOfRepairAlone)
{
    EXPECT_EQ(run({u"verify"_s, library(), u"--after-crash"_s}), 2);
    EXPECT_EQ(run({u"verify"_s, library(), u"--repair"_s, u"--after-crash"_s}), 0);
}

TEST_F(VerifyCommandTest, whatIsNoLibraryIsRefused)
{
    EXPECT_EQ(run({u"verify"_s, m_folder.path()}), 3);
}
