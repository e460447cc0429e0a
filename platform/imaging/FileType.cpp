#include "FileType.h"

#include "TiffStructure.h"

#include <QFileInfo>

#include <libraw/libraw.h>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace
{

/// TIFF files that are RAW by their first bytes alone: Panasonic, Olympus (three), Phase One.
bool hasRawMark(const QByteArray& bytes)
{
    return bytes.startsWith(QByteArrayView("IIU\0", 4)) || bytes.startsWith("IIRO") ||
           bytes.startsWith("IIRS") || bytes.startsWith("MMOR") || bytes.startsWith("IIII") ||
           bytes.startsWith("MMMM");
}

/// RAW files that are no TIFF: Canon CRW, Fujifilm RAF, Minolta MRW, Sigma X3F.
bool hasOwnRawMark(const QByteArray& bytes)
{
    return bytes.sliced(0, std::min<qsizetype>(bytes.size(), 16)).contains("HEAPCCDR") ||
           bytes.startsWith("FUJIFILMCCD-RAW") || bytes.startsWith(QByteArrayView("\0MRM", 4)) ||
           bytes.startsWith("FOVb");
}

bool isPictureOfQt(const QByteArray& bytes)
{
    return bytes.startsWith("\x89PNG") || bytes.startsWith("GIF8") || bytes.startsWith("BM") ||
           (bytes.startsWith("RIFF") && bytes.mid(8, 4) == "WEBP");
}

FileType typeOfBrand(const QByteArray& bytes)
{
    const QByteArray brand = bytes.mid(8, 4);
    if (brand == "crx ") {
        return FileType::Raw;
    }
    // ISO/IEC 23008-12, annex B, and AV1 image files.
    static constexpr std::array kBrands{
        "heic", "heix", "heim", "heis", "hevc", "hevx", "mif1", "msf1", "avif", "avis"};
    const bool known =
        std::ranges::any_of(kBrands, [&](const char* name) { return brand == name; });
    return known ? FileType::Heif : FileType::Unknown;
}

bool hasRawExtension(const QString& path)
{
    return FileTypes::rawExtensions().contains(QFileInfo(path).suffix().toLower());
}

} // namespace

FileType FileTypes::detect(const QByteArray& bytes, const QString& path)
{
    if (bytes.startsWith("\xFF\xD8\xFF")) {
        return FileType::Jpeg;
    }
    if (bytes.mid(4, 4) == "ftyp") {
        return typeOfBrand(bytes);
    }
    if (hasRawMark(bytes) || hasOwnRawMark(bytes)) {
        return FileType::Raw;
    }
    if (isPictureOfQt(bytes)) {
        return FileType::Picture;
    }
    if (const auto tiff = TiffStructure::parse(bytes)) {
        return tiff->statesRaw() || hasRawExtension(path) ? FileType::Raw : FileType::Picture;
    }
    if (hasRawExtension(path)) {
        return FileType::Raw;
    }
    // Truevision TGA has no mark at its start.
    return QFileInfo(path).suffix().toLower() == "tga"_L1 ? FileType::Picture : FileType::Unknown;
}

QStringList FileTypes::rawExtensions()
{
    QStringList extensions{u"3fr"_s, u"arw"_s, u"bay"_s, u"cap"_s, u"cr2"_s, u"cr3"_s, u"crw"_s,
                           u"dcr"_s, u"dcs"_s, u"dng"_s, u"erf"_s, u"fff"_s, u"iiq"_s, u"k25"_s,
                           u"kdc"_s, u"mdc"_s, u"mef"_s, u"mos"_s, u"mrw"_s, u"nef"_s, u"nrw"_s,
                           u"orf"_s, u"pef"_s, u"ptx"_s, u"raf"_s, u"raw"_s, u"rw2"_s, u"rwl"_s,
                           u"sr2"_s, u"srf"_s, u"srw"_s};
    // LibRaw reads these only where it was built with code that Debian leaves out.
    const unsigned capabilities = LibRaw::capabilities();
    if ((capabilities & LIBRAW_CAPS_GPRSDK) != 0) {
        extensions.append(u"gpr"_s);
    }
    if ((capabilities & LIBRAW_CAPS_X3FTOOLS) != 0) {
        extensions.append(u"x3f"_s);
    }
    extensions.sort();
    return extensions;
}

QStringList FileTypes::otherExtensions()
{
    return {u"avif"_s,
            u"bmp"_s,
            u"gif"_s,
            u"heic"_s,
            u"heif"_s,
            u"hif"_s,
            u"jpe"_s,
            u"jpeg"_s,
            u"jpg"_s,
            u"png"_s,
            u"tga"_s,
            u"tif"_s,
            u"tiff"_s,
            u"webp"_s};
}
