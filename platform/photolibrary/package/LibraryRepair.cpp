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

#include <algorithm>

using namespace Qt::StringLiterals;
using Stage = CareProgress::Stage;

namespace
{

using Findings = QList<Finding>;

/// Who watches the work, and may stop it.
struct Watch {
    const std::function<bool()>& shouldStop;
    const CareProgress::Tell& tell;

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

Error interrupted(const QString& package)
{
    return {
        ErrorCode::Interrupted,
        u"The repair of the library \"%1\" was interrupted; what was mended stays."_s.arg(package)};
}

/// What the databases have lost may still be told by sidecars: these stay.
void keepLostWords(Writer& writer)
{
    QStringList masters;
    for (const char* lost :
         {RowQuestions::kLostKeywords, RowQuestions::kLostTexts, RowQuestions::kLostCameraTexts}) {
        masters << Sql::texts(writer.connection, RowQuestions::column("masterUuid", lost).c_str());
    }
    writer.changes.masters.subtract(QSet<QString>(masters.begin(), masters.end()));
    writer.changes.keywords = writer.changes.keywords && masters.isEmpty();
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
Result<void> makePicture(Connection& connection, const ProxyFiles::Missing& missing)
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

/// Sentences about pictures that could not be made after all.
Result<QStringList>
makePictures(PhotoLibraryPrivate& library, Connection& connection, const Watch& watch)
{
    QStringList failures;
    const QList<ProxyFiles::Missing> all = ProxyFiles::missing(connection);
    if (const Result<void> announced = announce(library, all); !announced.ok()) {
        return announced.error();
    }
    qint64 begun = 0;
    // A thumbnail may be made from a preview that is made only now.
    for (const bool previews : {true, false}) {
        for (const ProxyFiles::Missing& missing : all) {
            if (watch.shouldStop && watch.shouldStop()) {
                return interrupted(connection.packagePath());
            }
            const bool isPreview = missing.kind == ProxyFiles::Kind::Preview;
            if (isPreview != previews || !ProxyFiles::canBeMade(connection, missing)) {
                continue;
            }
            watch.say({Stage::Pictures, ++begun, all.size()});
            const Result<void> made = makePicture(connection, missing);
            if (!made.ok()) {
                failures.append(u"%1: %2"_s.arg(missing.relativePath,
                                                LibraryErrors::asSentence(made.error().message)));
            }
        }
    }
    return failures;
}

Result<Findings> verified(PhotoLibraryPrivate& library, const Watch& watch)
{
    return library.tryRead([&](Connection& connection) {
        return LibraryVerification::findings(
            connection, library.journaledFiles(), watch.shouldStop, watch.tell);
    });
}

Result<QStringList> mend(PhotoLibraryPrivate& library, const Watch& watch)
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
    const Result<Result<QStringList>> pictures = library.tryRead(
        [&](Connection& connection) { return makePictures(library, connection, watch); });
    const Result<void> followed = library.synchronise();
    if (!pictures.ok()) {
        return pictures.error();
    }
    // What is left alone stays a finding.
    if (!followed.ok() && !LibraryErrors::isLeftAlone(followed)) {
        return followed.error();
    }
    return pictures.value();
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
    const Result<QStringList> mended = mend(library, watch);
    if (!mended.ok()) {
        return mended.error();
    }
    const Result<Findings> after = verified(library, watch);
    if (!after.ok()) {
        return after.error();
    }
    report.backup = backup.value();
    report.failures = mended.value();
    report.left = after.value();
    for (const Finding& finding : before.value()) {
        if (!report.left.contains(finding)) {
            report.mended.append(finding);
        }
    }
    return report;
}
