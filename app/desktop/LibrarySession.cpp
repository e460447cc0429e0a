#include "LibrarySession.h"

#include "SystemLog.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

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

Result<LibraryContents> contentsOf(PhotoLibrary& library, const QString& whyReadOnly)
{
    LibraryContents contents;
    contents.path = library.path();
    contents.version = library.version();
    contents.whyReadOnly = whyReadOnly;
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

struct OpenedLibrary {
    std::shared_ptr<PhotoLibrary> library;
    LibraryContents contents;
    ErrorCode whyNotWritten{ErrorCode::Internal}; ///< says nothing when the contents are writable
};

/// For writing where that can be, else for reading.
Result<OpenedLibrary> openLibrary(const QString& path, bool afterCrash)
{
    OpenedLibrary opened;
    QString whyReadOnly;
    Result<std::unique_ptr<PhotoLibrary>> library =
        PhotoLibrary::open(path, {.access = Access::Write, .afterCrash = afterCrash});
    if (!library.ok()) {
        whyReadOnly = library.error().message;
        opened.whyNotWritten = library.error().code;
        library = PhotoLibrary::open(path, {.access = Access::Read, .afterCrash = false});
        if (!library.ok()) {
            return library.error();
        }
    }
    opened.library = std::move(library).value();
    Result<LibraryContents> contents = contentsOf(*opened.library, whyReadOnly);
    if (!contents.ok()) {
        return contents.error();
    }
    opened.contents = std::move(contents).value();
    return opened;
}

} // namespace

LibrarySession::LibrarySession(QObject* parent)
    : QObject(parent)
{
    m_worker.setMaxThreadCount(1);
    // A thread that ends gives up its connection to the library.
    m_worker.setExpiryTimeout(-1);
}

LibrarySession::~LibrarySession()
{
    m_worker.waitForDone();
    if (const LibraryPtr open = library()) {
        if (const Result<void> closed = open->close(); !closed.ok()) {
            systemLog(closed.error().message);
        }
    }
}

LibrarySession::LibraryPtr LibrarySession::library() const
{
    const std::lock_guard guard(m_mutex);
    return m_library;
}

void LibrarySession::setLibrary(const LibraryPtr& library)
{
    const std::lock_guard guard(m_mutex);
    m_library = library;
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
        // What the step leaves is done by the main thread, which also lives longer than the step.
        std::function<void()> rest = step(library());
        QMetaObject::invokeMethod(
            this,
            [this, rest = std::move(rest)] {
                if (--m_underWay == 0) {
                    emit busyChanged(false);
                }
                rest();
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
    run([this, path, afterCrash](const LibraryPtr& before) -> std::function<void()> {
        // The same library again: its lock is given up first.
        const bool again = before != nullptr && before->path() == path;
        if (again) {
            if (const Result<void> closed = before->close(); !closed.ok()) {
                systemLog(closed.error().message);
            }
        }
        Result<OpenedLibrary> result = openLibrary(path, afterCrash);
        if (!result.ok()) {
            if (again) {
                setLibrary(nullptr);
            }
            return [this, again, message = result.error().message] {
                if (again) {
                    m_selection.clear();
                    take({});
                }
                emit failed(tr("The library could not be opened"), message);
            };
        }
        if (before != nullptr && !again) {
            if (const Result<void> closed = before->close(); !closed.ok()) {
                systemLog(closed.error().message);
            }
        }
        setLibrary(result.value().library);
        return [this, now = std::move(result).value()]() mutable {
            m_selection.clear();
            const bool notClosed =
                !now.contents.isWritable() && now.whyNotWritten == ErrorCode::NotClosed;
            take(std::move(now.contents));
            emit opened();
            if (notClosed) {
                emit closedImproperly(m_contents.path, m_contents.whyReadOnly);
            }
        };
    });
}

void LibrarySession::reload()
{
    run([this,
         whyReadOnly = m_contents.whyReadOnly](const LibraryPtr& open) -> std::function<void()> {
        if (open == nullptr) {
            return [] {};
        }
        Result<LibraryContents> contents = contentsOf(*open, whyReadOnly);
        if (!contents.ok()) {
            return [this, message = contents.error().message] {
                emit failed(tr("The library could not be read"), message);
            };
        }
        return [this, fresh = std::move(contents).value()]() mutable { take(std::move(fresh)); };
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

void LibrarySession::emptyTrash()
{
    run([this](const LibraryPtr& open) -> std::function<void()> {
        if (open == nullptr) {
            return [] {};
        }
        const Result<qint64> freed = open->emptyTrash();
        if (!freed.ok()) {
            return [this, message = freed.error().message] {
                emit failed(tr("The trash could not be emptied"), message);
            };
        }
        return [this, bytes = freed.value()] { emit trashEmptied(bytes); };
    });
    synchronise();
}

void LibrarySession::synchronise()
{
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
    reload();
}

void LibrarySession::setSelection(const QList<qint64>& ids)
{
    m_selection = ids;
    const LibraryPtr open = library();
    if (open != nullptr && !m_selectionHeld) {
        open->setSelection(ids);
    }
}

void LibrarySession::holdSelection(bool held)
{
    m_selectionHeld = held;
    if (!held) {
        setSelection(m_selection);
    }
}

void LibrarySession::requestStop()
{
    if (const LibraryPtr open = library()) {
        open->requestStop();
    }
}

PhotoApplicationPtr LibrarySession::applicationWithBundleIdentifier(const QString& identifier)
{
    if (const LibraryPtr open = library()) {
        return open->applicationWithBundleIdentifier(identifier);
    }
    return std::make_shared<ClosedApplication>();
}

std::unique_ptr<PhotoTurn> LibrarySession::beginPhotoTurn()
{
    if (const LibraryPtr open = library()) {
        return open->beginPhotoTurn();
    }
    return std::make_unique<NoTurn>();
}
