#pragma once

#include "Connection.h"
#include "RowIdSet.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QVariant>

#include <span>
#include <tuple>

/// What the library's own indexes should hold: the rows of its tables sorted into sets by the
/// values of their indexed columns. Errors: SQLite::Exception.
namespace RowIdCollection
{

/// One indexed table: the first column of the rows is the id that is kept, the others are indexed
/// under their names.
struct Source {
    const char* table;
    const char* indexes;
    const char* rows;
};

[[nodiscard]] std::span<const Source> sources();
/// A table without indexes is a programming error.
[[nodiscard]] const Source& sourceOf(const char* table);

/// Names a set of a table.
struct Key {
    QString index;
    QString value;
    friend bool operator==(const Key&, const Key&) = default;

    friend bool operator<(const Key& left, const Key& right)
    {
        return std::tie(left.index, left.value) < std::tie(right.index, right.value);
    }
};

using Sets = QMap<Key, RowIdSet>;

/// The value as a key has it.
[[nodiscard]] QString valueText(const QVariant& value);

/// The sets of all rows of the table.
[[nodiscard]] Sets ofTable(Connection& connection, const Source& source);
/// The sets of those rows of it that are there, by modelId.
[[nodiscard]] Sets
ofRows(Connection& connection, const Source& source, const QList<qint64>& modelIds);

} // namespace RowIdCollection
