#include "Catalogues.h"

#include "AtomicFile.h"
#include "CatalogueComparison.h"
#include "CatalogueReader.h"
#include "CatalogueWriter.h"
#include "Clock.h"
#include "OldCatalogue.h"
#include "PackageFiles.h"
#include "PropertyList.h"
#include "WholeFile.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace
{

/// The bytes of a catalogue; null ones where there is none.
Result<QByteArray> bytesOf(const QString& path)
{
    Result<QByteArray> bytes = WholeFile::read(path, PropertyList::kMostBytesOfCatalogue);
    const bool isMissing = !bytes.ok() && bytes.error().code == ErrorCode::NotFound;
    return isMissing ? QByteArray() : bytes;
}

QString damageOf(const QString& path, const QByteArray& bytes, const OldCatalogue& read)
{
    return bytes.isNull() || read.wasRead()
               ? QString()
               : u"The catalogue \"%1\" is damaged, so it is left as it is: restore it from a "
                 "backup, or remove it to have a new one made."_s.arg(path);
}

/// Read in pieces: a large library's catalogue has a hundred megabytes.
bool holds(const QString& path, const QByteArray& bytes)
{
    constexpr qsizetype kPiece = qsizetype{1024} * 1024;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() != bytes.size()) {
        return false;
    }
    for (qsizetype place = 0; place < bytes.size(); place += kPiece) {
        const qsizetype length = qMin(kPiece, bytes.size() - place);
        if (file.read(length) != QByteArrayView(bytes).sliced(place, length)) {
            return false;
        }
    }
    return true;
}

/// Nothing outside the package is replaced, whatever a link in it leads to.
Result<void> replace(const QString& package, QLatin1StringView relative, const QByteArray& bytes)
{
    const QString path = package + u'/' + relative;
    if (holds(path, bytes)) {
        return {};
    }
    if (Result<void> allowed = PackageFiles::mayBeWritten(package, relative); !allowed.ok()) {
        return allowed;
    }
    if (Result<void> made = AtomicFile::makeFolder(QFileInfo(path).path()); !made.ok()) {
        return made;
    }
    return AtomicFile::write(path, bytes);
}

/// An empty file whose time of modification tells other programs that the library changed. It is
/// a hint to them, no part of the library: that it cannot be set is no failure.
void touch(const QString& package, double now)
{
    const QString relative = u"iLifeShared/ApertureDatabaseTimestamp"_s;
    const QFileInfo present(package + u'/' + relative);
    const bool isOther = present.exists() && !present.isFile(); // opening a pipe would wait
    if (isOther || !PackageFiles::mayBeWritten(package, relative).ok()) {
        return;
    }
    constexpr double kMilliseconds = 1000.0;
    const QDateTime moment = QDateTime::fromMSecsSinceEpoch(
        static_cast<qint64>((now + kSecondsFrom1970To2001) * kMilliseconds), Qt::UTC);
    QFile file(present.filePath());
    if (file.open(QIODevice::WriteOnly | QIODevice::Append)) {
        file.setFileTime(moment, QFileDevice::FileModificationTime);
    }
}

using Catalogues::kBrief;
using Catalogues::kFull;

QString fullPathIn(const QString& package)
{
    return package + u'/' + kFull;
}

/// What both should be.
struct Wanted {
    QByteArray full;
    QByteArray brief;
};

Wanted wantedOf(Connection& connection, const OldCatalogue& old)
{
    const QString knownPath = old.text(u"Archive Path"_s);
    const CatalogueModel model = CatalogueReader::read(connection, old);
    const CatalogueWriter writer(
        model, old, knownPath.isEmpty() ? connection.packagePath() : knownPath);
    return {writer.full(), writer.brief()};
}

/// The content of a property list; nothing for what is none.
QVariantMap contentOf(const QByteArray& bytes)
{
    const Result<QVariant> parsed = PropertyList::parse(bytes);
    return parsed.ok() ? parsed.value().toMap() : QVariantMap();
}

/// What is wrong with a catalogue can be mended where it may be written.
QList<Finding> findingsOf(const QString& package, const QString& file, const QStringList& sentences)
{
    if (const Result<void> allowed = PackageFiles::mayBeWritten(package, file);
        !sentences.isEmpty() && !allowed.ok()) {
        return {{allowed.error().message, file, false}};
    }
    QList<Finding> findings;
    for (const QString& sentence : sentences) {
        findings.append({sentence, file, true});
    }
    return findings;
}

QStringList ofBrief(const QByteArray& bytes, const QVariantMap& wanted, const QVariantMap& full)
{
    if (bytes.isNull()) {
        return {u"The brief catalogue AlbumData2.xml is missing."_s};
    }
    const QVariantMap found = contentOf(bytes);
    return found.isEmpty() ? QStringList{u"The brief catalogue AlbumData2.xml is damaged."_s}
                           : CatalogueComparison::ofBrief(found, wanted, full);
}

} // namespace

QString Catalogues::damage(const QString& package)
{
    const QString path = fullPathIn(package);
    const Result<QByteArray> bytes = bytesOf(path);
    return bytes.ok() ? damageOf(path, bytes.value(), OldCatalogue::parse(bytes.value()))
                      : bytes.error().message;
}

Result<Catalogues::CarriedOver> Catalogues::write(Connection& connection, double now)
{
    const QString& package = connection.packagePath();
    const QString fullPath = fullPathIn(package);
    Result<QByteArray> oldFull = bytesOf(fullPath);
    if (!oldFull.ok()) {
        return oldFull.error();
    }
    const Result<QByteArray> oldBrief = bytesOf(package + u'/' + kBrief);
    if (!oldBrief.ok()) {
        return oldBrief.error();
    }
    const OldCatalogue old = OldCatalogue::parse(oldFull.value());
    if (const QString damage = damageOf(fullPath, oldFull.value(), old); !damage.isNull()) {
        return CarriedOver{false, damage};
    }
    oldFull.value().clear(); // its room is for the new one
    const Wanted wanted = wantedOf(connection, old);
    const Result<void> full = replace(package, kFull, wanted.full);
    if (!full.ok() && full.error().code != ErrorCode::LeadsOut) {
        return full.error();
    }
    const Result<void> brief = replace(package, kBrief, wanted.brief);
    touch(package, now);
    for (const Result<void>& written : {brief, full}) {
        if (!written.ok()) {
            return written.error();
        }
    }
    return CarriedOver{old.wasRead(), QString()};
}

QList<Finding> Catalogues::compare(Connection& connection)
{
    const QString& package = connection.packagePath();
    const Result<QByteArray> full = bytesOf(fullPathIn(package));
    const Result<QByteArray> brief = bytesOf(package + u'/' + kBrief);
    if (!full.ok()) {
        return {{full.error().message, kFull, false}};
    }
    const OldCatalogue old = OldCatalogue::parse(full.value());
    if (const QString damage = damageOf(fullPathIn(package), full.value(), old); !damage.isNull()) {
        return {{damage, kFull, false}};
    }
    const Wanted wanted = wantedOf(connection, old);
    const QVariantMap wantedFull = contentOf(wanted.full);
    QList<Finding> findings = findingsOf(
        package,
        kFull,
        full.value().isNull() ? QStringList{u"The catalogue AlbumData.xml is missing."_s}
                              : CatalogueComparison::ofFull(contentOf(full.value()), wantedFull));
    if (!brief.ok()) {
        findings.append({brief.error().message, kBrief, false});
    } else {
        findings << findingsOf(
            package, kBrief, ofBrief(brief.value(), contentOf(wanted.brief), wantedFull));
    }
    return findings;
}
