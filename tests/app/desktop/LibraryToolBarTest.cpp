#include "LibraryToolBar.h"

#include "LibraryWindowFixture.h"

#include <QAction>
#include <QLineEdit>
#include <QSlider>

using namespace Qt::StringLiterals;

class LibraryToolBarTest : public LibraryWindowFixture
{
};

TEST_F(LibraryToolBarTest, aSearchShowsThePhotosWithItsWordsAndEmptiedAllAgain)
{
    open(library());
    const QString wanted = names().at(1);
    auto& search = part<QLineEdit>(u"search"_s);
    QTest::keyClicks(&search, wanted);
    EXPECT_EQ(names(), QStringList{wanted});
    EXPECT_TRUE(figures().contains(u" of 1,"_s) ||
                waitUntil([this] { return figures().contains(u" of 1,"_s); }))
        << figures().toStdString();
    search.clear();
    EXPECT_EQ(names().size(), 5);
}

TEST_F(LibraryToolBarTest, theSliderAndTheMenuZoomTheSamePictures)
{
    open(library());
    auto& slider = part<QSlider>(u"zoom"_s);
    const int before = grid().zoom();
    EXPECT_EQ(slider.value(), before);
    QTest::keyClick(&slider, Qt::Key_End);
    EXPECT_EQ(grid().zoom(), PhotoGrid::kLargestZoom);
    m_window.actions().zoomOut->trigger();
    EXPECT_LT(grid().zoom(), PhotoGrid::kLargestZoom);
    EXPECT_EQ(slider.value(), grid().zoom());
}
