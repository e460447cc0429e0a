#pragma once

#include "Writer.h"

/// The rows of a large library that no import writes: copies of photos, keywords and albums. All
/// numbers come from one seed, so that two libraries of one size are alike. Each leaves indexes, id
/// counters and statistics behind, which settle() sets right. Errors: SQLite::Exception.
namespace LargeLibraryRows
{

/// Adds `copies - 1` copies of each photo and of each event, with the files of the first ones. The
/// events of each copy are as many days later as the first ones span.
void multiply(Writer& writer, int copies);

/// Defines keywords and gives each visible photo none to six, the first ones far more often.
void assignKeywords(Writer& writer, int keywords);

/// Makes albums of photos that follow each other; the first holds a twentieth of all, the last a
/// handful.
void fillAlbums(Writer& writer, int albums);

/// Statistics of events and albums, indexes and id counters.
void settle(Writer& writer);

} // namespace LargeLibraryRows
