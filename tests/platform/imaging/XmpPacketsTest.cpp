#include "XmpPackets.h"

#include "LogRecorder.h"
#include "MetadataAdapter.h"
#include "MetadataSamples.h"

#include <gtest/gtest.h>

#include <string>

using namespace Qt::StringLiterals;

namespace
{

constexpr XmpPackets::Limits kLimits{.main = 65000, .extended = 10'000'000};

XmpPackets::Packets packetsOf(const Exiv2::XmpData& xmp, const XmpPackets::Limits& limits = kLimits)
{
    XmpPackets::Packets packets;
    EXPECT_TRUE(MetadataAdapter::attempt(
        [&] { packets = XmpPackets::encode(xmp, u"the file"_s, limits); }));
    return packets;
}

/// Properties of 1000 bytes and a little more each.
Exiv2::XmpData textProperties(int count)
{
    Exiv2::XmpData xmp;
    for (int index = 0; index < count; ++index) {
        xmp["Xmp.photoshop.Property" + std::to_string(index)] =
            std::string(1000 + static_cast<size_t>(index), 't');
    }
    return xmp;
}

/// A property that is a structure of so many fields.
void addStructure(Exiv2::XmpData& xmp, const std::string& name, std::size_t fields)
{
    Exiv2::XmpTextValue structure;
    structure.setXmpStruct();
    xmp.add(Exiv2::XmpKey(name), &structure);
    const Exiv2::XmpTextValue value("w");
    for (std::size_t index = 0; index < fields; ++index) {
        xmp.add(Exiv2::XmpKey(name + "/photoshop:Field" + std::to_string(index)), &value);
    }
}

} // namespace

TEST(XmpPackets, whatHasRoomInTheMainPacketStandsThereWithoutANote)
{
    const XmpPackets::Packets packets = packetsOf(textProperties(50));
    EXPECT_EQ(packets.main.count("photoshop:Property"), 50);
    EXPECT_FALSE(packets.main.contains("HasExtendedXMP"));
    EXPECT_TRUE(packets.extended.isEmpty());
}

TEST(XmpPackets, nothingMakesNoPacket)
{
    const XmpPackets::Packets packets = packetsOf({});
    EXPECT_TRUE(packets.main.isEmpty());
    EXPECT_TRUE(packets.extended.isEmpty());
}

TEST(XmpPackets, theSecondPacketHoldsTheLargestProperties)
{
    const LogRecorder log;
    const XmpPackets::Packets packets = packetsOf(textProperties(100));
    EXPECT_LE(packets.main.size(), kLimits.main);
    EXPECT_TRUE(packets.main.contains("HasExtendedXMP"));
    EXPECT_TRUE(packets.main.contains("photoshop:Property0="));
    EXPECT_TRUE(packets.extended.contains("photoshop:Property99="));
    EXPECT_EQ(packets.main.count("photoshop:Property") +
                  packets.extended.count("photoshop:Property"),
              100);
    EXPECT_TRUE(log.entries().isEmpty());
}

TEST(XmpPackets, aPropertyLargerThanTheMainPacketIsWholeInTheSecond)
{
    Exiv2::XmpData xmp = textProperties(1);
    xmp["Xmp.photoshop.History"] = std::string(200'000, 'h');
    const XmpPackets::Packets packets = packetsOf(xmp);
    EXPECT_TRUE(packets.extended.contains(QByteArray(200'000, 'h')));
    EXPECT_FALSE(packets.main.contains("History"));
    EXPECT_TRUE(packets.main.contains("photoshop:Property0="));
}

TEST(XmpPackets, aPropertyAndItsPartsStandInOnePacket)
{
    const XmpPackets::Packets packets = packetsOf(MetadataSamples::largeXmp());
    EXPECT_FALSE(packets.main.contains("stEvt:action"));
    EXPECT_EQ(packets.extended.count("stEvt:action="), 300);
}

TEST(XmpPackets, aPropertyThatCannotBeWrittenCostsNoOther)
{
    Exiv2::XmpData xmp = textProperties(100);
    xmp["Xmp.photoshop.No name"] = std::string("text");
    const LogRecorder log;
    const XmpPackets::Packets packets = packetsOf(xmp);
    EXPECT_EQ(packets.main.count("photoshop:Property") +
                  packets.extended.count("photoshop:Property"),
              100);
    EXPECT_EQ(log.entries(),
              QStringList{u"The XMP metadata of the file has parts that cannot be written; left "
                          "out: Xmp.photoshop.No name"_s});
}

TEST(XmpPackets, ofWhatIsTooMuchForBothTheLargestIsLeftOutAndNamed)
{
    constexpr XmpPackets::Limits kSmall{.main = 6000, .extended = 5000};
    const LogRecorder log;
    const XmpPackets::Packets packets = packetsOf(textProperties(10), kSmall);
    EXPECT_LE(packets.main.size(), kSmall.main);
    EXPECT_LE(packets.extended.size(), kSmall.extended);
    EXPECT_TRUE(packets.main.contains("photoshop:Property0="));
    EXPECT_FALSE(packets.extended.contains("photoshop:Property9="));
    ASSERT_EQ(log.entries().size(), 1);
    EXPECT_TRUE(log.entries().first().startsWith(
        u"The XMP metadata of the file is more than a JPEG file holds; left out: "_s));
    EXPECT_EQ(packets.main.count("photoshop:Property") +
                  packets.extended.count("photoshop:Property") +
                  log.entries().first().count(u"Xmp.photoshop.Property"_s),
              10);
}

TEST(XmpPackets, aSecondPacketThatHasRoomForNothingIsNotNoted)
{
    Exiv2::XmpData xmp = textProperties(1);
    xmp["Xmp.photoshop.History"] = std::string(200'000, 'h');
    const XmpPackets::Packets packets = packetsOf(xmp, {.main = 65000, .extended = 100'000});
    EXPECT_TRUE(packets.extended.isEmpty());
    EXPECT_FALSE(packets.main.contains("HasExtendedXMP"));
    EXPECT_TRUE(packets.main.contains("photoshop:Property0="));
}

TEST(XmpPackets, thousandsOfPropertiesAreAllWritten)
{
    constexpr int kProperties = 2000;
    Exiv2::XmpData xmp;
    for (int index = 0; index < kProperties; ++index) {
        const Exiv2::XmpTextValue value("a few words of text");
        xmp.add(Exiv2::XmpKey("Xmp.photoshop.Property" + std::to_string(index)), &value);
    }
    const XmpPackets::Packets packets = packetsOf(xmp);
    EXPECT_GT(packets.main.size(), kLimits.main / 2);
    EXPECT_EQ(packets.main.count("photoshop:Property") +
                  packets.extended.count("photoshop:Property"),
              kProperties);
}

TEST(XmpPackets, soManyPropertiesThatTheyWouldTakeMinutesAreBoundedAndTheLogSaysSo)
{
    Exiv2::XmpData xmp;
    for (std::size_t index = 0; index < XmpPackets::kMostProperties + 3; ++index) {
        const Exiv2::XmpTextValue value("w");
        xmp.add(Exiv2::XmpKey("Xmp.photoshop.P" + std::to_string(index)), &value);
    }
    const LogRecorder log;
    const XmpPackets::Packets packets = packetsOf(xmp);
    EXPECT_EQ(packets.main.count("photoshop:P") + packets.extended.count("photoshop:P"),
              static_cast<qsizetype>(XmpPackets::kMostProperties));
    EXPECT_EQ(log.entries(),
              QStringList{u"The XMP metadata of the file has more than 4000 properties, or as "
                          u"many fields in its structures; left out: "
                          "Xmp.photoshop.P4000, Xmp.photoshop.P4001, Xmp.photoshop.P4002"_s});
}

TEST(XmpPackets, aStructureOfSoManyFieldsThatItWouldTakeMinutesIsLeftOutAndTheLogSaysSo)
{
    Exiv2::XmpData xmp = textProperties(2);
    addStructure(xmp, "Xmp.photoshop.Many", XmpPackets::kMostProperties + 1);
    addStructure(xmp, "Xmp.photoshop.Some", 3);
    const LogRecorder log;
    const XmpPackets::Packets packets = packetsOf(xmp);
    EXPECT_EQ(packets.main.count("photoshop:Property"), 2);
    EXPECT_EQ(packets.main.count("photoshop:Field"), 3);
    EXPECT_TRUE(packets.extended.isEmpty());
    EXPECT_EQ(log.entries(),
              QStringList{u"The XMP metadata of the file has more than 4000 properties, or as "
                          u"many fields in its structures; left out: "
                          "Xmp.photoshop.Many"_s});
}

TEST(XmpPackets, structuresOfTooManyFieldsTogetherAreBounded)
{
    Exiv2::XmpData xmp;
    for (const char* const name : {"Xmp.photoshop.A", "Xmp.photoshop.B", "Xmp.photoshop.C"}) {
        addStructure(xmp, name, XmpPackets::kMostProperties * 2 / 3);
    }
    const LogRecorder log;
    const XmpPackets::Packets packets = packetsOf(xmp);
    EXPECT_TRUE(packets.extended.contains("photoshop:B"));
    ASSERT_EQ(log.entries().size(), 1);
    EXPECT_TRUE(log.entries().first().endsWith(u"left out: Xmp.photoshop.C"_s));
}

TEST(XmpPackets, aListOfAnyLengthIsWritten)
{
    constexpr int kEvents = 5000;
    Exiv2::XmpData xmp;
    Exiv2::XmpTextValue events;
    events.setXmpArrayType(Exiv2::XmpValue::xaSeq);
    xmp.add(Exiv2::XmpKey("Xmp.xmpMM.History"), &events);
    const Exiv2::XmpTextValue action("saved");
    for (int index = 1; index <= kEvents; ++index) {
        xmp.add(Exiv2::XmpKey("Xmp.xmpMM.History[" + std::to_string(index) + "]/stEvt:action"),
                &action);
    }
    const LogRecorder log;
    EXPECT_EQ(packetsOf(xmp).extended.count("stEvt:action="), kEvents);
    EXPECT_TRUE(log.entries().isEmpty());
}

TEST(XmpPackets, markupMovesNoMoreThanNeeded)
{
    Exiv2::XmpData xmp;
    for (int index = 0; index < 300; ++index) {
        const std::string number = std::to_string(index);
        xmp["Xmp.photoshop.Marked" + number] = std::string(100, '&');
        xmp["Xmp.photoshop.Plain" + number] = std::string(90, 'p');
    }
    const XmpPackets::Packets packets = packetsOf(xmp);
    EXPECT_LE(packets.main.size(), kLimits.main);
    EXPECT_GT(packets.main.size(), kLimits.main / 3);
}

TEST(XmpPackets, theSameXmpMakesTheSameBytes)
{
    const XmpPackets::Packets first = packetsOf(MetadataSamples::largeXmp());
    const XmpPackets::Packets second = packetsOf(MetadataSamples::largeXmp());
    EXPECT_EQ(first.main, second.main);
    EXPECT_EQ(first.extended, second.extended);
}
