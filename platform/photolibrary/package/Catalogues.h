#pragma once

#include "Connection.h"
#include "Result.h"

/// The catalogues that the photo application writes for others to read: AlbumData.xml and
/// iLifeShared/AlbumData2.xml.
namespace Catalogues
{

struct CarriedOver {
    /// Whether there was a catalogue before to carry over from. Without it faces and what rules
    /// find are lost, and paths begin with the package's present place.
    bool oldFileRead{false};
};

/// Writes both anew from the databases, with what only the file before knows carried over from it,
/// and marks the library as changed. A file that already says the same stays untouched.
/// `now`: seconds since 2001-01-01T00:00:00 UTC. Errors: Unreadable, NotWritable, OutOfSpace;
/// SQLite::Exception.
[[nodiscard]] Result<CarriedOver> write(Connection& connection, double now);

} // namespace Catalogues
