#pragma once

#include "LibraryFacts.h"
#include "PhotoMarks.h"

/// Several photos in figures. Any thread.
struct PhotoFigures {
    int photos{0};
    int raw{0};
    int movies{0};
    int edited{0};
    int missing{0};   ///< whose original is no file that exists
    int converted{0}; ///< that carry "Corvane Original"
    int processed{0}; ///< that carry "Corvane Processed"
    qint64 bytes{0};  ///< of the originals on disk

    void add(const PhotoFacts& photo)
    {
        ++photos;
        raw += photo.raw ? 1 : 0;
        movies += photo.movie ? 1 : 0;
        edited += photo.edited ? 1 : 0;
        missing += photo.missing ? 1 : 0;
        converted += PhotoMarks::isConvertedOriginal(photo.keywords) ? 1 : 0;
        processed += PhotoMarks::isProcessedCopy(photo.keywords) ? 1 : 0;
        bytes += photo.bytes;
    }
};
