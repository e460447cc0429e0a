#pragma once

#include "CommandLineOptions.h"
#include "LibraryFacts.h"

#include <QList>
#include <QStringList>

class Console;

/// The photos that a selection means, in the catalogue's order, and what there is to say about it.
struct ChosenPhotos {
    QList<PhotoFacts> photos;
    QStringList notes;          ///< sentences about ids and names that match nothing
    qint64 leftOut{0};          ///< photos that are not present
    qint64 convertedAlready{0}; ///< RAW photos that would be meant, had they not been converted
};

/// Selects photos. Pure but for a look whether masters can be read.
namespace PhotoSelection
{

/// What is meant where no option selects.
enum class WithoutSelection : quint8 { All, Raw };

/// `photos`: the library's, without those in the trash. Hidden photos are selected only by id,
/// movies never.
[[nodiscard]] ChosenPhotos choose(const QList<PhotoFacts>& photos,
                                  const SelectionOptions& options,
                                  WithoutSelection withoutSelection);

/// Says what matched nothing and how many photos were left out.
void explain(const ChosenPhotos& chosen, Console& console);
/// Says why no photo is selected, where none is.
void explainNothing(const ChosenPhotos& chosen, Console& console);

} // namespace PhotoSelection
