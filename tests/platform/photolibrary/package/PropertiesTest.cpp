#include "Properties.h"

#include "AdminData.h"
#include "LibraryFixture.h"

using namespace Qt::StringLiterals;
using Properties::Texts;

class PropertiesTest : public LibraryFixture
{
};

TEST_F(PropertiesTest, aTextIsReplacedAndSharedByItsWords)
{
    Writer to = writer();
    for (const Texts kind : {Texts::Iptc, Texts::Other, Texts::Exif}) {
        Properties::setString(to, kind, 1, u"Key"_s, u"first"_s);
        Properties::setString(to, kind, 1, u"Key"_s, u"Words"_s);
        Properties::setString(to, kind, 2, u"Key"_s, u"Words"_s);
        EXPECT_EQ(Properties::text(connection(), kind, 1, u"Key"_s), u"Words"_s);
    }
    const char* const rows = "SELECT count(*) FROM RKUniqueString WHERE stringProperty=?";
    EXPECT_EQ(Sql::firstInteger(connection(), rows, u"Words"_s), 1);
    EXPECT_EQ(Sql::firstInteger(connection(), rows, u"words"_s), 1);
    expectSoundIndexes();
}

TEST_F(PropertiesTest, searchWordsAreInLowerCaseBeyondAscii)
{
    Writer to = writer();
    Properties::setString(to, Texts::Iptc, 1, u"Key"_s, u"ÄHRE"_s);
    EXPECT_EQ(Sql::firstText(connection(),
                             "SELECT s.stringProperty FROM RKIptcProperty p JOIN RKUniqueString s "
                             "ON s.modelId=p.searchStringId"),
              u"ähre"_s);
}

TEST_F(PropertiesTest, numbersAreReplacedAndRemoved)
{
    Writer to = writer();
    Properties::setNumber(to, 1, u"Altitude"_s, 3);
    Properties::setNumber(to, 1, u"Altitude"_s, -4.5);
    EXPECT_EQ(Properties::number(connection(), 1, u"Altitude"_s), -4.5);
    EXPECT_EQ(Properties::number(connection(), 2, u"Altitude"_s), std::nullopt);
    Properties::removeNumber(to, 1, u"Altitude"_s);
    EXPECT_EQ(Properties::number(connection(), 1, u"Altitude"_s), std::nullopt);
}

TEST_F(PropertiesTest, onlyTheGivenVersionLosesEverything)
{
    Writer to = writer();
    for (const qint64 version : {1, 2}) {
        Properties::setString(to, Texts::Iptc, version, u"Key"_s, u"words"_s);
        Properties::setOtherNumber(to, version, u"FileSize"_s, 7);
        Properties::setNumber(to, version, u"Altitude"_s, 7);
    }
    Properties::removeAll(to, 1);
    EXPECT_TRUE(Properties::text(connection(), Texts::Iptc, 1, u"Key"_s).isNull());
    EXPECT_EQ(Properties::text(connection(), Texts::Iptc, 2, u"Key"_s), u"words"_s);
    EXPECT_EQ(number("SELECT count(*) FROM RKOtherProperty WHERE versionId=?", 1), 0);
    EXPECT_EQ(number("SELECT count(*) FROM RKOtherProperty WHERE versionId=?", 2), 1);
    EXPECT_EQ(Properties::number(connection(), 2, u"Altitude"_s), 7);
}

TEST_F(PropertiesTest, aValueThatOutlivesARebuildIsToldOutsideTheDatabases)
{
    Writer to = writer();
    AdminData::setText(to, u"database"_s, u"RKDatabaseChanged"_s, u"1"_s, AdminData::kBoolean);
    EXPECT_FALSE(changes().adminData);
    AdminData::setText(
        to, u"database.iPhoto"_s, u"lastImportEventUuid"_s, u"x"_s, AdminData::kString);
    EXPECT_TRUE(changes().adminData);
    EXPECT_EQ(AdminData::text(connection(), u"database.iPhoto"_s, u"lastImportEventUuid"_s),
              u"x"_s);
}
