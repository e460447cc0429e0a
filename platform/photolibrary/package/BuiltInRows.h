#pragma once

#include "Writer.h"

/// The rows that every library begins with: its identity, the built-in folders, albums and
/// keywords, the counters. Errors: SQLite::Exception.
namespace BuiltInRows
{

/// Into empty tables. Afterwards indexes and counters agree with the rows, and `changes` names
/// everything that has a sidecar.
void insert(Writer& writer);

} // namespace BuiltInRows
