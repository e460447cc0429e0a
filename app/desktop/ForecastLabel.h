#pragma once

#include "PressForecast.h"

#include <QLabel>

/// Shows the lines of a forecast one below the other, each behind a sign of its severity.
class ForecastLabel final : public QLabel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ForecastLabel)
public:
    explicit ForecastLabel(QWidget* parent = nullptr);

    /// What blocks is shown in bold.
    void setLines(const QList<PressForecast::Line>& lines);

    /// The sentences as they were given, one a line.
    [[nodiscard]] QString plainText() const { return accessibleName(); }
};
