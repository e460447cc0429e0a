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
#include <utility>

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

/// What the databases have lost may still be told by sidecars: these stay.
void keepLostWords(Writer& writer)
{
    QStringList masters;
    for (const char* lost : {RowQuestions::kLostTexts, RowQuestions::kLostCameraTexts}) {
        masters << Sql::texts(writer.connection, RowQuestions::column("masterUuid", lost).c_str());
    }
    writer.changes.masters.subtract(QSet<QString>(masters.begin(), masters.end()));
}

/// Rows, and the list of the sidecars and catalogues that are to follow.
void mendRows(Writer& writer)
{
    ModelIds::mend(writer); // before the rows go that tell which ids were given out
    LooseRows::mend(writer);
    DerivedRows::mend(writer);
    writer.changes.unite(
        Sidecars::compare(writer.connection, LibraryVerification::allObjects(writer.connection))
            .lagging);
    keepLostWords(writer);
    const Findings ofCatalogues = Catalogues::compare(writer.connection);
    writer.changes.catalogues =
        writer.changes.catalogues || std::ranges::any_of(ofCatalogues, isRepairable);
}

/// Writes one picture. It is named by the databases already, so that a crash leaves either all of
/// it or what was there before, nothing, beside what the next opening for writing removes.
Result<void> writePicture(Connection& connection, const ProxyFiles::Missing& missing)
{
    const Result<QByteArray> bytes = ProxyFiles::make(connection, missing);
    if (!bytes.ok()) {
        return bytes.error();
    }
    if (const Result<void> allowed =
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
    QSet<QString> missing;    ///< pictures that were not there; package-relative
    QSet<QString> made;       ///< those of them that were made
    QStringList failures;     ///< sentences about those that could not be made after all
    bool stopped{false};      ///< before all pictures were made
    bool everyFollows{false}; ///< no sidecar and no catalogue was left alone
};

void makePicture(Connection& connection, const ProxyFiles::Missing& missing, Work& work)
{
    const Result<void> made = writePicture(connection, missing);
    if (made.ok()) {
        work.made.insert(missing.relativePath);
    } else {
        work.failures.append(
            u"%1: %2"_s.arg(missing.relativePath, LibraryErrors::asSentence(made.error().message)));
    }
}

Result<Work> makePictures(PhotoLibraryPrivate& library, Connection& connection, const Watch& watch)
{
    Work work;
    const QList<ProxyFiles::Missing> all = ProxyFiles::missing(connection);
    if (const Result<void> announced = announce(library, all); !announced.ok()) {
        return announced.error();
    }
    for (const ProxyFiles::Missing& missing : all) {
        work.missing.insert(missing.relativePath);
    }
    qint64 begun = 0;
    // A thumbnail may be made from a preview that is made only now.
    for (const bool previews : {true, false}) {
        for (const ProxyFiles::Missing& missing : all) {
            work.stopped = watch.isStopped();
            if (work.stopped) {
                return work;
            }
            const bool isPreview = missing.kind == ProxyFiles::Kind::Preview;
            if (isPreview == previews && ProxyFiles::canBeMade(connection, missing)) {
                watch.say({Stage::Pictures, ++begun, all.size()});
                makePicture(connection, missing, work);
            }
        }
    }
    return work;
}

Result<Findings> verified(PhotoLibraryPrivate& library, const Watch& watch)
{
    return library.tryRead([&](Connection& connection) {
        return LibraryVerification::findings(
            connection, library.journaledFiles(), watch.shouldStop, watch.tell);
    });
}

Result<Work> mend(PhotoLibraryPrivate& library, const Watch& watch)
{
    watch.say({.stage = Stage::Mending});
    const Result<void> rows = library.tryWrite([](WriteTransaction& transaction) -> Result<void> {
        Writer writer = transaction.writer();
        mendRows(writer);
        return {};
    });
    if (!rows.ok()) {
        return rows.error();
    }
    Result<Result<Work>> pictures = library.tryRead(
        [&](Connection& connection) { return makePictures(library, connection, watch); });
    const Result<void> followed = library.synchronise();
    if (!pictures.ok()) {
        return pictures.error();
    }
    Result<Work> work = std::move(pictures).value();
    // What is left alone stays a finding.
    if (!followed.ok() && !LibraryErrors::isLeftAlone(followed)) {
        return followed.error();
    }
    if (work.ok()) {
        work.value().everyFollows = followed.ok();
    }
    return work;
}

/// Of findings before a repair that was stopped, those that it is known to have mended: pictures
/// that it made, and all else unless something was left alone.
bool isMended(const Finding& finding, const Work& work)
{
    return finding.repairable &&
           (work.missing.contains(finding.where) ? work.made.contains(finding.where)
                                                 : work.everyFollows);
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
    const Result<Work> work = mend(library, watch);
    if (!work.ok()) {
        return work.error();
    }
    const Result<Findings> after = verified(library, watch);
    const bool isVerified = after.ok();
    if (!isVerified && after.error().code != ErrorCode::Interrupted) {
        return after.error();
    }
    report.backup = backup.value();
    report.failures = work.value().failures;
    report.stopped = work.value().stopped || !isVerified;
    report.left = isVerified ? after.value() : Findings();
    for (const Finding& finding : before.value()) {
        const bool isGone =
            isVerified ? !report.left.contains(finding) : isMended(finding, work.value());
        if (isGone) {
            report.mended.append(finding);
        } else if (!isVerified) {
            report.left.append(finding);
        }
    }
    return report;
}
