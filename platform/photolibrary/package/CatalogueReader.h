#pragma once

#include "CatalogueModel.h"
#include "Connection.h"
#include "OldCatalogue.h"

/// What the catalogues have to tell, from the databases. Errors: SQLite::Exception.
namespace CatalogueReader
{

/// `old`: for what the databases do not know: what the application's rules find, texts of unnamed
/// events, the offset of local dates, paths of originals outside the package.
[[nodiscard]] CatalogueModel read(Connection& connection, const OldCatalogue& old);

} // namespace CatalogueReader
