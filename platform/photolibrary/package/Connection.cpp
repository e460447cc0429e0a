#include "Connection.h"

#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

#include <array>

using namespace Qt::StringLiterals;

namespace
{

constexpr std::array kSchemas{"main", "prop", "prox"};
constexpr std::array kFiles{"Library.apdb", "Properties.apdb", "ImageProxies.apdb"};

QString databasePath(const QString& packagePath, const char* file)
{
    return packagePath + "/Database/apdb/"_L1 + QLatin1StringView(file);
}

std::string encoded(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

int openFlags(Connection::Mode mode)
{
    // Also reading opens for writing where the file allows it: only then can SQLite undo what a
    // crash left half-done. Where it does not, SQLite itself falls back to reading.
    return mode == Connection::Mode::Create ? SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE
                                            : SQLite::OPEN_READWRITE;
}

QString pragma(const char* schema, const char* words)
{
    return u"PRAGMA %1.%2"_s.arg(QLatin1StringView(schema), QLatin1StringView(words));
}

} // namespace

Connection::Connection(QString packagePath, Mode mode, int busyMilliseconds)
    : m_packagePath(std::move(packagePath))
    , m_database(encoded(databasePath(m_packagePath, kFiles[0])), openFlags(mode), busyMilliseconds)
{
    for (std::size_t i = 1; i < kFiles.size(); ++i) {
        SQLite::Statement attach(m_database, std::string("ATTACH ? AS ") + kSchemas[i]);
        attach.bind(1, encoded(databasePath(m_packagePath, kFiles[i])));
        attach.exec();
    }
    for (const char* schema : kSchemas) {
        if (mode == Mode::Create) {
            m_database.exec(pragma(schema, "page_size=16384").toStdString());
            m_database.exec(pragma(schema, "auto_vacuum=2").toStdString());
        }
        if (mode != Mode::Read) {
            // EXTRA also flushes the folder after the journal is gone, so that a power cut cannot
            // bring back, and then undo, what was reported as done.
            m_database.exec(pragma(schema, "synchronous=EXTRA").toStdString());
            // A page that is not committed stays in memory, so a full disk meets no half-written
            // database.
            m_database.exec("PRAGMA cache_spill=OFF");
        }
        // The first read takes the lock and undoes an interrupted transaction.
        SQLite::Statement first(
            m_database,
            u"SELECT count(*) FROM %1.sqlite_master"_s.arg(QLatin1StringView(schema))
                .toStdString());
        first.executeStep();
        if (mode != Mode::Read && sqlite3_db_readonly(m_database.getHandle(), schema) != 0) {
            throw SQLite::Exception("attempt to write a readonly database", SQLITE_READONLY);
        }
    }
    if (mode == Mode::Read) {
        m_database.exec("PRAGMA query_only=1");
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
        for (const char* file : kFiles) {
            if (!QFileInfo::exists(databasePath(packagePath, file))) {
                return Error{
                    ErrorCode::NotFound,
                    u"The library \"%1\" is damaged: its database %2 is missing. Restore "
                    "the library from a backup."_s.arg(packagePath, QLatin1StringView(file))};
            }
        }
    }
    try {
        return std::unique_ptr<Connection>(new Connection(packagePath, mode, busyMilliseconds));
    } catch (const SQLite::Exception& exception) {
        return errorFrom(exception, packagePath);
    }
}

Error Connection::errorFrom(const SQLite::Exception& exception, const QString& packagePath)
{
    const QString detail = QString::fromUtf8(exception.getErrorStr());
    switch (exception.getErrorCode() & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return {ErrorCode::InUse,
                u"The library \"%1\" is in use by another program. Quit it and try again."_s.arg(
                    packagePath)};
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return {ErrorCode::Damaged,
                u"A database of the library \"%1\" is damaged (%2)."_s.arg(packagePath, detail)};
    case SQLITE_FULL:
        return {ErrorCode::OutOfSpace,
                u"There is no space left on the disk of the library \"%1\"."_s.arg(packagePath)};
    case SQLITE_READONLY:
    case SQLITE_PERM:
        if (exception.getExtendedErrorCode() == SQLITE_READONLY_ROLLBACK) {
            return {ErrorCode::Unreadable,
                    u"A change to the library \"%1\" was interrupted and must be undone before it "
                    "can be read, but its databases are write-protected."_s.arg(packagePath)};
        }
        return {ErrorCode::NotWritable,
                u"The databases of the library \"%1\" are write-protected."_s.arg(packagePath)};
    case SQLITE_CANTOPEN:
    case SQLITE_IOERR:
        return {
            ErrorCode::Unreadable,
            u"The databases of the library \"%1\" cannot be read (%2)."_s.arg(packagePath, detail)};
    default:
        return {ErrorCode::Internal,
                u"The databases of the library \"%1\" refuse a request (%2)."_s.arg(packagePath,
                                                                                    detail)};
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
