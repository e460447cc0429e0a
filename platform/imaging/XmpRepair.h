#pragma once

#include <QByteArray>

/// Makes XMP packets readable that the XMP toolkit refuses as a whole. Any thread.
namespace XmpRepair
{

/// The packet (UTF-8) without the second and later appearances of a property: some programs append
/// properties that are there already, which RDF does not allow. Empty where it is no XML.
[[nodiscard]] QByteArray withoutDuplicates(const QByteArray& packet);

} // namespace XmpRepair
