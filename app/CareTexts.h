#pragma once

#include <QDateTime>
#include <QString>

/// What both faces say of the verification and repair of a library, and of its dated copies. Names,
/// paths and sizes are put in as they are given: each face makes them fit to be shown there. Any
/// thread.
namespace CareTexts
{

// Verification and repair
[[nodiscard]] QString allAgrees();
[[nodiscard]] QString differs(qint64 findings);
/// Without an end: the face tells how.
[[nodiscard]] QString canBeMended(qint64 findings);
[[nodiscard]] QString nothingToMend();
[[nodiscard]] QString mended(qint64 findings);
/// `path`: folder of the copy.
[[nodiscard]] QString backupMadeBefore(const QString& path);
/// After a repair that was stopped.
[[nodiscard]] QString notMendedYet(qint64 findings);
/// allAgrees() where nothing is left.
[[nodiscard]] QString leftAsItWas(qint64 findings);

// Dated copies
/// The moment as the person's clock showed it.
[[nodiscard]] QString localTime(const QDateTime& moment);
[[nodiscard]] QString backupMade(const QString& name, const QString& size, const QString& path);
[[nodiscard]] QString noBackups();
[[nodiscard]] QString photosOfBackup(qint64 photos);
/// In place of the number of photos.
[[nodiscard]] QString damagedBackup();
/// `before`: folder of the copy of what was there.
[[nodiscard]] QString
backupRestored(const QString& name, const QString& localTime, const QString& before);
[[nodiscard]] QString filesKept(qint64 files);

} // namespace CareTexts
