#include "LibraryBanner.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>

using namespace Qt::StringLiterals;

LibraryBanner::LibraryBanner(QWidget* parent)
    : QFrame(parent)
    , m_text(new QLabel)
    , m_button(new QPushButton(tr("&Check and Open for Writing")))
{
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    auto* const layout = new QHBoxLayout(this);
    auto* const icon = new QLabel;
    const int edge = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(edge));
    layout->addWidget(icon, 0, Qt::AlignTop);
    m_text->setObjectName(u"whyReadOnly"_s);
    m_text->setForegroundRole(QPalette::ToolTipText);
    m_text->setWordWrap(true);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    layout->addWidget(m_text, 1);
    m_button->setObjectName(u"openAfterCrash"_s);
    layout->addWidget(m_button, 0, Qt::AlignTop);
    connect(m_button, &QPushButton::clicked, this, &LibraryBanner::openAfterCrash);
    hide();
}

void LibraryBanner::setText(const QString& text, bool canOpenAfterCrash)
{
    m_text->setText(text);
    m_text->setAccessibleName(text);
    m_button->setVisible(canOpenAfterCrash);
    setVisible(!text.isEmpty());
}
