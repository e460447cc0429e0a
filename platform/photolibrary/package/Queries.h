#pragma once

#include "Connection.h"

#include <QList>
#include <QStringList>

#include <optional>

/// Short questions to a Connection: the statement is prepared once, bound in the order of the
/// arguments (int, qint64, double, QString, QByteArray, QVariant), read to the end and reset.
/// Errors: SQLite::Exception.
namespace Sql
{

/// A statement in use; its reads end with the scope.
class Query final
{
public:
    template <typename... Arguments>
    Query(Connection& connection, const char* sql, const Arguments&... arguments)
        : m_statement(connection.statement(sql))
    {
        [[maybe_unused]] int index = 0;
        (bind(m_statement, ++index, arguments), ...);
    }

    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    ~Query() { m_statement.tryReset(); }

    /// Whether there is another row.
    [[nodiscard]] bool next() { return m_statement.executeStep(); }

    void run() { m_statement.exec(); }

    [[nodiscard]] SQLite::Column column(int index) { return m_statement.getColumn(index); }

    [[nodiscard]] int columnCount() const { return m_statement.getColumnCount(); }

private:
    SQLite::Statement& m_statement;
};

/// Nothing when there is no row or its first column is NULL.
template <typename... Arguments>
[[nodiscard]] std::optional<qint64>
firstInteger(Connection& connection, const char* sql, const Arguments&... arguments)
{
    Query query(connection, sql, arguments...);
    if (!query.next() || query.column(0).isNull()) {
        return std::nullopt;
    }
    return static_cast<qint64>(query.column(0).getInt64());
}

/// As firstInteger().
template <typename... Arguments>
[[nodiscard]] std::optional<double>
firstReal(Connection& connection, const char* sql, const Arguments&... arguments)
{
    Query query(connection, sql, arguments...);
    if (!query.next() || query.column(0).isNull()) {
        return std::nullopt;
    }
    return query.column(0).getDouble();
}

/// Null when there is no row or its first column is NULL.
template <typename... Arguments>
[[nodiscard]] QString
firstText(Connection& connection, const char* sql, const Arguments&... arguments)
{
    Query query(connection, sql, arguments...);
    return query.next() ? text(query.column(0)) : QString();
}

/// The first column of every row; NULL is 0.
template <typename... Arguments>
[[nodiscard]] QList<qint64>
integers(Connection& connection, const char* sql, const Arguments&... arguments)
{
    QList<qint64> result;
    for (Query query(connection, sql, arguments...); query.next();) {
        result.append(static_cast<qint64>(query.column(0).getInt64()));
    }
    return result;
}

/// The first column of every row; NULL is a null string.
template <typename... Arguments>
[[nodiscard]] QStringList
texts(Connection& connection, const char* sql, const Arguments&... arguments)
{
    QStringList result;
    for (Query query(connection, sql, arguments...); query.next();) {
        result.append(text(query.column(0)));
    }
    return result;
}

/// Runs a statement that gives no rows.
template <typename... Arguments>
void execute(Connection& connection, const char* sql, const Arguments&... arguments)
{
    Query query(connection, sql, arguments...);
    query.run();
}

} // namespace Sql
