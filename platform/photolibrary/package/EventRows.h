#pragma once

#include "Writer.h"

#include <QString>

/// Rows of events: the rolls that imports made. Errors: SQLite::Exception.
namespace EventRows
{

/// A new empty event with the album that belongs to it; returns its uuid. An empty name is shown as
/// the event's date.
[[nodiscard]] QString createEvent(Writer& writer, const QString& name);

/// Follows the photos of an event: their number, first and last date, the key photo; an event whose
/// last photo went to the trash goes there too and comes back with the first that is restored.
/// Containers and built-in folders are left alone.
void updateStatistics(Writer& writer, const QString& uuid);

} // namespace EventRows
