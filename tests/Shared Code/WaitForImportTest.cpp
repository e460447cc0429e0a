#include "WaitForImport.h"

#include "FakeClock.h"
#include "FakePhotoApplication.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

TEST(WaitForImportTest, itAsksAgainAfterATenthOfASecondUntilNothingIsImported)
{
    FakePhotoApplication library;
    FakeClock clock;
    library.setImportingAnswers(3);
    library.libraryAlbum()->importFrom(u"/nowhere/a.jpg"_s, true, library.libraryAlbum());
    library.journal().clear();
    waitForImport(*library.applicationWithBundleIdentifier(u"com.apple.iPhoto"_s), clock);
    EXPECT_EQ(clock.sleeps(), (QList<double>{0.1, 0.1, 0.1}));
    EXPECT_EQ(library.calls(), QStringList(4, u"application.importing"_s));
}

TEST(WaitForImportTest, withoutAnImportNobodySleeps)
{
    FakePhotoApplication library;
    FakeClock clock;
    waitForImport(*library.applicationWithBundleIdentifier(u"com.apple.iPhoto"_s), clock);
    EXPECT_TRUE(clock.sleeps().isEmpty());
}

} // namespace
