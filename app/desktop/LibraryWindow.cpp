#include "LibraryWindow.h"

#include "CareDialogs.h"
#include "Directories.h"
#include "Inspector.h"
#include "LibraryActions.h"
#include "LibraryBanner.h"
#include "LibraryFinder.h"
#include "LibraryOpenPanel.h"
#include "LibrarySession.h"
#include "PhotoFigures.h"
#include "PhotoGrid.h"
#include "PhotoTexts.h"
#include "PhotoViewer.h"
#include "RecentLibraries.h"
#include "WelcomePage.h"

#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QDir>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QSlider>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolBar>
#include <QTreeView>
#include <QUrl>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;
using Kind = PhotoFilter::Collection::Kind;

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

/// A text shown in a menu: an ampersand in it is no mnemonic.
QString menuText(QString text)
{
    return text.replace(u'&', u"&&"_s);
}

} // namespace

LibraryWindow::LibraryWindow(LibrarySession& session, RecentLibraries& recent, QWidget* parent)
    : QMainWindow(parent)
    , m_session(session)
    , m_recent(recent)
    , m_actions(new LibraryActions(*this))
    , m_care(std::make_unique<CareDialogs>(session, *m_actions, *this))
{
    setObjectName(u"libraryWindow"_s);
    setWindowTitle(tr("Photo Library"));
    setAcceptDrops(true);
    m_filter.setSourceModel(&m_photos);
    makeCentre();
    makeInspector();
    makeToolBar();
    m_figures = new QLabel;
    m_figures->setObjectName(u"selectionFigures"_s);
    statusBar()->addPermanentWidget(m_figures);
    connectFileActions();
    connectPhotoActions();
    connectLibraryActions();
    connectSession();
    showRecent();
    updateActions();
    resize(fontMetrics().averageCharWidth() * 140, fontMetrics().height() * 42);
}

LibraryWindow::~LibraryWindow()
{
    delete m_viewer;
}

void LibraryWindow::makeCentre()
{
    m_sidebar = new QTreeView;
    m_sidebar->setObjectName(u"sidebar"_s);
    m_sidebar->setAccessibleName(tr("Events, albums and keywords"));
    m_sidebar->setModel(&m_sidebarModel);
    m_sidebar->setHeaderHidden(true);
    m_sidebar->setUniformRowHeights(true);
    m_sidebar->setRootIsDecorated(true);
    m_sidebar->setTextElideMode(Qt::ElideMiddle);

    m_grid = new PhotoGrid(m_filter, m_thumbnails);
    m_grid->setObjectName(u"photoGrid"_s);
    m_grid->setAccessibleName(tr("Photos"));
    m_banner = new LibraryBanner;
    m_banner->setObjectName(u"banner"_s);
    auto* const photos = new QWidget;
    auto* const column = new QVBoxLayout(photos);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_banner);
    column->addWidget(m_grid, 1);

    auto* const splitter = new QSplitter;
    splitter->setObjectName(u"splitter"_s);
    splitter->addWidget(m_sidebar);
    splitter->addWidget(photos);
    splitter->setStretchFactor(1, 1);
    splitter->setChildrenCollapsible(false);
    const int characters = fontMetrics().averageCharWidth();
    splitter->setSizes({characters * 40, characters * 100});

    m_welcome = new WelcomePage;
    m_pages = new QStackedWidget;
    m_pages->addWidget(m_welcome);
    m_pages->addWidget(splitter);
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
    QToolBar* const bar = addToolBar(tr("Tools"));
    bar->setObjectName(u"toolBar"_s);
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    m_actions->view->addAction(bar->toggleViewAction());
    bar->addAction(m_actions->open);
    bar->addSeparator();
    bar->addAction(m_actions->selectRaw);
    bar->addAction(m_actions->showConverter);
    auto* const space = new QWidget;
    space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    bar->addWidget(space);
    m_search = new QLineEdit;
    m_search->setObjectName(u"search"_s);
    m_search->setPlaceholderText(tr("Search"));
    m_search->setAccessibleName(tr("Search photos by words"));
    m_search->setClearButtonEnabled(true);
    m_search->setMaximumWidth(fontMetrics().averageCharWidth() * 32);
    bar->addWidget(m_search);
    m_zoom = new QSlider(Qt::Horizontal);
    m_zoom->setObjectName(u"zoom"_s);
    m_zoom->setAccessibleName(tr("Size of the pictures"));
    m_zoom->setToolTip(m_zoom->accessibleName());
    m_zoom->setRange(PhotoGrid::kSmallestZoom, PhotoGrid::kLargestZoom);
    m_zoom->setValue(m_grid->zoom());
    m_zoom->setMaximumWidth(fontMetrics().averageCharWidth() * 20);
    bar->addWidget(m_zoom);
}

void LibraryWindow::connectFileActions()
{
    connect(m_actions->open, &QAction::triggered, this, &LibraryWindow::chooseLibrary);
    connect(m_welcome, &WelcomePage::chooseRequested, this, &LibraryWindow::chooseLibrary);
    connect(m_welcome, &WelcomePage::openRequested, this, &LibraryWindow::openLibrary);
    connect(m_actions->reload, &QAction::triggered, this, [this] {
        m_thumbnails.retryFailures();
        m_session.reload();
    });
    connect(m_actions->quit, &QAction::triggered, this, &QWidget::close);
    connect(
        m_actions->showConverter, &QAction::triggered, this, &LibraryWindow::converterRequested);
    connect(m_banner, &LibraryBanner::openAfterCrash, this, [this] {
        m_session.open(m_notClosedPath, true);
    });
}

void LibraryWindow::connectPhotoActions()
{
    connect(m_actions->selectAll, &QAction::triggered, m_grid, &QAbstractItemView::selectAll);
    connect(m_actions->selectRaw, &QAction::triggered, this, &LibraryWindow::selectRaw);
    connect(m_actions->invertSelection, &QAction::triggered, m_grid, &PhotoGrid::invertSelection);
    connect(m_actions->find, &QAction::triggered, this, [this] {
        m_search->setFocus(Qt::ShortcutFocusReason);
        m_search->selectAll();
    });
    connect(m_actions->zoomIn, &QAction::triggered, m_grid, &PhotoGrid::zoomIn);
    connect(m_actions->zoomOut, &QAction::triggered, m_grid, &PhotoGrid::zoomOut);
    connect(m_zoom, &QSlider::valueChanged, m_grid, &PhotoGrid::setZoom);
    connect(m_grid, &PhotoGrid::zoomChanged, m_zoom, &QSlider::setValue);
    connect(m_actions->showLarge, &QAction::triggered, this, [this] {
        showLarge(m_grid->firstSelected());
    });
    connect(m_grid, &PhotoGrid::openRequested, this, &LibraryWindow::showLarge);
    connect(m_grid, &PhotoGrid::photoSelectionChanged, this, &LibraryWindow::showSelection);
    connect(m_actions->sort, &QActionGroup::triggered, this, &LibraryWindow::sortPhotos);
    connect(m_actions->descending, &QAction::toggled, this, &LibraryWindow::sortPhotos);
    connect(m_search, &QLineEdit::textChanged, &m_filter, &PhotoFilter::setSearchText);
    connect(m_sidebar->selectionModel(),
            &QItemSelectionModel::currentChanged,
            this,
            &LibraryWindow::showCollection);
}

void LibraryWindow::connectLibraryActions()
{
    connect(m_actions->showTrash, &QAction::triggered, this, [this] {
        m_sidebar->setCurrentIndex(m_sidebarModel.indexOf({Kind::Trash, 0, {}}));
    });
    connect(m_actions->putBack, &QAction::triggered, this, &LibraryWindow::putBack);
    connect(m_actions->emptyTrash, &QAction::triggered, this, &LibraryWindow::askToEmptyTrash);
    connect(&m_session.care(), &LibraryCare::workChanged, this, [this] {
        updateActions();
        emit forecastSelectionChanged();
    });
    connect(
        m_care.get(), &CareDialogs::libraryMended, this, [this] { m_thumbnails.retryFailures(); });
}

void LibraryWindow::connectSession()
{
    connect(&m_session, &LibrarySession::shown, this, [this] {
        m_notClosedPath.clear();
        m_recent.add(m_session.contents().path);
        showRecent();
        m_sidebar->setCurrentIndex(m_sidebarModel.index(0, 0));
        statusBar()->showMessage(tr("Checking the library…"));
    });
    connect(&m_session, &LibrarySession::opened, this, [this] {
        statusBar()->clearMessage();
        m_banner->setText(m_session.contents().notice(), false);
        updateActions();
        emit forecastSelectionChanged();
    });
    connect(&m_session, &LibrarySession::cautionChanged, this, [this] {
        const LibraryContents& contents = m_session.contents();
        m_banner->setText(contents.notice(), contents.path == m_notClosedPath);
    });
    connect(&m_session, &LibrarySession::contentsChanged, this, &LibraryWindow::showContents);
    connect(&m_session, &LibrarySession::closedImproperly, this, [this](const QString& path) {
        m_notClosedPath = path;
        m_banner->setText(m_session.contents().whyReadOnly, true);
    });
    connect(&m_session, &LibrarySession::busyChanged, this, &LibraryWindow::updateActions);
    connect(&m_session,
            &LibrarySession::failed,
            this,
            [this](const QString& title, const QString& text) {
                m_welcome->setActivity({});
                auto* const box = new QMessageBox(
                    QMessageBox::Warning, windowTitle(), title, QMessageBox::Ok, this);
                box->setInformativeText(text);
                box->setTextInteractionFlags(Qt::TextSelectableByMouse);
                box->setAttribute(Qt::WA_DeleteOnClose);
                box->open();
            });
    connect(&m_session, &LibrarySession::restored, this, [this](int photos) {
        say(photos == 1 ? tr("1 photo was put back.") : tr("%1 photos were put back.").arg(photos));
    });
    connect(&m_session, &LibrarySession::trashEmptied, this, [this](qint64 bytes) {
        say(tr("The trash is empty; %1 are free again.").arg(PhotoTexts::size(bytes)));
    });
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

void LibraryWindow::askToEmptyTrash()
{
    const QList<PhotoFacts>& trash = m_session.contents().trash;
    qint64 bytes = 0;
    for (const PhotoFacts& photo : trash) {
        bytes += photo.bytes;
    }
    QMessageBox box(QMessageBox::Warning,
                    windowTitle(),
                    trash.size() == 1 ? tr("Delete 1 photo for good?")
                                      : tr("Delete %1 photos for good?").arg(trash.size()),
                    QMessageBox::Cancel,
                    this);
    box.setObjectName(u"emptyTrashQuestion"_s);
    box.setInformativeText(tr("Their files are deleted from the disk, which frees about %1. This "
                              "cannot be undone.")
                               .arg(PhotoTexts::size(bytes)));
    const QPushButton* const confirm = box.addButton(tr("&Delete"), QMessageBox::DestructiveRole);
    box.setDefaultButton(QMessageBox::Cancel);
    box.exec();
    // While it was asked a scan may have begun.
    if (box.clickedButton() == confirm && m_actions->emptyTrash->isEnabled()) {
        m_session.emptyTrash();
    }
}

void LibraryWindow::showContents()
{
    const LibraryContents& contents = m_session.contents();
    if (m_viewer != nullptr && contents.path != m_shownPath) {
        m_viewer->close(); // photos of another library have the same ids
    }
    // The selection in the models is no longer that of the person while they are filled anew.
    m_showingContents = true;
    const QModelIndex current = m_sidebar->currentIndex();
    const auto picked = SidebarModel::collection(current).value_or(PhotoFilter::Collection{});
    m_sidebarModel.setContents(contents);
    m_sidebar->expandAll();
    m_sidebar->setCurrentIndex(m_sidebarModel.indexOf(picked));
    m_banner->setText(contents.notice(), contents.path == m_notClosedPath);
    m_showingContents = false;
    showCollection();
    m_pages->setCurrentIndex(m_session.isOpen() ? 1 : 0);
    m_welcome->setActivity({});
    setWindowTitle(m_session.isOpen() ? tr("%1 — Photo Library").arg(QDir(contents.path).dirName())
                                      : tr("Photo Library"));
    updateActions();
}

bool LibraryWindow::showsTrash() const
{
    return m_filter.collection().kind == Kind::Trash;
}

void LibraryWindow::showCollection()
{
    const auto picked = SidebarModel::collection(m_sidebar->currentIndex());
    if (m_showingContents || !picked) {
        return;
    }
    const LibraryContents& contents = m_session.contents();
    const auto show = [this, &picked, &contents] {
        m_filter.setCollection(*picked, contents.lastImport);
        const QList<PhotoFacts>& wanted = showsTrash() ? contents.trash : contents.photos;
        if (!m_photos.photos().isSharedWith(wanted)) {
            m_photos.setPhotos(wanted);
        }
    };
    if (contents.path == m_shownPath && *picked == m_filter.collection()) {
        m_grid->keepPlace(show);
    } else {
        // What was selected stays so as far as it is seen here.
        const QList<qint64> selected = showsTrash() ? QList<qint64>() : m_session.selection();
        show();
        m_grid->selectPhotos(selected);
    }
    m_shownPath = contents.path;
    showSelection();
}

void LibraryWindow::settleSelection()
{
    m_grid->settleSelection();
}

QList<PhotoFacts> LibraryWindow::selectedFacts() const
{
    QList<PhotoFacts> facts;
    const QList<qint64> ids = m_grid->selectedPhotos();
    const QSet<qint64> wanted(ids.begin(), ids.end());
    for (const PhotoFacts& photo : m_photos.photos()) {
        if (wanted.contains(photo.id)) {
            facts.append(photo);
        }
    }
    return facts;
}

void LibraryWindow::showSelection()
{
    const PhotoFigures figures = m_grid->selectedFigures();
    m_figures->setText(tr("Selected: %1 of %2, %3")
                           .arg(figures.photos)
                           .arg(m_filter.rowCount())
                           .arg(PhotoTexts::size(figures.bytes)));
    if (figures.photos == 0) {
        m_inspector->showNothing();
    } else if (figures.photos == 1) {
        m_inspector->showPhoto(m_filter.photo(m_grid->firstSelected()));
    } else {
        m_inspector->showFigures(figures);
    }
    // Photos in the trash are no selection of the application: nothing is converted from there.
    m_session.setSelection(showsTrash() ? QList<qint64>() : m_grid->selectedPhotos());
    updateActions();
    emit forecastSelectionChanged();
}

ForecastSelection LibraryWindow::forecastSelection() const
{
    ForecastSelection selection =
        ForecastSelection::of(showsTrash() ? QList<PhotoFacts>() : selectedFacts());
    selection.libraryOpen = m_session.isOpen();
    selection.whyReadOnly = m_session.contents().whyReadOnly;
    selection.checking = m_session.contents().checking || m_session.care().isWorking();
    return selection;
}

void LibraryWindow::selectRaw()
{
    const PhotoGrid::RawSelection found = m_grid->selectRaw();
    QStringList parts{tr("RAW photos selected: %1.").arg(found.selected)};
    if (found.converted > 0) {
        parts += tr("Left out, converted already: %1.").arg(found.converted);
    }
    if (found.missing > 0) {
        parts += tr("Left out, original missing: %1.").arg(found.missing);
    }
    if (found.unreadable > 0) {
        parts += tr("Left out, original may not be read: %1.").arg(found.unreadable);
    }
    say(parts.join(u' '));
}

void LibraryWindow::sortPhotos()
{
    const auto order =
        static_cast<PhotoFilter::Order>(m_actions->sort->checkedAction()->data().toInt());
    m_filter.setOrder(order, m_actions->descending->isChecked());
}

void LibraryWindow::putBack()
{
    QList<qint64> ids = m_grid->selectedPhotos();
    if (ids.isEmpty()) {
        for (const PhotoFacts& photo : m_session.contents().trash) {
            ids.append(photo.id);
        }
    }
    m_session.restoreFromTrash(ids);
}

void LibraryWindow::showLarge(const QModelIndex& index)
{
    if (!index.isValid()) {
        return;
    }
    if (m_viewer == nullptr) {
        m_viewer = new PhotoViewer(m_filter);
        m_viewer->setAttribute(Qt::WA_DeleteOnClose);
    }
    m_viewer->showPhoto(index);
    m_viewer->show();
    m_viewer->raise();
    m_viewer->activateWindow();
}

void LibraryWindow::showRecent()
{
    m_actions->openRecent->clear();
    const QStringList paths = m_recent.paths();
    for (const QString& path : paths) {
        QAction* const action = m_actions->openRecent->addAction(
            menuText(tr("%1 in %2").arg(QDir(path).dirName(), QFileInfo(path).path())));
        connect(action, &QAction::triggered, this, [this, path] { openLibrary(path); });
    }
    m_actions->openRecent->addSeparator();
    QAction* const clear = m_actions->openRecent->addAction(tr("&Clear Menu"));
    connect(clear, &QAction::triggered, this, [this] {
        m_recent.clear();
        showRecent();
    });
    m_actions->openRecent->setEnabled(!paths.isEmpty() && mayOpen());
}

void LibraryWindow::updateActions()
{
    const bool isOpen = m_session.isOpen();
    const bool mayChange =
        isOpen && !m_scanning && !m_session.isBusy() && m_session.contents().isWritable();
    const bool hasTrash = !m_session.contents().trash.isEmpty();
    m_actions->open->setEnabled(mayOpen());
    m_actions->openRecent->setEnabled(mayOpen() && !m_recent.paths().isEmpty());
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
    m_actions->selectRaw->setEnabled(isOpen && !showsTrash());
    m_actions->showLarge->setEnabled(isOpen && m_grid->firstSelected().isValid());
    m_actions->putBack->setEnabled(mayChange && showsTrash() && hasTrash);
    m_actions->putBack->setText(m_grid->firstSelected().isValid() ? tr("&Put Back")
                                                                  : tr("&Put All Back"));
    m_actions->emptyTrash->setEnabled(mayChange && hasTrash);
    m_banner->setEnabled(!m_scanning && !m_session.isBusy());
    setCursor(m_session.isBusy() ? Qt::BusyCursor : Qt::ArrowCursor);
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
    if (m_viewer != nullptr) {
        m_viewer->close();
    }
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
