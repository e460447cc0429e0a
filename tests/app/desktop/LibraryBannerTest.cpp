#include "LibraryBanner.h"

#include <QLabel>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class LibraryBannerTest : public testing::Test
{
protected:
    QLabel& text() { return *m_banner.findChild<QLabel*>(u"whyReadOnly"_s); }

    QPushButton& button() { return *m_banner.findChild<QPushButton*>(u"openAfterCrash"_s); }

    LibraryBanner m_banner;
};

TEST_F(LibraryBannerTest, isSeenOnlyWhileItHasSomethingToSay)
{
    EXPECT_TRUE(m_banner.isHidden());
    m_banner.setText(u"<read> only"_s, false);
    EXPECT_FALSE(m_banner.isHidden());
    EXPECT_EQ(text().text(), u"<read> only"_s);
    EXPECT_EQ(text().textFormat(), Qt::PlainText);
    EXPECT_EQ(text().accessibleName(), u"<read> only"_s);
    m_banner.setText({}, false);
    EXPECT_TRUE(m_banner.isHidden());
}

TEST_F(LibraryBannerTest, offersToOpenForWritingOnlyWhereThatCanBe)
{
    int asked = 0;
    QObject::connect(&m_banner, &LibraryBanner::openAfterCrash, [&asked] { ++asked; });
    m_banner.setText(u"in use"_s, false);
    m_banner.show();
    EXPECT_FALSE(button().isVisible());
    m_banner.setText(u"not closed"_s, true);
    ASSERT_TRUE(button().isVisible());
    QTest::mouseClick(&button(), Qt::LeftButton);
    EXPECT_EQ(asked, 1);
}

TEST_F(LibraryBannerTest, aLongTextIsSeenWholeInANarrowWindow)
{
    m_banner.setText(u"Another program has the library open. "_s.repeated(6), true);
    m_banner.resize(420, m_banner.heightForWidth(420));
    m_banner.show();
    EXPECT_GE(text().height(), text().heightForWidth(text().width()));
    EXPECT_TRUE(m_banner.rect().contains(button().geometry()));
}

} // namespace
