#pragma once

#include "LibraryFacts.h"

#include <QList>
#include <QString>

/// What a scan meets among the selected photos when it reads one kind of file of each: the
/// originals, or the pictures as they are shown.
struct ForecastSources {
    int raw{0};
    qint64 rawBytes{0}; ///< of the originals
    int jpegs{0};
    int others{0};        ///< neither RAW nor JPEG, but readable
    int movieFrames{0};   ///< movies of which a still picture would be converted
    int skippedMovies{0}; ///< movies that cannot be read
    int unreadable{0};    ///< photos of a type that cannot be read, or without a height
    int missing{0};       ///< photos and movies whose file is missing; they count above as well

    /// What is not skipped.
    [[nodiscard]] int converted() const { return raw + jpegs + others + movieFrames; }

    [[nodiscard]] int count() const { return converted() + skippedMovies + unreadable; }
};

/// What is selected in which library, as far as the next press of the scan button is concerned.
struct ForecastSelection {
    bool libraryOpen{false};
    bool checking{false}; ///< the library is being checked; a scan waits for the end of that
    QString whyReadOnly;  ///< why nothing can be written to the library; empty when it can
    ForecastSources originals;
    ForecastSources displayed;
    int editedOrRotated{0}; ///< photos, not movies

    /// Counts the photos; what is said of the library is the caller's. Reads no disk; any thread.
    [[nodiscard]] static ForecastSelection of(const QList<PhotoFacts>& photos);
};
