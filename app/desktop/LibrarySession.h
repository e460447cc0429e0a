#pragma once

#include "LibraryCare.h"
#include "LibraryContents.h"
#include "PhotoLibrary.h"
#include "Scripting.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QThreadPool>
#include <QTimer>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

/// The library that the program has open, if any: opens, reads and closes it on a thread of its
/// own, and stands before it as the photo application that controller and engine ask. With no
/// library open that application does not run.
///
/// Threads: main, but for the ScriptingBridge methods, which a scan's thread calls too.
class LibrarySession final : public QObject, public ScriptingBridge
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LibrarySession)
public:
    using LibraryPtr = std::shared_ptr<PhotoLibrary>;
    /// Runs on the session's thread, with the library that is open then, if any; what it returns
    /// runs on the main thread.
    using Step = std::function<std::function<void()>(const LibraryPtr&)>;

    explicit LibrarySession(QObject* parent = nullptr);
    ~LibrarySession() override; ///< closes the library, waiting

    /// Opens the package in place of the one that is open. Its photos are there, and shown(),
    /// before it has been checked; then it is open for writing where that can be, else for reading,
    /// and opened(). Where it cannot even be read it has failed(): what was open stays open, unless
    /// it is the same package: then none is open, and contentsChanged() comes first.
    void open(const QString& path, bool afterCrash = false);
    /// Reads the contents anew; ends with contentsChanged() or failed().
    void reload();
    /// Takes photos out of the trash; ends with restored() and contentsChanged(), or failed().
    /// Sidecars and catalogues follow after that.
    void restoreFromTrash(const QList<qint64>& ids);
    /// Deletes those of the photos that are in the trash for good; ends with trashEmptied() and
    /// contentsChanged(), or failed().
    void emptyTrash(const QList<qint64>& ids);
    /// Reads the contents anew, then brings sidecars and catalogues in step, as after a scan:
    /// contentsChanged() does not wait for the files.
    void synchronise();

    /// Has something done on the session's thread when what was asked for before is done. A scan
    /// waits for its end, as for that of an opening.
    void runApart(Step step);

    /// What looks after the library.
    [[nodiscard]] LibraryCare& care() { return m_care; }

    /// Where disks of referenced masters are, for every opening from now on. Any thread.
    void setVolumeFolders(const QMap<QString, QString>& folders);
    [[nodiscard]] QMap<QString, QString> volumeFolders() const;

    [[nodiscard]] bool isOpen() const;

    /// Whether one of the operations above is under way.
    [[nodiscard]] bool isBusy() const { return m_underWay > 0; }

    [[nodiscard]] const LibraryContents& contents() const { return m_contents; }

    /// What the person selected among contents(), as the application's selection. While it is held,
    /// it is only remembered. While contents() are not those of the library that is open (another
    /// one was just opened), it counts for nothing.
    void setSelection(const QList<qint64>& ids);

    [[nodiscard]] QList<qint64> selection() const;

    /// While a scan runs, also one that waits for a check, the application's selection is the
    /// scan's: what was selected when it began. Released, the person's own is put back.
    void holdSelection(bool held);
    /// Asks every import from now on to raise, so that a scan ends between two photos, and does
    /// what stopChecking() does.
    void requestStop();
    /// Ends a check that is under way: the library stays open for reading, which opened() tells.
    /// So too a verification or a repair.
    void stopChecking();

    // As the photo application; any thread. While a library is being opened or checked, each call
    // of the application waits for the end of that, on any thread but the main one: there, it asks
    // the library that is open at the moment.
    [[nodiscard]] PhotoApplicationPtr
    applicationWithBundleIdentifier(const QString& identifier) override;
    [[nodiscard]] std::unique_ptr<PhotoTurn> beginPhotoTurn() override;

signals:
    /// The photos of a library that was just opened are in contents(); contentsChanged() came
    /// before.
    void shown();
    /// What is to be known before anything is written is other than before, since time went by.
    void cautionChanged();
    /// The check of the library that was opened last is over: whether it can be written to is in
    /// contents().
    void opened();
    /// Contents, or what is under way, are others than before.
    void contentsChanged();
    void busyChanged(bool busy);
    void restored(int photos);
    void trashEmptied(qsizetype photos, qint64 bytes);
    /// A person's operation failed: `title` in a few words, `text` with path and remedy.
    void failed(const QString& title, const QString& text);
    /// The library was opened for reading only, since iPhoto did not close it properly; the person
    /// may ask for open(path, true).
    void closedImproperly(const QString& path, const QString& text);

private:
    /// The photo application of whatever library is open.
    class Application;

    [[nodiscard]] LibraryPtr library() const;
    /// The library as a scan needs it.
    [[nodiscard]] LibraryPtr settledLibrary();
    /// The application of settledLibrary(); one that does not run where there is none.
    [[nodiscard]] PhotoApplicationPtr settledApplication();
    /// Another library, or none, takes the place of the one that is open; nothing is selected.
    void replaceLibrary(const LibraryPtr& library);
    /// The same library, for writing; what is selected stays.
    void promoteLibrary(const LibraryPtr& writing);
    void run(Step step);
    void take(LibraryContents contents);

    // The parts of an opening, on the session's thread; each returns what the main thread does.
    [[nodiscard]] std::function<void()>
    openAndCheck(const QString& path, bool afterCrash, const LibraryPtr& before);
    /// `readAt`: the revision that `reading` told before its contents were read.
    [[nodiscard]] std::function<void()> checkForWriting(const QString& path,
                                                        bool afterCrash,
                                                        const LibraryPtr& reading,
                                                        const Result<QList<qint64>>& readAt);
    [[nodiscard]] std::function<void()> refuse(const Error& error, bool wasOpen);
    [[nodiscard]] std::function<void()> stayReadOnly(const Error& error);
    void show(LibraryContents contents);
    void watchCaution();
    void refreshCaution();

    mutable std::mutex m_mutex; ///< guards what follows, up to m_settled; no call out under it
    LibraryPtr m_library;
    QList<qint64> m_selection;            ///< the person's
    QList<qint64> m_applicationSelection; ///< the same, or the scan's while it is held
    bool m_selectionHeld{false};
    QMap<QString, QString> m_volumeFolders;
    int m_openings{0};                 ///< how many, and other steps apart, are under way
    std::condition_variable m_settled; ///< told when there is none any more
    std::atomic<bool> m_stopRequested{false};
    std::atomic<bool> m_checkStopped{false};
    LibraryContents m_contents;
    LibraryCare m_care{*this};
    QTimer m_cautionTimer; ///< runs as long as there is a caution
    int m_underWay{0};
    QThreadPool m_worker; ///< one thread: operations go one after another
};
