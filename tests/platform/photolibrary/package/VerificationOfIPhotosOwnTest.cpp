#include "LibraryFacts.h"
#include "PhotoLibrary.h"

#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <filesystem>

using namespace Qt::StringLiterals;

namespace fs = std::filesystem;

TEST(LibraryVerificationOfIPhotosOwn, onlyWhatIsTrueIsTold)
{
    const fs::path source = fs::path(CORVANE_SHARED_DATA) / "Test-iPhoto-9.6.1.photolibrary";
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
