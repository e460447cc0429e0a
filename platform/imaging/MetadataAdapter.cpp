#include "MetadataAdapter.h"

#include "Exiv2Messages.h"
#include "ExtendedXmp.h"
#include "FileType.h"
#include "HeifMetadata.h"
#include "ImagePropertiesContent.h"
#include "RawMetadata.h"
#include "XmpEffort.h"
#include "XmpRepair.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>

#include <algorithm>
#include <exception>
#include <exiv2/bmffimage.hpp>
#include <exiv2/crwimage.hpp>
#include <exiv2/error.hpp>
#include <exiv2/image.hpp>
#include <exiv2/xmpsidecar.hpp>
#include <mutex>
#include <new>

using namespace Qt::StringLiterals;

namespace
{

/// As many bytes of a file as tell HEIF and JPEG files from others.
constexpr qsizetype kMarkBytes = 32;

/// What Exiv2 has left out, of which it only says so.
struct LeftOut {
    bool isPart{false}; ///< for good
    bool isXmp{false};  ///< a packet, which may be repaired
};

/// Since it was last cleared. Guarded by attempt()'s lock.
LeftOut& leftOut()
{
    static LeftOut noted;
    return noted;
}

void noteLeftOut(int /*level*/, const char* message)
{
    leftOut().isPart = leftOut().isPart || Exiv2Messages::tellsOfLoss(message);
    leftOut().isXmp = leftOut().isXmp || Exiv2Messages::tellsOfRefusedXmp(message);
}

/// Exiv2 is prepared on first use: silent, with the readers of HEIC and CR3, and with the XMP
/// toolkit started before two threads could start it at once.
std::recursive_mutex& preparedLibrary()
{
    static std::recursive_mutex mutex;
    static const bool prepared = [] {
        Exiv2::LogMsg::setHandler(&noteLeftOut);
        Exiv2::enableBMFF(true);
        // All calls come through attempt(), whose lock is the only one needed.
        return Exiv2::XmpParser::initialize();
    }();
    static_cast<void>(prepared);
    return mutex;
}

bool guarded(const std::function<void()>& work)
{
    try {
        work();
        return true;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        // Exiv2's AnyError is a std::exception as well.
        return false;
    } catch (...) {
        // The XMP toolkit throws a class of its own.
        return false;
    }
}

int bitsPerSample(const Exiv2::ExifData& exif)
{
    const auto found = exif.findKey(Exiv2::ExifKey("Exif.Image.BitsPerSample"));
    return found == exif.end() || found->count() == 0 ? 0 : static_cast<int>(found->toLong(0));
}

/// As it stands in the file; empty where Exiv2 keeps none (HEIF).
QByteArray xmpPacketOf(const Exiv2::Image& image, const Exiv2::ExifData& exif)
{
    const auto tag = exif.findKey(Exiv2::ExifKey("Exif.Image.XMLPacket"));
    if (!image.xmpPacket().empty() || tag == exif.end()) {
        return QByteArray::fromStdString(image.xmpPacket());
    }
    // Of TIFF files, and of RAW files built like them, it is a tag.
    QByteArray packet(static_cast<qsizetype>(tag->size()), '\0');
    tag->copy(reinterpret_cast<Exiv2::byte*>(packet.data()), Exiv2::littleEndian);
    return packet;
}

/// A packet that was refused as a whole is tried again without what RDF forbids.
void takeRefusedXmp(const Exiv2::Image& image, ImageProperties::Content& content)
{
    if (!leftOut().isXmp || !content.xmp.empty()) {
        return;
    }
    const QByteArray packet = xmpPacketOf(image, content.exif);
    const QByteArray repaired =
        XmpEffort::isBearable(packet) ? XmpRepair::withoutDuplicates(packet) : QByteArray();
    if (repaired.isEmpty() || Exiv2::XmpParser::decode(content.xmp, repaired.toStdString()) != 0) {
        content.isReadInPart = true;
    }
}

/// A pointer that leads to nothing readable is no GPS block, which would keep the library's
/// position out.
void removeLostGps(Exiv2::ExifData& exif)
{
    const bool hasTags = std::any_of(exif.begin(), exif.end(), [](const Exiv2::Exifdatum& datum) {
        return datum.groupName() == "GPSInfo";
    });
    const auto pointer = exif.findKey(Exiv2::ExifKey("Exif.Image.GPSTag"));
    if (!hasTags && pointer != exif.end()) {
        exif.erase(pointer);
    }
}

/// Runs `work`; what it could not read is noted.
void readPart(ImageProperties::Content& content, const std::function<void()>& work)
{
    if (!guarded(work)) {
        content.isReadInPart = true;
    }
}

/// Takes over what the reader holds; each block by itself, so that one that cannot be taken (or was
/// not reached) leaves the others.
void take(Exiv2::Image& image, ImageProperties::Content& content)
{
    readPart(content, [&] { content.exif = image.exifData(); });
    readPart(content, [&] { content.iptc = image.iptcData(); });
    readPart(content, [&] {
        content.xmp = image.xmpData();
        takeRefusedXmp(image, content);
    });
    if (image.byteOrder() != Exiv2::invalidByteOrder) {
        content.byteOrder = image.byteOrder();
    }
    static_cast<void>(guarded([&] {
        content.pixels = QSize(image.pixelWidth(), image.pixelHeight());
        content.bitsPerSample = bitsPerSample(content.exif);
    }));
    static_cast<void>(guarded([&] {
        const Exiv2::DataBuf* const profile = image.iccProfile();
        if (image.iccProfileDefined() && profile != nullptr && profile->size_ > 0) {
            content.iccProfile = QByteArray(reinterpret_cast<const char*>(profile->pData_),
                                            static_cast<qsizetype>(profile->size_));
        }
    }));
}

auto openedInMemory(const QByteArray& bytes)
{
    return Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte*>(bytes.constData()),
                                     static_cast<long>(bytes.size()));
}

/// `bytes` are what `open` gives to Exiv2. False where Exiv2 does not know the type, or takes the
/// file for metadata without a picture, as it does any XML.
template <typename Open>
bool readWithExiv2(QByteArrayView bytes, const Open& open, ImageProperties::Content& content)
{
    bool isPicture = false;
    leftOut() = {};
    static_cast<void>(guarded([&] {
        const QByteArray cleared = XmpEffort::withoutUnbearable(bytes);
        content.isXmpUnread = !cleared.isEmpty();
        auto image = cleared.isEmpty() ? open() : openedInMemory(cleared);
        isPicture = image->imageType() != Exiv2::ImageType::xmp;
        if (!isPicture) {
            return;
        }
        // Damage in the middle leaves what stood before it.
        readPart(content, [&] { image->readMetadata(); });
        take(*image, content);
        content.isReadInPart = content.isReadInPart || leftOut().isPart;
        if (content.isReadInPart) {
            removeLostGps(content.exif);
        }
        content.isOfCrwFile = image->imageType() == Exiv2::ImageType::crw;
    }));
    return isPicture;
}

/// Whether the file says something that Exiv2 does not read.
bool needsBytes(FileType type, const ImageProperties::Content& content)
{
    return type == FileType::Heif || (type == FileType::Jpeg && ExtendedXmp::isNoted(content));
}

/// True where that alone makes it a picture of a known type.
bool completeFrom(const QByteArray& bytes, FileType type, ImageProperties::Content& content)
{
    if (type == FileType::Heif) {
        return HeifMetadata::makeUpright(bytes, content);
    }
    ExtendedXmp::merge(bytes, content);
    return false;
}

/// For pictures of types that only Qt reads: they have no blocks that would be carried over. Qt
/// takes any XML for a drawing.
Result<void> readWithQt(QIODevice& device, ImageProperties::Content& content)
{
    QImageReader reader(&device);
    if (!reader.canRead() || reader.format().startsWith("svg")) {
        return Error{ErrorCode::Unsupported,
                     u"%1 is no picture of a known type"_s.arg(content.name)};
    }
    content.pixels = reader.size();
    return {};
}

} // namespace

namespace MetadataAdapter
{

bool attempt(const std::function<void()>& work)
{
    const std::scoped_lock lock(preparedLibrary());
    return guarded(work);
}

Result<void> readFile(const QString& path, ImageProperties::Content& content)
{
    content.name = path;
    const QFileInfo info(path);
    if (!info.isFile()) {
        return Error{ErrorCode::NotFound, u"%1 does not exist"_s.arg(path)};
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return Error{ErrorCode::Unreadable,
                     u"%1 cannot be read: %2"_s.arg(path, file.errorString())};
    }
    // An absolute path is never taken for standard input or an address.
    const QByteArray name = QFile::encodeName(info.absoluteFilePath());
    bool known = false;
    static_cast<void>(attempt([&] {
        const uchar* const mapped = file.map(0, file.size());
        const QByteArrayView view(mapped, mapped != nullptr ? file.size() : 0);
        known = readWithExiv2(
            view, [&] { return Exiv2::ImageFactory::open(name.toStdString()); }, content);
        known = RawMetadata::completeFromFile(name, content) || known;
        const FileType type = FileTypes::detect(file.peek(kMarkBytes), path);
        if (needsBytes(type, content)) {
            known = completeFrom(file.readAll(), type, content) || known;
        }
    }));
    return known ? Result<void>{} : readWithQt(file, content);
}

Result<void> readBytes(const QByteArray& bytes, ImageProperties::Content& content)
{
    if (bytes.isEmpty()) {
        return Error{ErrorCode::Unsupported, u"There is no picture in no bytes"_s};
    }
    bool known = false;
    static_cast<void>(attempt([&] {
        known = readWithExiv2(
            bytes, [&] { return openedInMemory(bytes); }, content);
        known = RawMetadata::completeFromBytes(bytes, content) || known;
        const FileType type = FileTypes::detect(bytes.left(kMarkBytes), {});
        if (needsBytes(type, content)) {
            known = completeFrom(bytes, type, content) || known;
        }
    }));
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    return known ? Result<void>{} : readWithQt(buffer, content);
}

} // namespace MetadataAdapter
