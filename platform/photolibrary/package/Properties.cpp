#include "Properties.h"

#include "ModelIds.h"
#include "Queries.h"
#include "RowIdIndexes.h"

#include <array>

using namespace Qt::StringLiterals;

namespace
{

/// The column propertyType of all rows of RKOtherProperty.
constexpr int kOtherType = 5;

struct TableOfTexts {
    const char* name;
    const char* select;
    const char* erase;
    const char* insert;
};

const TableOfTexts& tableOf(Properties::Texts kind)
{
    static constexpr std::array kTables{
        TableOfTexts{
            "RKIptcProperty",
            "SELECT s.stringProperty FROM RKIptcProperty p JOIN RKUniqueString s "
            "ON s.modelId=p.stringId WHERE p.propertyKey=? AND p.versionId=?",
            "DELETE FROM RKIptcProperty WHERE propertyKey=? AND versionId=?",
            "INSERT INTO RKIptcProperty(modelId,versionId,propertyKey,stringId,searchStringId,"
            "modDate) VALUES(?,?,?,?,?,?)"},
        TableOfTexts{
            "RKOtherProperty",
            "SELECT s.stringProperty FROM RKOtherProperty p JOIN RKUniqueString s "
            "ON s.modelId=p.stringId WHERE p.propertyKey=? AND p.versionId=?",
            "DELETE FROM RKOtherProperty WHERE propertyKey=? AND versionId=?",
            "INSERT INTO RKOtherProperty(modelId,versionId,propertyKey,stringId,searchStringId,"
            "modDate,propertyType) VALUES(?,?,?,?,?,?,5)"},
        TableOfTexts{"RKExifStringProperty",
                     "SELECT s.stringProperty FROM RKExifStringProperty p JOIN RKUniqueString s "
                     "ON s.modelId=p.stringId WHERE p.propertyKey=? AND p.versionId=?",
                     "DELETE FROM RKExifStringProperty WHERE propertyKey=? AND versionId=?",
                     "INSERT INTO RKExifStringProperty(modelId,versionId,propertyKey,stringId,"
                     "searchStringId,modDate) VALUES(?,?,?,?,?,?)"},
    };
    return kTables.at(static_cast<std::size_t>(kind));
}

qint64 uniqueString(Writer& writer, const QString& text)
{
    // A text that is not null is bound as text, also when it is empty.
    const QString words = text.isNull() ? u""_s : text;
    const std::optional<qint64> known = Sql::firstInteger(
        writer.connection, "SELECT min(modelId) FROM RKUniqueString WHERE stringProperty=?", words);
    if (known) {
        return *known;
    }
    const qint64 id = ModelIds::allocate(writer, "RKUniqueString");
    Sql::execute(writer.connection,
                 "INSERT INTO RKUniqueString(modelId,stringProperty) VALUES(?,?)",
                 id,
                 words);
    return id;
}

} // namespace

void Properties::setString(
    Writer& writer, Texts kind, qint64 versionId, const QString& key, const QString& text)
{
    const TableOfTexts& table = tableOf(kind);
    Sql::execute(writer.connection, table.erase, key, versionId);
    const qint64 words = uniqueString(writer, text);
    const qint64 searchWords = uniqueString(writer, text.toLower());
    const qint64 id = ModelIds::allocate(writer, table.name);
    Sql::execute(
        writer.connection, table.insert, id, versionId, key, words, searchWords, writer.now);
    RowIdIndexes::add(writer, table.name, u"propertyKey"_s, key, {searchWords});
}

void Properties::remove(Writer& writer, Texts kind, qint64 versionId, const QString& key)
{
    Sql::execute(writer.connection, tableOf(kind).erase, key, versionId);
}

void Properties::setNumber(Writer& writer, qint64 versionId, const QString& key, double number)
{
    removeNumber(writer, versionId, key);
    const qint64 id = ModelIds::allocate(writer, "RKExifNumberProperty");
    Sql::execute(writer.connection,
                 "INSERT INTO RKExifNumberProperty(modelId,versionId,propertyKey,numberProperty,"
                 "modDate) VALUES(?,?,?,?,?)",
                 id,
                 versionId,
                 key,
                 number,
                 writer.now);
}

void Properties::removeNumber(Writer& writer, qint64 versionId, const QString& key)
{
    Sql::execute(writer.connection,
                 "DELETE FROM RKExifNumberProperty WHERE propertyKey=? AND versionId=?",
                 key,
                 versionId);
}

void Properties::setOtherNumber(Writer& writer, qint64 versionId, const QString& key, double number)
{
    remove(writer, Texts::Other, versionId, key);
    const qint64 id = ModelIds::allocate(writer, "RKOtherProperty");
    Sql::execute(writer.connection,
                 "INSERT INTO RKOtherProperty(modelId,versionId,propertyKey,propertyType,"
                 "numberProperty,modDate) VALUES(?,?,?,?,?,?)",
                 id,
                 versionId,
                 key,
                 kOtherType,
                 number,
                 writer.now);
}

void Properties::removeAll(Writer& writer, qint64 versionId)
{
    for (const char* sql : {"DELETE FROM RKIptcProperty WHERE versionId=?",
                            "DELETE FROM RKOtherProperty WHERE versionId=?",
                            "DELETE FROM RKExifStringProperty WHERE versionId=?",
                            "DELETE FROM RKExifNumberProperty WHERE versionId=?",
                            "DELETE FROM RKStatistic WHERE versionId=?"}) {
        Sql::execute(writer.connection, sql, versionId);
    }
}

QString Properties::text(Connection& connection, Texts kind, qint64 versionId, const QString& key)
{
    return Sql::firstText(connection, tableOf(kind).select, key, versionId);
}

std::optional<double>
Properties::number(Connection& connection, qint64 versionId, const QString& key)
{
    return Sql::firstReal(
        connection,
        "SELECT numberProperty FROM RKExifNumberProperty WHERE propertyKey=? AND versionId=?",
        key,
        versionId);
}
