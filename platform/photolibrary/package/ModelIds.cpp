#include "ModelIds.h"

#include "AdminData.h"
#include "Queries.h"
#include "RowIdSet.h"

#include <sqlite3.h>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace
{

constexpr auto kNextId = "nextModelId"_L1;
constexpr auto kAllIds = "allModelIds"_L1;

/// The set of all ids; where it cannot be read, it is made anew from the rows, as it is a cache.
RowIdSet allIds(Connection& connection, const char* table, const QByteArray& blob)
{
    std::optional<RowIdSet> set = RowIdSet::fromBlob(blob);
    if (set) {
        return *set;
    }
    const std::string sql = std::string("SELECT modelId FROM ") + table;
    return RowIdSet(Sql::integers(connection, sql.c_str()));
}

} // namespace

qint64 ModelIds::allocate(Writer& writer, const char* table)
{
    const QString area = QString::fromLatin1(table);
    const std::string sql = std::string("SELECT max(modelId) FROM ") + table;
    const qint64 highest = Sql::firstInteger(writer.connection, sql.c_str()).value_or(0);
    const qint64 counter = AdminData::text(writer.connection, area, kNextId).toLongLong();
    if (std::max(highest, counter) >= std::numeric_limits<qint64>::max() - 1) {
        throw SQLite::Exception(std::string("no ids are left in ") + table, SQLITE_CORRUPT);
    }
    const qint64 id = std::max({counter, highest + 1, qint64{1}});
    AdminData::setText(writer, area, kNextId, QString::number(id + 1), AdminData::kInteger);
    const QByteArray blob = AdminData::blob(writer.connection, area, kAllIds);
    if (!blob.isNull()) {
        RowIdSet set = allIds(writer.connection, table, blob);
        set.insert(id);
        AdminData::setBlob(writer, area, kAllIds, set.toBlob());
    }
    return id;
}

void ModelIds::release(Writer& writer, const char* table, const QList<qint64>& ids)
{
    const QString area = QString::fromLatin1(table);
    const QByteArray blob = AdminData::blob(writer.connection, area, kAllIds);
    if (ids.isEmpty() || blob.isNull()) {
        return;
    }
    RowIdSet set = allIds(writer.connection, table, blob);
    for (const qint64 id : ids) {
        set.remove(id);
    }
    AdminData::setBlob(writer, area, kAllIds, set.toBlob());
}
