#include "PhotoModel.h"

#include "PhotoTexts.h"

#include <algorithm>

using namespace Qt::StringLiterals;

PhotoModel::PhotoModel(QObject* parent)
    : QAbstractListModel(parent)
{
}

void PhotoModel::setPhotos(const QList<PhotoFacts>& photos)
{
    beginResetModel();
    m_photos = photos;
    endResetModel();
}

QModelIndex PhotoModel::indexOf(qint64 id) const
{
    const auto found = std::ranges::find(m_photos, id, &PhotoFacts::id);
    return found == m_photos.end() ? QModelIndex()
                                   : index(static_cast<int>(found - m_photos.begin()));
}

int PhotoModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_photos.size());
}

QVariant PhotoModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid()) {
        return {};
    }
    const PhotoFacts& photo = m_photos.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return titleOf(photo);
    case Qt::ToolTipRole:
    case Qt::AccessibleTextRole: {
        QStringList facts{photo.fileName};
        facts += photo.missing ? tr("the original is missing") : PhotoTexts::size(photo.bytes);
        facts += photo.unreadable ? tr("the original may not be read") : QString();
        facts += photo.rollName;
        facts += photo.keywords.join(u", "_s);
        facts.removeAll(QString());
        return facts.join(u" · "_s);
    }
    case IdRole:
        return photo.id;
    case ThumbnailPathRole:
        return photo.thumbnailPath.isEmpty() ? photo.previewPath : photo.thumbnailPath;
    default:
        return {};
    }
}

QString PhotoModel::titleOf(const PhotoFacts& photo)
{
    return photo.name.isEmpty() ? photo.fileName : photo.name;
}
