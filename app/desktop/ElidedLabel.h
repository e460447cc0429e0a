#pragma once

#include <QLabel>

/// A label of one line that never widens its window: a text that does not fit is shown with an
/// ellipsis in its middle, and in full as tool tip.
class ElidedLabel final : public QLabel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ElidedLabel)
public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    /// The text on one line, as much of it as there is room for.
    [[nodiscard]] QString shownText() const;
};
