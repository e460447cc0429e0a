#include "LibraryErrors.h"

#include "Scripting.h"

#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kPrimaryCodeMask = 0xFF;

} // namespace

Error LibraryErrors::fromSqlite(const SQLite::Exception& exception, const QString& package)
{
    const QString detail = QString::fromUtf8(exception.what());
    switch (exception.getErrorCode() & kPrimaryCodeMask) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return {ErrorCode::InUse,
                u"The library \"%1\" is in use by another program: quit it and try again."_s.arg(
                    package)};
    case SQLITE_FULL:
        return {ErrorCode::OutOfSpace,
                u"There is no space left for the databases of the library \"%1\"."_s.arg(package)};
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        return {ErrorCode::NotWritable,
                u"The databases of the library \"%1\" cannot be written: %2. Check their "
                "permissions."_s.arg(package, detail)};
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return {ErrorCode::Damaged,
                u"A database of the library \"%1\" is damaged: %2. Let iPhoto repair it, or "
                "restore it from a backup."_s.arg(package, detail)};
    case SQLITE_CANTOPEN:
    case SQLITE_IOERR:
        return {ErrorCode::Unreadable,
                u"A database of the library \"%1\" cannot be read or written: %2."_s.arg(package,
                                                                                         detail)};
    default:
        return {ErrorCode::Internal,
                u"A database of the library \"%1\" refused a request: %2."_s.arg(package, detail)};
    }
}

void LibraryErrors::raise(const Error& error)
{
    throw ScriptingException(
        error.code == ErrorCode::Interrupted ? u"Interrupted"_s : u"LibraryError"_s, error.message);
}
