#include "PathText.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

TEST(PathTextTest, aLeadingSlashIsAComponentAndEmptyOnesAreNone)
{
    EXPECT_EQ(PathText::components(u"/a//b/c.jpg"_s),
              (QStringList{u"/"_s, u"a"_s, u"b"_s, u"c.jpg"_s}));
    EXPECT_EQ(PathText::components(u"a/b"_s), (QStringList{u"a"_s, u"b"_s}));
    EXPECT_EQ(PathText::components(u"/"_s), QStringList{u"/"_s});
}

TEST(PathTextTest, aNullPathHasNoComponents)
{
    EXPECT_TRUE(PathText::components(QString()).isEmpty());
}

TEST(PathTextTest, percentSignsAreNotDecoded)
{
    EXPECT_EQ(PathText::components(u"/a%2Fb/c"_s).at(1), u"a%2Fb"_s);
}

TEST(PathTextTest, theExtensionFollowsTheLastDotOfTheLastComponent)
{
    EXPECT_EQ(PathText::extension(u"/a.b/IMG.1.CR2"_s), u"CR2"_s);
    EXPECT_EQ(PathText::extension(u"/a.b/IMG"_s), u""_s);
    EXPECT_EQ(PathText::extension(u"/a/.profile"_s), u""_s);
    EXPECT_EQ(PathText::extension(u"/a/IMG."_s), u""_s);
}

TEST(PathTextTest, onlyTheLastExtensionIsTakenAway)
{
    EXPECT_EQ(PathText::withoutExtension(u"IMG.1.cr2"_s), u"IMG.1"_s);
    EXPECT_EQ(PathText::withoutExtension(u"IMG_1"_s), u"IMG_1"_s);
    EXPECT_EQ(PathText::withoutExtension(u".profile"_s), u".profile"_s);
    EXPECT_EQ(PathText::withoutExtension(u""_s), u""_s);
}

} // namespace
