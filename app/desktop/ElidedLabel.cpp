#include "ElidedLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

ElidedLabel::ElidedLabel(QWidget* parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

QSize ElidedLabel::sizeHint() const
{
    const QMargins margins = contentsMargins();
    return {fontMetrics().averageCharWidth() * 20 + margins.left() + margins.right(),
            fontMetrics().height() + margins.top() + margins.bottom()};
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {0, sizeHint().height()};
}

bool ElidedLabel::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip && shownText() != text()) {
        // Escaped, since a name may look like markup.
        QToolTip::showText(
            static_cast<QHelpEvent*>(event)->globalPos(), text().toHtmlEscaped(), this);
        return true;
    }
    return QLabel::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    style()->drawItemText(&painter,
                          contentsRect(),
                          static_cast<int>(alignment()),
                          palette(),
                          isEnabled(),
                          shownText(),
                          foregroundRole());
}

QString ElidedLabel::shownText() const
{
    return fontMetrics().elidedText(text().simplified(), Qt::ElideMiddle, contentsRect().width());
}
