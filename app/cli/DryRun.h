#pragma once

#include "JpegEstimate.h"
#include "LibraryFacts.h"
#include "ScanReport.h"
#include "WalkProgress.h"

#include <QList>

class Console;
class Interruption;
class UserDefaults;

/// The program's own walk over a selection: what a scan would do. Neither reads nor writes the
/// library beyond the photos' files, and has no part of the engine in it.
namespace DryRun
{

struct Findings {
    ScanReport report;
    JpegEstimate::Range estimate; ///< of all copies together, bytes
    bool interrupted{false};      ///< before every photo was tried
};

/// `settings`: of the run.
[[nodiscard]] Findings walk(const QString& library,
                            const QList<PhotoFacts>& photos,
                            const UserDefaults& settings,
                            Console& console,
                            const Interruption& interruption,
                            WalkProgress::Show show);

} // namespace DryRun
