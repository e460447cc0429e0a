#include "FixedSizeSheet.h"

#include "DesktopFixture.h"

#include <QSpinBox>

using namespace Qt::StringLiterals;

namespace
{

class FixedSizeSheetTest : public DesktopFixture
{
protected:
    /// Opens the sheet with these locks stored, and 1600 and 1200 pixels.
    void openSheet(bool longLocked, bool shortLocked)
    {
        m_defaults.setBool(u"LongLocked"_s, longLocked);
        m_defaults.setBool(u"ShortLocked"_s, shortLocked);
        m_defaults.setInteger(u"LongSide"_s, 1600);
        m_defaults.setInteger(u"ShortSide"_s, 1200);
        showWindow();
        click(u"outputSize4"_s);
        ASSERT_TRUE(sheet().isVisible());
        ASSERT_TRUE(QTest::qWaitForWindowActive(&sheet()));
    }

    FixedSizeSheet& sheet() { return m_window->fixedSizeSheet(); }

    QSpinBox& longField() { return child<QSpinBox>(u"fixedLengthTextField"_s); }

    QSpinBox& shortField() { return child<QSpinBox>(u"fixedWidthTextField"_s); }

    QAbstractButton& longLock() { return button(u"longLocked"_s); }

    QAbstractButton& shortLock() { return button(u"shortLocked"_s); }

    /// Types over what the field holds, and does not leave it.
    static void type(QSpinBox& field, const QString& digits)
    {
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, digits);
    }

    [[nodiscard]] int longSide() const { return m_controller->longSize().toInt(); }

    [[nodiscard]] int shortSide() const { return m_controller->shortSize().toInt(); }
};

TEST_F(FixedSizeSheetTest, theFixedSizeCellOpensTheSheetAlsoWhenItIsSelected)
{
    showWindow();
    for (int time = 0; time < 2; ++time) {
        click(u"outputSize4"_s);
        EXPECT_TRUE(sheet().isVisible());
        EXPECT_EQ(sheet().windowModality(), Qt::WindowModal);
        EXPECT_EQ(sheet().parentWidget(), m_window.get());
        EXPECT_TRUE(m_controller->fixedSize());
        EXPECT_EQ(m_defaults.integerValue(u"JpegOutputSize"_s), 4);
        click(u"dismissFixedSizePanel"_s);
        EXPECT_FALSE(sheet().isVisible());
        EXPECT_TRUE(m_controller->fixedSize());
    }
    click(u"outputSize0"_s);
    EXPECT_FALSE(m_controller->fixedSize());
    EXPECT_FALSE(sheet().isVisible());
}

TEST_F(FixedSizeSheetTest, showsSidesAndLocks)
{
    openSheet(true, false);
    EXPECT_EQ(longField().value(), 1600);
    EXPECT_TRUE(longField().isEnabled());
    EXPECT_TRUE(longLock().isChecked());
    EXPECT_EQ(shortField().value(), 0);
    EXPECT_EQ(shortField().text(), u"free"_s);
    EXPECT_FALSE(shortField().isEnabled());
    EXPECT_FALSE(shortLock().isChecked());
    EXPECT_EQ(m_defaults.integerValue(u"ShortSide"_s), 1200);
}

TEST_F(FixedSizeSheetTest, followsTheController)
{
    openSheet(true, true);
    m_controller->setLongSize(2000);
    m_controller->setShortSize(u"900"_s);
    EXPECT_EQ(longField().value(), 2000);
    EXPECT_EQ(shortField().value(), 900);
    m_controller->setLongLocked(false);
    EXPECT_FALSE(longLock().isChecked());
    EXPECT_FALSE(longField().isEnabled());
    EXPECT_EQ(longField().text(), u"free"_s);
}

TEST_F(FixedSizeSheetTest, theNumberShownForWhatCannotBeShownMayBeTyped)
{
    openSheet(true, true);
    m_controller->setLongSize(-5);
    m_controller->setShortSize(2000000);
    type(longField(), u"0"_s);
    type(shortField(), u"100000"_s);
    click(u"dismissFixedSizePanel"_s);
    EXPECT_EQ(longSide(), 0);
    EXPECT_EQ(shortSide(), 100000);
}

TEST_F(FixedSizeSheetTest, whatCannotBeShownIsKept)
{
    openSheet(true, true);
    m_controller->setLongSize(-5);
    m_controller->setShortSize(2000000);
    EXPECT_EQ(longField().value(), 0);
    EXPECT_EQ(shortField().value(), 100000);
    click(u"dismissFixedSizePanel"_s);
    EXPECT_EQ(longSide(), -5);
    EXPECT_EQ(shortSide(), 2000000);
}

TEST_F(FixedSizeSheetTest, freeingASideLocksTheOtherAndBack)
{
    openSheet(true, false);
    click(longLock());
    EXPECT_FALSE(longLock().isChecked());
    EXPECT_TRUE(shortLock().isChecked());
    EXPECT_EQ(longField().text(), u"free"_s);
    EXPECT_EQ(shortField().value(), 1200);
    EXPECT_FALSE(m_defaults.boolValue(u"LongLocked"_s));
    EXPECT_TRUE(m_defaults.boolValue(u"ShortLocked"_s));
    click(shortLock());
    EXPECT_TRUE(longLock().isChecked());
    EXPECT_FALSE(shortLock().isChecked());
    EXPECT_EQ(longField().value(), 1600);
    EXPECT_EQ(shortField().text(), u"free"_s);
}

TEST_F(FixedSizeSheetTest, bothSidesMayBeLocked)
{
    openSheet(true, false);
    click(shortLock());
    EXPECT_TRUE(m_controller->longLocked());
    EXPECT_TRUE(m_controller->shortLocked());
    EXPECT_EQ(longField().value(), 1600);
    EXPECT_EQ(shortField().value(), 1200);
    EXPECT_TRUE(forecast().contains(u"Open a library"_s));
}

TEST_F(FixedSizeSheetTest, aLockedSideOfZeroIsNotCalledFree)
{
    openSheet(true, false);
    type(longField(), u"0"_s);
    QTest::keyClick(&longField(), Qt::Key_Tab);
    EXPECT_FALSE(longField().hasFocus());
    EXPECT_EQ(longSide(), 0);
    EXPECT_EQ(longField().text(), u"0 pixels"_s);
    EXPECT_EQ(m_defaults.integerValue(u"LongSide"_s), 1600);
    EXPECT_TRUE(forecast().contains(u"The long side is set to no pixels"_s));
}

TEST_F(FixedSizeSheetTest, freeingASideOfZeroForgetsItsSize)
{
    openSheet(true, true);
    type(longField(), u"0"_s);
    click(longLock());
    click(longLock());
    EXPECT_EQ(longSide(), 0);
    EXPECT_TRUE(m_controller->longLocked());
}

TEST_F(FixedSizeSheetTest, aValueBeingTypedCountsWhenEditingEnds)
{
    openSheet(true, true);
    type(longField(), u"800"_s);
    EXPECT_EQ(longSide(), 1600);
    m_desktopPresenter.commitEditing(Presenter::Field::LongSide);
    EXPECT_EQ(longSide(), 800);
    type(shortField(), u"600"_s);
    EXPECT_EQ(shortSide(), 1200);
    m_desktopPresenter.commitEditing(Presenter::Field::LongSide);
    EXPECT_EQ(shortSide(), 600) << "both fields are in one window";
}

TEST_F(FixedSizeSheetTest, theClosingButtonCommits)
{
    openSheet(true, true);
    type(longField(), u"800"_s);
    type(shortField(), u"700"_s);
    click(u"dismissFixedSizePanel"_s);
    EXPECT_FALSE(sheet().isVisible());
    EXPECT_EQ(longSide(), 800);
    EXPECT_EQ(shortSide(), 700);
    EXPECT_EQ(m_defaults.integerValue(u"LongSide"_s), 800);
}

TEST_F(FixedSizeSheetTest, theReturnKeyCommitsAndCloses)
{
    openSheet(true, false);
    type(longField(), u"640"_s);
    QTest::keyClick(&longField(), Qt::Key_Return);
    EXPECT_FALSE(sheet().isVisible());
    EXPECT_EQ(longSide(), 640);
}

TEST_F(FixedSizeSheetTest, escapeCommitsAndClosesToo)
{
    openSheet(true, false);
    type(longField(), u"640"_s);
    QTest::keyClick(&longField(), Qt::Key_Escape);
    EXPECT_FALSE(sheet().isVisible());
    EXPECT_EQ(longSide(), 640);
}

TEST_F(FixedSizeSheetTest, theCloseBoxOfItsWindowCommitsAndCloses)
{
    openSheet(true, false);
    type(longField(), u"640"_s);
    EXPECT_TRUE(sheet().close());
    EXPECT_FALSE(sheet().isVisible());
    EXPECT_EQ(longSide(), 640);
}

TEST_F(FixedSizeSheetTest, aTypedValueIsRememberedWhenItsSideIsFreed)
{
    openSheet(true, false);
    type(longField(), u"777"_s);
    click(longLock());
    EXPECT_EQ(longSide(), 0);
    click(longLock());
    EXPECT_EQ(longSide(), 777);
    EXPECT_EQ(longField().value(), 777);
}

TEST_F(FixedSizeSheetTest, aTypedValueSurvivesLockingTheOtherSide)
{
    openSheet(true, false);
    type(longField(), u"900"_s);
    click(shortLock());
    QTest::keyClick(&longField(), Qt::Key_Tab);
    EXPECT_EQ(longSide(), 900);
    EXPECT_EQ(shortSide(), 1200);
}

TEST_F(FixedSizeSheetTest, anEmptiedFieldKeepsItsValue)
{
    openSheet(true, false);
    longField().selectAll();
    QTest::keyClick(&longField(), Qt::Key_Delete);
    click(u"dismissFixedSizePanel"_s);
    EXPECT_EQ(longSide(), 1600);
}

TEST_F(FixedSizeSheetTest, stepsCountAtOnce)
{
    openSheet(true, false);
    QTest::keyClick(&longField(), Qt::Key_Up);
    EXPECT_EQ(longSide(), 1601);
}

} // namespace
