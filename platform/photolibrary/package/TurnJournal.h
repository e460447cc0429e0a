#pragma once

#include "Changes.h"
#include "Result.h"
#include "TrashRows.h"

#include <QFile>
#include <QList>
#include <QSet>
#include <QStringList>

#include <memory>
#include <mutex>

/// What the journal says of one turn.
struct JournaledTurn {
    qint64 number{0};
    QStringList made;            ///< package-relative files that were about to be made
    QStringList pictures;        ///< the same, but the databases named them before
    TrashRows::Leftovers doomed; ///< what was to be removed after the commit
    Changes changes;             ///< what sidecars and catalogues have to follow
    bool announced{false};       ///< the commit was about to be made
};

/// The notebook of a library's writer, outside the package: before files are made or removed and
/// before a transaction commits, a line says so and is flushed. After a crash it tells which files
/// are this program's own leftovers. One JSON object a line; a line cut short is passed over.
/// Any thread.
class TurnJournal final
{
public:
    /// The turns that the journal in `stateFolder` tells of; empty when there is none.
    [[nodiscard]] static QList<JournaledTurn> read(const QString& stateFolder);
    /// Opens it for appending. Errors: NotWritable, OutOfSpace.
    [[nodiscard]] static Result<std::unique_ptr<TurnJournal>> open(const QString& stateFolder);

    /// Numbers grow from run to run.
    [[nodiscard]] qint64 nextTurn();
    [[nodiscard]] Result<void> filesWillBeMade(qint64 turn, const QStringList& relativePaths);
    /// Of these, which the databases name already, a crash leaves nothing to be removed but what
    /// was unfinished.
    [[nodiscard]] Result<void> picturesWillBeMade(qint64 turn, const QStringList& relativePaths);
    [[nodiscard]] Result<void> filesAreDoomed(qint64 turn, const TrashRows::Leftovers& leftovers);
    [[nodiscard]] Result<void> turnWillCommit(qint64 turn, const Changes& changes);
    /// The databases have its files now: they are nobody's leftovers any more, not even for
    /// databases of an earlier day that a person puts in their place. Not flushed: where the line
    /// is lost, what the databases know decides.
    [[nodiscard]] Result<void> turnIsCommitted(qint64 turn);
    /// Its files were all removed or are all known to the databases.
    [[nodiscard]] Result<void> turnIsSettled(qint64 turn);
    /// Sidecars and catalogues follow but for what is `left`: of all turns but these nothing else
    /// is told any more, and of the unsettled ones only the files. Without any of them the journal
    /// is empty again.
    [[nodiscard]] Result<void>
    clearBut(const QSet<qint64>& unsettled, const QSet<qint64>& inDoubt, const Changes& left = {});

private:
    explicit TurnJournal(const QString& path);
    [[nodiscard]] Result<void> openForAppending();
    enum class Flush : quint8 { Yes, No };
    [[nodiscard]] Result<void> append(const QByteArray& line, Flush flush = Flush::Yes);
    [[nodiscard]] Result<void> empty();

    std::mutex m_mutex;
    QFile m_file;
    qint64 m_lastTurn;
    bool m_isCut{false}; ///< the last line may lack its end
};
