#pragma once

#include "Connection.h"
#include "FuzzInput.h"

#include <QList>
#include <QString>
#include <QStringList>

/// Puts values of every kind that SQLite knows into every column of a library's databases, as the
/// bytes of an input say. Errors: SQLite::Exception.
class RowChanges final
{
public:
    explicit RowChanges(Connection& connection);

    /// Changes one row after another until the input ends. What a constraint of the schema refuses
    /// stays as it was.
    void apply(FuzzInput& input);

private:
    struct Table {
        QString name; ///< with its database
        QStringList columns;
    };

    void changeOne(FuzzInput& input);
    void run(const QString& sql, const QVariant& value, qint64 row);

    Connection& m_connection;
    QList<Table> m_tables;
};
