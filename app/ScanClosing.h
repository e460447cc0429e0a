#pragma once

#include "PhotoOutcome.h"

#include <QList>
#include <QString>

/// A selected photo and what became of it.
struct ScannedPhoto {
    qint64 id{0};
    QString filename; ///< the photo's own
    PhotoOutcome outcome;
};

/// Of which photos something is to be told after a scan or a dry run, in the order of the
/// selection. Any thread.
struct ScanClosing {
    QList<ScannedPhoto> notConverted; ///< skipped, failed or missing; each with a reason
    QList<ScannedPhoto> otherNames;   ///< whose copy bears the name of another photo

    [[nodiscard]] static ScanClosing of(const QList<ScannedPhoto>& photos);

    [[nodiscard]] bool isEmpty() const { return notConverted.isEmpty() && otherNames.isEmpty(); }
};
