#include "CareReport.h"

#include "PhotoTexts.h"
#include "SmallText.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QLocale>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStyle>
#include <QTextCursor>

using namespace Qt::StringLiterals;

namespace
{

constexpr Qt::TextInteractionFlags kSelectable =
    Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard;

/// A bar of this many steps, whatever it measures: a count may be larger than a bar's numbers.
constexpr int kBarSteps = 1000;

QString wordsFor(CareProgress::Stage stage)
{
    using enum CareProgress::Stage;
    switch (stage) {
    case Databases:
        return CareReport::tr("Looking through the databases…");
    case Sidecars:
        return CareReport::tr("Comparing the sidecars…");
    case Catalogues:
        return CareReport::tr("Comparing the catalogues…");
    case Files:
        return CareReport::tr("Looking through the files…");
    case Backup:
        return CareReport::tr("Making a backup…");
    case Mending:
        return CareReport::tr("Mending…");
    case Pictures:
        return CareReport::tr("Making thumbnails and previews…");
    }
    Q_UNREACHABLE();
}

/// A path on one line: each character counts, but none may end the line or turn its direction.
QString printable(QString path)
{
    for (QChar& letter : path) {
        const QChar::Category category = letter.category();
        if (category == QChar::Other_Control || category == QChar::Other_Format ||
            category == QChar::Separator_Line || category == QChar::Separator_Paragraph) {
            letter = QChar::ReplacementCharacter;
        }
    }
    return path;
}

QLabel* makeLabel(const QString& name, QWidget* parent)
{
    auto* const label = new QLabel(parent);
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(kSelectable);
    label->setWordWrap(true);
    return label;
}

} // namespace

CareReport::CareReport(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(u"careReport"_s);
    auto* const layout = new QVBoxLayout(this);
    makeTexts(layout);
    m_bar = new QProgressBar;
    m_bar->setObjectName(u"careProgress"_s);
    m_bar->setAccessibleName(tr("Progress"));
    m_bar->setTextVisible(false);
    layout->addWidget(m_bar);
    m_list = new QPlainTextEdit;
    m_list->setObjectName(u"careList"_s);
    m_list->setAccessibleName(tr("What was found"));
    m_list->setReadOnly(true);
    m_list->setUndoRedoEnabled(false);
    m_list->setTextInteractionFlags(kSelectable);
    m_list->setTabChangesFocus(true);
    m_list->setMinimumHeight(fontMetrics().lineSpacing() * 6);
    layout->addWidget(m_list, 1);
    m_why = SmallText::label({}, this);
    m_why->setObjectName(u"whyNotOffered"_s);
    m_why->setWordWrap(true);
    layout->addWidget(m_why);
    makeButtons(layout);
}

void CareReport::makeTexts(QBoxLayout* layout)
{
    m_icon = new QLabel;
    m_heading = makeLabel(u"careHeading"_s, this);
    QFont bold = m_heading->font();
    bold.setBold(true);
    m_heading->setFont(bold);
    m_text = makeLabel(u"careText"_s, this);
    auto* const texts = new QVBoxLayout;
    texts->addWidget(m_heading);
    texts->addWidget(m_text);
    auto* const row = new QHBoxLayout;
    row->addWidget(m_icon, 0, Qt::AlignTop);
    row->addLayout(texts, 1);
    layout->addLayout(row);
}

QPushButton* CareReport::addButton(QBoxLayout* layout, const QString& name)
{
    auto* const button = new QPushButton;
    button->setObjectName(name);
    button->setAutoDefault(false);
    layout->addWidget(button);
    return button;
}

void CareReport::makeButtons(QBoxLayout* layout)
{
    auto* const row = new QHBoxLayout;
    m_copy = addButton(row, u"copyFindings"_s);
    m_copy->setText(tr("C&opy"));
    m_copy->setAccessibleName(tr("Copy the list"));
    row->addStretch(1);
    m_offer = addButton(row, u"takeOffer"_s);
    m_stop = addButton(row, u"stopCare"_s);
    m_stop->setText(tr("&Stop"));
    m_close = addButton(row, u"closeReport"_s);
    m_close->setText(tr("&Close"));
    m_close->setDefault(true);
    connect(m_copy, &QPushButton::clicked, this, [this] {
        QApplication::clipboard()->setText(m_list->toPlainText());
    });
    connect(m_offer, &QPushButton::clicked, this, &CareReport::offerTaken);
    connect(m_stop, &QPushButton::clicked, this, &CareReport::reject);
    connect(m_close, &QPushButton::clicked, this, &CareReport::reject);
    layout->addSpacing(fontMetrics().lineSpacing() / 2);
    layout->addLayout(row);
}

void CareReport::beginWork(const QString& heading, Stopping stopping)
{
    const bool canStop = stopping == Stopping::Possible;
    m_state = canStop ? State::Stoppable : State::Working;
    m_icon->hide();
    m_heading->setText(heading);
    m_text->setText(canStop ? QString() : tr("This cannot be stopped half-way."));
    m_text->show();
    m_bar->setRange(0, 0);
    m_bar->show();
    m_list->hide();
    m_why->hide();
    m_copy->hide();
    m_offer->hide();
    m_stop->setEnabled(canStop);
    m_stop->show();
    m_close->hide();
    fit();
}

void CareReport::showProgress(const CareProgress& progress)
{
    if (m_state == State::Outcome || m_state == State::Stopping) {
        return;
    }
    const QLocale locale;
    const bool isCounted = progress.total > 0;
    m_text->setText(isCounted ? tr("%1 %2 of %3")
                                    .arg(wordsFor(progress.stage),
                                         locale.toString(progress.done),
                                         locale.toString(progress.total))
                              : wordsFor(progress.stage));
    m_bar->setRange(0, isCounted ? kBarSteps : 0);
    m_bar->setValue(isCounted ? static_cast<int>(progress.done * kBarSteps / progress.total) : 0);
}

void CareReport::showOutcome(const Outcome& outcome)
{
    m_state = State::Outcome;
    showMood(outcome.mood);
    m_heading->setText(outcome.heading);
    m_text->setText(outcome.text);
    m_text->setVisible(!outcome.text.isEmpty());
    m_bar->hide();
    showSections(outcome.sections);
    m_offer->setText(outcome.offer);
    m_offer->setVisible(!outcome.offer.isEmpty());
    m_stop->hide();
    m_close->show();
    m_close->setFocus();
    setOfferEnabled(true);
    fit();
}

void CareReport::setOfferEnabled(bool enabled, const QString& why)
{
    const bool isOffering = m_state == State::Outcome && !m_offer->text().isEmpty();
    m_offer->setEnabled(enabled);
    m_why->setText(why);
    m_why->setVisible(isOffering && !why.isEmpty());
}

QString CareReport::asText(const QList<Section>& sections)
{
    QString text;
    for (const Section& section : sections) {
        if (section.entries.isEmpty()) {
            continue;
        }
        text += (text.isEmpty() ? QString() : u"\n"_s) + section.title + u'\n';
        for (const Entry& entry : section.entries) {
            text += u"• "_s + PhotoTexts::oneLine(entry.text);
            if (!entry.place.isEmpty()) {
                text += (entry.text.isEmpty() ? QString() : u"\n   "_s) + printable(entry.place);
            }
            text += u'\n';
        }
    }
    text.chop(1);
    return text;
}

void CareReport::showSections(const QList<Section>& sections)
{
    const QString text = asText(sections);
    m_list->setPlainText(text);
    m_list->moveCursor(QTextCursor::Start);
    m_list->setVisible(!text.isEmpty());
    m_copy->setVisible(!text.isEmpty());
}

void CareReport::showMood(Mood mood)
{
    const QStyle::StandardPixmap symbol =
        mood == Mood::Bad ? QStyle::SP_MessageBoxWarning : QStyle::SP_MessageBoxInformation;
    const int edge = style()->pixelMetric(QStyle::PM_LargeIconSize, nullptr, this);
    m_icon->setPixmap(style()->standardIcon(symbol).pixmap(edge));
    m_icon->show();
}

void CareReport::fit()
{
    const int width = fontMetrics().averageCharWidth() * (m_list->isHidden() ? 80 : 112);
    layout()->activate();
    const int needed =
        layout()->hasHeightForWidth() ? layout()->totalHeightForWidth(width) : sizeHint().height();
    const int tall = m_list->isHidden() ? needed : needed + fontMetrics().lineSpacing() * 8;
    resize(width, tall);
}

void CareReport::reject()
{
    switch (m_state) {
    case State::Outcome:
        QDialog::reject();
        return;
    case State::Stoppable:
        m_state = State::Stopping;
        m_stop->setEnabled(false);
        m_text->setText(tr("Stopping…"));
        emit stopRequested();
        return;
    case State::Working:
    case State::Stopping:
        return; // it is over soon
    }
}
