#include "SampleLibrary.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <csignal>
#include <limits>

using namespace Qt::StringLiterals;

namespace
{

constexpr SampleOptions kTiny{.photos = 1, .megapixels = 0.1};

/// Everything below a folder, with a digest of each file.
QMap<QString, QByteArray> contentsOf(const QString& folder)
{
    QMap<QString, QByteArray> contents;
    QDirIterator entries(folder,
                         QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = entries.next();
        QFile file(path);
        contents.insert(path,
                        QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly)
                            ? QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256)
                            : QByteArray());
    }
    return contents;
}

/// As long as it lives, no file may become longer: a disk that is full, as programs meet it.
class ShortFiles final
{
public:
    explicit ShortFiles(rlim_t bytes)
        : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }

    ~ShortFiles()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

    ShortFiles(const ShortFiles&) = delete;
    ShortFiles& operator=(const ShortFiles&) = delete;

private:
    rlimit m_before{};
    sighandler_t m_handler;
};

class SampleLibraryRefusalTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_folder.isValid()); }

    [[nodiscard]] QString package() const { return m_folder.filePath(u"Sample.photolibrary"_s); }

    QTemporaryDir m_folder;
};

} // namespace

TEST_F(SampleLibraryRefusalTest, aSecondOneIsRefusedAndTheFirstStaysAsItIs)
{
    ASSERT_TRUE(SampleLibrary::write(m_folder.path(), kTiny, {}).ok());
    const auto before = contentsOf(m_folder.path());
    const auto again = SampleLibrary::write(m_folder.path(), kTiny, {});
    ASSERT_FALSE(again.ok());
    EXPECT_EQ(again.error().code, ErrorCode::NotWritable);
    EXPECT_TRUE(again.error().message.contains(package()));
    EXPECT_EQ(contentsOf(m_folder.path()), before);
}

TEST_F(SampleLibraryRefusalTest, whateverElseHasTheNameIsLeftAlone)
{
    QFile file(package());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("mine");
    file.close();
    EXPECT_EQ(SampleLibrary::write(m_folder.path(), kTiny, {}).error().code,
              ErrorCode::NotWritable);
    EXPECT_EQ(QFileInfo(package()).size(), 4);

    ASSERT_TRUE(QFile::remove(package()));
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(u"Sample.photolibrary"_s));
    EXPECT_EQ(SampleLibrary::write(m_folder.path(), kTiny, {}).error().code,
              ErrorCode::NotWritable);
    EXPECT_TRUE(QDir(package()).isEmpty());

    ASSERT_TRUE(QDir(m_folder.path()).rmdir(u"Sample.photolibrary"_s));
    ASSERT_TRUE(QFile::link(m_folder.filePath(u"nowhere"_s), package()));
    EXPECT_EQ(SampleLibrary::write(m_folder.path(), kTiny, {}).error().code,
              ErrorCode::NotWritable);
    EXPECT_TRUE(QFileInfo(package()).isSymLink());
    EXPECT_FALSE(QFile::exists(m_folder.filePath(u"nowhere"_s)));
}

TEST_F(SampleLibraryRefusalTest, afterAFailureNothingOfTheLibraryStays)
{
    QFile neighbour(m_folder.filePath(u"neighbour.txt"_s));
    ASSERT_TRUE(neighbour.open(QIODevice::WriteOnly));
    neighbour.write("stays");
    neighbour.close();
    const auto before = contentsOf(m_folder.path());

    // After the first photo the folder of the masters turns into a file: the next import fails.
    const auto spoil = [this](int done, int) {
        if (done == 1) {
            ASSERT_TRUE(QDir(package()).rename(u"Masters"_s, u"Masters moved away"_s));
            QFile obstacle(QDir(package()).filePath(u"Masters"_s));
            ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
        }
    };
    EXPECT_FALSE(SampleLibrary::write(m_folder.path(), kTiny, spoil).ok());
    EXPECT_EQ(contentsOf(m_folder.path()), before);
    // The way is free again.
    EXPECT_TRUE(SampleLibrary::write(m_folder.path(), kTiny, {}).ok());
}

TEST_F(SampleLibraryRefusalTest, whoStopsItLeavesNothingBehind)
{
    QFile neighbour(m_folder.filePath(u"neighbour.txt"_s));
    ASSERT_TRUE(neighbour.open(QIODevice::WriteOnly));
    neighbour.close();
    const auto before = contentsOf(m_folder.path());
    for (const int after : {0, 1, 4}) { // photos; four are all
        int done = 0;
        const auto refused = SampleLibrary::write(
            m_folder.path(),
            kTiny,
            [&done](int photos, int) { done = photos; },
            [&done, after] { return done == after; });
        ASSERT_FALSE(refused.ok()) << after;
        EXPECT_EQ(refused.error().code, ErrorCode::Interrupted);
        EXPECT_EQ(contentsOf(m_folder.path()), before);
    }
}

TEST_F(SampleLibraryRefusalTest, whatSomebodyPutInThePlaceOfAnUnfinishedOneIsLeftAlone)
{
    const auto exchange = [this](int done, int) {
        if (done == 1) {
            QDir folder(m_folder.path());
            ASSERT_TRUE(folder.rename(u"Sample.photolibrary"_s, u"moved away"_s));
            ASSERT_TRUE(folder.mkpath(u"Sample.photolibrary/mine"_s));
        }
    };
    int asked = 0;
    EXPECT_FALSE(SampleLibrary::write(m_folder.path(), kTiny, exchange, [&asked] {
                     return ++asked > 1;
                 }).ok());
    EXPECT_TRUE(QFileInfo(package() + u"/mine"_s).isDir());
}

TEST_F(SampleLibraryRefusalTest, nothingIsWrittenIntoALibraryNotEvenThroughALink)
{
    ASSERT_TRUE(SampleLibrary::write(m_folder.path(), kTiny, {}).ok());
    ASSERT_TRUE(QFile::link(package() + u"/Masters"_s, m_folder.filePath(u"link"_s)));
    const auto before = contentsOf(m_folder.path());
    for (const QString& directory :
         {package(), package() + u"/Masters"_s, m_folder.filePath(u"link"_s)}) {
        const auto refused = SampleLibrary::write(directory, kTiny, {});
        ASSERT_FALSE(refused.ok());
        EXPECT_EQ(refused.error().code, ErrorCode::NotWritable);
        EXPECT_TRUE(refused.error().message.contains(package())) << directory.toStdString();
    }
    EXPECT_EQ(contentsOf(m_folder.path()), before);
}

TEST_F(SampleLibraryRefusalTest, optionsOutOfRangeAreRefusedBeforeAnythingIsMade)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const SampleOptions& options : {SampleOptions{.photos = 0, .megapixels = 1.0},
                                         SampleOptions{.photos = -3, .megapixels = 1.0},
                                         SampleOptions{.photos = 1001, .megapixels = 1.0},
                                         SampleOptions{.photos = 1, .megapixels = 0.049},
                                         SampleOptions{.photos = 1, .megapixels = 100.1},
                                         SampleOptions{.photos = 1, .megapixels = nan}}) {
        const auto refused = SampleLibrary::write(m_folder.path(), options, {});
        ASSERT_FALSE(refused.ok());
        EXPECT_EQ(refused.error().code, ErrorCode::Unsupported);
    }
    EXPECT_TRUE(QDir(m_folder.path()).isEmpty());
}

TEST_F(SampleLibraryRefusalTest, aDiskThatIsFullAtAnyPointLeavesNothing)
{
    // Too short for the databases, then long enough for them but not for a RAW photo.
    for (const rlim_t bytes : {rlim_t{40000}, rlim_t{1500000}}) {
        Result<QString> refused = QString();
        {
            const ShortFiles shortFiles(bytes);
            refused = SampleLibrary::write(m_folder.path(), {.photos = 1, .megapixels = 6.0}, {});
        }
        EXPECT_FALSE(refused.ok()) << bytes;
        EXPECT_TRUE(QDir(m_folder.path()).isEmpty()) << bytes;
    }
}

TEST_F(SampleLibraryRefusalTest, aFolderThatIsNotThereIsAnError)
{
    for (const QString& directory : {m_folder.filePath(u"missing"_s), QString()}) {
        const auto refused = SampleLibrary::write(directory, kTiny, {});
        ASSERT_FALSE(refused.ok());
        EXPECT_EQ(refused.error().code, ErrorCode::NotFound);
    }
    QFile file(m_folder.filePath(u"file"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(SampleLibrary::write(file.fileName(), kTiny, {}).error().code, ErrorCode::NotFound);
}
