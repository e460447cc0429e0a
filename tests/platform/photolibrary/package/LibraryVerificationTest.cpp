#include "LibraryVerification.h"

#include "DamagedLibrary.h"

#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

class LibraryVerificationTest : public DamagedLibrary
{
};

TEST_F(LibraryVerificationTest, nothingIsChangedByIt)
{
    remove(u"AlbumData.xml"_s);
    remove(fileIn(u"Thumbnails"_s, u"_1024.jpg"_s));
    execute(u"DELETE FROM RKVersion_RidIndexes"_s);
    const PackageState before = state();
    EXPECT_GT(findings().size(), 3);
    EXPECT_EQ(before.differenceTo(state()).toStdString(), "");
}

TEST_F(LibraryVerificationTest, ofDamagedDatabasesOnlyTheDamageIsTold)
{
    QFile file(package() + u"/Database/apdb/Properties.apdb"_s);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    constexpr qint64 kPage = 16384;
    ASSERT_TRUE(file.seek(kPage));
    ASSERT_EQ(file.write(QByteArray(100, '\x55')), 100);
    file.close();
    remove(u"AlbumData.xml"_s);
    const QStringList found = findings();
    ASSERT_EQ(found.size(), 1) << found.join(u'\n').toStdString();
    EXPECT_TRUE(found.first().startsWith("A database is damaged: "_L1));
    EXPECT_TRUE(found.first().endsWith("[Database/apdb/Properties.apdb]"_L1));
}

TEST_F(LibraryVerificationTest, aPreviewOfAnEditedPhotoCannotBeMadeAnew)
{
    execute(u"UPDATE RKVersion SET hasEnabledAdjustments=1 WHERE modelId=3"_s);
    remove(u"Previews/"_s +
           ask(u"SELECT fullSizePreviewPath FROM RKImageProxyState WHERE versionId=3"_s));
    const QStringList found = findings().filter(u"The preview of the photo 3"_s);
    ASSERT_EQ(found.size(), 1);
    EXPECT_FALSE(found.first().endsWith("*"_L1));
}

TEST_F(LibraryVerificationTest, aFileInPlaceOfALinkToADatabaseIsTold)
{
    const QString link = u"Database/Library.apdb"_s;
    QFile::remove(package() + u'/' + link);
    write(link, "apdb/Library.apdb");
    EXPECT_EQ(findings(),
              QStringList{u"This is a file, but should be a link to “apdb/Library.apdb”. "
                          "[Database/Library.apdb]"_s});
}

TEST_F(LibraryVerificationTest, aMissingLinkBesideTheDatabasesIsTold)
{
    remove(u"Database/Library.apdb"_s);
    EXPECT_EQ(findings(),
              QStringList{u"iPhoto's link to “apdb/Library.apdb” is missing. "
                          "[Database/Library.apdb]"_s});
}

TEST_F(LibraryVerificationTest, whatTheFinderLeavesIsNoFinding)
{
    write(u"Masters/.DS_Store"_s, "a view");
    write(u"Previews/.DS_Store"_s, "a view");
    EXPECT_EQ(findings(), QStringList());
}

TEST_F(LibraryVerificationTest, aLinkInMastersThatLeadsNowhereIsTold)
{
    ASSERT_TRUE(QFile::link(folder() + u"/nowhere.jpg"_s, package() + u"/Masters/link.jpg"_s));
    EXPECT_EQ(findings().filter(u"link.jpg"_s).size(), 1);
}
