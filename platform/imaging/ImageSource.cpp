#include "ImageSource.h"

#include "FileStructure.h"
#include "FileType.h"
#include "HeifDecoder.h"
#include "JpegDecoder.h"
#include "PreviewFinder.h"
#include "QtImageDecoder.h"
#include "RawDecoder.h"
#include "SceneComparison.h"

#include <QFile>

#include <new>

namespace
{

/// Files above this are refused: they are read as a whole, and no camera writes such pictures.
constexpr qint64 kMaximumBytes = 2LL * 1024 * 1024 * 1024 - 1;

Error errorOf(const QString& path, ErrorCode code, const QString& reason)
{
    return {code, QStringLiteral("The file \"%1\" cannot be used: %2.").arg(path, reason)};
}

Result<QByteArray> readFile(const QString& path)
{
    QFile file(path);
    if (!file.exists()) {
        return errorOf(path, ErrorCode::NotFound, QStringLiteral("it does not exist"));
    }
    if (!file.open(QIODevice::ReadOnly)) {
        return errorOf(path, ErrorCode::Unreadable, file.errorString());
    }
    if (file.size() > kMaximumBytes) {
        return errorOf(path, ErrorCode::Unsupported, QStringLiteral("it is too large"));
    }
    const qint64 size = file.size();
    try {
        QByteArray bytes = file.readAll();
        if (file.error() != QFileDevice::NoError || bytes.size() < size) {
            return errorOf(path, ErrorCode::Unreadable, file.errorString());
        }
        return bytes;
    } catch (const std::bad_alloc&) {
        return errorOf(
            path, ErrorCode::OutOfSpace, QStringLiteral("there is not enough memory to read it"));
    }
}

Result<Bitmap> decodeAs(FileType type, const QByteArray& bytes)
{
    switch (type) {
    case FileType::Jpeg:
        return JpegDecoder::decode(bytes);
    case FileType::Heif:
        return HeifDecoder::decode(bytes);
    case FileType::Picture:
        return QtImageDecoder::decode(bytes);
    case FileType::Raw:
        return RawDecoder::decode(bytes);
    case FileType::Unknown:
        break;
    }
    return Error{ErrorCode::Unsupported,
                 QStringLiteral("it is no picture of a kind that can be decoded")};
}

/// What the file shows of its picture beside it.
std::optional<QImage> previewIn(const QByteArray& bytes, FileType type)
{
    if (type == FileType::Heif) {
        return HeifDecoder::thumbnail(bytes);
    }
    return type == FileType::Raw ? PreviewFinder::largest(bytes) : std::nullopt;
}

/// A RAW file is also judged without a preview, since its sensor's data could be any values.
std::optional<QString> sceneComplaint(const Bitmap& bitmap, const QByteArray& bytes, FileType type)
{
    if (type == FileType::Raw) {
        return SceneComparison::complaint(bitmap, previewIn(bytes, type));
    }
    const auto thumbnail = type == FileType::Heif ? previewIn(bytes, type) : std::nullopt;
    return thumbnail ? SceneComparison::thumbnailComplaint(bitmap, *thumbnail) : std::nullopt;
}

} // namespace

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
    const Result<QByteArray> bytes = readFile(path);
    if (!bytes.ok()) {
        return bytes.error();
    }
    const FileType type = FileTypes::detect(bytes.value(), path);
    if (const auto complaint = FileStructure::complaint(bytes.value(), type)) {
        return errorOf(path, ErrorCode::Damaged, *complaint);
    }
    Result<Bitmap> bitmap = decodeAs(type, bytes.value());
    if (!bitmap.ok()) {
        return errorOf(path, bitmap.error().code, bitmap.error().message);
    }
    if (const auto complaint = sceneComplaint(bitmap.value(), bytes.value(), type)) {
        return errorOf(path, ErrorCode::Damaged, *complaint);
    }
    return bitmap;
}

std::optional<QImage> ImageSource::embeddedPreview(const QString& path)
{
    const Result<QByteArray> bytes = readFile(path);
    return bytes.ok() ? previewIn(bytes.value(), FileTypes::detect(bytes.value(), path))
                      : std::nullopt;
}

Result<void> ImageSource::check(const QString& path)
{
    const Result<Bitmap> bitmap = decode(path);
    if (!bitmap.ok()) {
        return bitmap.error();
    }
    return {};
}
