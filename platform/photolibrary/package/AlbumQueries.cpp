#include "AlbumQueries.h"

#include "KeyedArchive.h"

#include <QVariant>

using namespace Qt::StringLiterals;

namespace
{

// Numbers of the photo application for the ways to compare and for the kinds of facts.
constexpr int kIs = 5;
constexpr int kIsAtLeast = 8;
constexpr int kIsRanged = 20;
constexpr int kContains = 23;
constexpr int kIsNamed = 61;
constexpr int kIsSet = 1;

constexpr int kGroup = 1;
constexpr int kKeywords = 4;
constexpr int kRating = 5;
constexpr int kDate = 6;
constexpr int kNumber = 9;
constexpr int kText = 14;
constexpr int kLabel = 20;
constexpr int kFlag = 22;
constexpr int kFace = 40;

constexpr int kNone = 0;
constexpr int kAll = 1;

constexpr int kUnrated = 0;
constexpr int kRejected = -1;

struct Comparison {
    QString property;
    int qualifier{0};
    int type{0};
    bool isEnabled{false};
};

QVariantMap item(const Comparison& comparison, const QVariant& value = {})
{
    QVariantMap result{{u"queryClassName"_s, u"RKSingleItemQuery"_s},
                       {u"queryIsEnabled"_s, comparison.isEnabled},
                       {u"queryPropertyKey"_s, comparison.property},
                       {u"queryQualifier"_s, comparison.qualifier},
                       {u"queryTimeValue"_s, 1},
                       {u"queryType"_s, comparison.type}};
    if (value.isValid()) {
        result[u"queryFirstValue"_s] = value;
    }
    return result;
}

QVariantMap rating(int least, int qualifier, bool isEnabled)
{
    return item({u"basicProperties.MainRating"_s, qualifier, kRating, isEnabled}, least);
}

/// Every query offers the same conditions, mostly switched off, and then its own.
QByteArray query(const QVariantMap& ratingItem, int match, const QVariantList& own = {})
{
    const QVariantMap keywords{{u"queryClassName"_s, u"RKMultiItemQuery"_s},
                               {u"queryIsEnabled"_s, false},
                               {u"queryMatchType"_s, kNone},
                               {u"queryStackPicksOnly"_s, false},
                               {u"querySubqueries"_s, QVariantList()},
                               {u"queryType"_s, kKeywords}};
    QVariantList items{ratingItem,
                       item({u"isFlagged"_s, kIs, kFlag, false}, 1),
                       item({u"basicProperties.ColorLabel"_s, kIs, kLabel, false}),
                       item({u"properties.any"_s, kContains, kText, false}),
                       keywords};
    items.append(own);
    return KeyedArchive::encode(QVariantMap{{u"queryClassName"_s, u"RKMultiItemQuery"_s},
                                            {u"queryIsEnabled"_s, true},
                                            {u"queryMatchType"_s, match},
                                            {u"queryPredicateComponents"_s, 1},
                                            {u"queryStackPicksOnly"_s, false},
                                            {u"querySubqueries"_s, items},
                                            {u"queryType"_s, kGroup}});
}

QString dayText(const QDate& day)
{
    return day.toString(u"M/d/yyyy"_s) + " GMT"_L1;
}

} // namespace

QByteArray AlbumQueries::commonFilter()
{
    return query(rating(kUnrated, kIsAtLeast, true), kAll);
}

QByteArray AlbumQueries::everything()
{
    return query(rating(kRejected, kIsAtLeast, true), kAll);
}

QByteArray AlbumQueries::trash()
{
    return query(rating(kRejected, kIsAtLeast, true), kNone);
}

QByteArray AlbumQueries::rejected()
{
    return query(rating(kRejected, kIs, true), kNone);
}

QByteArray AlbumQueries::flagged()
{
    // The application itself asks it twice.
    const QVariantMap isFlagged = item({u"isFlagged"_s, kIs, kFlag, true}, 1);
    return query(rating(kUnrated, kIsAtLeast, false), kNone, {isFlagged, isFlagged});
}

QByteArray AlbumQueries::people()
{
    return query(
        rating(kUnrated, kIsAtLeast, false), kNone, {item({u"name"_s, kIsNamed, kFace, true})});
}

QByteArray AlbumQueries::places()
{
    return query(rating(kRejected, kIsAtLeast, true),
                 kAll,
                 {item({u"Longitude"_s, kIsSet, kNumber, true}),
                  item({u"Latitude"_s, kIsSet, kNumber, true})});
}

QByteArray AlbumQueries::lastTwelveMonths(const QDate& today)
{
    QVariantMap months = item({u"exifProperties.ImageDate"_s, kIsRanged, kDate, true},
                              dayText(today.addMonths(-12)));
    months[u"querySecondValue"_s] = dayText(today);
    return query(rating(kUnrated, kIsAtLeast, false), kNone, {months});
}
