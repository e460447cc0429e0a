#pragma once

#include "LibraryFacts.h"
#include "Presenter.h"
#include "ScanClosing.h"

#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

/// What became of the selected photos of a scan or of a dry run.
struct ScanReport {
    QString library; ///< absolute path
    bool dryRun{false};
    QList<ScannedPhoto> photos;   ///< in the order of the selection
    std::optional<Alert> stopped; ///< the alert that stopped the scan

    /// No photo has had its turn.
    [[nodiscard]] static ScanReport before(const QString& library,
                                           const QList<PhotoFacts>& selection);

    [[nodiscard]] qsizetype count(PhotoOutcome::Kind kind) const;
    /// Whether every selected photo was, or in a dry run would be, converted.
    [[nodiscard]] bool isComplete() const;
    /// The sums that the scan's summary shows.
    [[nodiscard]] qint64 originalsBytes() const;
    [[nodiscard]] qint64 convertedBytes() const;
    /// The document that scripts read; its keys are fixed. A dry run converts nothing, so its
    /// converted and saved bytes are null.
    [[nodiscard]] QJsonObject document() const;
};
