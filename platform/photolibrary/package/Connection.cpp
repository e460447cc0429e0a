#include "Connection.h"

#include "DatabaseFiles.h"
#include "HotJournals.h"
#include "LibraryErrors.h"
#include "PlainTables.h"
#include "Queries.h"

#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace
{

/// The largest values of real libraries are row ids and settings of some megabytes.
constexpr int kLongestValue = 64 * 1024 * 1024;

QString databasePath(const QString& packagePath, QLatin1StringView file)
{
    return packagePath + "/Database/apdb/"_L1 + file;
}

std::string encoded(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

int openFlags(Connection::Mode mode)
{
    // Also reading opens for writing where the file allows it: only then can SQLite undo what a
    // crash left half-done. Where it does not, SQLite itself falls back to reading.
    const int flags = mode == Connection::Mode::Create
                          ? SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE
                          : SQLite::OPEN_READWRITE;
    // Each thread has a connection of its own, so none need be locked for each value that is read.
    return flags | SQLite::OPEN_NOMUTEX;
}

Result<void> isThere(const QString& packagePath, QLatin1StringView file)
{
    const QFileInfo database(databasePath(packagePath, file));
    if (!database.exists()) {
        return Error{ErrorCode::NotFound,
                     u"The library \"%1\" is damaged: its database %2 is missing. Restore "
                     "the library from a backup."_s.arg(packagePath, file)};
    }
    if (!database.isFile()) { // opening a pipe may wait for ever
        return Error{ErrorCode::Damaged,
                     u"The library \"%1\" is damaged: its database %2 is no plain file. Restore "
                     "the library from a backup."_s.arg(packagePath, file)};
    }
    return {};
}

QString pragma(const char* schema, const char* words)
{
    return u"PRAGMA %1.%2"_s.arg(QLatin1StringView(schema), QLatin1StringView(words));
}

/// What the schema of somebody else's database makes SQLite do stays within bounds.
void distrustSchema(sqlite3* database)
{
    sqlite3_limit(database, SQLITE_LIMIT_LENGTH, kLongestValue);
    sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
}

} // namespace

Connection::Connection(QString packagePath, Mode mode, int busyMilliseconds)
    : m_packagePath(std::move(packagePath))
    , m_database(encoded(databasePath(m_packagePath, DatabaseFiles::kTogether[0])),
                 openFlags(mode),
                 busyMilliseconds)
{
    distrustSchema(m_database.getHandle());
}

void Connection::prepare(std::size_t index, Mode mode)
{
    const char* const schema = kSchemas[index];
    if (index > 0) {
        SQLite::Statement attach(m_database, std::string("ATTACH ? AS ") + schema);
        attach.bind(1, encoded(databasePath(m_packagePath, DatabaseFiles::kTogether[index])));
        attach.exec();
    }
    if (mode == Mode::Create) {
        m_database.exec(pragma(schema, "page_size=16384").toStdString());
        m_database.exec(pragma(schema, "auto_vacuum=2").toStdString());
    }
    if (mode != Mode::Read) {
        // EXTRA also flushes the folder after the journal is gone, so that a power cut cannot
        // bring back, and then undo, what was reported as done.
        m_database.exec(pragma(schema, "synchronous=EXTRA").toStdString());
        // A photo's turn in a large library comes back to more pages than SQLite's usual two
        // megabytes hold.
        m_database.exec(pragma(schema, "cache_size=-16384").toStdString());
        // A page that is not committed stays in memory, so a full disk meets no half-written
        // database.
        m_database.exec("PRAGMA cache_spill=OFF");
    }
    // The first read takes the lock and undoes an interrupted transaction.
    SQLite::Statement first(
        m_database,
        u"SELECT count(*) FROM %1.sqlite_master"_s.arg(QLatin1StringView(schema)).toStdString());
    first.executeStep();
    if (mode != Mode::Read && sqlite3_db_readonly(m_database.getHandle(), schema) != 0) {
        throw SQLite::Exception("attempt to write a readonly database", SQLITE_READONLY);
    }
}

Connection::~Connection()
{
    rollback();
}

Result<std::unique_ptr<Connection>>
Connection::open(const QString& packagePath, Mode mode, int busyMilliseconds)
{
    if (mode != Mode::Create) {
        for (const QLatin1StringView file : DatabaseFiles::kTogether) {
            if (const Result<void> there = isThere(packagePath, file); !there.ok()) {
                return there.error();
            }
        }
        if (const Result<void> decidable = HotJournals::canBeDecidedHere(packagePath);
            !decidable.ok()) {
            return decidable.error();
        }
    }
    std::size_t index = 0;
    try {
        std::unique_ptr<Connection> connection(new Connection(packagePath, mode, busyMilliseconds));
        for (; index < DatabaseFiles::kTogether.size(); ++index) {
            connection->prepare(index, mode);
        }
        if (mode == Mode::Read) {
            connection->database().exec("PRAGMA query_only=1");
        }
        if (const Result<void> plain = PlainTables::check(*connection); !plain.ok()) {
            return plain.error();
        }
        return connection;
    } catch (const SQLite::Exception& exception) {
        return LibraryErrors::fromSqlite(
            exception,
            packagePath,
            DatabaseFiles::kTogether[std::min(index, DatabaseFiles::kTogether.size() - 1)]);
    }
}

SQLite::Statement& Connection::statement(const char* sql)
{
    std::unique_ptr<SQLite::Statement>& statement = m_statements[sql];
    if (statement == nullptr) {
        statement = std::make_unique<SQLite::Statement>(m_database, sql);
    }
    // What the last use of it ran into is that use's own concern.
    statement->tryReset();
    statement->clearBindings();
    return *statement;
}

void Connection::resetStatements()
{
    for (const auto& entry : m_statements) {
        if (entry.second != nullptr) {
            entry.second->tryReset();
        }
    }
}

void Connection::beginImmediate()
{
    resetStatements();
    m_database.exec("BEGIN IMMEDIATE");
    m_changesBefore = m_database.getTotalChanges();
}

void Connection::commit()
{
    resetStatements();
    m_database.exec("COMMIT");
}

void Connection::rollback() noexcept
{
    resetStatements();
    if (inTransaction()) {
        // An error here means that SQLite has already rolled back.
        m_database.tryExec("ROLLBACK");
    }
}

bool Connection::inTransaction() const
{
    return sqlite3_get_autocommit(m_database.getHandle()) == 0;
}

bool Connection::hasUncommittedChanges() const
{
    return inTransaction() && m_database.getTotalChanges() != m_changesBefore;
}

Connection::Snapshot::Snapshot(Connection& connection)
    : m_connection(connection)
    , m_isOwn(!connection.inTransaction())
{
    if (!m_isOwn) {
        return;
    }
    m_connection.resetStatements();
    m_connection.database().exec("BEGIN");
    m_connection.m_changesBefore = m_connection.database().getTotalChanges();
    try {
        // A commit takes the databases in their order. Whoever holds the first one for reading
        // keeps it from beginning, so that the other two belong to the same moment.
        Sql::Query first(m_connection, "SELECT count(*) FROM main.sqlite_master");
        static_cast<void>(first.next());
    } catch (...) {
        m_connection.rollback();
        throw;
    }
}

Connection::Snapshot::~Snapshot()
{
    if (m_isOwn) {
        m_connection.rollback();
    }
}

void Connection::ask(std::function<bool()> shouldStop)
{
    constexpr int kInstructions = 10000; // of SQLite's machine; about a millisecond
    m_shouldStop = std::move(shouldStop);
    const auto asked = [](void* self) {
        return static_cast<Connection*>(self)->m_shouldStop() ? 1 : 0;
    };
    if (m_shouldStop) {
        sqlite3_progress_handler(m_database.getHandle(), kInstructions, asked, this);
    } else {
        sqlite3_progress_handler(m_database.getHandle(), 0, nullptr, nullptr);
    }
}

Connection::Interruptible::Interruptible(Connection& connection, std::function<bool()> shouldStop)
    : m_connection(connection)
    , m_outer(connection.shouldStop())
{
    if (shouldStop && shouldStop()) { // short requests would not ask
        throw SQLite::Exception("interrupted", SQLITE_INTERRUPT);
    }
    if (shouldStop) {
        connection.ask(std::move(shouldStop));
    }
}

Connection::Interruptible::~Interruptible()
{
    m_connection.ask(std::move(m_outer));
}

namespace Sql
{

QString text(const SQLite::Column& column)
{
    if (column.isNull()) {
        return {};
    }
    const char* characters = column.getText();
    return QString::fromUtf8(characters, column.getBytes());
}

QByteArray blob(const SQLite::Column& column)
{
    if (column.isNull()) {
        return {};
    }
    const void* bytes = column.getBlob();
    const int size = column.getBytes();
    return size == 0 ? QByteArray("") : QByteArray(static_cast<const char*>(bytes), size);
}

QVariant value(const SQLite::Column& column)
{
    switch (column.getType()) {
    case SQLITE_INTEGER:
        return QVariant(static_cast<qlonglong>(column.getInt64()));
    case SQLITE_FLOAT:
        return QVariant(column.getDouble());
    case SQLITE_TEXT:
        return QVariant(text(column));
    case SQLITE_BLOB:
        return QVariant(blob(column));
    default:
        return {};
    }
}

void bind(SQLite::Statement& statement, int index, int value)
{
    statement.bind(index, value);
}

void bind(SQLite::Statement& statement, int index, qint64 value)
{
    statement.bind(index, static_cast<int64_t>(value));
}

void bind(SQLite::Statement& statement, int index, double value)
{
    statement.bind(index, value);
}

void bind(SQLite::Statement& statement, int index, const QString& value)
{
    if (value.isNull()) {
        statement.bind(index);
    } else {
        statement.bind(index, value.toStdString());
    }
}

void bind(SQLite::Statement& statement, int index, QLatin1StringView value)
{
    bind(statement, index, QString(value));
}

void bind(SQLite::Statement& statement, int index, const QByteArray& value)
{
    if (value.isNull()) {
        statement.bind(index);
    } else {
        statement.bind(
            index, static_cast<const void*>(value.constData()), static_cast<int>(value.size()));
    }
}

void bind(SQLite::Statement& statement, int index, const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::UnknownType:
        statement.bind(index);
        break;
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        bind(statement, index, static_cast<qint64>(value.toLongLong()));
        break;
    case QMetaType::Double:
    case QMetaType::Float:
        bind(statement, index, value.toDouble());
        break;
    case QMetaType::QByteArray:
        bind(statement, index, value.toByteArray());
        break;
    default:
        bind(statement, index, value.toString());
        break;
    }
}

} // namespace Sql
