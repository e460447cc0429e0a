#pragma once

#include "LibraryContents.h"
#include "PhotoFilter.h"

#include <QStandardItemModel>

#include <optional>

/// What can be picked at the left of the library window: all photos, the last import, events with
/// dates and counts, albums, keywords, the trash. Main thread.
class SidebarModel final : public QStandardItemModel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SidebarModel)
public:
    explicit SidebarModel(QObject* parent = nullptr);

    void setContents(const LibraryContents& contents);

    /// What an item stands for; nothing for a heading.
    [[nodiscard]] static std::optional<PhotoFilter::Collection>
    collection(const QModelIndex& index);
    /// Where a collection stands; of one that is gone, all photos.
    [[nodiscard]] QModelIndex indexOf(const PhotoFilter::Collection& wanted) const;

private:
    QStandardItem* addHeading(const QString& title);
    static QStandardItem* add(QStandardItem* parent,
                              const QString& text,
                              int photos,
                              const PhotoFilter::Collection& collection);
    void addEvents(const QList<PhotoFacts>& photos);
};
