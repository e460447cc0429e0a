#include "Directories.h"

#include <QDir>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace
{

/// A base directory counts only when it is absolute (XDG Base Directory Specification 0.8).
QString baseDirectory(const char* variable, QLatin1StringView fallbackBelowHome)
{
    const QString named = qEnvironmentVariable(variable);
    return QDir::isAbsolutePath(named) ? QDir::cleanPath(named)
                                       : QDir::homePath() + fallbackBelowHome;
}

} // namespace

QString Directories::config()
{
    return baseDirectory("XDG_CONFIG_HOME", "/.config"_L1) + "/corvane"_L1;
}

QString Directories::state()
{
    return baseDirectory("XDG_STATE_HOME", "/.local/state"_L1) + "/corvane"_L1;
}

QStringList Directories::libraries()
{
    return {state(), u"/var/lib/corvane"_s};
}

QString Directories::pictures()
{
    return QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
}
