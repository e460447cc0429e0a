#include "SampleLibrary.h"

#include "ImageSource.h"
#include "PhotoLibrary.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

constexpr SampleOptions kSmall{.photos = 4, .megapixels = 0.3};

QList<PhotoFacts> photosOf(const QString& package)
{
    auto library = PhotoLibrary::open(package, {});
    if (!library.ok()) {
        ADD_FAILURE() << library.error().message.toStdString();
        return {};
    }
    auto photos = library.value()->photos();
    if (!photos.ok()) {
        ADD_FAILURE() << photos.error().message.toStdString();
        return {};
    }
    return photos.value();
}

class SampleLibraryTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_folder.isValid()); }

    [[nodiscard]] QString package() const { return m_folder.filePath(u"Sample.photolibrary"_s); }

    QTemporaryDir m_folder;
};

} // namespace

TEST_F(SampleLibraryTest, aSmallLibraryIsSoundAndHoldsWhatWasAskedFor)
{
    QList<int> steps;
    const auto written =
        SampleLibrary::write(m_folder.path(), kSmall, [&steps](int done, int total) {
            EXPECT_EQ(total, 7);
            steps.append(done);
        });
    ASSERT_TRUE(written.ok()) << written.error().message.toStdString();
    EXPECT_EQ(written.value(), package());
    EXPECT_EQ(steps, QList<int>({1, 2, 3, 4, 5, 6, 7}));

    auto library = PhotoLibrary::open(package(), {});
    ASSERT_TRUE(library.ok()) << library.error().message.toStdString();
    const auto summary = library.value()->summary();
    ASSERT_TRUE(summary.ok());
    EXPECT_EQ(summary.value().problems, QStringList());
    EXPECT_EQ(summary.value().photos, 7);
    EXPECT_EQ(summary.value().rawPhotos, 4);
    EXPECT_EQ(summary.value().missing, 0);
    EXPECT_EQ(summary.value().trashedPhotos, 0);
    EXPECT_GE(summary.value().rolls, 2);
    EXPECT_EQ(summary.value().albums, 3);
    // Nothing but the package is left in the folder.
    EXPECT_EQ(
        QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        QStringList{u"Sample.photolibrary"_s});

    const QString checker = QStringLiteral(CORVANE_SHARED_DATA "/../accept/librarycheck.py");
    if (QFile::exists(checker)) {
        QProcess check;
        check.start(u"python3"_s, {checker, package(), u"--strict"_s});
        ASSERT_TRUE(check.waitForFinished(120000));
        EXPECT_EQ(check.exitCode(), 0) << check.readAllStandardOutput().toStdString()
                                       << check.readAllStandardError().toStdString();
    }
}

TEST_F(SampleLibraryTest, photosCarryWhatPeopleWriteOnThem)
{
    ASSERT_TRUE(SampleLibrary::write(m_folder.path(), kSmall, {}).ok());
    const auto photos = photosOf(package());
    QMap<QString, PhotoFacts> byName;
    for (const PhotoFacts& photo : photos) {
        byName.insert(photo.fileName, photo);
    }
    const PhotoFacts hills = byName.value(u"DSC_0101.dng"_s);
    EXPECT_TRUE(hills.raw);
    EXPECT_EQ(hills.name, u"Above the Valley"_s);
    EXPECT_EQ(hills.rollName, u"Hill Country"_s);
    EXPECT_EQ(hills.keywords, QStringList({u"Landscape"_s, u"Vacation"_s}));
    EXPECT_EQ(hills.albums, QStringList({u"Best of the Year"_s, u"Out of Doors"_s}));
    EXPECT_EQ(hills.rating, 4);
    EXPECT_EQ(hills.wallClock(), u"2011-05-14T08:42:17"_s);
    // The position is in the file itself.
    EXPECT_NEAR(hills.latitude.value_or(0.0), 46.7271, 1e-6);
    EXPECT_NEAR(hills.altitude.value_or(0.0), 1421.5, 1e-6);

    const PhotoFacts portrait = byName.value(u"DSC_0102.dng"_s);
    EXPECT_EQ(portrait.comment, u"Für Oma und Opa – 祖父母へ, με αγάπη 🌻"_s);
    EXPECT_GT(portrait.height, portrait.width);
    EXPECT_FALSE(portrait.edited);
    EXPECT_FALSE(portrait.latitude.has_value());

    // This one's place is known to the library alone.
    const PhotoFacts lake = byName.value(u"DSC_0103.dng"_s);
    EXPECT_NEAR(lake.latitude.value_or(0.0), 46.6863, 1e-9);
    EXPECT_NEAR(lake.altitude.value_or(0.0), 567.0, 1e-9);
    EXPECT_EQ(lake.rollId, hills.rollId);

    const PhotoFacts bed = byName.value(u"IMG_2001.jpg"_s);
    EXPECT_FALSE(bed.raw);
    EXPECT_EQ(bed.keywords, QStringList({u"Flowers"_s, u"Garten"_s}));
    EXPECT_EQ(bed.rollId, portrait.rollId);
    EXPECT_NEAR(byName.value(u"IMG_2003.jpg"_s).latitude.value_or(0.0), 53.8689, 1e-6);
}

TEST_F(SampleLibraryTest, everyMasterDecodesAndRawOnesHaveAnUprightPreview)
{
    ASSERT_TRUE(SampleLibrary::write(m_folder.path(), kSmall, {}).ok());
    const auto photos = photosOf(package());
    ASSERT_EQ(photos.size(), 7);
    for (const PhotoFacts& photo : photos) {
        EXPECT_TRUE(ImageSource::check(photo.originalPath).ok()) << photo.fileName.toStdString();
        if (photo.raw) {
            const auto preview = ImageSource::decode(photo.previewPath);
            ASSERT_TRUE(preview.ok()) << photo.fileName.toStdString();
            EXPECT_EQ(preview.value().size(), QSize(photo.width, photo.height));
        }
    }
}

TEST_F(SampleLibraryTest, theSameOptionsGiveTheSamePictures)
{
    const QTemporaryDir other;
    ASSERT_TRUE(other.isValid());
    const SampleOptions options{.photos = 2, .megapixels = 0.1};
    ASSERT_TRUE(SampleLibrary::write(m_folder.path(), options, {}).ok());
    const auto second = SampleLibrary::write(other.path(), options, {});
    ASSERT_TRUE(second.ok());
    const auto digests = [](const QString& library) {
        QSet<QByteArray> found;
        for (const PhotoFacts& photo : photosOf(library)) {
            QFile file(photo.originalPath);
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            found.insert(QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256));
        }
        return found;
    };
    EXPECT_EQ(digests(package()).size(), 5);
    EXPECT_EQ(digests(package()), digests(second.value()));
}

TEST_F(SampleLibraryTest, theSmallestPhotosInARelativeFolderAreFine)
{
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(m_folder.path()));
    const auto written = SampleLibrary::write(u"."_s, {.photos = 1, .megapixels = 0.05}, {});
    ASSERT_TRUE(QDir::setCurrent(before));
    ASSERT_TRUE(written.ok()) << written.error().message.toStdString();
    EXPECT_EQ(written.value(), package());
    const auto photos = photosOf(package());
    EXPECT_EQ(std::ranges::count_if(photos, &PhotoFacts::raw), 1);
}
