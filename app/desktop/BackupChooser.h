#pragma once

#include "LibraryBackups.h"

#include <QDialog>
#include <QList>

class QLabel;
class QPushButton;
class QTreeWidget;

/// Lists the dated copies of a library, so that one of them can be chosen to be restored. Main
/// thread.
class BackupChooser final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(BackupChooser)
public:
    /// `name`: of the library; `backups`: the oldest first.
    BackupChooser(const QString& name, const QList<LibraryBackup>& backups, QWidget* parent);

    /// Enables the choice, or disables it and says why.
    void setWhyNot(const QString& why);

signals:
    void chosen(const LibraryBackup& backup);

private:
    void makeList(const QList<LibraryBackup>& backups);
    void choose();
    void updateButton();
    [[nodiscard]] const LibraryBackup* current() const;

    const QList<LibraryBackup> m_backups;
    QTreeWidget* m_list{nullptr};
    QLabel* m_why{nullptr};
    QPushButton* m_restore{nullptr};
};
