#include "AdminData.h"

#include "Queries.h"

using namespace Qt::StringLiterals;

namespace
{

struct Value {
    QVariant content;
    const char* update;
    int storedDataType;
};

void store(Writer& writer, const QString& area, const QString& name, const Value& value)
{
    const std::optional<qint64> row =
        Sql::firstInteger(writer.connection,
                          "SELECT modelId FROM RKAdminData WHERE propertyName=? AND propertyArea=?",
                          name,
                          area);
    if (!row) {
        Sql::execute(writer.connection,
                     "INSERT INTO RKAdminData(propertyArea,propertyName,storedDataType,"
                     "persistAfterRebuild) VALUES(?,?,?,?)",
                     area,
                     name,
                     value.storedDataType,
                     name == "lastImportEventUuid"_L1
                         ? 1
                         : 0); // of what is set here, this alone outlives a rebuild
    }
    Sql::execute(writer.connection, value.update, value.content, name, area);
    const std::optional<qint64> persists = Sql::firstInteger(
        writer.connection,
        "SELECT persistAfterRebuild FROM RKAdminData WHERE propertyName=? AND propertyArea=?",
        name,
        area);
    if (persists.value_or(0) != 0) {
        writer.changes.adminData = true;
    }
}

} // namespace

QString AdminData::text(Connection& connection, const QString& area, const QString& name)
{
    return Sql::firstText(
        connection,
        "SELECT propertyValue FROM RKAdminData WHERE propertyName=? AND propertyArea=?",
        name,
        area);
}

QByteArray AdminData::blob(Connection& connection, const QString& area, const QString& name)
{
    Sql::Query query(
        connection,
        "SELECT blobPropertyValue FROM RKAdminData WHERE propertyName=? AND propertyArea=?",
        name,
        area);
    return query.next() ? Sql::blob(query.column(0)) : QByteArray();
}

void AdminData::setText(Writer& writer,
                        const QString& area,
                        const QString& name,
                        const QString& value,
                        int storedDataType)
{
    store(writer,
          area,
          name,
          {value,
           "UPDATE RKAdminData SET propertyValue=? WHERE propertyName=? AND propertyArea=?",
           storedDataType});
}

void AdminData::setBlob(Writer& writer,
                        const QString& area,
                        const QString& name,
                        const QByteArray& value)
{
    store(writer,
          area,
          name,
          {value,
           "UPDATE RKAdminData SET blobPropertyValue=? WHERE propertyName=? AND propertyArea=?",
           kBlob});
}
