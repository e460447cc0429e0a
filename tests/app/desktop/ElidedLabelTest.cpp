#include "ElidedLabel.h"

#include <QImage>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

TEST(ElidedLabelTest, aLongTextNeedsNoRoomAndIsKeptWhole)
{
    ElidedLabel label;
    const QString text(1000, u'M');
    label.setText(text);
    EXPECT_EQ(label.minimumSizeHint().width(), 0);
    EXPECT_LT(label.sizeHint().width(), 1000);
    EXPECT_EQ(label.text(), text);
}

TEST(ElidedLabelTest, whatDoesNotFitIsShownWithAnEllipsis)
{
    ElidedLabel narrow;
    narrow.setFixedWidth(100);
    narrow.setText(QString(300, u'M'));
    ElidedLabel same;
    same.setFixedWidth(100);
    same.setText(same.fontMetrics().elidedText(narrow.text(), Qt::ElideMiddle, 100));
    EXPECT_TRUE(same.text().contains(u'…'));
    EXPECT_EQ(narrow.grab().toImage(), same.grab().toImage());
}

} // namespace
