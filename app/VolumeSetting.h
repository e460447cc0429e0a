#pragma once

#include <QMap>
#include <QString>

class UserDefaults;

/// Where the disks of referenced masters are on this machine: the setting "VolumeFolders", a
/// dictionary of folders by the name of the disk on the Mac ("/": its own disk). Any thread.
namespace VolumeSetting
{

/// Folders as absolute paths; what is no text or no absolute path is passed over.
[[nodiscard]] QMap<QString, QString> folders(const UserDefaults& defaults);

} // namespace VolumeSetting
