#pragma once

#include <QStringList>
#include <QVariantMap>

/// What a catalogue tells otherwise than it should, in sentences for people. Only what follows from
/// the databases counts; settings of slide shows and keys unknown here do not. Photos of equal date
/// may stand in any order. Any thread.
namespace CatalogueComparison
{

/// Of AlbumData.xml: `found` is what it holds, `wanted` what it should.
[[nodiscard]] QStringList ofFull(const QVariantMap& found, const QVariantMap& wanted);

/// Of AlbumData2.xml. `full`: what AlbumData.xml should hold, for the dates of the photos.
[[nodiscard]] QStringList
ofBrief(const QVariantMap& found, const QVariantMap& wanted, const QVariantMap& full);

} // namespace CatalogueComparison
