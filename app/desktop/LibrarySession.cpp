#include "LibrarySession.h"

#include "AlternateSignalStack.h"
#include "SystemLog.h"

#include <QCoreApplication>
#include <QScopeGuard>
#include <QThread>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

/// How often is looked whether a caution still holds: the shortest hold for a minute.
constexpr int kCautionMilliseconds = 2000;

QString photoApplicationIdentifier()
{
    return u"com.apple.iPhoto"_s;
}

/// The turn of a scan that has nothing to write to.
class NoTurn final : public PhotoTurn
{
public:
    void commit() override {}
};

/// The photo application while no library is open.
class ClosedApplication final : public PhotoApplication
{
public:
    [[nodiscard]] bool isRunning() override { return false; }

    [[nodiscard]] QString version() override { refuse(); }

    [[nodiscard]] QList<ScriptingObjectPtr> selection() override { refuse(); }

    [[nodiscard]] QList<Keyword> keywords() override { refuse(); }

    [[nodiscard]] QList<AlbumPtr> albums() override { refuse(); }

    [[nodiscard]] AlbumPtr photoLibraryAlbum() override { refuse(); }

    [[nodiscard]] AlbumPtr lastImportAlbum() override { refuse(); }

    [[nodiscard]] bool importing() override { refuse(); }

    void assignKeywordString(const QString& /*keyword*/) override { refuse(); }

    void newAlbumName(const QString& /*name*/) override { refuse(); }

private:
    [[noreturn]] static void refuse()
    {
        throw ScriptingException(
            u"NotRunning"_s,
            QCoreApplication::translate(
                "LibrarySession",
                "No photo library is open. Open one with File > Open Library and try again."));
    }
};

/// Names of the user's albums and photos of the last import. Raises ScriptingException.
void readAlbums(PhotoLibrary& library, LibraryContents& contents)
{
    const PhotoApplicationPtr application =
        library.applicationWithBundleIdentifier(photoApplicationIdentifier());
    const QList<AlbumPtr> albums = application->albums();
    for (const AlbumPtr& album : albums) {
        if (album->type() == kRegularAlbumType) {
            contents.albums.append(album->name());
        }
    }
    if (const AlbumPtr lastImport = application->lastImportAlbum()) {
        const QList<PhotoPtr> photos = lastImport->photos();
        for (const PhotoPtr& photo : photos) {
            contents.lastImport.insert(photo->id());
        }
    }
}

QString cautionOf(const PhotoLibrary& library)
{
    return library.warnings().join(u' ');
}

Result<LibraryContents> contentsOf(PhotoLibrary& library)
{
    LibraryContents contents;
    contents.path = library.path();
    contents.version = library.version();
    contents.caution = cautionOf(library);
    Result<QList<PhotoFacts>> photos = library.photos();
    if (!photos.ok()) {
        return photos.error();
    }
    Result<QList<PhotoFacts>> trash = library.trashedPhotos();
    if (!trash.ok()) {
        return trash.error();
    }
    contents.photos = std::move(photos).value();
    contents.trash = std::move(trash).value();
    try {
        readAlbums(library, contents);
    } catch (const ScriptingException& exception) {
        return Error{ErrorCode::Unreadable, exception.reason()};
    }
    return contents;
}

/// Closing says where something could not be written; nothing waits for it.
void closeQuietly(const std::shared_ptr<PhotoLibrary>& library)
{
    if (library == nullptr) {
        return;
    }
    if (const Result<void> closed = library->close(); !closed.ok()) {
        systemLog(closed.error().message);
    }
}

} // namespace

/// Each call goes to the library that is open by then: engine and bridge take their application
/// when a scan is asked for, which may be before the library has been checked.
class LibrarySession::Application final : public PhotoApplication
{
public:
    explicit Application(LibrarySession& session)
        : m_session(session)
    {
    }

    [[nodiscard]] bool isRunning() override { return now()->isRunning(); }

    [[nodiscard]] QString version() override { return now()->version(); }

    [[nodiscard]] QList<ScriptingObjectPtr> selection() override { return now()->selection(); }

    [[nodiscard]] QList<Keyword> keywords() override { return now()->keywords(); }

    [[nodiscard]] QList<AlbumPtr> albums() override { return now()->albums(); }

    [[nodiscard]] AlbumPtr photoLibraryAlbum() override { return now()->photoLibraryAlbum(); }

    [[nodiscard]] AlbumPtr lastImportAlbum() override { return now()->lastImportAlbum(); }

    [[nodiscard]] bool importing() override { return now()->importing(); }

    void assignKeywordString(const QString& keyword) override
    {
        now()->assignKeywordString(keyword);
    }

    void newAlbumName(const QString& name) override { now()->newAlbumName(name); }

private:
    [[nodiscard]] PhotoApplicationPtr now() { return m_session.settledApplication(); }

    LibrarySession& m_session;
};

LibrarySession::LibrarySession(QObject* parent)
    : QObject(parent)
{
    m_cautionTimer.setInterval(kCautionMilliseconds);
    connect(&m_cautionTimer, &QTimer::timeout, this, &LibrarySession::refreshCaution);
    connect(this, &LibrarySession::opened, this, &LibrarySession::watchCaution);
    m_worker.setMaxThreadCount(1);
    // A thread that ends gives up its connection to the library.
    m_worker.setExpiryTimeout(-1);
}

LibrarySession::~LibrarySession()
{
    stopChecking();
    m_worker.waitForDone();
    closeQuietly(library());
}

LibrarySession::LibraryPtr LibrarySession::library() const
{
    const std::lock_guard guard(m_mutex);
    return m_library;
}

LibrarySession::LibraryPtr LibrarySession::settledLibrary()
{
    std::unique_lock guard(m_mutex);
    if (QThread::currentThread() != thread()) {
        m_settled.wait(guard, [this] { return m_openings == 0; });
    }
    return m_library;
}

PhotoApplicationPtr LibrarySession::settledApplication()
{
    if (const LibraryPtr open = settledLibrary()) {
        return open->applicationWithBundleIdentifier(photoApplicationIdentifier());
    }
    return std::make_shared<ClosedApplication>();
}

void LibrarySession::replaceLibrary(const LibraryPtr& library)
{
    const std::lock_guard guard(m_mutex);
    m_library = library;
    // Ids name other photos in another library.
    m_selection.clear();
    m_applicationSelection.clear();
}

void LibrarySession::promoteLibrary(const LibraryPtr& writing)
{
    // Nobody else knows `writing` yet: its calls do not wait.
    const std::lock_guard guard(m_mutex);
    writing->setSelection(m_applicationSelection);
    if (m_stopRequested) {
        writing->requestStop();
    }
    m_library = writing;
}

QMap<QString, QString> LibrarySession::volumeFolders() const
{
    const std::lock_guard guard(m_mutex);
    return m_volumeFolders;
}

void LibrarySession::setVolumeFolders(const QMap<QString, QString>& folders)
{
    const std::lock_guard guard(m_mutex);
    m_volumeFolders = folders;
}

bool LibrarySession::isOpen() const
{
    return library() != nullptr;
}

void LibrarySession::run(Step step)
{
    if (++m_underWay == 1) {
        emit busyChanged(true);
    }
    m_worker.start([this, step = std::move(step)] {
        const AlternateSignalStack signalStack;
        // What the step leaves is done by the main thread, which also lives longer than the step.
        std::function<void()> rest = step(library());
        QMetaObject::invokeMethod(
            this,
            [this, rest = std::move(rest)] {
                rest();
                if (--m_underWay == 0) {
                    emit busyChanged(false);
                }
            },
            Qt::QueuedConnection);
    });
}

void LibrarySession::take(LibraryContents contents)
{
    m_contents = std::move(contents);
    emit contentsChanged();
}

void LibrarySession::open(const QString& path, bool afterCrash)
{
    m_checkStopped = false;
    runApart([this, path, afterCrash](const LibraryPtr& before) {
        return openAndCheck(path, afterCrash, before);
    });
}

void LibrarySession::runApart(Step step)
{
    {
        const std::lock_guard guard(m_mutex);
        ++m_openings;
    }
    run([this, step = std::move(step)](const LibraryPtr& open) {
        // Whatever becomes of it, nobody waits for it for ever.
        const auto settle = qScopeGuard([this] {
            const std::lock_guard guard(m_mutex);
            if (--m_openings == 0) {
                m_settled.notify_all();
            }
        });
        return step(open);
    });
}

std::function<void()>
LibrarySession::openAndCheck(const QString& path, bool afterCrash, const LibraryPtr& before)
{
    // The same library again: its lock is given up first.
    const bool again = before != nullptr && before->path() == path;
    if (again) {
        closeQuietly(before);
    }
    Result<std::unique_ptr<PhotoLibrary>> opened =
        PhotoLibrary::open(path, {.access = Access::Read, .volumeFolders = volumeFolders()});
    if (!opened.ok()) {
        return refuse(opened.error(), again);
    }
    const LibraryPtr reading = std::move(opened).value();
    const Result<QList<qint64>> readAt = reading->revision();
    Result<LibraryContents> contents = contentsOf(*reading);
    if (!contents.ok()) {
        return refuse(contents.error(), again);
    }
    if (!again) {
        closeQuietly(before);
    }
    replaceLibrary(reading);
    // What the checks take depends on how much the library holds; the person looks at it meanwhile.
    QMetaObject::invokeMethod(
        this,
        [this, now = std::move(contents).value()]() mutable { show(std::move(now)); },
        Qt::QueuedConnection);
    return checkForWriting(path, afterCrash, reading, readAt);
}

std::function<void()> LibrarySession::refuse(const Error& error, bool wasOpen)
{
    if (wasOpen) {
        replaceLibrary(nullptr);
    }
    return [this, wasOpen, message = error.message] {
        if (wasOpen) {
            take({});
        }
        emit failed(tr("The library could not be opened"), message);
    };
}

void LibrarySession::show(LibraryContents contents)
{
    contents.checking = true;
    take(std::move(contents));
    emit shown();
}

std::function<void()> LibrarySession::checkForWriting(const QString& path,
                                                      bool afterCrash,
                                                      const LibraryPtr& reading,
                                                      const Result<QList<qint64>>& readAt)
{
    OpenOptions options;
    options.access = Access::Write;
    options.afterCrash = afterCrash;
    options.shouldStop = [this] { return m_checkStopped.load(); };
    options.volumeFolders = volumeFolders();
    Result<std::unique_ptr<PhotoLibrary>> result = PhotoLibrary::open(path, options);
    if (!result.ok()) {
        return stayReadOnly(result.error());
    }
    const LibraryPtr writing = std::move(result).value();
    if (const Result<QList<qint64>> now = reading->revision();
        readAt.ok() && now.ok() && readAt.value() == now.value()) {
        promoteLibrary(writing);
        closeQuietly(reading);
        return [this, caution = cautionOf(*writing)] {
            m_contents.checking = false;
            if (m_contents.caution != caution) {
                m_contents.caution = caution;
                emit contentsChanged();
            }
            emit opened();
        };
    }
    // Until it had the lock another program changed it, or what a crash left was cleared away.
    Result<LibraryContents> contents = contentsOf(*writing);
    if (!contents.ok()) {
        closeQuietly(writing);
        return stayReadOnly(contents.error());
    }
    promoteLibrary(writing);
    closeQuietly(reading);
    return [this, now = std::move(contents).value()]() mutable {
        m_contents.checking = false;
        if (now != m_contents) {
            take(std::move(now));
        }
        emit opened();
    };
}

std::function<void()> LibrarySession::stayReadOnly(const Error& error)
{
    return [this, error] {
        m_contents.checking = false;
        m_contents.whyReadOnly = error.message;
        m_contents.inUse = error.code == ErrorCode::InUse;
        emit opened();
        if (error.code == ErrorCode::NotClosed) {
            emit closedImproperly(m_contents.path, m_contents.whyReadOnly);
        }
    };
}

void LibrarySession::watchCaution()
{
    m_contents.caution.isEmpty() ? m_cautionTimer.stop() : m_cautionTimer.start();
}

void LibrarySession::refreshCaution()
{
    const LibraryPtr open = library();
    // While another library takes its place its own caution comes with it.
    if (open == nullptr || isBusy()) {
        return;
    }
    const QString caution = cautionOf(*open);
    if (caution != m_contents.caution) {
        m_contents.caution = caution;
        emit cautionChanged();
    }
    watchCaution();
}

void LibrarySession::reload()
{
    run([this](const LibraryPtr& open) -> std::function<void()> {
        if (open == nullptr) {
            return [] {};
        }
        Result<LibraryContents> contents = contentsOf(*open);
        if (!contents.ok()) {
            return [this, message = contents.error().message] {
                emit failed(tr("The library could not be read"), message);
            };
        }
        return [this, fresh = std::move(contents).value()]() mutable {
            fresh.checking = m_contents.checking;
            fresh.whyReadOnly = m_contents.whyReadOnly;
            fresh.inUse = m_contents.inUse;
            take(std::move(fresh));
        };
    });
}

void LibrarySession::restoreFromTrash(const QList<qint64>& ids)
{
    run([this, ids](const LibraryPtr& open) -> std::function<void()> {
        if (open == nullptr) {
            return [] {};
        }
        const Result<int> count = open->restoreFromTrash(ids);
        if (!count.ok()) {
            return [this, message = count.error().message] {
                emit failed(tr("The photos could not be put back"), message);
            };
        }
        return [this, restoredPhotos = count.value()] { emit restored(restoredPhotos); };
    });
    synchronise();
}

void LibrarySession::emptyTrash(const QList<qint64>& ids)
{
    run([this, ids](const LibraryPtr& open) -> std::function<void()> {
        if (open == nullptr) {
            return [] {};
        }
        const Result<EmptiedTrash> emptied = open->emptyTrash(ids);
        if (!emptied.ok()) {
            return [this, message = emptied.error().message] {
                emit failed(tr("Emptying the trash ended with an error"), message);
            };
        }
        return [this, done = emptied.value()] { emit trashEmptied(done.photos, done.bytes); };
    });
    synchronise();
}

void LibrarySession::synchronise()
{
    reload();
    run([this](const LibraryPtr& open) -> std::function<void()> {
        if (open == nullptr) {
            return [] {};
        }
        const Result<void> followed = open->synchronise();
        if (!followed.ok()) {
            return [this, message = followed.error().message] {
                emit failed(tr("The catalogue could not be written"), message);
            };
        }
        return [] {};
    });
}

QList<qint64> LibrarySession::selection() const
{
    const std::lock_guard guard(m_mutex);
    return m_selection;
}

void LibrarySession::setSelection(const QList<qint64>& ids)
{
    LibraryPtr open;
    {
        const std::lock_guard guard(m_mutex);
        if (m_library == nullptr || m_library->path() != m_contents.path) {
            return;
        }
        m_selection = ids;
        if (m_selectionHeld) {
            return;
        }
        m_applicationSelection = ids;
        open = m_library;
    }
    open->setSelection(ids);
}

void LibrarySession::holdSelection(bool held)
{
    QList<qint64> selected;
    {
        const std::lock_guard guard(m_mutex);
        m_selectionHeld = held;
        selected = m_selection;
    }
    if (!held) {
        setSelection(selected);
    }
}

void LibrarySession::requestStop()
{
    m_stopRequested = true;
    stopChecking();
    if (const LibraryPtr open = library()) {
        open->requestStop();
    }
}

void LibrarySession::stopChecking()
{
    m_checkStopped = true;
    m_care.stop();
}

PhotoApplicationPtr LibrarySession::applicationWithBundleIdentifier(const QString& /*identifier*/)
{
    return std::make_shared<Application>(*this);
}

std::unique_ptr<PhotoTurn> LibrarySession::beginPhotoTurn()
{
    if (const LibraryPtr open = settledLibrary()) {
        return open->beginPhotoTurn();
    }
    return std::make_unique<NoTurn>();
}
