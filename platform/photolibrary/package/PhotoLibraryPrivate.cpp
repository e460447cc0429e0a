#include "PhotoLibraryPrivate.h"

#include "AdminData.h"
#include "AlbumRows.h"
#include "Catalogues.h"
#include "Clock.h"
#include "EventRows.h"
#include "ImportGroup.h"
#include "ImportRows.h"
#include "LibraryRestore.h"
#include "NumberValue.h"
#include "PackageFiles.h"
#include "PackageTurn.h"
#include "Queries.h"
#include "Recovery.h"
#include "Sidecars.h"
#include "SystemLog.h"
#include "TrashRows.h"
#include "Uuid.h"

#include <QDate>
#include <QFileInfo>
#include <QSet>

using namespace Qt::StringLiterals;

namespace
{

/// Connections of a library opened for writing never let a large transaction spill into the
/// database file before it commits: that would lock out the other threads' reads until then.
Result<std::unique_ptr<Connection>> connectTo(const QString& package, bool forWriting)
{
    auto opened =
        Connection::open(package, forWriting ? Connection::Mode::Write : Connection::Mode::Read);
    if (opened.ok() && forWriting) {
        opened.value()->database().exec("PRAGMA cache_spill=OFF");
    }
    return opened;
}

/// The event of that name that this run made before, unless the turn that made it was undone or
/// the user has thrown it away; else a new one.
QString eventFor(Writer& writer, QString& known, const QString& name)
{
    const bool stillThere =
        !known.isNull() && Sql::firstInteger(writer.connection,
                                             "SELECT modelId FROM RKFolder WHERE uuid = ?"
                                             " AND +isInTrash = 0",
                                             known)
                               .has_value();
    if (!stillThere) {
        known = EventRows::createEvent(writer, name);
    }
    return known;
}

Result<void> makeFiles(WriteTransaction& transaction,
                       const PreparedPicture& picture,
                       const ImportIdentity& identity)
{
    QList<std::pair<QString, const QByteArray*>> files{
        {"Masters/"_L1 + identity.masterPath(picture), &picture.bytes},
        {"Thumbnails/"_L1 + identity.thumbnailPath(picture), &picture.thumbnail},
        {"Thumbnails/"_L1 + identity.miniaturePath(picture), &picture.miniature}};
    if (!picture.preview.isEmpty()) {
        files << std::pair{"Previews/"_L1 + identity.previewPath(picture), &picture.preview};
    }
    QStringList names;
    for (const auto& file : std::as_const(files)) {
        names << file.first;
    }
    Result<void> done = transaction.announceFiles(names);
    for (auto file = files.cbegin(); file != files.cend() && done.ok(); ++file) {
        done = transaction.makeFile(file->first, *file->second);
    }
    return done;
}

/// The photos in the trash, of `asked` alone where there is such. What is without a master was not
/// shown to whom was asked.
QList<qint64> inTrash(Connection& connection, const std::optional<QList<qint64>>& asked)
{
    QList<qint64> ids = Sql::integers(connection,
                                      "SELECT v.modelId FROM RKVersion v WHERE"
                                      " v.showInLibrary = 1 AND v.isInTrash <> 0"
                                      " AND EXISTS (SELECT 1 FROM RKMaster m WHERE m.uuid"
                                      " = coalesce(v.rawMasterUuid, v.masterUuid))");
    if (asked) {
        const QSet<qint64> known(asked->begin(), asked->end());
        ids.removeIf([&known](qint64 id) { return !known.contains(id); });
    }
    return ids;
}

struct Removal {
    qint64 bytes{0}; ///< that are free again
    QList<PackageFiles::NotRemoved> left;
    bool isMoved{false}; ///< the package was taken away meanwhile
};

/// Removes what deleted photos left on disk; nothing of another package that lies at its path now.
Removal removeLeftovers(const WriteAccess& write, const TrashRows::Leftovers& leftovers)
{
    const QString& package = write.places().package;
    Removal removal;
    for (const QString& path : leftovers.folders + leftovers.files) {
        removal.isMoved = removal.isMoved || !write.packageIsThere().ok();
        if (removal.isMoved) {
            removal.left.append({path, u"the library was moved, renamed or replaced"_s});
            continue;
        }
        const qint64 before = PackageFiles::bytesOf(package, path);
        const QList<PackageFiles::NotRemoved> left = PackageFiles::remove(package, path);
        removal.bytes += before - (left.isEmpty() ? 0 : PackageFiles::bytesOf(package, path));
        removal.left << left;
    }
    if (!removal.isMoved) {
        PackageFiles::removeEmpty(package, leftovers.emptyFolders);
        removal.left << PackageFiles::flushRemovals(package, leftovers.folders + leftovers.files);
    }
    return removal;
}

/// "2 photos were deleted from the library "/a/b" for good and 1.50 MB are free again"
QString deletedForGood(const QString& package, qsizetype photos, const Removal& removal)
{
    constexpr double kMegabyte = 1024.0 * 1024.0;
    const QString freed =
        NumberValue::withTwoDecimals(static_cast<double>(removal.bytes) / kMegabyte) + " MB"_L1;
    const QString deleted = photos == 1 ? u"1 photo was"_s : u"%1 photos were"_s.arg(photos);
    return u"%1 deleted from the library \"%2\" for good and %3 are free again"_s.arg(
        deleted, package, freed);
}

Error notAllRemoved(const QString& package, qsizetype photos, const Removal& removal)
{
    const QString remedy =
        removal.isMoved ? u"Bring it back to that path"_s : u"Make their folders writable"_s;
    return {removal.isMoved ? ErrorCode::NotFound : ErrorCode::NotWritable,
            u"%1, but these files could not be removed:\n%2\n%3; the next run that writes to the "
            "library tries again."_s.arg(deletedForGood(package, photos, removal),
                                         PackageFiles::listed(removal.left),
                                         remedy)};
}

bool isLedOut(const Result<void>& done)
{
    return !done.ok() && done.error().code == ErrorCode::LeadsOut;
}

/// Sidecars and catalogues; neither waits for the other. That a damaged catalogue was left as it is
/// is an error as well, as is what a link leads out; `damagedCatalogue` is set when there is no
/// graver one.
Result<void>
writeFollowers(Connection& connection, const Changes& changes, QString& damagedCatalogue)
{
    const double now = SystemClock().now();
    Result<void> sidecars = Sidecars::write(connection, changes, now);
    if (!changes.catalogues) {
        return sidecars;
    }
    const Result<Catalogues::CarriedOver> catalogues = Catalogues::write(connection, now);
    if (!sidecars.ok() && !isLedOut(sidecars)) {
        return sidecars;
    }
    if (!catalogues.ok()) {
        return catalogues.error();
    }
    damagedCatalogue = catalogues.value().leftAlone;
    return damagedCatalogue.isNull() ? sidecars : Error{ErrorCode::Damaged, damagedCatalogue};
}

} // namespace

PhotoLibraryPrivate::PhotoLibraryPrivate(WriteAccess::Places places,
                                         QString version,
                                         std::unique_ptr<Connection> connection,
                                         WriteAccessPtr write)
    : m_places(std::move(places))
    , m_version(std::move(version))
    , m_write(std::move(write))
    , m_volumeFolders(connection->volumeFolders())
{
    auto first = std::make_shared<Session>();
    first->thread = currentThreadMark();
    first->connection = std::move(connection);
    m_sessions.push_back(std::move(first));
}

PhotoLibraryPrivate::~PhotoLibraryPrivate() = default;

Result<std::shared_ptr<Session>> PhotoLibraryPrivate::session()
{
    if (m_closed) {
        return closedError();
    }
    const ThreadMark mark = currentThreadMark();
    if (std::shared_ptr<Session> known = knownSession(mark)) {
        return known;
    }
    Result<std::unique_ptr<Connection>> opened = connectTo(path(), isForWriting());
    if (!opened.ok()) {
        return opened.error();
    }
    opened.value()->setVolumeFolders(m_volumeFolders);
    auto made = std::make_shared<Session>();
    made->thread = mark;
    made->connection = std::move(opened).value();
    const std::lock_guard lock(m_mutex);
    m_sessions.push_back(made);
    return made;
}

std::shared_ptr<Session> PhotoLibraryPrivate::knownSession(const ThreadMark& mark)
{
    std::vector<std::shared_ptr<Session>> ended; // given up outside the lock
    const std::lock_guard lock(m_mutex);
    std::shared_ptr<Session> known;
    for (auto entry = m_sessions.begin(); entry != m_sessions.end();) {
        const ThreadMark owner = (*entry)->thread.lock();
        if (!owner) {
            ended.push_back(std::move(*entry));
            entry = m_sessions.erase(entry);
            continue;
        }
        if (owner == mark) {
            known = *entry;
        }
        ++entry;
    }
    return known;
}

Error PhotoLibraryPrivate::readOnlyError() const
{
    return {ErrorCode::NotWritable, u"The library \"%1\" is open for reading only."_s.arg(path())};
}

Error PhotoLibraryPrivate::closedError() const
{
    return {ErrorCode::NotFound, u"The library \"%1\" is closed."_s.arg(path())};
}

std::unique_ptr<PhotoTurn> PhotoLibraryPrivate::beginTurn()
{
    const Result<std::shared_ptr<Session>> mine = session();
    if (!mine.ok()) {
        LibraryErrors::raise(mine.error());
    }
    if (mine.value()->turnOpen) {
        LibraryErrors::raise({ErrorCode::Internal, u"This thread has a photo's turn already."_s});
    }
    return std::make_unique<PackageTurn>(shared_from_this(), mine.value());
}

QList<qint64> PhotoLibraryPrivate::selection()
{
    const Result<std::shared_ptr<Session>> mine = session();
    if (!mine.ok()) {
        LibraryErrors::raise(mine.error());
    }
    if (mine.value()->turnSelection) {
        return *mine.value()->turnSelection;
    }
    const std::lock_guard lock(m_mutex);
    return m_selection;
}

void PhotoLibraryPrivate::setSelection(const QList<qint64>& photos)
{
    const std::lock_guard lock(m_mutex);
    m_selection = photos;
}

void PhotoLibraryPrivate::select(qint64 photo)
{
    const Result<std::shared_ptr<Session>> mine = session();
    if (!mine.ok()) {
        LibraryErrors::raise(mine.error());
    }
    if (mine.value()->turnOpen) {
        mine.value()->turnSelection = QList<qint64>{photo};
    } else {
        setSelection({photo});
    }
}

std::optional<QList<qint64>> PhotoLibraryPrivate::lastImport()
{
    const Result<std::shared_ptr<Session>> mine = session();
    if (!mine.ok()) {
        LibraryErrors::raise(mine.error());
    }
    return mine.value()->lastImport;
}

void PhotoLibraryPrivate::importPicture(const QString& path, std::optional<qint64> target)
{
    const Result<qint64> imported = importInTurn(path, target);
    if (imported.ok()) {
        return;
    }
    const bool interrupted = imported.error().code == ErrorCode::Interrupted;
    throw ScriptingException(interrupted ? u"Interrupted"_s : u"ImportFailed"_s,
                             imported.error().message);
}

Result<qint64> PhotoLibraryPrivate::importInTurn(const QString& path, std::optional<qint64> target)
{
    const Result<std::shared_ptr<Session>> mine = session();
    if (!mine.ok()) {
        return mine.error();
    }
    Session& own = *mine.value();
    own.lastImport = QList<qint64>();
    const Error interrupted{ErrorCode::Interrupted, u"The import was interrupted."_s};
    if (m_stopRequested) {
        return interrupted;
    }
    const std::optional<ProvedJpeg> expected = std::exchange(own.expected, std::nullopt);
    Result<PreparedPicture> picture = PictureIntake::jpeg(path, path.section(u'/', -1), expected);
    if (!picture.ok()) {
        return picture.error();
    }
    const bool opensTransaction = own.turnOpen && !own.transaction && m_write;
    if (opensTransaction) {
        Result<std::unique_ptr<WriteTransaction>> begun = m_write->begin(*own.connection);
        if (!begun.ok()) {
            return begun.error();
        }
        own.transaction = std::move(begun).value();
    }
    // The writer's place may have been waited for.
    Result<qint64> imported =
        m_stopRequested ? Result<qint64>(interrupted)
                        : insertPicture(std::move(picture).value(), runEventName(), target);
    if (imported.ok()) {
        own.lastImport = QList<qint64>{imported.value()};
    } else if (opensTransaction) {
        own.transaction.reset();
    }
    return imported;
}

Result<qint64> PhotoLibraryPrivate::importRequest(const ImportRequest& request)
{
    const QString fileName =
        request.fileName.isEmpty() ? request.sourcePath.section(u'/', -1) : request.fileName;
    Result<PreparedPicture> picture =
        request.preview.isEmpty()
            ? PictureIntake::jpeg(request.sourcePath, fileName)
            : PictureIntake::raw(request.sourcePath, fileName, request.preview);
    if (!picture.ok()) {
        return picture.error();
    }
    if (request.latitude && request.longitude) {
        picture.value().latitude = request.latitude;
        picture.value().longitude = request.longitude;
    }
    return insertPicture(std::move(picture).value(), request.eventName, std::nullopt);
}

Result<qint64> PhotoLibraryPrivate::insertPicture(PreparedPicture picture,
                                                  const QString& event,
                                                  std::optional<qint64> target)
{
    return tryWrite([&](WriteTransaction& transaction) -> Result<qint64> {
        Writer writer = transaction.writer();
        ImportIdentity identity{Uuid::create(), Uuid::create(), Uuid::create(), {}, {}};
        // Groups lie a second apart. Who imports faster is ahead of the clock, and would look at
        // all groups of the run again for each photo.
        QDateTime moment = QDateTime::currentDateTime();
        if (m_nextStamp.isValid() && m_nextStamp > moment) {
            moment = m_nextStamp;
        }
        identity.stamp = ImportGroup::freeStamp(writer.connection, path(), moment);
        m_nextStamp = identity.stamp.addSecs(1);
        if (const Result<void> made = makeFiles(transaction, picture, identity); !made.ok()) {
            return made.error();
        }
        identity.eventUuid = eventFor(writer, m_events[event], event);
        const qint64 photo = ImportRows::insert(writer, picture, identity);
        AlbumRows::replaceLastImport(writer, {photo});
        AdminData::setText(writer,
                           u"database.iPhoto"_s,
                           u"lastImportEventUuid"_s,
                           identity.eventUuid,
                           AdminData::kString);
        if (target) {
            AlbumRows::addPhotos(writer, *target, {photo});
        }
        return photo;
    });
}

QString PhotoLibraryPrivate::runEventName()
{
    const std::lock_guard lock(m_mutex);
    if (m_runEventName.isEmpty()) {
        m_runEventName = "Corvane "_L1 + QDate::currentDate().toString(Qt::ISODate);
    }
    return m_runEventName;
}

Result<EmptiedTrash> PhotoLibraryPrivate::emptyTrash(const std::optional<QList<qint64>>& photoIds)
{
    const Result<std::shared_ptr<Session>> mine = session();
    if (!mine.ok()) {
        return mine.error();
    }
    if (mine.value()->transaction) {
        // Files would be gone though the turn may yet be undone.
        return Error{ErrorCode::Internal,
                     u"The trash cannot be emptied in the midst of a photo's turn."_s};
    }
    TrashRows::Leftovers leftovers;
    qsizetype photos = 0;
    qint64 turn = 0;
    const Result<void> deleted = tryWrite([&](WriteTransaction& transaction) -> Result<void> {
        Writer writer = transaction.writer();
        const QList<qint64> ids = inTrash(writer.connection, photoIds);
        photos = ids.size();
        leftovers = TrashRows::deleteForGood(writer, ids);
        turn = transaction.turn();
        return transaction.doom(leftovers);
    });
    if (!deleted.ok()) {
        return deleted.error();
    }
    const Removal removal = removeLeftovers(*m_write, leftovers);
    const Result<void> settled = m_write->settle(turn, removal.left.isEmpty());
    if (!removal.left.isEmpty()) {
        return notAllRemoved(path(), photos, removal);
    }
    if (!settled.ok()) {
        return Error{settled.error().code,
                     u"%1, but that could not be noted. %2"_s.arg(
                         deletedForGood(path(), photos, removal),
                         LibraryErrors::asSentence(settled.error().message))};
    }
    return EmptiedTrash{photos, removal.bytes};
}

NamedFiles PhotoLibraryPrivate::journaledFiles() const
{
    return NamedFiles([places = m_places] {
        return Recovery::named(LibraryRestore::turns(places.package, places.state));
    });
}

QStringList PhotoLibraryPrivate::warnings() const
{
    return (m_passing.hasExpired() ? QStringList() : QStringList{m_passingWarning}) + m_warnings;
}

Result<void> PhotoLibraryPrivate::announcePictures(const QStringList& relativePaths)
{
    return m_write ? m_write->announcePictures(relativePaths) : Result<void>(readOnlyError());
}

Result<QString> PhotoLibraryPrivate::backUp()
{
    const Result<std::shared_ptr<Session>> mine = session();
    if (!mine.ok()) {
        return mine.error();
    }
    return m_write ? m_write->backUp(*mine.value()->connection) : Result<QString>(readOnlyError());
}

Result<void> PhotoLibraryPrivate::synchronise()
{
    return follow().result;
}

PhotoLibraryPrivate::Following PhotoLibraryPrivate::follow()
{
    const Result<std::shared_ptr<Session>> mine = session();
    if (!mine.ok()) {
        return {mine.error(), false};
    }
    if (!m_write) {
        return {};
    }
    if (mine.value()->transaction) {
        return {Error{ErrorCode::Internal,
                      u"The catalogues cannot follow in the midst of a photo's turn."_s},
                false};
    }
    Connection& connection = *mine.value()->connection;
    QString damagedCatalogue;
    const Result<void> done =
        m_write->synchronise(connection, [&](const Changes& changes, Changes& left) {
            Result<void> followed = LibraryErrors::caught(
                path(), [&] { return writeFollowers(connection, changes, damagedCatalogue); });
            if (!damagedCatalogue.isNull() || isLedOut(followed)) {
                left = {}; // what lies behind a link can never follow
                left.catalogues = !damagedCatalogue.isNull();
            }
            return followed;
        });
    connection.resetStatements();
    if (done.ok()) {
        return {};
    }
    const QString rest = isLedOut(done) ? u"."_s
                                        : u", and the files that could not be written follow at "
                                          "the next run that writes to it."_s;
    const Error error{
        done.error().code,
        u"%1 Nothing is lost: the photos are safe in the databases of the library "
        "\"%2\"%3"_s.arg(LibraryErrors::asSentence(done.error().message), path(), rest)};
    return {error, !damagedCatalogue.isNull() || isLedOut(done)};
}

Result<void> PhotoLibraryPrivate::close()
{
    if (m_closed) {
        return {};
    }
    const ThreadMark mark = currentThreadMark();
    if (const std::shared_ptr<Session> own = knownSession(mark)) {
        own->transaction.reset();
    }
    Following following = follow();
    if (following.onlyLeftAlone) {
        // It was so before, and nothing was lost by what was done now.
        if (!m_warnings.contains(following.result.error().message)) {
            systemLog(following.result.error().message);
        }
        following.result = {};
    }
    m_closed = true;
    if (m_write) {
        m_write->shutDown();
    }
    std::vector<std::shared_ptr<Session>> sessions; // given up outside the lock
    const std::lock_guard lock(m_mutex);
    sessions.swap(m_sessions);
    return following.result;
}
