#pragma once

#include <QToolBar>

class LibraryActions;
class PhotoGrid;
class QLineEdit;

/// What the library window has at hand above the photos: actions, the search, the size of the
/// pictures. Main thread.
class LibraryToolBar final : public QToolBar
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LibraryToolBar)
public:
    /// The grid outlives it.
    LibraryToolBar(const LibraryActions& actions, PhotoGrid& grid, QWidget* parent = nullptr);

    void clearSearch();

signals:
    void searchTextChanged(const QString& text);

private:
    void addSearch(const LibraryActions& actions);
    void addZoom(PhotoGrid& grid);

    QLineEdit* m_search;
};
