#include "SidebarModel.h"

#include <QDateTime>
#include <QHash>
#include <QLocale>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace
{

using Collection = PhotoFilter::Collection;

constexpr int kCollectionRole = Qt::UserRole;

struct Event {
    qint64 id{0};
    QString name;
    int photos{0};
    QString first; ///< days, "2014-10-05"
    QString last;
};

QString dayOf(const PhotoFacts& photo)
{
    return photo.wallClock().left(10);
}

/// Events in the order of the photos.
QList<Event> eventsOf(const QList<PhotoFacts>& photos)
{
    QList<Event> events;
    QHash<qint64, qsizetype> places;
    for (const PhotoFacts& photo : photos) {
        if (photo.hidden || photo.rollId == 0) {
            continue;
        }
        const QString day = dayOf(photo);
        const auto known = places.constFind(photo.rollId);
        if (known == places.constEnd()) {
            places.insert(photo.rollId, events.size());
            events.append({photo.rollId, photo.rollName, 1, day, day});
            continue;
        }
        Event& event = events[*known];
        ++event.photos;
        // A photo without a date says nothing of when the event was.
        if (!day.isEmpty()) {
            event.first = event.first.isEmpty() ? day : std::min(event.first, day);
            event.last = std::max(event.last, day);
        }
    }
    return events;
}

QString shownMonth(const QString& day)
{
    return QLocale().toString(QDate::fromString(day, Qt::ISODate), u"MMM yyyy"_s);
}

/// Short enough for the side of a window; the days are told by the tool tip.
QString shownMonths(const Event& event)
{
    const QString first = shownMonth(event.first);
    const QString last = shownMonth(event.last);
    return first == last ? first : SidebarModel::tr("%1 – %2").arg(first, last);
}

QString shownDays(const Event& event)
{
    const auto shown = [](const QString& day) {
        return QLocale().toString(QDate::fromString(day, Qt::ISODate), QLocale::LongFormat);
    };
    return event.first == event.last
               ? shown(event.first)
               : SidebarModel::tr("%1 – %2").arg(shown(event.first), shown(event.last));
}

/// How many of the visible photos have each of their names: keywords, albums.
QHash<QString, int> counted(const QList<PhotoFacts>& photos, QStringList PhotoFacts::*names)
{
    QHash<QString, int> counts;
    for (const PhotoFacts& photo : photos) {
        if (!photo.hidden) {
            for (const QString& name : photo.*names) {
                ++counts[name];
            }
        }
    }
    return counts;
}

int visible(const QList<PhotoFacts>& photos)
{
    return static_cast<int>(
        std::ranges::count_if(photos, [](const PhotoFacts& photo) { return !photo.hidden; }));
}

} // namespace

Q_DECLARE_METATYPE(PhotoFilter::Collection)

SidebarModel::SidebarModel(QObject* parent)
    : QStandardItemModel(parent)
{
}

QStandardItem* SidebarModel::add(QStandardItem* parent,
                                 const QString& text,
                                 int photos,
                                 const Collection& collection)
{
    auto* const item = new QStandardItem(tr("%1 (%2)").arg(text).arg(photos));
    item->setData(QVariant::fromValue(collection), kCollectionRole);
    item->setToolTip(text);
    item->setEditable(false);
    parent->appendRow(item);
    return item;
}

QStandardItem* SidebarModel::addHeading(const QString& title)
{
    auto* const heading = new QStandardItem(title);
    heading->setFlags(Qt::ItemIsEnabled);
    QFont font;
    font.setBold(true);
    heading->setFont(font);
    invisibleRootItem()->appendRow(heading);
    return heading;
}

void SidebarModel::addEvents(const QList<PhotoFacts>& photos)
{
    QStandardItem* const heading = addHeading(tr("Events"));
    const QList<Event> events = eventsOf(photos);
    for (const Event& event : events) {
        const QString name = event.name.isEmpty() ? tr("Untitled event") : event.name;
        const Collection collection{Collection::Kind::Event, event.id, event.name};
        if (event.first.isEmpty()) {
            add(heading, name, event.photos, collection);
            continue;
        }
        add(heading, tr("%1, %2").arg(name, shownMonths(event)), event.photos, collection)
            ->setToolTip(tr("%1, %2").arg(name, shownDays(event)));
    }
}

void SidebarModel::setContents(const LibraryContents& contents)
{
    clear();
    add(invisibleRootItem(), tr("All Photos"), visible(contents.photos), {});
    const auto imported = std::ranges::count_if(contents.photos, [&](const PhotoFacts& photo) {
        return !photo.hidden && contents.lastImport.contains(photo.id);
    });
    add(invisibleRootItem(),
        tr("Last Import"),
        static_cast<int>(imported),
        {Collection::Kind::LastImport, 0, {}});
    addEvents(contents.photos);

    QStandardItem* const albums = addHeading(tr("Albums"));
    const QHash<QString, int> inAlbums = counted(contents.photos, &PhotoFacts::albums);
    QStringList albumNames = contents.albums;
    albumNames.removeDuplicates();
    for (const QString& name : std::as_const(albumNames)) {
        add(albums, name, inAlbums.value(name), {Collection::Kind::Album, 0, name});
    }

    QStandardItem* const keywords = addHeading(tr("Keywords"));
    const QHash<QString, int> withKeyword = counted(contents.photos, &PhotoFacts::keywords);
    QStringList names = withKeyword.keys();
    names.sort(Qt::CaseInsensitive);
    for (const QString& name : std::as_const(names)) {
        add(keywords, name, withKeyword.value(name), {Collection::Kind::Keyword, 0, name});
    }
    add(invisibleRootItem(),
        tr("Trash"),
        static_cast<int>(contents.trash.size()),
        {Collection::Kind::Trash, 0, {}});
}

std::optional<Collection> SidebarModel::collection(const QModelIndex& index)
{
    const QVariant stored = index.data(kCollectionRole);
    return stored.canConvert<Collection>() ? std::optional(stored.value<Collection>())
                                           : std::nullopt;
}

QModelIndex SidebarModel::indexOf(const Collection& wanted) const
{
    const auto sameThing = [&wanted](const QModelIndex& candidate) {
        const std::optional<Collection> held = collection(candidate);
        return held && held->kind == wanted.kind &&
               (wanted.kind == Collection::Kind::Event ? held->eventId == wanted.eventId
                                                       : held->name == wanted.name);
    };
    for (int row = 0; row < rowCount(); ++row) {
        const QModelIndex top = index(row, 0);
        if (sameThing(top)) {
            return top;
        }
        for (int child = 0; child < rowCount(top); ++child) {
            if (const QModelIndex below = index(child, 0, top); sameThing(below)) {
                return below;
            }
        }
    }
    return index(0, 0);
}
