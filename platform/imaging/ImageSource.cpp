#include "ImageSource.h"

#include "FileType.h"
#include "SourceFile.h"
#include "SourcePicture.h"

#include <utility>

const QStringList& ImageSource::readableExtensions()
{
    static const QStringList kExtensions = [] {
        QStringList all;
        for (const QString& extension : FileTypes::rawExtensions() + FileTypes::otherExtensions()) {
            all << extension << extension.toUpper();
        }
        all.sort();
        return all;
    }();
    return kExtensions;
}

Result<Bitmap> ImageSource::decode(const QString& path)
{
    Result<SourcePicture> picture = SourcePicture::open(path);
    return picture.ok() ? Result<Bitmap>(std::move(picture).value().decoded()) : picture.error();
}

std::optional<QImage> ImageSource::embeddedPreview(const QString& path)
{
    const Result<SourceFile> file = SourceFile::read(path);
    const std::optional<Preview> preview = file.ok() ? file.value().preview() : std::nullopt;
    return preview ? std::optional(preview->image) : std::nullopt;
}

Result<void> ImageSource::check(const QString& path)
{
    const Result<SourcePicture> picture = SourcePicture::open(path);
    if (!picture.ok()) {
        return picture.error();
    }
    return {};
}
