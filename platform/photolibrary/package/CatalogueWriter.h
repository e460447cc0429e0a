#pragma once

#include "CatalogueModel.h"

#include <QByteArray>

/// The two catalogue files as bytes, laid out as iPhoto lays them out: UTF-8, LF, no DOCTYPE.
namespace CatalogueWriter
{

/// AlbumData.xml. Paths begin with the archive path of the Mac that the library comes from.
[[nodiscard]] QByteArray albumData(const CatalogueModel::Catalogue& catalogue);
/// iLifeShared/AlbumData2.xml: albums and rolls only, compact.
[[nodiscard]] QByteArray albumData2(const CatalogueModel::Catalogue& catalogue);

} // namespace CatalogueWriter
