#include "LibraryErrors.h"

#include "FileLocks.h"
#include "Schema.h"
#include "Scripting.h"

#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kPrimaryCodeMask = 0xFF;

/// Who has locked a database, " (corvane-cli, process 4711)", where the system tells.
QString whoUses(const QString& package)
{
    QStringList databases;
    for (const Schema::Database database : {Schema::Database::Library,
                                            Schema::Database::Properties,
                                            Schema::Database::ImageProxies}) {
        databases << package + u'/' + Schema::filePath(database);
    }
    QStringList users;
    for (const qint64 process : FileLocks::holders(FileLocks::Kind::Posix, databases)) {
        const QString name = FileLocks::nameOf(process);
        users << (name.isEmpty() ? QString() : name + ", "_L1) + u"process %1"_s.arg(process);
    }
    return users.isEmpty() ? QString() : u" (%1)"_s.arg(users.join("; "_L1));
}

} // namespace

Error LibraryErrors::fromSqlite(const SQLite::Exception& exception,
                                const QString& package,
                                const QString& file)
{
    const QString folder = package + "/Database/apdb"_L1;
    const QString database = file.isEmpty() ? u"A database of the library \"%1\""_s.arg(package)
                                            : u"The database \"%1/%2\""_s.arg(folder, file);
    const QString detail = QString::fromUtf8(exception.getErrorStr());
    switch (exception.getErrorCode() & kPrimaryCodeMask) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return {
            ErrorCode::InUse,
            u"The library \"%1\" is in use by another program%2: quit that and try again."_s.arg(
                package, whoUses(package))};
    case SQLITE_FULL:
        return {ErrorCode::OutOfSpace,
                u"There is no space left for the databases of the library \"%1\": make room on its "
                "disk and try again."_s.arg(package)};
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        if (exception.getExtendedErrorCode() == SQLITE_READONLY_ROLLBACK) {
            // Elsewhere the databases would not know of each other's journals any more.
            return {ErrorCode::Unreadable,
                    u"A change to the library \"%1\" was interrupted and must be undone before it "
                    "can be read, but its databases are write-protected: change the permissions "
                    "of \"%2\", and do not move or copy the library before that is done."_s.arg(
                        package, folder)};
        }
        return {ErrorCode::NotWritable,
                u"%1 cannot be written (%2): change the permissions of \"%3\" and of what is in "
                "it."_s.arg(database, detail, folder)};
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return {ErrorCode::Damaged,
                u"%1 is damaged (%2): let iPhoto repair the library, or restore it from a "
                "backup."_s.arg(database, detail)};
    case SQLITE_CANTOPEN:
    case SQLITE_IOERR:
        // A full disk that shows itself only when the file is flushed, and a quota, come as these.
        return {ErrorCode::Unreadable,
                u"%1 cannot be read or written (%2): check the permissions of \"%3\", the space "
                "left and the state of its disk."_s.arg(database, detail, folder)};
    case SQLITE_INTERRUPT:
        return {ErrorCode::Interrupted,
                u"The check of the library \"%1\" was interrupted."_s.arg(package)};
    default:
        return {ErrorCode::Internal,
                u"%1 refused a request (%2): try again, or restore the library from a "
                "backup."_s.arg(database, detail)};
    }
}

QString LibraryErrors::asSentence(const QString& message)
{
    return message.endsWith(u'.') ? message : message + u'.';
}

Error LibraryErrors::withRemedy(const Error& error)
{
    const QString remedy = error.code == ErrorCode::OutOfSpace
                               ? u"Make room on its disk and try again."_s
                               : u"Check its permissions and the state of its disk."_s;
    return {error.code, asSentence(error.message) + u' ' + remedy};
}

bool LibraryErrors::isLeftAlone(const Result<void>& followed)
{
    return !followed.ok() && (followed.error().code == ErrorCode::LeadsOut ||
                              followed.error().code == ErrorCode::Damaged);
}

void LibraryErrors::raise(const Error& error)
{
    throw ScriptingException(
        error.code == ErrorCode::Interrupted ? u"Interrupted"_s : u"LibraryError"_s, error.message);
}
