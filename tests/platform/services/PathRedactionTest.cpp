#include "PathRedaction.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace
{

std::string redacted(std::string_view text)
{
    std::array<char, 256> buffer{};
    return {buffer.data(), PathRedaction::copyWithoutPaths(text, buffer)};
}

template <std::size_t Size>
std::string redactedTo(std::string_view text)
{
    std::array<char, Size> buffer{};
    return {buffer.data(), PathRedaction::copyWithoutPaths(text, buffer)};
}

} // namespace

TEST(PathRedaction, whatHoldsNoPathStays)
{
    EXPECT_EQ(redacted(""), "");
    EXPECT_EQ(redacted("basic_string::_M_create"), "basic_string::_M_create");
    EXPECT_EQ(redacted("no such table: RKVersion"), "no such table: RKVersion");
    EXPECT_EQ(redacted("7 / 3 is no integer"), "7 / 3 is no integer");
    EXPECT_EQ(redacted("Größe unbekannt"), "Größe unbekannt");
}

TEST(PathRedaction, aPathInQuotesIsReplacedAndTheRestStays)
{
    EXPECT_EQ(redacted("Could not write \"/home/anna/Our Photos/a.cr2\": No space left"),
              "Could not write \"<path>\": No space left");
    EXPECT_EQ(redacted("cannot open '/tmp/x'!"), "cannot open '<path>'!");
}

TEST(PathRedaction, quotesInANameEndNoPath)
{
    EXPECT_EQ(redacted("not read: '/home/anna/Anna's/b.jpg' (5)"), "not read: '<path>' (5)");
    EXPECT_EQ(redacted("from \"/a/b\" to \"/c/d\": no"), "from \"<path>\": no");
}

TEST(PathRedaction, withoutQuotesNothingAfterAPathStays)
{
    EXPECT_EQ(redacted("/home/anna/Our Photos/a.cr2: No such file"), "<path>");
    EXPECT_EQ(redacted("filesystem error: No such file [/home/anna/My Photos]"),
              "filesystem error: No such file [<path>");
    EXPECT_EQ(redacted("path=/home/anna/x y"), "path=<path>");
    EXPECT_EQ(redacted("in (/home/anna (old)/x)"), "in (<path>");
}

TEST(PathRedaction, pathsOfEveryKindAreFound)
{
    EXPECT_EQ(redacted("open ~/Pictures/My Library"), "open <path>");
    EXPECT_EQ(redacted("open file:///home/anna/a%20b"), "open <path>");
    EXPECT_EQ(redacted("open Masters/2011/a.cr2"), "open <path>");
    EXPECT_EQ(redacted("open \"My Masters/2011/a.cr2\" now"), "open \"<path>\" now");
    EXPECT_EQ(redacted("root is /"), "root is /");
    EXPECT_EQ(redacted("//server/share"), "<path>");
}

TEST(PathRedaction, eachPathIsReplaced)
{
    EXPECT_EQ(redacted("'/a/b' and \"/c/d\" and /e"), "'<path>' and \"<path>\" and <path>");
}

TEST(PathRedaction, theTextStaysOnOneLine)
{
    EXPECT_EQ(redacted("one\ntwo\tthree\x7F"), "one two three ");
    EXPECT_EQ(redacted("in /home/new\nline/x\nand more"), "in <path>");
}

TEST(PathRedaction, aCutTextEndsWithAWholeCharacter)
{
    EXPECT_EQ(redactedTo<4>("abcd"), "abcd");
    EXPECT_EQ(redactedTo<3>("aäbc"), "aä");
    EXPECT_EQ(redactedTo<4>("abc€"), "abc");
    EXPECT_EQ(redactedTo<5>("abc€"), "abc");
    EXPECT_EQ(redactedTo<6>("abc€"), "abc€");
    EXPECT_EQ(redactedTo<2>("€"), "");
}
