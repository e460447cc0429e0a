#pragma once

#include "Connection.h"
#include "Finding.h"
#include "Result.h"

#include <QList>
#include <QString>

/// The catalogues that the photo application writes for others to read: AlbumData.xml and
/// iLifeShared/AlbumData2.xml.
namespace Catalogues
{

/// Relative to the package.
inline constexpr QLatin1StringView kFull("AlbumData.xml");
inline constexpr QLatin1StringView kBrief("iLifeShared/AlbumData2.xml");

struct CarriedOver {
    /// Whether there was a catalogue before to carry over from. Without it faces and what rules
    /// find are lost, and paths begin with the package's present place.
    bool oldFileRead{false};
    /// Why both were left as they are, with the remedy: the old one holds what nothing else tells,
    /// but cannot be read as a catalogue. Null where they were written.
    QString leftAlone;
};

/// As CarriedOver::leftAlone, for the catalogue as it lies in the package. Null too where there is
/// none: then a new one is made.
[[nodiscard]] QString damage(const QString& package);

/// Writes both anew from the databases, with what only the file before knows carried over from it,
/// and marks the library as changed. A file that already says the same stays untouched, and both do
/// when the one before is there but cannot be read as a catalogue. One that a link leads out of the
/// package is not written, which is LeadsOut where nothing else went wrong; the other one is.
/// `now`: seconds since 2001-01-01T00:00:00 UTC. Errors: Unreadable, NotWritable, OutOfSpace,
/// LeadsOut; SQLite::Exception.
[[nodiscard]] Result<CarriedOver> write(Connection& connection, double now);

/// What the catalogues tell otherwise than write() would; nothing is changed. One that cannot be
/// read as a catalogue, and would be left alone, is not repairable. Errors: SQLite::Exception.
[[nodiscard]] QList<Finding> compare(Connection& connection);

} // namespace Catalogues
