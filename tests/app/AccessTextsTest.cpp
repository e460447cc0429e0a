#include "AccessTexts.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

TEST(AccessTexts, everyTextIsAsItAlwaysWas)
{
    EXPECT_EQ(AccessTexts::title(), u"Read Access Required"_s);
    EXPECT_EQ(
        AccessTexts::libraryPrompt(),
        u"Corvane requests read access to your iPhoto Library in order to create albums for image events.\nSelect it and hit the Open button."_s);
    EXPECT_EQ(
        AccessTexts::firstFilePrompt(u"a.cr2"_s),
        u"Corvane Requires read access to a.cr2.\nPlease select it or it's parent folder and hit the Open button."_s);
    EXPECT_EQ(
        AccessTexts::laterFilePrompt(u"a.cr2"_s),
        u"Corvane Requires read access to a.cr2.\nThis is due to externally referenced images in your library.  To avoid being asked again please select the parent folder for all your externally referenced pictures."_s);
}

} // namespace
