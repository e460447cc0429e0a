#include "WelcomePage.h"

#include <QApplication>
#include <QLabel>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(WelcomePageTest, theHintIsSeenWholeHoweverWideThePage)
{
    WelcomePage page;
    page.offer({u"/pictures/A.photolibrary"_s, u"/pictures/B.photolibrary"_s});
    page.show();
    const auto* const hint = page.findChild<QLabel*>(u"welcomeHint"_s);
    ASSERT_NE(hint, nullptr);
    for (const int width : {300, 450, 900, 1600}) {
        page.resize(width, 500);
        QApplication::processEvents();
        EXPECT_GE(hint->height(), hint->heightForWidth(hint->width())) << width;
        EXPECT_GE(hint->height(), hint->fontMetrics().height()) << width;
    }
}
