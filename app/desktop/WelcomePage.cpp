#include "WelcomePage.h"

#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace
{

QString hint()
{
    return WelcomePage::tr("Open an iPhoto library to choose RAW photos from it. You can also drop "
                           "one on this window.");
}

} // namespace

WelcomePage::WelcomePage(QWidget* parent)
    : QWidget(parent)
    , m_hint(new QLabel(hint()))
    , m_offers(new QVBoxLayout)
{
    auto* const column = new QVBoxLayout;
    m_hint->setObjectName(u"welcomeHint"_s);
    m_hint->setWordWrap(true);
    m_hint->setAlignment(Qt::AlignCenter);
    column->addWidget(m_hint);
    auto* const choose = new QPushButton(tr("&Open Library…"));
    choose->setObjectName(u"chooseLibrary"_s);
    choose->setDefault(true);
    connect(choose, &QPushButton::clicked, this, &WelcomePage::chooseRequested);
    column->addWidget(choose, 0, Qt::AlignHCenter);
    column->addLayout(m_offers);
    auto* const page = new QVBoxLayout(this);
    page->addStretch(1);
    page->addLayout(column); // as wide as the page: centred, it would not follow the hint's lines
    page->addStretch(2);
}

void WelcomePage::offer(const QStringList& libraries)
{
    while (const QLayoutItem* const item = m_offers->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    if (libraries.isEmpty()) {
        return;
    }
    m_offers->addSpacing(fontMetrics().height());
    m_offers->addWidget(new QLabel(tr("Libraries that were found:")), 0, Qt::AlignHCenter);
    for (const QString& path : libraries) {
        // An ampersand in a name is no mnemonic.
        QString name = QDir(path).dirName();
        auto* const button = new QPushButton(name.replace(u'&', u"&&"_s));
        button->setObjectName(u"offer"_s);
        button->setToolTip(path);
        button->setAccessibleDescription(path);
        connect(button, &QPushButton::clicked, this, [this, path] { emit openRequested(path); });
        m_offers->addWidget(button, 0, Qt::AlignHCenter);
    }
}

void WelcomePage::setActivity(const QString& text)
{
    m_hint->setText(text.isEmpty() ? hint() : text);
}
