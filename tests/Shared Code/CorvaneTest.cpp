#include "ScanFixture.h"

using namespace Qt::StringLiterals;

// Albums, and what a scan does with each photo.

namespace
{

class CorvaneTest : public ScanFixture
{
protected:
    CorvaneTest()
        : m_engine(services())
    {
    }

    Corvane m_engine;
};

TEST_F(CorvaneTest, noAlbumIsKnownBeforeTheAlbumsStage)
{
    m_library.addAlbum(u"Trip"_s);
    EXPECT_EQ(m_engine.findAlbum(u"Trip"_s), nullptr);
    EXPECT_TRUE(m_library.calls().isEmpty());
}

TEST_F(CorvaneTest, creatingAnAlbumLearnsTheAlbumsAnew)
{
    m_engine.createAlbum(u"Trip"_s);
    EXPECT_EQ(m_library.calls(),
              (QStringList{u"application.newAlbumName Trip"_s, u"application.albums"_s}));
    const qint64 byUser = m_library.addAlbum(u"Made by the user"_s);
    EXPECT_EQ(m_engine.findAlbum(u"Made by the user"_s), nullptr);
    m_engine.createAlbum(u"Another"_s);
    const AlbumPtr found = m_engine.findAlbum(u"Made by the user"_s);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->id(), byUser);
}

TEST_F(CorvaneTest, albumsAreFoundByExactNameTheFirstOfSeveral)
{
    const qint64 first = m_library.addAlbum(u"Trip"_s);
    m_library.addAlbum(u"Trip"_s);
    m_engine.createAlbum(u"Other"_s);
    EXPECT_EQ(m_engine.findAlbum(u"trip"_s), nullptr);
    EXPECT_EQ(m_engine.findAlbum(u"Tri"_s), nullptr);
    ASSERT_NE(m_engine.findAlbum(u"Trip"_s), nullptr);
    EXPECT_EQ(m_engine.findAlbum(u"Trip"_s)->id(), first);
}

TEST_F(CorvaneTest, albumsOfOtherTypesArePassedOver)
{
    constexpr quint32 kSmartAlbum = 0x736D616C;
    m_library.addAlbum(u"Trip"_s, kSmartAlbum);
    const qint64 regular = m_library.addAlbum(u"Trip"_s, 0x616C626D);
    m_engine.createAlbum(u"Other"_s);
    ASSERT_NE(m_engine.findAlbum(u"Trip"_s), nullptr);
    EXPECT_EQ(m_engine.findAlbum(u"Trip"_s)->id(), regular);
}

TEST_F(CorvaneTest, theEstimateIsHandedToTheController)
{
    addPicture(u"a.jpg"_s);
    scan({1});
    // 1 item: 1 + 1 + 1 + 10 s, then each stage done (the clock stands still).
    EXPECT_EQ(told({u"timeRemaining"_s}).first(), u"timeRemaining 00:00:13"_s);
    EXPECT_EQ(told({u"timeRemaining"_s}),
              (QStringList{u"timeRemaining 00:00:13"_s,
                           u"timeRemaining 00:00:12"_s,
                           u"timeRemaining 00:00:12"_s,
                           u"timeRemaining 00:00:11"_s,
                           u"timeRemaining 00:00:11"_s,
                           u"timeRemaining 00:00:10"_s,
                           u"timeRemaining 00:00:10"_s,
                           u"timeRemaining 00:00:00"_s,
                           u"timeRemaining --:--:--"_s}));
}

TEST_F(CorvaneTest, aSmartAlbumOfTheDefaultNameIsNotReused)
{
    const qint64 smart = m_library.addAlbum(u"Corvane For iPhoto"_s, 0x736D616C);
    addPicture(u"a.jpg"_s);
    scan({1});
    EXPECT_TRUE(m_library.album(smart).photos.isEmpty());
    EXPECT_EQ(m_library.album(smart + 1).name, u"Corvane For iPhoto"_s);
    EXPECT_EQ(m_library.album(smart + 1).photos, QList<qint64>{2});
}

TEST_F(CorvaneTest, aRegularAlbumOfTheDefaultNameIsReused)
{
    const qint64 regular = m_library.addAlbum(u"Corvane For iPhoto"_s);
    addPicture(u"a.jpg"_s);
    scan({1});
    EXPECT_EQ(m_library.album(regular).photos, QList<qint64>{2});
    EXPECT_TRUE(m_library.journal().linesWith(u"newAlbumName"_s).isEmpty());
}

TEST_F(CorvaneTest, anAlbumThatIsNotMadeLeavesThePhotoUnfiled)
{
    m_library.setMakesAlbums(false);
    addPicture(u"a.jpg"_s);
    scan({1});
    EXPECT_TRUE(m_library.calls().contains(u"photo 2.addTo nothing"_s));
    ASSERT_EQ(m_delegate.finished.size(), 1);
    EXPECT_EQ(m_delegate.finished.first().album, QString());
    EXPECT_EQ(m_delegate.finished.first().kind, PhotoOutcome::Kind::Converted);
}

TEST_F(CorvaneTest, withoutACatalogueEveryImageIsFiledInTheDefaultAlbum)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    m_delegate.library = m_folder.path();
    scan({1, 2});
    EXPECT_EQ(m_log.entries().filter(u"AlbumData"_s),
              QStringList{u"Unable to find AlbumData.xml"_s});
    EXPECT_EQ(m_library.album(2).name, u"Corvane For iPhoto"_s);
    EXPECT_EQ(m_library.album(2).photos, (QList<qint64>{3, 4}));
    EXPECT_EQ(m_library.journal().linesWith(u"newAlbumName"_s).size(), 1);
}

TEST_F(CorvaneTest, twoRollsOfOneNameFileIntoOneAlbum)
{
    addPicturesOfRolls({u"Beach"_s, u"Beach"_s});
    scan({1, 2});
    EXPECT_EQ(m_library.album(2).name, u"Beach"_s);
    EXPECT_EQ(m_library.album(2).photos, (QList<qint64>{3, 4}));
    EXPECT_EQ(m_library.journal().linesWith(u"newAlbumName"_s),
              QStringList{u"application.newAlbumName Beach"_s});
}

TEST_F(CorvaneTest, afterAFailedConversionTheNextPhotoIsFiledByTheSameListEntry)
{
    addPicturesOfRolls({u"Beach"_s, u"Snow"_s, u"City"_s});
    static_cast<void>(makeBroken(u"1.jpg"_s));
    set(u"ProcessingOption"_s, true); // each photo converts its own original
    scan({1, 2, 3});
    EXPECT_EQ(
        m_library.calls().filter(u"newAlbumName"_s),
        (QStringList{u"application.newAlbumName Beach"_s, u"application.newAlbumName Snow"_s}));
}

TEST_F(CorvaneTest, anAlbumMadeByTheUserIsNotSeenUntilTheScanMakesOneItself)
{
    const qint64 city = m_library.addAlbum(u"City"_s);
    addPicturesOfRolls({u"City"_s, u"Beach"_s, u"Snow"_s});
    qint64 beach = 0;
    qint64 snow = 0;
    m_library.whenCalled(u"album 1.importFrom 1.jpg"_s, [&] {
        beach = m_library.addAlbum(u"Beach"_s);
        snow = m_library.addAlbum(u"Snow"_s);
    });
    scan({1, 2, 3});
    EXPECT_EQ(m_library.album(city).photos, QList<qint64>{4});
    // "Beach" was there, unseen: another one is made, and the albums learnt thereby.
    EXPECT_EQ(m_library.journal().linesWith(u"newAlbumName"_s),
              QStringList{u"application.newAlbumName Beach"_s});
    EXPECT_EQ(m_library.album(beach).photos, QList<qint64>{5});
    EXPECT_EQ(m_library.album(snow).photos, QList<qint64>{6});
    EXPECT_EQ(m_library.album(snow + 1).name, u"Beach"_s);
    EXPECT_TRUE(m_library.album(snow + 1).photos.isEmpty());
}

TEST_F(CorvaneTest, aCompletedRunStoresTheFourRatesThatItLearnt)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    m_library.addAlbum(u"Corvane For iPhoto"_s);
    set(u"TagEnabled"_s, true);
    const auto take = [this](const QString& call, double seconds) {
        m_library.whenCalled(call, [this, seconds] { m_clock.advance(seconds); });
    };
    take(u"application.keywords"_s, 4.0);
    take(u"photo 1.properties"_s, 5.0);
    take(u"application.albums"_s, 8.0);
    take(u"album 1.importFrom a.jpg"_s, 20.0);
    scan({1, 2});
    const auto rate = [this](const QString& key) { return m_defaults.doubleValue(key); };
    EXPECT_DOUBLE_EQ(rate(u"estStartupRate"_s), (1.0 + 2.0 / 4.0) / 3.0);
    EXPECT_DOUBLE_EQ(rate(u"estDataLoadingRate"_s), (1.0 + 2.0 / 5.0) / 3.0);
    EXPECT_DOUBLE_EQ(rate(u"estAlbumLoadingRate"_s), (1.0 + 2.0 / 8.0) / 3.0);
    EXPECT_DOUBLE_EQ(rate(u"estConversionRate"_s), (0.1 + 1.0 / 20.0) / 2.0);
}

TEST_F(CorvaneTest, everyStageIsEstimatedAtItsBoundsAndEachPhotoAtItsPosition)
{
    for (const auto& name : {u"a.jpg"_s, u"b.jpg"_s, u"c.jpg"_s}) {
        addPicture(name);
    }
    // 1024, 128, 16 and 4 seconds an item.
    m_defaults.setDouble(u"estStartupRate"_s, 1.0 / 1024.0);
    m_defaults.setDouble(u"estDataLoadingRate"_s, 1.0 / 128.0);
    m_defaults.setDouble(u"estAlbumLoadingRate"_s, 1.0 / 16.0);
    m_defaults.setDouble(u"estConversionRate"_s, 1.0 / 4.0);
    const QList<std::pair<QString, double>> durations{{u"a.jpg"_s, 2.0}, {u"b.jpg"_s, 4.0}};
    for (const auto& [name, seconds] : durations) {
        m_library.whenCalled(u"album 1.importFrom "_s + name,
                             [this, taken = seconds] { m_clock.advance(taken); });
    }
    scan({1, 2, 3});
    EXPECT_EQ(told({u"timeRemaining"_s}),
              (QStringList{u"timeRemaining 00:58:36"_s, // 3 of each stage
                           u"timeRemaining 00:07:24"_s,
                           u"timeRemaining 00:07:24"_s, // 3 x (128 + 16 + 4)
                           u"timeRemaining 00:01:00"_s,
                           u"timeRemaining 00:01:00"_s, // 3 x (16 + 4)
                           u"timeRemaining 00:00:12"_s,
                           u"timeRemaining 00:00:12"_s, // 3 x 4
                           u"timeRemaining 00:00:08"_s, // 2 x 4
                           u"timeRemaining 00:00:02"_s, // 1 / ((1 / 4 + 1 / 2) / 2)
                           u"timeRemaining 00:00:00"_s,
                           u"timeRemaining --:--:--"_s}));
    // ((1 / 4 + 1 / 2) + 1 / 4) / 3: two photos were learnt from, the third one was not.
    EXPECT_DOUBLE_EQ(m_defaults.doubleValue(u"estConversionRate"_s), 1.0 / 3.0);
}

TEST_F(CorvaneTest, theEstimateStandsStillAfterAFailedConversionAndGoesOnAfterASkippedPhoto)
{
    addBroken(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    addPicture(u"c.jpg"_s);
    m_library.photo(2).height = 0;
    set(u"ProcessingOption"_s, true); // each photo converts its own original
    scan({1, 2, 3});
    EXPECT_EQ(told({u"timeRemaining"_s}).last(5),
              (QStringList{u"timeRemaining 00:00:30"_s,
                           u"timeRemaining 00:00:30"_s,
                           u"timeRemaining 00:00:20"_s,
                           u"timeRemaining 00:00:00"_s,
                           u"timeRemaining --:--:--"_s}));
}

} // namespace
