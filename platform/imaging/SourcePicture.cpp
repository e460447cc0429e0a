#include "SourcePicture.h"

#include "BitmapImage.h"
#include "FileStructure.h"
#include "HeifDecoder.h"
#include "JpegDecoder.h"
#include "PictureDamage.h"
#include "PictureNoise.h"
#include "PreviewFinder.h"
#include "QtImageDecoder.h"
#include "RenditionFit.h"
#include "Resampler.h"
#include "SceneComparison.h"
#include "SourceFile.h"

#include <new>
#include <utility>

namespace
{

Result<Bitmap> decodeAs(const SourceFile& file)
{
    switch (file.type) {
    case FileType::Jpeg:
        return JpegDecoder::decode(file.bytes);
    case FileType::Heif:
        return HeifDecoder::decode(file.bytes);
    case FileType::Picture:
        return QtImageDecoder::decode(file.bytes);
    case FileType::Raw:
    case FileType::Unknown:
        break;
    }
    return Error{ErrorCode::Unsupported,
                 QStringLiteral("it is no picture of a kind that can be decoded")};
}

template <typename Content>
Result<Content> content(const SourceFile& file)
{
    if (file.type == FileType::Raw) {
        Result<RawPhoto> photo = RawPhoto::open(file.bytes);
        return photo.ok() ? Result<Content>(std::move(photo).value()) : photo.error();
    }
    Result<Bitmap> bitmap = decodeAs(file);
    return bitmap.ok() ? Result<Content>(std::move(bitmap).value()) : bitmap.error();
}

Result<Bitmap> inSize(Bitmap bitmap, QSize size)
{
    return bitmap.size() == size ? Result<Bitmap>(std::move(bitmap))
                                 : Resampler::scale(bitmap, size);
}

Error noMemoryForPicture()
{
    return {ErrorCode::OutOfSpace, QStringLiteral("memory is too short to make the picture")};
}

Result<QImage> inBytes(const Bitmap& bitmap)
{
    QImage image = BitmapImage::toImage(bitmap);
    return image.isNull() ? Result<QImage>(noMemoryForPicture()) : Result<QImage>(std::move(image));
}

QString decodesToNoise()
{
    return QStringLiteral("it decodes to noise, its picture data is corrupt");
}

} // namespace

SourcePicture::SourcePicture(Content content)
    : m_content(std::move(content))
{
}

Result<SourcePicture> SourcePicture::open(const QString& path)
{
    const Result<SourceFile> file = SourceFile::read(path);
    if (!file.ok()) {
        return file.error();
    }
    if (const auto complaint = FileStructure::complaint(file.value().bytes, file.value().type)) {
        return SourceFile::errorOf(path, ErrorCode::Damaged, *complaint);
    }
    Result<Content> decoded = content<Content>(file.value());
    if (!decoded.ok()) {
        return SourceFile::errorOf(path, decoded.error().code, decoded.error().message);
    }
    SourcePicture picture(std::move(decoded).value());
    if (const auto complaint = picture.judge(file.value())) {
        return SourceFile::errorOf(path, ErrorCode::Damaged, *complaint);
    }
    return picture;
}

std::optional<QString> SourcePicture::judge(const SourceFile& file)
{
    if (const auto* const raw = std::get_if<RawPhoto>(&m_content)) {
        return judgeRaw(*raw, file);
    }
    const auto& bitmap = std::get<Bitmap>(m_content);
    if (file.mayHideNoise() && PictureNoise::isNoiseInPlaces(PictureNoise::someRows(bitmap))) {
        return decodesToNoise();
    }
    m_preview = file.preview();
    if (m_preview) {
        return PictureDamage::thumbnailComplaint(SmallPicture::of(bitmap),
                                                 SmallPicture::of(m_preview->image));
    }
    const std::optional<QImage> thumbnail = file.thumbnail(bitmap.size());
    return thumbnail ? PictureDamage::exifThumbnailComplaint(bitmap, *thumbnail) : std::nullopt;
}

std::optional<QString> SourcePicture::complaintBy(const QImage& shown) const
{
    if (const auto* const bitmap = std::get_if<Bitmap>(&m_content)) {
        return PictureDamage::complaintOfFinished(*bitmap, shown);
    }
    return PictureDamage::complaint(
        SmallPicture::of(std::get<RawPhoto>(m_content).reduced()), SmallPicture::of(shown), shown);
}

// A RAW file is also judged without a preview, since its sensor's data could be any values.
std::optional<QString> SourcePicture::judgeRaw(const RawPhoto& photo, const SourceFile& file)
{
    const SmallPicture small = SmallPicture::of(photo.reduced());
    const Bitmap rows = photo.someRows();
    if (PictureNoise::isNoise(small, photo.size(), rows) || PictureNoise::isNoiseInPlaces(rows)) {
        return decodesToNoise();
    }
    if (photo.faults().hasGaps) {
        return QStringLiteral("a part of it decodes to nothing, its picture data is corrupt");
    }
    std::optional<QString> complaint;
    m_preview = file.preview([&](const QImage& preview, const SmallPicture& shown) {
        complaint = PictureDamage::complaint(small, shown, preview);
        return complaint || SceneComparison::likeness(small, shown) >= SceneComparison::kSameScene;
    });
    const std::vector<double>& breaks = photo.faults().breaks;
    return complaint || breaks.empty() ? complaint : breakComplaint(breaks, small, file);
}

/// Edges of the scene are no damage: also those in a preview that is too plain to tell anything
/// else.
std::optional<QString> SourcePicture::breakComplaint(const std::vector<double>& breaks,
                                                     const SmallPicture& small,
                                                     const SourceFile& file) const
{
    const std::optional<Preview> shown =
        m_preview ? m_preview : RawPhoto::preview(file.bytes, PreviewFinder::kLongestSide);
    if (shown && PictureDamage::areEdgesOfScene(breaks, small, SmallPicture::of(shown->image))) {
        return std::nullopt;
    }
    return QStringLiteral("it breaks off within, its picture data is corrupt");
}

QSize SourcePicture::size() const
{
    const auto* const raw = std::get_if<RawPhoto>(&m_content);
    return raw != nullptr ? raw->size() : std::get<Bitmap>(m_content).size();
}

Bitmap SourcePicture::decoded() &&
{
    const auto* const raw = std::get_if<RawPhoto>(&m_content);
    return raw != nullptr ? raw->linear() : std::get<Bitmap>(std::move(m_content));
}

Result<QImage> SourcePicture::rendered(QSize size, const QList<QImage>& references) &&
{
    try {
        if (auto* const raw = std::get_if<RawPhoto>(&m_content)) {
            // What the photo holds goes with it, before the picture is encoded.
            RawPhoto photo = std::move(*raw);
            const Rendition rendition =
                RenditionFit::of(photo.reduced(), photo.colors(), references);
            return std::move(photo).rendered(rendition, size);
        }
        const Result<Bitmap> scaled = inSize(std::get<Bitmap>(std::move(m_content)), size);
        return scaled.ok() ? inBytes(scaled.value()) : scaled.error();
    } catch (const std::bad_alloc&) {
        return noMemoryForPicture();
    }
}
