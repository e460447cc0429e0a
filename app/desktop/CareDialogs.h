#pragma once

#include "CareReport.h"
#include "LibraryCare.h"

#include <QObject>
#include <QPointer>

#include <functional>

class BackupChooser;
class LibraryActions;
class LibrarySession;
class QMessageBox;
class QWidget;

/// What a person and the program say to each other when a library is looked after: the menu's
/// actions, the questions before anything is changed, and what came of it. Main thread.
class CareDialogs final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CareDialogs)
public:
    /// All outlive it; the dialogs belong to the window.
    CareDialogs(LibrarySession& session, const LibraryActions& actions, QWidget& window);

    /// While a scan runs nothing is begun.
    void setScanning(bool scanning);

signals:
    /// Photos, or pictures of them, may be others than before.
    void libraryMended();

private:
    using Unclosed = LibraryCare::Unclosed;
    using Work = LibraryCare::Work;

    /// What is asked for with a library open, or with none too.
    enum class Needs : quint8 { OpenLibrary, Nothing };

    void connectCare();
    void updateActions();
    /// Why nothing can be begun now, in a sentence; empty when it can.
    [[nodiscard]] QString whyNot(Needs needs) const;
    [[nodiscard]] CareReport& report(const QString& title);
    void show(const CareReport::Outcome& outcome, std::function<void()> offered = {});

    void verify();
    void showVerification(const LibraryCare::Verification& verification);
    void askToRepair(qint64 findings, const QString& backupsFolder);
    void repair(Unclosed unclosed);
    void showRepair(const RepairReport& repaired);
    void backUp();
    void showBackup(const LibraryBackup& backup);
    void listBackups();
    void showChooser(const QList<LibraryBackup>& backups, const QStringList& warnings);
    void askToRestore(const LibraryBackup& backup, const QStringList& warnings);
    void restore(const QString& name, Unclosed unclosed);
    void showRestored(const LibraryBackups::Restored& restored);
    void showFailure(const Error& error);
    void showNotClosed();
    /// Whether the person confirmed, and it may still be done.
    [[nodiscard]] bool confirms(QMessageBox& question, const QString& button, Needs needs);
    [[nodiscard]] QString libraryName() const;

    LibrarySession& m_session;
    LibraryCare& m_care;
    const LibraryActions& m_actions;
    QWidget& m_window;
    QPointer<CareReport> m_report;
    QPointer<BackupChooser> m_chooser;
    std::function<void()> m_offered; ///< what the report's button does
    QString m_library;               ///< that is being looked after
    QString m_restoring;             ///< name of the copy that was to be restored last
    Work m_last{Work::None};         ///< whose outcome is told
    bool m_scanning{false};
};
