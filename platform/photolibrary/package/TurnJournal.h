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
    [[nodiscard]] Result<void> filesAreDoomed(qint64 turn, const TrashRows::Leftovers& leftovers);
    [[nodiscard]] Result<void> turnWillCommit(qint64 turn, const Changes& changes);
    /// Its files were all removed or are all known to the databases.
    [[nodiscard]] Result<void> turnIsSettled(qint64 turn);
    /// Sidecars and catalogues follow: of all turns but these nothing is told any more, and of the
    /// unsettled ones only the files. Without any the journal is empty again.
    [[nodiscard]] Result<void> clearBut(const QSet<qint64>& unsettled, const QSet<qint64>& inDoubt);

private:
    explicit TurnJournal(const QString& path);
    [[nodiscard]] Result<void> openForAppending();
    [[nodiscard]] Result<void> append(const QByteArray& line);
    [[nodiscard]] Result<void> empty();

    std::mutex m_mutex;
    QFile m_file;
    qint64 m_lastTurn;
};
