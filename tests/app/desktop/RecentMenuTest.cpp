#include "RecentMenu.h"

#include "LibraryWindowFixture.h"

#include <QAction>
#include <QMenu>

using namespace Qt::StringLiterals;

class RecentMenuTest : public LibraryWindowFixture
{
};

TEST_F(RecentMenuTest, librariesOpenedBeforeAreInTheMenuTheLastOneFirst)
{
    const QString other = m_folder.filePath(u"A & B.photolibrary"_s);
    copyLibrary(library(), other);
    open(library());
    open(other);
    QMenu* const menu = m_window.actions().openRecent;
    ASSERT_EQ(menu->actions().size(), 4) << "two libraries, a line, and to clear the menu";
    EXPECT_TRUE(menu->actions().at(0)->text().startsWith(u"A && B.photolibrary in "_s));
    menu->actions().at(1)->trigger();
    ASSERT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    EXPECT_EQ(m_session.contents().path, library());
    menu->actions().last()->trigger();
    EXPECT_FALSE(menu->isEnabled());
    EXPECT_TRUE(m_recent.paths().isEmpty());
}
