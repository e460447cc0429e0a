#include "PhotoGrid.h"

#include "FactsBuilder.h"
#include "PhotoModel.h"
#include "PictureFolder.h"
#include "ThumbnailStore.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kMany = 100000;

class PhotoGridTest : public testing::Test
{
protected:
    void SetUp() override
    {
        m_filter.setSourceModel(&m_model);
        m_grid.resize(700, 500);
        m_grid.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_grid));
    }

    /// Ids from 1 on; the thumbnails are files that are not there.
    static QList<PhotoFacts> photos(int count)
    {
        QList<PhotoFacts> photos;
        photos.reserve(count);
        for (int id = 1; id <= count; ++id) {
            PhotoFacts photo = FactsBuilder::photo(id, u"IMG_%1.jpg"_s.arg(id), 1, u"Event"_s);
            photo.thumbnailPath = thumbnail(id);
            photos += photo;
        }
        return photos;
    }

    static QString thumbnail(int id) { return u"/nowhere/Thumbnails/%1.jpg"_s.arg(id); }

    static int idOf(const QString& path)
    {
        return path.section(u'/', -1).section(u'.', 0, 0).toInt();
    }

    /// Ids of the photos whose thumbnail was touched, when nothing is under way any more.
    static QSet<int> touched(const QSignalSpy& ready)
    {
        qsizetype before = -1;
        while (ready.size() != before) {
            before = ready.size();
            QTest::qWait(150);
        }
        QSet<int> ids;
        for (const QList<QVariant>& arguments : ready) {
            ids += idOf(arguments.first().toString());
        }
        return ids;
    }

    [[nodiscard]] int selectedCount() const
    {
        return static_cast<int>(m_grid.selectedPhotos().size());
    }

    [[nodiscard]] int columnOf(int row) const
    {
        return m_grid.visualRect(m_filter.index(row, 0)).left() / m_grid.gridSize().width();
    }

    [[nodiscard]] int lineOf(int row) const
    {
        return (m_grid.visualRect(m_filter.index(row, 0)).top() -
                m_grid.visualRect(m_filter.index(0, 0)).top()) /
               m_grid.gridSize().height();
    }

    [[nodiscard]] int columns() const
    {
        int row = 0;
        while (lineOf(row) == 0) {
            ++row;
        }
        return row;
    }

    PhotoModel m_model;
    PhotoFilter m_filter;
    ThumbnailStore m_thumbnails;
    PhotoGrid m_grid{m_filter, m_thumbnails};
};

TEST_F(PhotoGridTest, openingManyPhotosTouchesNoPictureFarFromTheView)
{
    const QSignalSpy ready(&m_thumbnails, &ThumbnailStore::thumbnailReady);
    m_model.setPhotos(photos(kMany));
    const QSet<int> ids = touched(ready);
    const PhotoGrid::Rows sight = m_grid.visibleRows();
    const int page = sight.last - sight.first + 1;
    EXPECT_EQ(sight.first, 0);
    EXPECT_GT(page, 4);
    EXPECT_EQ(ids.size(), 2 * page);
    for (const int id : ids) {
        EXPECT_LE(id, 2 * page);
    }
}

TEST_F(PhotoGridTest, scrollingToTheEndTouchesNoPictureInBetween)
{
    m_model.setPhotos(photos(kMany));
    const QSignalSpy ready(&m_thumbnails, &ThumbnailStore::thumbnailReady);
    const QSet<int> atStart = touched(ready);
    QTest::keyClick(&m_grid, Qt::Key_End);
    const QSet<int> ids = touched(ready) - atStart;
    const PhotoGrid::Rows sight = m_grid.visibleRows();
    const int page = sight.last - sight.first + 1;
    EXPECT_EQ(sight.last, kMany - 1);
    EXPECT_TRUE(ids.contains(kMany));
    EXPECT_LE(ids.size(), 2 * page);
    for (const int id : ids) {
        EXPECT_GT(id, kMany - 2 * page);
    }
}

TEST_F(PhotoGridTest, aPictureIsShownWhenItIsThere)
{
    PictureFolder folder;
    QList<PhotoFacts> one = photos(1);
    one.first().thumbnailPath =
        folder.jpeg(u"Thumbnails/1.jpg"_s, QSize(120, 90), QColor(200, 30, 30));
    const QSignalSpy ready(&m_thumbnails, &ThumbnailStore::thumbnailReady);
    m_model.setPhotos(one);
    ASSERT_EQ(touched(ready).size(), 1);
    const QImage image = m_grid.viewport()->grab().toImage();
    const QRect cell = m_grid.visualRect(m_filter.index(0, 0));
    const QColor middle = image.pixelColor(cell.center().x(), cell.center().y() - 20);
    EXPECT_NEAR(middle.red(), 200, 12);
    EXPECT_NEAR(middle.green(), 30, 12);
}

TEST_F(PhotoGridTest, linesFillTheWidthWhateverItIs)
{
    m_model.setPhotos(photos(40));
    for (int width = 330; width < 760; width += 7) {
        m_grid.resize(width, 400);
        QCoreApplication::processEvents();
        const int count = columns();
        EXPECT_EQ(columnOf(count - 1), count - 1) << width;
        const int rest = m_grid.viewport()->width() - count * m_grid.gridSize().width();
        EXPECT_GT(rest, 0) << width;
        EXPECT_LE(rest, count) << width;
        EXPECT_EQ(m_grid.visibleRows().first, 0);
        EXPECT_EQ((m_grid.visibleRows().last + 1) % count, 0) << width;
    }
}

TEST_F(PhotoGridTest, allOfManyPhotosAreSelectedAndTheSelectionIsTurnedRound)
{
    m_model.setPhotos(photos(kMany));
    QTest::keyClick(&m_grid, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(selectedCount(), kMany);
    EXPECT_EQ(m_grid.selectedFigures().photos, kMany);
    m_grid.invertSelection();
    EXPECT_EQ(selectedCount(), 0);
    EXPECT_FALSE(m_grid.firstSelected().isValid());
    m_grid.invertSelection();
    EXPECT_EQ(selectedCount(), kMany);
}

TEST_F(PhotoGridTest, selectingRawLeavesOutWhatCannotOrNeedNotBeConverted)
{
    QList<PhotoFacts> some = photos(9);
    for (PhotoFacts& photo : some) {
        photo.raw = true;
    }
    some[1].raw = false;
    some[2].movie = true;
    some[3].missing = true;
    some[4].keywords = QStringList{u"corvane original"_s};
    some[5].keywords = QStringList{u"Corvane Original"_s};
    some[5].missing = true;
    some[7].unreadable = true;
    m_model.setPhotos(some);
    const PhotoGrid::RawSelection found = m_grid.selectRaw();
    EXPECT_EQ(m_grid.selectedPhotos(), (QList<qint64>{1, 7, 9}));
    EXPECT_EQ(found.selected, 3);
    EXPECT_EQ(found.missing, 1);
    EXPECT_EQ(found.unreadable, 1);
    EXPECT_EQ(found.converted, 2);
}

TEST_F(PhotoGridTest, rawPhotosScatteredAmongManyAreSelectedAtOnce)
{
    QList<PhotoFacts> many = photos(kMany);
    for (qsizetype i = 0; i < many.size(); i += 2) {
        many[i].raw = true;
    }
    m_model.setPhotos(many);
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(m_grid.selectRaw().selected, kMany / 2);
    EXPECT_EQ(m_grid.selectRaw().selected, kMany / 2) << "over the same selection";
    m_grid.invertSelection();
    EXPECT_EQ(m_grid.selectedPhotos().first(), 2);
    EXPECT_EQ(selectedCount(), kMany / 2);
    EXPECT_LT(clock.elapsed(), 20000) << "a step for each pair of photos would take hours";
}

TEST_F(PhotoGridTest, selectedPhotosComeInTheLibrarysOrder)
{
    QList<PhotoFacts> some = photos(6);
    m_model.setPhotos(some);
    m_filter.setOrder(PhotoFilter::Order::Size, true);
    m_grid.selectPhotos({5, 2, 4});
    EXPECT_EQ(m_grid.selectedPhotos(), (QList<qint64>{2, 4, 5}));
    EXPECT_EQ(m_filter.photo(m_grid.firstSelected()).id, 5);
    EXPECT_EQ(m_grid.selectedFigures().bytes, 11000);
}

TEST_F(PhotoGridTest, aSelectionIsPutBackAfterTheModelWasReset)
{
    m_model.setPhotos(photos(kMany));
    m_grid.selectPhotos({70000, 70002});
    const QSignalSpy changed(&m_grid, &PhotoGrid::photoSelectionChanged);
    const QList<qint64> ids = m_grid.selectedPhotos();
    m_model.setPhotos(photos(kMany));
    EXPECT_EQ(selectedCount(), 0);
    m_grid.selectPhotos(ids + QList<qint64>{kMany + 5});
    EXPECT_EQ(m_grid.selectedPhotos(), ids);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !changed.isEmpty(); }));
    EXPECT_TRUE(m_grid.visualRect(m_grid.firstSelected()).intersects(m_grid.viewport()->rect()));
}

TEST_F(PhotoGridTest, whatIsReadAnewKeepsSelectionCurrentPhotoAndWhatIsInSight)
{
    QList<PhotoFacts> many = photos(2000);
    m_model.setPhotos(many);
    QCoreApplication::processEvents();
    m_grid.selectPhotos({500, 1000, 1001});
    m_grid.selectionModel()->setCurrentIndex(m_filter.index(1500, 0),
                                             QItemSelectionModel::NoUpdate);
    const int value = 700 / columns() * m_grid.gridSize().height() + 11;
    m_grid.verticalScrollBar()->setValue(value);
    const qint64 first = m_filter.photo(m_filter.index(m_grid.visibleRows().first, 0)).id;
    m_grid.keepPlace([&] {
        many.append(FactsBuilder::photo(5000, u"IMG_5000.jpg"_s, 1, u"Event"_s));
        many.removeAt(999);
        m_model.setPhotos(many);
    });
    EXPECT_EQ(m_grid.selectedPhotos(), (QList<qint64>{500, 1001})) << "1000 is gone";
    EXPECT_EQ(m_filter.photo(m_grid.currentIndex()).id, 1501);
    EXPECT_EQ(m_grid.verticalScrollBar()->value(), value);
    EXPECT_EQ(m_filter.photo(m_filter.index(m_grid.visibleRows().first, 0)).id, first);
}

TEST_F(PhotoGridTest, photosThatComeOrGoAboveTheViewLeaveInSightWhatWasThere)
{
    QList<PhotoFacts> many = photos(2000);
    m_model.setPhotos(many);
    QCoreApplication::processEvents();
    m_grid.verticalScrollBar()->setValue(30 * m_grid.gridSize().height());
    const int line = columns();
    const int id = 30 * line + 1;
    ASSERT_EQ(m_filter.photo(m_filter.index(m_grid.visibleRows().first, 0)).id, id);
    m_grid.keepPlace([&] {
        many.remove(0, qsizetype{10} * line);
        m_model.setPhotos(many);
    });
    const auto rectOf = [this](qint64 photo) {
        return m_grid.visualRect(m_filter.mapFromSource(m_model.indexOf(photo)));
    };
    EXPECT_EQ(rectOf(id).top(), 0);
    m_grid.keepPlace([&] {
        many = photos(2000);
        m_model.setPhotos(many);
    });
    EXPECT_TRUE(rectOf(id).intersects(m_grid.viewport()->rect()));
}

TEST_F(PhotoGridTest, inPlaceOfAPhotoThatIsGoneItsNeighbourIsTheCurrentOne)
{
    QList<PhotoFacts> some = photos(6);
    m_model.setPhotos(some);
    QCoreApplication::processEvents();
    m_grid.setCurrentIndex(m_filter.index(3, 0));
    m_grid.keepPlace([&] {
        some.removeAt(3);
        m_model.setPhotos(some);
    });
    EXPECT_EQ(m_filter.photo(m_grid.currentIndex()).id, 5);
    EXPECT_EQ(selectedCount(), 0) << "it is current, but nobody selected it";
    m_grid.setCurrentIndex(m_filter.index(4, 0));
    m_grid.keepPlace([&] {
        some.removeLast();
        m_model.setPhotos(some);
    });
    EXPECT_EQ(m_filter.photo(m_grid.currentIndex()).id, 5) << "no other comes after it";
    m_grid.keepPlace([&] { m_model.setPhotos({}); });
    EXPECT_FALSE(m_grid.currentIndex().isValid());
}

TEST_F(PhotoGridTest, changesOfTheSelectionAreToldOnceForAll)
{
    m_model.setPhotos(photos(50));
    QCoreApplication::processEvents();
    const QSignalSpy changed(&m_grid, &PhotoGrid::photoSelectionChanged);
    m_grid.selectAll();
    m_grid.selectPhotos({3});
    m_grid.invertSelection();
    EXPECT_TRUE(changed.isEmpty());
    QTest::qWait(20);
    EXPECT_EQ(changed.size(), 1);
}

TEST_F(PhotoGridTest, aSelectionThatAResetOrAFilterTakesAwayIsTold)
{
    m_model.setPhotos(photos(50));
    m_grid.selectPhotos({3, 17});
    QTest::qWait(20);
    const QSignalSpy changed(&m_grid, &PhotoGrid::photoSelectionChanged);
    m_filter.setSearchText(u"IMG_17"_s);
    QTest::qWait(20);
    EXPECT_EQ(changed.size(), 1);
    EXPECT_EQ(m_grid.selectedPhotos(), QList<qint64>{17});
    m_model.setPhotos({});
    QTest::qWait(20);
    EXPECT_EQ(changed.size(), 2);
}

TEST_F(PhotoGridTest, spaceEnterAndADoubleClickAskToOpenAPhoto)
{
    m_model.setPhotos(photos(5));
    QCoreApplication::processEvents();
    QSignalSpy opening(&m_grid, &PhotoGrid::openRequested);
    QTest::keyClick(&m_grid, Qt::Key_Space);
    EXPECT_TRUE(opening.isEmpty()) << "there is no current photo";
    m_grid.setCurrentIndex(m_filter.index(2, 0));
    QTest::keyClick(&m_grid, Qt::Key_Space);
    QTest::keyClick(&m_grid, Qt::Key_Return);
    QTest::keyClick(&m_grid, Qt::Key_Enter, Qt::KeypadModifier);
    ASSERT_EQ(opening.size(), 3);
    EXPECT_EQ(opening.first().first().toModelIndex().row(), 2);
    const QPoint place = m_grid.visualRect(m_filter.index(1, 0)).center();
    QTest::mouseClick(m_grid.viewport(), Qt::LeftButton, Qt::NoModifier, place);
    QTest::mouseDClick(m_grid.viewport(), Qt::LeftButton, Qt::NoModifier, place);
    ASSERT_EQ(opening.size(), 4);
    EXPECT_EQ(opening.last().first().toModelIndex().row(), 1);
    EXPECT_EQ(m_grid.selectedPhotos(), QList<qint64>{2});
}

TEST_F(PhotoGridTest, arrowKeysGoFromLineToLine)
{
    m_grid.resize(600, 500);
    QCoreApplication::processEvents();
    m_model.setPhotos(photos(100));
    QCoreApplication::processEvents();
    const int line = columns();
    ASSERT_GE(line, 2);
    const auto rowAfter = [this](int from, Qt::Key key) {
        m_grid.setCurrentIndex(m_filter.index(from, 0));
        QTest::keyClick(&m_grid, key);
        return m_grid.currentIndex().row();
    };
    EXPECT_EQ(rowAfter(line - 1, Qt::Key_Right), line);
    EXPECT_EQ(rowAfter(line, Qt::Key_Left), line - 1);
    EXPECT_EQ(rowAfter(1, Qt::Key_Down), line + 1);
    EXPECT_EQ(rowAfter(line + 1, Qt::Key_Up), 1);
    EXPECT_EQ(rowAfter(1, Qt::Key_Up), 1);
    EXPECT_EQ(rowAfter(99, Qt::Key_Down), 99);
    EXPECT_EQ(rowAfter(99, Qt::Key_Right), 99);
    EXPECT_EQ(rowAfter(50, Qt::Key_Home), 0);
    EXPECT_EQ(rowAfter(0, Qt::Key_End), 99);
    EXPECT_GT(rowAfter(0, Qt::Key_PageDown), line - 1);
    EXPECT_EQ(rowAfter(1, Qt::Key_PageDown) % line, 1);
    EXPECT_EQ(m_grid.selectedPhotos().size(), 1);
}

TEST_F(PhotoGridTest, downFromALongLineReachesTheEndOfAShortOne)
{
    m_model.setPhotos(photos(20));
    QCoreApplication::processEvents();
    const int line = columns();
    m_model.setPhotos(photos(line + 1));
    QCoreApplication::processEvents();
    m_grid.setCurrentIndex(m_filter.index(line - 1, 0));
    QTest::keyClick(&m_grid, Qt::Key_Down);
    EXPECT_EQ(m_grid.currentIndex().row(), line);
    m_grid.setCurrentIndex(m_filter.index(0, 0));
    QTest::keyClick(&m_grid, Qt::Key_End, Qt::ShiftModifier);
    EXPECT_EQ(selectedCount(), line + 1);
}

TEST_F(PhotoGridTest, keysAndTheWheelZoomWithinBounds)
{
    QSignalSpy zoomed(&m_grid, &PhotoGrid::zoomChanged);
    const int before = m_grid.zoom();
    QTest::keyClick(&m_grid, Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_EQ(m_grid.zoom(), before + PhotoGrid::kZoomStep);
    QTest::keyClick(&m_grid, Qt::Key_Minus, Qt::ControlModifier);
    EXPECT_EQ(m_grid.zoom(), before);
    QWheelEvent notch(
        {}, {}, {}, QPoint(0, 120), Qt::NoButton, Qt::ControlModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(m_grid.viewport(), &notch);
    EXPECT_EQ(m_grid.zoom(), before + PhotoGrid::kZoomStep);
    EXPECT_EQ(zoomed.size(), 3);
    m_grid.setZoom(1);
    EXPECT_EQ(m_grid.zoom(), PhotoGrid::kSmallestZoom);
    m_grid.setZoom(5000);
    EXPECT_EQ(m_grid.zoom(), PhotoGrid::kLargestZoom);
    EXPECT_EQ(zoomed.last().first().toInt(), PhotoGrid::kLargestZoom);
}

TEST_F(PhotoGridTest, zoomingAndResizingKeepTheCurrentPhotoInSight)
{
    m_model.setPhotos(photos(2000));
    m_grid.setCurrentIndex(m_filter.index(1000, 0));
    const auto inSight = [this] {
        return m_grid.visualRect(m_grid.currentIndex()).intersects(m_grid.viewport()->rect());
    };
    ASSERT_TRUE(inSight());
    m_grid.setZoom(PhotoGrid::kSmallestZoom);
    EXPECT_TRUE(inSight());
    m_grid.setZoom(PhotoGrid::kLargestZoom);
    EXPECT_TRUE(inSight());
    m_grid.resize(360, 420);
    QCoreApplication::processEvents();
    EXPECT_TRUE(inSight());
}

TEST_F(PhotoGridTest, aRubberBandSelectsWhatItCovers)
{
    m_model.setPhotos(photos(100));
    QCoreApplication::processEvents();
    const int line = columns();
    QWidget* const surface = m_grid.viewport();
    const QPoint from = m_grid.visualRect(m_filter.index(0, 0)).topLeft() + QPoint(3, 3);
    const QPoint to = m_grid.visualRect(m_filter.index(line + 1, 0)).center();
    QTest::mousePress(surface, Qt::LeftButton, Qt::NoModifier, from);
    QTest::mouseMove(surface, (from + to) / 2);
    QTest::mouseMove(surface, to);
    QTest::mouseRelease(surface, Qt::LeftButton, Qt::NoModifier, to);
    EXPECT_EQ(m_grid.selectedPhotos(), (QList<qint64>{1, 2, line + 1, line + 2}));
}

TEST_F(PhotoGridTest, theWheelMovesLessThanALineAStep)
{
    m_model.setPhotos(photos(1000));
    QCoreApplication::processEvents();
    EXPECT_LT(m_grid.verticalScrollBar()->singleStep(), m_grid.gridSize().height());
    EXPECT_GT(m_grid.verticalScrollBar()->singleStep(), 0);
    m_grid.verticalScrollBar()->setValue(17);
    EXPECT_EQ(m_grid.visualRect(m_filter.index(0, 0)).top(), -17);
}

TEST_F(PhotoGridTest, withoutPhotosItSaysSo)
{
    const QImage empty = m_grid.viewport()->grab().toImage();
    const QColor base = m_grid.palette().color(QPalette::Base);
    bool written = false;
    for (int x = 0; x < empty.width() && !written; ++x) {
        for (int y = 0; y < empty.height() && !written; ++y) {
            written = empty.pixelColor(x, y) != base;
        }
    }
    EXPECT_TRUE(written);
}

} // namespace
