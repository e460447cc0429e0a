#include "Schema.h"

#include "Queries.h"
#include "SchemaTables.h"

#include <QHash>
#include <QSet>

#include <array>

using namespace Qt::StringLiterals;

namespace
{

QString typeName(const QString& letter)
{
    if (letter == "key"_L1) {
        return u"varchar primary key"_s;
    }
    if (letter == "i"_L1) {
        return u"integer"_s;
    }
    if (letter == "d"_L1) {
        return u"decimal"_s;
    }
    if (letter == "t"_L1) {
        return u"timestamp"_s;
    }
    return letter == "b"_L1 ? u"blob"_s : u"varchar"_s;
}

Schema::Column primaryKey()
{
    return {u"modelId"_s, u"integer primary key"_s};
}

Schema::Table rowIdTable(const QString& table)
{
    return {table + "_RidIndexes"_L1,
            {primaryKey(),
             {u"indexName"_s, u"varchar"_s},
             {u"value"_s, u"varchar"_s},
             {u"ridIndex"_s, u"blob"_s}},
            {{{u"indexName"_s, u"value"_s}, true}}};
}

Schema::Index parseIndex(const QString& word)
{
    const bool isUnique = word.startsWith('!'_L1);
    return {word.mid(isUnique ? 1 : 0).split(','_L1), isUnique};
}

void parseTable(const QString& line, QList<Schema::Table>& tables)
{
    const QStringList halves = line.split(" / "_L1);
    QStringList words = halves.first().split(' '_L1, Qt::SkipEmptyParts);
    QString name = words.takeFirst();
    const bool hasRowIds = name.endsWith('+'_L1);
    name.remove('+'_L1);
    Schema::Table table{name, {}, {}};
    for (const QString& word : std::as_const(words)) {
        const QString type = word.section(':'_L1, 1);
        if (table.columns.isEmpty() && type != "key"_L1) {
            table.columns.append(primaryKey());
        }
        table.columns.append({word.section(':'_L1, 0, 0), typeName(type)});
    }
    if (halves.size() > 1) {
        const QStringList indexes = halves.at(1).split(' '_L1, Qt::SkipEmptyParts);
        for (const QString& word : indexes) {
            table.indexes.append(parseIndex(word));
        }
    }
    tables.append(table);
    if (hasRowIds) {
        tables.append(rowIdTable(name));
    }
}

const char* textOf(Schema::Database database)
{
    switch (database) {
    case Schema::Database::Library:
        return SchemaTables::library();
    case Schema::Database::Properties:
        return SchemaTables::properties();
    case Schema::Database::ImageProxies:
        return SchemaTables::imageProxies();
    case Schema::Database::BigBlobs:
        return SchemaTables::bigBlobs();
    case Schema::Database::Faces:
        return SchemaTables::faces();
    case Schema::Database::History:
        return SchemaTables::history();
    case Schema::Database::SharingActivity:
        return SchemaTables::sharingActivity();
    case Schema::Database::Projects:
        return SchemaTables::projects();
    }
    return "";
}

QString indexStatement(const QString& table, const Schema::Index& index)
{
    return u"CREATE %1INDEX %2_%3_index ON %2(%4)"_s.arg(index.isUnique ? u"UNIQUE "_s : QString(),
                                                         table,
                                                         index.columns.join('_'_L1),
                                                         index.columns.join(','_L1));
}

void compareTables(Connection& connection,
                   Schema::Database database,
                   QLatin1StringView schema,
                   QStringList& problems)
{
    const QList<Schema::Table> tables = Schema::tables(database);
    for (const Schema::Table& table : tables) {
        QSet<QString> wanted;
        for (const Schema::Column& column : table.columns) {
            wanted.insert(column.name);
        }
        const QStringList names =
            Sql::texts(connection, "SELECT name FROM pragma_table_info(?,?)", table.name, schema);
        const QSet<QString> found(names.begin(), names.end());
        const QStringList lacking = (wanted - found).values();
        const QStringList unknown = (found - wanted).values();
        if (found.isEmpty()) {
            problems.append(u"its database has no table %1"_s.arg(table.name));
        } else if (!lacking.isEmpty()) {
            problems.append(u"its table %1 lacks the column %2"_s.arg(table.name, lacking.first()));
        } else if (!unknown.isEmpty()) {
            problems.append(
                u"its table %1 has the unknown column %2"_s.arg(table.name, unknown.first()));
        }
    }
}

} // namespace

QList<Schema::Database> Schema::databases()
{
    using enum Database;
    return {Library, Properties, ImageProxies, BigBlobs, Faces, History, SharingActivity, Projects};
}

QString Schema::filePath(Database database)
{
    switch (database) {
    case Database::Library:
        return u"Database/apdb/Library.apdb"_s;
    case Database::Properties:
        return u"Database/apdb/Properties.apdb"_s;
    case Database::ImageProxies:
        return u"Database/apdb/ImageProxies.apdb"_s;
    case Database::BigBlobs:
        return u"Database/apdb/BigBlobs.apdb"_s;
    case Database::Faces:
        return u"Database/apdb/Faces.db"_s;
    case Database::History:
        return u"Database/apdb/History.apdb"_s;
    case Database::SharingActivity:
        return u"Database/apdb/SharingActivity.db"_s;
    case Database::Projects:
        return u"Projects.db"_s;
    }
    return {};
}

QList<Schema::Table> Schema::tables(Database database)
{
    QList<Table> result;
    QString line;
    const QStringList lines =
        QString::fromLatin1(textOf(database)).split('\n'_L1, Qt::SkipEmptyParts);
    for (const QString& part : lines) {
        if (!part.startsWith(' '_L1) && !line.isEmpty()) {
            parseTable(line, result);
            line.clear();
        }
        line += (line.isEmpty() ? QString() : u" "_s) + part.trimmed();
    }
    parseTable(line, result);
    return result;
}

QStringList Schema::statements(Database database)
{
    QStringList result;
    const QList<Table> all = tables(database);
    for (const Table& table : all) {
        QStringList columns;
        for (const Column& column : table.columns) {
            columns.append(column.name + ' '_L1 + column.type);
        }
        result.append(u"CREATE TABLE %1 (%2)"_s.arg(table.name, columns.join(", "_L1)));
        for (const Index& index : table.indexes) {
            result.append(indexStatement(table.name, index));
        }
    }
    if (database == Database::Properties) {
        result.append(u"CREATE VIRTUAL TABLE RKPlace_RTree USING "
                      "rtree(modelId,minLatitude,maxLatitude,minLongitude,maxLongitude)"_s);
    }
    return result;
}

QStringList Schema::mismatches(Connection& connection)
{
    QStringList problems;
    compareTables(connection, Database::Library, "main"_L1, problems);
    compareTables(connection, Database::Properties, "prop"_L1, problems);
    compareTables(connection, Database::ImageProxies, "prox"_L1, problems);
    for (const char* sql :
         {"SELECT name FROM main.sqlite_master WHERE type='trigger' OR (type='table' AND sql LIKE "
          "'%VirtualReaderModule%')",
          "SELECT name FROM prop.sqlite_master WHERE type='trigger' OR (type='table' AND sql LIKE "
          "'%VirtualReaderModule%')",
          "SELECT name FROM prox.sqlite_master WHERE type='trigger' OR (type='table' AND sql LIKE "
          "'%VirtualReaderModule%')"}) {
        const QStringList foreign = Sql::texts(connection, sql);
        for (const QString& name : foreign) {
            problems.append(
                u"%1 of its database needs the photo application's own code"_s.arg(name));
        }
    }
    return problems;
}
