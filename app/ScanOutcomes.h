#pragma once

#include "PhotoOutcome.h"

#include <QList>
#include <QObject>

class CorvaneAppDelegate;

/// Remembers what became of each photo of the controller's last scan. Main thread.
class ScanOutcomes final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ScanOutcomes)
public:
    /// `controller` outlives it.
    explicit ScanOutcomes(CorvaneAppDelegate& controller, QObject* parent = nullptr);

    /// In the order of the selection; empty when none was taken.
    [[nodiscard]] const QList<PhotoOutcome>& photos() const { return m_photos; }

private:
    QList<PhotoOutcome> m_photos;
};
