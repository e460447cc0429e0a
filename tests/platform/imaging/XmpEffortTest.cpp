#include "XmpEffort.h"

#include <gtest/gtest.h>

#include <functional>

namespace
{

constexpr int kManyFields = 6000;

QByteArray xmpOf(const QByteArray& descriptions)
{
    return "<?xpacket begin=\"\"?><x:xmpmeta><rdf:RDF>" + descriptions + "</rdf:RDF></x:xmpmeta>";
}

QByteArray described(const QByteArray& properties)
{
    return "<rdf:Description rdf:about=\"\">" + properties + "</rdf:Description>";
}

QByteArray repeated(int times, const std::function<QByteArray(const QByteArray& number)>& made)
{
    QByteArray all;
    for (int index = 0; index < times; ++index) {
        all += made(QByteArray::number(index).rightJustified(6, '0'));
    }
    return all;
}

QByteArray elements(int count)
{
    return repeated(
        count, [](const QByteArray& number) { return "<a:P" + number + ">w</a:P" + number + ">"; });
}

QByteArray attributes(int count)
{
    return repeated(count, [](const QByteArray& number) { return " a:P" + number + "='w'"; });
}

QByteArray structure(const QByteArray& fields)
{
    return "<a:S rdf:parseType='Resource'>" + fields + "</a:S>";
}

bool isBearable(const QByteArray& properties)
{
    return XmpEffort::isBearable(xmpOf(described(properties)));
}

} // namespace

TEST(XmpEffortTest, muchTextIsBearableUpToALimit)
{
    const QByteArray depths = "<a:Data>" + QByteArray(8'000'000, 'A') + "==</a:Data>";
    EXPECT_TRUE(isBearable(depths));
    EXPECT_TRUE(isBearable(depths + "<a:More>" + QByteArray(100'000, '=') + "</a:More>"));
    EXPECT_FALSE(isBearable(depths + depths + depths));
}

TEST(XmpEffortTest, propertiesAreBearableUpToANumber)
{
    EXPECT_TRUE(isBearable(elements(4500)));
    EXPECT_FALSE(isBearable(elements(kManyFields)));
    EXPECT_FALSE(XmpEffort::isBearable(xmpOf("<rdf:Description" + attributes(kManyFields) + "/>")));
    EXPECT_FALSE(XmpEffort::isBearable(xmpOf(repeated(
        kManyFields, [](const QByteArray& number) { return described("<a:P" + number + "/>"); }))));
}

TEST(XmpEffortTest, propertiesCountTogetherHoweverDeepTheyLie)
{
    const QByteArray inTen = repeated(kManyFields / 500, [](const QByteArray& number) {
        QByteArray properties = elements(500);
        return described(properties.replace("a:P", "a:P" + number));
    });
    EXPECT_FALSE(XmpEffort::isBearable("<a><b>" + xmpOf(inTen) + "</b></a>"));
    EXPECT_FALSE(
        XmpEffort::isBearable("<a><rdf:Description>" + xmpOf(inTen) + "</rdf:Description></a>"));
    const QByteArray listOfStructures = "<a:L><rdf:Seq>" +
                                        repeated(2000,
                                                 [](const QByteArray& number) {
                                                     return "<rdf:li><rdf:Description a:x='" +
                                                            number + "' a:y='1' a:z='2'/></rdf:li>";
                                                 }) +
                                        "</rdf:Seq></a:L>";
    EXPECT_TRUE(isBearable(listOfStructures));
}

TEST(XmpEffortTest, fieldsOfStructuresAreBearableUpToANumber)
{
    EXPECT_TRUE(isBearable(structure(elements(4500))));
    EXPECT_FALSE(isBearable(structure(elements(kManyFields))));
    EXPECT_FALSE(isBearable("<a:S><rdf:Description" + attributes(kManyFields) + "/></a:S>"));
    EXPECT_TRUE(isBearable(structure(elements(3000)) + structure(elements(3000))));
    EXPECT_FALSE(isBearable(structure(elements(3000)) + structure(elements(3000)) +
                            structure(elements(3000))));
}

TEST(XmpEffortTest, aListMayBeLong)
{
    const auto listOf = [](int count) {
        return "<a:L><rdf:Seq>" +
               repeated(count,
                        [](const QByteArray& number) {
                            return "<rdf:li a:action='saved' a:when=\"" + number + " > 5\"/>";
                        }) +
               "</rdf:Seq></a:L>";
    };
    EXPECT_TRUE(isBearable(listOf(15'000)));
    EXPECT_FALSE(isBearable(listOf(20'000)));
}

TEST(XmpEffortTest, whatIsNoElementHidesNone)
{
    const auto split = [](const QByteArray& between) {
        return structure(repeated(kManyFields / 1000, [&](const QByteArray& number) {
            QByteArray fields = elements(1000);
            return fields.replace("a:P", "a:P" + number) + between;
        }));
    };
    EXPECT_FALSE(isBearable(split({})));
    EXPECT_FALSE(isBearable(split("<!-- </a:S><a:S> -->")));
    EXPECT_FALSE(isBearable(split("<![CDATA[</a:S><a:S>]]>")));
    EXPECT_FALSE(isBearable(split("<?a </a:S><a:S>?>")));
    EXPECT_FALSE(isBearable(split("<a:Q a:b='</a:S><a:S>'/>")));
}

TEST(XmpEffortTest, whatMayGrowOrCannotBeCountedIsNotBearable)
{
    const QByteArray padding(100'000, ' ');
    EXPECT_TRUE(XmpEffort::isBearable(xmpOf(described({})) + padding));
    EXPECT_FALSE(
        XmpEffort::isBearable("<!DOCTYPE a [<!ENTITY b 'b'>]>" + xmpOf(described({})) + padding));
    EXPECT_FALSE(XmpEffort::isBearable(QByteArray("<\0x\0", 4) + padding));
    EXPECT_FALSE(XmpEffort::isBearable("\xFF\xFE<" + padding));
}
