#pragma once

#include <QString>

struct CommandServices;
struct Error;

/// What is wrong with a library, told to people.
namespace LibraryFailure
{

/// Says something of a library, with the path `library` escaped where it is named.
void say(QString message, const QString& library, const CommandServices& services);

/// Says it, with the path `library` escaped where the message names it, and answers the exit
/// status.
[[nodiscard]] int tell(const Error& error, const QString& library, const CommandServices& services);

} // namespace LibraryFailure
