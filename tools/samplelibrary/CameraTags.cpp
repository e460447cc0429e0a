#include "CameraTags.h"

#include <QLocale>

#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

/// 35 mm film is 36 mm wide, this sensor 23.5.
constexpr double kFilmWidthBySensorWidth = 36.0 / 23.5;

QByteArray exifTime(const QDateTime& time)
{
    return time.toString(u"yyyy:MM:dd HH:mm:ss"_s).toLatin1();
}

TiffTags::Rational rational(double value, quint32 denominator)
{
    return {static_cast<quint32>(std::lround(value * denominator)), denominator};
}

/// Exposure times are written as people read them: 1/400, not 25/10000.
TiffTags::Rational exposureTime(double seconds)
{
    return seconds < 0.5 ? TiffTags::Rational{1, static_cast<quint32>(std::lround(1.0 / seconds))}
                         : rational(seconds, 10);
}

/// Degrees, minutes and hundred-thousandths of a second.
QList<TiffTags::Rational> degreesMinutesSeconds(double degrees)
{
    constexpr quint32 kUnits = 100000;
    const qint64 all = std::llround(std::abs(degrees) * 3600.0 * kUnits);
    const auto part = [](qint64 number) { return static_cast<quint32>(number); };
    return {{part(all / (qint64{3600} * kUnits)), 1},
            {part(all / (qint64{60} * kUnits) % 60), 1},
            {part(all % (qint64{60} * kUnits)), kUnits}};
}

} // namespace

void CameraTags::addMain(TiffTags& directory, const ShotFacts& facts)
{
    if (!facts.description.isEmpty()) {
        directory.setAscii(0x010E, facts.description.toUtf8());
    }
    directory.setAscii(0x010F, kMake);
    directory.setAscii(0x0110, kModel);
    directory.setShorts(0x0112, {static_cast<quint16>(facts.orientation)});
    directory.setRationals(0x011A, {{300, 1}});
    directory.setRationals(0x011B, {{300, 1}});
    directory.setShorts(0x0128, {2}); // resolution in inches
    directory.setAscii(0x0131, "Corvane sample library");
    directory.setAscii(0x0132, exifTime(facts.taken));
    directory.setShorts(0x0213, {1}); // chroma samples are centred
}

TiffTags CameraTags::exif(const ShotFacts& facts, QSize picture)
{
    TiffTags tags;
    const auto hundredths = facts.taken.time().msec() / 10;
    tags.setRationals(0x829A, {exposureTime(facts.exposureSeconds)});
    tags.setRationals(0x829D, {rational(facts.aperture, 10)});
    tags.setShorts(0x8822, {3}); // aperture priority
    tags.setShorts(0x8827, {static_cast<quint16>(facts.iso)});
    tags.setShorts(0x8830, {2}); // the ISO value is the recommended exposure index
    tags.setUndefined(0x9000, "0231");
    tags.setAscii(0x9003, exifTime(facts.taken));
    tags.setAscii(0x9004, exifTime(facts.taken));
    tags.setUndefined(0x9101, QByteArray("\1\2\3\0", 4)); // Y, Cb, Cr
    tags.setSignedRationals(0x9204, {{0, 1}});            // exposure compensation
    tags.setRationals(0x9205, {{2, 1}});                  // largest aperture, APEX: f/2
    tags.setShorts(0x9207, {5});                          // multi-segment metering
    tags.setShorts(0x9208, {0});                          // light source unknown
    tags.setShorts(0x9209, {16});                         // flash off
    tags.setRationals(0x920A, {rational(facts.focalLength, 10)});
    tags.setAscii(0x9291, QByteArray::number(hundredths).rightJustified(2, '0'));
    tags.setUndefined(0xA000, "0100");
    tags.setShorts(0xA001, {1}); // sRGB
    tags.setLongs(0xA002, {static_cast<quint32>(picture.width())});
    tags.setLongs(0xA003, {static_cast<quint32>(picture.height())});
    tags.setUndefined(0xA300, "\3"); // a digital camera
    tags.setUndefined(0xA301, "\1"); // directly photographed
    tags.setShorts(0xA402, {0});     // automatic exposure
    tags.setShorts(0xA403, {0});     // automatic white balance
    tags.setShorts(
        0xA405, {static_cast<quint16>(std::lround(facts.focalLength * kFilmWidthBySensorWidth))});
    tags.setShorts(0xA406, {0}); // standard scene
    tags.setAscii(0xA431, kSerialNumber);
    tags.setRationals(0xA432, {{18, 1}, {90, 1}, {2, 1}, {4, 1}});
    tags.setAscii(0xA434, "Corvane Sample Lens 18-90mm f/2-4");
    return tags;
}

TiffTags CameraTags::gps(const Place& place, const QDateTime& taken)
{
    TiffTags tags;
    tags.setBytes(0, QByteArray("\2\3\0\0", 4));
    tags.setAscii(1, place.latitude < 0.0 ? "S" : "N");
    tags.setRationals(2, degreesMinutesSeconds(place.latitude));
    tags.setAscii(3, place.longitude < 0.0 ? "W" : "E");
    tags.setRationals(4, degreesMinutesSeconds(place.longitude));
    tags.setBytes(5, QByteArray(1, place.altitude < 0.0 ? '\1' : '\0'));
    tags.setRationals(6, {rational(std::abs(place.altitude), 10)});
    tags.setAscii(18, "WGS-84");
    tags.setAscii(29, taken.toString(u"yyyy:MM:dd"_s).toLatin1());
    return tags;
}

QByteArray CameraTags::exifSegment(const ShotFacts& facts, QSize picture)
{
    TiffTags main;
    addMain(main, facts);
    main.addDirectory(kExifPointer, exif(facts, picture));
    if (facts.position) {
        main.addDirectory(kGpsPointer, gps(*facts.position, facts.taken));
    }
    return QByteArray("Exif\0\0", 6) + main.file();
}

QByteArray CameraTags::xmpSegment(const ShotFacts& facts)
{
    if (facts.description.isEmpty() && facts.keywords.isEmpty()) {
        return {};
    }
    QString properties;
    if (!facts.description.isEmpty()) {
        properties +=
            u"<dc:description><rdf:Alt><rdf:li xml:lang=\"x-default\">%1</rdf:li></rdf:Alt>"
            "</dc:description>"_s.arg(facts.description.toHtmlEscaped());
    }
    if (!facts.keywords.isEmpty()) {
        properties += u"<dc:subject><rdf:Bag>"_s;
        for (const QString& keyword : facts.keywords) {
            properties += u"<rdf:li>"_s + keyword.toHtmlEscaped() + u"</rdf:li>"_s;
        }
        properties += u"</rdf:Bag></dc:subject>"_s;
    }
    const QString packet =
        u"<?xpacket begin=\"\uFEFF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>"
        "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">"
        "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">"
        "<rdf:Description rdf:about=\"\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\">"
        "%1</rdf:Description></rdf:RDF></x:xmpmeta><?xpacket end=\"w\"?>"_s.arg(properties);
    return QByteArray("http://ns.adobe.com/xap/1.0/\0", 29) + packet.toUtf8();
}
