#include "LibraryVerification.h"

#include "Catalogues.h"
#include "DerivedRows.h"
#include "FileFindings.h"
#include "IntegrityCheck.h"
#include "LooseRows.h"
#include "Queries.h"
#include "RoomyCache.h"
#include "Schema.h"
#include "Sidecars.h"

#include <sqlite3.h>

using namespace Qt::StringLiterals;
using Stage = CareProgress::Stage;

namespace
{

QSet<QString> uuids(Connection& connection, const char* sql)
{
    const QStringList found = Sql::texts(connection, sql);
    return {found.begin(), found.end()};
}

QString wordsFor(const Sidecars::Stale& stale)
{
    switch (stale.found) {
    case SidecarFile::Found::Missing:
        return u"This sidecar is missing."_s;
    case SidecarFile::Found::Damaged:
        return u"This sidecar is damaged."_s;
    case SidecarFile::Found::Whole:
        return u"This sidecar tells otherwise than the databases: %1."_s.arg(
            stale.keys.join(u", "_s));
    }
    Q_UNREACHABLE();
}

void tellSidecars(Connection& connection, const Changes& objects, QList<Finding>& findings)
{
    const Sidecars::Comparison compared = Sidecars::compare(connection, objects);
    for (const Sidecars::Stale& stale : compared.stale) {
        findings.append(
            {wordsFor(stale), stale.path.mid(connection.packagePath().size() + 1), true});
    }
    for (const QString& sentence : compared.unreadable) {
        findings.append({sentence, u"Database"_s, false});
    }
}

/// `goOn` is asked between photos, with how many are done and how many there are: no single
/// question of theirs takes long, but all together do.
template <typename GoOn>
void tellAllSidecars(Connection& connection, QList<Finding>& findings, const GoOn& goOn)
{
    Changes objects = LibraryVerification::allObjects(connection);
    QStringList masters(objects.masters.begin(), objects.masters.end());
    masters.sort();
    qint64 done = 0;
    for (const QString& master : std::as_const(masters)) {
        Changes one;
        one.masters = {master};
        tellSidecars(connection, one, findings);
        goOn(++done, masters.size());
    }
    objects.masters.clear();
    tellSidecars(connection, objects, findings);
}

} // namespace

Changes LibraryVerification::allObjects(Connection& connection)
{
    Changes changes;
    changes.masters = uuids(connection, "SELECT uuid FROM RKMaster");
    changes.albums = uuids(connection, "SELECT uuid FROM RKAlbum");
    changes.folders = uuids(connection, "SELECT uuid FROM RKFolder");
    changes.keywords = true;
    changes.adminData = true;
    changes.catalogues = true;
    return changes;
}

QList<Finding> LibraryVerification::findings(Connection& connection,
                                             const NamedFiles& namedFiles,
                                             const std::function<bool()>& shouldStop,
                                             const CareProgress::Tell& tell)
{
    const RoomyCache cache(connection);
    const Connection::Interruptible interruptible(connection, shouldStop);
    const auto goOn = [&shouldStop, &tell](Stage stage, qint64 done = 0, qint64 total = 0) {
        if (shouldStop && shouldStop()) {
            throw SQLite::Exception("interrupted", SQLITE_INTERRUPT);
        }
        if (tell) {
            tell({stage, done, total});
        }
    };
    goOn(Stage::Databases);
    IntegrityCheck::FormAndRows databases = IntegrityCheck::ofFormAndRows(
        connection, IntegrityCheck::Depth::Indexes, {&LooseRows::findings, &DerivedRows::findings});
    QList<Finding> findings = std::move(databases.findings);
    if (!databases.isWhole) {
        return findings;
    }
    if (Schema::mismatches(connection).isEmpty()) { // of older ones sidecars look otherwise
        goOn(Stage::Sidecars);
        tellAllSidecars(connection, findings, [&goOn](qint64 done, qint64 total) {
            goOn(Stage::Sidecars, done, total);
        });
        goOn(Stage::Catalogues);
        findings << Catalogues::compare(connection);
    }
    goOn(Stage::Files);
    findings << FileFindings::of(connection, namedFiles);
    return findings;
}
