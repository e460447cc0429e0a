#include "JpegSegments.h"

#include <QByteArray>

#include <gtest/gtest.h>

namespace
{

/// Two APP1 segments, an APP2 between, and one behind the start of the picture.
QByteArray fourSegments()
{
    return QByteArrayLiteral("\xFF\xD8"
                             "\xFF\xE1\0\x05"
                             "one"
                             "\xFF\xE2\0\x05"
                             "two"
                             "\xFF\xE1\0\x06"
                             "ones"
                             "\xFF\xDA\0\x02"
                             "\xFF\xE1\0\x05"
                             "one");
}

} // namespace

TEST(JpegSegmentsTest, thoseOfAMarkerBeforeThePictureAreFoundInOrder)
{
    const QByteArray jpeg = fourSegments();
    EXPECT_EQ(JpegSegments::payloads(jpeg, 0xE1, "one"), (QList<QByteArrayView>{"one", "ones"}));
    EXPECT_EQ(JpegSegments::payloads(jpeg, 0xE2, "two"), QList<QByteArrayView>{"two"});
}

TEST(JpegSegmentsTest, onlyThoseThatBeginWithTheSignatureAreFound)
{
    const QByteArray jpeg = fourSegments();
    EXPECT_EQ(JpegSegments::payloads(jpeg, 0xE1, "ones"), QList<QByteArrayView>{"ones"});
    EXPECT_TRUE(JpegSegments::payloads(jpeg, 0xE1, "two").isEmpty());
}

TEST(JpegSegmentsTest, aSegmentThatIsCutShortIsNone)
{
    const QByteArray jpeg = fourSegments();
    EXPECT_EQ(JpegSegments::payloads(jpeg.first(22), 0xE1, "one"), QList<QByteArrayView>{"one"});
    EXPECT_TRUE(JpegSegments::payloads(jpeg.first(3), 0xE1, {}).isEmpty());
}
