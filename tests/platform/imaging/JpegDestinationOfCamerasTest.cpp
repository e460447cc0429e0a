#include "ExiftoolReader.h"
#include "JpegDestination.h"
#include "LogRecorder.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace
{

/// What a copy does not carry of its original, by directory and name as exiftool has them.
struct LeftOut {
    const char* directory; ///< regular expressions, of the whole
    const char* name;
};

constexpr std::array kLeftOut{
    // Directories of pictures that the JPEG does not have, and RAW structures that are no Exif.
    LeftOut{"SubIFD\\d*|IFD1|IFD2|IFD3|PreviewIFD|PanasonicRaw", ".*"},
    LeftOut{"CIFF|CanonRaw|Qualcomm|KodakIFD", ".*"},
    // How the file of the original lies.
    LeftOut{"IFD0",
            "SubfileType|ImageWidth|ImageHeight|BitsPerSample|PhotometricInterpretation|"
            "StripOffsets|SamplesPerPixel|RowsPerStrip|StripByteCounts|PlanarConfiguration|"
            "Predictor|SampleFormat|Padding|YCbCrCoefficients|YCbCrSubSampling|"
            "ReferenceBlackWhite|ThumbnailTIFF|TIFF-EPStandardID"},
    // Data of DNG files by which the sensor's values become a picture.
    LeftOut{"IFD0",
            "CFA.*|DNGVersion|DNGBackwardVersion|BlackLevel.*|WhiteLevel|ColorMatrix\\d|"
            "AsShotNeutral|CalibrationIlluminant\\d|Preview.*|CameraCalibration.*|AnalogBalance|"
            "Baseline.*|LinearResponseLimit|ShadowScale|RawDataUniqueID|Profile.*|"
            "ForwardMatrix\\d|NoiseProfile|OriginalDefaultFinalSize|NewRawImageDigest|"
            "Default(Scale|CropOrigin|CropSize|UserCrop)|BayerGreenSplit|AntiAliasStrength|"
            "BestQualityScale|ActiveArea|OpcodeList\\d"},
    // The same of Panasonic's files.
    LeftOut{"IFD0",
            "PanasonicRawVersion|Sensor.*|Linearity.*|HighISO.*|NoiseReductionParams|"
            "WB(Red|Green|Blue)Level|RawFormat|JpgFromRaw|RawDataOffset"},
    // They stand under other names in a JPEG: SerialNumber and LensInfo.
    LeftOut{"IFD0", "CameraSerialNumber|DNGLensInfo"},
    // True for a copy of full size only.
    LeftOut{"ExifIFD|XMP-exif", "FocalPlane.*|SubjectArea|SubjectLocation"},
    LeftOut{"ExifIFD", "CompressedBitsPerPixel|Padding|OffsetSchema|CFAPattern"},
    LeftOut{"InteropIFD", "RelatedImage.*"},
    LeftOut{"Canon", "ThumbnailImageValidArea|VRDOffset"},
    // Borders of the sensor, and settings by which Panasonic's cameras made the JPEG in their file.
    LeftOut{"Canon", "(Sensor|BlackMask).*"},
    LeftOut{"ExifIFD",
            "SceneType|CustomRendered|DigitalZoomRatio|SceneCaptureType|GainControl|Contrast|"
            "Saturation|Sharpness"},
    LeftOut{"Panasonic",
            "ColorEffect|ContrastMode|NoiseReduction|ColorMode|OpticalZoomMode|Contrast|"
            "Saturation|Sharpness|FilmMode|SceneMode|WB(Red|Green|Blue)Level"},
    // Keywords reach the copy through the library.
    LeftOut{"IPTC", "Keywords"},
    LeftOut{"XMP-(dc|lr|digiKam|acdsee|mediapro|microsoft|photoshop)",
            "Subject|HierarchicalSubject|TagsList|Categories|CatalogSets|LastKeywordXMP"},
    // Development of RAW files, digests of blocks that are others now, the original's structure.
    LeftOut{"XMP-crs|XMP-rdf", ".*"},
    LeftOut{"XMP-exif", "CompressedBitsPerPixel|NativeDigest|ComponentsConfiguration"},
    LeftOut{"XMP-photoshop", "ColorMode|ICCProfileName|LegacyIPTCDigest"},
    LeftOut{"XMP-exifEX", "Gamma|InteropIndex"},
    LeftOut{"XMP-tiff",
            "ImageWidth|ImageHeight|Compression|PhotometricInterpretation|SamplesPerPixel|"
            "PlanarConfiguration|NativeDigest|BitsPerSample"},
};

/// What the copy says otherwise than its original, since it is another file. A time of IPTC always
/// has a zone in the copy.
constexpr auto kMadeTrue =
    "ColorSpace|Compression|ExifImage(Width|Height)|Thumbnail(Image|Length|Offset)|"
    "YCbCrPositioning|XMPToolkit|Format|TimeCreated";

bool isWhole(const QString& text, const char* pattern)
{
    const QRegularExpression whole(
        QRegularExpression::anchoredPattern(QString::fromLatin1(pattern)));
    return whole.match(text).hasMatch();
}

bool isLeftOut(const ExiftoolReader::Tag& tag)
{
    return std::ranges::any_of(kLeftOut, [&](const LeftOut& part) {
        return isWhole(tag.directory, part.directory) && isWhole(tag.name, part.name);
    });
}

bool isOfBlock(const ExiftoolReader::Tag& tag)
{
    return isWhole(tag.family, "EXIF|MakerNotes|IPTC|XMP");
}

QStringList cameraFiles()
{
    QStringList found;
    for (const QString& folder : {u"raw"_s, u"masters"_s, u"other"_s}) {
        QDirIterator files(QStringLiteral(CORVANE_SHARED_DATA "/") + folder, QDir::Files);
        while (files.hasNext()) {
            if (const QString path = files.next(); !path.endsWith(u".xml"_s)) {
                found.append(path);
            }
        }
    }
    return found;
}

/// A small copy of the file, with the metadata that a conversion gives it.
void writeCopy(const QString& source, const QString& target)
{
    const LogRecorder log;
    auto properties = ImageProperties::read(source);
    ASSERT_TRUE(properties.ok()) << qPrintable(source);
    const bool isCutOff = source.contains(u"truncated"_s);
    EXPECT_EQ(properties.value().isWhole(), !isCutOff) << qPrintable(source);
    properties.value().removeIptcKeywords();
    properties.value().removeExifKeywords();
    properties.value().removeXmpSubjects();
    const auto jpeg =
        JpegDestination::encode(Bitmap(64, 48, Transfer::Srgb), properties.value(), 0.8);
    ASSERT_TRUE(jpeg.ok());
    EXPECT_EQ(log.entries().isEmpty(), !isCutOff) << qPrintable(source);
    QFile file(target);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(jpeg.value()), jpeg.value().size());
}

void expectCarried(const ExiftoolReader::Tags& original,
                   const ExiftoolReader::Tags& copy,
                   const std::string& name)
{
    for (const ExiftoolReader::Tag& tag : original.all()) {
        if (!isOfBlock(tag) || isLeftOut(tag)) {
            continue;
        }
        const auto value = copy.value(tag.family, tag.name);
        const bool isThere = value.has_value();
        EXPECT_TRUE(isThere) << name << ' ' << qPrintable(tag.directory + u' ' + tag.name);
        if (isThere && !isWhole(tag.name, kMadeTrue)) {
            EXPECT_EQ(value->toStdString(), tag.value.toStdString())
                << name << ' ' << qPrintable(tag.directory + u' ' + tag.name);
        }
    }
}

} // namespace

TEST(JpegDestination, anotherReaderFindsAllTagsOfCamerasFilesButThoseThatNoLongerHold)
{
    const QStringList originals = cameraFiles();
    ASSERT_FALSE(originals.isEmpty());
    const QTemporaryDir folder;
    QStringList copies;
    for (const QString& source : originals) {
        copies.append(folder.filePath(u"%1.jpg"_s.arg(copies.size())));
        writeCopy(source, copies.last());
    }
    const auto before = ExiftoolReader::tags(originals);
    const auto after = ExiftoolReader::tags(copies);
    ASSERT_EQ(before.size(), after.size());
    for (qsizetype i = 0; i < before.size(); ++i) {
        EXPECT_EQ(after.at(i).value(u"File"_s, u"FileType"_s), u"JPEG"_s);
        EXPECT_EQ(after.at(i).value(u"ExifTool"_s, u"Error"_s), std::nullopt);
        expectCarried(before.at(i), after.at(i), originals.at(i).toStdString());
    }
}
