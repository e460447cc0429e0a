#pragma once

#include "Result.h"

#include <QString>

/// What the photo library does in photos' turns of a scan; no picture is converted.
namespace TurnBench
{

/// Medians of the turns, in milliseconds.
struct Figures {
    double turn{0.0};   ///< of processors, without the commit and the picture's intake
    double intake{0.0}; ///< of processors, to read a JPEG and make its thumbnails
    double commit{0.0}; ///< of processors: the journal's line and the databases
    double commitWall{0.0};
    double wall{0.0}; ///< all of it
};

/// Replaces `turns` photos, spread over the library, by copies of the JPEG at `jpeg`, with albums,
/// keywords and removal. Prints, each with its aim, what it took to open the library and to make
/// catalogues and sidecars follow. Writes to the library.
[[nodiscard]] Result<Figures> run(const QString& package, int turns, const QString& jpeg);

} // namespace TurnBench
