#include "LibraryRepair.h"

#include "AtomicFile.h"
#include "Catalogues.h"
#include "DerivedRows.h"
#include "LibraryErrors.h"
#include "LibraryVerification.h"
#include "LooseRows.h"
#include "ModelIds.h"
#include "PackageFiles.h"
#include "PhotoLibraryPrivate.h"
#include "ProxyFiles.h"
#include "Queries.h"
#include "RowQuestions.h"
#include "Sidecars.h"

#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;
using Stage = CareProgress::Stage;

namespace
{

using Findings = QList<Finding>;

/// Who watches the work, and may stop it.
struct Watch {
    const std::function<bool()>& shouldStop;
    const CareProgress::Tell& tell;

    [[nodiscard]] bool isStopped() const { return shouldStop && shouldStop(); }

    void say(const CareProgress& progress) const
    {
        if (tell) {
            tell(progress);
        }
    }
};

bool isRepairable(const Finding& finding)
{
    return finding.repairable;
}

/// What the databases have lost may still be told by sidecars: these stay. The paths of those that
/// lag; package-relative.
QSet<QString> keepLostWords(Writer& writer)
{
    Changes kept;
    for (const char* lost : {RowQuestions::kLostTexts, RowQuestions::kLostCameraTexts}) {
        const QStringList masters =
            Sql::texts(writer.connection, RowQuestions::column("masterUuid", lost).c_str());
        kept.masters.unite(QSet<QString>(masters.begin(), masters.end()));
    }
    kept.masters.intersect(writer.changes.masters);
    writer.changes.masters.subtract(kept.masters);
    QSet<QString> paths;
    const QList<Sidecars::Stale> lagging = Sidecars::compare(writer.connection, kept).stale;
    for (const Sidecars::Stale& sidecar : lagging) {
        paths.insert(sidecar.path.mid(writer.connection.packagePath().size() + 1));
    }
    return paths;
}

/// Rows, and the list of the sidecars and catalogues that are to follow. The paths of those that
/// lag and stay; package-relative.
QSet<QString> mendRows(Writer& writer)
{
    ModelIds::mend(writer); // before the rows go that tell which ids were given out
    LooseRows::mend(writer);
    DerivedRows::mend(writer);
    writer.changes.unite(
        Sidecars::compare(writer.connection, LibraryVerification::allObjects(writer.connection))
            .lagging);
    QSet<QString> kept = keepLostWords(writer);
    const Findings ofCatalogues = Catalogues::compare(writer.connection);
    writer.changes.catalogues =
        writer.changes.catalogues || std::ranges::any_of(ofCatalogues, isRepairable);
    return kept;
}

/// Writes one picture. It is named by the databases already, so that a crash leaves either all of
/// it or what was there before, nothing, beside what the next opening for writing removes.
Result<void> writePicture(Connection& connection, const ProxyFiles::Missing& missing)
{
    const Result<QByteArray> bytes = ProxyFiles::make(connection, missing);
    if (!bytes.ok()) {
        return bytes.error();
    }
    if (Result<void> allowed =
            PackageFiles::mayBeWritten(connection.packagePath(), missing.relativePath);
        !allowed.ok()) {
        return allowed;
    }
    const QString path = connection.packagePath() + u'/' + missing.relativePath;
    Result<void> folder = AtomicFile::makeFolder(QFileInfo(path).path());
    return folder.ok() ? AtomicFile::write(path, bytes.value(), AtomicFile::Existing::Refuse)
                       : folder;
}

Result<void> announce(PhotoLibraryPrivate& library, const QList<ProxyFiles::Missing>& pictures)
{
    QStringList paths;
    for (const ProxyFiles::Missing& picture : pictures) {
        paths << picture.relativePath;
    }
    return paths.isEmpty() ? Result<void>() : library.announcePictures(paths);
}

/// What was done of what was to be done.
struct Work {
    bool rowsMended{false};
    bool everyFollows{false}; ///< no sidecar and no catalogue was left alone
    bool stopped{false};      ///< before all was done, on request or by an error
    QSet<QString> undone;     ///< sidecars that stay, pictures that are missing; package-relative
    QStringList failures;     ///< a sentence for each thing that could not be done

    void endWith(const Error& error)
    {
        failures.append(error.message);
        stopped = true;
    }
};

void makePicture(Connection& connection, const ProxyFiles::Missing& missing, Work& work)
{
    const Result<void> made = writePicture(connection, missing);
    if (made.ok()) {
        work.undone.remove(missing.relativePath);
    } else {
        work.failures.append(
            u"%1: %2"_s.arg(missing.relativePath, LibraryErrors::asSentence(made.error().message)));
    }
}

Result<void>
makePictures(PhotoLibraryPrivate& library, Connection& connection, const Watch& watch, Work& work)
{
    const QList<ProxyFiles::Missing> all = ProxyFiles::missing(connection);
    for (const ProxyFiles::Missing& missing : all) {
        work.undone.insert(missing.relativePath);
    }
    if (Result<void> announced = announce(library, all); !announced.ok()) {
        return announced;
    }
    qint64 begun = 0;
    // A thumbnail may be made from a preview that is made only now.
    for (const bool previews : {true, false}) {
        for (const ProxyFiles::Missing& missing : all) {
            work.stopped = watch.isStopped();
            if (work.stopped) {
                return {};
            }
            const bool isPreview = missing.kind == ProxyFiles::Kind::Preview;
            if (isPreview == previews && ProxyFiles::canBeMade(connection, missing)) {
                watch.say({Stage::Pictures, ++begun, all.size()});
                makePicture(connection, missing, work);
            }
        }
    }
    return {};
}

Result<Findings> verified(PhotoLibraryPrivate& library, const Watch& watch)
{
    return library.tryRead([&](Connection& connection) {
        return LibraryVerification::findings(
            connection, library.journaledFiles(), watch.shouldStop, watch.tell);
    });
}

Work mend(PhotoLibraryPrivate& library, const Watch& watch)
{
    Work work;
    watch.say({.stage = Stage::Mending});
    const Result<void> rows = library.tryWrite([&](WriteTransaction& transaction) -> Result<void> {
        Writer writer = transaction.writer();
        work.undone = mendRows(writer);
        return {};
    });
    if (!rows.ok()) {
        work.endWith(rows.error());
        return work;
    }
    work.rowsMended = true;
    const Result<Result<void>> asked = library.tryRead(
        [&](Connection& connection) { return makePictures(library, connection, watch, work); });
    const Result<void> pictures = asked.ok() ? asked.value() : asked.error();
    if (!pictures.ok()) {
        work.endWith(pictures.error());
    }
    const Result<void> followed = library.synchronise();
    // What is left alone stays a finding.
    if (!followed.ok() && !LibraryErrors::isLeftAlone(followed)) {
        work.endWith(followed.error());
    }
    work.everyFollows = pictures.ok() && followed.ok();
    return work;
}

bool isOfDatabases(const Finding& finding)
{
    return finding.where.startsWith("Database/apdb/"_L1);
}

/// Of findings before a repair that ended early, those that it is known to have mended.
bool isMended(const Finding& finding, const Work& work)
{
    return finding.repairable && !work.undone.contains(finding.where) &&
           (isOfDatabases(finding) ? work.rowsMended : work.everyFollows);
}

/// Looks again; nothing where that, or the work before it, ended early.
std::optional<Findings> stillThere(PhotoLibraryPrivate& library, const Watch& watch, Work& work)
{
    if (work.stopped) {
        return std::nullopt;
    }
    const Result<Findings> after = verified(library, watch);
    if (after.ok()) {
        return after.value();
    }
    work.stopped = true;
    if (after.error().code != ErrorCode::Interrupted) {
        work.failures.append(after.error().message);
    }
    return std::nullopt;
}

} // namespace

Result<RepairReport> LibraryRepair::run(PhotoLibraryPrivate& library,
                                        const std::function<bool()>& shouldStop,
                                        const CareProgress::Tell& tell)
{
    const Watch watch{shouldStop, tell};
    const Result<Findings> before = verified(library, watch);
    if (!before.ok()) {
        return before.error();
    }
    RepairReport report;
    if (std::ranges::none_of(before.value(), isRepairable)) {
        report.left = before.value();
        return report;
    }
    watch.say({.stage = Stage::Backup});
    const Result<QString> backup = library.backUp();
    if (!backup.ok()) {
        return backup.error();
    }
    Work work = mend(library, watch);
    const std::optional<Findings> after = stillThere(library, watch, work);
    report.backup = backup.value();
    report.failures = work.failures;
    report.stopped = work.stopped;
    report.left = after.value_or(Findings());
    for (const Finding& finding : before.value()) {
        const bool isGone = after ? !after->contains(finding) : isMended(finding, work);
        if (isGone) {
            report.mended.append(finding);
        } else if (!after) {
            report.left.append(finding);
        }
    }
    return report;
}
