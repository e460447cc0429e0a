#include "RowIdCollection.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

using namespace RowIdCollection;

constexpr std::array kSources{
    Source{"RKVersion",
           "RKVersion_RidIndexes",
           "SELECT modelId,hasKeywords,projectUuid,isFlagged,isHidden,showInLibrary,hasNotes,"
           "isOriginal,faceDetectionIsFromPreview,isInTrash,mainRating FROM RKVersion"},
    Source{"RKMaster",
           "RKMaster_RidIndexes",
           "SELECT modelId,projectUuid,imageFormat,hasFocusPoints,subtype,isTrulyRaw,"
           "streamSourceUuid,hasNotes,fileVolumeUuid,type,burstUuid,fileIsReference,isMissing,"
           "streamAssetId,hasAttachments,isExternallyEditable,faceDetectionState,isInTrash "
           "FROM RKMaster"},
    Source{"RKAlbum",
           "RKAlbum_RidIndexes",
           "SELECT modelId,albumSubclass,albumType,isInTrash,serviceName,isFavorite,isHidden "
           "FROM RKAlbum"},
    Source{"RKFolder", "RKFolder_RidIndexes", "SELECT modelId,folderType,folderPath FROM RKFolder"},
    Source{"RKAlbumVersion",
           "RKAlbumVersion_RidIndexes",
           "SELECT versionId,albumId FROM RKAlbumVersion"},
    Source{"RKImageProxyState",
           "RKImageProxyState_RidIndexes",
           "SELECT versionId,previewRendered,thumbnailRendered,thumbnailsCurrent,"
           "miniThumbnailsCurrent,tinyThumbnailsCurrent,fullSizePreviewUpToDate "
           "FROM RKImageProxyState"},
    Source{"RKIptcProperty",
           "RKIptc_RidIndexes",
           "SELECT searchStringId,propertyKey FROM RKIptcProperty"},
    Source{"RKOtherProperty",
           "RKOther_RidIndexes",
           "SELECT searchStringId,propertyKey FROM RKOtherProperty"},
    Source{"RKExifStringProperty",
           "RKExif_RidIndexes",
           "SELECT searchStringId,propertyKey FROM RKExifStringProperty"},
};

/// Sorts the rows of a query into the sets that they belong to. It remembers where the sets of
/// numbers and texts are: there are few, and rows by the hundred thousand.
class Collector final
{
public:
    Collector(SQLite::Statement& rows, Sets& sets)
        : m_rows(rows)
        , m_sets(sets)
    {
        for (int i = 1; i < rows.getColumnCount(); ++i) {
            m_columns.push_back({QString::fromLatin1(rows.getColumnName(i)), nullptr, {}, {}});
        }
    }

    /// Of the row that the query stands at.
    void collect()
    {
        if (m_rows.getColumn(0).isNull()) {
            return; // a property that is a number has no string
        }
        const auto id = static_cast<qint64>(m_rows.getColumn(0).getInt64());
        bool isOriginal = false;
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            const SQLite::Column value = m_rows.getColumn(static_cast<int>(i) + 1);
            const QString& name = m_columns[i].name;
            if (name == "mainRating"_L1) {
                addRating(id, value, isOriginal);
                continue;
            }
            if (name == "folderPath"_L1) {
                addClosures(id, Sql::value(value).toString());
                continue;
            }
            if (name == "isOriginal"_L1) {
                isOriginal = value.getInt64() != 0;
            }
            setOf(m_columns[i], value).insert(id);
        }
    }

private:
    struct Column {
        QString name;
        RowIdSet* ofNothing{nullptr};
        QHash<qint64, RowIdSet*> ofNumbers;
        QHash<QByteArray, RowIdSet*> ofTexts;
    };

    RowIdSet& setOf(Column& column, const SQLite::Column& value)
    {
        const auto found = [&] { return &m_sets[{column.name, valueText(Sql::value(value))}]; };
        if (value.isInteger() || value.isNull()) {
            RowIdSet*& set = value.isNull() ? column.ofNothing : column.ofNumbers[value.getInt64()];
            set = set == nullptr ? found() : set;
            return *set;
        }
        if (!value.isText()) {
            return *found();
        }
        const char* const characters = value.getText();
        const auto raw = QByteArray::fromRawData(characters, value.getBytes());
        if (RowIdSet* const set = column.ofTexts.value(raw)) {
            return *set;
        }
        RowIdSet* const set = found();
        column.ofTexts.insert(QByteArray(raw.constData(), raw.size()), set);
        return *set;
    }

    /// Ratings are indexed as "at least"; only of what the user sees and rates.
    void addRating(qint64 id, const SQLite::Column& value, bool isOriginal)
    {
        if (isOriginal) {
            return;
        }
        std::vector<RowIdSet*>& sets = m_ofRatings[value.isNull() ? -1 : value.getInt()];
        if (sets.empty()) {
            const QVariant rating = Sql::value(value);
            const auto belongsTo = [&](const QString& index, const QString& what) {
                sets.push_back(&m_sets[{index, what}]);
            };
            belongsTo(u"mainRating"_s, u"all"_s);
            belongsTo(u"blankMasterVersions"_s, u"0"_s);
            for (int least = 0; least < 5 && !rating.isNull() && rating.toInt() >= least; ++least) {
                belongsTo(u"mainRating"_s, u">=%1"_s.arg(least));
            }
            if (rating.toInt() == 5) {
                belongsTo(u"mainRating"_s, u"=5"_s);
            }
        }
        for (RowIdSet* const set : sets) {
            set->insert(id);
        }
    }

    /// A folder belongs to the closure of itself and of each folder above it; its path names them
    /// all.
    void addClosures(qint64 id, const QString& folderPath)
    {
        const QStringList above = folderPath.split('/'_L1, Qt::SkipEmptyParts);
        for (const QString& folder : above) {
            m_sets[{u"folderIdClosure"_s, folder}].insert(id);
        }
    }

    SQLite::Statement& m_rows;
    Sets& m_sets; ///< which stay where they are when others join them
    std::vector<Column> m_columns;
    QHash<int, std::vector<RowIdSet*>> m_ofRatings;
};

} // namespace

std::span<const Source> RowIdCollection::sources()
{
    return kSources;
}

const RowIdCollection::Source& RowIdCollection::sourceOf(const char* table)
{
    const auto* const source = std::ranges::find_if(kSources, [table](const Source& candidate) {
        return std::string_view(candidate.table) == table;
    });
    Q_ASSERT_X(source != kSources.end(), "RowIdIndexes", "table without indexes");
    return *source;
}

QString RowIdCollection::valueText(const QVariant& value)
{
    if (value.isNull()) {
        return u"<*null*>"_s;
    }
    return value.typeId() == QMetaType::Bool ? QString::number(value.toInt()) : value.toString();
}

RowIdCollection::Sets RowIdCollection::ofTable(Connection& connection, const Source& source)
{
    Sets sets;
    SQLite::Statement& rows = connection.statement(source.rows);
    Collector collector(rows, sets);
    while (rows.executeStep()) {
        collector.collect();
    }
    rows.tryReset();
    return sets;
}

RowIdCollection::Sets
RowIdCollection::ofRows(Connection& connection, const Source& source, const QList<qint64>& modelIds)
{
    Sets sets;
    const std::string sql = std::string(source.rows) + " WHERE modelId=?";
    SQLite::Statement& row = connection.statement(sql.c_str());
    Collector collector(row, sets);
    for (const qint64 modelId : modelIds) {
        row.tryReset();
        Sql::bind(row, 1, modelId);
        if (row.executeStep()) {
            collector.collect();
        }
    }
    row.tryReset();
    return sets;
}
