#include "CarePhotographer.h"

#include "BackupChooser.h"
#include "CareReport.h"
#include "LibraryActions.h"

#include <QAbstractButton>
#include <QAction>
#include <QFile>
#include <QMenu>
#include <QTest>

#include <utility>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kPatienceWithCare = 60000; ///< milliseconds
constexpr int kSettlingOfSheets = 300;

} // namespace

CarePhotographer::CarePhotographer(DesktopProgram& program, QString library, Camera camera)
    : m_program(program)
    , m_library(std::move(library))
    , m_camera(std::move(camera))
{
}

bool CarePhotographer::takeEverything()
{
    takeMenu();
    takeVerification();
    takeRepair();
    takeBackups();
    return m_good;
}

bool CarePhotographer::settle()
{
    const bool idle =
        QTest::qWaitFor([this] { return !m_program.session().isBusy(); }, kPatienceWithCare);
    QTest::qWait(kSettlingOfSheets);
    m_good = idle && m_good;
    return idle;
}

template <typename Dialog>
Dialog* CarePhotographer::dialog()
{
    auto* const found = m_program.libraryWindow().findChild<Dialog*>();
    m_good = found != nullptr && found->isVisible() && m_good;
    return m_good ? found : nullptr;
}

void CarePhotographer::takeReport(const QString& name)
{
    if (auto* const report = settle() ? dialog<CareReport>() : nullptr) {
        m_camera.take(*report, name);
    }
}

/// As it is, and during a scan.
void CarePhotographer::takeMenu()
{
    LibraryWindow& window = m_program.libraryWindow();
    auto* const menu = qobject_cast<QMenu*>(window.actions().verify->parent());
    m_good = menu != nullptr && m_good;
    for (const bool scanning : {false, true}) {
        if (menu == nullptr) {
            return;
        }
        window.setScanning(scanning);
        menu->popup(window.pos());
        QTest::qWait(kSettlingOfSheets);
        m_camera.take(*menu, scanning ? u"care-menu-scanning"_s : u"care-menu"_s);
        menu->close();
    }
    window.setScanning(false);
}

void CarePhotographer::takeVerification()
{
    const LibraryActions& actions = m_program.libraryWindow().actions();
    actions.verify->trigger();
    takeReport(u"care-sound"_s);
    const QList<PhotoFacts>& photos = m_program.session().contents().photos;
    for (const qsizetype index : {0, 1, 2}) {
        m_good = QFile::remove(photos.at(index).thumbnailPath) && m_good;
    }
    m_good = QFile::remove(photos.at(3).originalPath) && m_good;
    m_good = QFile::remove(m_library + u"/iLifeShared/AlbumData2.xml"_s) && m_good;
    actions.verify->trigger();
    takeReport(u"care-findings"_s);
    m_program.libraryWindow().setScanning(true);
    takeReport(u"care-findings-scanning"_s);
    m_program.libraryWindow().setScanning(false);
}

void CarePhotographer::takeRepair()
{
    auto* const report = dialog<CareReport>();
    if (report == nullptr) {
        return;
    }
    m_camera.takeDialog(u"care-repair-question"_s,
                        [report] { report->findChild<QAbstractButton*>(u"takeOffer"_s)->click(); });
    report->beginWork(u"Repairing “Sample.photolibrary”…"_s, CareReport::Stopping::Possible);
    report->showProgress({.stage = CareProgress::Stage::Databases});
    takeReport(u"care-repairing"_s);
    report->showProgress({CareProgress::Stage::Sidecars, 41234, 100000});
    takeReport(u"care-repairing-counted"_s);
    m_program.session().care().repair(LibraryCare::Unclosed::Refuse);
    takeReport(u"care-repaired"_s);
}

void CarePhotographer::takeBackups()
{
    const LibraryActions& actions = m_program.libraryWindow().actions();
    actions.backUp->trigger();
    takeReport(u"care-backed-up"_s);
    actions.restoreBackup->trigger();
    auto* const chooser = settle() ? dialog<BackupChooser>() : nullptr;
    if (chooser == nullptr) {
        return;
    }
    m_camera.take(*chooser, u"care-backups"_s);
    m_camera.takeDialog(u"care-restore-question"_s, [chooser] {
        chooser->findChild<QAbstractButton*>(u"restoreBackup"_s)->click();
    });
    chooser->close();
    const Result<QList<LibraryBackup>> backups = LibraryBackups::list(m_library);
    m_good = backups.ok() && m_good;
    if (backups.ok()) {
        m_program.session().care().restore(
            m_library, backups.value().first().name, LibraryCare::Unclosed::Refuse);
        takeReport(u"care-restored"_s);
    }
}
