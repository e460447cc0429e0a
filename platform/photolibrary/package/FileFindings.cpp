#include "FileFindings.h"

#include "DatabaseFiles.h"
#include "PathMapping.h"
#include "ProxyFiles.h"
#include "Queries.h"
#include "StrayFiles.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace
{

/// What is wrong with an original; null for nothing.
QString wrongWith(const QString& path, const QString& name, const QVariant& bytes)
{
    if (path.isEmpty()) {
        return u"The path of the original “%1” leads out of the library."_s.arg(name);
    }
    const QFileInfo file(path);
    if (!file.isFile()) {
        return u"The original “%1” is missing."_s.arg(name);
    }
    const bool isKnown = bytes.typeId() == QMetaType::LongLong && bytes.toLongLong() > 0;
    return isKnown && file.size() != bytes.toLongLong()
               ? u"The original “%1” has %2 bytes, but %3 in the database."_s.arg(
                     name, QString::number(file.size()), QString::number(bytes.toLongLong()))
               : QString();
}

void tellOriginals(Connection& connection, QList<Finding>& findings)
{
    Sql::Query row(connection,
                   "SELECT imagePath, fileName, fileSize FROM RKMaster WHERE fileIsReference = 0"
                   " ORDER BY modelId");
    while (row.next()) {
        const QString relative = Sql::text(row.column(0));
        const QString path = PathMapping::master(connection.packagePath(), {.imagePath = relative});
        const QString wrong = wrongWith(path, Sql::text(row.column(1)), Sql::value(row.column(2)));
        if (!wrong.isNull()) {
            findings.append({wrong, "Masters/"_L1 + relative, false});
        }
    }
}

QString kindOf(ProxyFiles::Kind kind)
{
    switch (kind) {
    case ProxyFiles::Kind::Preview:
        return u"preview"_s;
    case ProxyFiles::Kind::Thumbnail:
        return u"large thumbnail"_s;
    case ProxyFiles::Kind::Miniature:
        return u"small thumbnail"_s;
    }
    Q_UNREACHABLE();
}

void tellPictures(Connection& connection, QList<Finding>& findings)
{
    const QList<ProxyFiles::Missing> all = ProxyFiles::missing(connection);
    for (const ProxyFiles::Missing& missing : all) {
        const QString name = missing.fileName.isNull() ? u"of no photo"_s : missing.fileName;
        findings.append({u"The %1 of the photo %2 (“%3”) is missing."_s.arg(
                             kindOf(missing.kind), QString::number(missing.version), name),
                         missing.relativePath,
                         ProxyFiles::canBeMade(connection, missing)});
    }
}

void tellStrays(Connection& connection, const NamedFiles& namedFiles, QList<Finding>& findings)
{
    const auto tell = [&findings](const QStringList& paths, const QString& what) {
        for (const QString& path : paths) {
            findings.append({what, path, false});
        }
    };
    QStringList originals = StrayFiles::inMasters(connection, namedFiles);
    for (QString& path : originals) {
        path.prepend("Masters/"_L1);
    }
    tell(originals, u"A file belongs to no photo of the library."_s);
    tell(StrayFiles::foldersOfNoPhoto(connection, namedFiles),
         u"A folder holds files that belong to no photo of the library."_s);
    tell(StrayFiles::sidecarsOfNothing(connection),
         u"A sidecar belongs to no album or folder of the library."_s);
    tell(StrayFiles::unfinished(connection.packagePath()),
         u"A file was left unfinished when it was written."_s);
}

/// iPhoto has links beside the folder of the databases. A copy that followed them has files there,
/// which nothing keeps in step, and one that could not make them lacks them.
void tellLinks(const QString& package, QList<Finding>& findings)
{
    for (const QLatin1StringView name : DatabaseFiles::kLinked) {
        const QString path = u"Database/"_s + name;
        const QFileInfo file(package + u'/' + path);
        if (file.exists() && !file.isSymLink()) {
            findings.append(
                {u"This is a file, but should be a link to “apdb/%1”."_s.arg(name), path, false});
        } else if (!file.exists() && QFileInfo::exists(package + u"/Database/apdb/"_s + name)) {
            findings.append({u"iPhoto's link to “apdb/%1” is missing."_s.arg(name), path, false});
        }
    }
}

} // namespace

QList<Finding> FileFindings::of(Connection& connection, const NamedFiles& namedFiles)
{
    QList<Finding> findings;
    tellOriginals(connection, findings);
    tellPictures(connection, findings);
    tellStrays(connection, namedFiles, findings);
    tellLinks(connection.packagePath(), findings);
    return findings;
}
