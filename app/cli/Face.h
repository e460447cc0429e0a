#pragma once

#include <QStringList>

struct CommandServices;

/// The program as a whole.
namespace Face
{

/// Does what the arguments (without the program's name) ask for and answers the exit status.
/// Thread: main.
[[nodiscard]] int run(const QStringList& arguments, const CommandServices& services);

} // namespace Face
