#include "ScanClosingView.h"

#include "PhotoTexts.h"
#include "ScanTexts.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>

#include <algorithm>

using namespace Qt::StringLiterals;
using PhotoTexts::oneLine;

namespace
{

QString headingOf(const ScanClosing& closing)
{
    QStringList sentences;
    if (const qsizetype photos = closing.notConverted.size(); photos > 0) {
        sentences += ScanTexts::notConverted(photos) + u'.';
    }
    if (const qsizetype copies = closing.otherNames.size(); copies > 0) {
        sentences +=
            copies == 1
                ? ScanClosingView::tr("1 copy bears the name of another photo.")
                : ScanClosingView::tr("%1 copies bear the names of other photos.").arg(copies);
    }
    const bool stopped = std::ranges::any_of(closing.notConverted, [](const ScannedPhoto& photo) {
        return photo.outcome.kind == PhotoOutcome::Kind::Missing;
    });
    if (stopped) {
        sentences += ScanClosingView::tr("Edit > Select RAW leaves out photos whose original is "
                                         "missing or may not be read.");
    }
    return sentences.join(u' ');
}

} // namespace

ScanClosingView::ScanClosingView(QWidget* parent)
    : QWidget(parent)
    , m_heading(new QLabel(this))
    , m_list(new QListWidget(this))
{
    setObjectName(u"scanClosing"_s);
    m_heading->setObjectName(u"closingHeading"_s);
    m_heading->setTextFormat(Qt::PlainText);
    m_heading->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_heading->setWordWrap(true);
    QFont bold = m_heading->font();
    bold.setBold(true);
    m_heading->setFont(bold);
    makeList();
    auto* const row = new QHBoxLayout;
    row->addWidget(m_heading, 1);
    QPushButton* const show = addButton(u"showFailedPhoto"_s, tr("Show &Photo"));
    connect(show, &QPushButton::clicked, this, &ScanClosingView::choosePhoto);
    row->addWidget(show, 0, Qt::AlignBottom);
    QPushButton* const copyAll = addButton(u"copyClosing"_s, tr("Cop&y List"));
    connect(copyAll, &QPushButton::clicked, this, [this] { copy(Lines::All); });
    row->addWidget(copyAll, 0, Qt::AlignBottom);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(row);
    layout->addWidget(m_list, 1);
    hide();
}

void ScanClosingView::makeList()
{
    m_list->setObjectName(u"closingList"_s);
    m_list->setAccessibleName(tr("Remarks on single photos"));
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setWordWrap(true);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_list->setResizeMode(QListView::Adjust);
    // The rows of long lists are laid out while others are seen.
    m_list->setLayoutMode(QListView::Batched);
    // The list takes what room there is, and none from the settings above.
    m_list->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    m_list->setMinimumHeight(fontMetrics().lineSpacing() * 4);
    connect(m_list, &QListWidget::itemActivated, this, &ScanClosingView::choosePhoto);
    auto* const copySelected = new QAction(m_list);
    copySelected->setShortcut(QKeySequence::Copy);
    copySelected->setShortcutContext(Qt::WidgetShortcut);
    connect(copySelected, &QAction::triggered, this, [this] { copy(Lines::Selected); });
    m_list->addAction(copySelected);
}

QPushButton* ScanClosingView::addButton(const QString& name, const QString& title)
{
    auto* const button = new QPushButton(title, this);
    button->setObjectName(name);
    button->setAccessibleName(QString(title).remove(u'&'));
    return button;
}

void ScanClosingView::setClosing(const ScanClosing& closing)
{
    m_heading->setText(headingOf(closing));
    m_list->clear();
    for (const ScannedPhoto& photo : closing.notConverted) {
        addLine(photo,
                ScanTexts::photoWithReason(
                    oneLine(photo.filename), photo.id, oneLine(photo.outcome.reason)));
    }
    for (const ScannedPhoto& photo : closing.otherNames) {
        addLine(photo,
                ScanTexts::otherName(
                    oneLine(photo.filename), photo.id, oneLine(photo.outcome.importedAs)));
    }
    m_list->setCurrentRow(0);
    setVisible(!closing.isEmpty());
}

void ScanClosingView::addLine(const ScannedPhoto& photo, const QString& text)
{
    auto* const item = new QListWidgetItem(text, m_list);
    item->setData(Qt::UserRole, photo.id);
}

void ScanClosingView::choosePhoto()
{
    if (const QListWidgetItem* const item = m_list->currentItem()) {
        emit photoChosen(item->data(Qt::UserRole).toLongLong());
    }
}

void ScanClosingView::copy(Lines wanted) const
{
    QStringList lines;
    for (int row = 0; row < m_list->count(); ++row) {
        const QListWidgetItem* const item = m_list->item(row);
        if (wanted == Lines::All || item->isSelected()) {
            lines += item->text();
        }
    }
    QApplication::clipboard()->setText(lines.join(u'\n'));
}
