#pragma once

#include <QString>

/// What both faces say of single photos after a scan. Names and reasons are put in as they are
/// given: each face makes them fit to be shown there. Any thread.
namespace ScanTexts
{

/// Without an end: a list may follow.
[[nodiscard]] QString notConverted(qint64 photos);
[[nodiscard]] QString photoWithReason(const QString& name, qint64 id, const QString& reason);
/// In place of a reason.
[[nodiscard]] QString noReason();
/// `importedAs`: file name of the copy.
[[nodiscard]] QString otherName(const QString& name, qint64 id, const QString& importedAs);

} // namespace ScanTexts
