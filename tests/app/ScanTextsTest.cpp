#include "ScanTexts.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

TEST(ScanTexts, onePhotoAndManyAreTold)
{
    EXPECT_EQ(ScanTexts::notConverted(1), u"1 photo was not converted"_s);
    EXPECT_EQ(ScanTexts::notConverted(2), u"2 photos were not converted"_s);
}

TEST(ScanTexts, aPercentSignInANameStaysWhatItIs)
{
    EXPECT_EQ(ScanTexts::photoWithReason(u"%2 %3.cr2"_s, 7, u"it is %1"_s),
              u"%2 %3.cr2 (photo 7): it is %1"_s);
    EXPECT_EQ(ScanTexts::otherName(u"%2 %3.cr2"_s, 7, u"%1.jpg"_s),
              u"The copy of %2 %3.cr2 (photo 7) bears another name: %1.jpg"_s);
}

} // namespace
