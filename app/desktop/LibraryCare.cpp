#include "LibraryCare.h"

#include "LibrarySession.h"
#include "SystemLog.h"

#include <QElapsedTimer>

#include <memory>
#include <optional>
#include <utility>

namespace
{

constexpr qint64 kShortestPauseMilliseconds = 100;

using LibraryPtr = std::shared_ptr<PhotoLibrary>;

/// A library that is open for reading only cannot be mended as it is: its rows may be what is to
/// be mended.
Result<RepairReport> repairedApart(const QString& path,
                                   OpenOptions options,
                                   const std::function<bool()>& shouldStop,
                                   const CareProgress::Tell& tell)
{
    options.access = Access::Write;
    options.forRepair = true;
    options.shouldStop = shouldStop;
    const Result<std::unique_ptr<PhotoLibrary>> opened = PhotoLibrary::open(path, options);
    if (!opened.ok()) {
        return opened.error();
    }
    Result<RepairReport> report = opened.value()->repair(shouldStop, tell);
    const Result<void> closed = opened.value()->close();
    if (report.ok() && !closed.ok() && !report.value().failures.contains(closed.error().message)) {
        report.value().failures.append(closed.error().message);
    }
    return report;
}

} // namespace

LibraryCare::LibraryCare(LibrarySession& session)
    : m_session(session)
{
}

void LibraryCare::begin(Work work, Do step)
{
    m_stopRequested = false;
    m_work = work;
    emit workChanged();
    m_session.runApart([this, step = std::move(step)](const LibraryPtr& open) -> Rest {
        return [this, rest = step(open)] {
            m_work = Work::None;
            emit workChanged();
            rest();
        };
    });
}

LibraryCare::Rest LibraryCare::failure(const Error& error)
{
    return [this, error] { emit failed(error); };
}

std::function<bool()> LibraryCare::shouldStop()
{
    return [this] { return m_stopRequested.load(); };
}

CareProgress::Tell LibraryCare::tell()
{
    struct Told {
        QElapsedTimer since;
        std::optional<CareProgress::Stage> stage;
    };

    return [this, told = std::make_shared<Told>()](const CareProgress& progress) {
        if (told->stage == progress.stage && told->since.elapsed() < kShortestPauseMilliseconds) {
            return;
        }
        told->stage = progress.stage;
        told->since.start();
        QMetaObject::invokeMethod(
            this, [this, progress] { emit progressed(progress); }, Qt::QueuedConnection);
    };
}

void LibraryCare::verify()
{
    begin(Work::Verify, [this](const LibraryPtr& open) {
        const Result<QList<Finding>> found = open->verify(shouldStop(), tell());
        if (!found.ok()) {
            return failure(found.error());
        }
        const Result<QString> folder = LibraryBackups::folder(open->path());
        const Verification verification{found.value(), folder.ok() ? folder.value() : QString()};
        return Rest([this, verification] { emit verified(verification); });
    });
}

LibraryCare::Rest LibraryCare::reported(const Result<RepairReport>& report)
{
    if (!report.ok()) {
        return failure(report.error());
    }
    return [this, done = report.value()] { emit repaired(done); };
}

void LibraryCare::repair(Unclosed unclosed)
{
    const bool accept = unclosed == Unclosed::Accept;
    if (m_session.contents().isWritable()) {
        begin(Work::Repair, [this](const LibraryPtr& open) {
            return reported(open->repair(shouldStop(), tell()));
        });
        m_session.reload();
        return;
    }
    const QString path = m_session.contents().path;
    begin(Work::Repair, [this, path, accept](const LibraryPtr& /*open*/) {
        OpenOptions options;
        options.afterCrash = accept;
        options.volumeFolders = m_session.volumeFolders();
        return reported(repairedApart(path, options, shouldStop(), tell()));
    });
    m_session.open(path, accept);
}

void LibraryCare::backUp()
{
    const bool isWritable = m_session.contents().isWritable();
    begin(Work::BackUp, [this, isWritable](const LibraryPtr& open) {
        Result<LibraryBackup> made = Error{};
        if (isWritable) {
            const Result<QString> folder = open->backUp();
            made = folder.ok() ? Result<LibraryBackup>(LibraryBackups::at(folder.value()))
                               : folder.error();
        } else {
            made = LibraryBackups::make(open->path());
        }
        if (!made.ok()) {
            return failure(made.error());
        }
        return Rest([this, backup = made.value()] { emit backedUp(backup); });
    });
}

void LibraryCare::list(const QString& library)
{
    const bool isWritable = m_session.contents().isWritable();
    begin(Work::List, [this, library, isWritable](const LibraryPtr& open) {
        // What this program itself wrote meanwhile is no sign of another one.
        const bool isOurs = open != nullptr && isWritable;
        QStringList warnings = isOurs ? open->warnings() : LibraryBackups::warnings(library);
        if (isOurs && open->wasChangedByOthers()) {
            warnings.prepend(tr(
                "The databases of the library were changed while it is open here, as it seems by "
                "another program. If iPhoto has the library open, quit it first: it would write "
                "over what is restored."));
        }
        const Result<QList<LibraryBackup>> found = LibraryBackups::list(library);
        if (!found.ok()) {
            return failure(found.error());
        }
        return Rest([this, backups = found.value(), warnings] { emit listed(backups, warnings); });
    });
}

void LibraryCare::restore(const QString& library, const QString& name, Unclosed unclosed)
{
    const bool accept = unclosed == Unclosed::Accept;
    const bool wasOpen = m_session.isOpen();
    begin(Work::Restore, [this, library, name, accept, wasOpen](const LibraryPtr& open) {
        if (open != nullptr) {
            // Its lock is given up; the opening that follows puts it back.
            if (const Result<void> closed = open->close(); !closed.ok()) {
                systemLog(closed.error().message);
            }
        }
        const Result<LibraryBackups::Restored> done =
            LibraryBackups::restore(library, name, accept);
        if (!done.ok()) {
            return failure(done.error());
        }
        return Rest([this, library, accept, wasOpen, what = done.value()] {
            if (!wasOpen) {
                m_session.open(library, accept);
            }
            emit restored(what);
        });
    });
    if (wasOpen) {
        m_session.open(library, accept);
    }
}
