#include "XmpRepair.h"

#include <QByteArray>

#include <gtest/gtest.h>

namespace
{

QByteArray packetWith(const QByteArray& properties)
{
    return R"(<x:xmpmeta xmlns:x="adobe:ns:meta/">)"
           R"(<rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#">)" +
           properties + "</rdf:RDF></x:xmpmeta>";
}

QByteArray description(const QByteArray& content)
{
    return R"(<rdf:Description rdf:about="" xmlns:dc="http://purl.org/dc/elements/1.1/">)" +
           content + "</rdf:Description>";
}

} // namespace

TEST(XmpRepair, aPropertyStatedAgainIsLeftOut)
{
    const QByteArray repaired = XmpRepair::withoutDuplicates(
        packetWith(description("<dc:source>first</dc:source><dc:source>second</dc:source>") +
                   description("<dc:source>third</dc:source><dc:format>image/jpeg</dc:format>")));
    EXPECT_EQ(repaired.count("<dc:source>"), 1);
    EXPECT_TRUE(repaired.contains("first"));
    EXPECT_TRUE(repaired.contains("image/jpeg"));
}

TEST(XmpRepair, whatStandsAroundThePacketDoesNotMatter)
{
    const QByteArray packet =
        packetWith(description("<dc:source>first</dc:source><dc:source>second</dc:source>"));
    const QByteArray repaired =
        XmpRepair::withoutDuplicates("\n  " + packet + QByteArray(100, '\0'));
    EXPECT_EQ(repaired.count("<dc:source>"), 1);
    EXPECT_TRUE(XmpRepair::withoutDuplicates(">a<").isEmpty());
}

TEST(XmpRepair, theItemsOfAListAreNoDuplicates)
{
    const QByteArray repaired = XmpRepair::withoutDuplicates(packetWith(description(
        "<dc:subject><rdf:Bag><rdf:li>one</rdf:li><rdf:li>two</rdf:li></rdf:Bag></dc:subject>")));
    EXPECT_EQ(repaired.count("<rdf:li>"), 2);
}

TEST(XmpRepair, whatIsNoWholeXmlYieldsNothing)
{
    EXPECT_TRUE(XmpRepair::withoutDuplicates("no markup").isEmpty());
    EXPECT_TRUE(XmpRepair::withoutDuplicates(packetWith("<rdf:Description>")).isEmpty());
    EXPECT_TRUE(XmpRepair::withoutDuplicates({}).isEmpty());
}

TEST(XmpRepair, aPacketNestedWithoutEndYieldsNothing)
{
    QByteArray deep;
    for (int level = 0; level < 500; ++level) {
        deep += "<a>";
    }
    for (int level = 0; level < 500; ++level) {
        deep += "</a>";
    }
    EXPECT_TRUE(XmpRepair::withoutDuplicates(deep).isEmpty());
}
