#include "PlainTables.h"

#include "Queries.h"
#include "Schema.h"

#include <QSet>

#include <array>

using namespace Qt::StringLiterals;

namespace
{

struct AttachedDatabase {
    QLatin1StringView schema;
    Schema::Database database{Schema::Database::Library};
};

constexpr std::array kDatabases{AttachedDatabase{"main"_L1, Schema::Database::Library},
                                AttachedDatabase{"prop"_L1, Schema::Database::Properties},
                                AttachedDatabase{"prox"_L1, Schema::Database::ImageProxies}};

/// SQLite begins what it stores in these words, however a statement was written; a view begins
/// otherwise. That a word stands where another kind is meant it takes for damage itself.
constexpr QLatin1StringView
    kViews("SELECT name FROM %1.sqlite_master WHERE sql NOT GLOB 'CREATE TABLE *'"
           " AND sql NOT GLOB 'CREATE INDEX *' AND sql NOT GLOB 'CREATE UNIQUE INDEX *'"
           " AND sql NOT GLOB 'CREATE TRIGGER *' AND sql NOT GLOB 'CREATE VIRTUAL TABLE *'");

/// To list the tables SQLite looks into each view, and views of views may be without end: to be
/// asked only where there is none.
constexpr const char* kOtherThanTables =
    "SELECT name FROM pragma_table_list WHERE schema = ? AND type <> 'table'";
/// Only of plain tables: the columns of a virtual one can be asked for only where SQLite has its
/// module, and iPhoto's libraries have some of its own.
constexpr const char* kComputedColumns =
    "SELECT tables.name || '.' || columns.name FROM pragma_table_list AS tables,"
    " pragma_table_xinfo(tables.name, tables.schema) AS columns"
    " WHERE tables.schema = ? AND tables.type = 'table' AND columns.hidden IN (2, 3)";

/// In small letters, as SQLite takes names in any.
const QSet<QString>& knownTables()
{
    static const QSet<QString> known = [] {
        QSet<QString> names;
        for (const AttachedDatabase& attached : kDatabases) {
            for (const Schema::Table& table : Schema::tables(attached.database)) {
                names.insert(table.name.toLower());
            }
        }
        return names;
    }();
    return known;
}

QString viewIn(Connection& connection, const AttachedDatabase& attached)
{
    return Sql::firstText(connection, QString(kViews).arg(attached.schema).toLatin1().constData());
}

/// A known table that is no plain one, or a column that is computed; null where there is none.
QString madeUpIn(Connection& connection, const AttachedDatabase& attached)
{
    const QStringList others = Sql::texts(connection, kOtherThanTables, attached.schema);
    for (const QString& name : others) {
        if (knownTables().contains(name.toLower())) {
            return name;
        }
    }
    return Sql::firstText(connection, kComputedColumns, attached.schema);
}

} // namespace

Result<void> PlainTables::check(Connection& connection)
{
    for (const auto& find : {&viewIn, &madeUpIn}) {
        for (const AttachedDatabase& attached : kDatabases) {
            const QString name = find(connection, attached);
            if (!name.isNull()) {
                return Error{
                    ErrorCode::Damaged,
                    u"The database \"%1/%2\" is not one that iPhoto wrote: its \"%3\" holds no "
                    "stored values but makes them up. Restore the library from a backup."_s.arg(
                        connection.packagePath(), Schema::filePath(attached.database), name)};
            }
        }
    }
    return {};
}
