#include "Directories.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class DirectoriesTest : public testing::Test
{
protected:
    void TearDown() override
    {
        qunsetenv("XDG_CONFIG_HOME");
        qunsetenv("XDG_STATE_HOME");
    }
};

TEST_F(DirectoriesTest, theEnvironmentNamesThem)
{
    qputenv("XDG_CONFIG_HOME", "/some/config/");
    qputenv("XDG_STATE_HOME", "/some/state");
    EXPECT_EQ(Directories::config(), u"/some/config/corvane"_s);
    EXPECT_EQ(Directories::state(), u"/some/state/corvane"_s);
}

TEST_F(DirectoriesTest, elseTheyLieInTheHome)
{
    EXPECT_EQ(Directories::config(), QDir::homePath() + u"/.config/corvane"_s);
    EXPECT_EQ(Directories::state(), QDir::homePath() + u"/.local/state/corvane"_s);
    qputenv("XDG_CONFIG_HOME", "relative");
    EXPECT_EQ(Directories::config(), QDir::homePath() + u"/.config/corvane"_s);
}

TEST_F(DirectoriesTest, theUsersLibraryComesBeforeTheMachines)
{
    qputenv("XDG_STATE_HOME", "/some/state");
    EXPECT_EQ(Directories::libraries(),
              (QStringList{u"/some/state/corvane"_s, u"/var/lib/corvane"_s}));
}

TEST_F(DirectoriesTest, askingMakesNoFolder)
{
    EXPECT_FALSE(QFileInfo::exists(Directories::config()));
    EXPECT_FALSE(QFileInfo::exists(Directories::state()));
    EXPECT_TRUE(Directories::pictures().startsWith(QDir::homePath()));
}

} // namespace
