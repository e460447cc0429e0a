#pragma once

#include "LibraryFacts.h"

#include <QSet>
#include <QSortFilterProxyModel>
#include <QString>

/// The photos of a PhotoModel that are to be seen now, sorted. Main thread.
class PhotoFilter final : public QSortFilterProxyModel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PhotoFilter)
public:
    /// What is picked at the left of the window.
    struct Collection {
        enum class Kind : quint8 { AllPhotos, Event, Album, Keyword, LastImport, Trash };

        Kind kind{Kind::AllPhotos};
        qint64 eventId{0};
        QString name; ///< of the album or keyword
        friend bool operator==(const Collection&, const Collection&) = default;
    };

    enum class Order : quint8 { Library, Date, Size, Name };

    explicit PhotoFilter(QObject* parent = nullptr);

    /// `lastImport`: the photos of that collection.
    void setCollection(const Collection& collection, const QSet<qint64>& lastImport);
    /// Photos whose title, file name, comment, event or keywords contain every word of the text,
    /// without regard to case.
    void setSearchText(const QString& text);
    /// `descending`: newest, largest first or names from the end.
    void setOrder(Order order, bool descending);

    [[nodiscard]] const Collection& collection() const { return m_collection; }

    /// The photo of a valid row of this model.
    [[nodiscard]] const PhotoFacts& photo(const QModelIndex& index) const;

protected:
    [[nodiscard]] bool filterAcceptsRow(int row, const QModelIndex& parent) const override;
    [[nodiscard]] bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    [[nodiscard]] bool isInCollection(const PhotoFacts& photo) const;

    Collection m_collection;
    QSet<qint64> m_lastImport;
    QStringList m_words;
    Order m_order{Order::Library};
};
