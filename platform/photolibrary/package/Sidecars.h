#pragma once

#include "Changes.h"
#include "Connection.h"
#include "Result.h"
#include "SidecarFile.h"

#include <QList>
#include <QString>
#include <QStringList>

/// The property lists beside the databases from which the photo application rebuilds them: of
/// masters, versions, albums and folders, the list of keywords, and DataModelVersion.plist.
namespace Sidecars
{

/// Brings what `changes` names in step with the databases, outside a transaction that is still to
/// be committed. Existing files are edited, so keys unknown here survive; missing and damaged ones
/// are made anew; those of albums and folders that are gone are removed. A file that already says
/// what it should stays untouched, so calling again after an interruption costs little. One that
/// cannot be written keeps those of no other object from following, one that a link leads out of
/// the package is left alone; the first error is returned, LeadsOut where there is no other.
/// `now`: the moment of writing, seconds since 2001-01-01T00:00:00 UTC.
/// Errors: NotWritable, OutOfSpace, Unreadable, LeadsOut; SQLite::Exception.
[[nodiscard]] Result<void> write(Connection& connection, const Changes& changes, double now);

/// A sidecar that is missing, damaged, or says otherwise than the databases.
struct Stale {
    QString path; ///< absolute
    SidecarFile::Found found{SidecarFile::Found::Whole};
    QStringList keys; ///< that a whole one should tell otherwise, sorted
};

struct Comparison {
    QList<Stale> stale;
    Changes lagging;        ///< whose write() would bring those in step
    QStringList unreadable; ///< a sentence for each that cannot be read, or not written
};

/// What write() would write of `changes`; nothing is changed. Sidecars of albums that lag only in
/// how the album is shown do not count: the application leaves them so. Errors: SQLite::Exception.
[[nodiscard]] Comparison compare(Connection& connection, const Changes& changes);

} // namespace Sidecars
