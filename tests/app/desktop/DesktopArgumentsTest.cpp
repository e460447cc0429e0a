#include "DesktopArguments.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(DesktopArgumentsTest, aLibraryAndASettingsFileMayBeNamed)
{
    const DesktopArguments given =
        DesktopArguments::parse({u"--defaults"_s, u"s.plist"_s, u"/a b/Fotos.photolibrary"_s});
    EXPECT_EQ(given.answer, std::nullopt);
    EXPECT_EQ(given.library, u"/a b/Fotos.photolibrary"_s);
    EXPECT_EQ(given.defaults, u"s.plist"_s);
}

TEST(DesktopArgumentsTest, withoutArgumentsNothingIsNamed)
{
    const DesktopArguments given = DesktopArguments::parse({});
    EXPECT_EQ(given.answer, std::nullopt);
    EXPECT_EQ(given.library, QString());
}

TEST(DesktopArgumentsTest, helpAndVersionAreAnsweredWithSuccess)
{
    const DesktopArguments help = DesktopArguments::parse({u"--help"_s});
    ASSERT_TRUE(help.answer.has_value());
    EXPECT_TRUE(help.answer->contains(u"LIBRARY"_s));
    EXPECT_EQ(help.status, 0);
    const DesktopArguments version = DesktopArguments::parse({u"--version"_s});
    ASSERT_TRUE(version.answer.has_value());
    EXPECT_TRUE(version.answer->startsWith(u"corvane "_s));
    EXPECT_EQ(version.status, 0);
}

TEST(DesktopArgumentsTest, whatIsNotUnderstoodIsWrongUsage)
{
    const DesktopArguments given = DesktopArguments::parse({u"--qualty"_s, u"1"_s});
    ASSERT_TRUE(given.answer.has_value());
    EXPECT_TRUE(given.answer->contains(u"--qualty"_s));
    EXPECT_EQ(given.status, 2);
}
