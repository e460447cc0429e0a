#pragma once

#include "Writer.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QList>
#include <QVariant>

/// One row to be inserted, column by column; a null QVariant is NULL. Column and table names are
/// the program's own literals, values are bound. Errors: SQLite::Exception.
class RowInsert final
{
public:
    explicit RowInsert(const char* table)
        : m_table(table)
    {
    }

    RowInsert& set(const char* column, const QVariant& value)
    {
        m_columns.append(column);
        m_values.append(value);
        return *this;
    }

    void into(Writer& writer) const
    {
        QByteArray sql = "INSERT INTO " + m_table + " (" + m_columns.join(',') + ") VALUES (";
        for (qsizetype index = 0; index < m_values.size(); ++index) {
            sql += index == 0 ? "?" : ",?";
        }
        sql += ')';
        SQLite::Statement statement(writer.connection.database(), sql.constData());
        int index = 0;
        for (const QVariant& value : m_values) {
            Sql::bind(statement, ++index, value);
        }
        statement.exec();
    }

private:
    QByteArray m_table;
    QByteArrayList m_columns;
    QList<QVariant> m_values;
};
