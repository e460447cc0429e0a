#include "ControllerFixture.h"
#include "Directories.h"

using namespace Qt::StringLiterals;

namespace
{

/// The two prompts for read access.
class CorvaneAppDelegateAccessTest : public ControllerFixture
{
protected:
    void SetUp() override
    {
        // Nothing is selected, so a scan ends by itself soon after its start.
        m_application.setKeywords({u"Corvane Original"_s, u"Corvane Processed"_s});
        m_defaults.setBool(u"AlbumEnabled"_s, true);
        wake();
    }

    /// Runs one scan and answers the library that it was given.
    std::optional<QString> scan()
    {
        m_controller->selectionScan(nullptr);
        std::optional<QString> library = m_controller->theLibrary();
        waitForScans();
        EXPECT_EQ(m_controller->theLibrary(), library);
        return library;
    }
};

TEST_F(CorvaneAppDelegateAccessTest, theLibraryPromptSaysAndTakesWhatItShould)
{
    m_presenter.answers = {{kPanelOk, {u"/photos/My.photolibrary"_s, u"/photos/Other"_s}}};
    EXPECT_EQ(scan(), u"/photos/My.photolibrary"_s);
    ASSERT_EQ(m_presenter.panels().size(), 1);
    const OpenPanel& panel = m_presenter.panels().first();
    EXPECT_EQ(panel.title, u"Read Access Required"_s);
    EXPECT_EQ(
        panel.message,
        u"Corvane requests read access to your iPhoto Library in order to create albums for image events.\nSelect it and hit the Open button."_s);
    EXPECT_EQ(panel.directory, Directories::pictures());
    EXPECT_TRUE(panel.canChooseFiles);
    EXPECT_FALSE(panel.canChooseDirectories);
    EXPECT_EQ(panel.allowedFileTypes, (QStringList{u"aplibrary"_s, u"photolibrary"_s, u""_s}));
}

TEST_F(CorvaneAppDelegateAccessTest, thePromptComesAfterTheEngineIsMadeAndBeforeItRuns)
{
    m_presenter.answers = {{kPanelOk, {u"/library"_s}}};
    const qsizetype askedBefore = m_application.identifiersAsked().size();
    m_presenter.whilePanel = [&](const OpenPanel&) {
        EXPECT_GT(m_application.identifiersAsked().size(), askedBefore);
        EXPECT_FALSE(m_controller->isScanning());
        EXPECT_TRUE(m_controller->selectionScanButton().isEnabled());
    };
    scan();
    EXPECT_EQ(m_presenter.panels().size(), 1);
}

TEST_F(CorvaneAppDelegateAccessTest, everySecondScanRunsWithoutALibraryAndWithoutAsking)
{
    m_presenter.answers = {{kPanelOk, {u"/first"_s}}, {kPanelOk, {u"/second"_s}}};
    EXPECT_EQ(scan(), u"/first"_s);
    EXPECT_EQ(scan(), std::nullopt);
    EXPECT_EQ(m_presenter.panels().size(), 1);
    EXPECT_EQ(scan(), u"/second"_s);
    EXPECT_EQ(m_presenter.panels().size(), 2);
    EXPECT_EQ(scan(), std::nullopt);
}

TEST_F(CorvaneAppDelegateAccessTest, withAlbumFilingOffThereIsNeverALibrary)
{
    m_presenter.answers = {{kPanelOk, {u"/first"_s}}};
    EXPECT_EQ(scan(), u"/first"_s);
    m_defaults.setBool(u"AlbumEnabled"_s, false);
    EXPECT_EQ(scan(), std::nullopt);
    EXPECT_EQ(scan(), std::nullopt);
    EXPECT_EQ(m_presenter.panels().size(), 1);
}

TEST_F(CorvaneAppDelegateAccessTest, aCancelledLibraryPromptLetsTheScanStartWithout)
{
    m_presenter.answers = {
        {kPanelCancel, {u"/ignored"_s}}, {2, {u"/ignored"_s}}, {kPanelOk, {u"/third"_s}}};
    EXPECT_EQ(scan(), std::nullopt);
    EXPECT_EQ(scan(), std::nullopt) << "asked again, since none is known; only 1 is OK";
    EXPECT_EQ(scan(), u"/third"_s);
    EXPECT_EQ(m_presenter.sheets().size(), 3) << "all three ran";
    EXPECT_TRUE(m_log.entries().filter(u"NSOpenPanel"_s).isEmpty());
}

TEST_F(CorvaneAppDelegateAccessTest, anAnswerWithNothingPickedIsNoLibrary)
{
    m_presenter.answers = {{kPanelOk, {}}};
    EXPECT_EQ(scan(), std::nullopt);
}

TEST_F(CorvaneAppDelegateAccessTest, theFirstFilePromptHasTheShortWording)
{
    m_presenter.answers = {{kPanelOk, {}}};
    m_controller->userSelectedFiles(u"/photos/My.photolibrary"_s);
    ASSERT_EQ(m_presenter.panels().size(), 1);
    const OpenPanel& panel = m_presenter.panels().first();
    EXPECT_EQ(panel.title, u"Read Access Required"_s);
    EXPECT_EQ(
        panel.message,
        u"Corvane Requires read access to My.photolibrary.\nPlease select it or it's parent folder and hit the Open button."_s);
    EXPECT_EQ(panel.directory, u"/photos"_s);
    EXPECT_TRUE(panel.canChooseFiles);
    EXPECT_TRUE(panel.canChooseDirectories);
    EXPECT_TRUE(panel.allowedFileTypes.isEmpty());
    EXPECT_EQ(m_controller->userSelectedFilesCount(), 1U);
}

TEST_F(CorvaneAppDelegateAccessTest, laterFilePromptsSpeakOfReferencedImages)
{
    m_presenter.answers = {{kPanelOk, {}}, {kPanelOk, {}}, {kPanelOk, {}}};
    for (int prompt = 0; prompt < 3; ++prompt) {
        m_controller->userSelectedFiles(u"/outside/100%1 %@.cr2"_s);
    }
    for (int prompt = 1; prompt < 3; ++prompt) {
        EXPECT_EQ(
            m_presenter.panels().at(prompt).message,
            u"Corvane Requires read access to 100%1 %@.cr2.\nThis is due to externally referenced images in your library.  To avoid being asked again please select the parent folder for all your externally referenced pictures."_s);
    }
    EXPECT_EQ(m_controller->userSelectedFilesCount(), 3U);
}

TEST_F(CorvaneAppDelegateAccessTest, aFilePromptThatIsDeclinedComesAgainAtOnceAndIsLogged)
{
    m_presenter.answers = {{kPanelCancel, {}}, {kPanelCancel, {}}, {-7, {}}, {kPanelOk, {}}};
    m_controller->userSelectedFiles(u"/outside/a.cr2"_s);
    EXPECT_EQ(m_presenter.panels().size(), 4);
    for (const OpenPanel& panel : m_presenter.panels()) {
        EXPECT_EQ(panel.message, m_presenter.panels().first().message) << "the same panel";
    }
    EXPECT_EQ(m_log.entries(),
              (QStringList{u"NSOpenPanel result = 0"_s,
                           u"NSOpenPanel result = 0"_s,
                           u"NSOpenPanel result = -7"_s}));
    EXPECT_EQ(m_controller->userSelectedFilesCount(), 1U) << "only the answered one counts";
}

TEST_F(CorvaneAppDelegateAccessTest, theItemIsTheLastPartOfThePath)
{
    const QList<std::tuple<QString, QString, QString>> cases{
        {u"/a/b/"_s, u"/a"_s, u"b"_s}, {u"/a"_s, u"/"_s, u"a"_s}, {u"/"_s, u"/"_s, u"/"_s}};
    for (const auto& [path, folder, name] : cases) {
        m_presenter.answers = {{kPanelOk, {}}};
        m_controller->userSelectedFiles(path);
        EXPECT_EQ(m_presenter.panels().last().directory, folder);
        EXPECT_TRUE(m_presenter.panels().last().message.startsWith(
            u"Corvane Requires read access to %1.\n"_s.arg(name)));
    }
}

TEST_F(CorvaneAppDelegateAccessTest, filePromptsLeaveTheLibraryAlone)
{
    m_presenter.answers = {{kPanelOk, {u"/picked"_s}}};
    m_controller->userSelectedFiles(u"/outside/a.cr2"_s);
    EXPECT_EQ(m_controller->theLibrary(), std::nullopt);
}

} // namespace
