#pragma once

#include "Result.h"

#include <QDateTime>
#include <QMap>
#include <QSize>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

/// An unsigned position with its references, as EXIF stores it (CIPA DC-008, GPS IFD).
struct GpsPosition {
    double latitude{0.0};  ///< degrees, 0..90
    QString latitudeRef;   ///< "N" or "S"
    double longitude{0.0}; ///< degrees, 0..180
    QString longitudeRef;  ///< "E" or "W"
    friend bool operator==(const GpsPosition&, const GpsPosition&) = default;
};

/// What a picture file says of itself, decoded; whatever it does not say is absent.
struct ImageFacts {
    QSize pixels;       ///< stored size of the main picture, not turned; of HEIC as shown
    int orientation{1}; ///< EXIF 1..8; of HEIC always 1, its file's turns are part of the picture
    /// Wall clock (DateTimeOriginal, else DateTimeDigitized, else DateTime), Qt::UTC, with
    /// subseconds.
    std::optional<QDateTime> dateTaken;
    std::optional<double> latitude; ///< signed degrees
    std::optional<double> longitude;
    std::optional<double> altitude; ///< metres, negative below sea level
    QString title;                  ///< XMP dc:title, else IPTC ObjectName
    QString caption; ///< IPTC Caption/Abstract, else XMP dc:description, else EXIF ImageDescription
    QString byline;
    QString copyrightNotice;
    QStringList keywords;     ///< XMP dc:subject, else IPTC Keywords
    QString colorProfileName; ///< of the embedded ICC profile; sRGB assumed when absent
    /// EXIF texts by their property name: "Make", "Model", "LensModel", "Software", "Artist",
    /// "Copyright", "ImageDescription", "CameraSerialNumber", "ExifVersion" ("2.3.1"), ….
    QMap<QString, QString> texts;
    /// EXIF numbers by their property name: "ApertureValue" (f-number), "ShutterSpeed" (seconds),
    /// "ISOSpeedRating", "FocalLength" (mm), "FocalLenIn35mmFilm", "ExposureBiasValue",
    /// "ExposureMode", "ExposureProgram", "Flash", "MeteringMode", "WhiteBalance", "LightSource",
    /// "SceneCaptureType", "ColorSpace", "BrightnessValue", "MaxApertureValue", "Contrast",
    /// "Saturation", "Sharpness", "LensMinMM", "LensMaxMM", "Depth" (bits).
    QMap<QString, double> numbers;
};

/// The metadata of a picture file: EXIF with maker notes, GPS, IPTC and XMP; read from any
/// supported type, changed by the conversion rules, and written into a JPEG by JpegDestination.
/// A value type (deep copies). One thread at a time; different objects on different threads.
class ImageProperties final
{
public:
    /// No metadata at all.
    ImageProperties();
    ImageProperties(const ImageProperties& other);
    /// What was moved from can be assigned to or destroyed, nothing else.
    ImageProperties(ImageProperties&& other) noexcept;
    ImageProperties& operator=(const ImageProperties& other);
    ImageProperties& operator=(ImageProperties&& other) noexcept;
    ~ImageProperties();

    /// Reads the metadata of the file's main picture. A picture without metadata yields an empty
    /// object; metadata that is damaged in part yields what could be read.
    /// Errors: NotFound, Unreadable, Unsupported (no picture type that is known), OutOfSpace.
    /// (The other functions throw std::bad_alloc where memory is too short.)
    [[nodiscard]] static Result<ImageProperties> read(const QString& path);
    [[nodiscard]] static Result<ImageProperties> fromBytes(const QByteArray& bytes);

    /// Whether the file's metadata could be read: all blocks, and of Exif all entries. (Damage
    /// within a maker note is not noticed.)
    [[nodiscard]] bool isWhole() const;

    /// Whether there is a GPS block, even one without a position ("{GPS}"), in Exif or in XMP. Of
    /// damaged metadata a block that could not be read, or that is empty, is none.
    [[nodiscard]] bool hasGps() const;
    /// Replaces the GPS block of Exif by one of this position alone.
    void setGps(const GpsPosition& position);
    /// Whether there is an IPTC block ("{IPTC}").
    [[nodiscard]] bool hasIptc() const;
    /// Removes the IPTC keywords and nothing else of the block.
    void removeIptcKeywords();
    /// Removes the keywords that Windows keeps in Exif (XPKeywords).
    void removeExifKeywords();
    /// Removes subject keywords from XMP (dc:subject, lr:hierarchicalSubject and the like).
    void removeXmpSubjects();

    [[nodiscard]] ImageFacts facts() const;

    struct Content;

    /// For the writer of metadata blocks (JpegDestination) only.
    [[nodiscard]] const Content& content() const { return *m_content; }

private:
    template <typename Reading>
    [[nodiscard]] static Result<ImageProperties> readBy(const Reading& reading);

    std::unique_ptr<Content> m_content;
};
