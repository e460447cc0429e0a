#include "PhotoRows.h"

#include "EventRows.h"
#include "ModelIds.h"
#include "Properties.h"
#include "Queries.h"
#include "RowIdIndexes.h"
#include "Uuid.h"
#include "WallClock.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kMostStars = 5;

struct Visible {
    QString master;
    QString event;
};

std::optional<Visible> findVisible(Connection& connection, qint64 versionId)
{
    Sql::Query query(connection,
                     "SELECT masterUuid,projectUuid FROM RKVersion WHERE modelId=? "
                     "AND showInLibrary=1",
                     versionId);
    if (!query.next()) {
        return std::nullopt;
    }
    return Visible{Sql::text(query.column(0)), Sql::text(query.column(1))};
}

void touch(Writer& writer, qint64 versionId, const Visible& photo)
{
    Sql::execute(writer.connection,
                 "UPDATE RKVersion SET exportMetadataChangeDate=? WHERE modelId=? AND "
                 "showInLibrary=1",
                 writer.now,
                 versionId);
    writer.changes.masters.insert(photo.master);
    writer.changes.catalogues = true;
}

void setCaptureParts(Writer& writer, qint64 versionId, const QDateTime& moment)
{
    const QDate day = moment.date();
    const QTime time = moment.time();
    // The week of these numbers begins with Sunday, as 0.
    const std::pair<QString, int> parts[] = {{u"CaptureYear"_s, day.year()},
                                             {u"CaptureMonthOfYear"_s, day.month()},
                                             {u"CaptureDayOfMonth"_s, day.day()},
                                             {u"CaptureDayOfWeek"_s, day.dayOfWeek() % 7},
                                             {u"CaptureHourOfDay"_s, time.hour()},
                                             {u"CaptureMinuteOfHour"_s, time.minute()},
                                             {u"CaptureSecondOfMinute"_s, time.second()}};
    for (const auto& [key, number] : parts) {
        Properties::setNumber(writer, versionId, key, number);
    }
}

} // namespace

void PhotoRows::setRating(Writer& writer, qint64 versionId, int rating)
{
    const std::optional<Visible> photo = findVisible(writer.connection, versionId);
    if (!photo) {
        return;
    }
    const int stars = std::clamp(rating, 0, kMostStars);
    RowIdIndexes::follow(writer, "RKVersion", {versionId}, [&] {
        Sql::execute(writer.connection,
                     "UPDATE RKVersion SET mainRating=? WHERE modelId=?",
                     stars,
                     versionId);
    });
    touch(writer, versionId, *photo);
}

void PhotoRows::setName(Writer& writer, qint64 versionId, const QString& name)
{
    const std::optional<Visible> photo = findVisible(writer.connection, versionId);
    if (!photo) {
        return;
    }
    const QString words = name.isNull() ? u""_s : name;
    Sql::execute(
        writer.connection, "UPDATE RKVersion SET name=? WHERE modelId=?", words, versionId);
    Properties::setString(writer, Properties::Texts::Other, versionId, u"VersionName"_s, words);
    touch(writer, versionId, *photo);
}

void PhotoRows::setComment(Writer& writer, qint64 versionId, const QString& comment)
{
    const std::optional<Visible> photo = findVisible(writer.connection, versionId);
    if (!photo) {
        return;
    }
    const QString key = u"Caption/Abstract"_s;
    if (comment.isEmpty()) {
        Properties::remove(writer, Properties::Texts::Iptc, versionId, key);
    } else {
        Properties::setString(writer, Properties::Texts::Iptc, versionId, key, comment);
    }
    touch(writer, versionId, *photo);
}

void PhotoRows::setAltitude(Writer& writer, qint64 versionId, std::optional<double> metres)
{
    const std::optional<Visible> photo = findVisible(writer.connection, versionId);
    if (!photo) {
        return;
    }
    if (metres && std::isfinite(*metres)) {
        Properties::setNumber(writer, versionId, u"Altitude"_s, *metres);
    } else {
        Properties::removeNumber(writer, versionId, u"Altitude"_s);
    }
    touch(writer, versionId, *photo);
}

void PhotoRows::setDate(Writer& writer, qint64 versionId, double date, const QString& zone)
{
    const std::optional<Visible> photo = findVisible(writer.connection, versionId);
    if (!photo || !WallClock::of(date).isValid()) {
        return;
    }
    Sql::execute(
        writer.connection, "UPDATE RKVersion SET imageDate=? WHERE modelId=?", date, versionId);
    if (!zone.isEmpty()) {
        Sql::execute(writer.connection,
                     "UPDATE RKVersion SET imageTimeZoneName=? WHERE modelId=?",
                     zone,
                     versionId);
    }
    // No library with a date that its user had changed was at hand. The master and the version as
    // imported keep theirs, as they keep every other value that the user changes.
    const QString shownIn = Sql::firstText(
        writer.connection, "SELECT imageTimeZoneName FROM RKVersion WHERE modelId=?", versionId);
    const QDateTime shown = WallClock::of(date, shownIn);
    setCaptureParts(writer, versionId, shown);
    touch(writer, versionId, *photo);
    EventRows::updateStatistics(writer, photo->event);
}

qint64 PhotoRows::defineKeyword(Writer& writer, const QString& name)
{
    const QString searchName = name.toLower();
    const std::optional<qint64> known =
        Sql::firstInteger(writer.connection,
                          "SELECT modelId FROM RKKeyword WHERE searchName=?1 OR name=?2"
                          " ORDER BY name=?2 DESC, modelId LIMIT 1",
                          searchName,
                          name);
    if (known) {
        return *known;
    }
    // RKKeyword_CharIndex is left to the application. That it makes that index again, so that its
    // search knows the new keyword, is concluded: it was not seen to.
    const qint64 id = ModelIds::allocate(writer, "RKKeyword");
    Sql::execute(
        writer.connection,
        "INSERT INTO RKKeyword(modelId,uuid,name,searchName,hasChildren) VALUES(?,?,?,?,0)",
        id,
        Uuid::create(),
        name,
        searchName);
    writer.changes.keywords = true;
    return id;
}

void PhotoRows::assignKeyword(Writer& writer, qint64 versionId, const QString& name)
{
    const std::optional<Visible> photo = findVisible(writer.connection, versionId);
    if (!photo || name.isEmpty()) {
        return;
    }
    const qint64 keyword = defineKeyword(writer, name);
    const bool hasIt =
        Sql::firstInteger(writer.connection,
                          "SELECT modelId FROM RKKeywordForVersion WHERE keywordId=? AND "
                          "versionId=?",
                          keyword,
                          versionId)
            .has_value();
    if (hasIt) {
        return;
    }
    const qint64 id = ModelIds::allocate(writer, "RKKeywordForVersion");
    Sql::execute(writer.connection,
                 "INSERT INTO RKKeywordForVersion(modelId,versionId,keywordId) VALUES(?,?,?)",
                 id,
                 versionId,
                 keyword);
    RowIdIndexes::follow(writer, "RKVersion", {versionId}, [&] {
        Sql::execute(
            writer.connection, "UPDATE RKVersion SET hasKeywords=1 WHERE modelId=?", versionId);
    });
    touch(writer, versionId, *photo);
}
