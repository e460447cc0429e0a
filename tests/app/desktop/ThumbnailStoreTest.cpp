#include "ThumbnailStore.h"

#include "PictureFolder.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <thread>

using namespace Qt::StringLiterals;

namespace
{

class ThumbnailStoreTest : public testing::Test
{
protected:
    QStringList pictures(int count, QSize size = QSize(64, 48))
    {
        QStringList paths;
        for (int i = 0; i < count; ++i) {
            paths +=
                m_folder.jpeg(u"Thumbnails/%1.jpg"_s.arg(i), size, QColor::fromHsv(i, 200, 200));
        }
        return paths;
    }

    static QStringList told(const QSignalSpy& spy)
    {
        QStringList paths;
        for (const QList<QVariant>& arguments : spy) {
            paths += arguments.first().toString();
        }
        return paths;
    }

    static bool waitFor(const QSignalSpy& spy, qsizetype count)
    {
        return QTest::qWaitFor([&spy, count] { return spy.size() >= count; }, 20000);
    }

    PictureFolder m_folder;
};

TEST_F(ThumbnailStoreTest, aWantedPictureIsFittedIntoTheEdge)
{
    const QString path = m_folder.jpeg(u"Thumbnails/a.jpg"_s, QSize(360, 240), Qt::red);
    ThumbnailStore store;
    const QSignalSpy ready(&store, &ThumbnailStore::thumbnailReady);
    store.setEdge(90);
    store.setWanted({path});
    EXPECT_TRUE(store.thumbnail(path).isNull()) << "nothing is decoded by the caller";
    ASSERT_TRUE(waitFor(ready, 1));
    EXPECT_EQ(store.thumbnail(path).size(), QSize(90, 60));
    EXPECT_FALSE(store.hasFailed(path));
    EXPECT_EQ(store.cachedBytes(), 90 * 60 * 4);
}

TEST_F(ThumbnailStoreTest, onlyTheLibrarysThumbnailsAreTakenAsUpright)
{
    constexpr int kTurned = 6;
    const QString thumbnail = m_folder.jpeg(u"Thumbnails/a.jpg"_s, QSize(40, 20), Qt::red, kTurned);
    const QString preview =
        m_folder.jpeg(u"Thumbnails/Previews/a.jpg"_s, QSize(40, 20), Qt::red, kTurned);
    ThumbnailStore store;
    const QSignalSpy ready(&store, &ThumbnailStore::thumbnailReady);
    store.setWanted({thumbnail, preview});
    ASSERT_TRUE(waitFor(ready, 2));
    EXPECT_EQ(store.thumbnail(thumbnail).size(), QSize(40, 20));
    EXPECT_EQ(store.thumbnail(preview).size(), QSize(20, 40));
}

TEST_F(ThumbnailStoreTest, aBrokenFileIsTriedOnceUntilARetryIsAskedFor)
{
    const QString path = m_folder.bytes(u"Thumbnails/a.jpg"_s, "no picture");
    ThumbnailStore store;
    const QSignalSpy ready(&store, &ThumbnailStore::thumbnailReady);
    store.setWanted({path});
    ASSERT_TRUE(waitFor(ready, 1));
    EXPECT_TRUE(store.hasFailed(path));
    EXPECT_TRUE(store.thumbnail(path).isNull());

    m_folder.jpeg(u"Thumbnails/a.jpg"_s, QSize(40, 20), Qt::red);
    store.setWanted({path});
    QTest::qWait(50);
    EXPECT_EQ(ready.size(), 1);

    store.retryFailures();
    store.setWanted({path});
    ASSERT_TRUE(waitFor(ready, 2));
    EXPECT_FALSE(store.hasFailed(path));
}

TEST_F(ThumbnailStoreTest, anEmptyPathNeverGivesAPicture)
{
    ThumbnailStore store;
    const QSignalSpy ready(&store, &ThumbnailStore::thumbnailReady);
    store.setWanted({QString()});
    EXPECT_TRUE(store.hasFailed(QString()));
    QTest::qWait(20);
    EXPECT_TRUE(ready.isEmpty());
}

TEST_F(ThumbnailStoreTest, whatIsNotWantedAnyMoreIsDroppedBeforeItIsDecoded)
{
    const QStringList paths = pictures(200);
    ThumbnailStore store;
    const QSignalSpy ready(&store, &ThumbnailStore::thumbnailReady);
    store.setWanted(paths);
    store.setWanted({paths.last()});
    ASSERT_TRUE(QTest::qWaitFor([&] { return told(ready).contains(paths.last()); }, 20000));
    QTest::qWait(50);
    EXPECT_LT(ready.size(), paths.size() / 2) << "besides those that had been begun";
    const qsizetype decoded = ready.size();
    store.setWanted({});
    QTest::qWait(20);
    EXPECT_EQ(ready.size(), decoded);
}

TEST_F(ThumbnailStoreTest, theMostUrgentComeFirst)
{
    const QStringList paths = pictures(40);
    ThumbnailStore store;
    const QSignalSpy ready(&store, &ThumbnailStore::thumbnailReady);
    store.setWanted(paths);
    ASSERT_TRUE(waitFor(ready, paths.size()));
    const QStringList order = told(ready);
    for (qsizetype i = 0; i < order.size(); ++i) {
        // Two threads: one may fall behind while the other goes on.
        EXPECT_LT(paths.indexOf(order.at(i)), i + 20);
    }
}

TEST_F(ThumbnailStoreTest, memoryStaysWithinItsBoundAndHoldsTheMostUrgent)
{
    const QStringList paths = pictures(60);
    constexpr int kEdge = 64;
    constexpr qint64 kRoomFor = 12;
    constexpr qint64 kBytes = kRoomFor * kEdge * kEdge * 4;
    ThumbnailStore store(kBytes);
    const QSignalSpy ready(&store, &ThumbnailStore::thumbnailReady);
    store.setEdge(kEdge);
    store.setWanted(paths);
    ASSERT_TRUE(waitFor(ready, kRoomFor - 2));
    QTest::qWait(50);
    EXPECT_LE(store.cachedBytes(), kBytes);
    EXPECT_FALSE(store.thumbnail(paths.first()).isNull());
    // The others come in their place when they are the urgent ones.
    const QStringList later = paths.mid(30);
    store.setWanted(later);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !store.thumbnail(later.at(9)).isNull(); }, 20000));
    EXPECT_LE(store.cachedBytes(), kBytes);
    EXPECT_FALSE(store.thumbnail(later.first()).isNull());
}

TEST_F(ThumbnailStoreTest, picturesOfTheFormerEdgeServeUntilTheNewOnesAreThere)
{
    const QString path = m_folder.jpeg(u"Thumbnails/a.jpg"_s, QSize(360, 240), Qt::red);
    ThumbnailStore store;
    const QSignalSpy ready(&store, &ThumbnailStore::thumbnailReady);
    store.setEdge(90);
    store.setWanted({path});
    ASSERT_TRUE(waitFor(ready, 1));
    store.setEdge(180);
    EXPECT_EQ(store.thumbnail(path).size(), QSize(90, 60));
    store.setWanted({path});
    ASSERT_TRUE(waitFor(ready, 2));
    EXPECT_EQ(store.thumbnail(path).size(), QSize(180, 120));
}

TEST_F(ThumbnailStoreTest, aPictureThatIsWholeIsNotDecodedAgainForALargerEdge)
{
    const QString path = m_folder.jpeg(u"Thumbnails/a.jpg"_s, QSize(60, 40), Qt::red);
    ThumbnailStore store;
    const QSignalSpy ready(&store, &ThumbnailStore::thumbnailReady);
    store.setEdge(90);
    store.setWanted({path});
    ASSERT_TRUE(waitFor(ready, 1));
    store.setEdge(300);
    store.setWanted({path});
    QTest::qWait(50);
    EXPECT_EQ(ready.size(), 1);
}

TEST_F(ThumbnailStoreTest, destructionWaitsForRunningDecodesOnly)
{
    const QString original = m_folder.jpeg(u"Thumbnails/a.jpg"_s, QSize(2400, 1600), Qt::red);
    QStringList paths;
    for (int i = 0; i < 400; ++i) {
        paths += m_folder.path(u"Thumbnails/link%1.jpg"_s.arg(i));
        ASSERT_TRUE(QFile::link(original, paths.last()));
    }
    auto store = std::make_unique<ThumbnailStore>();
    QElapsedTimer clock;
    clock.start();
    store->setWanted({original});
    ASSERT_TRUE(QTest::qWaitFor([&] { return !store->thumbnail(original).isNull(); }, 20000));
    const qint64 one = clock.restart() + 1;
    store->setWanted(paths);
    store.reset();
    EXPECT_LT(clock.elapsed(), 50 * one);
}

TEST_F(ThumbnailStoreTest, severalThreadsMayAskAtOnce)
{
    const QStringList paths = pictures(50);
    ThumbnailStore store(qint64{64} * 1024);
    store.setEdge(32);
    const auto use = [&store, &paths](int seed) {
        for (int i = 0; i < 200; ++i) {
            store.setWanted(paths.mid((seed + i) % 40, 10));
            store.setEdge(16 + (seed + i) % 32);
            static_cast<void>(store.thumbnail(paths.at(i % 50)));
            static_cast<void>(store.hasFailed(paths.at(i % 50)));
        }
    };
    std::thread one(use, 1);
    std::thread other(use, 23);
    one.join();
    other.join();
    store.setEdge(32);
    store.setWanted({paths.first()});
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return store.thumbnail(paths.first()).width() == 32; }, 20000));
    EXPECT_LE(store.cachedBytes(), 64 * 1024);
}

} // namespace
