#include "SamplePlan.h"

#include <QSet>

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

QList<PlannedPhoto> rawOnly(const QList<PlannedPhoto>& photos)
{
    QList<PlannedPhoto> raw;
    std::ranges::copy_if(photos, std::back_inserter(raw), &PlannedPhoto::raw);
    return raw;
}

template <typename Property>
QSet<QString> distinct(const QList<PlannedPhoto>& photos, Property property)
{
    QSet<QString> values;
    for (const PlannedPhoto& photo : photos) {
        for (const QString& value : property(photo)) {
            values.insert(value);
        }
    }
    return values;
}

QStringList eventOf(const PlannedPhoto& photo)
{
    return {photo.event};
}

QStringList albumsOf(const PlannedPhoto& photo)
{
    return photo.albums;
}

QStringList fileNameOf(const PlannedPhoto& photo)
{
    return {photo.fileName};
}

} // namespace

TEST(SamplePlanTest, threeJpegPhotosComeWithTheRawOnes)
{
    for (const int wanted : {1, 4, 12, 1000}) {
        const auto photos = SamplePlan::photos({.photos = wanted});
        EXPECT_EQ(rawOnly(photos).size(), wanted);
        EXPECT_EQ(photos.size(), wanted + 3);
        EXPECT_EQ(distinct(photos, fileNameOf).size(), photos.size());
    }
}

TEST(SamplePlanTest, twoRawPhotosAlreadyLieInTwoEventsAndTwoAlbums)
{
    const auto raw = rawOnly(SamplePlan::photos({.photos = 2}));
    EXPECT_GE(distinct(raw, eventOf).size(), 2);
    EXPECT_GE(distinct(raw, albumsOf).size(), 2);
}

TEST(SamplePlanTest, allAlbumsThatPhotosAreInAreListed)
{
    const QStringList albums = SamplePlan::albums();
    EXPECT_EQ(distinct(SamplePlan::photos({}), albumsOf),
              QSet<QString>(albums.begin(), albums.end()));
}

TEST(SamplePlanTest, fourRawPhotosShowAllThatALibraryKnowsOfOne)
{
    const auto raw = rawOnly(SamplePlan::photos({.photos = 4}));
    const auto any = [&raw](auto predicate) { return std::ranges::any_of(raw, predicate); };
    EXPECT_TRUE(any([](const PlannedPhoto& photo) { return !photo.keywords.isEmpty(); }));
    EXPECT_TRUE(any([](const PlannedPhoto& photo) { return photo.rating > 0; }));
    EXPECT_TRUE(any([](const PlannedPhoto& photo) { return photo.place.has_value(); }));
    EXPECT_TRUE(
        any([](const PlannedPhoto& photo) { return photo.shot.facts.position.has_value(); }));
    EXPECT_TRUE(any([](const PlannedPhoto& photo) {
        return photo.shot.facts.orientation != Orientation::Upright;
    }));
    // Comments beyond Latin 1 and beyond the basic plane.
    EXPECT_TRUE(any([](const PlannedPhoto& photo) {
        return std::ranges::any_of(photo.comment,
                                   [](QChar unit) { return unit.isHighSurrogate(); });
    }));
}

TEST(SamplePlanTest, onePhotoAloneHasItsPositionInTheFileAndOneIsAPortrait)
{
    for (const int wanted : {1, 12, 30}) {
        const auto photos = SamplePlan::photos({.photos = wanted});
        EXPECT_EQ(std::ranges::count_if(photos,
                                        [](const PlannedPhoto& photo) {
                                            return photo.shot.facts.position.has_value();
                                        }),
                  1);
        EXPECT_EQ(std::ranges::count_if(photos,
                                        [](const PlannedPhoto& photo) {
                                            return photo.shot.facts.orientation !=
                                                   Orientation::Upright;
                                        }),
                  wanted > 1 ? 1 : 0);
    }
}

TEST(SamplePlanTest, aSubjectComesAgainLaterAndDifferently)
{
    const auto raw = rawOnly(SamplePlan::photos({.photos = 16}));
    for (int i = 0; i < 8; ++i) {
        const PlannedPhoto& first = raw.at(i);
        const PlannedPhoto& second = raw.at(i + 8);
        EXPECT_EQ(first.event, second.event);
        EXPECT_NE(first.shot.seed, second.shot.seed);
        EXPECT_LT(first.shot.facts.taken, second.shot.facts.taken);
        if (!first.name.isEmpty()) {
            EXPECT_NE(first.name, second.name);
        }
    }
}

TEST(SamplePlanTest, aLargeLibraryHasMoreEvents)
{
    const auto few = distinct(SamplePlan::photos({.photos = 48}), eventOf);
    const auto many = distinct(SamplePlan::photos({.photos = 1000}), eventOf);
    EXPECT_EQ(few.size(), 4);
    EXPECT_EQ(many.size(), 4 * 21);
}

TEST(SamplePlanTest, picturesHaveTheSizeAskedForAndJpegOnesHalf)
{
    const auto photos = SamplePlan::photos({.photos = 2, .megapixels = 6.0});
    EXPECT_EQ(photos.first().shot.picture, QSize(3000, 2000));
    EXPECT_EQ(photos.last().shot.picture, QSize(2000, 1500));
}

TEST(SamplePlanTest, jpegPhotosAreUpright)
{
    for (const PlannedPhoto& photo : SamplePlan::photos({.photos = 2})) {
        if (!photo.raw) {
            EXPECT_EQ(photo.shot.facts.orientation, Orientation::Upright);
        }
    }
}
