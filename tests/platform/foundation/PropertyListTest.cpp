#include "PropertyList.h"

#include <QDirIterator>
#include <QRandomGenerator>
#include <QSize>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;
using PropertyList::Date;
using PropertyList::Uid;

namespace
{

QVariant dateOf(double seconds)
{
    return QVariant::fromValue(Date{seconds});
}

QVariant uidOf(quint64 value)
{
    return QVariant::fromValue(Uid{value});
}

QByteArray xml(const QByteArray& body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + body +
           "</plist>\n";
}

/// A binary list laid out by hand: objects, then references of one byte and offsets of two.
QByteArray binary(const QList<QByteArray>& objects, char root = 0)
{
    QByteArray bytes("bplist00");
    QByteArray table;
    for (const QByteArray& object : objects) {
        table.append(char(bytes.size() >> 8)).append(char(bytes.size() & 0xFF));
        bytes.append(object);
    }
    const qsizetype tableOffset = bytes.size();
    bytes.append(table).append(6, '\0').append('\x02').append('\x01');
    bytes.append(6, '\0').append(char(objects.size() >> 8)).append(char(objects.size() & 0xFF));
    bytes.append(7, '\0').append(root);
    bytes.append(6, '\0').append(char(tableOffset >> 8)).append(char(tableOffset & 0xFF));
    return bytes;
}

QVariantMap everyType()
{
    return {
        {u"text"_s, u"Zoë & <Søn> \"x\" 'y' 😀\nnew line"_s},
        {u"ascii"_s, u"plain"_s},
        {u"empty text"_s, u""_s},
        {u"negative"_s, qlonglong{-5}},
        {u"zero"_s, qlonglong{0}},
        {u"byte"_s, qlonglong{255}},
        {u"smallest"_s, std::numeric_limits<qlonglong>::min()},
        {u"largest"_s, std::numeric_limits<qlonglong>::max()},
        {u"unsigned"_s, std::numeric_limits<qulonglong>::max()},
        {u"real"_s, 0.1 + 0.2},
        {u"whole real"_s, 48.0},
        {u"huge"_s, 1e300},
        {u"yes"_s, true},
        {u"no"_s, false},
        {u"data"_s,
         QByteArray("\x00\xFF\x10 data that takes more than one line of base 64 ....", 54)},
        {u"date"_s, dateOf(561115152.0)},
        {u"early date"_s, dateOf(-31622401.0)},
        {u"reference"_s, uidOf(300)},
        {u"list"_s, QVariantList{qlonglong{1}, u"two"_s, QVariantList{}, QVariantMap{}}},
        {u"long list"_s, QVariantList(40, QVariant(u"same"_s))},
        {u"map"_s, QVariantMap{{u"text"_s, u"plain"_s}}},
    };
}

TEST(PropertyList, everyTypeSurvivesTheBinaryForm)
{
    const Result<QByteArray> bytes = PropertyList::toBinary(everyType());
    ASSERT_TRUE(bytes.ok());
    EXPECT_TRUE(bytes.value().startsWith("bplist00"));
    const Result<QVariant> back = PropertyList::parse(bytes.value());
    ASSERT_TRUE(back.ok()) << qPrintable(back.error().message);
    EXPECT_EQ(back.value().toMap(), everyType());
}

TEST(PropertyList, everyTypeSurvivesTheXmlForm)
{
    const Result<QByteArray> bytes = PropertyList::toXml(everyType());
    ASSERT_TRUE(bytes.ok());
    const Result<QVariant> back = PropertyList::parse(bytes.value());
    ASSERT_TRUE(back.ok()) << qPrintable(back.error().message);
    EXPECT_EQ(back.value().toMap(), everyType());
}

TEST(PropertyList, typesStayApartOnTheWay)
{
    const QVariantMap written = everyType();
    for (const auto& bytes : {PropertyList::toBinary(written), PropertyList::toXml(written)}) {
        const QVariantMap back = PropertyList::parse(bytes.value()).value().toMap();
        for (auto entry = written.cbegin(); entry != written.cend(); ++entry) {
            EXPECT_STREQ(back.value(entry.key()).typeName(), entry.value().typeName())
                << qPrintable(entry.key());
        }
    }
}

TEST(PropertyList, binaryDatesKeepTheirLastBitAlsoBeforeTheEpochAndFarAway)
{
    for (const double seconds :
         {561115152.123456, -0.5, -1.25, -978307200.000001, 4e9, -4e9, 0.1 + 0.2}) {
        const Result<QByteArray> bytes = PropertyList::toBinary(dateOf(seconds));
        const Result<QVariant> back = PropertyList::parse(bytes.value());
        ASSERT_TRUE(back.ok());
        EXPECT_EQ(back.value().value<Date>().secondsSince2001, seconds);
    }
}

TEST(PropertyList, xmlDatesAreWholeSecondsThatHaveBegun)
{
    const Result<QByteArray> bytes = PropertyList::toXml(QVariantList{dateOf(0.9), dateOf(-0.1)});
    EXPECT_TRUE(bytes.value().contains("<date>2001-01-01T00:00:00Z</date>"));
    EXPECT_TRUE(bytes.value().contains("<date>2000-12-31T23:59:59Z</date>"));
}

TEST(PropertyList, aDateThatFourDigitsCannotTellHasNoXmlForm)
{
    for (const double seconds : {1e12, -1e12, std::numeric_limits<double>::quiet_NaN()}) {
        const Result<QByteArray> bytes = PropertyList::toXml(dateOf(seconds));
        ASSERT_FALSE(bytes.ok());
        EXPECT_EQ(bytes.error().code, ErrorCode::Unsupported);
    }
}

TEST(PropertyList, xmlDatesAreReadInUtcForAnyYear)
{
    EXPECT_EQ(PropertyList::parse(xml("<date>2100-12-31T23:59:59Z</date>")).value().value<Date>(),
              (Date{3155673599.0}));
    EXPECT_EQ(PropertyList::parse(xml("<date>1999-12-31T23:59:59Z</date>")).value().value<Date>(),
              (Date{-31622401.0}));
}

TEST(PropertyList, otherNumbersAndTextListsAreWrittenAsWhatTheyAmountTo)
{
    const QVariantList mixed{5, 5U, 1.5F, quint64{7}, QStringList{u"a"_s}};
    const QVariantList expected{
        qlonglong{5}, qlonglong{5}, 1.5, qlonglong{7}, QVariantList{u"a"_s}};
    EXPECT_EQ(PropertyList::parse(PropertyList::toBinary(mixed).value()).value().toList(),
              expected);
    EXPECT_EQ(PropertyList::parse(PropertyList::toXml(mixed).value()).value().toList(), expected);
}

TEST(PropertyList, aValueWithoutAPlaceInAListIsUnsupported)
{
    for (const QVariant& value :
         {QVariant(), QVariant(QSize(1, 2)), QVariant(QVariantList{QVariant()})}) {
        EXPECT_EQ(PropertyList::toBinary(value).error().code, ErrorCode::Unsupported);
        EXPECT_EQ(PropertyList::toXml(value).error().code, ErrorCode::Unsupported);
    }
}

TEST(PropertyList, xmlLooksAsOtherProgramsWriteIt)
{
    const QVariantMap map{{u"b"_s, QVariantList{qlonglong{1}}}, {u"a&"_s, true}};
    EXPECT_EQ(PropertyList::toXml(map).value(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
              "<plist version=\"1.0\">\n<dict>\n\t<key>a&amp;</key>\n\t<true/>\n\t<key>b</key>\n"
              "\t<array>\n\t\t<integer>1</integer>\n\t</array>\n</dict>\n</plist>\n");
}

TEST(PropertyList, xmlIsReadWithAndWithoutDoctypeCommentsAndCharacterData)
{
    const QByteArray bytes = "<!DOCTYPE plist PUBLIC \"a\" \"b\"><plist><!-- c --><dict>\n"
                             "<key>k</key> <!-- c --> <string><![CDATA[<b>]]>&#233;</string></dict>"
                             "</plist>";
    EXPECT_EQ(PropertyList::parse(bytes).value().toMap(), (QVariantMap{{u"k"_s, u"<b>é"_s}}));
}

TEST(PropertyList, controlCharactersInAnXmlTextAreLeftOutNotFatal)
{
    EXPECT_EQ(PropertyList::parse(xml("<string>a\x01 b\x0B</string>")).value().toString(),
              u"a b"_s);
    const Result<QByteArray> bytes = PropertyList::toXml(QString(u"a\u0001b"_s));
    EXPECT_EQ(PropertyList::parse(bytes.value()).value().toString(), u"ab"_s);
}

TEST(PropertyList, carriageReturnsSurviveTheXmlForm)
{
    const Result<QByteArray> bytes = PropertyList::toXml(u"a\r\nb\rc"_s);
    EXPECT_EQ(PropertyList::parse(bytes.value()).value().toString(), u"a\r\nb\rc"_s);
}

TEST(PropertyList, whatIsNoPropertyListIsDamaged)
{
    const QList<QByteArray> inputs{"",
                                   "garbage",
                                   "bplist00",
                                   "bplist",
                                   QByteArray(64, '\0'),
                                   QByteArray("bplist00") + QByteArray(40, '\xFF'),
                                   "<html><body/></html>",
                                   xml(""),
                                   xml("<foo/>"),
                                   xml("<true/><false/>"),
                                   xml("<dict><key>a</key></dict>"),
                                   xml("<dict><true/></dict>"),
                                   xml("<dict><key>a</key><array>"),
                                   xml("<integer>12x</integer>"),
                                   xml("<integer></integer>"),
                                   xml("<integer>99999999999999999999999</integer>"),
                                   xml("<integer>-9223372036854775809</integer>"),
                                   xml("<real>one</real>"),
                                   xml("<date>yesterday</date>"),
                                   xml("<data>!!!!</data>"),
                                   xml("<string>&undefined;</string>"),
                                   xml("<string><b/></string>")};
    for (const QByteArray& input : inputs) {
        const Result<QVariant> parsed = PropertyList::parse(input);
        ASSERT_FALSE(parsed.ok()) << input.constData();
        EXPECT_EQ(parsed.error().code, ErrorCode::Damaged);
    }
}

TEST(PropertyList, everyTruncationOfAListIsDamaged)
{
    const QByteArray bytes = PropertyList::toBinary(everyType()).value();
    const QByteArray text = PropertyList::toXml(everyType()).value().trimmed();
    for (qsizetype size = 0; size < bytes.size(); ++size) {
        EXPECT_FALSE(PropertyList::parse(bytes.left(size)).ok()) << size;
    }
    for (qsizetype size = 0; size < text.size(); ++size) {
        EXPECT_FALSE(PropertyList::parse(text.left(size)).ok()) << size;
    }
}

TEST(PropertyList, changedBytesNeverCrashTheReaders)
{
    QRandomGenerator random(7);
    for (const QByteArray& source :
         {PropertyList::toBinary(everyType()).value(), PropertyList::toXml(everyType()).value()}) {
        int readable = 0;
        for (int round = 0; round < 3000; ++round) {
            QByteArray bytes = source;
            for (int change = 0; change < 3; ++change) {
                bytes[random.bounded(bytes.size())] = char(random.bounded(256));
            }
            readable += PropertyList::parse(bytes).ok() ? 1 : 0;
        }
        EXPECT_LT(readable, 3000) << "some changes are noticed";
    }
}

TEST(PropertyList, nestingThatWouldExhaustTheStackIsDamaged)
{
    const int depth = 1'000'000;
    const QByteArray text =
        QByteArray("<array>").repeated(depth) + QByteArray("</array>").repeated(depth);
    EXPECT_EQ(PropertyList::parse(xml(text)).error().code, ErrorCode::Damaged);

    QList<QByteArray> chain;
    for (int level = 0; level < 250; ++level) {
        chain.append(QByteArray("\xA1").append(char(level + 1)));
    }
    chain.append("\x09");
    EXPECT_TRUE(PropertyList::parse(binary(chain)).ok()) << "250 levels are fine";
}

TEST(PropertyList, aBinaryListNestedTooDeepIsDamagedHoweverItIsReached)
{
    // References of two bytes allow a chain of 600 arrays.
    const auto chained = [](bool shortcutFirst) {
        QByteArray bytes("bplist00");
        QList<int> offsets;
        const int levels = 600;
        offsets.append(int(bytes.size()));
        const int middle = levels / 2;
        // The root refers to the middle and the beginning of the chain, in one order or the other.
        const int first = shortcutFirst ? middle : 1;
        const int second = shortcutFirst ? 1 : middle;
        bytes.append("\xA2").append(char(first >> 8)).append(char(first));
        bytes.append(char(second >> 8)).append(char(second));
        for (int level = 1; level <= levels; ++level) {
            offsets.append(int(bytes.size()));
            bytes.append("\xA1").append(char((level + 1) >> 8)).append(char(level + 1));
        }
        offsets.append(int(bytes.size()));
        bytes.append("\x08");
        const int table = int(bytes.size());
        for (const int offset : offsets) {
            bytes.append(char(offset >> 8)).append(char(offset));
        }
        bytes.append(6, '\0').append("\x02\x02").append(6, '\0');
        bytes.append(char(offsets.size() >> 8)).append(char(offsets.size()));
        bytes.append(8, '\0').append(6, '\0').append(char(table >> 8)).append(char(table));
        return bytes;
    };
    for (const bool shortcutFirst : {true, false}) {
        const Result<QVariant> parsed = PropertyList::parse(chained(shortcutFirst));
        ASSERT_FALSE(parsed.ok());
        EXPECT_TRUE(parsed.error().message.contains(u"nested too deep"_s))
            << qPrintable(parsed.error().message);
    }
}

TEST(PropertyList, writersRefuseWhatReadersWouldRefuse)
{
    QVariant nested = true;
    for (int level = 0; level < 600; ++level) {
        nested = QVariantList{nested};
    }
    EXPECT_EQ(PropertyList::toXml(nested).error().code, ErrorCode::Unsupported);
    EXPECT_EQ(PropertyList::toBinary(nested).error().code, ErrorCode::Unsupported);
}

TEST(PropertyList, aContainerThatHoldsItselfIsDamaged)
{
    EXPECT_EQ(PropertyList::parse(binary({QByteArray("\xA1\x00", 2)})).error().code,
              ErrorCode::Damaged);
    EXPECT_EQ(PropertyList::parse(binary({"\xA1\x01", QByteArray("\xA1\x00", 2)})).error().code,
              ErrorCode::Damaged);
}

TEST(PropertyList, aSmallFileThatUnfoldsToABillionValuesIsDamaged)
{
    QList<QByteArray> levels;
    for (char level = 0; level < 30; ++level) {
        levels.append(QByteArray("\xA2").append(char(level + 1)).append(char(level + 1)));
    }
    levels.append("\x09");
    const Result<QVariant> parsed = PropertyList::parse(binary(levels));
    ASSERT_FALSE(parsed.ok());
    EXPECT_TRUE(parsed.error().message.contains(u"too many values"_s));
}

TEST(PropertyList, objectsThatOverlapAreNotReadManyTimesOver)
{
    // 200 texts of 200 characters, all from the same bytes.
    QByteArray bytes("bplist00");
    QByteArray root("\xAF\x10\xC8", 3);
    for (int index = 1; index <= 200; ++index) {
        root.append(char(index));
    }
    const qsizetype text = bytes.size() + root.size();
    bytes.append(root).append("\x5F\x10\xC8").append(200, 'x');
    const qsizetype table = bytes.size();
    bytes.append('\0').append('\x08');
    for (int index = 1; index <= 200; ++index) {
        bytes.append(char(text >> 8)).append(char(text));
    }
    bytes.append(6, '\0').append("\x02\x01").append(6, '\0').append('\0').append(char(201));
    bytes.append(8, '\0').append(6, '\0').append(char(table >> 8)).append(char(table));
    EXPECT_EQ(PropertyList::parse(bytes).error().code, ErrorCode::Damaged);
}

TEST(PropertyList, binaryObjectsOfOddFormsAreRead)
{
    const QVariantList expected{1.5, qlonglong{-1}, u"é"_s, qlonglong{65535}, false};
    const QByteArray minusOne = QByteArray("\x13") + QByteArray(8, '\xFF');
    const Result<QVariant> parsed =
        PropertyList::parse(binary({"\xA5\x01\x02\x03\x04\x05",
                                    QByteArray("\x22\x3F\xC0\x00\x00", 5),
                                    minusOne,
                                    "\x72\xC3\xA9",
                                    "\x11\xFF\xFF",
                                    "\x08"}));
    ASSERT_TRUE(parsed.ok()) << qPrintable(parsed.error().message);
    EXPECT_EQ(parsed.value().toList(), expected);
}

TEST(PropertyList, aKeyThatIsNoTextIsDamaged)
{
    EXPECT_EQ(PropertyList::parse(binary({"\xD1\x01\x01", "\x09"})).error().code,
              ErrorCode::Damaged);
}

TEST(PropertyList, filesThatCannotBeReadAreToldApartAndNamed)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"list.plist"_s);
    EXPECT_EQ(PropertyList::read(path).error().code, ErrorCode::NotFound);
    EXPECT_EQ(PropertyList::read(folder.path()).error().code, ErrorCode::Unreadable);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("torn <plist>");
    file.close();
    const Result<QVariant> read = PropertyList::read(path);
    EXPECT_EQ(read.error().code, ErrorCode::Damaged);
    EXPECT_TRUE(read.error().message.contains(path));
}

TEST(PropertyList, aFileLargerThanAnyOfItsKindIsNotRead)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"list.plist"_s);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(xml("<true/>"));
    file.close();
    EXPECT_TRUE(PropertyList::read(path, file.size()).ok());
    EXPECT_EQ(PropertyList::read(path, file.size() - 1).error().code, ErrorCode::Unreadable);
    ASSERT_TRUE(file.resize(PropertyList::kMostBytes + 1));
    EXPECT_EQ(PropertyList::read(path).error().code, ErrorCode::Unreadable);
}

/// Real lists, where they lie beside the source tree: all are read, and all but dates of the XML
/// form come through both forms unchanged.
TEST(PropertyList, listsOfARealLibraryComeThroughUnchanged)
{
    QDirIterator files(QStringLiteral(CORVANE_SHARED_DATA),
                       {u"*.apmaster"_s, u"*.apversion"_s, u"*.apalbum"_s, u"*.apfolder"_s},
                       QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        const Result<QVariant> read = PropertyList::read(path);
        ASSERT_TRUE(read.ok()) << qPrintable(read.error().message);
        const Result<QByteArray> bytes = PropertyList::toBinary(read.value());
        ASSERT_TRUE(bytes.ok());
        EXPECT_EQ(PropertyList::parse(bytes.value()).value(), read.value()) << qPrintable(path);
        EXPECT_TRUE(PropertyList::parse(PropertyList::toXml(read.value()).value()).ok());
    }
}

} // namespace

TEST(PropertyList, entriesThatAreGivenAwayAreThoseOfTheListWhateverItsForm)
{
    const QVariantMap images{{u"1"_s, QVariantMap{{u"Caption"_s, u"one"_s}}},
                             {u"2"_s, QVariantMap{{u"Caption"_s, u"two"_s}}}};
    // A dictionary of that name deeper down is kept.
    const QVariantMap list{{u"Images"_s, images},
                           {u"Others"_s, QVariantMap{{u"Images"_s, images}}},
                           {u"Path"_s, u"/P"_s}};
    QVariantMap left = list;
    left.insert(u"Images"_s, QVariantMap());
    const QByteArray plain = PropertyList::toXml(list).value();
    const QByteArray unusual = QByteArray(plain).replace("\n", "\r\n");
    // The quick reader gives up after the entries.
    const QByteArray unusualAtLast = QByteArray(plain).replace("</plist>", "<!-- --></plist>");
    for (const QByteArray& form :
         {plain, unusual, unusualAtLast, PropertyList::toBinary(list).value()}) {
        QVariantMap taken;
        const Result<QVariant> read = PropertyList::parse(
            form, {.key = u"Images"_s, .taken = [&](const QString& key, const QVariant& value) {
                       taken.insert(key, value);
                   }});
        ASSERT_TRUE(read.ok());
        EXPECT_EQ(read.value(), QVariant(left));
        EXPECT_EQ(taken, images);
    }
}

TEST(PropertyList, whatIsToBeGivenAwayAndIsNoDictionaryIsKept)
{
    const QVariantMap list{{u"Images"_s, QVariantList{u"one"_s}}};
    for (const QByteArray& form :
         {PropertyList::toXml(list).value(), PropertyList::toBinary(list).value()}) {
        int taken = 0;
        const Result<QVariant> read = PropertyList::parse(
            form, {.key = u"Images"_s, .taken = [&](const QString&, const QVariant&) { ++taken; }});
        ASSERT_TRUE(read.ok());
        EXPECT_EQ(read.value(), QVariant(list));
        EXPECT_EQ(taken, 0);
    }
}
