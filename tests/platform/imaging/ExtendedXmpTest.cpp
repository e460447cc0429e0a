#include "LogRecorder.h"
#include "MetadataSamples.h"

#include <QCryptographicHash>
#include <QtEndian>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace MetadataSamples;

namespace
{

constexpr qsizetype kPieceLength = 40000;

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
    const ImageProperties carried = asCarried(read, {16, 8});
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
        const ImageProperties carried = asCarried(read, {16, 8});
        EXPECT_EQ(xmpText(carried, "Xmp.photoshop.City"), "Adelaide");
        EXPECT_EQ(xmpText(carried, "Xmp.photoshop.Country"), "(none)");
        EXPECT_EQ(xmpText(carried, "Xmp.xmpNote.HasExtendedXMP"), "(none)");
        ASSERT_EQ(log.entries().size(), 1);
        EXPECT_TRUE(log.entries().first().contains(u"second part of the XMP"_s));
    }
}
