#include "PropertyListForms.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

QByteArray plainList(const QByteArray& body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n" + body +
           "\n</plist>\n";
}

QByteArray catalogueLike()
{
    return plainList(
        "<dict>\n"
        "\t<key>Archive Path</key>\n\t<string>/P &amp; &lt;Q&gt; &apos;&quot;</string>\n"
        "\t<key>Major Version</key><integer>-2</integer>\n"
        "\t<key>Zo\xC3\xAB</key><real>-507130692.250000</real>\n"
        "\t<key>List</key>\n\t<array>\n\t\t<string></string>\n\t\t<true/>\n"
        "\t\t<dict>\n\t\t\t<key>A</key>\t\t<false/>\n\t\t</dict>\n"
        "\t\t<array>\n\t\t</array>\n\t</array>\n"
        "\t<key>A</key><string>twice \xF0\x9F\x98\x80</string>\n"
        "\t<key>A</key><string>last</string>\n"
        "</dict>");
}

/// Whether the quick reader says nothing, or what the general one says.
bool agrees(const QByteArray& bytes)
{
    const std::optional<QVariant> plain = PropertyListForms::readPlainXml(bytes);
    if (!plain) {
        return true;
    }
    const Result<QVariant> general = PropertyListForms::readXml(bytes);
    return general.ok() && general.value() == *plain;
}

} // namespace

TEST(PropertyListPlainXmlReaderTest, aListAsProgramsWriteItIsReadAsTheGeneralReaderReadsIt)
{
    const std::optional<QVariant> plain = PropertyListForms::readPlainXml(catalogueLike());
    ASSERT_TRUE(plain.has_value());
    EXPECT_EQ(*plain, PropertyListForms::readXml(catalogueLike()).value());
    const QVariantMap entries = plain->toMap();
    EXPECT_EQ(entries.value(u"Archive Path"_s).toString(), u"/P & <Q> '\""_s);
    EXPECT_EQ(entries.value(u"Major Version"_s), QVariant(qlonglong{-2}));
    EXPECT_EQ(entries.value(u"A"_s).toString(), u"last"_s);
}

TEST(PropertyListPlainXmlReaderTest, whatTheWriterWritesIsPlain)
{
    const QVariantMap record{{u"Caption"_s, u"a < b & c"_s}, {u"Rating"_s, qlonglong{4}}};
    const QVariant list(QVariantMap{{u"17"_s, record}, {u"18"_s, record}});
    const Result<QByteArray> written = PropertyListForms::writeXml(list);
    ASSERT_TRUE(written.ok());
    EXPECT_EQ(PropertyListForms::readPlainXml(written.value()), std::optional(list));
}

TEST(PropertyListPlainXmlReaderTest, anythingUnusualIsLeftToTheGeneralReader)
{
    for (const QByteArray& body : {QByteArray("<data>AAAA</data>"),
                                   QByteArray("<date>2020-01-01T00:00:00Z</date>"),
                                   QByteArray("<string>&#13;</string>"),
                                   QByteArray("<string>a<!-- b --></string>"),
                                   QByteArray("<string/>"),
                                   QByteArray("<string>a\r\nb</string>"),
                                   QByteArray("<string>a\x01</string>"),
                                   QByteArray("<string>\xFF</string>"),
                                   QByteArray("<string>\xEF\xBF\xBF</string>"),
                                   QByteArray("<string>]]></string>"),
                                   QByteArray("<string>a &nbsp; b</string>"),
                                   QByteArray("<integer> 5</integer>"),
                                   QByteArray("<integer>9223372036854775808</integer>"),
                                   QByteArray("<integer></integer>"),
                                   QByteArray("<real>nan</real>"),
                                   QByteArray("<real>1e3</real>"),
                                   QByteArray("<real>1.2.3</real>"),
                                   QByteArray("<dict><key>CF$UID</key><integer>1</integer></dict>"),
                                   QByteArray("<dict><key>A</key></dict>"),
                                   QByteArray("<dict><string>A</string></dict>"),
                                   QByteArray("<array>a</array>"),
                                   QByteArray("<array>"),
                                   QByteArray("<true/><true/>"),
                                   QByteArray("")}) {
        EXPECT_EQ(PropertyListForms::readPlainXml(plainList(body)), std::nullopt)
            << body.toStdString();
    }
    const QByteArray list = plainList("<true/>");
    EXPECT_EQ(PropertyListForms::readPlainXml(list), std::optional(QVariant(true)));
    EXPECT_EQ(PropertyListForms::readPlainXml(list + 'x'), std::nullopt);
    EXPECT_EQ(PropertyListForms::readPlainXml("\xEF\xBB\xBF" + list), std::nullopt);
    EXPECT_EQ(PropertyListForms::readPlainXml(QByteArray(list).replace("UTF-8", "UTF-16")),
              std::nullopt);
}

TEST(PropertyListPlainXmlReaderTest, nestingTooDeepIsLeftToTheGeneralReader)
{
    constexpr int kMost = PropertyListForms::kMaximumDepth;
    const auto nested = [](int depth) {
        return plainList(QByteArray("<array>").repeated(depth) +
                         QByteArray("</array>").repeated(depth));
    };
    EXPECT_TRUE(PropertyListForms::readPlainXml(nested(kMost)).has_value());
    EXPECT_TRUE(agrees(nested(kMost)));
    EXPECT_EQ(PropertyListForms::readPlainXml(nested(kMost + 1)), std::nullopt);
}

TEST(PropertyListPlainXmlReaderTest, itNeverReadsADamagedListOtherwiseThanTheGeneralReader)
{
    const QByteArray whole = catalogueLike();
    QRandomGenerator random(11);
    for (int round = 0; round < 4000; ++round) {
        QByteArray damaged = whole;
        const qsizetype place = random.bounded(damaged.size());
        switch (random.bounded(4)) {
        case 0:
            damaged[place] = static_cast<char>(random.bounded(256));
            break;
        case 1:
            damaged.remove(place, random.bounded(1, 12));
            break;
        case 2:
            damaged.insert(place, damaged.mid(random.bounded(damaged.size()), random.bounded(20)));
            break;
        default:
            damaged.truncate(place);
        }
        ASSERT_TRUE(agrees(damaged)) << damaged.toStdString();
    }
}
