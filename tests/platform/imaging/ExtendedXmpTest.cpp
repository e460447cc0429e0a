#include "LogRecorder.h"
#include "MetadataSamples.h"
#include "MetadataSegments.h"

#include <QCryptographicHash>
#include <QtEndian>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace MetadataSamples;

namespace
{

constexpr qsizetype kPieceLength = 40000;
const QSize kTinyCopy(16, 8);

QByteArray big(qsizetype number)
{
    const quint32 bytes = qToBigEndian(static_cast<quint32>(number));
    return {reinterpret_cast<const char*>(&bytes), 4};
}

QByteArray packet(const QByteArray& properties)
{
    return R"(<x:xmpmeta xmlns:x="adobe:ns:meta/">
        <rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#">
        <rdf:Description rdf:about="" xmlns:photoshop="http://ns.adobe.com/photoshop/1.0/"
        xmlns:xmpNote="http://ns.adobe.com/xmp/note/">)" +
           properties + "</rdf:Description></rdf:RDF></x:xmpmeta>";
}

/// A JPEG whose second packet is cut into pieces, the last one first.
QByteArray jpegWith(const QByteArray& main, const QByteArray& extended, int missingPieces = 0)
{
    const QByteArray digest =
        QCryptographicHash::hash(extended, QCryptographicHash::Md5).toHex().toUpper();
    const QByteArray note = "<xmpNote:HasExtendedXMP>" + digest + "</xmpNote:HasExtendedXMP>";
    QList<JpegSegment> segments;
    for (qsizetype place = 0; place < extended.size(); place += kPieceLength) {
        segments.prepend({0xe1,
                          QByteArrayLiteral("http://ns.adobe.com/xmp/extension/\0") + digest +
                              big(extended.size()) + big(place) +
                              extended.mid(place, kPieceLength)});
    }
    segments.resize(segments.size() - missingPieces);
    segments.prepend(
        {0xe1, QByteArrayLiteral("http://ns.adobe.com/xap/1.0/\0") + packet(main + note)});
    return jpegWithSegments(segments);
}

bool isPiece(const JpegSegment& segment)
{
    return segment.payload.startsWith("http://ns.adobe.com/xmp/extension/");
}

QList<JpegSegment> piecesOf(const ImageProperties& properties)
{
    QList<JpegSegment> segments = MetadataSegments::build(properties, kTinyCopy, {});
    segments.removeIf([](const JpegSegment& segment) { return !isPiece(segment); });
    return segments;
}

ImageProperties withLargeXmp()
{
    Blocks blocks;
    blocks.xmp = largeXmp();
    return holding(blocks);
}

const QByteArray kMain = "<photoshop:City>Adelaide</photoshop:City>";
const QByteArray kExtended = "<photoshop:City>Perth</photoshop:City>"
                             "<photoshop:Country>Australia</photoshop:Country>"
                             "<photoshop:History>" +
                             QByteArray(50000, 'h') + "</photoshop:History>";

} // namespace

TEST(ExtendedXmp, thePartsAreOneAndTheFirstCounts)
{
    const ImageProperties read = readBack(jpegWith(kMain, packet(kExtended)));
    EXPECT_EQ(xmpText(read, "Xmp.photoshop.City"), "Adelaide");
    EXPECT_EQ(xmpText(read, "Xmp.photoshop.Country"), "Australia");
    EXPECT_EQ(xmpText(read, "Xmp.photoshop.History").size(), 50000U);
    const LogRecorder log;
    const ImageProperties carried = asCarried(read, kTinyCopy);
    EXPECT_EQ(xmpText(carried, "Xmp.photoshop.Country"), "Australia");
    EXPECT_EQ(xmpText(carried, "Xmp.photoshop.History").size(), 50000U);
    EXPECT_EQ(xmpText(carried, "Xmp.xmpNote.HasExtendedXMP"), "(none)");
    EXPECT_TRUE(log.entries().isEmpty());
}

TEST(ExtendedXmp, aSecondPartThatIsNotWholeIsLeftOutWithItsNote)
{
    QByteArray changed = jpegWith(kMain, packet(kExtended));
    changed.replace("hhhhhhhhhh", "hhhhhxhhhh");
    for (const QByteArray& jpeg : {jpegWith(kMain, packet(kExtended), 1),
                                   jpegWith(kMain, packet(kExtended), 2),
                                   jpegWith(kMain, "no packet"),
                                   changed}) {
        const ImageProperties read = readBack(jpeg);
        const LogRecorder log;
        const ImageProperties carried = asCarried(read, kTinyCopy);
        EXPECT_EQ(xmpText(carried, "Xmp.photoshop.City"), "Adelaide");
        EXPECT_EQ(xmpText(carried, "Xmp.photoshop.Country"), "(none)");
        EXPECT_EQ(xmpText(carried, "Xmp.xmpNote.HasExtendedXMP"), "(none)");
        ASSERT_EQ(log.entries().size(), 1);
        EXPECT_TRUE(log.entries().first().contains(u"second part of the XMP"_s));
    }
}

TEST(ExtendedXmp, aSecondPartThatWouldTakeMinutesToReadIsLeftOut)
{
    constexpr int kFields = 20'000;
    QByteArray fields;
    for (int index = 0; index < kFields; ++index) {
        const QByteArray name = "photoshop:F" + QByteArray::number(index);
        fields += "<" + name + ">w</" + name + ">";
    }
    const ImageProperties read =
        readBack(jpegWith(kMain,
                          packet("<photoshop:History rdf:parseType=\"Resource\">" + fields +
                                 "</photoshop:History>")));
    EXPECT_EQ(xmpTexts(read).size(), 1U);
    const LogRecorder log;
    EXPECT_EQ(xmpText(asCarried(read, kTinyCopy), "Xmp.photoshop.City"), "Adelaide");
    EXPECT_EQ(log.entries().size(), 1);
}

TEST(ExtendedXmp, everythingOfALargePacketIsReadBack)
{
    const ImageProperties original = withLargeXmp();
    const LogRecorder log;
    const auto carried = xmpTexts(asCarried(original, kTinyCopy));
    for (const auto& [key, text] : xmpTexts(original)) {
        ASSERT_TRUE(carried.contains(key)) << key;
        EXPECT_EQ(carried.at(key), text) << key;
    }
    EXPECT_TRUE(log.entries().isEmpty());
}

TEST(ExtendedXmp, thePiecesMakeThePacketWhoseDigestIsNoted)
{
    const QList<JpegSegment> pieces = piecesOf(withLargeXmp());
    ASSERT_GT(pieces.size(), 1);
    const QByteArray digest = pieces.first().payload.mid(35, 32);
    QByteArray packet;
    for (const JpegSegment& piece : pieces) {
        EXPECT_EQ(piece.marker, 0xe1);
        EXPECT_LE(piece.payload.size(), JpegSegment::kLargestPayload);
        EXPECT_EQ(piece.payload.mid(35, 32), digest);
        EXPECT_EQ(piece.payload.mid(67, 4), pieces.first().payload.mid(67, 4));
        EXPECT_EQ(piece.payload.mid(71, 4), big(packet.size()));
        packet.append(piece.payload.mid(75));
    }
    EXPECT_EQ(pieces.first().payload.mid(67, 4), big(packet.size()));
    EXPECT_EQ(QCryptographicHash::hash(packet, QCryptographicHash::Md5).toHex().toUpper(), digest);
    EXPECT_EQ(xmpText(asCarried(withLargeXmp(), kTinyCopy), "Xmp.xmpNote.HasExtendedXMP"),
              digest.toStdString());
}

TEST(ExtendedXmp, aSourceThatIsExtendedMakesACopyThatIs)
{
    const QByteArray more =
        "<photoshop:Instructions>" + QByteArray(60000, 'i') + "</photoshop:Instructions>";
    const ImageProperties original = readBack(jpegWith(kMain, packet(kExtended + more)));
    const ImageProperties carried = asCarried(original, kTinyCopy);
    EXPECT_EQ(xmpTexts(carried), xmpTexts(original));
    EXPECT_EQ(piecesOf(original).size(), 1);
    EXPECT_NE(xmpText(carried, "Xmp.xmpNote.HasExtendedXMP"),
              xmpText(original, "Xmp.xmpNote.HasExtendedXMP"));
}

TEST(ExtendedXmp, previewsGoBeforeAnythingIsExtended)
{
    Blocks blocks;
    blocks.xmp["Xmp.photoshop.City"] = std::string("Adelaide");
    Exiv2::XmpTextValue previews;
    previews.setXmpArrayType(Exiv2::XmpValue::xaAlt);
    blocks.xmp.add(Exiv2::XmpKey("Xmp.xmp.Thumbnails"), &previews);
    blocks.xmp["Xmp.xmp.Thumbnails[1]/xmpGImg:image"] = std::string(100000, 'A');
    const LogRecorder log;
    const ImageProperties carried = asCarried(holding(blocks), kTinyCopy);
    EXPECT_EQ(xmpTexts(carried).size(), 1U);
    EXPECT_EQ(xmpText(carried, "Xmp.photoshop.City"), "Adelaide");
    EXPECT_TRUE(piecesOf(holding(blocks)).isEmpty());
    EXPECT_EQ(xmpText(carried, "Xmp.xmpNote.HasExtendedXMP"), "(none)");
    EXPECT_TRUE(log.entries().isEmpty());
}

TEST(ExtendedXmp, keywordsOfTheSecondPacketAreRemovedLikeThoseOfTheFirst)
{
    const QByteArray keywords =
        "<photoshop:Instructions>" + QByteArray(60000, 'i') +
        "</photoshop:Instructions>"
        "<dc:subject xmlns:dc=\"http://purl.org/dc/elements/1.1/\"><rdf:Bag>"
        "<rdf:li>a keyword</rdf:li></rdf:Bag></dc:subject>";
    ImageProperties original = readBack(jpegWith(kMain, packet(kExtended + keywords)));
    ASSERT_EQ(xmpText(original, "Xmp.dc.subject"), "a keyword");
    original.removeXmpSubjects();
    const ImageProperties carried = asCarried(original, kTinyCopy);
    EXPECT_EQ(xmpText(carried, "Xmp.dc.subject"), "(none)");
    EXPECT_EQ(xmpText(carried, "Xmp.photoshop.Instructions").size(), 60000U);
}
