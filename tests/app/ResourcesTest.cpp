#include "Bundle.h"
#include "PropertyList.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>

#include <gtest/gtest.h>

#include <exiv2/exiv2.hpp>

using namespace Qt::StringLiterals;

namespace
{

const Bundle& bundle()
{
    static const Bundle compiledIn(u":/corvane"_s);
    return compiledIn;
}

TEST(Resources, theBundleKnowsItsNameAndTheVersionOfTheBuild)
{
    EXPECT_EQ(bundle().name(), u"Corvane"_s);
    EXPECT_EQ(bundle().version(), QStringLiteral(CORVANE_VERSION));
    EXPECT_FALSE(bundle().infoDictionary().value(u"CFBundleIdentifier"_s).toString().isEmpty());
}

TEST(Resources, theBundleNamesAnAddressForCrashReportsOnlyWhereTheBuildDoes)
{
    const QString given = QStringLiteral(CORVANE_CRASH_SUBMISSION_URL);
    const QVariantMap& info = bundle().infoDictionary();
    EXPECT_EQ(info.contains(u"ZTBCrashReporterCrashSubmissionURL"_s), !given.isEmpty());
    EXPECT_EQ(info.value(u"ZTBCrashReporterCrashSubmissionURL"_s).toString(), given);
}

TEST(Resources, theFallbacksAreThoseOfBothFaces)
{
    const QString path = bundle().pathForResource(u"UserDefaults"_s, u"plist"_s);
    EXPECT_EQ(PropertyList::read(path).value().toMap(),
              (QVariantMap{{u"JpegQuality"_s, 0.8},
                           {u"JpegOutputSize"_s, qlonglong{0}},
                           {u"LongSide"_s, qlonglong{1600}},
                           {u"ShortSide"_s, qlonglong{1200}},
                           {u"LongLocked"_s, true},
                           {u"ShortLocked"_s, false},
                           {u"AlbumEnabled"_s, false},
                           {u"TagEnabled"_s, true},
                           {u"TrashEnabled"_s, false},
                           {u"ProcessingOption"_s, true}}));
}

class KeywordPicture : public testing::Test
{
protected:
    void SetUp() override
    {
        QFile file(bundle().pathForResource(u"iPhoto Keywords"_s, u"jpg"_s));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        m_bytes = file.readAll();
    }

    QByteArray m_bytes;
};

TEST_F(KeywordPicture, isASmallPicture)
{
    QBuffer buffer(&m_bytes);
    QImageReader reader(&buffer);
    EXPECT_EQ(reader.size(), QSize(640, 480));
    EXPECT_EQ(reader.format(), "jpeg");
    EXPECT_FALSE(reader.read().isNull());
    EXPECT_LT(m_bytes.size(), 60 * 1024);
}

TEST_F(KeywordPicture, isSrgbAndHasExactlyTheTwoKeywordsInBothPlaces)
{
    const auto image = Exiv2::ImageFactory::open(
        reinterpret_cast<const Exiv2::byte*>(m_bytes.constData()), m_bytes.size());
    image->readMetadata();
    QStringList iptc;
    for (const Exiv2::Iptcdatum& datum : image->iptcData()) {
        if (datum.key() == "Iptc.Application2.Keywords") {
            iptc.append(QString::fromStdString(datum.toString()));
        }
    }
    const QStringList keywords{u"Corvane Original"_s, u"Corvane Processed"_s};
    EXPECT_EQ(iptc, keywords);
    const Exiv2::Value& subject = image->xmpData()["Xmp.dc.subject"].value();
    ASSERT_EQ(subject.count(), 2);
    for (int index = 0; index < 2; ++index) {
        EXPECT_EQ(QString::fromStdString(subject.toString(index)), keywords.at(index));
    }
    EXPECT_EQ(image->exifData()["Exif.Photo.ColorSpace"].toLong(), 1);
}

} // namespace
