#include "LibraryFinder.h"

#include "LibraryCreator.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(LibraryFinderTest, librariesAreFoundByTheirContentInAFolderAndOneBelow)
{
    const QTemporaryDir pictures;
    QDir folder(pictures.path());
    ASSERT_TRUE(folder.mkpath(u"Old/Deep/Deeper"_s));
    ASSERT_TRUE(folder.mkdir(u"Empty.photolibrary"_s));
    ASSERT_TRUE(LibraryCreator::create(folder.filePath(u"B.photolibrary"_s)).ok());
    ASSERT_TRUE(LibraryCreator::create(folder.filePath(u"Old/A library"_s)).ok());
    ASSERT_TRUE(LibraryCreator::create(folder.filePath(u"Old/Deep/C.photolibrary"_s)).ok());

    EXPECT_EQ(
        LibraryFinder::librariesIn(pictures.path()),
        (QStringList{folder.filePath(u"B.photolibrary"_s), folder.filePath(u"Old/A library"_s)}));
    EXPECT_TRUE(LibraryFinder::isLibrary(folder.filePath(u"Old/A library"_s)));
    EXPECT_FALSE(LibraryFinder::isLibrary(folder.filePath(u"Empty.photolibrary"_s)));
    EXPECT_FALSE(LibraryFinder::isLibrary(folder.filePath(u"gone"_s)));
}
