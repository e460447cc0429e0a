#pragma once

#include "Connection.h"
#include "Result.h"

/// AlbumData.xml and iLifeShared/AlbumData2.xml, the exports that other applications read. Both are
/// written anew from the databases; what these do not give (the Mac's path of the library, faces,
/// smart albums) is carried over from the old file.
namespace Catalogues
{

struct CarriedOver {
    bool oldFileRead{false}; ///< false: the old file was missing or could not be parsed
};

/// Replaces both files as a whole and touches ApertureDatabaseTimestamp, which tells other
/// applications that they changed. `now`: seconds since 2001-01-01 UTC.
/// Errors: NotWritable, OutOfSpace; SQLite::Exception.
[[nodiscard]] Result<CarriedOver> write(Connection& connection, double now);

} // namespace Catalogues
