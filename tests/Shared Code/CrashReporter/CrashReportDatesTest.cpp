#include "CrashReportDates.h"

#include "CrashReporterFixture.h"

using namespace Qt::StringLiterals;

namespace
{

class CrashReportDatesTest : public CrashReporterFixture
{
protected:
    void SetUp() override
    {
        CrashReporterFixture::SetUp();
        m_zone = qgetenv("TZ");
        qputenv("TZ", "UTC");
    }

    void TearDown() override
    {
        m_zone.isNull() ? qunsetenv("TZ") : qputenv("TZ", m_zone);
        CrashReporterFixture::TearDown();
    }

    /// Where the pattern has a blank, whichever kind of blank it is.
    static QString text(double date, const QString& locale)
    {
        return CrashReportDates::text(date, locale).replace(QChar(0x202f), u' ');
    }

    QByteArray m_zone;
};

TEST_F(CrashReportDatesTest, theModificationDateHasItsFraction)
{
    const QString path = makeLog(u"Corvane \u00e4.crash"_s, kNow + 0.25);
    EXPECT_EQ(CrashReportDates::modificationDate(path), kNow + 0.25);
}

TEST_F(CrashReportDatesTest, whereThereIsNoFileThereIsNoDate)
{
    EXPECT_EQ(CrashReportDates::modificationDate(m_folder.filePath(u"none"_s)), std::nullopt);
    EXPECT_EQ(CrashReportDates::modificationDate({}), std::nullopt);
}

TEST_F(CrashReportDatesTest, aLinkHasADateOfItsOwn)
{
    const QString path = makeLog(u"Corvane.crash"_s, kNow);
    const QString link = m_folder.filePath(u"link"_s);
    ASSERT_TRUE(QFile::link(path, link));
    setModified(link, kNow + 50.0);
    EXPECT_EQ(CrashReportDates::modificationDate(link), kNow + 50.0);
    ASSERT_TRUE(QFile::remove(path));
    EXPECT_EQ(CrashReportDates::modificationDate(link), kNow + 50.0);
}

TEST_F(CrashReportDatesTest, theLastReportKeepsItsFraction)
{
    EXPECT_EQ(CrashReportDates::lastReport(m_defaults), std::nullopt);
    CrashReportDates::setLastReport(m_defaults, kNow + 0.123456789);
    EXPECT_EQ(CrashReportDates::lastReport(m_defaults), kNow + 0.123456789);
    const UserDefaults nextLaunch(m_defaults.filePath());
    EXPECT_EQ(CrashReportDates::lastReport(nextLaunch), kNow + 0.123456789);
    EXPECT_EQ(lastReport(), kNow) << "a date of whole seconds under the known key";
}

TEST_F(CrashReportDatesTest, aDateThatIsSetAloneCounts)
{
    CrashReportDates::setLastReport(m_defaults, kNow + 0.5);
    setLastReport(kNow - 7.0);
    EXPECT_EQ(CrashReportDates::lastReport(m_defaults), kNow - 7.0);
}

TEST_F(CrashReportDatesTest, whatIsNoDateIsNone)
{
    m_defaults.setValue(u"ZTBCrashReporterLastCrashReportDate"_s, u"yesterday"_s);
    EXPECT_EQ(CrashReportDates::lastReport(m_defaults), std::nullopt);
}

TEST_F(CrashReportDatesTest, theTextIsTheLocalesMediumDateAndTime)
{
    EXPECT_EQ(text(kNow, u"en_US"_s), u"Feb 3, 2014, 4:05:06 AM"_s);
    EXPECT_EQ(text(kNow + 12 * 3600, u"en_US"_s), u"Feb 3, 2014, 4:05:06 PM"_s);
    EXPECT_EQ(text(kNow, u"de_DE"_s), u"03.02.2014, 04:05:06"_s);
    EXPECT_EQ(text(kNow, u"ja_JP"_s), u"2014/02/03 4:05:06"_s);
}

TEST_F(CrashReportDatesTest, aLocaleThatNobodyKnowsIsNoError)
{
    for (const QString& name : {u""_s,
                                u"xx_YY"_s,
                                u"\u00e4\u00f6"_s,
                                u"en_US@calendar=none;=@"_s,
                                u"c0Xb1XX1ZXcc9YY_1919bc_bcZbabaY"_s,
                                QString(5000, u'x')}) {
        EXPECT_TRUE(text(kNow, name).contains(u"2014"_s)) << qPrintable(name);
    }
}

TEST_F(CrashReportDatesTest, aLocaleMayNameItsScript)
{
    EXPECT_TRUE(text(kNow, u"zh-Hant-TW"_s).startsWith(u"2014\u5e742\u67083\u65e5 "_s));
}

TEST_F(CrashReportDatesTest, aLocaleMayHaveVariantsAndKeywords)
{
    EXPECT_EQ(text(kNow, u"en_US_POSIX"_s), u"Feb 3, 2014, 4:05:06 AM"_s);
    EXPECT_EQ(text(kNow, u"de_DE@calendar=gregorian"_s), u"03.02.2014, 04:05:06"_s);
    EXPECT_TRUE(text(kNow, u"de_DE@calendar=buddhist"_s).contains(u"2557"_s));
    EXPECT_EQ(text(kNow, u"de__PHONEBOOK@collation=phonebook;numbers=latn"_s),
              u"03.02.2014, 04:05:06"_s);
    EXPECT_EQ(text(kNow, u"de_DE@calendar=nobodys;hours=x"_s), u"03.02.2014, 04:05:06"_s);
}

TEST_F(CrashReportDatesTest, theTextIsOfTheMachinesTimeZone)
{
    qputenv("TZ", "America/New_York");
    EXPECT_EQ(text(kNow, u"en_US"_s), u"Feb 2, 2014, 11:05:06 PM"_s);
}

} // namespace
