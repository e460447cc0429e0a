#include "PhotoGrid.h"

#include "PhotoMarks.h"
#include "PhotoModel.h"
#include "ThumbnailStore.h"

#include <QHash>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QSet>
#include <QWheelEvent>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <vector>

using namespace std::chrono_literals;

PhotoGrid::PhotoGrid(PhotoFilter& photos, ThumbnailStore& thumbnails, QWidget* parent)
    : QListView(parent)
    , m_photos(photos)
    , m_thumbnails(thumbnails)
    , m_delegate(thumbnails)
{
    setObjectName(QStringLiteral("photoGrid"));
    setAccessibleName(tr("Photos"));
    setViewMode(QListView::ListMode);
    setFlow(QListView::LeftToRight);
    setWrapping(true);
    setUniformItemSizes(true);
    setMovement(QListView::Static);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionRectVisible(true);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    // A bar that came and went would change the number of columns each time.
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setItemDelegate(&m_delegate);
    setModel(&photos);

    m_requestTimer.setSingleShot(true);
    m_requestTimer.setInterval(30ms);
    m_selectionTimer.setSingleShot(true);
    m_selectionTimer.setInterval(0ms);
    connect(&m_requestTimer, &QTimer::timeout, this, &PhotoGrid::requestThumbnails);
    connect(&m_selectionTimer, &QTimer::timeout, this, &PhotoGrid::photoSelectionChanged);
    connect(&thumbnails, &ThumbnailStore::thumbnailReady, this, &PhotoGrid::updateCell);
    connect(this, &QListView::doubleClicked, this, &PhotoGrid::requestOpening);
    connectModel();
    fitCells();
}

void PhotoGrid::connectModel()
{
    const auto request = [this] {
        if (!m_requestTimer.isActive()) {
            m_requestTimer.start();
        }
    };
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, request);
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, request);
    connect(&m_photos, &QAbstractItemModel::rowsInserted, this, request);
    connect(&m_photos, &QAbstractItemModel::rowsRemoved, this, request);
    connect(&m_photos, &QAbstractItemModel::dataChanged, this, request);
    connect(&m_photos, &QAbstractItemModel::layoutChanged, this, [this, request] {
        m_selectionTimer.start(); // what is filtered out now goes from the selection without a word
        request();
    });
    connect(&m_photos, &QAbstractItemModel::modelReset, this, [this, request] {
        // Files may have come or gone; and a reset takes the selection away without a word.
        m_thumbnails.retryFailures();
        m_selectionTimer.start();
        request();
    });
}

void PhotoGrid::setZoom(int pixels)
{
    const int edge = std::clamp(pixels, kSmallestZoom, kLargestZoom);
    if (edge == zoom()) {
        return;
    }
    m_delegate.setEdge(edge);
    layOutCells();
    emit zoomChanged(edge);
}

void PhotoGrid::zoomIn()
{
    setZoom(zoom() + kZoomStep);
}

void PhotoGrid::zoomOut()
{
    setZoom(zoom() - kZoomStep);
}

/// Gives the cells their size; the photo in the middle of the view, or the current one where it is
/// in sight, stays in sight.
void PhotoGrid::layOutCells()
{
    const QPersistentModelIndex current = currentIndex();
    const QRect sight = viewport()->rect();
    const bool currentInSight = current.isValid() && visualRect(current).intersects(sight);
    const QPersistentModelIndex anchor =
        currentInSight ? QModelIndex(current) : indexAt(sight.center());
    const bool atTop = verticalScrollBar()->value() == 0;
    fitCells();
    executeDelayedItemsLayout();
    if (anchor.isValid() && !atTop) {
        scrollTo(anchor, QAbstractItemView::PositionAtCenter);
    }
    m_requestTimer.start();
}

void PhotoGrid::fitCells()
{
    m_delegate.setMinimumWidth(0);
    QStyleOptionViewItem option;
    option.font = font();
    const QSize smallest = m_delegate.sizeHint(option, {});
    const int width = lineWidth();
    const QSize cell(width / std::max(1, width / smallest.width()), smallest.height());
    m_delegate.setMinimumWidth(cell.width());
    // One notch of the wheel goes three steps.
    constexpr int kStepsPerRow = 4;
    verticalScrollBar()->setSingleStep(cell.height() / kStepsPerRow);
    setGridSize(cell);
    scheduleDelayedItemsLayout();
}

/// A line of cells ends before the last pixel of the view.
int PhotoGrid::lineWidth() const
{
    return std::max(1, viewport()->width() - 1);
}

int PhotoGrid::columns() const
{
    return std::max(1, lineWidth() / std::max(1, gridSize().width()));
}

int PhotoGrid::rowsPerPage() const
{
    return std::max(1, viewport()->height() / std::max(1, gridSize().height()));
}

PhotoGrid::Rows PhotoGrid::visibleRows() const
{
    const int height = std::max(1, gridSize().height());
    const int top = verticalScrollBar()->value();
    const int count = m_photos.rowCount();
    Rows rows;
    rows.first = std::min(count, top / height * columns());
    rows.last = std::min(count, ((top + viewport()->height() - 1) / height + 1) * columns()) - 1;
    return rows;
}

void PhotoGrid::requestThumbnails()
{
    if (!isVisible()) {
        return;
    }
    const Rows sight = visibleRows();
    const int page = sight.last - sight.first + 1;
    QStringList paths;
    const auto add = [this, &paths](int first, int last) {
        for (int row = std::max(0, first); row <= std::min(last, m_photos.rowCount() - 1); ++row) {
            paths += m_photos.index(row, 0).data(PhotoModel::ThumbnailPathRole).toString();
        }
    };
    add(sight.first, sight.last);
    add(sight.last + 1, sight.last + page);
    add(sight.first - page, sight.first - 1);
    m_pixelRatio = devicePixelRatioF();
    m_thumbnails.setEdge(qRound(zoom() * m_pixelRatio));
    m_thumbnails.setWanted(paths);
}

void PhotoGrid::updateCell(const QString& thumbnailPath)
{
    const Rows sight = visibleRows();
    for (int row = sight.first; row <= sight.last; ++row) {
        const QModelIndex index = m_photos.index(row, 0);
        if (index.data(PhotoModel::ThumbnailPathRole).toString() == thumbnailPath) {
            update(index);
        }
    }
}

void PhotoGrid::requestOpening(const QModelIndex& index)
{
    if (index.isValid()) {
        emit openRequested(index);
    }
}

PhotoGrid::RawSelection PhotoGrid::selectRaw()
{
    RawSelection found;
    select([this, &found](int row) {
        const PhotoFacts& photo = m_photos.photo(m_photos.index(row, 0));
        if (!photo.raw || photo.movie) {
            return false;
        }
        if (PhotoMarks::isConvertedOriginal(photo.keywords)) {
            ++found.converted;
            return false;
        }
        if (photo.missing) {
            ++found.missing;
            return false;
        }
        if (photo.unreadable) {
            ++found.unreadable;
            return false;
        }
        ++found.selected;
        return true;
    });
    return found;
}

void PhotoGrid::invertSelection()
{
    std::vector<bool> selected(static_cast<std::size_t>(m_photos.rowCount()));
    forEachSelectedRow([&selected](int row) { selected.at(static_cast<std::size_t>(row)) = true; });
    select([&selected](int row) { return !selected.at(static_cast<std::size_t>(row)); });
}

void PhotoGrid::selectPhotos(const QList<qint64>& ids)
{
    const QSet<qint64> wanted(ids.begin(), ids.end());
    select([this, &wanted](int row) {
        return wanted.contains(m_photos.photo(m_photos.index(row, 0)).id);
    });
    if (const QModelIndex first = firstSelected(); first.isValid()) {
        selectionModel()->setCurrentIndex(first, QItemSelectionModel::NoUpdate);
    }
}

/// Where the view stands, in terms that outlast a reset of the model.
struct PhotoGrid::Place {
    QList<qint64> order; ///< ids of all rows
    QSet<qint64> selected;
    int current{-1}; ///< row; -1 where there is none
    int first{0};    ///< row in sight
    int above{0};    ///< pixels of that row that are above the view; -1 at the very top
};

PhotoGrid::Place PhotoGrid::place() const
{
    Place place;
    const int count = m_photos.rowCount();
    place.order.reserve(count);
    for (int row = 0; row < count; ++row) {
        place.order += m_photos.photo(m_photos.index(row, 0)).id;
    }
    const QList<qint64> selected = selectedPhotos();
    place.selected = QSet<qint64>(selected.begin(), selected.end());
    place.current = currentIndex().row();
    place.first = visibleRows().first;
    const int top = verticalScrollBar()->value();
    place.above = top == 0 ? -1 : top % std::max(1, gridSize().height());
    return place;
}

void PhotoGrid::goTo(const Place& place)
{
    QHash<qint64, int> rows;
    const int count = m_photos.rowCount();
    rows.reserve(count);
    for (int row = 0; row < count; ++row) {
        rows.insert(m_photos.photo(m_photos.index(row, 0)).id, row);
    }
    // Of the photo that was in that row; else of the next one that is still there.
    const auto rowNow = [&rows, &order = place.order](int before) {
        const auto isThere = [&rows](qint64 id) { return rows.contains(id); };
        const auto start = order.begin() + before;
        if (const auto next = std::find_if(start, order.end(), isThere); next != order.end()) {
            return rows.value(*next);
        }
        const auto previous = std::find_if(std::reverse_iterator(start), order.rend(), isThere);
        return previous == order.rend() ? -1 : rows.value(*previous);
    };
    select([this, &place](int row) {
        return place.selected.contains(m_photos.photo(m_photos.index(row, 0)).id);
    });
    if (const int row = place.current < 0 ? -1 : rowNow(place.current); row >= 0) {
        selectionModel()->setCurrentIndex(m_photos.index(row, 0), QItemSelectionModel::NoUpdate);
    }
    executeDelayedItemsLayout();
    const int line = place.above < 0 ? 0 : rowNow(place.first) / columns();
    verticalScrollBar()->setValue(line * gridSize().height() + std::max(0, place.above));
}

void PhotoGrid::keepPlace(const std::function<void()>& replace)
{
    const Place before = place();
    replace();
    goTo(before);
}

/// Selects the rows that are wanted, and no others, in one step.
void PhotoGrid::select(const std::function<bool(int row)>& wanted)
{
    QItemSelection selection;
    const int count = m_photos.rowCount();
    int begin = -1; // of the range under way
    for (int row = 0; row <= count; ++row) {
        const bool inside = row < count && wanted(row);
        if (inside && begin < 0) {
            begin = row;
        } else if (!inside && begin >= 0) {
            selection.append(
                QItemSelectionRange(m_photos.index(begin, 0), m_photos.index(row - 1, 0)));
            begin = -1;
        }
    }
    // A selection model compares each old range with each new one, but for none.
    selectionModel()->clearSelection();
    selectionModel()->select(selection, QItemSelectionModel::Select);
}

void PhotoGrid::forEachSelectedRow(const std::function<void(int row)>& visit) const
{
    const QItemSelection selection = selectionModel()->selection();
    for (const QItemSelectionRange& range : selection) {
        for (int row = range.top(); range.isValid() && row <= range.bottom(); ++row) {
            visit(row);
        }
    }
}

void PhotoGrid::settleSelection()
{
    if (m_selectionTimer.isActive()) {
        m_selectionTimer.stop();
        emit photoSelectionChanged();
    }
}

QList<qint64> PhotoGrid::selectedPhotos() const
{
    QList<int> sourceRows;
    forEachSelectedRow([this, &sourceRows](int row) {
        sourceRows += m_photos.mapToSource(m_photos.index(row, 0)).row();
    });
    std::ranges::sort(sourceRows);
    const auto* const model = static_cast<const PhotoModel*>(m_photos.sourceModel());
    QList<qint64> ids;
    ids.reserve(sourceRows.size());
    for (const int row : std::as_const(sourceRows)) {
        ids += model->photo(row).id;
    }
    return ids;
}

PhotoFigures PhotoGrid::selectedFigures() const
{
    PhotoFigures figures;
    forEachSelectedRow(
        [this, &figures](int row) { figures.add(m_photos.photo(m_photos.index(row, 0))); });
    return figures;
}

QModelIndex PhotoGrid::firstSelected() const
{
    int first = -1;
    const QItemSelection selection = selectionModel()->selection();
    for (const QItemSelectionRange& range : selection) {
        if (range.isValid() && (first < 0 || range.top() < first)) {
            first = range.top();
        }
    }
    return first < 0 ? QModelIndex() : m_photos.index(first, 0);
}

void PhotoGrid::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QListView::selectionChanged(selected, deselected);
    m_selectionTimer.start();
}

/// Everything in sight: to find out what of a large selection is takes longer than to paint it.
QRegion PhotoGrid::visualRegionForSelection(const QItemSelection& selection) const
{
    return selection.isEmpty() ? QRegion() : viewport()->rect();
}

QModelIndex PhotoGrid::moveCursor(CursorAction action, Qt::KeyboardModifiers /*modifiers*/)
{
    const int last = m_photos.rowCount() - 1;
    const QModelIndex current = currentIndex();
    if (last < 0 || !current.isValid()) {
        return m_photos.index(action == MoveEnd ? last : 0, 0);
    }
    return m_photos.index(std::clamp(rowAfter(action, current.row()), 0, last), 0);
}

/// Where a key leads to from a row; perhaps past the ends.
int PhotoGrid::rowAfter(CursorAction action, int row) const
{
    const int last = m_photos.rowCount() - 1;
    const int line = columns();
    const int forward = isRightToLeft() ? -1 : 1;
    const auto below = [row, line, last](int lines) {
        // In the same column, or the last photo where the last line is too short.
        return row + std::min(lines, last / line - row / line) * line;
    };
    const auto above = [row, line](int lines) { return row - std::min(lines, row / line) * line; };
    switch (action) {
    case MoveLeft:
        return row - forward;
    case MoveRight:
        return row + forward;
    case MovePrevious:
        return row - 1;
    case MoveNext:
        return row + 1;
    case MoveUp:
        return above(1);
    case MoveDown:
        return below(1);
    case MovePageUp:
        return above(rowsPerPage());
    case MovePageDown:
        return below(rowsPerPage());
    case MoveHome:
        return 0;
    case MoveEnd:
        return last;
    }
    return row;
}

void PhotoGrid::keyPressEvent(QKeyEvent* event)
{
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    const int key = event->key();
    if (plain && (key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter)) {
        requestOpening(currentIndex());
    } else if (event->matches(QKeySequence::ZoomIn) ||
               (key == Qt::Key_Equal && event->modifiers() == Qt::ControlModifier)) {
        zoomIn();
    } else if (event->matches(QKeySequence::ZoomOut)) {
        zoomOut();
    } else {
        QListView::keyPressEvent(event);
        return;
    }
    event->accept();
}

void PhotoGrid::wheelEvent(QWheelEvent* event)
{
    if (!event->modifiers().testFlag(Qt::ControlModifier)) {
        QListView::wheelEvent(event);
        return;
    }
    m_wheelDelta += event->angleDelta().y();
    const int steps = m_wheelDelta / QWheelEvent::DefaultDeltasPerStep;
    m_wheelDelta -= steps * QWheelEvent::DefaultDeltasPerStep;
    setZoom(zoom() + steps * kZoomStep);
    event->accept();
}

void PhotoGrid::resizeEvent(QResizeEvent* event)
{
    QListView::resizeEvent(event);
    layOutCells();
}

void PhotoGrid::showEvent(QShowEvent* event)
{
    QListView::showEvent(event);
    m_requestTimer.start();
}

void PhotoGrid::changeEvent(QEvent* event)
{
    QListView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        layOutCells();
    }
}

void PhotoGrid::paintEvent(QPaintEvent* event)
{
    QListView::paintEvent(event);
    if (devicePixelRatioF() != m_pixelRatio && !m_requestTimer.isActive()) {
        m_requestTimer.start(); // the window went to another screen
    }
    if (m_photos.rowCount() == 0) {
        QPainter painter(viewport());
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, tr("No photos"));
    }
}
