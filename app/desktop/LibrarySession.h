#pragma once

#include "LibraryContents.h"
#include "PhotoLibrary.h"
#include "Scripting.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QThreadPool>

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
    void restoreFromTrash(const QList<qint64>& ids);
    /// Deletes the trash's photos for good; ends with trashEmptied() and contentsChanged(), or
    /// failed().
    void emptyTrash();
    /// Brings sidecars and catalogues in step, as after a scan; ends with contentsChanged().
    void synchronise();

    [[nodiscard]] bool isOpen() const;

    /// Whether one of the operations above is under way.
    [[nodiscard]] bool isBusy() const { return m_underWay > 0; }

    [[nodiscard]] const LibraryContents& contents() const { return m_contents; }

    /// What the person selected, as the application's selection. While it is held, it is only
    /// remembered.
    void setSelection(const QList<qint64>& ids);

    [[nodiscard]] const QList<qint64>& selection() const { return m_selection; }

    /// While a scan runs, the application's selection is the scan's. Released, the person's own is
    /// put back.
    void holdSelection(bool held);
    /// Asks every import from now on to raise, so that a scan ends between two photos.
    void requestStop();

    // As the photo application; any thread. While a library is being opened or checked, any thread
    // but the main one waits for the end of that.
    [[nodiscard]] PhotoApplicationPtr
    applicationWithBundleIdentifier(const QString& identifier) override;
    [[nodiscard]] std::unique_ptr<PhotoTurn> beginPhotoTurn() override;

signals:
    /// The photos of a library that was just opened are in contents(); contentsChanged() came
    /// before.
    void shown();
    /// The check of the library that was opened last is over: whether it can be written to is in
    /// contents().
    void opened();
    /// Contents, or what is under way, are others than before.
    void contentsChanged();
    void busyChanged(bool busy);
    void restored(int photos);
    void trashEmptied(qint64 bytes);
    /// A person's operation failed: `title` in a few words, `text` with path and remedy.
    void failed(const QString& title, const QString& text);
    /// The library was opened for reading only, since iPhoto did not close it properly; the person
    /// may ask for open(path, true).
    void closedImproperly(const QString& path, const QString& text);

private:
    using LibraryPtr = std::shared_ptr<PhotoLibrary>;
    /// Runs on the session's thread; what it returns runs on the main thread.
    using Step = std::function<std::function<void()>(const LibraryPtr&)>;

    [[nodiscard]] LibraryPtr library() const;
    /// The library as a scan needs it.
    [[nodiscard]] LibraryPtr settledLibrary();
    void setLibrary(const LibraryPtr& library);
    void run(Step step);
    void take(LibraryContents contents);

    // The parts of an opening, on the session's thread; each returns what the main thread does.
    [[nodiscard]] std::function<void()>
    openAndCheck(const QString& path, bool afterCrash, const LibraryPtr& before);
    [[nodiscard]] std::function<void()>
    checkForWriting(const QString& path, bool afterCrash, const LibraryPtr& reading);
    [[nodiscard]] std::function<void()> refuse(const Error& error, bool wasOpen);
    [[nodiscard]] std::function<void()> stayReadOnly(const Error& error);
    void show(LibraryContents contents);

    mutable std::mutex m_mutex; ///< guards the next three
    LibraryPtr m_library;
    QList<qint64> m_selection; ///< read without it by the main thread, which alone changes it
    int m_openings{0};         ///< how many are under way
    std::condition_variable m_settled; ///< told when there is none any more
    std::atomic<bool> m_stopRequested{false};
    LibraryContents m_contents;
    bool m_selectionHeld{false};
    int m_underWay{0};
    QThreadPool m_worker; ///< one thread: operations go one after another
};
