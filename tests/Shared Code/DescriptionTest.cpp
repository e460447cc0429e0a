#include "Description.h"

#include "QtPrinters.h"
#include "Scripting.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

TEST(DescriptionTest, aTextAtTheTopStandsAsItIs)
{
    EXPECT_EQ(describe(u"IMG 1.cr2"_s), u"IMG 1.cr2"_s);
    EXPECT_EQ(describe(u""_s), u""_s);
}

TEST(DescriptionTest, numbersAndNullAreShownPlainly)
{
    EXPECT_EQ(describe(QVariant::fromValue(qint64{12345678901})), u"12345678901"_s);
    EXPECT_EQ(describe(QVariant()), u"<null>"_s);
}

TEST(DescriptionTest, anArrayListsOneEntryALineQuotedWhereNeeded)
{
    EXPECT_EQ(describe(QStringList{u"Invalid Path"_s, u"Plain1"_s, u"say \"hi\""_s}),
              u"(\n    \"Invalid Path\",\n    Plain1,\n    \"say \\\"hi\\\"\"\n)"_s);
    EXPECT_EQ(describe(QVariantList()), u"(\n)"_s);
}

TEST(DescriptionTest, onlyLettersAndDigitsStandWithoutQuotes)
{
    EXPECT_EQ(describe(QStringList{u"IMG_1"_s, u"a-b"_s, u"a.b"_s, u"é"_s, u"aZ09"_s}),
              u"(\n    \"IMG_1\",\n    \"a-b\",\n    \"a.b\",\n    \"é\",\n    aZ09\n)"_s);
    EXPECT_EQ(describe(QVariantMap{{u"a_key"_s, 1}}), u"{\n    \"a_key\" = 1;\n}"_s);
}

TEST(DescriptionTest, aDictionaryIsNestedByFourBlanks)
{
    const QVariantMap map{{u"height"_s, 3000},
                          {u"imagePath"_s, QVariant()},
                          {u"list"_s, QVariantList{true}},
                          {u"some key"_s, u""_s}};
    EXPECT_EQ(describe(map),
              u"{\n    height = 3000;\n    imagePath = \"<null>\";\n"
              "    list = (\n        1\n    );\n    \"some key\" = \"\";\n}"_s);
}

TEST(DescriptionTest, aDateIsShownInUniversalTime)
{
    const auto date = QVariant::fromValue(PhotoDate{-0.5, u"Europe/Berlin"_s});
    EXPECT_EQ(describe(QVariantList{date}), u"(\n    \"2000-12-31 23:59:59 +0000\"\n)"_s);
}

} // namespace
