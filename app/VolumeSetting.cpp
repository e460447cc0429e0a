#include "VolumeSetting.h"

#include "UserDefaults.h"

#include <QDir>

using namespace Qt::StringLiterals;

QMap<QString, QString> VolumeSetting::folders(const UserDefaults& defaults)
{
    QMap<QString, QString> folders;
    const QVariantMap stored = defaults.value(u"VolumeFolders"_s).toMap();
    for (auto entry = stored.cbegin(); entry != stored.cend(); ++entry) {
        const QString folder = entry.value().toString();
        if (QDir::isAbsolutePath(folder)) {
            folders.insert(entry.key(), QDir::cleanPath(folder));
        }
    }
    return folders;
}
