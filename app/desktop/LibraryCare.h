#pragma once

#include "CareProgress.h"
#include "Finding.h"
#include "LibraryBackups.h"
#include "PhotoLibrary.h"
#include "Result.h"

#include <QList>
#include <QObject>
#include <QString>

#include <atomic>
#include <functional>

class LibrarySession;

/// Looks after libraries: verifies and mends the one that is open, makes, lists and restores dated
/// copies. The work is done on the session's thread, one after another, and a scan that is asked
/// for meanwhile waits for its end. Main thread.
class LibraryCare final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LibraryCare)
public:
    enum class Work : quint8 { None, Verify, Repair, BackUp, List, Restore };

    /// Whether a library that iPhoto did not close, or has open elsewhere, is accepted as it is.
    enum class Unclosed : quint8 { Refuse, Accept };

    /// What a verification found, and where the copy would lie that a repair makes before.
    struct Verification {
        QList<Finding> findings;
        QString backupsFolder; ///< null where that is not known
    };

    /// The session outlives it.
    explicit LibraryCare(LibrarySession& session);

    /// Ends with verified() or failed().
    void verify();
    /// Also of a library that is open for reading only since its rows contradict each other; it is
    /// opened anew afterwards. Ends with repaired() or failed().
    void repair(Unclosed unclosed);
    /// Ends with backedUp() or failed().
    void backUp();
    /// Of any library, also one whose databases are damaged. Ends with listed() or failed().
    void list(const QString& library);
    /// Puts the copy of that name in place of what is there; the library is opened anew then. No
    /// other library may be open. Ends with restored() or failed(), nothing changed.
    void restore(const QString& library, const QString& name, Unclosed unclosed);

    /// Ends a verification or a repair soon: failed() tells "Interrupted". The other work is short
    /// or must not be cut off.
    void stop() { m_stopRequested = true; }

    [[nodiscard]] Work work() const { return m_work; }

    [[nodiscard]] bool isWorking() const { return m_work != Work::None; }

signals:
    /// Some work began or ended; at its end before the signal that tells what came of it.
    void workChanged();
    /// At most ten times a second but for a new stage.
    void progressed(const CareProgress& progress);
    void verified(const LibraryCare::Verification& verification);
    void repaired(const RepairReport& report);
    void backedUp(const LibraryBackup& backup);
    /// `warnings`: what a person should know before one is restored.
    void listed(const QList<LibraryBackup>& backups, const QStringList& warnings);
    void restored(const LibraryBackups::Restored& restored);
    void failed(const Error& error);

private:
    /// What the main thread does when the work is done.
    using Rest = std::function<void()>;
    using Do = std::function<Rest(const std::shared_ptr<PhotoLibrary>&)>;

    void begin(Work work, Do step);
    [[nodiscard]] Rest failure(const Error& error);
    [[nodiscard]] std::function<bool()> shouldStop();
    [[nodiscard]] CareProgress::Tell tell();
    [[nodiscard]] Rest reported(const Result<RepairReport>& report);

    LibrarySession& m_session;
    Work m_work{Work::None};
    std::atomic<bool> m_stopRequested{false};
};
