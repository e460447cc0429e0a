#include "BitmapImage.h"
#include "ImageBuilder.h"
#include "ImageSource.h"
#include "JpegConversion.h"
#include "JpegDestination.h"
#include "ScanFixture.h"

#include <functional>
#include <utility>

using namespace Qt::StringLiterals;

// What a conversion hands to the resampler and to the encoder, and what it does when they fail.

/// The linker leads the conversion's calls of JpegDestination::encode and Resampler::scale through
/// here (see CMakeLists.txt). They go on to the real functions unless a test wants otherwise.
namespace ConversionSteps
{

struct Calls {
    QList<QSize> scaledTo;
    QList<QImage> encoded;
    QList<double> qualities;
    /// How many of the next calls fail.
    int encodingsToFail{0};
    bool isResamplerBroken{false};
    /// What the encoder gives instead of its JPEG.
    std::function<QByteArray(const QImage&)> jpeg;
    /// The encoder scales, too, for its thumbnail.
    bool isEncoding{false};
};

Calls& calls()
{
    static Calls made;
    return made;
}

Result<QByteArray> realEncode(const QImage& picture,
                              const ImageProperties& properties,
                              double quality) __asm__("__real__ZN15JpegDestination6encodeERK6QImage"
                                                      "RK15ImagePropertiesd");
Result<QByteArray> encode(const QImage& picture,
                          const ImageProperties& properties,
                          double quality) __asm__("__wrap__ZN15JpegDestination6encodeERK6QImage"
                                                  "RK15ImagePropertiesd");
Result<Bitmap> realScale(const Bitmap& bitmap,
                         QSize size) __asm__("__real__ZN9Resampler5scaleERK6Bitmap5QSize");
Result<Bitmap> scale(const Bitmap& bitmap,
                     QSize size) __asm__("__wrap__ZN9Resampler5scaleERK6Bitmap5QSize");

Result<QByteArray> encode(const QImage& picture, const ImageProperties& properties, double quality)
{
    calls().encoded.append(picture);
    calls().qualities.append(quality);
    if (calls().encodingsToFail > 0) {
        --calls().encodingsToFail;
        return Error{ErrorCode::Internal, u"the encoder gave up"_s};
    }
    if (calls().jpeg) {
        return calls().jpeg(picture);
    }
    calls().isEncoding = true;
    Result<QByteArray> jpeg = realEncode(picture, properties, quality);
    calls().isEncoding = false;
    return jpeg;
}

Result<Bitmap> scale(const Bitmap& bitmap, QSize size)
{
    if (!calls().isEncoding) {
        calls().scaledTo.append(size);
        if (calls().isResamplerBroken) {
            return Error{ErrorCode::Internal, u"the resampler gave up"_s};
        }
    }
    return realScale(bitmap, size);
}

} // namespace ConversionSteps

namespace
{

const QString kEncoderFailed = u"***Could not create data from image destination ***"_s;
constexpr QSize kSceneSize(200, 152);

QByteArray plainJpeg(const Bitmap& bitmap)
{
    const auto jpeg = JpegDestination::encodePlain(bitmap, 0.8);
    return jpeg.ok() ? jpeg.value() : QByteArray();
}

class JpegConversionStepsTest : public ScanFixture
{
public:
    ~JpegConversionStepsTest() override { ConversionSteps::calls() = {}; }

    JpegConversionStepsTest(const JpegConversionStepsTest&) = delete;
    JpegConversionStepsTest& operator=(const JpegConversionStepsTest&) = delete;

protected:
    JpegConversionStepsTest()
    {
        ConversionSteps::calls() = {};
        ImageBuilder::write(m_source, plainJpeg(ImageBuilder::scene(kSceneSize)));
        m_library.addPhotoFile(m_source, kSceneSize.width(), kSceneSize.height());
    }

    [[nodiscard]] static ConversionSteps::Calls& calls() { return ConversionSteps::calls(); }

    [[nodiscard]] Result<ProvedJpeg> convert()
    {
        const PhotoPtr photo = m_library.photoHandle(1);
        return JpegConversion::convert(m_source, *photo, m_delegate);
    }

    /// Adds a second photo of such a picture.
    void addSecond()
    {
        const QString path = m_folder.filePath(u"IMG_2.jpg"_s);
        ASSERT_TRUE(QFile::copy(m_source, path));
        m_library.addPhotoFile(path, kSceneSize.width(), kSceneSize.height());
    }

    [[nodiscard]] QList<PhotoOutcome::Kind> kinds() const
    {
        QList<PhotoOutcome::Kind> kinds;
        for (const PhotoOutcome& outcome : m_delegate.finished) {
            kinds.append(outcome.kind);
        }
        return kinds;
    }

    /// The conversion's part of a scan's log.
    [[nodiscard]] QStringList logOfLoop() const
    {
        return after(m_log.entries(), u"Found 0 images"_s);
    }

    void expectFailureWithoutLog()
    {
        EXPECT_FALSE(convert().ok());
        EXPECT_EQ(m_log.entries(), QStringList());
    }

    using Kind = PhotoOutcome::Kind;

    QString m_source{m_folder.filePath(u"IMG_1.jpg"_s)};
};

TEST_F(JpegConversionStepsTest, aPictureOfItsOwnSizeIsEncodedAsItWasDecoded)
{
    ASSERT_TRUE(convert().ok());
    EXPECT_EQ(calls().scaledTo, QList<QSize>());
    const Result<Bitmap> decoded = ImageSource::decode(m_source);
    ASSERT_TRUE(decoded.ok());
    ASSERT_EQ(calls().encoded.size(), 1);
    EXPECT_TRUE(calls().encoded.first() == BitmapImage::toImage(decoded.value()));
}

TEST_F(JpegConversionStepsTest, aPictureOfAnotherSizeIsScaledOnceAndSoEncoded)
{
    const QSize half(100, 76);
    m_delegate.scale = 0.5F;
    ASSERT_TRUE(convert().ok());
    m_delegate.scale = 1.0F;
    m_delegate.fixed = true;
    m_delegate.longSide = half.width();
    ASSERT_TRUE(convert().ok());
    EXPECT_EQ(calls().scaledTo, QList<QSize>(2, half));
    ASSERT_EQ(calls().encoded.size(), 2);
    EXPECT_EQ(calls().encoded.at(0).size(), half);
    EXPECT_EQ(calls().encoded.at(1).size(), half);
}

TEST_F(JpegConversionStepsTest, theControllersQualityIsTheEncoders)
{
    m_delegate.quality = 0.37;
    ASSERT_TRUE(convert().ok());
    EXPECT_EQ(calls().qualities, QList<double>{0.37});
}

TEST_F(JpegConversionStepsTest, anEncoderThatFailsIsLoggedAndGivesItsReason)
{
    calls().encodingsToFail = 1;
    const Result<ProvedJpeg> jpeg = convert();
    ASSERT_FALSE(jpeg.ok());
    EXPECT_EQ(jpeg.error().message,
              u"No copy of %1 could be made, since the encoder gave up. Scan again with another "
              "size or quality, and report it if that fails as well"_s.arg(m_source));
    EXPECT_EQ(m_log.entries(), QStringList{kEncoderFailed});
}

TEST_F(JpegConversionStepsTest, aFileThatDoesNotDecodeIsNotLogged)
{
    ImageBuilder::write(m_source, "this is no picture");
    expectFailureWithoutLog();
}

TEST_F(JpegConversionStepsTest, aFileOfAnotherPhotoIsNotLogged)
{
    m_library.photo(1).evidence.files.clear();
    expectFailureWithoutLog();
}

TEST_F(JpegConversionStepsTest, aSizeWithoutPixelsIsNotLogged)
{
    m_delegate.scale = 0.0F;
    expectFailureWithoutLog();
}

TEST_F(JpegConversionStepsTest, aResamplerThatFailsIsNotLogged)
{
    m_delegate.scale = 0.5F;
    calls().isResamplerBroken = true;
    expectFailureWithoutLog();
    EXPECT_TRUE(calls().encoded.isEmpty());
}

TEST_F(JpegConversionStepsTest, onlyAJpegOfThePictureThatWasEncodedIsTaken)
{
    const QList<std::pair<const char*, std::function<QByteArray(const QImage&)>>> wrong{
        {"another picture",
         [](const QImage&) { return plainJpeg(ImageBuilder::noise(kSceneSize)); }},
        {"nothing to see",
         [](const QImage&) { return plainJpeg(ImageBuilder::flat(kSceneSize, 30000)); }},
        {"another size",
         [](const QImage&) {
             return plainJpeg(ImageBuilder::scene({200, 151}));
         }},
        {"cut short",
         [](const QImage& picture) {
             const QByteArray jpeg = plainJpeg(BitmapImage::fromImage(picture));
             return jpeg.first(jpeg.size() / 2);
         }},
        {"no JPEG", [](const QImage&) { return QByteArray("garbage"); }},
        {"no bytes", [](const QImage&) { return QByteArray(); }}};
    for (const auto& [what, jpeg] : wrong) {
        calls().jpeg = jpeg;
        const Result<ProvedJpeg> converted = convert();
        ASSERT_FALSE(converted.ok()) << what;
        EXPECT_TRUE(converted.error().message.contains(u"did not pass its proof"_s)) << what;
    }
    EXPECT_EQ(m_log.entries(), QStringList());
    calls().jpeg = [](const QImage& picture) { return plainJpeg(BitmapImage::fromImage(picture)); };
    EXPECT_TRUE(convert().ok());
}

TEST_F(JpegConversionStepsTest, anEncoderThatFailsCostsOnePhotoAndOneLogLine)
{
    addSecond();
    set(u"ProcessingOption"_s, true); // each photo converts its own original
    calls().encodingsToFail = 1;
    scan({1, 2});
    EXPECT_EQ(kinds(), (QList<Kind>{Kind::Failed, Kind::Converted}));
    EXPECT_EQ(logOfLoop(), QStringList{kEncoderFailed});
    ASSERT_EQ(alerts().size(), 1);
    EXPECT_TRUE(alerts().first().startsWith(u"alert All Done: "_s));
    EXPECT_EQ(m_library.imports().size(), 1);
    expectNoTemporaryFile();
}

TEST_F(JpegConversionStepsTest, aSourceThatFailedIsNotEncodedAndLoggedAgain)
{
    addSecond();
    calls().encodingsToFail = 1;
    scan({1, 2}); // the second photo meets the first one's path
    EXPECT_EQ(kinds(), (QList<Kind>{Kind::Failed, Kind::Failed}));
    EXPECT_EQ(calls().encoded.size(), 1);
    EXPECT_EQ(logOfLoop(), QStringList{kEncoderFailed});
}

TEST_F(JpegConversionStepsTest, aPhotoWhoseJpegDoesNotPassItsProofStaysAsItIs)
{
    set(u"TagEnabled"_s, true);
    set(u"TrashEnabled"_s, true);
    calls().jpeg = [](const QImage&) { return plainJpeg(ImageBuilder::noise(kSceneSize)); };
    scan({1});
    EXPECT_EQ(kinds(), QList<Kind>{Kind::Failed});
    EXPECT_TRUE(m_library.imports().isEmpty());
    EXPECT_FALSE(m_library.photo(1).inTrash);
    EXPECT_TRUE(m_library.photo(1).keywords.isEmpty());
    EXPECT_EQ(logOfLoop(), QStringList());
    expectNoTemporaryFile();
}

} // namespace
