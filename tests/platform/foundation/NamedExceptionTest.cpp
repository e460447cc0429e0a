#include "NamedException.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(NamedException, tellsNameAndReason)
{
    const GeneralException exception(u"No address"_s, u"Say where to send it \u2013 please."_s);
    EXPECT_EQ(exception.name(), u"No address"_s);
    EXPECT_EQ(exception.reason(), u"Say where to send it \u2013 please."_s);
    EXPECT_STREQ(exception.what(), "No address: Say where to send it \xE2\x80\x93 please.");
}
