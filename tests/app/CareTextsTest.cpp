#include "CareTexts.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

TEST(CareTexts, oneThingAndManyAreTold)
{
    EXPECT_EQ(CareTexts::differs(1), u"1 thing differs."_s);
    EXPECT_EQ(CareTexts::differs(12), u"12 things differ."_s);
    EXPECT_EQ(CareTexts::mended(1), u"1 thing was mended."_s);
    EXPECT_EQ(CareTexts::mended(2), u"2 things were mended."_s);
    EXPECT_EQ(CareTexts::photosOfBackup(1), u"1 photo"_s);
    EXPECT_EQ(CareTexts::photosOfBackup(0), u"0 photos"_s);
    EXPECT_EQ(CareTexts::leftAsItWas(1),
              u"1 thing was left as it was: it needs a choice of yours."_s);
    EXPECT_EQ(CareTexts::leftAsItWas(2),
              u"2 things were left as they were: they need a choice of yours."_s);
}

TEST(CareTexts, whereNothingIsLeftAllAgrees)
{
    EXPECT_EQ(CareTexts::leftAsItWas(0), u"Databases, sidecars, catalogues and files agree."_s);
}

TEST(CareTexts, aPercentSignInAPathStaysWhatItIs)
{
    EXPECT_EQ(CareTexts::backupMade(u"20261121"_s, u"1.0 MB"_s, u"/a %1 %2 b"_s),
              u"The backup 20261121 (1.0 MB) is /a %1 %2 b"_s);
    EXPECT_EQ(CareTexts::backupRestored(u"20261121"_s, u"today"_s, u"/a %1 %2 b"_s),
              u"The library is as it was in the backup 20261121 (of today). The backup of what it "
              "was before is /a %1 %2 b"_s);
}

} // namespace
