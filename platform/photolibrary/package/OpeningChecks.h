#pragma once

#include "Connection.h"
#include "Result.h"

#include <QString>

/// What is asked of a package before it is opened. Nothing is changed. Any thread. Every error's
/// message names the path and the remedy.
namespace OpeningChecks
{

/// Recognises an iPhoto library by its content; returns the application's version from its
/// Info.plist. Errors: NotFound, Unsupported, Unreadable, Damaged.
[[nodiscard]] Result<QString> recognise(const QString& package);

/// Whether this user may write what a scan writes: databases, catalogues, and the folders that take
/// imports of today and sidecars. Asks about a few dozen places, however large the library. Errors:
/// NotWritable; Unreadable for one that may be written but not read.
[[nodiscard]] Result<void> permissions(const QString& package);

/// Whether its databases are its own, no hard links to those of another library. Errors:
/// NotWritable.
[[nodiscard]] Result<void> ownDatabases(const QString& package);

/// Whether it is an iPhoto library of a schema that can be read, with safe file names. Errors:
/// Unsupported, Damaged; SQLite::Exception.
[[nodiscard]] Result<void> readable(Connection& connection);

/// Whether its schema is exactly one that is written: version, columns, no foreign triggers or
/// virtual tables. Errors: Unsupported; SQLite::Exception.
[[nodiscard]] Result<void> writableSchema(Connection& connection);

/// Whether iPhoto closed the library properly. It writes that mark last when it quits; that it
/// takes it away while it runs, and so that a library without it is open or was cut off, is
/// concluded: no such library was at hand.
[[nodiscard]] bool closedClean(Connection& connection);
/// What a person is told of one that it did not close, or has open: NotClosed.
[[nodiscard]] Error notClosed(const QString& package);

} // namespace OpeningChecks
