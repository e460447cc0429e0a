#pragma once

#include "LibraryFacts.h"

#include <QStyledItemDelegate>

class ThumbnailStore;

/// Paints a photo of a PhotoFilter as a cell: the thumbnail, what is special about it as badges,
/// title, size of the original and rating. Reads no file. Main thread.
class PhotoDelegate final : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PhotoDelegate)
public:
    /// `thumbnails` must outlive it.
    explicit PhotoDelegate(const ThumbnailStore& thumbnails, QObject* parent = nullptr);

    /// The side of the square that thumbnails are fitted into, in logical pixels.
    void setEdge(int pixels);

    [[nodiscard]] int edge() const { return m_edge; }

    /// Cells are at least this wide, in logical pixels.
    void setMinimumWidth(int pixels);

    void paint(QPainter* painter,
               const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    /// The same for all photos; of the option its font counts alone.
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const override;

private:
    const ThumbnailStore& m_thumbnails;
    int m_edge{160};
    int m_minimumWidth{0};
};
