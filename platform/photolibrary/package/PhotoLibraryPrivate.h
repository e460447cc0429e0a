#pragma once

#include "LibraryErrors.h"
#include "NamedFiles.h"
#include "PhotoLibrary.h"
#include "PictureIntake.h"
#include "Scripting.h"
#include "Session.h"
#include "WriteAccess.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QHash>

#include <atomic>
#include <mutex>
#include <type_traits>
#include <vector>

/// An open library, shared by PhotoLibrary and the scripting objects: hands each thread its session
/// and runs reads and writes on it. Any thread.
class PhotoLibraryPrivate final : public std::enable_shared_from_this<PhotoLibraryPrivate>
{
public:
    /// `connection`: the one that the opening was checked with, the calling thread's from now on;
    /// `write`: null for a library opened for reading.
    PhotoLibraryPrivate(WriteAccess::Places places,
                        QString version,
                        std::unique_ptr<Connection> connection,
                        WriteAccessPtr write);
    ~PhotoLibraryPrivate();
    PhotoLibraryPrivate(const PhotoLibraryPrivate&) = delete;
    PhotoLibraryPrivate& operator=(const PhotoLibraryPrivate&) = delete;

    [[nodiscard]] const QString& path() const { return m_places.package; }

    [[nodiscard]] const WriteAccess::Places& places() const { return m_places; }

    [[nodiscard]] const QString& version() const { return m_version; }

    /// See PhotoLibrary::warnings(). Set before the library is shared.
    [[nodiscard]] QStringList warnings() const;

    void setWarnings(QStringList warnings) { m_warnings = std::move(warnings); }

    /// One that holds for so long from now; a null one is none.
    void setPassingWarning(const QString& warning, qint64 milliseconds)
    {
        m_passingWarning = warning;
        m_passing.setRemainingTime(warning.isNull() ? 0 : milliseconds);
    }

    [[nodiscard]] bool isOpen() const { return !m_closed; }

    [[nodiscard]] bool isForWriting() const { return m_write != nullptr; }

    /// See PhotoLibrary::wasChangedByOthers().
    [[nodiscard]] bool wasChangedByOthers() const { return m_write && m_write->othersWrote(); }

    /// Files that unfinished turns are about to make or to remove; package-relative.
    [[nodiscard]] NamedFiles journaledFiles() const;

    /// Runs `query(Connection&)` on this thread's connection. Errors: what SQLite raises; NotFound
    /// when the library is closed.
    template <typename Query>
    [[nodiscard]] auto tryRead(Query&& query)
        -> Result<std::remove_cvref_t<std::invoke_result_t<Query, Connection&>>>;
    /// The same, raising ScriptingException.
    template <typename Query>
    auto read(Query&& query);

    /// Runs `step(WriteTransaction&)`, which returns a Result, within the transaction of this
    /// thread's turn, or as one that commits at once. A step that fails in a turn spoils the turn.
    template <typename Step>
    [[nodiscard]] auto tryWrite(Step&& step) -> std::invoke_result_t<Step, WriteTransaction&>;
    /// Runs `change(Writer&)`, raising ScriptingException.
    template <typename Change>
    void write(Change&& change);

    [[nodiscard]] std::unique_ptr<PhotoTurn> beginTurn();

    /// The calling thread's view of the selection.
    [[nodiscard]] QList<qint64> selection();
    void setSelection(const QList<qint64>& photos);
    /// Makes the photo the selection, of the turn alone while one is open.
    void select(qint64 photo);

    /// Imports for the scripting surface; `target`: id of an album of the user's own that receives
    /// the photo too. Raises "ImportFailed" or "Interrupted".
    void importPicture(const QString& path, std::optional<qint64> target);
    [[nodiscard]] Result<qint64> importRequest(const ImportRequest& request);
    /// See PhotoLibrary::emptyTrash().
    [[nodiscard]] Result<EmptiedTrash> emptyTrash(const std::optional<QList<qint64>>& photoIds);
    /// What this thread imported last; nothing before its first import.
    [[nodiscard]] std::optional<QList<qint64>> lastImport();

    void requestStop() { m_stopRequested = true; }

    /// See WriteAccess::announcePictures().
    [[nodiscard]] Result<void> announcePictures(const QStringList& relativePaths);
    /// Makes a dated copy of databases and catalogues now; returns its folder.
    [[nodiscard]] Result<QString> backUp();
    [[nodiscard]] Result<void> synchronise();
    [[nodiscard]] Result<void> close();

private:
    struct Following {
        Result<void> result;
        /// The error, if any, is that a damaged catalogue, or what a link leads out, was left
        /// alone.
        bool onlyLeftAlone{false};
    };

    [[nodiscard]] Following follow();
    [[nodiscard]] Result<std::shared_ptr<Session>> session();
    [[nodiscard]] std::shared_ptr<Session> knownSession(const ThreadMark& mark);
    [[nodiscard]] Error closedError() const;
    [[nodiscard]] Error readOnlyError() const;
    [[nodiscard]] Result<qint64>
    insertPicture(PreparedPicture picture, const QString& event, std::optional<qint64> target);
    [[nodiscard]] Result<qint64> importInTurn(const QString& path, std::optional<qint64> target);
    [[nodiscard]] QString runEventName();

    const WriteAccess::Places m_places;
    const QString m_version;
    const WriteAccessPtr m_write;
    QStringList m_warnings;
    QString m_passingWarning;
    QDeadlineTimer m_passing;
    const QMap<QString, QString> m_volumeFolders; ///< of the first connection, for all others
    std::atomic<bool> m_closed{false};
    std::atomic<bool> m_stopRequested{false};

    std::mutex m_mutex; ///< guards what follows
    std::vector<std::shared_ptr<Session>> m_sessions;
    QList<qint64> m_selection;
    QString m_runEventName;
    /// Uuids of the events that this run made, by name; guarded by the writer's place.
    QHash<QString, QString> m_events;
    /// The earliest moment for the group of this run's next import; guarded likewise.
    QDateTime m_nextStamp;
};

template <typename Query>
auto PhotoLibraryPrivate::tryRead(Query&& query)
    -> Result<std::remove_cvref_t<std::invoke_result_t<Query, Connection&>>>
{
    using Value = std::remove_cvref_t<std::invoke_result_t<Query, Connection&>>;
    const Result<std::shared_ptr<Session>> mine = session();
    if (!mine.ok()) {
        return mine.error();
    }
    Connection& connection = *mine.value()->connection;
    const auto run = [&]() -> Result<Value> { return query(connection); };
    Result<Value> result = LibraryErrors::caught(path(), run);
    if (!connection.inTransaction()) {
        connection.resetStatements();
    }
    return result;
}

template <typename Query>
auto PhotoLibraryPrivate::read(Query&& query)
{
    auto result = tryRead(std::forward<Query>(query));
    if (!result.ok()) {
        LibraryErrors::raise(result.error());
    }
    return std::move(result).value();
}

template <typename Step>
auto PhotoLibraryPrivate::tryWrite(Step&& step) -> std::invoke_result_t<Step, WriteTransaction&>
{
    const Result<std::shared_ptr<Session>> mine = session();
    if (!mine.ok()) {
        return mine.error();
    }
    if (!m_write) {
        return readOnlyError();
    }
    Session& own = *mine.value();
    if (own.transaction) {
        auto result = LibraryErrors::caught(path(), [&] { return step(*own.transaction); });
        if (!result.ok()) {
            own.transaction->spoil();
        }
        return result;
    }
    const Result<std::unique_ptr<WriteTransaction>> begun = m_write->begin(*own.connection);
    if (!begun.ok()) {
        return begun.error();
    }
    auto result = LibraryErrors::caught(path(), [&] { return step(*begun.value()); });
    if (!result.ok()) {
        return result;
    }
    const Result<void> committed = begun.value()->commit();
    if (!committed.ok()) {
        return committed.error();
    }
    return result;
}

template <typename Change>
void PhotoLibraryPrivate::write(Change&& change)
{
    const Result<void> result = tryWrite([&change](WriteTransaction& transaction) -> Result<void> {
        Writer writer = transaction.writer();
        change(writer);
        return {};
    });
    if (!result.ok()) {
        LibraryErrors::raise(result.error());
    }
}
