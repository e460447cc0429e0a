#pragma once

#include "Connection.h"

#include <QString>

#include <optional>

/// What a column holds where it holds what is expected: a library's rows may have any type. Of the
/// row that the query is at.
namespace ColumnValues
{

/// Null for what is no text.
[[nodiscard]] inline QString textOrNothing(const SQLite::Column& column)
{
    return column.isText() ? Sql::text(column) : QString();
}

[[nodiscard]] inline std::optional<double> realOrNothing(const SQLite::Column& column)
{
    return column.isInteger() || column.isFloat() ? std::optional<double>(column.getDouble())
                                                  : std::nullopt;
}

[[nodiscard]] inline std::optional<int> integerOrNothing(const SQLite::Column& column)
{
    return column.isInteger() || column.isFloat() ? std::optional<int>(column.getInt())
                                                  : std::nullopt;
}

} // namespace ColumnValues
