#include "LibraryErrors.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

#include <sqlite3.h>

#include <array>

using namespace Qt::StringLiterals;

namespace
{

struct SqliteCase {
    int sqlite;
    ErrorCode code;
    const char* message;
};

const QString kPackage = u"/pictures/A.photolibrary"_s;

} // namespace

TEST(LibraryErrors, whatSqliteRaisesBecomesASentenceWithPlaceAndRemedy)
{
    const std::array cases{
        SqliteCase{SQLITE_BUSY,
                   ErrorCode::InUse,
                   "The library \"/pictures/A.photolibrary\" is in use by another program: quit "
                   "that and try again."},
        SqliteCase{SQLITE_LOCKED,
                   ErrorCode::InUse,
                   "The library \"/pictures/A.photolibrary\" is in use by another program: quit "
                   "that and try again."},
        SqliteCase{SQLITE_FULL,
                   ErrorCode::OutOfSpace,
                   "There is no space left for the databases of the library "
                   "\"/pictures/A.photolibrary\": make room on its disk and try again."},
        SqliteCase{SQLITE_READONLY,
                   ErrorCode::NotWritable,
                   "The database \"/pictures/A.photolibrary/Database/apdb/Library.apdb\" cannot be "
                   "written (why): change the permissions of "
                   "\"/pictures/A.photolibrary/Database/apdb\" and of what is in it."},
        SqliteCase{SQLITE_CORRUPT,
                   ErrorCode::Damaged,
                   "The database \"/pictures/A.photolibrary/Database/apdb/Library.apdb\" is "
                   "damaged (why): let iPhoto repair the library, or restore it from a backup."},
        SqliteCase{
            SQLITE_CANTOPEN,
            ErrorCode::Unreadable,
            "The database \"/pictures/A.photolibrary/Database/apdb/Library.apdb\" cannot be "
            "read or written (why): check the permissions of "
            "\"/pictures/A.photolibrary/Database/apdb\", the space left and the state of its "
            "disk."},
        SqliteCase{
            SQLITE_IOERR,
            ErrorCode::Unreadable,
            "The database \"/pictures/A.photolibrary/Database/apdb/Library.apdb\" cannot be "
            "read or written (why): check the permissions of "
            "\"/pictures/A.photolibrary/Database/apdb\", the space left and the state of its "
            "disk."},
        SqliteCase{SQLITE_MISUSE,
                   ErrorCode::Internal,
                   "The database \"/pictures/A.photolibrary/Database/apdb/Library.apdb\" refused a "
                   "request (why): try again, or restore the library from a backup."},
    };
    for (const SqliteCase& item : cases) {
        const SQLite::Exception raised("why", item.sqlite);
        const Error error = LibraryErrors::fromSqlite(raised, kPackage, u"Library.apdb"_s);
        EXPECT_EQ(error.code, item.code) << item.sqlite;
        QString expected = QString::fromLatin1(item.message);
        expected.replace(u"(why)"_s, u'(' + QString::fromUtf8(sqlite3_errstr(item.sqlite)) + u')');
        EXPECT_EQ(error.message, expected);
    }
}

TEST(LibraryErrors, aFileThatCouldNotBeWrittenIsToldWithWhatToDo)
{
    EXPECT_EQ(LibraryErrors::withRemedy({ErrorCode::OutOfSpace, u"Could not write \"f\": full"_s})
                  .message,
              u"Could not write \"f\": full. Make room on its disk and try again."_s);
    EXPECT_EQ(
        LibraryErrors::withRemedy({ErrorCode::NotWritable, u"Could not write \"f\": no"_s}).message,
        u"Could not write \"f\": no. Check its permissions and the state of its disk."_s);
}

TEST(LibraryErrors, anErrorOfNoKnownDatabaseNamesTheLibrary)
{
    const SQLite::Exception raised("why", SQLITE_CORRUPT);
    EXPECT_EQ(
        LibraryErrors::fromSqlite(raised, kPackage).message,
        u"A database of the library \"/pictures/A.photolibrary\" is damaged (database disk image "
        "is malformed): let iPhoto repair the library, or restore it from a backup."_s);
}
