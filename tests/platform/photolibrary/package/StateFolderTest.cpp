#include "StateFolder.h"

#include "ChildProcess.h"
#include "OrdinaryUser.h"
#include "QtPrinters.h"
#include "WritableLibrary.h"

#include <QDirIterator>

using namespace Qt::StringLiterals;

namespace
{

/// A variable of the environment with another value, or with none, for as long as this lives.
class WithVariable final
{
public:
    WithVariable(const char* name, const QByteArray& value)
        : m_name(name)
        , m_wasSet(qEnvironmentVariableIsSet(name))
        , m_before(qgetenv(name))
    {
        set(!value.isNull(), value);
    }

    ~WithVariable() { set(m_wasSet, m_before); }

    WithVariable(const WithVariable&) = delete;
    WithVariable& operator=(const WithVariable&) = delete;

private:
    void set(bool isSet, const QByteArray& value) const
    {
        if (isSet) {
            qputenv(m_name, value);
        } else {
            qunsetenv(m_name);
        }
    }

    const char* m_name;
    bool m_wasSet;
    QByteArray m_before;
};

} // namespace

TEST(StateFolder, aCopyAtAnotherPlaceIsAnotherLibraryAndNoUuidLeadsOut)
{
    const QString uuid = u"UD3w1wufQy6UcuzQ31ZF1w"_s;
    const QString key = StateFolder::keyOf(u"/pictures/A.photolibrary"_s, uuid);
    EXPECT_EQ(StateFolder::keyOf(u"/pictures/A.photolibrary"_s, uuid), key);
    EXPECT_NE(StateFolder::keyOf(u"/pictures/B.photolibrary"_s, uuid), key);
    EXPECT_NE(StateFolder::keyOf(u"/pictures/A.photolibrary"_s, u"another"_s), key);
    const QString hostile = StateFolder::keyOf(u"/a"_s, u"../../%/\n"_s);
    EXPECT_FALSE(hostile.contains(u'/')) << hostile.toStdString();
    EXPECT_FALSE(hostile.contains(u'.')) << hostile.toStdString();
}

/// Opening a library for writing, with a folder of its own for lock, journal and backups.
class StateOfALibrary : public WritableLibrary
{
protected:
    [[nodiscard]] QString state() const { return folder() + u"/state"_s; }

    [[nodiscard]] QByteArray stateVariable() const { return QFile::encodeName(state()); }

    /// The message of an opening for writing that is refused for lack of permission.
    [[nodiscard]] QString refusal() const
    {
        const auto library = PhotoLibrary::open(package(), {Access::Write, false});
        EXPECT_FALSE(library.ok());
        EXPECT_EQ(library.ok() ? ErrorCode::Internal : library.error().code,
                  ErrorCode::NotWritable);
        return library.ok() ? QString() : library.error().message;
    }

    /// Path of the library's lock or journal.
    [[nodiscard]] QString fileNamed(const QString& name) const
    {
        QDirIterator walk(state(), {name}, QDir::Files, QDirIterator::Subdirectories);
        return walk.hasNext() ? walk.next() : QString();
    }

    [[nodiscard]] static QByteArray content(const QString& path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    [[nodiscard]] QString unusable(const QString& what) const
    {
        return u"To write to the library \"%1\" this program keeps a lock and a journal outside of "
               "it, which it cannot: Could not %2: Permission denied. Change the permissions there "
               "or make room, or set XDG_STATE_HOME to another folder that you may write to."_s.arg(
                   package(), what);
    }
};

TEST_F(StateOfALibrary, withoutAHomeItIsOnlyReadUnlessAnotherPlaceIsNamed)
{
    const WithVariable home("HOME", QByteArray());
    for (const QByteArray& place : {QByteArray(), QByteArray(""), QByteArray("not/absolute")}) {
        const WithVariable none("XDG_STATE_HOME", place);
        EXPECT_EQ(
            refusal(),
            u"To write to the library \"%1\" this program keeps a lock, a journal and backups "
            "in your home folder, but HOME is not set: set it, or set XDG_STATE_HOME to a "
            "folder that you may write to."_s.arg(package()));
        EXPECT_NE(open(Access::Read), nullptr);
    }
    const WithVariable named("XDG_STATE_HOME", stateVariable());
    EXPECT_NE(open(Access::Write), nullptr);
}

TEST_F(StateOfALibrary, whereItCannotBeKeptTheFolderOrFileIsNamedWithTheRemedy)
{
    ASSERT_TRUE(QDir().mkpath(state()));
    const WithVariable named("XDG_STATE_HOME", stateVariable());
    const OrdinaryUser user({folder()});
    {
        const WithPermissions closed(state(), 0555);
        EXPECT_EQ(refusal(), unusable(u"make the folder \"%1/corvane\""_s.arg(state())));
        EXPECT_NE(open(Access::Read), nullptr) << "a reader needs none";
    }
    EXPECT_TRUE(open(Access::Write)->close().ok());
    for (const QString& name : {u"lock"_s, u"journal"_s}) {
        const QString file = fileNamed(name);
        ASSERT_FALSE(file.isEmpty());
        const WithPermissions closed(file, 0444);
        EXPECT_EQ(refusal(), unusable(u"write \"%1\""_s.arg(file)));
    }
    EXPECT_NE(open(Access::Write), nullptr);
}

TEST_F(StateOfALibrary, nothingOfItLiesInThePackage)
{
    const WithVariable named("XDG_STATE_HOME", stateVariable());
    import(*open(Access::Write), makePicture(u"IMG_1.JPG"_s));
    for (const QString& name : {u"lock"_s, u"journal"_s}) {
        EXPECT_TRUE(fileNamed(name).startsWith(state() + u"/corvane/libraries/"_s));
    }
    EXPECT_EQ(QDir(state() + u"/corvane"_s).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              (QStringList{u"backups"_s, u"libraries"_s}));
    QDirIterator walk(
        package(), {u"lock"_s, u"journal"_s}, QDir::Files, QDirIterator::Subdirectories);
    EXPECT_FALSE(walk.hasNext());
}

TEST_F(StateOfALibrary, sidecarsThatStillCannotFollowAreToldAndStopNoWriter)
{
    {
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        import(*library, makePicture(u"IMG_1.JPG"_s));
        ASSERT_TRUE(library->close().ok());
    }
    const OrdinaryUser user({folder()});
    ChildProcess child([this](ChildProcess&) {
        const auto library = open(Access::Write);
        const AlbumPtr all = application(*library)->photoLibraryAlbum();
        all->photos().first()->setRating(4);
        ChildProcess::crash();
    });
    ASSERT_TRUE(child.crashed());
    const QString sidecar = package() + u'/' + versionSidecars().last();
    const QString sidecars = sidecar.section(u'/', 0, -2);
    const QByteArray lagging = content(sidecar);
    {
        const WithPermissions closed(sidecars, 0555);
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        const QString told = library->warnings().join(u'\n');
        EXPECT_TRUE(told.contains(sidecars)) << told.toStdString();
        EXPECT_TRUE(told.contains(u"Permission denied"_s)) << told.toStdString();
        EXPECT_TRUE(told.contains(
            u"Nothing is lost: the photos are safe in the databases of the library \"%1\""_s.arg(
                package())))
            << told.toStdString();
    }
    EXPECT_EQ(content(sidecar), lagging);
    EXPECT_TRUE(open(Access::Write)->close().ok());
    EXPECT_NE(content(sidecar), lagging);
    expectSound();
}
