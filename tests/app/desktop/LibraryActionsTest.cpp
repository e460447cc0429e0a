#include "LibraryActions.h"

#include "Mnemonics.h"
#include "PhotoFilter.h"

#include <QActionGroup>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QSet>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class LibraryActionsTest : public testing::Test
{
protected:
    /// Every menu of the bar and below.
    [[nodiscard]] QList<QMenu*> menus() const
    {
        QList<QMenu*> found = m_window.menuBar()->findChildren<QMenu*>();
        found.removeIf([](const QMenu* menu) { return menu->actions().isEmpty(); });
        return found;
    }

    QMainWindow m_window;
    LibraryActions m_actions{m_window};
};

TEST_F(LibraryActionsTest, noTwoEntriesOfAMenuShareAMnemonic)
{
    QStringList bar;
    for (const QAction* const action : m_window.menuBar()->actions()) {
        bar += mnemonicIn(action->text());
    }
    EXPECT_EQ(bar, (QStringList{u"f"_s, u"e"_s, u"v"_s, u"l"_s, u"w"_s, u"h"_s}));
    ASSERT_EQ(menus().size(), 7);
    for (const QMenu* const menu : menus()) {
        QSet<QString> letters;
        for (const QAction* const action : menu->actions()) {
            const QString letter = mnemonicIn(action->text());
            const bool isCommand = !action->isSeparator() && action != m_actions.whyNoCare;
            EXPECT_EQ(!letter.isEmpty(), isCommand) << action->text().toStdString();
            EXPECT_FALSE(letters.contains(letter) && !letter.isEmpty())
                << menu->title().toStdString() << ": " << letter.toStdString();
            letters += letter;
        }
    }
}

TEST_F(LibraryActionsTest, noTwoActionsShareAShortcut)
{
    QSet<QString> keys;
    for (const QMenu* const menu : menus()) {
        for (const QAction* const action : menu->actions()) {
            const QList<QKeySequence> shortcuts = action->shortcuts();
            for (const QKeySequence& shortcut : shortcuts) {
                EXPECT_FALSE(keys.contains(shortcut.toString())) << action->text().toStdString();
                keys += shortcut.toString();
            }
        }
    }
    EXPECT_GE(keys.size(), 12);
}

TEST_F(LibraryActionsTest, oneOrderIsChosenAtATime)
{
    using Order = PhotoFilter::Order;
    const auto order = [this] {
        return static_cast<Order>(m_actions.sort->checkedAction()->data().toInt());
    };
    EXPECT_EQ(order(), Order::Library);
    for (QAction* const action : m_actions.sort->actions()) {
        action->trigger();
        EXPECT_EQ(m_actions.sort->checkedAction(), action);
    }
    EXPECT_EQ(order(), Order::Name);
}

} // namespace
