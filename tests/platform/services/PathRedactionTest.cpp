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

TEST(PathRedaction, whateverStandsInQuotesIsReplaced)
{
    EXPECT_EQ(redacted("Could not write \"/home/anna/Our Photos/a.cr2\": No space left"),
              "Could not write \"<text>\": No space left");
    EXPECT_EQ(redacted("cannot open '/tmp/x'!"), "cannot open '<text>'!");
    EXPECT_EQ(redacted("No photo `Wedding.cr2' here"), "No photo `<text>' here");
    EXPECT_EQ(redacted("The photo “Anna’s wedding” is gone."), "The photo “<text>” is gone.");
    EXPECT_EQ(redacted("Das Album „Für Anna“ fehlt."), "Das Album „<text>“ fehlt.");
    EXPECT_EQ(redacted("filesystem error: No such file [/home/anna/My Photos] [a b]"),
              "filesystem error: No such file [<text>]");
    EXPECT_EQ(redacted("name=\"a b\",size=3"), "name=\"<text>\",size=3");
    EXPECT_EQ(redacted("\"\" is no name"), "\"<text>\" is no name");
}

TEST(PathRedaction, quotesInANameEndNoQuotation)
{
    EXPECT_EQ(redacted("not read: '/home/anna/Anna's/b.jpg' (5)"), "not read: '<text>' (5)");
    EXPECT_EQ(redacted("not read: 'Annas' and Otto's.jpg' (5)"), "not read: '<text>' (5)");
    EXPECT_EQ(redacted("from \"/a/b\" to \"/c/d\": no"), "from \"<text>\": no");
    EXPECT_EQ(redacted("no \"Anna's \"best\" one.jpg\""), "no \"<text>\"");
}

TEST(PathRedaction, aQuotationBeginsAnywhere)
{
    EXPECT_EQ(redacted("failed:\"Anna.cr2\""), "failed:\"<text>\"");
    EXPECT_EQ(redacted("photo #\"Anna.cr2\" gone"), "photo #\"<text>\" gone");
    EXPECT_EQ(redacted("photo \"Anna.cr2\"(gone)"), "photo \"<text>\"(gone)");
    EXPECT_EQ(redacted("album:[Anna]"), "album:[<text>]");
    EXPECT_EQ(redacted("album[Anna]"), "album[<text>]");
    EXPECT_EQ(redacted("failed -“Anna.cr2”"), "failed -“<text>”");
    EXPECT_EQ(redacted("gone—„Anna.cr2“"), "gone—„<text>“");
    EXPECT_EQ(redacted("gone…«Anna.cr2»"), "gone…«<text>»");
    EXPECT_EQ(redacted("gone:‹Anna.cr2›"), "gone:‹<text>›");
    EXPECT_EQ(redacted("写真「アンナ」"), "写真「<text>」");
    EXPECT_EQ(redacted("5\" \"My Photos/a.cr2\""), "5\"<text>\"");
}

TEST(PathRedaction, whatMayBeAnApostropheBeginsAQuotationWhereNoWordIsBefore)
{
    EXPECT_EQ(redacted("key:'Anna'"), "key:'<text>'");
    EXPECT_EQ(redacted("photo #'Anna.cr2' gone"), "photo #'<text>' gone");
    EXPECT_EQ(redacted("failed -'Anna.cr2'"), "failed -'<text>'");
    EXPECT_EQ(redacted("gone—’Anna.cr2’"), "gone—’<text>’");
    EXPECT_EQ(redacted("gone\xC2\xA0'Anna.cr2'"), "gone\xC2\xA0'<text>'");
    EXPECT_EQ(redacted("failed:`Anna.cr2'"), "failed:`<text>'");
}

TEST(PathRedaction, anApostropheBeginsNoQuotation)
{
    EXPECT_EQ(redacted("can't open it, it isn't there"), "can't open it, it isn't there");
    EXPECT_EQ(redacted("can't open 'Anna's wedding'"), "can't open '<text>'");
    EXPECT_EQ(redacted("it isn’t there"), "it isn’t there");
    EXPECT_EQ(redacted("l’été d’Anna, déjà’s"), "l’été d’Anna, déjà’s");
}

TEST(PathRedaction, aQuotationWithoutAnEndTakesTheRest)
{
    EXPECT_EQ(redacted("cannot open '/home/anna/Anna's photos"), "cannot open '<text>");
    EXPECT_EQ(redacted("cannot open \"Our wedd"), "cannot open \"<text>");
    EXPECT_EQ(redacted("cannot open '"), "cannot open '<text>");
    EXPECT_EQ(redacted("cannot open [My"), "cannot open [<text>");
}

TEST(PathRedaction, withoutQuotesNothingAfterAPathStays)
{
    EXPECT_EQ(redacted("/home/anna/Our Photos/a.cr2: No such file"), "<path>");
    EXPECT_EQ(redacted("path=/home/anna/x y"), "path=<path>");
    EXPECT_EQ(redacted("in (/home/anna (old)/x)"), "in (<path>");
    EXPECT_EQ(redacted("in /home/anna \"old\" /x"), "in <path>");
}

TEST(PathRedaction, beforeAPathThatDoesNotSayWhereItBeginsNothingOfItsSentenceStays)
{
    EXPECT_EQ(redacted("My Photos/2011/a"), "<path>");
    EXPECT_EQ(redacted("No such file: My Photos/2011/a"), "No such file: <path>");
    EXPECT_EQ(redacted("gone: Photos of 'us'/2011/a"), "gone: <path>");
    EXPECT_EQ(redacted("'My Photos/a.cr2' or My Photos/b.cr2"), "<path>");
    EXPECT_EQ(redacted("open Masters/2011/a.cr2"), "<path>");
    EXPECT_EQ(redacted("open C:/Photos"), "<path>");
}

TEST(PathRedaction, pathsOfEveryKindAreFound)
{
    EXPECT_EQ(redacted("open ~/Pictures/My Library"), "open <path>");
    EXPECT_EQ(redacted("open ~anna/Pictures"), "open <path>");
    EXPECT_EQ(redacted("open file:///home/anna/a%20b"), "open <path>");
    EXPECT_EQ(redacted("root is /"), "root is /");
    EXPECT_EQ(redacted("//server/share"), "<path>");
}

TEST(PathRedaction, eachNameIsReplaced)
{
    EXPECT_EQ(redacted("'/a/b' and \"/c/d\" and /e"), "'<text>' and \"<text>\" and <path>");
    EXPECT_EQ(redacted("'a' and “b” and \"c\""), "'<text>' and “<text>” and \"<text>\"");
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

TEST(PathRedaction, whatIsTakenBackLeavesRoomForTheRest)
{
    EXPECT_EQ(redactedTo<9>("is in: Photos of last summer/a"), "is in: <p");
    EXPECT_EQ(redactedTo<16>("is in: Photos of last summer/a"), "is in: <path>");
    EXPECT_EQ(redactedTo<4>("Größenangaben /x"), "Grö");
}
