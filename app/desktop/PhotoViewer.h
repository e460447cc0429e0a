#pragma once

#include "PhotoFilter.h"
#include "PictureLoader.h"

#include <QPersistentModelIndex>
#include <QTimer>
#include <QWidget>

class QLabel;
class QToolButton;

/// A window that shows one photo of a PhotoFilter as large as it fits, on a dark ground; the arrow
/// keys go to its neighbours, Escape and Space close it. Where no picture can be shown it says why.
/// It stays on its photo when the list is read anew, and closes when the photo is gone from it.
/// Main thread; files are read on another.
class PhotoViewer final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PhotoViewer)
public:
    /// The filter must outlive it.
    explicit PhotoViewer(PhotoFilter& photos, QWidget* parent = nullptr);

    /// Shows the photo of a row of the filter; the caller shows the window.
    void showPhoto(const QModelIndex& index);

    /// Invalid when the photo is no longer among those to be seen.
    [[nodiscard]] QModelIndex photo() const { return m_photo; }

public slots:
    void showNext();
    void showPrevious();

signals:
    /// Another photo is shown than before.
    void photoShown(const QModelIndex& index);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void build();
    [[nodiscard]] QToolButton* makeButton(const QString& text, Qt::ArrowType arrow);
    void darken();
    void go(int rows);
    void load();
    void showImage(const QImage& image);
    void showReason(const QString& reason);
    void photosChanged();
    void photosReplaced();
    void updateNames();

    PhotoFilter& m_photos;
    QPersistentModelIndex m_photo;
    qint64 m_photoId{0}; ///< finds the photo again when the list is read anew
    PictureLoader m_loader;
    QTimer m_resizeTimer; ///< the picture is read anew when resizing has come to rest
    QLabel* m_picture{nullptr};
    QLabel* m_caption{nullptr};
    QToolButton* m_previous{nullptr};
    QToolButton* m_next{nullptr};
};
