#include "DatabaseRevision.h"

#include "Queries.h"

#include <sqlite3.h>

#include <string>

QList<qint64> DatabaseRevision::of(Connection& connection)
{
    QList<qint64> numbers;
    for (const char* schema : Connection::kSchemas) {
        int hasMoved = 0;
        const int answer = sqlite3_file_control(
            connection.database().getHandle(), schema, SQLITE_FCNTL_HAS_MOVED, &hasMoved);
        if (answer != SQLITE_OK || hasMoved != 0) {
            throw SQLite::Exception("the database file is another one now", SQLITE_IOERR);
        }
        const std::string sql = std::string("PRAGMA ") + schema + ".data_version";
        numbers += Sql::firstInteger(connection, sql.c_str()).value_or(0);
    }
    return numbers;
}
