#include "BackupChooser.h"

#include "CareTexts.h"
#include "PhotoTexts.h"
#include "SmallText.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kIndexRole = Qt::UserRole;

QLabel* makeText(const QString& name, const QString& text)
{
    auto* const label = new QLabel(text);
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

QTreeWidgetItem* itemFor(const LibraryBackup& backup)
{
    auto* const item = new QTreeWidgetItem(
        {CareTexts::localTime(backup.moment),
         backup.photos ? CareTexts::photosOfBackup(*backup.photos) : CareTexts::damagedBackup(),
         PhotoTexts::size(backup.bytes)});
    item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
    item->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
    item->setToolTip(0, backup.path);
    item->setDisabled(!backup.photos);
    return item;
}

} // namespace

BackupChooser::BackupChooser(const QString& name,
                             const QList<LibraryBackup>& backups,
                             QWidget* parent)
    : QDialog(parent)
    , m_backups(backups)
{
    setObjectName(u"backupChooser"_s);
    setWindowTitle(tr("Restore Backup"));
    setWindowModality(Qt::WindowModal);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(makeText(
        u"backupsText"_s,
        backups.isEmpty()
            ? CareTexts::noBackups() + u' ' +
                  tr("One is made before the first change of each run, and by Library > Back Up "
                     "Now.")
            : tr("“%1” can go back to what it was at one of these moments. A backup holds what the "
                 "library knows of its photos, not the photos themselves: no photo is changed or "
                 "removed.")
                  .arg(name)));
    makeList(backups);
    layout->addWidget(m_list, 1);
    m_why = SmallText::label({}, this);
    m_why->setObjectName(u"whyNotRestored"_s);
    m_why->setWordWrap(true);
    layout->addWidget(m_why);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    m_restore = buttons->addButton(tr("&Restore…"), QDialogButtonBox::ActionRole);
    m_restore->setObjectName(u"restoreBackup"_s);
    m_restore->setVisible(!backups.isEmpty());
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_restore, &QPushButton::clicked, this, &BackupChooser::choose);
    setWhyNot({});
    const int width = fontMetrics().averageCharWidth() * 64;
    resize(width, layout->totalHeightForWidth(width));
}

void BackupChooser::makeList(const QList<LibraryBackup>& backups)
{
    m_list = new QTreeWidget;
    m_list->setObjectName(u"backups"_s);
    m_list->setAccessibleName(tr("Backups, the newest first"));
    m_list->setHeaderLabels({tr("Date"), tr("Photos"), tr("Size")});
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setVisible(!backups.isEmpty());
    for (qsizetype index = backups.size() - 1; index >= 0; --index) {
        QTreeWidgetItem* const item = itemFor(backups.at(index));
        item->setData(0, kIndexRole, index);
        m_list->addTopLevelItem(item);
        if (m_list->currentItem() == nullptr && !item->isDisabled()) {
            m_list->setCurrentItem(item);
        }
    }
    m_list->header()->setStretchLastSection(false);
    m_list->header()->setMinimumSectionSize(fontMetrics().averageCharWidth() * 14);
    m_list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_list->headerItem()->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
    m_list->headerItem()->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
    m_list->setMinimumHeight(fontMetrics().lineSpacing() * 9);
    connect(m_list, &QTreeWidget::currentItemChanged, this, &BackupChooser::updateButton);
    connect(m_list, &QTreeWidget::itemActivated, this, &BackupChooser::choose);
}

const LibraryBackup* BackupChooser::current() const
{
    const QTreeWidgetItem* const item = m_list->currentItem();
    return item == nullptr || item->isDisabled()
               ? nullptr
               : &m_backups.at(item->data(0, kIndexRole).toLongLong());
}

void BackupChooser::choose()
{
    if (m_restore->isEnabled()) {
        emit chosen(*current());
    }
}

void BackupChooser::updateButton()
{
    m_restore->setEnabled(current() != nullptr && m_why->text().isEmpty());
}

void BackupChooser::setWhyNot(const QString& why)
{
    m_why->setText(why);
    m_why->setVisible(!why.isEmpty());
    updateButton();
}
