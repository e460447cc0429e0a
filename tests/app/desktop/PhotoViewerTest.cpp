#include "PhotoViewer.h"

#include "FactsBuilder.h"
#include "PhotoModel.h"
#include "PictureFolder.h"

#include <QApplication>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class PhotoViewerTest : public testing::Test
{
protected:
    PhotoViewerTest()
    {
        m_filter.setSourceModel(&m_model);
        m_viewer.resize(500, 400);
    }

    /// Four photos: with a preview, with a plain master, RAW without preview, with a missing one.
    void makePhotos()
    {
        QList<PhotoFacts> photos;
        for (int id = 1; id <= 4; ++id) {
            photos += FactsBuilder::photo(id, u"IMG_%1.jpg"_s.arg(id), 1, u"Event"_s);
        }
        photos[0].previewPath = m_folder.jpeg(u"Previews/1.jpg"_s, QSize(900, 300), Qt::red);
        photos[1].originalPath = m_folder.jpeg(u"Masters/2.jpg"_s, QSize(90, 60), Qt::green, 6);
        photos[2].raw = true;
        photos[2].originalPath = m_folder.bytes(u"Masters/3.cr2"_s, "sensor data");
        photos[3].originalPath = m_folder.path(u"Masters/4.jpg"_s);
        m_model.setPhotos(photos);
    }

    void open(int row)
    {
        m_viewer.showPhoto(m_filter.index(row, 0));
        m_viewer.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_viewer));
    }

    [[nodiscard]] QLabel& picture() const { return *m_viewer.findChild<QLabel*>(u"picture"_s); }

    [[nodiscard]] bool shows(QSize size) const
    {
        return QTest::qWaitFor([&] { return picture().pixmap().size() == size; });
    }

    [[nodiscard]] bool says(const QString& text) const
    {
        return QTest::qWaitFor([&] { return picture().text().contains(text); });
    }

    PictureFolder m_folder;
    PhotoModel m_model;
    PhotoFilter m_filter;
    PhotoViewer m_viewer{m_filter};
};

TEST_F(PhotoViewerTest, thePreviewIsShownAsLargeAsItFits)
{
    makePhotos();
    open(0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !picture().pixmap().isNull(); }));
    const int width = picture().width();
    EXPECT_TRUE(shows(QSize(width, qRound(width / 3.0))));
    m_viewer.resize(800, 400);
    EXPECT_TRUE(QTest::qWaitFor([&] { return picture().pixmap().width() == picture().width(); }));
}

TEST_F(PhotoViewerTest, withoutAPreviewThePlainMasterIsShownUpright)
{
    makePhotos();
    open(1);
    EXPECT_TRUE(shows(QSize(60, 90)));
}

TEST_F(PhotoViewerTest, aPreviewThatIsGoneGivesWayToAPlainMaster)
{
    makePhotos();
    QList<PhotoFacts> photos = m_model.photos();
    photos[1].previewPath = u"/nowhere/preview.jpg"_s;
    m_model.setPhotos(photos);
    open(1);
    EXPECT_TRUE(shows(QSize(60, 90)));
}

TEST_F(PhotoViewerTest, whatCannotBeShownIsSaidWithItsPath)
{
    makePhotos();
    open(3);
    EXPECT_TRUE(says(m_folder.path(u"Masters/4.jpg"_s)));
    EXPECT_TRUE(picture().text().contains(u"missing"_s));
    m_folder.bytes(u"Masters/4.jpg"_s, "no picture");
    open(3);
    EXPECT_TRUE(says(u"cannot be shown"_s));
    EXPECT_TRUE(says(m_folder.path(u"Masters/4.jpg"_s)));
    open(2);
    EXPECT_TRUE(says(m_folder.path(u"Masters/3.cr2"_s)));
    EXPECT_TRUE(picture().text().contains(u"no preview"_s));
}

TEST_F(PhotoViewerTest, aMovieAndAPhotoWithoutAnyFileAreCalledSo)
{
    makePhotos();
    QList<PhotoFacts> photos = m_model.photos();
    photos[0].previewPath.clear();
    photos[0].movie = true;
    photos[1].originalPath.clear();
    m_model.setPhotos(photos);
    open(0);
    EXPECT_TRUE(says(u"movie"_s));
    open(1);
    EXPECT_TRUE(says(u"no file"_s));
}

TEST_F(PhotoViewerTest, arrowKeysAndButtonsGoToTheNeighbours)
{
    makePhotos();
    open(0);
    const QSignalSpy shown(&m_viewer, &PhotoViewer::photoShown);
    QTest::keyClick(&m_viewer, Qt::Key_Right);
    EXPECT_EQ(m_viewer.photo().row(), 1);
    EXPECT_EQ(m_viewer.windowTitle(), u"IMG_2.jpg"_s);
    EXPECT_TRUE(shows(QSize(60, 90)));
    QTest::keyClick(&m_viewer, Qt::Key_Left);
    QTest::keyClick(&m_viewer, Qt::Key_Left);
    EXPECT_EQ(m_viewer.photo().row(), 0);
    EXPECT_EQ(shown.size(), 2);
    auto* const next = m_viewer.findChild<QToolButton*>(u"nextButton"_s);
    auto* const previous = m_viewer.findChild<QToolButton*>(u"previousButton"_s);
    EXPECT_FALSE(previous->isEnabled());
    QTest::mouseClick(next, Qt::LeftButton);
    QTest::mouseClick(next, Qt::LeftButton);
    QTest::mouseClick(next, Qt::LeftButton);
    EXPECT_EQ(m_viewer.photo().row(), 3);
    EXPECT_FALSE(next->isEnabled());
    EXPECT_TRUE(m_viewer.findChild<QLabel*>(u"caption"_s)->text().contains(u"4 of 4"_s));
}

TEST_F(PhotoViewerTest, onlyThePhotoGoneToLastIsShown)
{
    makePhotos();
    open(0);
    QTest::keyClick(&m_viewer, Qt::Key_Right);
    QTest::keyClick(&m_viewer, Qt::Key_Right);
    QTest::keyClick(&m_viewer, Qt::Key_Left);
    EXPECT_TRUE(shows(QSize(60, 90)));
    QTest::qWait(50);
    EXPECT_EQ(picture().pixmap().size(), QSize(60, 90));
}

TEST_F(PhotoViewerTest, escapeAndSpaceClose)
{
    makePhotos();
    for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Space}) {
        open(0);
        QTest::keyClick(&m_viewer, key);
        EXPECT_FALSE(m_viewer.isVisible());
    }
}

TEST_F(PhotoViewerTest, itClosesWhenItsPhotoIsNoLongerToBeSeen)
{
    makePhotos();
    open(1);
    m_filter.setSearchText(u"IMG_2"_s);
    EXPECT_TRUE(m_viewer.isVisible());
    EXPECT_FALSE(m_viewer.findChild<QToolButton*>(u"nextButton"_s)->isEnabled());
    m_filter.setSearchText(u"IMG_3"_s);
    EXPECT_FALSE(m_viewer.isVisible());
}

TEST_F(PhotoViewerTest, itStaysOnItsPhotoWhenTheListIsReadAnew)
{
    makePhotos();
    open(1);
    ASSERT_TRUE(shows(QSize(60, 90)));
    QList<PhotoFacts> photos = m_model.photos();
    photos.prepend(FactsBuilder::photo(9, u"IMG_9.jpg"_s, 1, u"Event"_s));
    photos[2].name = u"The lake"_s;
    m_model.setPhotos(photos);
    EXPECT_TRUE(m_viewer.isVisible());
    EXPECT_EQ(m_viewer.photo().row(), 2);
    EXPECT_EQ(m_viewer.windowTitle(), u"The lake"_s);
    EXPECT_TRUE(m_viewer.findChild<QLabel*>(u"caption"_s)->text().contains(u"3 of 5"_s));
    EXPECT_EQ(picture().pixmap().size(), QSize(60, 90)) << "the picture stays meanwhile";
    QTest::keyClick(&m_viewer, Qt::Key_Left);
    EXPECT_EQ(m_viewer.windowTitle(), u"IMG_1.jpg"_s);
}

TEST_F(PhotoViewerTest, itShowsTheFilesThatItsPhotoHasWhenTheListIsReadAnew)
{
    makePhotos();
    open(1);
    ASSERT_TRUE(shows(QSize(60, 90)));
    QList<PhotoFacts> photos = m_model.photos();
    photos[1].previewPath = m_folder.jpeg(u"Previews/2.jpg"_s, QSize(80, 40), Qt::blue);
    m_model.setPhotos(photos);
    EXPECT_TRUE(shows(QSize(80, 40)));
}

TEST_F(PhotoViewerTest, itClosesWhenItsPhotoIsGoneFromTheListThatIsReadAnew)
{
    makePhotos();
    open(1);
    QList<PhotoFacts> photos = m_model.photos();
    photos.removeAt(1);
    m_model.setPhotos(photos);
    EXPECT_FALSE(m_viewer.isVisible());
    EXPECT_FALSE(m_viewer.photo().isValid());
}

TEST_F(PhotoViewerTest, itsGroundIsDarkAndNeutralInAnyPalette)
{
    for (const QColor& window : {QColor(239, 239, 239), QColor(45, 48, 60)}) {
        QApplication::setPalette(QPalette(window));
        const PhotoViewer viewer(m_filter);
        const QColor ground = viewer.palette().color(QPalette::Window);
        EXPECT_LT(ground.lightness(), 60);
        EXPECT_EQ(ground.hsvSaturation(), 0);
        EXPECT_GT(viewer.palette().color(QPalette::WindowText).lightness(), 150);
    }
    QApplication::setPalette(QPalette());
}

} // namespace
