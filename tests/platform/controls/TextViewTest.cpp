#include "TextView.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

TEST(TextView, beginsEmpty)
{
    const TextView view;
    EXPECT_TRUE(view.string().isEmpty());
    EXPECT_TRUE(view.placeholderString().isEmpty());
    EXPECT_EQ(view.typingFontSize(), 0.0);
}

TEST(TextView, aTextIsAnnouncedOnce)
{
    TextView view;
    QStringList announced;
    QObject::connect(
        &view, &TextView::stringChanged, [&](const QString& text) { announced.append(text); });
    view.setString(u"It fell over."_s);
    view.setString(u"It fell over."_s);
    view.setString({});
    EXPECT_EQ(announced, (QStringList{u"It fell over."_s, {}}));
}

TEST(TextView, placeholderAndSizeAreAnnounced)
{
    TextView view;
    QString placeholder;
    double points = 0.0;
    QObject::connect(&view, &TextView::placeholderStringChanged, [&](const QString& text) {
        placeholder = text;
    });
    QObject::connect(
        &view, &TextView::typingFontSizeChanged, [&](double announced) { points = announced; });
    view.setPlaceholderString(u"What happened?"_s);
    view.setTypingFontSize(10.0);
    EXPECT_EQ(placeholder, u"What happened?"_s);
    EXPECT_EQ(view.placeholderString(), u"What happened?"_s);
    EXPECT_EQ(points, 10.0);
    EXPECT_EQ(view.typingFontSize(), 10.0);
}

} // namespace
