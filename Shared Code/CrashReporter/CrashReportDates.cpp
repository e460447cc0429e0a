#include "CrashReportDates.h"

#include "Clock.h"
#include "PropertyList.h"
#include "UserDefaults.h"

#include <QDateTime>
#include <QFile>
#include <QRegularExpression>
#include <QTimeZone>

#include <sys/stat.h>
#include <unicode/udat.h>

#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;

namespace
{

constexpr QLatin1StringView kDateKey = "ZTBCrashReporterLastCrashReportDate"_L1;
constexpr QLatin1StringView kTimeKey = "ZTBCrashReporterLastCrashReportTime"_L1;
constexpr double kNanosecondsPerSecond = 1e9;
constexpr double kMillisecondsPerSecond = 1000.0;

struct CloseFormat {
    void operator()(UDateFormat* format) const { udat_close(format); }
};

using DateFormat = std::unique_ptr<UDateFormat, CloseFormat>;

/// Longer ones ICU does not know (ULOC_FULLNAME_CAPACITY).
constexpr qsizetype kLongestLocale = 156;

/// The locale, or the root one for a name that is none: ICU does not survive all of them.
QByteArray icuLocale(const QString& name)
{
    static const QRegularExpression kForm(
        u"^[A-Za-z]{2,3}"                        // language
        "([_-][A-Za-z]{4})?"                     // script
        "([_-]([A-Za-z]{2}|[0-9]{3})|_(?=_))?"   // region; none between two lines
        "([_-][A-Za-z0-9]{2,11}){0,3}"           // variants
        "(@[A-Za-z]{2,20}=[A-Za-z0-9_/+-]{1,40}" // keywords
        "(;[A-Za-z]{2,20}=[A-Za-z0-9_/+-]{1,40})*)?$"_s);
    const bool isName = name.size() <= kLongestLocale && kForm.match(name).hasMatch();
    return isName ? name.toLatin1() : QByteArray("root");
}

/// Null where it cannot be made.
DateFormat mediumFormat(const QString& locale)
{
    // Told each time, since the library would remember the zone it saw first.
    const QString zone = QString::fromLatin1(QTimeZone::systemTimeZoneId());
    const auto* const zoneId =
        zone.isEmpty() ? nullptr : reinterpret_cast<const UChar*>(zone.constData());
    UErrorCode status = U_ZERO_ERROR;
    DateFormat format(udat_open(UDAT_MEDIUM,
                                UDAT_MEDIUM,
                                icuLocale(locale).constData(),
                                zoneId,
                                static_cast<qint32>(zone.size()),
                                nullptr,
                                0,
                                &status));
    return U_SUCCESS(status) ? std::move(format) : nullptr;
}

} // namespace

std::optional<double> CrashReportDates::modificationDate(const QString& path)
{
    struct stat attributes {
    };

    if (::lstat(QFile::encodeName(path).constData(), &attributes) != 0) {
        return std::nullopt;
    }
    const timespec& time = attributes.st_mtim;
    return static_cast<double>(time.tv_sec) - kSecondsFrom1970To2001 +
           static_cast<double>(time.tv_nsec) / kNanosecondsPerSecond;
}

std::optional<double> CrashReportDates::lastReport(const UserDefaults& defaults)
{
    const QVariant stored = defaults.value(kDateKey);
    if (stored.metaType() != QMetaType::fromType<PropertyList::Date>()) {
        return std::nullopt;
    }
    const double date = stored.value<PropertyList::Date>().secondsSince2001;
    const double exact = defaults.doubleValue(kTimeKey);
    return std::floor(exact) == date ? exact : date;
}

void CrashReportDates::setLastReport(UserDefaults& defaults, double date)
{
    defaults.setDouble(kTimeKey, date);
    defaults.setValue(kDateKey, QVariant::fromValue(PropertyList::Date{date}));
}

QString CrashReportDates::text(double date, const QString& locale)
{
    const double milliseconds = (date + kSecondsFrom1970To2001) * kMillisecondsPerSecond;
    if (const DateFormat format = mediumFormat(locale)) {
        constexpr qint32 kMostCharacters = 256;
        QString text(kMostCharacters, u'\0');
        UErrorCode status = U_ZERO_ERROR;
        const qint32 length = udat_format(format.get(),
                                          milliseconds,
                                          reinterpret_cast<UChar*>(text.data()),
                                          kMostCharacters,
                                          nullptr,
                                          &status);
        if (U_SUCCESS(status)) {
            text.truncate(length);
            return text;
        }
    }
    return QDateTime::fromMSecsSinceEpoch(std::llround(milliseconds)).toString(Qt::ISODate);
}
