#include "LibraryView.h"

#include "LibraryActions.h"
#include "LibraryBanner.h"
#include "LibrarySession.h"
#include "PhotoGrid.h"
#include "PhotoViewer.h"

#include <QAction>
#include <QActionGroup>
#include <QSplitter>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;
using Kind = PhotoFilter::Collection::Kind;

LibraryView::LibraryView(LibrarySession& session, const LibraryActions& actions, QWidget* parent)
    : QWidget(parent)
    , m_session(session)
    , m_actions(actions)
{
    m_filter.setSourceModel(&m_photos);
    makeSidebar();
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
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(splitter);
    connectActions();
}

LibraryView::~LibraryView()
{
    delete m_viewer;
}

void LibraryView::makeSidebar()
{
    m_sidebar = new QTreeView;
    m_sidebar->setObjectName(u"sidebar"_s);
    m_sidebar->setAccessibleName(tr("Events, albums and keywords"));
    m_sidebar->setModel(&m_sidebarModel);
    m_sidebar->setHeaderHidden(true);
    m_sidebar->setUniformRowHeights(true);
    m_sidebar->setRootIsDecorated(true);
    m_sidebar->setTextElideMode(Qt::ElideMiddle);
    connect(m_sidebar->selectionModel(),
            &QItemSelectionModel::currentChanged,
            this,
            &LibraryView::showCollection);
}

void LibraryView::connectActions()
{
    connect(m_actions.selectAll, &QAction::triggered, m_grid, &QAbstractItemView::selectAll);
    connect(m_actions.selectRaw, &QAction::triggered, this, &LibraryView::selectRaw);
    connect(m_actions.invertSelection, &QAction::triggered, m_grid, &PhotoGrid::invertSelection);
    connect(m_actions.zoomIn, &QAction::triggered, m_grid, &PhotoGrid::zoomIn);
    connect(m_actions.zoomOut, &QAction::triggered, m_grid, &PhotoGrid::zoomOut);
    connect(m_actions.showLarge, &QAction::triggered, this, [this] {
        showLarge(m_grid->firstSelected());
    });
    connect(m_grid, &PhotoGrid::openRequested, this, &LibraryView::showLarge);
    connect(m_grid, &PhotoGrid::photoSelectionChanged, this, &LibraryView::tellSelection);
    connect(m_actions.sort, &QActionGroup::triggered, this, &LibraryView::sortPhotos);
    connect(m_actions.descending, &QAction::toggled, this, &LibraryView::sortPhotos);
    connect(m_actions.showTrash, &QAction::triggered, this, &LibraryView::showTrash);
}

void LibraryView::showAllPhotos()
{
    m_sidebar->setCurrentIndex(m_sidebarModel.index(0, 0));
}

void LibraryView::showTrash()
{
    m_sidebar->setCurrentIndex(m_sidebarModel.indexOf({Kind::Trash, 0, {}}));
}

bool LibraryView::isSeen(qint64 id) const
{
    return m_filter.mapFromSource(m_photos.indexOf(id)).isValid();
}

void LibraryView::showPhoto(qint64 id)
{
    if (!isSeen(id)) {
        const QList<PhotoFacts>& trash = m_session.contents().trash;
        std::ranges::find(trash, id, &PhotoFacts::id) == trash.end() ? showAllPhotos()
                                                                     : showTrash();
    }
    if (isSeen(id)) {
        m_grid->selectPhotos({id});
    }
}

void LibraryView::showContents()
{
    const LibraryContents& contents = m_session.contents();
    if (contents.path != m_shownPath) {
        closeViewer(); // photos of another library have the same ids
    }
    // The selection in the models is no longer that of the person while they are filled anew.
    m_showingContents = true;
    const QModelIndex current = m_sidebar->currentIndex();
    const auto picked = SidebarModel::collection(current).value_or(PhotoFilter::Collection{});
    m_sidebarModel.setContents(contents);
    m_sidebar->expandAll();
    m_sidebar->setCurrentIndex(m_sidebarModel.indexOf(picked));
    m_showingContents = false;
    showCollection();
}

bool LibraryView::showsTrash() const
{
    return m_filter.collection().kind == Kind::Trash;
}

void LibraryView::showCollection()
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
    tellSelection();
}

void LibraryView::tellSelection()
{
    // Photos in the trash are no selection of the application: nothing is converted from there.
    m_session.setSelection(showsTrash() ? QList<qint64>() : m_grid->selectedPhotos());
    emit selectionChanged();
}

void LibraryView::settleSelection()
{
    m_grid->settleSelection();
}

QList<PhotoFacts> LibraryView::selectedFacts() const
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

void LibraryView::selectRaw()
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
    emit said(parts.join(u' '));
}

void LibraryView::sortPhotos()
{
    const auto order =
        static_cast<PhotoFilter::Order>(m_actions.sort->checkedAction()->data().toInt());
    m_filter.setOrder(order, m_actions.descending->isChecked());
}

void LibraryView::showLarge(const QModelIndex& index)
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

void LibraryView::closeViewer()
{
    if (m_viewer != nullptr) {
        m_viewer->close();
    }
}
