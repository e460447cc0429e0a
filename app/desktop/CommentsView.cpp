#include "CommentsView.h"

#include "ZTBCrashReporterWindowController.h"

#include <QFontDatabase>
#include <QKeyEvent>

using namespace Qt::StringLiterals;

CommentsView::CommentsView(ZTBCrashReporterWindowController& controller, QWidget* parent)
    : QPlainTextEdit(parent)
    , m_controller(&controller)
{
    setObjectName(u"commentsTextView"_s);
    setAccessibleName(tr("Comments"));
    TextView* const view = &controller.commentsTextView();
    setPlainText(view->string());
    setPlaceholderText(view->placeholderString());
    setAccessibleDescription(view->placeholderString());
    setPointSize(view->typingFontSize());
    connect(view, &TextView::stringChanged, this, [this](const QString& text) {
        if (text != toPlainText()) {
            setPlainText(text);
        }
    });
    connect(view, &TextView::placeholderStringChanged, this, [this](const QString& text) {
        setPlaceholderText(text);
        setAccessibleDescription(text);
    });
    connect(view, &TextView::typingFontSizeChanged, this, &CommentsView::setPointSize);
    connect(
        this, &QPlainTextEdit::textChanged, view, [this, view] { view->setString(toPlainText()); });
}

QSize CommentsView::sizeHint() const
{
    return heightOfLines(4);
}

QSize CommentsView::minimumSizeHint() const
{
    return heightOfLines(2);
}

void CommentsView::keyPressEvent(QKeyEvent* event)
{
    const bool isBack = event->key() == Qt::Key_Backtab;
    if (m_controller != nullptr && (isBack || event->key() == Qt::Key_Tab) &&
        m_controller->textViewDoCommandBySelector(isBack ? u"insertBacktab:"_s : u"insertTab:"_s)) {
        event->accept();
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
}

QSize CommentsView::heightOfLines(int lines) const
{
    const QMargins margins = contentsMargins();
    const int around = margins.top() + margins.bottom() + qRound(document()->documentMargin() * 2);
    return {fontMetrics().averageCharWidth() * 40, fontMetrics().lineSpacing() * lines + around};
}

void CommentsView::setPointSize(double points)
{
    if (points > 0.0) {
        QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
        font.setPointSizeF(points);
        setFont(font);
        updateGeometry();
    }
}
