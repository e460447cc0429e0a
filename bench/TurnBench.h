#pragma once

#include "Result.h"

#include <QString>

/// What the photo library does in photos' turns of a scan; no picture is converted.
namespace TurnBench
{

struct Figures {
    double opening{0.0}; ///< seconds of processors for the opening with its check
    double turn{0.0};    ///< milliseconds of processors for a turn, without the picture's intake
    double slowest{0.0}; ///< the same of the slowest turn
    double intake{0.0}; ///< milliseconds of processors for reading a JPEG and making its thumbnails
    double wall{0.0};   ///< milliseconds of a turn on the clock: commits and intake too
    double followers{0.0}; ///< seconds on the clock for sidecars and catalogues at the end
    double followersCpu{0.0};
};

/// Replaces `turns` photos, spread over the library, by copies of the JPEG at `jpeg`, with albums,
/// keywords and removal. Writes to the library.
[[nodiscard]] Result<Figures> run(const QString& package, int turns, const QString& jpeg);

} // namespace TurnBench
