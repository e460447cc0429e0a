#pragma once

#include "Result.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVariant>

#include <SQLiteCpp/SQLiteCpp.h>

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>

/// One SQLite connection to the three databases of a library that belong together: Library.apdb as
/// main, Properties.apdb as prop, ImageProxies.apdb as prox. A transaction spans all three.
/// Thread: the one that opened it. Errors after opening: SQLite::Exception.
class Connection final
{
public:
    /// The names of the three in SQL, in the order of DatabaseFiles::kTogether.
    static constexpr std::array kSchemas{"main", "prop", "prox"};

    enum class Mode : quint8 {
        Read,   ///< never changes anything, but lets SQLite undo a transaction cut off by a crash
        Write,  ///< everything that is committed is on the disk
        Create, ///< as Write; the databases need not exist yet
    };

    /// How long a lock of another program is waited for before the library counts as in use.
    static constexpr int kBusyMilliseconds = 30000;

    /// Errors: NotFound (one of the three is missing), InUse, Damaged (also where PlainTables says
    /// so), NotWritable, OutOfSpace, Unreadable (also read-only media with an interrupted
    /// transaction to undo).
    [[nodiscard]] static Result<std::unique_ptr<Connection>>
    open(const QString& packagePath, Mode mode, int busyMilliseconds = kBusyMilliseconds);

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    /// Rolls back what is not committed.
    ~Connection();

    [[nodiscard]] SQLite::Database& database() { return m_database; }

    [[nodiscard]] const QString& packagePath() const { return m_packagePath; }

    /// Folders here of volumes that referenced masters lie on, by the name of the volume.
    [[nodiscard]] const QMap<QString, QString>& volumeFolders() const { return m_volumeFolders; }

    void setVolumeFolders(const QMap<QString, QString>& folders) { m_volumeFolders = folders; }

    /// The prepared statement of this text, reset and without bindings; prepared once a connection.
    /// The text must not be asked for again while its rows are still being read.
    [[nodiscard]] SQLite::Statement& statement(const char* sql);
    /// Ends every unfinished read, which would otherwise hold its lock.
    void resetStatements();

    /// Takes the write locks of all three databases at once.
    void beginImmediate();
    void commit();
    /// Nothing happens outside a transaction.
    void rollback() noexcept;
    [[nodiscard]] bool inTransaction() const;
    /// Whether rows were changed since beginImmediate(): no other connection sees that yet.
    [[nodiscard]] bool hasUncommittedChanges() const;

    /// While it lives, all reads see the three databases as they were at one moment: wholly before
    /// or wholly after any transaction of another connection. Others may begin a transaction
    /// meanwhile but wait with its commit, so it lives no longer than rows are read. Within a
    /// transaction it changes nothing.
    class Snapshot final
    {
    public:
        explicit Snapshot(Connection& connection);
        ~Snapshot(); ///< also ends every unfinished read
        Snapshot(const Snapshot&) = delete;
        Snapshot& operator=(const Snapshot&) = delete;

    private:
        Connection& m_connection;
        const bool m_isOwn;
    };

    /// While it lives, requests are given up with SQLITE_INTERRUPT soon after `shouldStop`, which
    /// any number of requests ask, has answered yes; raised at once where it does already. An empty
    /// one changes nothing; of several that live the last one is asked. For reads only.
    class Interruptible final
    {
    public:
        Interruptible(Connection& connection, std::function<bool()> shouldStop);
        ~Interruptible();
        Interruptible(const Interruptible&) = delete;
        Interruptible& operator=(const Interruptible&) = delete;

    private:
        Connection& m_connection;
        std::function<bool()> m_outer; ///< what was asked before
    };

    /// What the Interruptible that lives asks; empty without one.
    [[nodiscard]] const std::function<bool()>& shouldStop() const { return m_shouldStop; }

private:
    Connection(QString packagePath, Mode mode, int busyMilliseconds);
    /// Opens the database of that index; the first one is open already. In their order.
    void prepare(std::size_t index, Mode mode);
    /// From now on; an empty one lets requests run to their end.
    void ask(std::function<bool()> shouldStop);

    QString m_packagePath;
    QMap<QString, QString> m_volumeFolders;
    std::function<bool()> m_shouldStop;
    SQLite::Database m_database;
    int m_changesBefore{0}; ///< rows changed before the last transaction began
    std::unordered_map<std::string, std::unique_ptr<SQLite::Statement>> m_statements;
};

/// Values of SQLite as values of Qt.
namespace Sql
{

/// Null when the column is NULL.
[[nodiscard]] QString text(const SQLite::Column& column);
[[nodiscard]] QByteArray blob(const SQLite::Column& column);
/// NULL is a null QVariant, INTEGER qlonglong, FLOAT double, TEXT QString, BLOB QByteArray.
[[nodiscard]] QVariant value(const SQLite::Column& column);

void bind(SQLite::Statement& statement, int index, int value);
void bind(SQLite::Statement& statement, int index, qint64 value);
void bind(SQLite::Statement& statement, int index, double value);
/// A null string or array is bound as NULL, an empty one as empty.
void bind(SQLite::Statement& statement, int index, const QString& value);
void bind(SQLite::Statement& statement, int index, QLatin1StringView value);
void bind(SQLite::Statement& statement, int index, const QByteArray& value);
/// As value() gives it; any other type counts as its text.
void bind(SQLite::Statement& statement, int index, const QVariant& value);

} // namespace Sql
