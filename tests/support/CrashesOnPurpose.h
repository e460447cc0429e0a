#pragma once

#include <map>
#include <string>

#define CORVANE_UNCHECKED __attribute__((noinline, no_sanitize("address", "undefined", "thread")))

/// Ways in which a program can crash, done by functions whose names logs of the crash tell where
/// they are exported.
namespace CrashesOnPurpose
{

using Kinds = std::map<std::string, void (*)()>;

/// By their names: each signal that a fault ends a program with, an exception that nobody catches,
/// the overflow of the stack and a damaged heap. None of them returns.
[[nodiscard]] const Kinds& kinds();

} // namespace CrashesOnPurpose

extern "C" {

void writeToNowhere();
int recurse(int depth);
}
