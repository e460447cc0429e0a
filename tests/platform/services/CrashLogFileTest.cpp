#include "CrashLogFile.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <string>

using namespace Qt::StringLiterals;

namespace
{

using Facts = struct stat; // there is a function of that name

constexpr UtcTime kTime{2026, 1, 2, 3, 4, 5};

class CrashLogFileTest : public testing::Test
{
protected:
    void prepare(const std::string& name) { m_file.prepare(folder().toStdString(), name); }

    /// Makes the file and closes it.
    bool create()
    {
        const int descriptor = m_file.create(kTime, 4711);
        return descriptor >= 0 && close(descriptor) == 0;
    }

    [[nodiscard]] QString folder() const
    {
        return m_folder.path() + "/state/Logs/DiagnosticReports"_L1;
    }

    [[nodiscard]] QStringList files() const
    {
        return QDir(folder()).entryList(QDir::Files | QDir::Hidden);
    }

    QTemporaryDir m_folder;
    CrashLogFile m_file;
};

} // namespace

TEST_F(CrashLogFileTest, theNameTellsApplicationTimeAndProcess)
{
    prepare("Corvane");
    ASSERT_TRUE(create());
    EXPECT_EQ(files(), QStringList(u"Corvane_2026-01-02_03-04-05_4711.crash"_s));
}

TEST_F(CrashLogFileTest, beforeACrashThereIsNotEvenAFolder)
{
    prepare("Corvane");
    EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList());
}

TEST_F(CrashLogFileTest, onlyItsOwnerMayReadIt)
{
    prepare("Corvane");
    for (const mode_t mask : {0000U, 0777U}) {
        const mode_t before = umask(mask);
        const bool isMade = create();
        umask(before);
        ASSERT_TRUE(isMade);

        Facts facts{};

        ASSERT_EQ(stat((folder() + u'/' + files().constFirst()).toUtf8().constData(), &facts), 0);
        EXPECT_EQ(facts.st_mode & 07777U, 0600U);
        m_file.remove();
    }
}

TEST_F(CrashLogFileTest, foldersThatAreMadeAreTheOwnersAlone)
{
    for (const mode_t mask : {0000U, 0777U}) {
        prepare("Corvane");
        const mode_t before = umask(mask);
        const bool isMade = create();
        umask(before);
        ASSERT_TRUE(isMade);
        for (const QString& made : {folder(), m_folder.path() + "/state"_L1}) {
            Facts facts{};

            ASSERT_EQ(stat(made.toUtf8().constData(), &facts), 0);
            EXPECT_EQ(facts.st_mode & 0777U, 0700U);
        }
        m_file.remove();
        ASSERT_TRUE(QDir(m_folder.path()).rmpath(u"state/Logs/DiagnosticReports"_s));
        ASSERT_TRUE(QDir().mkpath(m_folder.path()));
    }
}

TEST_F(CrashLogFileTest, nothingIsWrittenOver)
{
    prepare("Corvane");
    ASSERT_TRUE(create());
    EXPECT_FALSE(create());
    EXPECT_EQ(files().size(), 1);
}

TEST_F(CrashLogFileTest, noLinkIsFollowed)
{
    prepare("Corvane");
    const QString target = m_folder.filePath(u"elsewhere"_s);
    ASSERT_TRUE(QDir().mkpath(folder()));
    ASSERT_TRUE(QFile::link(target, folder() + "/Corvane_2026-01-02_03-04-05_4711.crash"_L1));
    EXPECT_FALSE(create());
    EXPECT_FALSE(QFileInfo::exists(target));
}

TEST_F(CrashLogFileTest, aFolderThatWasRemovedIsMadeAgain)
{
    prepare("Corvane");
    ASSERT_TRUE(create());
    m_file.remove();
    ASSERT_TRUE(QDir().rmdir(folder()));
    EXPECT_TRUE(create());
    EXPECT_EQ(files().size(), 1);
}

TEST_F(CrashLogFileTest, aFileCanBeRemoved)
{
    prepare("Corvane");
    ASSERT_TRUE(create());
    m_file.remove();
    EXPECT_EQ(files(), QStringList());
}

TEST_F(CrashLogFileTest, aSlashInTheNameLeadsNowhere)
{
    prepare("../Corvane");
    ASSERT_TRUE(create());
    EXPECT_EQ(files(), QStringList(u".._Corvane_2026-01-02_03-04-05_4711.crash"_s));
}

TEST_F(CrashLogFileTest, withoutANameOrAnAbsoluteFolderThereAreNoFiles)
{
    prepare("");
    EXPECT_FALSE(create());
    m_file.prepare("", "Corvane");
    EXPECT_FALSE(create());
    m_file.prepare("relative", "Corvane");
    EXPECT_FALSE(create());
    m_file.prepare("/" + std::string(5000, 'x'), "Corvane");
    EXPECT_FALSE(create());
    EXPECT_FALSE(QFileInfo::exists(folder()));
}
