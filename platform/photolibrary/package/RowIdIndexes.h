#pragma once

#include "RowIdCollection.h"
#include "Writer.h"

#include <QList>
#include <QStringList>
#include <QVariant>

#include <functional>

/// The library's own indexes: for each value of certain columns, the set of rows that have it
/// (tables X_RidIndexes). The application answers smart albums, trash and filters from them, so
/// every change of such a column is followed here. (Whether it would make them anew if they were
/// wrong is not known; it is taken to rely on them.)
///
/// Tables: RKVersion, RKMaster, RKAlbum, RKFolder (modelIds), RKAlbumVersion, RKImageProxyState
/// (their versionIds), RKIptcProperty, RKOtherProperty, RKExifStringProperty (their
/// searchStringIds). Any other is a programming error.
/// Errors: SQLite::Exception, SQLITE_CORRUPT for a stored set that is none.
namespace RowIdIndexes
{

/// Adds ids to the set of a value. A null value is the index's "no value".
void add(Writer& writer,
         const char* table,
         const QString& index,
         const QVariant& value,
         const QList<qint64>& ids);
/// The row of a set that became empty goes.
void remove(Writer& writer,
            const char* table,
            const QString& index,
            const QVariant& value,
            const QList<qint64>& ids);

/// Adds rows that exist to all indexes of their table; right after they were inserted.
void addRows(Writer& writer, const char* table, const QList<qint64>& modelIds);
/// Takes rows that still exist out of all indexes of their table; right before they are deleted.
void removeRows(Writer& writer, const char* table, const QList<qint64>& modelIds);

/// Runs `change`, which writes columns of rows that exist before and after it, and follows it in
/// the indexes: only the sets that a row leaves or joins are written. A set of a large library is
/// as large as a page of the database, and a change touches one or two of a dozen.
void follow(Writer& writer,
            const char* table,
            const QList<qint64>& modelIds,
            const std::function<void()>& change);

/// Writes every index anew from the tables.
void recomputeAll(Writer& writer);

/// Writes those sets anew that mismatches() tells of, and no others.
void mend(Writer& writer);

/// A sentence for each index that says otherwise than the tables; empty when all are right. Sets of
/// string ids, and of albums and folders below a folder, may hold more than needed: the application
/// leaves stale ids there.
[[nodiscard]] QStringList mismatches(Connection& connection);
/// Those of one table.
[[nodiscard]] QStringList mismatches(Connection& connection, const RowIdCollection::Source& source);

} // namespace RowIdIndexes
