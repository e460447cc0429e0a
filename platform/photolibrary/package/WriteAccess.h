#pragma once

#include "Changes.h"
#include "Connection.h"
#include "LibraryLock.h"
#include "PackageIdentity.h"
#include "Result.h"
#include "TrashRows.h"
#include "TurnJournal.h"
#include "Writer.h"
#include "WriterGate.h"

#include <QSet>
#include <QStringList>

#include <memory>
#include <mutex>

class WriteAccess;
using WriteAccessPtr = std::shared_ptr<WriteAccess>;

/// One transaction over the three databases together with the files that it makes. It holds the
/// writer's place from begin to commit or rollback; destruction rolls back. Used by one thread.
class WriteTransaction final
{
public:
    ~WriteTransaction();
    WriteTransaction(const WriteTransaction&) = delete;
    WriteTransaction& operator=(const WriteTransaction&) = delete;

    /// What row operations work on; the moment is now.
    [[nodiscard]] Writer writer();

    /// Notes in the journal, before any of them exists, the files that will be made. One that is
    /// there already is somebody else's, and an error: undoing the turn would remove it. So is one
    /// that a link would lead out of the package (LeadsOut).
    [[nodiscard]] Result<void> announceFiles(const QStringList& relativePaths);
    /// Makes an announced file with its folders, flushed. Errors: NotWritable, OutOfSpace, NotFound
    /// where the package was moved.
    [[nodiscard]] Result<void> makeFile(const QString& relativePath, const QByteArray& bytes);
    /// Notes in the journal what is to be removed once the transaction is committed.
    [[nodiscard]] Result<void> doom(const TrashRows::Leftovers& leftovers);

    /// Number in the journal.
    [[nodiscard]] qint64 turn() const { return m_turn; }

    /// A step failed: commit() will refuse, since half a turn is none.
    void spoil() { m_spoilt = true; }

    /// Makes everything durable, or undoes everything and says why. Where it happened though
    /// SQLite tells an error, or may have happened, the message says that too.
    [[nodiscard]] Result<void> commit();
    void rollback();

private:
    friend class WriteAccess;
    WriteTransaction(WriteAccessPtr access, Connection& connection, qint64 turn);
    /// Of a transaction that is not committed as far as SQLite tells, and not open any more.
    enum class Outcome : quint8 { Undone, Done, InDoubt };
    [[nodiscard]] Outcome outcome();
    [[nodiscard]] Result<void> settle(Outcome outcome);
    /// Gives the writer's place up; what became of the transaction.
    Outcome abandon();

    WriteAccessPtr m_access;
    Connection& m_connection;
    qint64 m_turn;
    Changes m_changes;
    QStringList m_made;
    bool m_spoilt{false};
    bool m_committing{false}; ///< SQLite was asked to
    bool m_open{true};
};

/// The right to write to a library: lock, journal, backup, and what sidecars and catalogues still
/// have to follow. Shared by all threads of the process. Any thread.
class WriteAccess final : public std::enable_shared_from_this<WriteAccess>
{
public:
    struct Places {
        QString package; ///< absolute
        QString state;   ///< folder of lock and journal, outside the package
        QString backups; ///< folder of the dated backups

        /// Of the library at `package` whose databases have that uuid.
        [[nodiscard]] static Places of(const QString& package, const QString& databaseUuid);
    };

    /// `lock`: the writer's lock, held until shutDown(); `print`: that of the databases
    /// (ForeignUse) when this program last held their lock.
    [[nodiscard]] static Result<WriteAccessPtr>
    open(const Places& places, std::unique_ptr<LibraryLock> lock, const QByteArray& print);

    /// Waits for the writer's place, then begins on the databases. The first one of a run makes the
    /// backup. Errors: InUse, NotWritable, OutOfSpace, NotFound after shutDown() or where the
    /// package was moved.
    [[nodiscard]] Result<std::unique_ptr<WriteTransaction>> begin(Connection& connection);

    /// Makes a backup now, while nobody writes, whether or not this run made one before; returns
    /// its folder. Errors: InUse, NotWritable, OutOfSpace, Unreadable, NotFound after shutDown().
    [[nodiscard]] Result<QString> backUp(Connection& connection);

    /// Runs `follow(const Changes&, Changes& left)`, which returns Result<void>, with what is
    /// pending while nobody writes; what succeeded is no longer pending, nor is, where it failed,
    /// what it takes from `left`. Does nothing when nothing is pending. What an earlier run left is
    /// followed after a backup, as `connection` lets it be made, and not without.
    template <typename Follow>
    [[nodiscard]] Result<void> synchronise(Connection& connection, Follow&& follow);
    void addPending(const Changes& changes);

    /// Notes in the journal, before any of them exists, pictures that the databases name already.
    [[nodiscard]] Result<void> announcePictures(const QStringList& relativePaths);

    /// Notes that the files of a turn need no more attention, unless some could not be removed:
    /// then the journal tells of them until the next opening has removed them.
    [[nodiscard]] Result<void> settle(qint64 turn, bool allGone);
    /// Turns of earlier runs whose files could not be removed until now.
    void addUnsettled(const QSet<qint64>& turns);
    /// Whether a turn was committed nobody knows: the journal tells of it until the next opening.
    void addInDoubt(qint64 turn);

    /// Whether the path still leads to the package that was opened. Error: NotFound.
    [[nodiscard]] Result<void> packageIsThere() const { return m_package.check(); }

    /// Whether somebody else changed the databases since this was opened. Waits for the writer.
    [[nodiscard]] bool othersWrote();

    /// Waits for the writer, then gives up the lock; nothing is written afterwards.
    void shutDown();

    [[nodiscard]] const Places& places() const { return m_places; }

private:
    friend class WriteTransaction;
    WriteAccess(Places places,
                std::unique_ptr<LibraryLock> lock,
                std::unique_ptr<TurnJournal> journal,
                QByteArray print);
    [[nodiscard]] Result<void> backUpOnce();
    /// backUp() for one who has the writer's place.
    [[nodiscard]] Result<QString> backUpNow(Connection& connection);
    /// That the package is there and, when anything in it would be written, a backup of it.
    [[nodiscard]] Result<void> readyToFollow(Connection& connection, const Changes& changes);
    [[nodiscard]] Error closedError() const;
    /// What became of a line in the journal, in words that name the library and the remedy.
    [[nodiscard]] Result<void> ofJournal(const Result<void>& noted) const;
    [[nodiscard]] Changes pending();
    /// The journal tells no more than what is left to follow, and which files nobody settled.
    [[nodiscard]] Result<void> clearJournal(const Changes& left = {});
    [[nodiscard]] Result<void> keepPending(const Changes& left);
    /// Before this program writes, with the databases' lock: whether somebody else did.
    void noteOthers();
    /// At once after a commit or a rollback: whatever comes between counts as this program's own.
    void noteOwn();
    void noteCommit(qint64 turn);

    const Places m_places;
    const PackageIdentity m_package;
    std::unique_ptr<LibraryLock> m_lock;
    const std::unique_ptr<TurnJournal> m_journal;
    WriterGate m_gate;
    QByteArray m_own; ///< the databases' print after this program's last change; under the gate
    bool m_othersWrote{false}; ///< since this was opened; under the gate
    bool m_backedUp{false};    ///< under the gate
    bool m_shutDown{false};    ///< under the gate

    std::mutex m_mutex; ///< guards what follows
    Changes m_pending;
    QSet<qint64> m_unsettled; ///< turns with files that are still to be removed
    QSet<qint64> m_inDoubt;   ///< turns that may be committed or not
};

template <typename Follow>
Result<void> WriteAccess::synchronise(Connection& connection, Follow&& follow)
{
    const WriterGate::Scope taken(m_gate);
    const Changes changes = pending();
    if (changes.isEmpty()) {
        return m_shutDown ? Result<void>() : clearJournal();
    }
    if (Result<void> ready = readyToFollow(connection, changes); !ready.ok()) {
        return ready;
    }
    Changes left = changes;
    const Result<void> followed = follow(changes, left);
    const Result<void> kept = keepPending(followed.ok() ? Changes() : left);
    return kept.ok() ? followed : kept; // what the journal still says is not to be forgotten
}
