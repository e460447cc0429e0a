#pragma once

#include "PhotoDelegate.h"
#include "PhotoFigures.h"
#include "PhotoFilter.h"

#include <QItemSelection>
#include <QList>
#include <QListView>
#include <QTimer>

#include <functional>

class ThumbnailStore;

/// The thumbnails of the photos that a PhotoFilter lets through, in rows that fill the width.
/// Space, Enter and a double click ask to open a photo; Ctrl with the wheel, + and - zooms. Fast
/// for a hundred thousand photos: pictures are asked for near the view only. Main thread.
class PhotoGrid final : public QListView
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PhotoGrid)
public:
    static constexpr int kSmallestZoom = 96;
    static constexpr int kLargestZoom = 320;
    static constexpr int kZoomStep = 16;

    /// What selectRaw() found.
    struct RawSelection {
        int selected{0};
        int missing{0};    ///< left out: the original is no file that exists
        int unreadable{0}; ///< left out: the original is there, but may not be read
        int converted{0};  ///< left out: carries "Corvane Original" already
    };

    /// Both must outlive it; the filter's source is a PhotoModel.
    PhotoGrid(PhotoFilter& photos, ThumbnailStore& thumbnails, QWidget* parent = nullptr);

    /// The side of the square that thumbnails are fitted into, in logical pixels.
    [[nodiscard]] int zoom() const { return m_delegate.edge(); }

    /// Selects, of the photos to be seen, those that a scan would convert: RAW, no movies, present,
    /// readable and not converted before.
    RawSelection selectRaw();
    void invertSelection();
    /// Selects those of the photos that are to be seen now, and no others, and shows the first.
    void selectPhotos(const QList<qint64>& ids);
    /// Lets `replace` put facts that were read anew into the model, and keeps what is selected, the
    /// current photo and what is in sight. In place of a photo that is gone from there its
    /// neighbour is the current one.
    void keepPlace(const std::function<void()>& replace);

    /// Says at once what it would say when the event loop turns: for who needs to know now.
    void settleSelection();

    /// Ids, in the library's order whatever the view's.
    [[nodiscard]] QList<qint64> selectedPhotos() const;
    [[nodiscard]] PhotoFigures selectedFigures() const;
    /// The first selected one of the view; invalid where there is none.
    [[nodiscard]] QModelIndex firstSelected() const;

    /// Rows whose cells are in sight, or will be after one page either way.
    struct Rows {
        int first{0};
        int last{-1}; ///< before `first` where there are none
    };

    [[nodiscard]] Rows visibleRows() const;

public slots:
    /// Within kSmallestZoom..kLargestZoom; what is in the middle stays in sight.
    void setZoom(int pixels);
    void zoomIn();
    void zoomOut();

signals:
    /// A photo is to be seen large.
    void openRequested(const QModelIndex& index);
    /// Other photos are selected than before; once for all changes until the event loop turns.
    void photoSelectionChanged();
    void zoomChanged(int pixels);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    [[nodiscard]] QRegion visualRegionForSelection(const QItemSelection& selection) const override;

protected slots:
    void selectionChanged(const QItemSelection& selected,
                          const QItemSelection& deselected) override;

private:
    void connectModel();
    void layOutCells();
    void fitCells();
    void requestThumbnails();
    void updateCell(const QString& thumbnailPath);
    void requestOpening(const QModelIndex& index);
    void select(const std::function<bool(int row)>& wanted);
    void forEachSelectedRow(const std::function<void(int row)>& visit) const;
    struct Place;
    [[nodiscard]] Place place() const;
    void goTo(const Place& place);
    [[nodiscard]] int rowAfter(CursorAction action, int row) const;
    [[nodiscard]] int lineWidth() const;
    [[nodiscard]] int columns() const;
    [[nodiscard]] int rowsPerPage() const;

    PhotoFilter& m_photos;
    ThumbnailStore& m_thumbnails;
    PhotoDelegate m_delegate;
    QTimer m_requestTimer;    ///< what is in sight changes often while it is scrolled
    QTimer m_selectionTimer;  ///< coalesces photoSelectionChanged()
    int m_wheelDelta{0};      ///< eighths of a degree, not yet a step
    double m_pixelRatio{1.0}; ///< that thumbnails were asked for with
};
