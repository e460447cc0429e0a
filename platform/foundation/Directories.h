#pragma once

#include <QString>
#include <QStringList>

/// Where the user's files of this program lie (freedesktop.org base directories). Nothing is
/// created. Read from the environment at every call; any thread.
namespace Directories
{

/// `$XDG_CONFIG_HOME/corvane`, else `~/.config/corvane`.
[[nodiscard]] QString config();
/// `$XDG_STATE_HOME/corvane`, else `~/.local/state/corvane`.
[[nodiscard]] QString state();
/// What takes the place of the Library folders, in the order they are searched: the user's, which
/// is state(), then the machine's.
[[nodiscard]] QStringList libraries();
/// The user's Pictures folder.
[[nodiscard]] QString pictures();

} // namespace Directories
