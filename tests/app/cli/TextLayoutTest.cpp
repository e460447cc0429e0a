#include "TextLayout.h"

#include <QProcess>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(TextLayoutTest, controlCharactersAndDirectionMarksAreLeftOut)
{
    EXPECT_EQ(TextLayout::printable(u"a\u001b[31mb\u0007\u2066c\u2069\u202ed\u0085e"_s),
              u"a[31mbcde"_s);
}

TEST(TextLayoutTest, lineEndsBecomeSpacesUnlessLinesAreWanted)
{
    EXPECT_EQ(TextLayout::printable(u"a\nb\tc\u2028d"_s), u"a b c d"_s);
    EXPECT_EQ(TextLayout::printableLines(u"a\n\tb\u2028d"_s), u"a\n\tb\nd"_s);
    EXPECT_EQ(TextLayout::printableLines(u"a\nb\rc"_s), u"a\nbc"_s);
}

TEST(TextLayoutTest, escapedTextLosesNothingAndStaysOnItsLine)
{
    EXPECT_EQ(TextLayout::escaped(u"/a b/ü'\"\\📷"_s), u"/a b/ü'\"\\📷"_s);
    EXPECT_EQ(TextLayout::escaped(u"a\nb\rc\td\u001be\u0085f\u2028g\u202eh"_s),
              u"a\\nb\\rc\\td\\x1be\\x85f\\u2028g\\u202eh"_s);
}

TEST(TextLayoutTest, aQuotedTextIsOneWordForAShell)
{
    const QStringList texts{u"/a b/$HOME`id`\"!\\"_s,
                            u"it's 'quoted'"_s,
                            u"ä📷"_s,
                            u"two\nlines' \\ end"_s,
                            u"\u202e1\u001bc"_s,
                            QString()};
    for (const QString& text : texts) {
        const QString word = TextLayout::shellQuoted(text);
        EXPECT_EQ(TextLayout::escaped(word), word);
        QProcess shell;
        shell.start(u"bash"_s, {u"-c"_s, u"printf %s "_s + word});
        ASSERT_TRUE(shell.waitForFinished());
        EXPECT_EQ(shell.readAllStandardOutput(), text.toUtf8()) << word.toStdString();
    }
    EXPECT_EQ(TextLayout::shellQuoted(u"it's"_s), u"'it'\\''s'"_s);
}

TEST(TextLayoutTest, wideCharactersTakeTwoColumnsAndMarksNone)
{
    EXPECT_EQ(TextLayout::displayWidth(u"e\u0301"_s), 1);
    EXPECT_EQ(TextLayout::displayWidth(u"日本"_s), 4);
    EXPECT_EQ(TextLayout::displayWidth(u"📷"_s), 2);
    EXPECT_EQ(TextLayout::displayWidth(u"Müller"_s), 6);
}

TEST(TextLayoutTest, aTextIsCutAtAWholeCharacterAndSaysSo)
{
    EXPECT_EQ(TextLayout::elided(u"IMG_1994.cr2"_s, 12), u"IMG_1994.cr2"_s);
    EXPECT_EQ(TextLayout::elided(u"IMG_1994.cr2"_s, 5), u"IMG_…"_s);
    EXPECT_EQ(TextLayout::elided(u"日本語"_s, 4), u"日…"_s);
    EXPECT_EQ(TextLayout::elided(u"abc"_s, 0), QString());
}

TEST(TextLayoutTest, columnsLineUpByWhatIsSeenAndNoLineEndsInSpaces)
{
    using enum TextLayout::Align;
    const QList<QStringList> rows{{u"1"_s, u"日本.cr2"_s, u"x"_s}, {u"12"_s, u"b"_s, QString()}};
    EXPECT_EQ(TextLayout::table(rows, {Right, Left, Left}), u" 1  日本.cr2  x\n12  b\n"_s);
}

TEST(TextLayoutTest, aMegabyteIsTwoToTheTwentyBytes)
{
    EXPECT_EQ(TextLayout::megabytes(qint64{1024} * 1024 * 3 / 2), u"1.50 MB"_s);
    EXPECT_EQ(TextLayout::megabytes(qint64{-1024} * 1024), u"-1.00 MB"_s);
}
