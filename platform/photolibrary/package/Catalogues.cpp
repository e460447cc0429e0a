#include "Catalogues.h"

#include "AtomicFile.h"
#include "CatalogueReader.h"
#include "CatalogueWriter.h"
#include "Clock.h"
#include "OldCatalogue.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace
{

/// The bytes of a file, none when it does not exist.
Result<QByteArray> bytesOf(const QString& path)
{
    QFile file(path);
    if (!file.exists()) {
        return QByteArray(); // a null one
    }
    if (!file.open(QIODevice::ReadOnly)) {
        return Error{
            ErrorCode::Unreadable,
            u"\"%1\" cannot be read (%2): check its permissions."_s.arg(path, file.errorString())};
    }
    const QByteArray bytes = file.readAll();
    return bytes.isNull() ? QByteArray("") : bytes;
}

QString damageOf(const QString& path, const QByteArray& bytes, const OldCatalogue& read)
{
    return bytes.isNull() || read.wasRead()
               ? QString()
               : u"The catalogue \"%1\" is damaged, so it is left as it is: restore it from a "
                 "backup, or remove it to have a new one made."_s.arg(path);
}

Result<void> replace(const QString& path, const QByteArray& old, const QByteArray& bytes)
{
    if (bytes == old) {
        return {};
    }
    if (Result<void> made = AtomicFile::makeFolder(QFileInfo(path).path()); !made.ok()) {
        return made;
    }
    return AtomicFile::write(path, bytes);
}

/// An empty file whose time of modification tells other programs that the library changed. It is
/// a hint to them, no part of the library: that it cannot be set is no failure.
void touch(const QString& path, double now)
{
    constexpr double kMilliseconds = 1000.0;
    const QDateTime moment = QDateTime::fromMSecsSinceEpoch(
        static_cast<qint64>((now + kSecondsFrom1970To2001) * kMilliseconds), Qt::UTC);
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Append)) {
        file.setFileTime(moment, QFileDevice::FileModificationTime);
    }
}

QString fullPathIn(const QString& package)
{
    return package + "/AlbumData.xml"_L1;
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
    const QString briefPath = package + u"/iLifeShared/AlbumData2.xml"_s;
    const Result<QByteArray> oldFull = bytesOf(fullPath);
    if (!oldFull.ok()) {
        return oldFull.error();
    }
    const Result<QByteArray> oldBrief = bytesOf(briefPath);
    if (!oldBrief.ok()) {
        return oldBrief.error();
    }
    const OldCatalogue old = OldCatalogue::parse(oldFull.value());
    if (const QString damage = damageOf(fullPath, oldFull.value(), old); !damage.isNull()) {
        return CarriedOver{false, damage};
    }
    const QString knownPath = old.text(u"Archive Path"_s);
    const CatalogueModel model = CatalogueReader::read(connection, old);
    const CatalogueWriter writer(model, old, knownPath.isEmpty() ? package : knownPath);
    if (const Result<void> written = replace(fullPath, oldFull.value(), writer.full());
        !written.ok()) {
        return written.error();
    }
    if (const Result<void> written = replace(briefPath, oldBrief.value(), writer.brief());
        !written.ok()) {
        return written.error();
    }
    touch(package + u"/iLifeShared/ApertureDatabaseTimestamp"_s, now);
    return CarriedOver{old.wasRead(), QString()};
}
