#include "PhotoFilter.h"

#include "PhotoModel.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

bool mentions(const PhotoFacts& photo, const QString& word)
{
    const auto holds = [&word](const QString& text) {
        return text.contains(word, Qt::CaseInsensitive);
    };
    return holds(photo.name) || holds(photo.fileName) || holds(photo.comment) ||
           holds(photo.rollName) || std::ranges::any_of(photo.keywords, holds);
}

} // namespace

PhotoFilter::PhotoFilter(QObject* parent)
    : QSortFilterProxyModel(parent)
{
    setDynamicSortFilter(true);
}

void PhotoFilter::setCollection(const Collection& collection, const QSet<qint64>& lastImport)
{
    m_collection = collection;
    m_lastImport = lastImport;
    // Filtering again row by row takes minutes where many ranges come and go.
    invalidate();
}

void PhotoFilter::setSearchText(const QString& text)
{
    static const QRegularExpression kSpace(u"\\s+"_s);
    m_words = text.split(kSpace, Qt::SkipEmptyParts);
    invalidate();
}

void PhotoFilter::setOrder(Order order, bool descending)
{
    m_order = order;
    // Unsorted is the order of the source, which is the library's.
    sort(order == Order::Library && !descending ? -1 : 0,
         descending ? Qt::DescendingOrder : Qt::AscendingOrder);
    invalidate();
}

const PhotoFacts& PhotoFilter::photo(const QModelIndex& index) const
{
    return static_cast<const PhotoModel*>(sourceModel())->photo(mapToSource(index).row());
}

bool PhotoFilter::isInCollection(const PhotoFacts& photo) const
{
    switch (m_collection.kind) {
    case Collection::Kind::Event:
        return photo.rollId == m_collection.eventId;
    case Collection::Kind::Album:
        return photo.albums.contains(m_collection.name);
    case Collection::Kind::Keyword:
        return photo.keywords.contains(m_collection.name);
    case Collection::Kind::LastImport:
        return m_lastImport.contains(photo.id);
    case Collection::Kind::AllPhotos:
    case Collection::Kind::Trash:
        break;
    }
    return true;
}

bool PhotoFilter::filterAcceptsRow(int row, const QModelIndex& /*parent*/) const
{
    const PhotoFacts& photo = static_cast<const PhotoModel*>(sourceModel())->photo(row);
    return !photo.hidden && isInCollection(photo) &&
           std::ranges::all_of(m_words,
                               [&photo](const QString& word) { return mentions(photo, word); });
}

bool PhotoFilter::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const auto* const model = static_cast<const PhotoModel*>(sourceModel());
    const PhotoFacts& one = model->photo(left.row());
    const PhotoFacts& other = model->photo(right.row());
    switch (m_order) {
    case Order::Date:
        return one.date < other.date;
    case Order::Size:
        return one.bytes < other.bytes;
    case Order::Name:
        return QString::localeAwareCompare(PhotoModel::titleOf(one), PhotoModel::titleOf(other)) <
               0;
    case Order::Library:
        break;
    }
    return left.row() < right.row();
}
