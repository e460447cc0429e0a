#include "IdleSleepAssertion.h"

#include "FakePower.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

const QString kCreation = u"create NoIdleSleepAssertion 255 Corvane conversion in progress"_s;

TEST(IdleSleepAssertionTest, itIsCreatedByTypeLevelAndNameAndReleasedOnce)
{
    FakePower power;
    {
        IdleSleepAssertion assertion(power);
        EXPECT_TRUE(power.calls().isEmpty());
        assertion.create();
        assertion.release();
        assertion.release();
    }
    EXPECT_EQ(power.calls(), (QStringList{kCreation, u"release 1"_s}));
}

TEST(IdleSleepAssertionTest, aFailedCreationReleasesNothing)
{
    FakePower power;
    power.setResult(-536870201);
    {
        IdleSleepAssertion assertion(power);
        assertion.create();
        assertion.release();
    }
    EXPECT_EQ(power.calls(), QStringList{kCreation});
}

TEST(IdleSleepAssertionTest, whatIsNeverCreatedIsNeverReleased)
{
    FakePower power;
    IdleSleepAssertion assertion(power);
    assertion.release();
    EXPECT_TRUE(power.calls().isEmpty());
}

TEST(IdleSleepAssertionTest, itIsReleasedAtTheLatestWithTheObject)
{
    FakePower power;
    {
        IdleSleepAssertion assertion(power);
        assertion.create();
    }
    EXPECT_EQ(power.calls(), (QStringList{kCreation, u"release 1"_s}));
}

} // namespace
