#include "Directories.h"
#include "ProgramFixture.h"
#include "RecentLibraries.h"
#include "UserDefaults.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace
{

/// What the program does with its windows when it starts.
class DesktopProgramStartTest : public ProgramFixture
{
protected:
    /// Paths of the libraries that the welcome page offers.
    [[nodiscard]] QStringList offered()
    {
        QStringList paths;
        const auto buttons = m_program->libraryWindow().findChildren<QAbstractButton*>(u"offer"_s);
        for (const QAbstractButton* const button : buttons) {
            paths += button->toolTip();
        }
        return paths;
    }
};

} // namespace

TEST_F(DesktopProgramStartTest, librariesOpenedBeforeAndThoseAmongThePicturesAreOffered)
{
    ASSERT_TRUE(QDir().mkpath(Directories::pictures()));
    const QTemporaryDir folder(Directories::pictures() + u"/event-XXXXXX"_s);
    const QString pictured = folder.filePath(u"Other.photolibrary"_s);
    copyLibrary(library(), pictured);
    m_program.reset();
    {
        UserDefaults settings(m_folder.filePath(u"settings.plist"_s));
        RecentLibraries recent(settings);
        recent.add(pictured);
        recent.add(library());
        recent.add(m_folder.filePath(u"Gone.photolibrary"_s));
    }
    makeProgram();
    m_program->start({});
    EXPECT_TRUE(m_program->libraryWindow().isVisible());
    const QStringList wanted{library(), pictured};
    EXPECT_TRUE(waitUntil([this, &wanted] { return offered() == wanted; }))
        << offered().join(u' ').toStdString();
    EXPECT_FALSE(m_program->session().isOpen()) << "only offered";
}

TEST_F(DesktopProgramStartTest, aGivenLibraryIsOpenedAndNoneIsOffered)
{
    m_program->start(library());
    ASSERT_TRUE(waitUntil([this] { return m_program->session().isOpen() && isIdle(); }));
    EXPECT_EQ(offered(), QStringList());
}
