#include "ImportProperties.h"

#include "Clock.h"
#include "Properties.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <cmath>
#include <numeric>

using namespace Qt::StringLiterals;

namespace
{

using Properties::Texts;

QDateTime wallClock(double seconds)
{
    constexpr double kMilliseconds = 1000.0;
    return QDateTime::fromMSecsSinceEpoch(
        static_cast<qint64>(std::llround((seconds + kSecondsFrom1970To2001) * kMilliseconds)),
        Qt::UTC);
}

void insertCapture(Writer& writer, qint64 version, const QDateTime& wall)
{
    const QDate date = wall.date();
    const QTime time = wall.time();
    constexpr int kDaysOfWeek = 7; // Sunday is 0
    Properties::setNumber(writer, version, u"CaptureYear"_s, date.year());
    Properties::setNumber(writer, version, u"CaptureMonthOfYear"_s, date.month());
    Properties::setNumber(writer, version, u"CaptureDayOfMonth"_s, date.day());
    Properties::setNumber(writer, version, u"CaptureDayOfWeek"_s, date.dayOfWeek() % kDaysOfWeek);
    Properties::setNumber(writer, version, u"CaptureHourOfDay"_s, time.hour());
    Properties::setNumber(writer, version, u"CaptureMinuteOfHour"_s, time.minute());
    Properties::setNumber(writer, version, u"CaptureSecondOfMinute"_s, time.second());
    Properties::setNumber(writer, version, u"ImageDate"_s, 0);
}

void insertNumbers(Writer& writer, qint64 version, const PreparedPicture& picture)
{
    const ImageFacts& facts = picture.facts;
    for (auto number = facts.numbers.cbegin(); number != facts.numbers.cend(); ++number) {
        if (std::isfinite(number.value())) {
            Properties::setNumber(writer, version, number.key(), number.value());
        }
    }
    Properties::setNumber(writer, version, u"PixelWidth"_s, picture.stored.width());
    Properties::setNumber(writer, version, u"PixelHeight"_s, picture.stored.height());
    if (picture.latitude && picture.longitude) {
        Properties::setNumber(writer, version, u"Latitude"_s, *picture.latitude);
        Properties::setNumber(writer, version, u"Longitude"_s, *picture.longitude);
    }
    if (facts.altitude) {
        Properties::setNumber(writer, version, u"Altitude"_s, *facts.altitude);
    }
}

void setUnlessEmpty(
    Writer& writer, Texts kind, qint64 version, const QString& key, const QString& text)
{
    if (!text.isEmpty()) {
        Properties::setString(writer, kind, version, key, text);
    }
}

void insertTexts(Writer& writer, qint64 version, const ImageFacts& facts)
{
    for (auto text = facts.texts.cbegin(); text != facts.texts.cend(); ++text) {
        setUnlessEmpty(writer, Texts::Exif, version, text.key(), text.value());
    }
    Properties::setString(writer, Texts::Exif, version, u"ColorModel"_s, u"RGB"_s);
    setUnlessEmpty(writer, Texts::Exif, version, u"ProfileName"_s, facts.colorProfileName);
    setUnlessEmpty(writer, Texts::Iptc, version, u"ObjectName"_s, facts.title);
    setUnlessEmpty(writer, Texts::Iptc, version, u"Caption/Abstract"_s, facts.caption);
    setUnlessEmpty(writer, Texts::Iptc, version, u"Byline"_s, facts.byline);
    setUnlessEmpty(writer, Texts::Iptc, version, u"CopyrightNotice"_s, facts.copyrightNotice);
}

/// "6000 × 4000 (24.0 MP)".
QString sizeText(QSize size)
{
    const double megapixels = 1e-6 * size.width() * size.height();
    return u"%1 × %2 (%3 MP)"_s.arg(size.width())
        .arg(size.height())
        .arg(QLocale::c().toString(megapixels, 'f', 1));
}

/// "2:3": the short side first, in lowest terms.
QString aspectText(QSize size)
{
    const int divisor = std::max(1, std::gcd(size.width(), size.height()));
    const int shorter = std::min(size.width(), size.height()) / divisor;
    const int longer = std::max(size.width(), size.height()) / divisor;
    return u"%1:%2"_s.arg(shorter).arg(longer);
}

QString orientationText(QSize size)
{
    if (size.width() == size.height()) {
        return u"Square"_s;
    }
    return size.width() > size.height() ? u"Landscape"_s : u"Portrait"_s;
}

void insertOwn(Writer& writer,
               const PreparedPicture& picture,
               const ImportProperties::Versions& versions)
{
    const qint64 version = versions.shown;
    const auto set = [&](const QString& key, const QString& text) {
        Properties::setString(writer, Texts::Other, version, key, text);
    };
    set(u"FileName"_s, picture.fileName.toLower());
    set(u"VersionName"_s, versions.title);
    set(u"PixelSize"_s, sizeText(picture.stored));
    set(u"ProcessedPixelSize"_s, sizeText(picture.shown));
    set(u"AspectRatio"_s, aspectText(picture.shown));
    set(u"Orientation"_s, orientationText(picture.shown));
    set(u"MasterLocation"_s, versions.eventName);
    set(u"ProjectName"_s, versions.eventName);
    Properties::setOtherNumber(
        writer, version, u"FileSize"_s, static_cast<double>(picture.bytes.size()));
}

} // namespace

void ImportProperties::insert(Writer& writer,
                              const PreparedPicture& picture,
                              const Versions& versions)
{
    const QDateTime wall = wallClock(versions.imageDate);
    for (const qint64 version : {versions.shown, versions.original}) {
        insertNumbers(writer, version, picture);
        insertCapture(writer, version, wall);
        insertTexts(writer, version, picture.facts);
    }
    // Version-0 keeps the keywords of the file as one text as well.
    QStringList keywords = picture.facts.keywords;
    if (!keywords.isEmpty()) {
        keywords.sort(Qt::CaseInsensitive);
        Properties::setString(
            writer, Texts::Iptc, versions.original, u"Keywords"_s, keywords.join(u", "_s));
    }
    insertOwn(writer, picture, versions);
}
