#include "PhotoDelegate.h"

#include "FactsBuilder.h"
#include "PhotoFilter.h"
#include "PhotoModel.h"
#include "PictureFolder.h"
#include "ThumbnailStore.h"

#include <QApplication>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

using namespace Qt::StringLiterals;

namespace
{

/// A cell painted onto the palette's ground.
class PhotoDelegateTest : public testing::Test
{
protected:
    PhotoDelegateTest()
    {
        m_filter.setSourceModel(&m_model);
        m_photo = FactsBuilder::photo(1, u"IMG_1.jpg"_s, 1, u"Event"_s);
        m_photo.width = 400;
        m_photo.height = 400;
        m_delegate.setEdge(120);
        m_option.font = QApplication::font();
        m_option.palette = QApplication::palette();
        m_option.state = QStyle::State_Enabled | QStyle::State_Active;
    }

    QImage painted(double ratio = 1.0)
    {
        m_model.setPhotos({m_photo});
        const QModelIndex index = m_filter.index(0, 0);
        const QSize size = m_delegate.sizeHint(m_option, index);
        QImage image(size * ratio, QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        image.fill(m_option.palette.color(QPalette::Base));
        m_option.rect = QRect(QPoint(), size);
        QPainter painter(&image);
        m_delegate.paint(&painter, m_option, index);
        return image;
    }

    QImage paintedWith(const std::function<void(PhotoFacts&)>& change)
    {
        const PhotoFacts before = m_photo;
        change(m_photo);
        QImage image = painted();
        m_photo = before;
        return image;
    }

    /// Pixels of about that colour.
    static int count(const QImage& image, const QColor& color)
    {
        constexpr int kTolerance = 12;
        int pixels = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor pixel = image.pixelColor(x, y);
                if (std::abs(pixel.red() - color.red()) <= kTolerance &&
                    std::abs(pixel.green() - color.green()) <= kTolerance &&
                    std::abs(pixel.blue() - color.blue()) <= kTolerance) {
                    ++pixels;
                }
            }
        }
        return pixels;
    }

    void giveThumbnail(QSize size, const QColor& color)
    {
        m_photo.thumbnailPath = m_folder.jpeg(u"Thumbnails/1.jpg"_s, size, color);
        const QSignalSpy ready(&m_thumbnails, &ThumbnailStore::thumbnailReady);
        m_thumbnails.setWanted({m_photo.thumbnailPath});
        ASSERT_TRUE(QTest::qWaitFor([&ready] { return !ready.isEmpty(); }));
    }

    static QPalette darkPalette()
    {
        QPalette palette(QColor(50, 50, 54));
        palette.setColor(QPalette::Base, QColor(30, 30, 32));
        palette.setColor(QPalette::Text, QColor(235, 235, 235));
        return palette;
    }

    PictureFolder m_folder;
    PhotoModel m_model;
    PhotoFilter m_filter;
    ThumbnailStore m_thumbnails;
    PhotoDelegate m_delegate{m_thumbnails};
    QStyleOptionViewItem m_option;
    PhotoFacts m_photo;
};

TEST_F(PhotoDelegateTest, theSizeOfACellFollowsZoomAndFont)
{
    const QSize small = m_delegate.sizeHint(m_option, {});
    m_delegate.setEdge(200);
    const QSize large = m_delegate.sizeHint(m_option, {});
    EXPECT_EQ(large - small, QSize(80, 80));
    m_option.font.setPointSizeF(m_option.font.pointSizeF() * 2);
    EXPECT_GT(m_delegate.sizeHint(m_option, {}).height(), large.height());
    m_delegate.setMinimumWidth(500);
    EXPECT_EQ(m_delegate.sizeHint(m_option, {}).width(), 500);
}

TEST_F(PhotoDelegateTest, theThumbnailIsFittedWithItsAspectKept)
{
    const QColor red(210, 20, 20);
    giveThumbnail(QSize(240, 120), red);
    EXPECT_NEAR(count(painted(), red), 120 * 60, 20);
    m_photo.raw = true;
    EXPECT_LT(count(painted(), red), 120 * 60 - 100) << "a badge lies upon it";
}

TEST_F(PhotoDelegateTest, aSmallPictureIsNotBlownUp)
{
    const QColor red(210, 20, 20);
    giveThumbnail(QSize(40, 30), red);
    EXPECT_NEAR(count(painted(), red), 40 * 30, 20);
}

TEST_F(PhotoDelegateTest, atTwicePixelsAPictureHasTwiceThePixels)
{
    const QColor red(210, 20, 20);
    giveThumbnail(QSize(360, 360), red);
    EXPECT_NEAR(count(painted(2.0), red), 240 * 240, 40);
}

TEST_F(PhotoDelegateTest, aPlaceholderStandsForAPictureThatLoadsAndWordsForNone)
{
    m_photo.thumbnailPath = u"/nowhere/1.jpg"_s;
    const QImage loading = painted();
    const QColor ground = m_option.palette.color(QPalette::Base);
    const QPoint corner(loading.width() / 2 - 50, loading.width() / 2 - 50);
    EXPECT_NE(loading.pixelColor(corner), ground);
    const QSignalSpy ready(&m_thumbnails, &ThumbnailStore::thumbnailReady);
    m_thumbnails.setWanted({m_photo.thumbnailPath});
    ASSERT_TRUE(QTest::qWaitFor([&ready] { return !ready.isEmpty(); }));
    EXPECT_NE(painted(), loading);
}

TEST_F(PhotoDelegateTest, eachMarkIsSeen)
{
    const QList<QImage> images{
        painted(),
        paintedWith([](PhotoFacts& photo) { photo.raw = true; }),
        paintedWith([](PhotoFacts& photo) { photo.missing = true; }),
        paintedWith([](PhotoFacts& photo) { photo.keywords << u"Corvane Original"_s; }),
        paintedWith([](PhotoFacts& photo) { photo.keywords << u"Corvane Processed"_s; }),
        paintedWith([](PhotoFacts& photo) { photo.rating = 1; }),
        paintedWith([](PhotoFacts& photo) { photo.rating = 5; }),
        paintedWith([](PhotoFacts& photo) { photo.bytes = 123456789; }),
        paintedWith([](PhotoFacts& photo) { photo.name = u"A title"_s; }),
    };
    for (qsizetype i = 0; i < images.size(); ++i) {
        for (qsizetype j = i + 1; j < images.size(); ++j) {
            EXPECT_NE(images.at(i), images.at(j)) << i << " and " << j;
        }
    }
}

TEST_F(PhotoDelegateTest, whatDoesNotFitIsCutWithinTheCell)
{
    m_photo.name = u"A very long title\nwith a line end "_s.repeated(20);
    m_photo.keywords = QStringList{u"Corvane Original"_s, u"Corvane Processed"_s};
    m_photo.raw = true;
    m_photo.missing = true;
    m_photo.rating = 5;
    m_photo.width = 10;
    m_delegate.setEdge(96);
    const QImage image = painted();
    const QColor ground = m_option.palette.color(QPalette::Base);
    for (int y = 0; y < image.height(); ++y) {
        EXPECT_EQ(image.pixelColor(0, y), ground);
        EXPECT_EQ(image.pixelColor(image.width() - 1, y), ground);
    }
}

TEST_F(PhotoDelegateTest, selectionAndFocusAreSeenInThePalettesColours)
{
    for (const QPalette& palette : {QApplication::palette(), darkPalette()}) {
        m_option.palette = palette;
        m_option.state = QStyle::State_Enabled | QStyle::State_Active;
        const QColor highlight = palette.color(QPalette::Active, QPalette::Highlight);
        const QImage plain = painted();
        EXPECT_EQ(count(plain, highlight), 0);
        m_option.state |= QStyle::State_Selected;
        const QImage selected = painted();
        EXPECT_GT(count(selected, highlight), selected.width() * selected.height() / 5);
        m_option.state |= QStyle::State_HasFocus;
        EXPECT_NE(painted(), selected);
        m_option.state &= ~QStyle::State_Selected;
        EXPECT_NE(painted(), plain);
    }
}

TEST_F(PhotoDelegateTest, textIsReadableOnADarkGround)
{
    m_option.palette = darkPalette();
    EXPECT_GT(count(painted(), m_option.palette.color(QPalette::Text)), 20);
}

} // namespace
