#include "BitmapImage.h"
#include "FakeDelegate.h"
#include "FakePhotoApplication.h"
#include "ImageBuilder.h"
#include "JpegConversion.h"
#include "JpegDestination.h"
#include "QtPrinters.h"
#include "SrgbTransfer.h"
#include "Upright.h"

#include <QColorSpace>
#include <QTemporaryDir>
#include <QTransform>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <exiv2/exiv2.hpp>

using namespace Qt::StringLiterals;

// What a conversion is compared with before it is taken for one.

namespace
{

constexpr QSize kPhotoSize(240, 180);
constexpr QSize kPreviewSize(160, 120);

/// The scene with red and blue exchanged: as light and as dark, and in other colours.
Bitmap miscoloured(QSize size, Transfer transfer)
{
    Bitmap bitmap = ImageBuilder::scene(size, transfer);
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        const auto row = bitmap.row(y);
        for (std::size_t i = 0; i < row.size(); i += 3) {
            std::swap(row[i], row[i + 2]);
        }
    }
    return bitmap;
}

/// As if there had been less light.
Bitmap darkened(Bitmap bitmap)
{
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        for (quint16& value : bitmap.row(y)) {
            value = static_cast<quint16>(value * 6 / 10);
        }
    }
    return bitmap;
}

/// The scene with squares of light and dark all over.
Bitmap chequered()
{
    constexpr int kSide = 12;
    Bitmap bitmap = ImageBuilder::scene(kPhotoSize);
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        const auto row = bitmap.row(y);
        for (std::size_t i = 0; i < row.size(); ++i) {
            const int x = static_cast<int>(i) / 3;
            row[i] = static_cast<quint16>(row[i] / 2 + (x / kSide + y / kSide) % 2 * 8000);
        }
    }
    return bitmap;
}

/// Lighter in a square of the middle.
Bitmap dodged(Bitmap bitmap)
{
    for (int y = 70; y < 110; ++y) {
        for (quint16& value : bitmap.row(y).subspan(std::size_t{3} * 95, std::size_t{3} * 50)) {
            value = static_cast<quint16>(value + 16000);
        }
    }
    return bitmap;
}

/// The scene in the light of a sunset: much red, hardly any blue.
Bitmap sunset(QSize size)
{
    Bitmap bitmap = ImageBuilder::scene(size);
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        const auto row = bitmap.row(y);
        for (std::size_t i = 0; i < row.size(); i += 3) {
            row[i] = static_cast<quint16>(30000 + row[i] / 2);
            row[i + 2] = static_cast<quint16>(row[i + 2] / 20);
        }
    }
    return bitmap;
}

Bitmap inBlackAndWhite(Bitmap bitmap)
{
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        const auto row = bitmap.row(y);
        for (std::size_t i = 0; i < row.size(); i += 3) {
            std::fill_n(&row[i], 3, static_cast<quint16>((row[i] + 2 * row[i + 1]) / 3));
        }
    }
    return bitmap;
}

QByteArray jpegOf(const Bitmap& bitmap)
{
    const auto jpeg = JpegDestination::encodePlain(bitmap, 0.9);
    return jpeg.ok() ? jpeg.value() : QByteArray();
}

class JpegConversionProofTest : public testing::Test
{
protected:
    /// Makes photo 1 of that file.
    void addPhoto(const QString& name, const QByteArray& bytes)
    {
        m_source = m_folder.filePath(name);
        ImageBuilder::write(m_source, bytes);
        m_library.addPhotoFile(m_source, kPhotoSize.width(), kPhotoSize.height());
    }

    /// Gives it a picture that the library rendered of it.
    void setLibraryPreview(const Bitmap& bitmap)
    {
        const QString path = m_folder.filePath(u"preview.jpg"_s);
        ImageBuilder::write(path, jpegOf(bitmap));
        m_library.photo(1).evidence.previewPath = path;
    }

    [[nodiscard]] Result<ProvedJpeg> convert()
    {
        const PhotoPtr photo = m_library.photoHandle(1);
        return JpegConversion::convert(m_source, *photo, m_delegate);
    }

    void expectConverted()
    {
        const Result<ProvedJpeg> jpeg = convert();
        EXPECT_TRUE(jpeg.ok()) << qPrintable(jpeg.ok() ? QString() : jpeg.error().message);
    }

    void expectOtherColours()
    {
        const Result<ProvedJpeg> jpeg = convert();
        ASSERT_FALSE(jpeg.ok());
        EXPECT_EQ(jpeg.error().code, ErrorCode::Damaged);
        EXPECT_EQ(
            jpeg.error().message,
            u"No copy of %1 could be made, since the finished JPEG did not pass its proof: its "
            "colours are not those of the preview of the photo. Look at the photo, and report it "
            "if "
            "nothing is wrong with it"_s.arg(m_source));
    }

    QTemporaryDir m_folder;
    QString m_source;
    FakePhotoApplication m_library;
    FakeDelegate m_delegate;
};

TEST_F(JpegConversionProofTest, aPictureMustBeAlikeToTheLibrarysOwn)
{
    addPhoto(u"IMG_1.jpg"_s, jpegOf(miscoloured(kPhotoSize, Transfer::Srgb)));
    expectConverted();
    setLibraryPreview(miscoloured(kPreviewSize, Transfer::Srgb));
    expectConverted();
    setLibraryPreview(ImageBuilder::scene(kPreviewSize));
    expectOtherColours();
}

TEST_F(JpegConversionProofTest, theLibrarysPictureOfAnEditedPhotoProvesNothing)
{
    addPhoto(u"IMG_1.jpg"_s, jpegOf(miscoloured(kPhotoSize, Transfer::Srgb)));
    setLibraryPreview(ImageBuilder::scene(kPreviewSize));
    m_library.photo(1).evidence.edited = true;
    expectConverted();
}

TEST_F(JpegConversionProofTest, theLibrarysPictureMayBeOfOtherTones)
{
    addPhoto(u"IMG_1.jpg"_s, jpegOf(chequered()));
    setLibraryPreview(dodged(chequered()));
    expectConverted();
}

TEST_F(JpegConversionProofTest, aFinishedPictureMayHaveBeenMadeBlackAndWhiteSinceTheLibrarysPicture)
{
    addPhoto(u"IMG_1.jpg"_s, jpegOf(inBlackAndWhite(sunset(kPhotoSize))));
    setLibraryPreview(sunset(kPreviewSize));
    expectConverted();
}

TEST_F(JpegConversionProofTest, aRawPictureInBlackAndWhiteIsNoneOfAPhotoInColour)
{
    const Bitmap grey = inBlackAndWhite(sunset(kPhotoSize));
    addPhoto(u"IMG_1.dng"_s, ImageBuilder::dng(SrgbTransfer::converted(grey, Transfer::Linear)));
    setLibraryPreview(sunset(kPreviewSize));
    expectOtherColours();
}

TEST_F(JpegConversionProofTest, aLibrarysPictureThatIsGoneProvesNothing)
{
    addPhoto(u"IMG_1.jpg"_s, jpegOf(miscoloured(kPhotoSize, Transfer::Srgb)));
    setLibraryPreview(ImageBuilder::scene(kPreviewSize));
    ASSERT_TRUE(QFile::remove(m_library.photo(1).evidence.previewPath));
    expectConverted();
}

TEST_F(JpegConversionProofTest, aRawPictureMustBeAlikeToThePreviewInItsFile)
{
    const Bitmap light = miscoloured(kPhotoSize, Transfer::Linear);
    addPhoto(u"IMG_1.dng"_s,
             ImageBuilder::dng(light,
                               {.crop = {},
                                .preview = jpegOf(miscoloured(kPreviewSize, Transfer::Srgb)),
                                .orientation = 1}));
    expectConverted();
    ImageBuilder::write(
        m_source,
        ImageBuilder::dng(
            light,
            {.crop = {}, .preview = jpegOf(ImageBuilder::scene(kPreviewSize)), .orientation = 1}));
    expectOtherColours();
}

TEST_F(JpegConversionProofTest, theLibrarysPictureGuidesByTheColoursThatItShows)
{
    // The same picture to the eye; its values in the wider space are paler.
    QImage narrow = BitmapImage::toImage(ImageBuilder::scene(kPreviewSize));
    narrow.setColorSpace(QColorSpace::SRgb);
    const QImage wide = narrow.convertedToColorSpace(QColorSpace::DisplayP3);
    addPhoto(u"IMG_1.dng"_s, ImageBuilder::dng(ImageBuilder::scene(kPhotoSize, Transfer::Linear)));
    const QString path = m_folder.filePath(u"preview.png"_s);
    m_library.photo(1).evidence.previewPath = path;
    QList<Bitmap> converted;
    for (const QImage& preview : {narrow, wide}) {
        ASSERT_TRUE(preview.save(path));
        const Result<ProvedJpeg> jpeg = convert();
        ASSERT_TRUE(jpeg.ok()) << jpeg.error().message.toStdString();
        converted.append(BitmapImage::fromImage(QImage::fromData(jpeg.value().bytes, "JPG")));
    }
    EXPECT_LT(ImageBuilder::difference(converted.first(), converted.last()), 0.003);
}

TEST_F(JpegConversionProofTest, ofTwoPicturesTheOneOfMorePixelsGuides)
{
    const Bitmap scene = ImageBuilder::scene({1600, 1200});
    addPhoto(u"IMG_1.dng"_s,
             ImageBuilder::dng(ImageBuilder::scene(kPhotoSize, Transfer::Linear),
                               {.crop = {}, .preview = jpegOf(scene)}));
    setLibraryPreview(darkened(ImageBuilder::scene({2000, 1500})));
    const Result<ProvedJpeg> jpeg = convert();
    ASSERT_TRUE(jpeg.ok()) << jpeg.error().message.toStdString();
    EXPECT_LT(ImageBuilder::difference(BitmapImage::fromImage(jpeg.value().picture),
                                       darkened(ImageBuilder::scene(kPhotoSize))),
              0.02);
}

TEST_F(JpegConversionProofTest, aFinishedPictureUnlikeTheLibrarysFailsWithWhatToDo)
{
    Bitmap changed = ImageBuilder::scene(kPhotoSize);
    for (int y = 90; y < changed.pixelsHigh(); ++y) {
        std::ranges::fill(changed.row(y), quint16{0});
    }
    addPhoto(u"IMG_1.jpg"_s, jpegOf(changed));
    expectConverted();
    setLibraryPreview(ImageBuilder::scene(kPreviewSize));
    const Result<ProvedJpeg> jpeg = convert();
    ASSERT_FALSE(jpeg.ok());
    EXPECT_EQ(jpeg.error().code, ErrorCode::Damaged);
    EXPECT_EQ(jpeg.error().message,
              u"The file \"%1\" cannot be used: it does not show what the library's preview shows, "
              "its picture data is corrupt or a program changed the file since; look at it, and if "
              "it is as it should be, let iPhoto make its preview anew."_s.arg(m_source));
}

TEST_F(JpegConversionProofTest, aLibrarysPictureThatIsCutOffProvesNothing)
{
    addPhoto(u"IMG_1.jpg"_s, jpegOf(ImageBuilder::scene(kPhotoSize)));
    setLibraryPreview(ImageBuilder::scene(kPhotoSize));
    QFile preview(m_library.photo(1).evidence.previewPath);
    ASSERT_TRUE(preview.resize(preview.size() / 2));
    expectConverted();
}

TEST_F(JpegConversionProofTest, aLibrarysPictureThatIsCutOffGuidesNothing)
{
    addPhoto(u"IMG_1.dng"_s, ImageBuilder::dng(ImageBuilder::scene(kPhotoSize, Transfer::Linear)));
    const Result<ProvedJpeg> alone = convert();
    setLibraryPreview(darkened(ImageBuilder::scene(kPhotoSize)));
    QFile preview(m_library.photo(1).evidence.previewPath);
    ASSERT_TRUE(preview.resize(preview.size() * 9 / 10));
    const Result<ProvedJpeg> beside = convert();
    ASSERT_TRUE(alone.ok() && beside.ok());
    EXPECT_EQ(beside.value().bytes, alone.value().bytes);
}

TEST_F(JpegConversionProofTest, aPipeInPlaceOfTheLibrarysPictureHoldsNothingUp)
{
    addPhoto(u"IMG_1.jpg"_s, jpegOf(ImageBuilder::scene(kPhotoSize)));
    const QString pipe = m_folder.filePath(u"preview.jpg"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    m_library.photo(1).evidence.previewPath = pipe;
    expectConverted();
}

TEST_F(JpegConversionProofTest, aHoleInAFileWithoutAPreviewShowsBesideTheLibrarysPicture)
{
    Bitmap light = ImageBuilder::scene(kPhotoSize, Transfer::Linear);
    for (int y = 22; y < 90; ++y) {
        std::ranges::fill(light.row(y).subspan(std::size_t{3} * 120, std::size_t{3} * 90),
                          quint16{0});
    }
    addPhoto(u"IMG_1.dng"_s, ImageBuilder::dng(light));
    expectConverted();
    setLibraryPreview(ImageBuilder::scene(kPreviewSize));
    const Result<ProvedJpeg> jpeg = convert();
    ASSERT_FALSE(jpeg.ok());
    EXPECT_EQ(jpeg.error().code, ErrorCode::Damaged);
    EXPECT_TRUE(jpeg.error().message.contains(m_source));
}

class LibraryPreviewTest : public JpegConversionProofTest, public testing::WithParamInterface<int>
{
protected:
    /// In the Exif block of its file.
    void setOrientationOfPreview(int orientation)
    {
        const auto image =
            Exiv2::ImageFactory::open(m_library.photo(1).evidence.previewPath.toStdString());
        image->readMetadata();
        image->exifData()["Exif.Image.Orientation"] = static_cast<uint16_t>(orientation);
        image->writeMetadata();
    }

    /// Converts a photo stored in an orientation, which the library shows upright and darkened,
    /// and the person has turned by so many degrees.
    void expectToneOfPreview(int orientation, int turn)
    {
        addPhoto(u"IMG_1.dng"_s,
                 ImageBuilder::dng(ImageBuilder::scene(kPhotoSize, Transfer::Linear),
                                   {.crop = {}, .preview = {}, .orientation = orientation}));
        const Bitmap dusk = darkened(ImageBuilder::scene(kPhotoSize));
        const QImage upright = Upright::turned(BitmapImage::toImage(dusk), orientation);
        setLibraryPreview(BitmapImage::fromImage(upright.transformed(QTransform().rotate(turn))));
        m_library.photo(1).evidence.rotation = (Upright::rotation(orientation) + turn) % 360;
        const Result<ProvedJpeg> jpeg = convert();
        ASSERT_TRUE(jpeg.ok()) << jpeg.error().message.toStdString();
        EXPECT_LT(ImageBuilder::difference(BitmapImage::fromImage(jpeg.value().picture), dusk),
                  0.02);
    }
};

TEST_P(LibraryPreviewTest, itGuidesHoweverThePhotoIsStored)
{
    expectToneOfPreview(GetParam(), 0);
}

TEST_P(LibraryPreviewTest, itGuidesWhereThePersonTurnedThePhoto)
{
    expectToneOfPreview(GetParam(), 90);
}

TEST_P(LibraryPreviewTest, itIsTurnedAsItsOwnFileSays)
{
    addPhoto(u"IMG_1.dng"_s, ImageBuilder::dng(ImageBuilder::scene(kPhotoSize, Transfer::Linear)));
    const Bitmap dusk = darkened(ImageBuilder::scene(kPhotoSize));
    setLibraryPreview(
        BitmapImage::fromImage(Upright::stored(BitmapImage::toImage(dusk), GetParam())));
    setOrientationOfPreview(GetParam());
    const Result<ProvedJpeg> jpeg = convert();
    ASSERT_TRUE(jpeg.ok()) << jpeg.error().message.toStdString();
    EXPECT_LT(ImageBuilder::difference(BitmapImage::fromImage(jpeg.value().picture), dusk), 0.02);
}

INSTANTIATE_TEST_SUITE_P(Orientations, LibraryPreviewTest, testing::Range(1, 9));

} // namespace
