#include "StateFolder.h"

#include "Directories.h"

#include <QCryptographicHash>

using namespace Qt::StringLiterals;

namespace
{

constexpr qsizetype kHashDigits = 16;

} // namespace

QString StateFolder::keyOf(const QString& canonicalPath, const QString& databaseUuid)
{
    const QByteArray hash =
        QCryptographicHash::hash(canonicalPath.toUtf8(), QCryptographicHash::Sha256).toHex();
    QString uuid;
    for (const QChar letter : databaseUuid) {
        // The uuid comes from a file: nothing of it may lead out of the folder.
        uuid += letter.isLetterOrNumber() && letter.unicode() < 0x80 ? letter : u'_';
    }
    return uuid.left(kHashDigits * 2) + u'-' + QString::fromLatin1(hash.left(kHashDigits));
}

QString StateFolder::ofLibrary(const QString& key)
{
    return Directories::state() + "/libraries/"_L1 + key;
}

QString StateFolder::ofBackups(const QString& key)
{
    return Directories::state() + "/backups/"_L1 + key;
}
