#pragma once

#include <QStringList>

struct ScanReport;

/// What is said on standard error after a scan or a dry run, beside its summary.
namespace ClosingLines
{

/// Photos that were not converted with their reasons, photos whose copy bears another name, and
/// what the user may do next. `removesOriginals`: converted originals went to the trash.
[[nodiscard]] QStringList of(const ScanReport& report, bool removesOriginals);

} // namespace ClosingLines
