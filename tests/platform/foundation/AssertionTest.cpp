#include "Assertion.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

void takePath(const QString& path)
{
    CORVANE_PARAMETER_ASSERT(path != nullptr, u"Shared Code/Example"_s);
}

TEST(Assertion, aHoldingConditionRaisesNothing)
{
    EXPECT_NO_THROW(takePath(u"/x"_s));
}

TEST(Assertion, aFailedParameterAssertionCarriesItsTextFunctionFileAndLine)
{
    try {
        takePath(QString());
        FAIL() << "nothing was raised";
    } catch (const AssertionFailure& failure) {
        EXPECT_EQ(failure.description(), u"Invalid parameter not satisfying: path != nullptr"_s);
        EXPECT_EQ(failure.function(), u"takePath"_s);
        EXPECT_EQ(failure.file(), u"Shared Code/Example"_s);
        EXPECT_EQ(failure.line(), 12);
        EXPECT_STREQ(failure.what(),
                     "Invalid parameter not satisfying: path != nullptr (takePath, "
                     "Shared Code/Example:12)");
    }
}

TEST(Assertion, aConsistencyAssertionCarriesItsOwnText)
{
    try {
        CORVANE_CONSISTENCY_ASSERT(
            1 > 2, u"the order is lost"_s, u"sort of Example"_s, u"app/Example"_s);
        FAIL() << "nothing was raised";
    } catch (const AssertionFailure& failure) {
        EXPECT_EQ(failure.description(), u"the order is lost"_s);
        EXPECT_EQ(failure.function(), u"sort of Example"_s);
        EXPECT_EQ(failure.file(), u"app/Example"_s);
    }
}

} // namespace
