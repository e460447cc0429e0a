#include "WriteAccess.h"

#include "AtomicFile.h"
#include "Backup.h"
#include "Catalogues.h"
#include "Clock.h"
#include "ForeignUse.h"
#include "LibraryErrors.h"
#include "PackageFiles.h"
#include "Queries.h"
#include "StateFolder.h"
#include "SystemLog.h"

#include <QFileInfo>

#include <algorithm>
#include <cerrno>

using namespace Qt::StringLiterals;

namespace
{

/// Who is told of an error believes that nothing came of it.
Error doneAllTheSame(const Error& error)
{
    return {error.code,
            u"%1 All the same this was done: the picture is in the library, and so is all that "
            "belongs to its turn."_s.arg(LibraryErrors::asSentence(error.message))};
}

Error perhapsDone(const Error& error)
{
    return {error.code,
            u"%1 Whether it was done all the same shows when the library is opened for writing "
            "again: what was begun is then finished, or was undone."_s.arg(
                LibraryErrors::asSentence(error.message))};
}

} // namespace

WriteTransaction::WriteTransaction(WriteAccessPtr access, Connection& connection, qint64 turn)
    : m_access(std::move(access))
    , m_connection(connection)
    , m_turn(turn)
{
}

WriteTransaction::~WriteTransaction()
{
    rollback();
}

Writer WriteTransaction::writer()
{
    return {m_connection, m_changes, SystemClock().now()};
}

Result<void> WriteTransaction::announceFiles(const QStringList& relativePaths)
{
    const QString& package = m_access->places().package;
    for (const QString& relative : relativePaths) {
        if (Result<void> allowed = PackageFiles::mayBeWritten(package, relative); !allowed.ok()) {
            return allowed;
        }
        const QFileInfo entry(package + u'/' + relative);
        if (entry.exists() || entry.isSymLink()) {
            return AtomicFile::errorFromErrno(EEXIST, u"write"_s, entry.filePath());
        }
    }
    const Result<void> noted = m_access->m_journal->filesWillBeMade(m_turn, relativePaths);
    if (noted.ok()) {
        m_made << relativePaths;
    }
    return m_access->ofJournal(noted);
}

Result<void> WriteTransaction::makeFile(const QString& relativePath, const QByteArray& bytes)
{
    const QString path = m_access->places().package + u'/' + relativePath;
    if (Result<void> there = m_access->m_package.check(); !there.ok()) {
        return there;
    }
    Result<void> made = AtomicFile::makeFolder(QFileInfo(path).absolutePath());
    if (made.ok()) {
        made = AtomicFile::write(path, bytes, AtomicFile::Existing::Refuse);
    }
    return made.ok() ? made : LibraryErrors::withRemedy(made.error());
}

Result<void> WriteTransaction::doom(const TrashRows::Leftovers& leftovers)
{
    m_access->addUnsettled({m_turn});
    return m_access->ofJournal(m_access->m_journal->filesAreDoomed(m_turn, leftovers));
}

Result<void> WriteTransaction::commit()
{
    if (m_spoilt) {
        rollback();
        return Error{ErrorCode::Internal, u"A step failed before, so all of them were undone."_s};
    }
    Result<void> done = m_access->m_package.check();
    if (done.ok()) {
        done = m_access->ofJournal(m_access->m_journal->turnWillCommit(m_turn, m_changes));
    }
    if (done.ok()) {
        done = LibraryErrors::caught(m_access->places().package, [this]() -> Result<void> {
            m_committing = true;
            m_connection.commit();
            return {};
        });
    }
    if (!done.ok()) {
        switch (abandon()) {
        case Outcome::Done:
            return doneAllTheSame(done.error());
        case Outcome::InDoubt:
            return perhapsDone(done.error());
        case Outcome::Undone:
            break;
        }
        return done;
    }
    m_access->noteOwn();
    m_open = false;
    if (!m_made.isEmpty()) {
        m_access->noteCommit(m_turn);
    }
    m_access->addPending(m_changes);
    m_access->m_gate.leave();
    return {};
}

void WriteTransaction::rollback()
{
    if (m_open) {
        abandon();
    }
}

WriteTransaction::Outcome WriteTransaction::abandon()
{
    m_open = false;
    // SQLite keeps a transaction open only where nothing of it can have been committed.
    const bool isUndone = m_connection.inTransaction();
    m_connection.rollback();
    m_access->noteOwn(); // also what is undone may have been in the files
    const Outcome found = isUndone ? Outcome::Undone : outcome();
    if (const Result<void> settled = settle(found); !settled.ok()) {
        systemLog(settled.error().message);
    }
    m_access->m_gate.leave();
    return found;
}

Result<void> WriteTransaction::settle(Outcome outcome)
{
    switch (outcome) {
    case Outcome::Undone:
        return m_access->settle(
            m_turn,
            m_made.isEmpty() ||
                (m_access->m_package.check().ok() &&
                 PackageFiles::removeMade(m_access->places().package, m_made).isEmpty()));
    case Outcome::Done:
        m_access->addPending(m_changes);
        return {};
    case Outcome::InDoubt:
        break;
    }
    // Everything stays, the files and what the notebook says: the next opening decides by that.
    m_access->addInDoubt(m_turn);
    return {};
}

WriteTransaction::Outcome WriteTransaction::outcome()
{
    if (m_made.isEmpty()) {
        return m_committing ? Outcome::InDoubt : Outcome::Undone;
    }
    try {
        // A commit of which only the last flush failed has happened, though it is told as an error.
        const bool isKnown = std::any_of(m_made.begin(), m_made.end(), [this](const QString& path) {
            constexpr QLatin1StringView kMasters("Masters/");
            return path.startsWith(kMasters) &&
                   Sql::firstInteger(m_connection,
                                     "SELECT modelId FROM RKMaster WHERE imagePath = ?",
                                     path.mid(kMasters.size()))
                       .has_value();
        });
        return isKnown ? Outcome::Done : Outcome::Undone;
    } catch (const SQLite::Exception& exception) {
        systemLog(LibraryErrors::fromSqlite(exception, m_access->places().package).message);
        return Outcome::InDoubt;
    }
}

WriteAccess::Places WriteAccess::Places::of(const QString& package, const QString& databaseUuid)
{
    const QString key = StateFolder::keyOf(QFileInfo(package).canonicalFilePath(), databaseUuid);
    return {package, StateFolder::ofLibrary(key), StateFolder::ofBackups(key)};
}

Result<WriteAccessPtr>
WriteAccess::open(const Places& places, std::unique_ptr<LibraryLock> lock, const QByteArray& print)
{
    Result<std::unique_ptr<TurnJournal>> journal = TurnJournal::open(places.state);
    if (!journal.ok()) {
        return StateFolder::unusable(journal.error(), places.package);
    }
    return WriteAccessPtr(
        new WriteAccess(places, std::move(lock), std::move(journal).value(), print));
}

WriteAccess::WriteAccess(Places places,
                         std::unique_ptr<LibraryLock> lock,
                         std::unique_ptr<TurnJournal> journal,
                         QByteArray print)
    : m_places(std::move(places))
    , m_package(m_places.package)
    , m_lock(std::move(lock))
    , m_journal(std::move(journal))
    , m_own(std::move(print))
{
}

Result<std::unique_ptr<WriteTransaction>> WriteAccess::begin(Connection& connection)
{
    m_gate.enter();
    if (m_shutDown) {
        m_gate.leave();
        return closedError();
    }
    Result<void> begun = m_package.check();
    if (begun.ok()) {
        begun = LibraryErrors::caught(m_places.package, [&connection]() -> Result<void> {
            connection.beginImmediate();
            return {};
        });
    }
    if (!begun.ok()) {
        m_gate.leave();
        return begun.error();
    }
    noteOthers();
    if (const Result<void> backedUp = backUpOnce(); !backedUp.ok()) {
        connection.rollback();
        m_gate.leave();
        return backedUp.error();
    }
    return std::unique_ptr<WriteTransaction>(
        new WriteTransaction(shared_from_this(), connection, m_journal->nextTurn()));
}

bool WriteAccess::othersWrote()
{
    const WriterGate::Scope taken(m_gate);
    noteOthers();
    return m_othersWrote;
}

void WriteAccess::shutDown()
{
    const WriterGate::Scope taken(m_gate);
    noteOthers();
    if (m_lock != nullptr && m_othersWrote) {
        ForeignUse::forget(m_places.state);
    } else if (m_lock != nullptr) {
        ForeignUse::leave(m_places.state, m_own);
    }
    m_shutDown = true;
    m_lock.reset();
}

Result<void> WriteAccess::settle(qint64 turn, bool allGone)
{
    if (!allGone) {
        addUnsettled({turn});
        return {};
    }
    {
        const std::lock_guard lock(m_mutex);
        m_unsettled.remove(turn);
    }
    return m_journal->turnIsSettled(turn);
}

Result<void> WriteAccess::announcePictures(const QStringList& relativePaths)
{
    return ofJournal(m_journal->picturesWillBeMade(m_journal->nextTurn(), relativePaths));
}

Result<void> WriteAccess::ofJournal(const Result<void>& noted) const
{
    return noted.ok() ? noted : StateFolder::unusable(noted.error(), m_places.package);
}

void WriteAccess::addUnsettled(const QSet<qint64>& turns)
{
    const std::lock_guard lock(m_mutex);
    m_unsettled.unite(turns);
}

void WriteAccess::addInDoubt(qint64 turn)
{
    const std::lock_guard lock(m_mutex);
    m_inDoubt.insert(turn);
}

void WriteAccess::noteCommit(qint64 turn)
{
    const Result<void> noted = m_journal->turnIsCommitted(turn);
    if (!noted.ok()) {
        systemLog(noted.error().message); // the turn has happened all the same
    }
}

Result<void> WriteAccess::clearJournal(const Changes& left)
{
    QSet<qint64> unsettled;
    QSet<qint64> inDoubt;
    {
        const std::lock_guard lock(m_mutex);
        unsettled = m_unsettled;
        inDoubt = m_inDoubt;
    }
    return m_journal->clearBut(unsettled, inDoubt, left);
}

void WriteAccess::addPending(const Changes& changes)
{
    const std::lock_guard lock(m_mutex);
    m_pending.unite(changes);
}

Result<QString> WriteAccess::backUp(Connection& connection)
{
    const WriterGate::Scope taken(m_gate);
    if (m_shutDown) {
        return closedError();
    }
    const Result<void> there = m_package.check();
    return there.ok() ? backUpNow(connection) : Result<QString>(there.error());
}

Result<QString> WriteAccess::backUpNow(Connection& connection)
{
    return LibraryErrors::caught(m_places.package, [&]() -> Result<QString> {
        connection.beginImmediate(); // so that the databases are of one moment
        Result<QString> made = Backup::make(m_places.package, m_places.backups);
        connection.rollback();
        m_backedUp = m_backedUp || made.ok();
        return made;
    });
}

Result<void> WriteAccess::readyToFollow(Connection& connection, const Changes& changes)
{
    if (Result<void> there = m_package.check(); !there.ok()) {
        return there;
    }
    if (m_backedUp) {
        return {};
    }
    // A damaged catalogue that waits to be mended is left as it is: a copy at each opening would
    // take the place of older ones for nothing.
    const bool onlyCatalogues = changes.masters.isEmpty() && changes.albums.isEmpty() &&
                                changes.folders.isEmpty() && !changes.keywords &&
                                !changes.adminData;
    if (onlyCatalogues && !Catalogues::damage(m_places.package).isNull()) {
        return {};
    }
    const Result<QString> made = backUpNow(connection);
    return made.ok() ? Result<void>() : made.error();
}

Error WriteAccess::closedError() const
{
    return {ErrorCode::NotFound, u"The library \"%1\" is closed."_s.arg(m_places.package)};
}

Result<void> WriteAccess::backUpOnce()
{
    if (!m_backedUp) {
        const Result<QString> made = Backup::make(m_places.package, m_places.backups);
        if (!made.ok()) {
            return made.error();
        }
        m_backedUp = true;
    }
    return {};
}

void WriteAccess::noteOthers()
{
    m_othersWrote = m_othersWrote || ForeignUse::tracesOf(m_places.package).print != m_own;
}

void WriteAccess::noteOwn()
{
    m_own = ForeignUse::tracesOf(m_places.package).print;
}

Changes WriteAccess::pending()
{
    const std::lock_guard lock(m_mutex);
    return m_pending;
}

Result<void> WriteAccess::keepPending(const Changes& left)
{
    {
        const std::lock_guard lock(m_mutex);
        m_pending = left;
    }
    return clearJournal(left);
}
