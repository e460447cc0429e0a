#include "StateFolder.h"

#include "Directories.h"
#include "LibraryErrors.h"

#include <QCryptographicHash>
#include <QDir>

using namespace Qt::StringLiterals;

namespace
{

constexpr qsizetype kHashDigits = 16;

QString hashOf(const QString& canonicalPath)
{
    const QByteArray hash =
        QCryptographicHash::hash(canonicalPath.toUtf8(), QCryptographicHash::Sha256).toHex();
    return QString::fromLatin1(hash.left(kHashDigits));
}

} // namespace

QString StateFolder::keyOf(const QString& canonicalPath, const QString& databaseUuid)
{
    QString uuid;
    for (const QChar letter : databaseUuid) {
        // The uuid comes from a file: nothing of it may lead out of the folder.
        uuid += letter.isLetterOrNumber() && letter.unicode() < 0x80 ? letter : u'_';
    }
    return uuid.left(kHashDigits * 2) + u'-' + hashOf(canonicalPath);
}

QStringList StateFolder::keysWithBackups(const QString& canonicalPath)
{
    const QString ending = u'-' + hashOf(canonicalPath);
    QStringList keys = QDir(Directories::state() + "/backups"_L1)
                           .entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    keys.removeIf([&ending](const QString& key) { return !key.endsWith(ending); });
    return keys;
}

QString StateFolder::ofLibrary(const QString& key)
{
    return Directories::state() + "/libraries/"_L1 + key;
}

QString StateFolder::ofBackups(const QString& key)
{
    return Directories::state() + "/backups/"_L1 + key;
}

Result<void> StateFolder::isKnown(const QString& package)
{
    const bool known = !qEnvironmentVariableIsEmpty("HOME") ||
                       QDir::isAbsolutePath(qEnvironmentVariable("XDG_STATE_HOME"));
    return known ? Result<void>()
                 : Error{ErrorCode::NotWritable,
                         u"To write to the library \"%1\" this program keeps a lock, a journal and "
                         "backups in your home folder, but HOME is not set: set it, or set "
                         "XDG_STATE_HOME to a folder that you may write to."_s.arg(package)};
}

Error StateFolder::unusable(const Error& cause, const QString& package)
{
    return {
        cause.code,
        u"To write to the library \"%1\" this program keeps a lock and a journal outside of it, "
        "which it cannot: %2 Change the permissions there or make room, or set XDG_STATE_HOME "
        "to another folder that you may write to."_s.arg(package,
                                                         LibraryErrors::asSentence(cause.message))};
}
