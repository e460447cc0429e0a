#include "ForecastLabel.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

TEST(ForecastLabelTest, showsEveryLineAfterItsSignAsItWasWritten)
{
    ForecastLabel label;
    label.setLines({{PressForecast::Severity::Information, u"first <b> & second"_s},
                    {PressForecast::Severity::Warning, u"beware"_s},
                    {PressForecast::Severity::Blocked, u"stop"_s}});
    EXPECT_TRUE(label.text().contains(u"first &lt;b&gt; &amp; second"_s));
    EXPECT_TRUE(label.text().contains(u"⚠&nbsp;</td><td>beware"_s));
    EXPECT_TRUE(label.text().contains(u"✖&nbsp;</td><td><b>stop</b>"_s));
    EXPECT_EQ(label.plainText(), u"first <b> & second\nbeware\nstop"_s);
}

} // namespace
