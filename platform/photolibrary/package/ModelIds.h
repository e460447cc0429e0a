#pragma once

#include "Writer.h"

#include <QList>
#include <QString>

#include <optional>

/// Ids of rows. The library counts them itself, one counter a table, and never gives one out twice:
/// sidecars, catalogues and other programs may still know the ids of rows that are gone.
/// Errors: SQLite::Exception.
namespace ModelIds
{

/// A new id for a row of the table, which may lie in any of the three databases. The counter can
/// lag behind the rows after a crash of the application; the id lies above both. It also enters the
/// table's set of all ids, where there is one.
[[nodiscard]] qint64 allocate(Writer& writer, const char* table);

/// Takes ids of rows that are deleted out of the table's set of all ids. The counter stays.
void release(Writer& writer, const char* table, const QList<qint64>& ids);

/// What counters and sets of ids get wrong.
struct Lagging {
    QString table;
    bool isOfObjects{false}; ///< that other rows and files refer to
    /// Stands at this, 0 where there is none, though `highest` is in use, or was: a row that still
    /// names it would be taken for one of a new object.
    std::optional<qint64> counter;
    qint64 highest{0};
    bool setLacksIds{false}; ///< or the set cannot be read
};

/// The tables of which the counter or the set of all ids lags behind the rows. The counters of
/// other properties are passed over: the application itself lets them lag.
[[nodiscard]] QList<Lagging> lagging(Connection& connection);
/// Tells of the counter in a sentence.
[[nodiscard]] QString describeCounter(const Lagging& lagging);
/// Brings those, and no others, in step with the rows.
void mend(Writer& writer);

} // namespace ModelIds
