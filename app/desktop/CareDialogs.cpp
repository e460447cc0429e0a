#include "CareDialogs.h"

#include "BackupChooser.h"
#include "CareTexts.h"
#include "Directories.h"
#include "LibraryActions.h"
#include "LibraryOpenPanel.h"
#include "LibrarySession.h"
#include "PhotoTexts.h"

#include <QAction>
#include <QDir>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

QList<CareReport::Entry> entriesOf(const QList<Finding>& findings)
{
    QList<CareReport::Entry> entries;
    for (const Finding& finding : findings) {
        entries.append({finding.what, finding.where});
    }
    return entries;
}

QList<CareReport::Entry> sentences(const QStringList& texts)
{
    QList<CareReport::Entry> entries;
    for (const QString& text : texts) {
        entries.append({text, {}});
    }
    return entries;
}

QList<Finding> thoseThat(bool areRepairable, QList<Finding> findings)
{
    findings.removeIf(
        [areRepairable](const Finding& finding) { return finding.repairable != areRepairable; });
    return findings;
}

} // namespace

CareDialogs::CareDialogs(LibrarySession& session, const LibraryActions& actions, QWidget& window)
    : m_session(session)
    , m_care(session.care())
    , m_actions(actions)
    , m_window(window)
{
    connect(m_actions.verify, &QAction::triggered, this, &CareDialogs::verify);
    connect(m_actions.backUp, &QAction::triggered, this, &CareDialogs::backUp);
    connect(m_actions.restoreBackup, &QAction::triggered, this, &CareDialogs::listBackups);
    connectCare();
    updateActions();
}

void CareDialogs::connectCare()
{
    connect(&m_session, &LibrarySession::busyChanged, this, &CareDialogs::updateActions);
    connect(&m_session, &LibrarySession::contentsChanged, this, &CareDialogs::updateActions);
    connect(&m_session, &LibrarySession::opened, this, &CareDialogs::updateActions);
    connect(&m_care, &LibraryCare::workChanged, this, [this] {
        if (m_care.isWorking()) {
            m_last = m_care.work();
        }
        updateActions();
    });
    connect(&m_care, &LibraryCare::progressed, this, [this](const CareProgress& progress) {
        if (m_report != nullptr) {
            m_report->showProgress(progress);
        }
    });
    connect(&m_care, &LibraryCare::verified, this, &CareDialogs::showVerification);
    connect(&m_care, &LibraryCare::repaired, this, &CareDialogs::showRepair);
    connect(&m_care, &LibraryCare::backedUp, this, &CareDialogs::showBackup);
    connect(&m_care, &LibraryCare::listed, this, &CareDialogs::showChooser);
    connect(&m_care, &LibraryCare::restored, this, &CareDialogs::showRestored);
    connect(&m_care, &LibraryCare::failed, this, &CareDialogs::showFailure);
}

void CareDialogs::setScanning(bool scanning)
{
    m_scanning = scanning;
    updateActions();
}

QString CareDialogs::whyNot(Needs needs) const
{
    const LibraryContents& contents = m_session.contents();
    if (m_scanning) {
        return tr("This has to wait for the end of the scan.");
    }
    if (m_session.isBusy()) {
        return contents.checking ? tr("This has to wait until the library is checked.")
                                 : tr("This has to wait for what is being done with the library.");
    }
    if (contents.inUse) {
        return tr("Another program has the library open. Close it there, then open it here again.");
    }
    return needs == Needs::OpenLibrary && !m_session.isOpen() ? tr("No library is open.")
                                                              : QString();
}

void CareDialogs::updateActions()
{
    const QString why = whyNot(Needs::OpenLibrary);
    const QString whyNotRestore = whyNot(Needs::Nothing);
    const auto setWhy = [](QAction& action, const QString& reason) {
        action.setEnabled(reason.isEmpty());
        action.setStatusTip(reason);
    };
    setWhy(*m_actions.verify, why);
    setWhy(*m_actions.backUp, why);
    setWhy(*m_actions.restoreBackup, whyNotRestore);
    m_actions.whyNoCare->setText(why);
    m_actions.whyNoCare->setVisible(!why.isEmpty());
    if (m_report != nullptr) {
        // What is being done with the library is over soon.
        const bool isSaid = m_scanning || !m_session.isBusy();
        m_report->setOfferEnabled(why.isEmpty(), isSaid ? why : QString());
    }
    if (m_chooser != nullptr) {
        m_chooser->setWhyNot(whyNotRestore);
    }
}

QString CareDialogs::libraryName() const
{
    return QDir(m_library).dirName();
}

CareReport& CareDialogs::report(const QString& title)
{
    if (m_report == nullptr) {
        m_report = new CareReport(&m_window);
        connect(m_report, &CareReport::stopRequested, &m_care, &LibraryCare::stop);
        connect(m_report, &CareReport::offerTaken, this, [this] {
            if (const std::function<void()> offered = m_offered) {
                offered();
            }
        });
    }
    m_report->setWindowTitle(title);
    m_report->show();
    m_report->raise();
    m_report->activateWindow();
    return *m_report;
}

void CareDialogs::show(const CareReport::Outcome& outcome, std::function<void()> offered)
{
    m_offered = std::move(offered);
    if (m_report == nullptr) {
        static_cast<void>(report(tr("Library")));
    }
    m_report->showOutcome(outcome);
    m_report->show();
    updateActions();
}

void CareDialogs::verify()
{
    m_library = m_session.contents().path;
    report(tr("Verify Library"))
        .beginWork(tr("Verifying “%1”…").arg(libraryName()), CareReport::Stopping::Possible);
    m_care.verify();
}

void CareDialogs::showVerification(const LibraryCare::Verification& verification)
{
    const QList<Finding>& findings = verification.findings;
    if (findings.isEmpty()) {
        show(
            {.heading = CareTexts::allAgrees(),
             .text =
                 tr("Nothing was found in “%1” that would have to be mended.").arg(libraryName())});
        return;
    }
    const QList<Finding> repairable = thoseThat(true, findings);
    const QList<Finding> others = thoseThat(false, findings);
    const qint64 count = repairable.size();
    show({.mood = CareReport::Mood::Bad,
          .heading = CareTexts::differs(findings.size()),
          .text = repairable.isEmpty() ? tr("None of it can be mended without a choice of yours.")
                                       : CareTexts::canBeMended(count) + u'.',
          .sections = {{tr("Can be mended:"), entriesOf(repairable)},
                       {tr("Needs a choice of yours:"), entriesOf(others)}},
          .offer = repairable.isEmpty() ? QString() : tr("&Repair…")},
         [this, count, folder = verification.backupsFolder] { askToRepair(count, folder); });
}

bool CareDialogs::confirms(QMessageBox& question, const QString& button, Needs needs)
{
    const QPushButton* const confirm = question.addButton(button, QMessageBox::AcceptRole);
    question.setDefaultButton(QMessageBox::Cancel);
    question.setTextInteractionFlags(Qt::TextSelectableByMouse);
    question.exec();
    // While it was asked a scan may have begun.
    return question.clickedButton() == confirm && whyNot(needs).isEmpty();
}

void CareDialogs::askToRepair(qint64 findings, const QString& backupsFolder)
{
    QMessageBox box(QMessageBox::Question,
                    tr("Verify Library"),
                    findings == 1 ? tr("Mend 1 thing in “%1”?").arg(libraryName())
                                  : tr("Mend %1 things in “%2”?").arg(findings).arg(libraryName()),
                    QMessageBox::Cancel,
                    m_report);
    box.setObjectName(u"repairQuestion"_s);
    box.setInformativeText(
        tr("A backup of the databases and catalogues is made first, in\n%1\n\nThen everything is "
           "made right that follows from the databases: sidecars, catalogues, indexes, statistics, "
           "and missing thumbnails and previews. Rows that lead to something that is gone, such as "
           "an album's entry for a deleted photo, are deleted. No file is removed, and what needs "
           "a choice of yours stays as it is.\n\nMake sure that iPhoto is quit.")
            .arg(backupsFolder));
    if (confirms(box, tr("&Repair"), Needs::OpenLibrary)) {
        repair(Unclosed::Refuse);
    }
}

void CareDialogs::repair(Unclosed unclosed)
{
    m_library = m_session.contents().path;
    report(tr("Repair Library"))
        .beginWork(tr("Repairing “%1”…").arg(libraryName()), CareReport::Stopping::Possible);
    m_care.repair(unclosed);
}

void CareDialogs::showRepair(const RepairReport& repaired)
{
    const bool isAllWell =
        repaired.left.isEmpty() && repaired.failures.isEmpty() && !repaired.stopped;
    const QString left = repaired.stopped ? CareTexts::notMendedYet(repaired.left.size())
                                          : CareTexts::leftAsItWas(repaired.left.size());
    const QString mended = CareTexts::mended(repaired.mended.size());
    QString heading = repaired.backup.isNull() ? CareTexts::nothingToMend() : mended;
    QStringList text{left};
    if (repaired.stopped) {
        heading = tr("The repair was stopped");
        text.prepend(mended);
    }
    if (!repaired.backup.isNull()) {
        text << CareTexts::backupMadeBefore(repaired.backup);
    }
    show({.mood = isAllWell ? CareReport::Mood::Good : CareReport::Mood::Bad,
          .heading = heading,
          .text = text.join(u"\n\n"_s),
          .sections = {
              {tr("Could not be mended:"), sentences(repaired.failures)},
              {repaired.stopped ? tr("Not known to be mended:") : tr("Needs a choice of yours:"),
               entriesOf(repaired.left)},
              {tr("Mended:"), entriesOf(repaired.mended)}}});
    emit libraryMended();
}

void CareDialogs::backUp()
{
    m_library = m_session.contents().path;
    report(tr("Back Up Library"))
        .beginWork(tr("Backing up the databases and catalogues of “%1”…").arg(libraryName()),
                   CareReport::Stopping::Impossible);
    m_care.backUp();
}

void CareDialogs::showBackup(const LibraryBackup& backup)
{
    show({.heading = tr("The databases and catalogues of “%1” were backed up").arg(libraryName()),
          .text = CareTexts::backupMade(backup.name, PhotoTexts::size(backup.bytes), backup.path) +
                  u"\n\n"_s +
                  tr("The photos themselves are not in it. Library > Restore Backup goes back to "
                     "it.")});
}

void CareDialogs::listBackups()
{
    std::optional<QString> library = m_session.contents().path;
    if (!m_session.isOpen()) {
        library = LibraryOpenPanel::choose(&m_window, Directories::pictures());
    }
    if (library && whyNot(Needs::Nothing).isEmpty()) {
        m_library = QDir(*library).absolutePath();
        m_care.list(m_library);
    }
}

void CareDialogs::showChooser(const QList<LibraryBackup>& backups, const QStringList& warnings)
{
    delete m_chooser;
    m_chooser = new BackupChooser(libraryName(), backups, &m_window);
    m_chooser->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_chooser, &BackupChooser::chosen, this, [this, warnings](const LibraryBackup& backup) {
        askToRestore(backup, warnings);
    });
    updateActions();
    m_chooser->open();
}

void CareDialogs::askToRestore(const LibraryBackup& backup, const QStringList& warnings)
{
    QMessageBox box(QMessageBox::Warning,
                    tr("Restore Backup"),
                    tr("Go back to the backup of %1?").arg(CareTexts::localTime(backup.moment)),
                    QMessageBox::Cancel,
                    m_chooser);
    box.setObjectName(u"restoreQuestion"_s);
    const QString consequences =
        tr("The library then knows of its photos what it knew at that moment: titles, ratings, "
           "keywords, albums and conversions that came later are undone.\n\nA backup of what is "
           "there now is made first, so that you can go forward again. Photos that came later stay "
           "in the library as files, and are listed afterwards. Photos that were deleted for good "
           "do not come back.\n\nMake sure that iPhoto is quit.");
    box.setInformativeText((warnings + QStringList{consequences}).join(u"\n\n"_s));
    if (confirms(box, tr("&Restore"), Needs::Nothing)) {
        if (m_chooser != nullptr) {
            m_chooser->close();
        }
        restore(backup.name, Unclosed::Refuse);
    }
}

void CareDialogs::restore(const QString& name, Unclosed unclosed)
{
    if (m_session.isOpen() && m_session.contents().path != m_library) {
        return; // another one was opened meanwhile
    }
    m_restoring = name;
    report(tr("Restore Backup"))
        .beginWork(tr("Restoring a backup of “%1”…").arg(libraryName()),
                   CareReport::Stopping::Impossible);
    m_care.restore(m_library, name, unclosed);
}

void CareDialogs::showRestored(const LibraryBackups::Restored& restored)
{
    QList<CareReport::Entry> kept;
    for (const QString& file : restored.kept) {
        kept.append({{}, file});
    }
    show({.mood = restored.lagging.isEmpty() ? CareReport::Mood::Good : CareReport::Mood::Bad,
          .heading = tr("The backup was restored"),
          .text = CareTexts::backupRestored(
              restored.from.name, CareTexts::localTime(restored.from.moment), restored.before),
          .sections = {{tr("Not done yet:"), sentences(restored.lagging)},
                       {CareTexts::filesKept(kept.size()), kept}},
          .offer = tr("&Verify Library")},
         [this] { verify(); });
    emit libraryMended();
}

void CareDialogs::showNotClosed()
{
    const auto accept = [this] {
        m_last == Work::Repair ? repair(Unclosed::Accept) : restore(m_restoring, Unclosed::Accept);
    };
    show({.mood = CareReport::Mood::Bad,
          .heading = tr("“%1” was not closed").arg(libraryName()),
          .text = tr("iPhoto did not close the library properly, or has it open now. Nothing was "
                     "changed. Open it in iPhoto and quit, then try again. Only where iPhoto runs "
                     "on no computer that reaches the library, go on all the same."),
          .offer = tr("Go On &All the Same")},
         accept);
}

void CareDialogs::showFailure(const Error& error)
{
    const bool canInsist = m_last == Work::Repair || m_last == Work::Restore;
    if (error.code == ErrorCode::NotClosed && canInsist) {
        showNotClosed();
        return;
    }
    const bool isStopped = error.code == ErrorCode::Interrupted;
    CareReport::Outcome outcome{.mood =
                                    isStopped ? CareReport::Mood::Notice : CareReport::Mood::Bad,
                                .heading = {},
                                .text = error.message,
                                .sections = {},
                                .offer = {}};
    switch (m_last) {
    case Work::Verify:
        outcome.heading = isStopped ? tr("The verification was stopped")
                                    : tr("The library could not be verified");
        outcome.text = isStopped ? tr("Nothing was changed.") : error.message;
        break;
    case Work::Repair:
        outcome.heading =
            isStopped ? tr("The repair was stopped") : tr("The library could not be repaired");
        outcome.text = isStopped ? tr("Nothing was changed.") : error.message;
        break;
    case Work::BackUp:
        outcome.heading = tr("The library could not be backed up");
        break;
    case Work::List:
        outcome.heading = tr("The backups could not be listed");
        break;
    case Work::Restore:
        outcome.heading = tr("The backup was not restored; nothing was changed");
        break;
    case Work::None:
        break;
    }
    show(outcome);
}
