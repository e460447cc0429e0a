#include "Result.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace
{

TEST(Result, aValueIsASuccess)
{
    const Result<int> result(7);
    EXPECT_TRUE(result.ok());
    EXPECT_TRUE(static_cast<bool>(result));
    EXPECT_EQ(result.value(), 7);
}

TEST(Result, anErrorKeepsItsCodeAndMessage)
{
    const Result<int> result(Error{ErrorCode::InUse, u"\"a\" is in use"_s});
    EXPECT_FALSE(result.ok());
    EXPECT_EQ(result.error().code, ErrorCode::InUse);
    EXPECT_EQ(result.error().message, u"\"a\" is in use"_s);
}

TEST(Result, aValueThatOnlyMovesCanBeTakenOut)
{
    Result<std::unique_ptr<int>> result(std::make_unique<int>(3));
    const std::unique_ptr<int> taken = std::move(result).value();
    EXPECT_EQ(*taken, 3);
}

TEST(Result, successWithoutAValue)
{
    EXPECT_TRUE(Result<void>().ok());
    const Result<void> failed(Error{ErrorCode::NotFound, u"no"_s});
    EXPECT_FALSE(failed.ok());
    EXPECT_EQ(failed.error().code, ErrorCode::NotFound);
}

} // namespace
