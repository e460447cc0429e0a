#pragma once

#include "Result.h"

#include <QString>

#include <functional>

/// What a sample library is to hold.
struct SampleOptions {
    int photos{12};         ///< RAW photos, 1 to 1000; three JPEG photos come with them
    double megapixels{6.0}; ///< of each RAW photo, 0.05 to 100; a JPEG photo has half as many
};

/// Makes an iPhoto 9 library out of nothing but this program, for trying things out and for the
/// tests: drawn scenes "photographed" by a simulated camera into DNG files of its own make, in
/// several events and albums, with keywords, ratings, comments and places.
namespace SampleLibrary
{

/// Writes DIRECTORY/Sample.photolibrary and returns its absolute path. The pictures depend on the
/// options alone, neither on the time nor on the number of processors.
/// `progress` (may be empty) is called after each photo on the calling thread; `shouldStop` (may be
/// empty) is asked there before each photo, and its yes ends the work as an error.
/// Thread: any; it renders on threads of its own and blocks until the library is closed.
/// Errors: Unsupported (options out of range), NotFound (no such directory), NotWritable
/// (something of that name exists already, the directory cannot be written to, or it lies inside a
/// library), Interrupted, and whatever the library or the disk reports. On an error nothing of the
/// library stays behind; what was there before is never touched.
[[nodiscard]] Result<QString> write(const QString& directory,
                                    const SampleOptions& options,
                                    const std::function<void(int done, int total)>& progress,
                                    const std::function<bool()>& shouldStop = {});

} // namespace SampleLibrary
