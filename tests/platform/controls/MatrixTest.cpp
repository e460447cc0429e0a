#include "Matrix.h"

#include <gtest/gtest.h>

namespace
{

class MatrixTest : public testing::Test
{
protected:
    MatrixTest()
    {
        QObject::connect(&m_matrix, &Matrix::selectedIndexChanged, [this](int index) {
            m_events.append(index);
        });
        QObject::connect(&m_matrix, &Matrix::action, [this](Matrix* sender) {
            EXPECT_EQ(sender, &m_matrix);
            m_events.append(kAction + sender->selectedTag());
        });
    }

    static constexpr int kAction = 1000;
    Matrix m_matrix{{1, 2, 3, 4, 0}};
    QList<int> m_events;
};

TEST_F(MatrixTest, noCellIsSelectedAtFirst)
{
    EXPECT_EQ(m_matrix.selectedIndex(), -1);
    EXPECT_EQ(m_matrix.selectedTag(), 0);
    EXPECT_EQ(m_matrix.count(), 5);
}

TEST_F(MatrixTest, showingACellAsSelectedSendsNoAction)
{
    m_matrix.setSelectedIndex(2);
    m_matrix.setSelectedIndex(2);
    EXPECT_EQ(m_matrix.selectedTag(), 3);
    EXPECT_EQ(m_events, QList<int>{2});
}

TEST_F(MatrixTest, aClickSelectsAndThenSendsTheActionAlsoOnTheSelectedCell)
{
    m_matrix.click(4);
    m_matrix.click(4);
    EXPECT_EQ(m_events, (QList<int>{4, kAction, kAction}));
}

TEST_F(MatrixTest, whatIsNoCellIsNotSelectedAndNotClicked)
{
    m_matrix.setSelectedIndex(1);
    m_events.clear();
    m_matrix.click(5);
    m_matrix.click(-1);
    EXPECT_TRUE(m_events.isEmpty());
    EXPECT_EQ(m_matrix.selectedIndex(), 1);
    m_matrix.setSelectedIndex(7);
    EXPECT_EQ(m_matrix.selectedIndex(), -1);
}

} // namespace
