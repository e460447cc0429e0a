#include "RecentLibraries.h"

#include "UserDefaults.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class RecentLibrariesTest : public testing::Test
{
protected:
    QTemporaryDir m_folder;
    UserDefaults m_defaults{m_folder.filePath(u"settings.plist"_s)};
    RecentLibraries m_recent{m_defaults};
};

} // namespace

TEST_F(RecentLibrariesTest, theLastOneOpenedComesFirstAndEachOnce)
{
    EXPECT_EQ(m_recent.paths(), QStringList());
    m_recent.add(u"/a"_s);
    m_recent.add(u"/b"_s);
    m_recent.add(u"/a"_s);
    EXPECT_EQ(m_recent.paths(), (QStringList{u"/a"_s, u"/b"_s}));
}

TEST_F(RecentLibrariesTest, theyAreKeptFromRunToRunUpToABound)
{
    for (int number = 0; number < 20; ++number) {
        m_recent.add(u"/%1"_s.arg(number));
    }
    UserDefaults nextRun(m_defaults.filePath());
    const QStringList kept = RecentLibraries(nextRun).paths();
    EXPECT_EQ(kept.size(), RecentLibraries::kMost);
    EXPECT_EQ(kept.first(), u"/19"_s);
}

TEST_F(RecentLibrariesTest, theyCanBeForgotten)
{
    m_recent.add(u"/a"_s);
    m_recent.clear();
    EXPECT_EQ(m_recent.paths(), QStringList());
}
