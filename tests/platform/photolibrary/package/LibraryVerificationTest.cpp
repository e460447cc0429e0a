#include "LibraryVerification.h"

#include "DamagedLibrary.h"

#include <QFile>
#include <QFileInfo>

#include <filesystem>

using namespace Qt::StringLiterals;

namespace fs = std::filesystem;

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

TEST_F(LibraryVerificationTest, whatTheFinderLeavesIsNoFinding)
{
    write(u"Masters/.DS_Store"_s, "a view");
    write(u"Previews/.DS_Store"_s, "a view");
    EXPECT_EQ(findings(), QStringList());
}

TEST(LibraryVerificationOfIPhotosOwn, onlyWhatIsTrueIsTold)
{
    const fs::path source = fs::path(CORVANE_SHARED_DATA) / "Test-iPhoto-9.6.1.photolibrary";
    if (!fs::exists(source)) {
        GTEST_SKIP() << "no library of iPhoto at hand";
    }
    const QTemporaryDir folder;
    const fs::path copy = fs::path(folder.path().toStdString()) / "Real.photolibrary";
    fs::create_directories(copy);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(source)) {
        const fs::path target = copy / fs::relative(entry.path(), source);
        if (entry.is_directory()) {
            fs::create_directories(target);
        } else {
            fs::copy(entry.path(), target, fs::copy_options::copy_symlinks);
            fs::permissions(target, fs::perms::owner_write, fs::perm_options::add);
        }
    }
    auto library = PhotoLibrary::open(QString::fromStdString(copy.string()), {});
    ASSERT_TRUE(library.ok()) << library.error().message.toStdString();
    const Result<QList<Finding>> found = library.value()->verify();
    ASSERT_TRUE(found.ok());
    QStringList told;
    for (const Finding& finding : found.value()) {
        told += finding.what;
    }
    told.removeIf([](const QString& what) { return what.contains("should be a link"_L1); });
    EXPECT_EQ(told.join(u'\n').toStdString(),
              "This sidecar tells otherwise than the databases: isInTrash.\n"
              "This sidecar tells otherwise than the databases: isInTrash.\n"
              "This sidecar tells otherwise than the databases: isInTrash.\n"
              "The original “DSC03584.dng” is missing.\n"
              "The original “IMG_1994.cr2” is missing.\n"
              "The original “IMG_1997.cr2” is missing.");
}
