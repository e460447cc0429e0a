#include "LibraryView.h"

#include "LibraryWindowFixture.h"
#include "PhotoViewer.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>

#include <algorithm>

using namespace Qt::StringLiterals;

class LibraryViewTest : public LibraryWindowFixture
{
protected:
    void chooseOrder(PhotoFilter::Order order)
    {
        for (QAction* const action : m_window.actions().sort->actions()) {
            if (action->data().toInt() == static_cast<int>(order)) {
                action->trigger();
            }
        }
    }

    /// Whether a photo is shown large.
    [[nodiscard]] static bool isOneShownLarge()
    {
        const QWidgetList windows = QApplication::topLevelWidgets();
        return std::ranges::any_of(windows, [](const QWidget* window) {
            return qobject_cast<const PhotoViewer*>(window) != nullptr && window->isVisible();
        });
    }
};

TEST_F(LibraryViewTest, photosAreSortedAsTheMenuSays)
{
    open(library());
    QList<PhotoFacts> photos = m_session.contents().photos;
    std::ranges::sort(photos, {}, &PhotoFacts::name); // the title
    QStringList byName;
    for (const PhotoFacts& photo : photos) {
        byName += photo.fileName;
    }
    ASSERT_NE(names(), byName);
    chooseOrder(PhotoFilter::Order::Name);
    EXPECT_EQ(names(), byName);
    m_window.actions().descending->trigger();
    std::ranges::reverse(byName);
    EXPECT_EQ(names(), byName);
}

TEST_F(LibraryViewTest, whatIsSelectedIsTheSessionsSelectionButForPhotosInTheTrash)
{
    open(library());
    const QList<qint64> ids{m_session.contents().photos.at(0).id};
    grid().selectPhotos(ids);
    EXPECT_TRUE(waitUntil([this, &ids] { return m_session.selection() == ids; }));
    m_window.actions().showTrash->trigger();
    EXPECT_EQ(m_session.selection(), QList<qint64>());
}

TEST_F(LibraryViewTest, aPhotoShownLargeIsClosedWhenAnotherLibraryIsShown)
{
    const QString other = m_folder.filePath(u"Other.photolibrary"_s);
    copyLibrary(library(), other);
    open(library());
    grid().selectPhotos({m_session.contents().photos.at(0).id});
    ASSERT_TRUE(waitUntil([this] { return m_window.actions().showLarge->isEnabled(); }));
    m_window.actions().showLarge->trigger();
    ASSERT_TRUE(isOneShownLarge());
    m_window.actions().reload->trigger();
    ASSERT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    EXPECT_TRUE(isOneShownLarge()) << "the same library";
    open(other);
    EXPECT_FALSE(isOneShownLarge()) << "its ids name other photos there";
}
