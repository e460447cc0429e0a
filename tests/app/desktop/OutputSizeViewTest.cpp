#include "OutputSizeView.h"

#include "Matrix.h"

#include <QRadioButton>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class OutputSizeViewTest : public testing::Test
{
protected:
    OutputSizeViewTest()
    {
        QObject::connect(&m_matrix, &Matrix::action, &m_matrix, [this](Matrix* sender) {
            m_actions += sender->selectedIndex();
        });
        m_view.show();
    }

    QRadioButton& cell(int index)
    {
        return *m_view.findChild<QRadioButton*>(u"outputSize%1"_s.arg(index));
    }

    void click(int index)
    {
        QTest::mouseClick(
            &cell(index), Qt::LeftButton, Qt::NoModifier, QPoint(8, cell(index).height() / 2));
    }

    /// The cells shown as selected.
    QList<int> shown()
    {
        QList<int> checked;
        for (int index = 0; index < m_matrix.count(); ++index) {
            if (cell(index).isChecked()) {
                checked += index;
            }
        }
        return checked;
    }

    Matrix m_matrix{{1, 2, 3, 4, 0}};
    OutputSizeView m_view{m_matrix};
    QList<int> m_actions;
};

TEST_F(OutputSizeViewTest, showsTheSelectedCellAndSendsNothingForIt)
{
    EXPECT_EQ(shown(), QList<int>{});
    for (const int index : {0, 4, 2}) {
        m_matrix.setSelectedIndex(index);
        EXPECT_EQ(shown(), QList<int>{index});
    }
    m_matrix.setSelectedIndex(-1);
    EXPECT_EQ(shown(), QList<int>{});
    m_matrix.setSelectedIndex(1);
    EXPECT_EQ(shown(), QList<int>{1});
    EXPECT_TRUE(m_actions.isEmpty());
}

TEST_F(OutputSizeViewTest, everyClickActsAlsoOneOnTheSelectedCell)
{
    for (int index = 0; index < m_matrix.count(); ++index) {
        click(index);
        click(index);
    }
    EXPECT_EQ(m_actions, (QList<int>{0, 0, 1, 1, 2, 2, 3, 3, 4, 4}));
}

TEST_F(OutputSizeViewTest, theKeyboardReachesEveryCell)
{
    m_matrix.setSelectedIndex(0);
    m_view.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&m_view));
    cell(0).setFocus();
    QTest::keyClick(&cell(0), Qt::Key_Space);
    EXPECT_EQ(m_actions, QList<int>{0});
    QTest::keyClick(&cell(0), Qt::Key_Down);
    EXPECT_TRUE(cell(1).hasFocus());
    EXPECT_EQ(m_actions, (QList<int>{0, 1}));
    EXPECT_EQ(shown(), QList<int>{1});
}

TEST_F(OutputSizeViewTest, theMatrixHasTheLastWord)
{
    QObject::connect(
        &m_matrix, &Matrix::action, &m_matrix, [this] { m_matrix.setSelectedIndex(0); });
    click(3);
    EXPECT_EQ(shown(), QList<int>{0});
}

} // namespace
