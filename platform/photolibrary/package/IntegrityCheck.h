#pragma once

#include "Connection.h"
#include "Finding.h"
#include "NamedFiles.h"
#include "ParallelQuestions.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

/// Whether a library's databases agree with themselves and with the files in the package.
namespace IntegrityCheck
{

/// Of everything here: one English sentence for each problem; nothing is changed. Errors:
/// SQLite::Exception.

/// How closely SQLite looks at the databases.
enum class Depth : std::uint8_t {
    Rows,    ///< at each page and row ("PRAGMA quick_check"): for databases known to be sound
    Indexes, ///< also whether each index tells each row; takes about eight times as long
};

/// Whether the databases are whole, as SQLite sees them.
[[nodiscard]] QList<Finding> ofForm(Connection& connection, Depth depth = Depth::Indexes);

struct FormAndRows {
    bool isWhole{true}; ///< as SQLite sees the databases
    QList<Finding> findings;
};

/// What is wrong with the databases' form or, where nothing is, with their rows: counts, indexes,
/// id counters, rows that contradict each other, and what `more` questions tell. What a damaged
/// database says of the rest proves nothing. Two connections are asked at a time (see
/// ParallelQuestions).
[[nodiscard]] FormAndRows ofFormAndRows(Connection& connection,
                                        Depth depth,
                                        const std::vector<ParallelQuestions::Question>& more = {});

/// What is wrong with the databases themselves: their form, counts, indexes, id counters, and rows
/// that contradict each other. A library with any of that is not written to. Looks at no other
/// file.
[[nodiscard]] QStringList ofDatabases(Connection& connection, Depth depth = Depth::Indexes);

/// What a crash may leave beside sidecars and catalogues that lag: rows that belong to something
/// that is gone (LooseRows), pictures that are missing, files, folders and sidecars that belong to
/// nothing, and a catalogue that cannot be read. A library with any of that is written to, unless
/// it was not closed properly. No problems here are `namedFiles`, and what LibraryVerification
/// tells beyond that, which writing makes no worse: masters that are missing or of another size,
/// links to the databases, unfinished files, and what DerivedRows::findings() tells.
[[nodiscard]] QStringList ofCrash(Connection& connection, const NamedFiles& namedFiles);

/// Of the databases, what leads nowhere, files in Masters that belong to no photo, and a catalogue
/// that cannot be read; empty for a sound library. Sidecars and catalogues that lag behind the
/// databases are no problems, nor is what another process of this program is writing.
[[nodiscard]] QStringList problems(Connection& connection, const NamedFiles& namedFiles);

} // namespace IntegrityCheck
