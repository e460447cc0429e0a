#pragma once

#include "Result.h"

#include <QByteArray>
#include <QString>

/// Files that are read as a whole and may be anything, since somebody else made them. Any thread.
namespace WholeFile
{

/// The bytes of a plain file of at most `mostBytes`, or of one of Qt's resources; links are
/// followed. Nothing else is read, so that neither a pipe nor a device can hold the program up or
/// take its memory; the size is judged before memory is taken. Errors: NotFound, also for a link to
/// nothing and what lies in a folder that the user may not enter; Unreadable. The message names
/// file and remedy.
[[nodiscard]] Result<QByteArray> read(const QString& path, qint64 mostBytes);

} // namespace WholeFile
