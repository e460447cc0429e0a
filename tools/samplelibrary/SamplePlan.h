#pragma once

#include "SampleLibrary.h"
#include "Shot.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// A photo of the sample library, and what the library is to know of it beyond its file.
struct PlannedPhoto {
    Shot shot{};
    bool raw{true};
    QString fileName{};
    QString event{};
    QString name{}; ///< empty: the one that the library gives it
    QString comment{};
    int rating{0};
    QStringList keywords{};
    QStringList albums{};
    std::optional<Place> place{}; ///< for the library alone; the file's own is in the shot
};

/// What is in a sample library: eight different RAW photos over and over, each time a little
/// different, then three JPEG photos. Any thread.
namespace SamplePlan
{

/// In the order in which they are imported.
[[nodiscard]] QList<PlannedPhoto> photos(const SampleOptions& options);
/// The names of the albums that the photos are to be in.
[[nodiscard]] QStringList albums();

} // namespace SamplePlan
