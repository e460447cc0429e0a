#include "Recovery.h"

#include "DatabaseFiles.h"
#include "PackageFiles.h"
#include "Queries.h"
#include "SidecarWriter.h"
#include "WholeFile.h"

#include <QDir>
#include <QFile>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

constexpr QLatin1StringView kFolderOfMasters("Masters/");
/// A super-journal names a few paths, each of 4096 bytes at most.
constexpr qint64 kMostOfSuperJournal = qint64{64} * 1024;

QString databaseFolder(Connection& connection)
{
    return connection.packagePath() + "/Database/apdb/"_L1;
}

bool masterFileIsKnown(Connection& connection, const QString& relative)
{
    return Sql::firstInteger(connection,
                             "SELECT modelId FROM RKMaster WHERE imagePath = ?",
                             relative.mid(kFolderOfMasters.size()))
        .has_value();
}

/// Whether a master or a version has the uuid.
bool photoIsKnown(Connection& connection, const QString& uuid)
{
    return Sql::firstInteger(connection,
                             "SELECT modelId FROM RKMaster WHERE uuid = ?1 UNION ALL"
                             " SELECT modelId FROM RKVersion WHERE uuid = ?1",
                             uuid)
        .has_value();
}

/// The journals of the three databases: with their write lock held, and nothing written since, one
/// that is still there is dead. SQLite would have rolled back and removed any other.
void removeDeadJournals(const QString& folder)
{
    for (const QLatin1StringView name : DatabaseFiles::kTogether) {
        QFile::remove(folder + name + "-journal"_L1);
    }
}

/// A super-journal lists the full paths of its journals, each ended by NUL. While one of those is
/// left, of whichever database, it decides about that database's last transaction.
void removeDeadSuperJournals(const QString& folder)
{
    QStringList patterns;
    for (const QLatin1StringView name : DatabaseFiles::kTogether) {
        patterns << name + "-mj*"_L1;
    }
    for (const QString& name : QDir(folder).entryList(patterns, QDir::Files)) {
        const Result<QByteArray> content = WholeFile::read(folder + name, kMostOfSuperJournal);
        if (!content.ok()) {
            continue;
        }
        const QList<QByteArray> journals = content.value().split('\0');
        const bool needed =
            std::any_of(journals.begin(), journals.end(), [](const QByteArray& journal) {
                return !journal.isEmpty() && QFile::exists(QFile::decodeName(journal));
            });
        if (!needed) {
            QFile::remove(folder + name);
        }
    }
}

bool wasCommitted(Connection& connection, const QStringList& made)
{
    return std::any_of(made.begin(), made.end(), [&connection](const QString& path) {
        return path.startsWith(kFolderOfMasters) && masterFileIsKnown(connection, path);
    });
}

/// A deletion is one transaction: as long as the databases know any of it, it has not happened.
bool deletionWasCommitted(Connection& connection, const TrashRows::Leftovers& doomed)
{
    const bool folderKnown =
        std::any_of(doomed.folders.begin(), doomed.folders.end(), [&](const QString& folder) {
            return photoIsKnown(connection, folder.section(u'/', -1));
        });
    const bool fileKnown =
        std::any_of(doomed.files.begin(), doomed.files.end(), [&](const QString& file) {
            return file.startsWith(kFolderOfMasters) && masterFileIsKnown(connection, file);
        });
    return !doomed.folders.isEmpty() && !folderKnown && !fileKnown;
}

QList<PackageFiles::NotRemoved> finishDeletion(const QString& package,
                                               const TrashRows::Leftovers& doomed)
{
    QList<PackageFiles::NotRemoved> left;
    for (const QString& path : doomed.folders + doomed.files) {
        left << PackageFiles::remove(package, path);
    }
    PackageFiles::removeEmpty(package, doomed.emptyFolders);
    return left + PackageFiles::flushRemovals(package, doomed.folders + doomed.files);
}

void keepKnown(Connection& connection, QSet<QString>& uuids, const char* sql)
{
    uuids.removeIf(
        [&](const QString& uuid) { return !Sql::firstInteger(connection, sql, uuid).has_value(); });
}

/// Sidecars and catalogues, and what a restore puts beside them, are written beside the old ones
/// and renamed; a run that was ended in between leaves the unfinished ones.
void removeUnfinishedSidecars(Connection& connection, const Changes& changes)
{
    const QString& package = connection.packagePath();
    for (const QString& name : {u"AlbumData.xml"_s, u"Info.plist"_s}) {
        PackageFiles::removeUnfinished(package, QString(), name);
    }
    for (const QString& name : {u"AlbumData2.xml"_s, u"ApertureDatabaseTimestamp"_s}) {
        PackageFiles::removeUnfinished(package, u"iLifeShared"_s, name);
    }
    for (const QString& name : {u"Keywords.plist"_s, u"DataModelVersion.plist"_s}) {
        PackageFiles::removeUnfinished(package, u"Database"_s, name);
    }
    PackageFiles::removeAllUnfinished(package, u"Database/Albums"_s, u".apalbum"_s);
    PackageFiles::removeAllUnfinished(package, u"Database/Folders"_s, u".apfolder"_s);
    for (const QString& master : changes.masters) {
        const QString folder =
            SidecarWriter::folderOfMaster(connection, master).mid(package.size() + 1);
        if (!folder.isEmpty()) {
            PackageFiles::removeAllUnfinished(package, folder, u".apmaster"_s);
            PackageFiles::removeAllUnfinished(package, folder, u".apversion"_s);
        }
    }
}

void removeUnfinishedPictures(const QString& package, const QStringList& pictures)
{
    for (const QString& path : pictures) {
        PackageFiles::removeUnfinished(package, path.section(u'/', 0, -2), path.section(u'/', -1));
    }
}

} // namespace

namespace Recovery
{

Outcome run(Connection& connection, const QList<JournaledTurn>& turns, const Changes& lagging)
{
    const QString& package = connection.packagePath();
    removeDeadJournals(databaseFolder(connection));
    removeDeadSuperJournals(databaseFolder(connection));
    Outcome outcome;
    Changes& changes = outcome.changes;
    changes = lagging;
    for (const JournaledTurn& turn : turns) {
        QList<PackageFiles::NotRemoved> left;
        if (!turn.made.isEmpty() && !wasCommitted(connection, turn.made)) {
            left << PackageFiles::removeMade(package, turn.made);
        }
        if (deletionWasCommitted(connection, turn.doomed)) {
            left << finishDeletion(package, turn.doomed);
        }
        if (!left.isEmpty()) {
            outcome.unsettled.insert(turn.number);
            outcome.notRemoved << left;
        }
        removeUnfinishedPictures(package, turn.pictures);
        changes.unite(turn.changes);
    }
    // What a transaction was about to make and did not, no sidecar can follow.
    keepKnown(connection, changes.masters, "SELECT modelId FROM RKMaster WHERE uuid = ?");
    keepKnown(connection, changes.albums, "SELECT modelId FROM RKAlbum WHERE uuid = ?");
    keepKnown(connection, changes.folders, "SELECT modelId FROM RKFolder WHERE uuid = ?");
    if (!changes.isEmpty()) {
        removeUnfinishedSidecars(connection, changes);
    }
    return outcome;
}

QSet<QString> named(const QList<JournaledTurn>& turns)
{
    QStringList paths;
    for (const JournaledTurn& turn : turns) {
        paths << turn.made << turn.doomed.files << turn.doomed.folders;
    }
    return {paths.begin(), paths.end()};
}

} // namespace Recovery
