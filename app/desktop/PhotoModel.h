#pragma once

#include "LibraryFacts.h"

#include <QAbstractListModel>
#include <QList>

/// Photos as a list, one row each, in the order given. Main thread.
class PhotoModel final : public QAbstractListModel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PhotoModel)
public:
    enum Role {
        IdRole = Qt::UserRole, ///< qint64
        ThumbnailPathRole,     ///< QString; of the preview where there is no thumbnail, or empty
    };

    explicit PhotoModel(QObject* parent = nullptr);

    void setPhotos(const QList<PhotoFacts>& photos);

    [[nodiscard]] const QList<PhotoFacts>& photos() const { return m_photos; }

    /// The photo of a valid row.
    [[nodiscard]] const PhotoFacts& photo(int row) const { return m_photos.at(row); }

    /// Invalid where there is no such photo.
    [[nodiscard]] QModelIndex indexOf(qint64 id) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    /// DisplayRole: the title, else the file name. ToolTipRole and AccessibleTextRole: what a
    /// person wants to know of it in a few words.
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

    /// The title, else the file name.
    [[nodiscard]] static QString titleOf(const PhotoFacts& photo);

private:
    QList<PhotoFacts> m_photos;
};
