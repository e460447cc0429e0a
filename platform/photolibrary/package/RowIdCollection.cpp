#include "RowIdCollection.h"

#include <QHash>

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
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
    }

    /// Of the row that the query stands at.
    void collect()
    {
        if (!m_id) {
            findColumns();
        }
        if (m_id->isNull()) {
            return; // a property that is a number has no string
        }
        const auto id = static_cast<qint64>(m_id->getInt64());
        bool isOriginal = false;
        for (Column& column : m_columns) {
            switch (column.kind) {
            case Kind::Rating:
                addRating(id, column.value, isOriginal);
                break;
            case Kind::FolderPath:
                addClosures(id, Sql::value(column.value).toString());
                break;
            case Kind::IsOriginal:
                isOriginal = column.value.getInt64() != 0;
                [[fallthrough]];
            case Kind::Plain:
                setOf(column).insert(id);
                break;
            }
        }
    }

private:
    enum class Kind : quint8 {
        Plain,
        IsOriginal, ///< before the rating
        Rating,
        FolderPath,
    };

    struct Column {
        QString name;
        Kind kind;
        SQLite::Column value; ///< in whichever row the query stands at
        RowIdSet* ofNothing{nullptr};
        QHash<qint64, RowIdSet*> ofNumbers;
        /// Of the first texts: most columns have few, which are found without hashing.
        std::vector<std::pair<QByteArray, RowIdSet*>> ofFirstTexts;
        QHash<QByteArray, RowIdSet*> ofTexts;
    };

    static Kind kindOf(const QString& name)
    {
        if (name == "mainRating"_L1) {
            return Kind::Rating;
        }
        if (name == "folderPath"_L1) {
            return Kind::FolderPath;
        }
        return name == "isOriginal"_L1 ? Kind::IsOriginal : Kind::Plain;
    }

    /// With the first row: without one a query has no values.
    void findColumns()
    {
        m_id = m_rows.getColumn(0);
        for (int i = 1; i < m_rows.getColumnCount(); ++i) {
            const QString name = QString::fromLatin1(m_rows.getColumnName(i));
            m_columns.push_back({name, kindOf(name), m_rows.getColumn(i), nullptr, {}, {}, {}});
        }
    }

    RowIdSet& setOf(Column& column)
    {
        const SQLite::Column& value = column.value;
        const auto found = [&] { return &m_sets[{column.name, valueText(Sql::value(value))}]; };
        switch (value.getType()) {
        case SQLITE_NULL:
            column.ofNothing = column.ofNothing == nullptr ? found() : column.ofNothing;
            return *column.ofNothing;
        case SQLITE_INTEGER: {
            RowIdSet*& set = column.ofNumbers[value.getInt64()];
            set = set == nullptr ? found() : set;
            return *set;
        }
        case SQLITE_TEXT:
            return setOfText(column, found);
        default:
            return *found();
        }
    }

    template <typename Found>
    static RowIdSet& setOfText(Column& column, const Found& found)
    {
        constexpr std::size_t kFirst = 16;
        const char* const characters = column.value.getText();
        const auto raw = QByteArray::fromRawData(characters, column.value.getBytes());
        for (const auto& [text, set] : column.ofFirstTexts) {
            if (text == raw) {
                return *set;
            }
        }
        if (RowIdSet* const set = column.ofTexts.value(raw)) {
            return *set;
        }
        RowIdSet* const set = found();
        const QByteArray text(raw.constData(), raw.size());
        if (column.ofFirstTexts.size() < kFirst) {
            column.ofFirstTexts.emplace_back(text, set);
        } else {
            column.ofTexts.insert(text, set);
        }
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
    std::optional<SQLite::Column> m_id;
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
