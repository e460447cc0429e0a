// Writes one small valid input for each fuzz target into the folders below the one given.

#include "HeifSamples.h"
#include "ImageBuilder.h"
#include "ImageProperties.h"
#include "ImagePropertiesContent.h"
#include "JpegDestination.h"
#include "PropertyList.h"
#include "RowIdSet.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

constexpr QSize kSmall(48, 32);

bool write(const QString& folder, const QString& name, const QByteArray& bytes)
{
    QFile file(QDir(folder).filePath(name));
    return QDir().mkpath(folder) && file.open(QIODevice::WriteOnly) &&
           file.write(bytes) == bytes.size();
}

QVariantMap list()
{
    return {{u"text"_s, u"Grüße \U0001F4F7"_s},
            {u"number"_s, qlonglong{-1}},
            {u"real"_s, 2.5},
            {u"data"_s, QByteArray("\0\1\2", 3)},
            {u"yes"_s, true},
            {u"date"_s, QVariant::fromValue(PropertyList::Date{717514987.85})},
            {u"list"_s, QVariantList{1, u"two"_s, QVariantMap{{u"three"_s, 3.0}}}}};
}

QByteArray jpeg()
{
    ImageProperties properties;
    properties.setGps({33.9, u"S"_s, 151.2, u"E"_s});
    Result<QByteArray> encoded =
        JpegDestination::encode(ImageBuilder::scene(kSmall), properties, 0.8);
    return encoded.ok() ? encoded.value() : QByteArray();
}

/// Exif, IPTC and XMP of a camera and of a person.
QByteArray jpegWithBlocks()
{
    ImageProperties properties;
    // The content is open to writers of blocks only; the seed stands in for its reader here.
    auto& content = const_cast<ImageProperties::Content&>(properties.content()); // NOLINT
    content.exif["Exif.Image.Make"] = "Maker";
    content.exif["Exif.Image.Orientation"] = uint16_t{6};
    content.exif["Exif.Photo.ExposureTime"] = Exiv2::URational(1, 125);
    content.exif["Exif.Photo.UserComment"] = "charset=Ascii Hello";
    content.exif["Exif.Photo.MakerNote"] = "0 1 2 3 4 5 6 7";
    content.iptc["Iptc.Application2.Caption"] = "A caption";
    content.iptc["Iptc.Application2.Keywords"] = "word";
    content.xmp["Xmp.dc.subject"] = "word";
    content.xmp["Xmp.dc.title"] = "lang=x-default A title";
    content.xmp["Xmp.xmpMM.History[1]/stEvt:action"] = "saved";
    Result<QByteArray> encoded =
        JpegDestination::encode(ImageBuilder::scene(kSmall), properties, 0.8);
    return encoded.ok() ? encoded.value() : QByteArray();
}

/// A DNG file with a preview, of a sensor's mosaic or of whole pixels.
QByteArray raw(bool demosaiced)
{
    ImageBuilder::RawFile details;
    details.crop = QSize(40, 24);
    details.preview = jpeg();
    details.demosaiced = demosaiced;
    return ImageBuilder::dng(ImageBuilder::scene(kSmall, Transfer::Linear), details);
}

QByteArray heif()
{
    HeifSamples::Options options;
    options.orientation = 6;
    options.thumbnail = ImageBuilder::scene({32, 32});
    return HeifSamples::file(ImageBuilder::scene({64, 64}), options);
}

/// What the catalogue of a library with two photos tells.
QVariantMap catalogue()
{
    const QVariantMap photo{{u"Caption"_s, u"Gr\u00FC\u00DFe"_s},
                            {u"DateAsTimerInterval"_s, 300000000.5},
                            {u"DateAsTimerIntervalGMT"_s, 299992800.5},
                            {u"ImagePath"_s, u"/Users/a/P/Masters/2010/a.jpg"_s},
                            {u"OriginalPath"_s, u"/Volumes/Disk/2011/far.jpg"_s},
                            {u"Faces"_s, QVariantList{QVariantMap{{u"face key"_s, u"1"_s}}}}};
    const QVariantMap album{{u"AlbumId"_s, 12},
                            {u"AlbumName"_s, u"Best"_s},
                            {u"Album Type"_s, u"Regular"_s},
                            {u"GUID"_s, u"lastNMonthsAlbum"_s},
                            {u"KeyList"_s, QVariantList{u"3"_s, u"5"_s}}};
    const QVariantMap roll{{u"RollID"_s, 7}, {u"RollName"_s, u"Elder Park"_s}};
    return {{u"Archive Path"_s, u"/Users/a/P"_s},
            {u"Application Version"_s, u"9.6.1"_s},
            {u"List of Albums"_s, QVariantList{album}},
            {u"List of Rolls"_s, QVariantList{roll}},
            {u"List of Faces"_s, QVariantMap{{u"1"_s, QVariantMap{{u"name"_s, u"Ada"_s}}}}},
            {u"Master Image List"_s, QVariantMap{{u"3"_s, photo}, {u"5"_s, photo}}}};
}

/// What is done with the library, then changes of rows: number of the table, of the row, of the
/// column, kind of the value, value.
QByteArray rowChanges(char use)
{
    return QByteArray(1, use) + QByteArray::fromHex("05ff0300"
                                                    "2003060904"
                                                    "20ff0702"
                                                    "0330ff0405"
                                                    "1002050503414243"
                                                    "22ff0b0701");
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2) {
        std::fprintf(stderr, "usage: make_seeds FOLDER\n");
        return 2;
    }
    const QDir root(arguments.at(1));
    const Result<QByteArray> xml = PropertyList::toXml(list());
    const Result<QByteArray> binary = PropertyList::toBinary(list());
    const Result<QByteArray> albums = PropertyList::toXml(catalogue());
    const QByteArray ids = RowIdSet({1, 5, 31, 32, 1023, 1024, 99999}).toBlob();
    const QByteArray picture = jpeg();
    const QByteArray form("comments\0It fell\r\nover\0a\"b\r\nc\0\xC3\xA4\0", 32);

    struct Seed {
        QString target;
        QString name;
        QByteArray bytes;
    };

    const QList<Seed> seeds{
        {u"PropertyList"_s, u"xml.plist"_s, xml.ok() ? xml.value() : QByteArray()},
        {u"PropertyList"_s, u"binary.plist"_s, binary.ok() ? binary.value() : QByteArray()},
        {u"RowIdSet"_s, u"ids"_s, ids},
        {u"Catalogue"_s, u"AlbumData.xml"_s, albums.ok() ? albums.value() : QByteArray()},
        {u"DatabaseRows"_s, u"read"_s, rowChanges('\0')},
        {u"DatabaseRows"_s, u"check"_s, rowChanges('\1')},
        {u"DatabaseRows"_s, u"change"_s, rowChanges('\2')},
        {u"Paths"_s,
         u"other letters"_s,
         QByteArray("2010/GRU\xCC\x88\xC3\x9F"
                    "e/../b")},
        {u"ImageProperties"_s, u"gps.jpg"_s, picture},
        {u"ImageProperties"_s, u"blocks.jpg"_s, jpegWithBlocks()},
        {u"Jpeg"_s, u"small.jpg"_s, picture},
        {u"Heif"_s, u"thumbnail.heic"_s, heif()},
        {u"RawIntake"_s, u"mosaic.dng"_s, raw(false)},
        {u"RawIntake"_s, u"pixels.dng"_s, raw(true)},
        {u"FormData"_s, u"two fields"_s, form}};
    for (const Seed& seed : seeds) {
        if (seed.bytes.isEmpty() || !write(root.filePath(seed.target), seed.name, seed.bytes)) {
            std::fprintf(stderr, "%s cannot be written\n", qPrintable(seed.target));
            return 1;
        }
    }
    return 0;
}
