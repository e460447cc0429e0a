#include "CommentsView.h"

#include "CrashWindowFixture.h"

#include <QClipboard>

using namespace Qt::StringLiterals;

namespace
{

class CommentsViewTest : public CrashWindowFixture
{
protected:
    CommentsView& view() { return child<CommentsView>(u"commentsTextView"_s); }
};

TEST_F(CommentsViewTest, showsWhatTheControllerHas)
{
    show();
    controller().commentsTextView().setString(u"one\ntwo"_s);
    EXPECT_EQ(view().toPlainText(), u"one\ntwo"_s);
    controller().commentsTextView().setPlaceholderString(u"Say more"_s);
    EXPECT_EQ(view().placeholderText(), u"Say more"_s);
    EXPECT_EQ(view().accessibleDescription(), u"Say more"_s);
    controller().commentsTextView().setTypingFontSize(14.0);
    EXPECT_EQ(view().font().pointSizeF(), 14.0);
}

TEST_F(CommentsViewTest, whatIsPastedComesWithoutItsLook)
{
    show();
    view().setFocus();
    QApplication::clipboard()->setText(u"plain"_s);
    view().paste();
    EXPECT_EQ(controller().commentsTextView().string(), u"plain"_s);
}

TEST_F(CommentsViewTest, typingKeepsThePlaceOfTheCaret)
{
    show();
    QTest::keyClicks(&view(), u"ac"_s);
    QTest::keyClick(&view(), Qt::Key_Left);
    QTest::keyClicks(&view(), u"b"_s);
    QTest::keyClicks(&view(), u"b"_s);
    EXPECT_EQ(controller().commentsTextView().string(), u"abbc"_s);
}

} // namespace
