#include "Button.h"

#include <QList>

#include <gtest/gtest.h>

namespace
{

TEST(Button, isEnabledAtFirstAndAnnouncesEachChange)
{
    Button button;
    EXPECT_TRUE(button.isEnabled());
    QList<bool> announced;
    QObject::connect(
        &button, &Button::enabledChanged, [&](bool enabled) { announced.append(enabled); });
    button.setEnabled(false);
    EXPECT_FALSE(button.isEnabled());
    button.setEnabled(true);
    EXPECT_EQ(announced, (QList<bool>{false, true}));
}

} // namespace
