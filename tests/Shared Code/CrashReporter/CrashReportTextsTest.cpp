#include "CrashReportTexts.h"

#include "CrashReportError.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(CrashReportTexts, areTheseInEnglish)
{
    using namespace CrashReportTexts;
    EXPECT_EQ(title(u"A"_s), u"Crash Reporter: A"_s);
    EXPECT_EQ(title(u"A"_s, u"1.0"_s), u"Crash Reporter: A (1.0)"_s);
    EXPECT_EQ(commentsPlaceholder(),
              u"Please enter a description of the actions leading up to the crash."_s);
    EXPECT_EQ(submitted(), u"The crash report was successfully submitted."_s);
    EXPECT_EQ(thanks(u"A"_s), u"Thank you for taking the time to help improve A!"_s);
    EXPECT_EQ(notSubmitted(), u"An error occurred while submitting the crash report."_s);
    EXPECT_EQ(theErrorWas(u"none"_s), u"The error was: none"_s);
    EXPECT_EQ(unrecognizedResponse(), u"Unrecognized response from the server"_s);
}

TEST(CrashReportError, anAnswerThatIsNotTheAgreedOneHasItsOwnNumber)
{
    const CrashReportError error = CrashReportError::unrecognizedResponse();
    EXPECT_EQ(error.domain, u"NSPOSIXErrorDomain"_s);
    EXPECT_EQ(error.code, 100);
    EXPECT_EQ(error.localizedDescription, u"Unrecognized response from the server"_s);
}
