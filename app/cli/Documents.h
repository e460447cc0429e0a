#pragma once

#include "Finding.h"
#include "LibraryBackups.h"
#include "LibraryFacts.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <functional>

/// The JSON documents that scripts read; their keys are fixed.
namespace Documents
{

[[nodiscard]] QJsonObject
info(const QString& library, const QString& version, const LibrarySummary& summary);
[[nodiscard]] QJsonObject trash(const QList<PhotoFacts>& photos);

[[nodiscard]] QJsonObject verify(const QList<Finding>& findings);
[[nodiscard]] QJsonObject repair(const RepairReport& report);
[[nodiscard]] QJsonObject backup(const LibraryBackup& backup);
[[nodiscard]] QJsonObject backups(const QList<LibraryBackup>& backups);
[[nodiscard]] QJsonObject restored(const LibraryBackups::Restored& restored);

/// The document as text in UTF-8 that steers no terminal (JsonText); ends in a line end.
[[nodiscard]] QByteArray text(const QJsonObject& document);

/// The document of a list, as text() would give it, in pieces of some kilobytes, each handed to
/// `write` in turn: the whole of a large library's takes ten times its size while it is made.
void writeList(const QString& library,
               const QString& version,
               const QList<PhotoFacts>& photos,
               const std::function<void(const QByteArray&)>& write);

/// The text, or null where there is none.
[[nodiscard]] QJsonValue textOrNull(const QString& text);

} // namespace Documents
