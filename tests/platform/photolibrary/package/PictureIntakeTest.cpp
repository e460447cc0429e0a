#include "PictureIntake.h"

#include "BitmapImage.h"
#include "ImageBuilder.h"
#include "ImageProperties.h"
#include "JpegDecoder.h"
#include "JpegDestination.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

/// Large enough for a thumbnail that is made of averaged pixels.
constexpr QSize kSize(2400, 1600);

class PictureIntakeTest : public testing::Test
{
protected:
    PictureIntakeTest()
        : m_jpeg{.bytes = {}, .picture = BitmapImage::toImage(ImageBuilder::scene(kSize))}
    {
        const auto bytes = JpegDestination::encode(m_jpeg.picture, ImageProperties(), 0.9);
        EXPECT_TRUE(bytes.ok());
        m_jpeg.bytes = bytes.ok() ? bytes.value() : QByteArray();
        ImageBuilder::write(path(), m_jpeg.bytes);
    }

    [[nodiscard]] QString path() const { return m_folder.filePath(u"picture.jpg"_s); }

    [[nodiscard]] PreparedPicture taken(const std::optional<ProvedJpeg>& proved) const
    {
        auto picture = PictureIntake::jpeg(path(), u"picture.jpg"_s, proved);
        EXPECT_TRUE(picture.ok());
        return picture.ok() ? std::move(picture).value() : PreparedPicture();
    }

    [[nodiscard]] static Bitmap decoded(const QByteArray& jpeg)
    {
        auto bitmap = JpegDecoder::decode(jpeg);
        EXPECT_TRUE(bitmap.ok());
        return bitmap.ok() ? std::move(bitmap).value() : Bitmap();
    }

    /// That is another picture than the file holds.
    [[nodiscard]] ProvedJpeg withOtherPicture() const
    {
        ProvedJpeg other = m_jpeg;
        other.picture.fill(Qt::darkCyan);
        return other;
    }

    static void expectDarkCyan(const QByteArray& jpeg)
    {
        const Bitmap picture = decoded(jpeg);
        QImage wanted(picture.size(), QImage::Format_RGB888);
        wanted.fill(Qt::darkCyan);
        EXPECT_LT(ImageBuilder::difference(picture, BitmapImage::fromImage(wanted)), 0.01);
    }

    QTemporaryDir m_folder;
    ProvedJpeg m_jpeg;
};

} // namespace

TEST_F(PictureIntakeTest, ofBytesThatWereProvedThePictureIsTakenAndNotDecoded)
{
    const PreparedPicture picture = taken(withOtherPicture());
    EXPECT_EQ(picture.bytes, m_jpeg.bytes);
    EXPECT_EQ(picture.stored, kSize);
    expectDarkCyan(picture.thumbnail);
    expectDarkCyan(picture.miniature);
}

TEST_F(PictureIntakeTest, otherBytesThanThoseThatWereProvedAreDecoded)
{
    ProvedJpeg other = withOtherPicture();
    other.bytes.append('\0');
    EXPECT_EQ(taken(other).thumbnail, taken(std::nullopt).thumbnail);
}

TEST_F(PictureIntakeTest, thumbnailsOfAProvedPictureShowWhatThoseOfTheDecodedOneShow)
{
    const PreparedPicture quick = taken(m_jpeg);
    const PreparedPicture thorough = taken(std::nullopt);
    EXPECT_EQ(quick.thumbnailSize, QSize(1024, 682));
    EXPECT_EQ(quick.thumbnailSize, thorough.thumbnailSize);
    EXPECT_EQ(quick.miniatureSize, thorough.miniatureSize);
    EXPECT_LT(ImageBuilder::difference(decoded(quick.thumbnail), decoded(thorough.thumbnail)),
              0.01);
    EXPECT_LT(ImageBuilder::difference(decoded(quick.miniature), decoded(thorough.miniature)),
              0.01);
}

TEST_F(PictureIntakeTest, aProvedPictureThatIsStoredTurnedHasAnUprightPreview)
{
    ImageBuilder::RawFile details;
    details.orientation = 6;
    const auto turned =
        ImageProperties::fromBytes(ImageBuilder::dng(ImageBuilder::scene({64, 48}), details));
    ASSERT_TRUE(turned.ok());
    const auto bytes = JpegDestination::encode(m_jpeg.picture, turned.value(), 0.9);
    ASSERT_TRUE(bytes.ok());
    m_jpeg.bytes = bytes.value();
    ImageBuilder::write(path(), m_jpeg.bytes);
    const PreparedPicture quick = taken(m_jpeg);
    EXPECT_EQ(quick.rotation, 90);
    EXPECT_EQ(quick.stored, kSize);
    EXPECT_EQ(quick.shown, kSize.transposed());
    const Bitmap preview = decoded(quick.preview);
    ASSERT_EQ(preview.size(), kSize.transposed());
    EXPECT_LT(ImageBuilder::difference(preview, decoded(taken(std::nullopt).preview)), 0.01);
}
