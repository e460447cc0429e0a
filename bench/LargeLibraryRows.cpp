#include "LargeLibraryRows.h"

#include "AlbumRows.h"
#include "EventRows.h"
#include "ModelIds.h"
#include "PhotoRows.h"
#include "Queries.h"
#include "RowIdIndexes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string>

using namespace Qt::StringLiterals;

namespace
{

constexpr const char* kEvents = "SELECT uuid FROM RKFolder WHERE folderType = 2 AND isMagic = 0";
constexpr const char* kVisible = "SELECT modelId FROM RKVersion WHERE showInLibrary = 1"
                                 " ORDER BY imageDate, modelId";

/// Tables of which every photo has rows.
constexpr std::array kTablesOfPhotos{"main.RKMaster",
                                     "main.RKVersion",
                                     "prox.RKImageProxyState",
                                     "prop.RKIptcProperty",
                                     "prop.RKOtherProperty",
                                     "prop.RKExifStringProperty",
                                     "prop.RKExifNumberProperty"};

/// One round of copies.
struct Copy {
    qint64 last{0};      ///< the highest id of the rows that are copied
    int number{0};       ///< from 1
    double seconds{0.0}; ///< by which its photos are later

    /// What its uuids end in.
    [[nodiscard]] std::string ending() const { return "~" + std::to_string(number); }
};

/// What stands in a copied row in place of the column. `?1` is the distance of its ids, `?2` what
/// its uuids end in, `?4` the seconds by which it is later.
std::string copied(const std::string& column)
{
    constexpr std::array kIds{"modelId", "masterId", "versionId"};
    constexpr std::array kUuids{"uuid",
                                "masterUuid",
                                "rawMasterUuid",
                                "nonRawMasterUuid",
                                "originalVersionUuid",
                                "versionUuid",
                                "projectUuid",
                                "thumbnailGroup"};
    if (std::ranges::find(kIds, column) != kIds.end()) {
        return column + " + ?1";
    }
    if (std::ranges::find(kUuids, column) != kUuids.end()) {
        return column + " || ?2";
    }
    return column == "imageDate" ? column + " + ?4" : column;
}

/// Copies every row of the table.
void copyRows(Connection& connection, const std::string& table, const Copy& copy)
{
    const std::string schema = table.substr(0, table.find('.'));
    const std::string name = table.substr(table.find('.') + 1);
    std::string columns;
    std::string values;
    SQLite::Statement info(connection.database(),
                           "SELECT name FROM pragma_table_info(?, ?) ORDER BY cid");
    info.bind(1, name);
    info.bind(2, schema);
    while (info.executeStep()) {
        const std::string column = info.getColumn(0).getString();
        columns += (columns.empty() ? "" : ",") + column;
        values += (values.empty() ? "" : ",") + copied(column);
    }
    SQLite::Statement insert(connection.database(),
                             "INSERT INTO " + table + "(" + columns + ") SELECT " + values +
                                 " FROM " + table + " WHERE modelId <= ?3");
    for (int index = 1; index <= insert.getBindParameterCount(); ++index) {
        switch (index) {
        case 1:
            Sql::bind(insert, index, copy.last * copy.number);
            break;
        case 2:
            insert.bind(index, copy.ending());
            break;
        case 3:
            Sql::bind(insert, index, copy.last);
            break;
        default:
            insert.bind(index, copy.seconds);
            break;
        }
    }
    insert.exec();
}

/// The copied photos of an event get an event of their own.
void copyEvent(Writer& writer, const QString& event, const Copy& copy)
{
    const QString name =
        Sql::firstText(writer.connection, "SELECT name FROM RKFolder WHERE uuid = ?", event);
    const QString made = EventRows::createEvent(writer, u"%1 (%2)"_s.arg(name).arg(copy.number));
    const QString meant = event + QString::fromStdString(copy.ending());
    for (const char* sql : {"UPDATE RKVersion SET projectUuid = ?1, thumbnailGroup = ?1"
                            " WHERE projectUuid = ?2",
                            "UPDATE RKMaster SET projectUuid = ?1 WHERE projectUuid = ?2"}) {
        Sql::execute(writer.connection, sql, made, meant);
    }
}

qint64 highestId(Connection& connection)
{
    qint64 last = 0;
    for (const char* table : kTablesOfPhotos) {
        const std::string sql = std::string("SELECT max(modelId) FROM ") + table;
        last = std::max(last, Sql::firstInteger(connection, sql.c_str()).value_or(0));
    }
    return last;
}

} // namespace

void LargeLibraryRows::multiply(Writer& writer, int copies)
{
    constexpr double kDay = 86400.0;
    const QStringList events = Sql::texts(writer.connection, kEvents);
    Copy copy;
    copy.last = highestId(writer.connection);
    for (copy.number = 1; copy.number < copies; ++copy.number) {
        copy.seconds = kDay * static_cast<double>(events.size()) * copy.number;
        for (const char* table : kTablesOfPhotos) {
            copyRows(writer.connection, table, copy);
        }
        for (const QString& event : events) {
            copyEvent(writer, event, copy);
        }
    }
}

void LargeLibraryRows::assignKeywords(Writer& writer, int keywords)
{
    QList<qint64> known;
    for (int number = 0; number < keywords; ++number) {
        known +=
            PhotoRows::defineKeyword(writer, u"Keyword %1"_s.arg(number, 4, 10, QLatin1Char('0')));
    }
    std::minstd_rand random; // of the usual seed
    std::uniform_real_distribution<double> share(0.0, 1.0);
    std::discrete_distribution<int> counts({20, 25, 20, 15, 10, 6, 4});
    for (const qint64 photo : Sql::integers(writer.connection, kVisible)) {
        QSet<qint64> own;
        for (int left = counts(random); left > 0; --left) {
            own.insert(known.at(static_cast<qsizetype>(std::pow(share(random), 3.0) *
                                                       static_cast<double>(known.size()))));
        }
        for (const qint64 keyword : std::as_const(own)) {
            Sql::execute(writer.connection,
                         "INSERT INTO RKKeywordForVersion(versionId,keywordId) VALUES(?,?)",
                         photo,
                         keyword);
        }
    }
    Sql::execute(writer.connection,
                 "UPDATE RKVersion SET hasKeywords = 1 WHERE modelId IN"
                 " (SELECT versionId FROM RKKeywordForVersion)");
}

void LargeLibraryRows::fillAlbums(Writer& writer, int albums)
{
    constexpr qsizetype kShareOfLargest = 20;
    constexpr qsizetype kSmallest = 8;
    const QList<qint64> photos = Sql::integers(writer.connection, kVisible);
    std::minstd_rand random; // of the usual seed
    for (int number = 0; number < albums; ++number) {
        const qint64 album =
            AlbumRows::createAlbum(writer, u"Album %1"_s.arg(number, 3, 10, QLatin1Char('0')));
        const qsizetype size =
            std::min(photos.size(), kSmallest + photos.size() / kShareOfLargest / (number + 1));
        std::uniform_int_distribution<qsizetype> places(0, photos.size() - size);
        for (const qint64 photo : photos.sliced(places(random), size)) {
            Sql::execute(writer.connection,
                         "INSERT INTO RKAlbumVersion(versionId,albumId) VALUES(?,?)",
                         photo,
                         album);
        }
        AlbumRows::updateCount(writer, album);
    }
}

void LargeLibraryRows::settle(Writer& writer)
{
    for (const QString& event : Sql::texts(writer.connection, kEvents)) {
        EventRows::updateStatistics(writer, event);
    }
    RowIdIndexes::recomputeAll(writer);
    ModelIds::mend(writer);
}
