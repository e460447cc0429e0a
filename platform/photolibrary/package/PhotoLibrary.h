#pragma once

#include "CareProgress.h"
#include "Finding.h"
#include "LibraryFacts.h"
#include "Result.h"
#include "Scripting.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class PhotoLibraryPrivate;

/// What an opening is for.
enum class Access : quint8 { Read, Write };

struct OpenOptions {
    Access access{Access::Read};
    /// Accept for writing a library that iPhoto did not close properly, once its integrity check
    /// passes and nothing else is found that a crash may have left (IntegrityCheck::ofCrash).
    bool afterCrash{false};
    /// Asked now and then while the databases are checked, which takes long for a large library;
    /// yes ends the opening with Interrupted. Called on the thread that opens and on another beside
    /// it; may be empty.
    std::function<bool()> shouldStop{};
    /// Where disks are here that referenced masters lie on: absolute folders by the name of the
    /// disk on the Mac, its own by "/". Masters on others are offline.
    QMap<QString, QString> volumeFolders{};
    /// Accept for writing a library whose rows do not pass the integrity check, to mend them. It
    /// must be whole as SQLite sees it. Nothing but repair() should be asked of it.
    bool forRepair{false};
};

/// A picture to be taken into the library by a program of our own.
struct ImportRequest {
    QString sourcePath;
    QString fileName;  ///< in the library; empty: the source's
    QString eventName; ///< imports of one run with the same name share an event
    /// An upright JPEG of full size, required for RAW masters: becomes the rendered preview.
    QByteArray preview;
    std::optional<double> latitude; ///< signed degrees; in place of the file's own, both or none
    std::optional<double> longitude;
};

/// An iPhoto '11 library package on disk, and the photo application that it stands in for: the
/// scripting surface (ScriptingBridge) and the plain reads and writes that the faces need.
///
/// The databases are the truth. A write outside a photo's turn is one transaction that commits at
/// once; inside a turn (see PhotoTurn) everything is one transaction. Sidecar property lists and
/// catalogues follow at synchronise(), at the latest when the library is closed. Before the first
/// write of a run a dated backup of databases and catalogues is made outside the package.
///
/// Threads: every method from any thread unless said otherwise; each thread has a connection of
/// its own; one thread writes at a time, others wait for it.
/// Lifetime: scripting objects may outlive it; their calls raise after it is closed.
class PhotoLibrary final : public ScriptingBridge
{
public:
    /// Opens the package. For writing: takes the writer's lock, recovers what a crash left
    /// (rolled-back journals, files of an unfinished turn, sidecars that lag).
    /// Errors, each naming the path and the remedy: NotFound, Unsupported (no library, foreign
    /// version, foreign triggers, Aperture), InUse, NotClosed, Unreadable, NotWritable, Damaged.
    /// Nothing is changed by a failed opening.
    [[nodiscard]] static Result<std::unique_ptr<PhotoLibrary>> open(const QString& path,
                                                                    const OpenOptions& options);
    ~PhotoLibrary() override; ///< close() without its result
    PhotoLibrary(const PhotoLibrary&) = delete;
    PhotoLibrary& operator=(const PhotoLibrary&) = delete;

    // -- as the photo application -----------------------------------------------------------
    [[nodiscard]] PhotoApplicationPtr
    applicationWithBundleIdentifier(const QString& identifier) override;
    [[nodiscard]] std::unique_ptr<PhotoTurn> beginPhotoTurn() override;

    /// What the user selected, in this order, as the application's selection.
    void setSelection(const QList<qint64>& photoIds);
    /// Asks every import from now on to raise "Interrupted". Any thread, not a signal handler.
    void requestStop();

    /// What the opening found that a person should know before anything is written: signs of
    /// another program, and what of a crash it could not clear away or bring in step. Or, of a
    /// library opened for reading, that another process of this program writes to it. A sentence or
    /// two each, often none. That of a change which another program made a moment before is left
    /// out once the change is a minute old.
    [[nodiscard]] QStringList warnings() const;

    /// Whether somebody else changed the databases since the library was opened for writing, as far
    /// as their files tell; no for one that was opened for reading. Waits for whoever writes.
    [[nodiscard]] bool wasChangedByOthers() const;

    // -- plain reads -------------------------------------------------------------------------
    [[nodiscard]] QString path() const;    ///< absolute
    [[nodiscard]] QString version() const; ///< of the application, "9.6.1"
    /// All photos out of the trash in the catalogue's order (by event, then by date), hidden ones
    /// marked.
    [[nodiscard]] Result<QList<PhotoFacts>> photos();
    [[nodiscard]] Result<QList<PhotoFacts>> trashedPhotos();
    /// Names the state of the databases as the calling thread sees it: equal to what it was told
    /// before when no other thread or program has changed anything since. What the thread itself
    /// wrote does not count. Errors, beside those of every read: the databases were replaced.
    [[nodiscard]] Result<QList<qint64>> revision();
    /// Checks everything, which takes as long as an opening for writing. `shouldStop`: as that of
    /// OpenOptions.
    [[nodiscard]] Result<LibrarySummary> summary(const std::function<bool()>& shouldStop = {});

    /// Compares databases, sidecars, catalogues and files, and tells what differs; empty for a
    /// library in which all agrees. Any access. Takes as long as summary() and a look at each
    /// sidecar. `shouldStop`: as that of OpenOptions.
    [[nodiscard]] Result<QList<Finding>> verify(const std::function<bool()>& shouldStop = {},
                                                const CareProgress::Tell& tell = {});

    // -- plain writes (library opened for writing) ------------------------------------------
    /// Imports a picture, RAW masters too, as one transaction; returns the photo's id.
    [[nodiscard]] Result<qint64> importPhoto(const ImportRequest& request);
    /// Takes photos out of the trash. Photos that are not in it stay as they are. Returns how many
    /// were restored.
    [[nodiscard]] Result<int> restoreFromTrash(const QList<qint64>& photoIds);
    /// Deletes photos in the trash for good: rows first, then files. Referenced masters are never
    /// deleted. `photoIds`: those that a person was asked about, of which what is no longer in the
    /// trash stays; without them all that is in it. Errors, beside those of every write:
    /// NotWritable when the photos are deleted but some of their files could not be removed; the
    /// message names them and says how much is free, and the next opening for writing tries again.
    [[nodiscard]] Result<EmptiedTrash>
    emptyTrash(const std::optional<QList<qint64>>& photoIds = std::nullopt);

    /// Mends what verify() finds and can be mended without a choice: statistics, indexes, id
    /// counters, sidecars, catalogues, rendered pictures. Everything else stays as it is, and no
    /// file is removed. A backup comes first, unless nothing is to be mended. A stop or an error
    /// after that is told by the report. Errors: those of every write, and Interrupted, before the
    /// backup; nothing is changed then.
    [[nodiscard]] Result<RepairReport> repair(const std::function<bool()>& shouldStop = {},
                                              const CareProgress::Tell& tell = {});

    /// Makes a dated copy of databases and catalogues now, whether or not this run made one before;
    /// returns its folder. LibraryBackups makes one of a library that is not open for writing.
    [[nodiscard]] Result<QString> backUp();

    /// Brings sidecars, AlbumData.xml and AlbumData2.xml in step with the databases. Does nothing
    /// when nothing changed since the last call. Errors, each saying that the photos are safe: what
    /// could not be written is tried again at the next call and at the next opening; Damaged also
    /// when AlbumData.xml cannot be read: it is never overwritten then; LeadsOut for what a link
    /// leads out of the package, which is said once and not tried again.
    [[nodiscard]] Result<void> synchronise();
    /// synchronise(), then gives up locks and connections. A damaged AlbumData.xml is no error
    /// here, but a line of the log; so is what a link leads out.
    [[nodiscard]] Result<void> close();

private:
    explicit PhotoLibrary(std::shared_ptr<PhotoLibraryPrivate> d);

    std::shared_ptr<PhotoLibraryPrivate> m_d;
};
