#include "CatalogueComparison.h"

#include <QVariantList>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

QVariantMap image(double date)
{
    return {{u"Caption"_s, u"Lake"_s},
            {u"Rating"_s, qlonglong{0}},
            {u"DateAsTimerIntervalGMT"_s, date},
            {u"DateAsTimerInterval"_s, date + 25200.0}};
}

QVariantMap album(const QString& guid, const QString& type, const QVariantList& photos)
{
    return {{u"GUID"_s, guid},
            {u"AlbumName"_s, guid},
            {u"Album Type"_s, type},
            {u"TransitionSpeed"_s, 1.0},
            {u"KeyList"_s, photos},
            {u"PhotoCount"_s, qlonglong{photos.size()}}};
}

/// Two photos of one moment and a later one, all in one album.
QVariantMap catalogue()
{
    return {{u"Master Image List"_s,
             QVariantMap{{u"1"_s, image(100.0)}, {u"3"_s, image(100.0)}, {u"5"_s, image(200.0)}}},
            {u"List of Albums"_s,
             QVariantList{album(u"Best"_s, u"Regular"_s, {u"1"_s, u"3"_s, u"5"_s})}},
            {u"List of Rolls"_s, QVariantList()}};
}

QString told(const QVariantMap& found)
{
    return CatalogueComparison::ofFull(found, catalogue()).join(u'\n');
}

QVariantMap withAlbums(const QVariantList& albums)
{
    QVariantMap found = catalogue();
    found.insert(u"List of Albums"_s, albums);
    return found;
}

QVariantMap withImage(const QString& id, const QVariantMap& content)
{
    QVariantMap found = catalogue();
    QVariantMap images = found.value(u"Master Image List"_s).toMap();
    images.insert(id, content);
    found.insert(u"Master Image List"_s, images);
    return found;
}

} // namespace

TEST(CatalogueComparison, ofWhatAgreesNothingIsTold)
{
    EXPECT_EQ(told(catalogue()).toStdString(), "");
}

TEST(CatalogueComparison, photosOfOneMomentMayStandInAnyOrderAndNoOthers)
{
    EXPECT_EQ(
        told(withAlbums({album(u"Best"_s, u"Regular"_s, {u"3"_s, u"1"_s, u"5"_s})})).toStdString(),
        "");
    EXPECT_EQ(
        told(withAlbums({album(u"Best"_s, u"Regular"_s, {u"5"_s, u"1"_s, u"3"_s})})).toStdString(),
        "AlbumData.xml tells otherwise of the album “Best” than the databases: the order of "
        "its photos.");
}

TEST(CatalogueComparison, settingsOfSlideShowsAreNoDifference)
{
    QVariantMap other = album(u"Best"_s, u"Regular"_s, {u"1"_s, u"3"_s, u"5"_s});
    other.insert(u"TransitionSpeed"_s, 4.0);
    other.insert(u"SongPath"_s, u"/Music/Song.mp3"_s);
    EXPECT_EQ(told(withAlbums({other})).toStdString(), "");
}

TEST(CatalogueComparison, anAlbumTooManyIsToldUnlessItIsOfAKindThatIsNotKnownHere)
{
    const QVariant best = album(u"Best"_s, u"Regular"_s, {u"1"_s, u"3"_s, u"5"_s});
    EXPECT_EQ(told(withAlbums({best, album(u"Show"_s, u"Slideshow"_s, {u"1"_s})})).toStdString(),
              "");
    EXPECT_EQ(told(withAlbums({best, album(u"Gone"_s, u"Regular"_s, {u"1"_s})})).toStdString(),
              "AlbumData.xml lists the album “Gone”, which the databases do not hold.");
    EXPECT_EQ(told(withAlbums({})).toStdString(), "AlbumData.xml lacks the album “Best”.");
}

TEST(CatalogueComparison, photosTooManyAndMissingAreTold)
{
    QVariantMap found = withImage(u"9"_s, image(1.0));
    EXPECT_EQ(told(found).toStdString(),
              "AlbumData.xml lists photo 9, which is no photo that is shown.");
    QVariantMap images = found.value(u"Master Image List"_s).toMap();
    images.remove(u"9"_s);
    images.remove(u"3"_s);
    found.insert(u"Master Image List"_s, images);
    EXPECT_EQ(told(found).toStdString(), "AlbumData.xml lacks the photo 3.");
}

TEST(CatalogueComparison, keysThatAreUnknownHereAreNoDifferenceButAFlagTooManyIs)
{
    QVariantMap more = image(200.0);
    more.insert(u"Keywords"_s, QVariantList{u"2"_s});
    EXPECT_EQ(told(withImage(u"5"_s, more)).toStdString(), "");
    more.insert(u"Flagged"_s, true);
    EXPECT_EQ(told(withImage(u"5"_s, more)).toStdString(),
              "AlbumData.xml tells otherwise of photo 5 than the databases: Flagged.");
}

TEST(CatalogueComparison, localTimeMayBeThatOfSummer)
{
    QVariantMap summer = image(200.0);
    summer.insert(u"DateAsTimerInterval"_s, 200.0 + 25200.0 + 3600.0);
    EXPECT_EQ(told(withImage(u"5"_s, summer)).toStdString(), "");
    summer.insert(u"DateAsTimerInterval"_s, 200.0);
    EXPECT_NE(told(withImage(u"5"_s, summer)).toStdString(), "");
}
