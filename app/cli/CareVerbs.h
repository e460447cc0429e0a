#pragma once

#include "Verb.h"

/// The commands that look after a library.
namespace CareVerbs
{

[[nodiscard]] Verb addVerify(CLI::App& program);
[[nodiscard]] Verb addBackup(CLI::App& program);

} // namespace CareVerbs
