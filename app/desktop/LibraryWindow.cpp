#include "LibraryWindow.h"

#include "CareDialogs.h"
#include "Directories.h"
#include "Inspector.h"
#include "LibraryActions.h"
#include "LibraryBanner.h"
#include "LibraryFinder.h"
#include "LibraryOpenPanel.h"
#include "LibrarySession.h"
#include "LibraryToolBar.h"
#include "LibraryView.h"
#include "PhotoFigures.h"
#include "PhotoGrid.h"
#include "PhotoTexts.h"
#include "RecentMenu.h"
#include "TrashDialogs.h"
#include "WelcomePage.h"

#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QDir>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QStackedWidget>
#include <QStatusBar>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kMessageMilliseconds = 10000;

/// The library that is being dragged onto the window; nothing for anything else.
std::optional<QString> draggedLibrary(const QMimeData* data)
{
    const QList<QUrl> urls = data->urls();
    if (urls.size() != 1 || !urls.first().isLocalFile()) {
        return std::nullopt;
    }
    const QString path = urls.first().toLocalFile();
    return LibraryFinder::looksLikeLibrary(path) ? std::optional(path) : std::nullopt;
}

} // namespace

LibraryWindow::LibraryWindow(LibrarySession& session, RecentLibraries& recent, QWidget* parent)
    : QMainWindow(parent)
    , m_session(session)
    , m_actions(new LibraryActions(*this))
    , m_recent(std::make_unique<RecentMenu>(*m_actions->openRecent, recent))
{
    setObjectName(u"libraryWindow"_s);
    setWindowTitle(tr("Photo Library"));
    setAcceptDrops(true);
    makeCentre();
    makeInspector();
    makeToolBar();
    makeStatusBar();
    m_trash = std::make_unique<TrashDialogs>(m_session, *m_actions, *m_view, *this);
    m_care = std::make_unique<CareDialogs>(m_session, *m_actions, *this);
    connectActions();
    connectDialogs();
    connectSession();
    updateActions();
    resize(fontMetrics().averageCharWidth() * 140, fontMetrics().height() * 42);
}

LibraryWindow::~LibraryWindow() = default;

void LibraryWindow::makeCentre()
{
    m_view = new LibraryView(m_session, *m_actions);
    m_welcome = new WelcomePage;
    m_pages = new QStackedWidget;
    m_pages->addWidget(m_welcome);
    m_pages->addWidget(m_view);
    setCentralWidget(m_pages);
}

void LibraryWindow::makeInspector()
{
    m_inspector = new Inspector;
    auto* const dock = new QDockWidget(tr("Inspector"), this);
    dock->setObjectName(u"inspectorDock"_s);
    dock->setWidget(m_inspector);
    dock->setAllowedAreas(Qt::LeftDockWidgetArea | Qt::RightDockWidgetArea);
    addDockWidget(Qt::RightDockWidgetArea, dock);
    dock->hide();
    QAction* const toggle = dock->toggleViewAction();
    toggle->setText(tr("Ins&pector"));
    toggle->setShortcut(QKeySequence(u"Ctrl+Alt+I"_s));
    m_actions->view->addAction(toggle);
}

void LibraryWindow::makeToolBar()
{
    m_toolBar = new LibraryToolBar(*m_actions, m_view->grid(), this);
    addToolBar(m_toolBar);
    m_actions->view->addAction(m_toolBar->toggleViewAction());
    connect(m_toolBar, &LibraryToolBar::searchTextChanged, m_view, &LibraryView::setSearchText);
}

void LibraryWindow::makeStatusBar()
{
    m_figures = new QLabel;
    m_figures->setObjectName(u"selectionFigures"_s);
    statusBar()->addPermanentWidget(m_figures);
}

void LibraryWindow::connectActions()
{
    connect(m_actions->open, &QAction::triggered, this, &LibraryWindow::chooseLibrary);
    connect(m_welcome, &WelcomePage::chooseRequested, this, &LibraryWindow::chooseLibrary);
    connect(m_welcome, &WelcomePage::openRequested, this, &LibraryWindow::openLibrary);
    connect(m_recent.get(), &RecentMenu::openRequested, this, &LibraryWindow::openLibrary);
    connect(m_actions->reload, &QAction::triggered, this, [this] {
        m_view->retryPictures();
        m_session.reload();
    });
    connect(m_actions->quit, &QAction::triggered, this, &QWidget::close);
    connect(
        m_actions->showConverter, &QAction::triggered, this, &LibraryWindow::converterRequested);
}

void LibraryWindow::connectDialogs()
{
    connect(&m_view->banner(), &LibraryBanner::openAfterCrash, this, [this] {
        m_session.open(m_notClosedPath, true);
    });
    connect(m_view, &LibraryView::selectionChanged, this, &LibraryWindow::showSelection);
    connect(m_view, &LibraryView::said, this, &LibraryWindow::say);
    connect(m_trash.get(), &TrashDialogs::said, this, &LibraryWindow::say);
    connect(m_care.get(), &CareDialogs::libraryMended, m_view, &LibraryView::retryPictures);
    connect(&m_session.care(), &LibraryCare::workChanged, this, [this] {
        updateActions();
        emit forecastSelectionChanged();
    });
}

void LibraryWindow::connectSession()
{
    connect(&m_session, &LibrarySession::shown, this, [this] {
        m_notClosedPath.clear();
        m_recent->add(m_session.contents().path);
        m_view->showAllPhotos();
        statusBar()->showMessage(tr("Checking the library…"));
    });
    connect(&m_session, &LibrarySession::opened, this, [this] {
        statusBar()->clearMessage();
        showBanner();
        updateActions();
        emit forecastSelectionChanged();
    });
    connect(&m_session, &LibrarySession::closedImproperly, this, [this](const QString& path) {
        m_notClosedPath = path;
        showBanner();
    });
    connect(&m_session, &LibrarySession::cautionChanged, this, &LibraryWindow::showBanner);
    connect(&m_session, &LibrarySession::contentsChanged, this, &LibraryWindow::showContents);
    connect(&m_session, &LibrarySession::busyChanged, this, &LibraryWindow::updateActions);
    connect(&m_session, &LibrarySession::failed, this, &LibraryWindow::showFailure);
}

void LibraryWindow::offer(const QStringList& libraries)
{
    m_welcome->offer(libraries);
}

void LibraryWindow::setScanning(bool scanning)
{
    m_scanning = scanning;
    m_care->setScanning(scanning);
    updateActions();
}

bool LibraryWindow::mayOpen() const
{
    return !m_scanning && !m_session.care().isWorking();
}

void LibraryWindow::openLibrary(const QString& path)
{
    if (!mayOpen()) {
        return;
    }
    m_welcome->setActivity(tr("Opening “%1”…").arg(QDir(path).dirName()));
    say(tr("Opening “%1”…").arg(QDir(path).dirName()));
    m_session.open(QDir(path).absolutePath());
}

void LibraryWindow::chooseLibrary()
{
    const QString start = m_session.isOpen() ? m_session.contents().path : Directories::pictures();
    if (const std::optional<QString> path = LibraryOpenPanel::choose(this, start)) {
        openLibrary(*path);
    }
}

void LibraryWindow::showPhoto(qint64 id)
{
    if (!m_view->isSeen(id)) {
        m_toolBar->clearSearch();
    }
    m_view->showPhoto(id);
    show();
    raise();
    activateWindow();
}

void LibraryWindow::showFailure(const QString& title, const QString& text)
{
    m_welcome->setActivity({});
    auto* const box =
        new QMessageBox(QMessageBox::Warning, windowTitle(), title, QMessageBox::Ok, this);
    box->setInformativeText(text);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void LibraryWindow::showContents()
{
    m_view->showContents();
    showBanner();
    m_pages->setCurrentIndex(m_session.isOpen() ? 1 : 0);
    m_welcome->setActivity({});
    setWindowTitle(m_session.isOpen()
                       ? tr("%1 — Photo Library").arg(QDir(m_session.contents().path).dirName())
                       : tr("Photo Library"));
    updateActions();
}

void LibraryWindow::showBanner()
{
    const LibraryContents& contents = m_session.contents();
    const bool canOpen = !m_notClosedPath.isEmpty() && contents.path == m_notClosedPath;
    m_view->banner().setText(contents.notice(), canOpen);
}

void LibraryWindow::settleSelection()
{
    m_view->settleSelection();
}

void LibraryWindow::showSelection()
{
    const PhotoGrid& grid = m_view->grid();
    const PhotoFigures figures = grid.selectedFigures();
    m_figures->setText(tr("Selected: %1 of %2, %3")
                           .arg(figures.photos)
                           .arg(m_view->photosSeen())
                           .arg(PhotoTexts::size(figures.bytes)));
    if (figures.photos == 0) {
        m_inspector->showNothing();
    } else if (figures.photos == 1) {
        m_inspector->showPhoto(m_view->photos().photo(grid.firstSelected()));
    } else {
        m_inspector->showFigures(figures);
    }
    updateActions();
    emit forecastSelectionChanged();
}

ForecastSelection LibraryWindow::forecastSelection() const
{
    ForecastSelection selection =
        ForecastSelection::of(m_view->showsTrash() ? QList<PhotoFacts>() : m_view->selectedFacts());
    selection.libraryOpen = m_session.isOpen();
    selection.whyReadOnly = m_session.contents().whyReadOnly;
    selection.checking = m_session.contents().checking || m_session.care().isWorking();
    return selection;
}

void LibraryWindow::updateActions()
{
    const bool isOpen = m_session.isOpen();
    m_actions->open->setEnabled(mayOpen());
    m_recent->setEnabled(mayOpen());
    m_actions->reload->setEnabled(isOpen && !m_session.care().isWorking());
    for (QAction* const action : {m_actions->selectAll,
                                  m_actions->invertSelection,
                                  m_actions->find,
                                  m_actions->zoomIn,
                                  m_actions->zoomOut,
                                  m_actions->descending,
                                  m_actions->showTrash}) {
        action->setEnabled(isOpen);
    }
    m_actions->sort->setEnabled(isOpen);
    updateActionsOnPhotos();
    m_view->banner().setEnabled(!m_scanning && !m_session.isBusy());
    setCursor(m_session.isBusy() ? Qt::BusyCursor : Qt::ArrowCursor);
}

void LibraryWindow::updateActionsOnPhotos()
{
    const bool isOpen = m_session.isOpen();
    const bool mayChange =
        isOpen && !m_scanning && !m_session.isBusy() && m_session.contents().isWritable();
    const bool hasTrash = !m_session.contents().trash.isEmpty();
    const bool areSelected = m_view->grid().firstSelected().isValid();
    m_actions->selectRaw->setEnabled(isOpen && !m_view->showsTrash());
    m_actions->showLarge->setEnabled(isOpen && areSelected);
    m_actions->putBack->setEnabled(mayChange && m_view->showsTrash() && hasTrash);
    m_actions->putBack->setText(areSelected ? tr("&Put Back") : tr("&Put All Back"));
    m_actions->emptyTrash->setEnabled(mayChange && hasTrash);
}

void LibraryWindow::say(const QString& text)
{
    statusBar()->showMessage(text, kMessageMilliseconds);
}

void LibraryWindow::closeEvent(QCloseEvent* event)
{
    if (m_mayClose && !m_mayClose()) {
        event->ignore();
        return;
    }
    m_view->closeViewer();
    QMainWindow::closeEvent(event);
}

void LibraryWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (mayOpen() && draggedLibrary(event->mimeData())) {
        event->acceptProposedAction();
    }
}

void LibraryWindow::dropEvent(QDropEvent* event)
{
    const std::optional<QString> path = draggedLibrary(event->mimeData());
    if (path && mayOpen()) {
        event->acceptProposedAction();
        openLibrary(*path);
    }
}
