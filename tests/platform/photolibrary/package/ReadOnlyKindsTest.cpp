#include "KindsOfLibraries.h"
#include "OrdinaryUser.h"
#include "QtPrinters.h"

#include <QFile>

#include <sched.h>
#include <sys/mount.h>

#include <filesystem>
#include <optional>

using namespace Qt::StringLiterals;

namespace
{

/// A folder on a file system that is mounted for reading only, as long as this lives: for this
/// process alone, and only where it may mount.
class ReadOnlyMount final
{
public:
    explicit ReadOnlyMount(const QString& folder)
        : m_folder(QFile::encodeName(folder))
    {
        m_isMounted =
            ::unshare(CLONE_NEWNS) == 0 &&
            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
            ::mount(m_folder.constData(), m_folder.constData(), nullptr, MS_BIND, nullptr) == 0;
        if (m_isMounted && ::mount(nullptr,
                                   m_folder.constData(),
                                   nullptr,
                                   MS_BIND | MS_REMOUNT | MS_RDONLY,
                                   nullptr) != 0) {
            qFatal("a mount cannot be made read-only");
        }
    }

    ~ReadOnlyMount()
    {
        if (m_isMounted) {
            ::umount2(m_folder.constData(), MNT_DETACH);
        }
    }

    ReadOnlyMount(const ReadOnlyMount&) = delete;
    ReadOnlyMount& operator=(const ReadOnlyMount&) = delete;

    [[nodiscard]] bool isMounted() const { return m_isMounted; }

private:
    QByteArray m_folder;
    bool m_isMounted{false};
};

} // namespace

// Libraries that are read, and say why they are not written.

TEST_F(KindsOfLibraries, databasesThatAnotherLibrarySharesAreReadButNotWritten)
{
    const QString database = m_builder.package() + u"/Database/apdb/Properties.apdb"_s;
    const QString second = m_folder.filePath(u"Properties.apdb"_s);
    std::filesystem::create_hard_link(database.toStdString(), second.toStdString());
    const auto refused = PhotoLibrary::open(m_builder.package(), {Access::Write, false});
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error().code, ErrorCode::NotWritable);
    EXPECT_EQ(refused.error().message,
              u"The library \"%1\" is not written to: its database \"%2\" is the same file as "
              "another one (a hard link), which would change with it. Copy the library, and use "
              "the copy."_s.arg(m_builder.package(), database));
    const LibrarySummary summary = open(Access::Read)->summary().value();
    EXPECT_FALSE(summary.writable);
    EXPECT_EQ(summary.whyReadOnly, refused.error().message);
    ASSERT_TRUE(QFile::remove(second));
    EXPECT_NE(open(Access::Write), nullptr);
}

TEST_F(KindsOfLibraries, anOlderSchemaIsReadAndSaysWhyItIsNotWritten)
{
    const qint64 id = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    m_builder.edit([](Writer& writer) {
        writer.connection.database().exec(
            "UPDATE RKAdminData SET propertyValue='207' WHERE propertyArea='database' AND"
            " propertyName='versionMinor'");
    });
    EXPECT_EQ(shown(id).fileName, u"A.JPG"_s);
    const LibrarySummary summary = open(Access::Read)->summary().value();
    EXPECT_FALSE(summary.writable);
    EXPECT_TRUE(summary.whyReadOnly.contains(u"(schema 110.207)"_s))
        << summary.whyReadOnly.toStdString();
}

TEST_F(KindsOfLibraries, aLibraryThatIPhotoMayHaveOpenSaysSoUntilItIsAcceptedAsItIs)
{
    const qint64 id = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    m_builder.edit([](Writer& writer) {
        writer.connection.database().exec(
            "UPDATE RKAdminData SET propertyValue='0' WHERE propertyArea='database' AND"
            " propertyName='closedClean'");
    });
    const LibrarySummary summary = open(Access::Read)->summary().value();
    EXPECT_FALSE(summary.writable);
    EXPECT_TRUE(summary.whyReadOnly.contains(u"or has it open now"_s));
    const auto refused = PhotoLibrary::open(m_builder.package(), {Access::Write, false});
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error().code, ErrorCode::NotClosed);
    EXPECT_EQ(refused.error().message, summary.whyReadOnly);
    OpenOptions accepting;
    accepting.access = Access::Write;
    accepting.afterCrash = true;
    EXPECT_TRUE(PhotoLibrary::open(m_builder.package(), accepting).ok());
    EXPECT_EQ(shown(id).id, id);
}

TEST_F(KindsOfLibraries, anOlderSchemaThatLacksColumnsIsReadAllTheSame)
{
    const qint64 id = m_builder.addRaw(u"A.dng"_s, u"Trip"_s);
    static_cast<void>(m_builder.addAlbum(u"Best"_s, {id}));
    m_builder.edit([](Writer& writer) {
        writer.connection.database().exec(
            "UPDATE RKAdminData SET propertyValue='122' WHERE propertyArea='database' AND"
            " propertyName='versionMinor'");
    });
    {
        // As public readers know the databases of Aperture 3.1.
        const auto connection = Connection::open(m_builder.package(), Connection::Mode::Write);
        ASSERT_TRUE(connection.ok());
        for (const char* sql : {"ALTER TABLE RKFolder DROP COLUMN minImageTimeZoneName",
                                "ALTER TABLE RKFolder DROP COLUMN maxImageTimeZoneName",
                                "DROP INDEX RKMaster_burstUuid_index",
                                "ALTER TABLE RKMaster DROP COLUMN burstUuid",
                                "ALTER TABLE RKVersionFaceContent DROP COLUMN faceRectLeft"}) {
            connection.value()->database().exec(sql);
        }
    }
    const PhotoFacts facts = shown(id);
    EXPECT_EQ(facts.fileName, u"A.dng"_s);
    EXPECT_EQ(facts.albums, QStringList{u"Best"_s});
    const auto library = open(Access::Read);
    EXPECT_EQ(photo(*library, id)->properties()->value(u"originalPath"_s).toString(),
              facts.originalPath);
    EXPECT_TRUE(library->verify().ok());
    const LibrarySummary summary = library->summary().value();
    EXPECT_FALSE(summary.writable);
    EXPECT_TRUE(summary.whyReadOnly.contains(u"(schema 110.122)"_s));
}

TEST_F(KindsOfLibraries, aMinorVersionThatIsNotBorneOutByTheColumnsIsNotWrittenEither)
{
    static_cast<void>(m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s));
    {
        const auto connection = Connection::open(m_builder.package(), Connection::Mode::Write);
        connection.value()->database().exec(
            "ALTER TABLE RKFolder DROP COLUMN minImageTimeZoneName");
    }
    const auto refused = PhotoLibrary::open(m_builder.package(), {Access::Write, false});
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error().code, ErrorCode::Unsupported);
    EXPECT_TRUE(refused.error().message.contains(u"RKFolder"_s))
        << refused.error().message.toStdString();
}

TEST_F(KindsOfLibraries, aLibraryOfAnotherUserIsReadAndSaysWhyItIsNotWritten)
{
    const qint64 id = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    constexpr mode_t kOpenToAll = 0755;
    constexpr mode_t kClosed = 0555; // what a user without root's rights can do of it
    const bool isRoot = ::geteuid() == 0;
    const WithPermissions above(m_folder.path(), kOpenToAll);
    const WithPermissions own(m_builder.package(), isRoot ? kOpenToAll : kClosed);
    const OrdinaryUser user({});
    EXPECT_EQ(shown(id).id, id);
    expectReadOnly(u"Permission denied"_s);
}

TEST_F(KindsOfLibraries, aLibraryOnAReadOnlyDiskIsReadAndSaysWhyItIsNotWritten)
{
    const qint64 id = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
    const ReadOnlyMount mount(m_builder.package());
    std::optional<OrdinaryUser> user;
    std::optional<WithPermissions> closed;
    if (!mount.isMounted()) { // only root may, and not everywhere
        user.emplace(QStringList{m_folder.path()});
        closed.emplace(m_builder.package(), 0555);
    }
    EXPECT_EQ(shown(id).id, id);
    EXPECT_TRUE(open(Access::Read)->verify().ok());
    expectReadOnly(mount.isMounted() ? u"Read-only file system"_s : u"Permission denied"_s);
}
