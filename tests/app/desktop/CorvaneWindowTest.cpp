#include "DesktopFixture.h"
#include "FixedSizeSheet.h"
#include "Mnemonics.h"
#include "WholeTexts.h"

#include <QLabel>
#include <QMessageBox>
#include <QTextDocument>

using namespace Qt::StringLiterals;

namespace
{

/// The window as a whole: labels, buttons, switches, forecast, activation and closing.
class CorvaneWindowTest : public DesktopFixture
{
protected:
    /// As after opening a library and selecting one RAW photo.
    static ForecastSelection oneRawPhoto()
    {
        ForecastSelection selection;
        selection.libraryOpen = true;
        selection.originals.raw = 1;
        selection.displayed.raw = 1;
        return selection;
    }

    /// Keywords are there and nothing is selected: a scan ends by itself, with an alert.
    void letScansEndSoon()
    {
        m_application.setKeywords({u"Corvane Original"_s, u"Corvane Processed"_s});
    }

    [[nodiscard]] QString textOf(const QString& label) { return child<QLabel>(label).text(); }
};

TEST_F(CorvaneWindowTest, isNamedAsTheProgram)
{
    EXPECT_EQ(showWindow().windowTitle(), u"Corvane For iPhoto"_s);
}

TEST_F(CorvaneWindowTest, nothingIsCutOffOnASmallScreen)
{
    CorvaneWindow& window = showWindow();
    EXPECT_LE(window.height(), 600) << "as it comes up";
    m_controller->statusLabel().setStringValue(u"Propagating metadata"_s);
    m_controller->countLabel().setStringValue(u"IMG_"_s + QString(200, u'1') + u".CR2"_s);
    m_controller->setTimeRemaining(u"100:02:10"_s);
    window.resize(900, 600);
    settle();
    EXPECT_EQ(window.size(), QSize(900, 600));
    expectNothingIsCutOff(window);
}

TEST_F(CorvaneWindowTest, nothingIsCutOffInTheFixedSizeSheet)
{
    showWindow();
    click(u"outputSize4"_s);
    settle();
    FixedSizeSheet& sheet = m_window->fixedSizeSheet();
    ASSERT_TRUE(sheet.isVisible());
    EXPECT_LE(sheet.width(), 900);
    EXPECT_LE(sheet.height(), 600);
    expectNothingIsCutOff(sheet);
}

TEST_F(CorvaneWindowTest, everyControlHasANameForThoseWhoDoNotSeeIt)
{
    showWindow();
    for (const QString& name : {u"selectionScanButton"_s,
                                u"moreInfoButton"_s,
                                u"techSupport"_s,
                                u"compressionFactor"_s,
                                u"outputSize0"_s,
                                u"outputSize4"_s,
                                u"AlbumEnabled"_s,
                                u"TagEnabled"_s,
                                u"TrashEnabled"_s,
                                u"ProcessingOption"_s,
                                u"progressIndicator"_s,
                                u"pressForecast"_s,
                                u"fixedLengthTextField"_s,
                                u"fixedWidthTextField"_s,
                                u"longLocked"_s,
                                u"shortLocked"_s}) {
        EXPECT_FALSE(child<QWidget>(name).accessibleName().isEmpty()) << qPrintable(name);
    }
}

TEST_F(CorvaneWindowTest, noTwoControlsShareAMnemonic)
{
    QStringList letters = mnemonicsOf(showWindow());
    EXPECT_EQ(letters.size(), 13);
    EXPECT_EQ(letters.removeDuplicates(), 0);
    click(u"outputSize4"_s);
    QStringList ofTheSheet = mnemonicsOf(m_window->fixedSizeSheet());
    EXPECT_EQ(ofTheSheet.size(), 3) << "two locks and the closing button";
    EXPECT_EQ(ofTheSheet.removeDuplicates(), 0);
}

TEST_F(CorvaneWindowTest, labelsSetFromAWorkerAreShown)
{
    showWindow();
    EXPECT_EQ(textOf(u"statusLabel"_s), u"Ready"_s);
    EXPECT_EQ(textOf(u"timeRemaining"_s), u"--:--:--"_s);
    runOnWorker([this] {
        m_controller->statusLabel().setStringValue(u"Converting"_s);
        m_controller->countLabel().setStringValue(u"<b>IMG_1.CR2"_s);
        m_controller->selectedLabel().setStringValue(u"12"_s);
        m_controller->setTimeRemaining(u"00:02:10"_s);
    });
    settle();
    EXPECT_EQ(textOf(u"statusLabel"_s), u"Converting"_s);
    EXPECT_EQ(textOf(u"countLabel"_s), u"<b>IMG_1.CR2"_s);
    EXPECT_EQ(child<QLabel>(u"countLabel"_s).textFormat(), Qt::PlainText);
    EXPECT_EQ(textOf(u"selectedLabel"_s), u"12"_s);
    EXPECT_EQ(textOf(u"timeRemaining"_s), u"00:02:10"_s);
}

TEST_F(CorvaneWindowTest, theScanButtonFollowsTheEngine)
{
    showWindow();
    EXPECT_TRUE(button(u"selectionScanButton"_s).isEnabled());
    for (const bool enabled : {false, true}) {
        runOnWorker([&] { m_controller->selectionScanButton().setEnabled(enabled); });
        settle();
        EXPECT_EQ(button(u"selectionScanButton"_s).isEnabled(), enabled);
    }
}

TEST_F(CorvaneWindowTest, pressingTheScanButtonStartsAScan)
{
    letScansEndSoon();
    showWindow();
    click(u"selectionScanButton"_s);
    EXPECT_TRUE(m_controller->isScanning());
    EXPECT_TRUE(forecast().startsWith(u"A scan is running."_s)) << qPrintable(forecast());
    waitForScans();
    settle();
    EXPECT_TRUE(button(u"selectionScanButton"_s).isEnabled());
    EXPECT_FALSE(forecast().contains(u"A scan is running"_s));
}

TEST_F(CorvaneWindowTest, settingsStayUsableWhileAScanRuns)
{
    letScansEndSoon();
    showWindow();
    click(u"selectionScanButton"_s);
    ASSERT_TRUE(m_controller->isScanning());
    for (const QString& name : {u"compressionFactor"_s, u"outputSize2"_s, u"TrashEnabled"_s}) {
        EXPECT_TRUE(child<QWidget>(name).isEnabled()) << qPrintable(name);
    }
    click(u"TrashEnabled"_s);
    EXPECT_TRUE(m_defaults.boolValue(u"TrashEnabled"_s));
    waitForScans();
}

TEST_F(CorvaneWindowTest, switchesAreBoundBothWays)
{
    showWindow();
    for (const QString& key :
         {u"AlbumEnabled"_s, u"TagEnabled"_s, u"TrashEnabled"_s, u"ProcessingOption"_s}) {
        SCOPED_TRACE(key.toStdString());
        const bool before = m_defaults.boolValue(key);
        EXPECT_EQ(button(key).isChecked(), before);
        click(key);
        EXPECT_EQ(button(key).isChecked(), !before);
        EXPECT_EQ(m_defaults.boolValue(key), !before);
        m_defaults.setBool(key, before);
        EXPECT_EQ(button(key).isChecked(), before);
        QTest::keyClick(&button(key), Qt::Key_Space);
        EXPECT_EQ(m_defaults.boolValue(key), !before);
        runOnWorker([&] { m_defaults.setBool(key, before); });
        settle();
        EXPECT_EQ(button(key).isChecked(), before);
    }
}

TEST_F(CorvaneWindowTest, thePagesAreOpenedByTheirButtons)
{
    showWindow();
    click(u"moreInfoButton"_s);
    click(u"techSupport"_s);
    EXPECT_EQ(m_workspace.opened(),
              (QList<QUrl>{QUrl(u"https://corvane.example/iphoto"_s),
                           QUrl(u"https://corvane.example/iphoto/support"_s)}));
    EXPECT_EQ(m_window->findChild<QMessageBox*>(), nullptr);
}

TEST_F(CorvaneWindowTest, aPageThatCannotBeOpenedIsToldWithItsAddress)
{
    showWindow();
    m_workspace.setCanOpen(false);
    click(u"techSupport"_s);
    const auto* const alert = m_window->findChild<QMessageBox*>();
    ASSERT_NE(alert, nullptr);
    EXPECT_TRUE(alert->isVisible());
    EXPECT_EQ(alert->text(), u"The page could not be opened"_s);
    EXPECT_TRUE(alert->informativeText().contains(u"https://corvane.example/iphoto/support"_s));
}

TEST_F(CorvaneWindowTest, activationRefreshesTheCountOfSelectedPhotos)
{
    m_application.selectPhotos({m_application.addPhoto({}), m_application.addPhoto({})});
    CorvaneWindow& window = showWindow();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    settle();
    EXPECT_EQ(textOf(u"selectedLabel"_s), u"2"_s);
}

TEST_F(CorvaneWindowTest, closingIsAskedFor)
{
    CorvaneWindow& window = showWindow();
    bool mayClose = false;
    int asked = 0;
    window.setMayClose([&] {
        ++asked;
        return mayClose;
    });
    EXPECT_FALSE(window.close());
    EXPECT_TRUE(window.isVisible());
    mayClose = true;
    EXPECT_TRUE(window.close());
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(asked, 2);
    window.show();
    window.setMayClose({});
    EXPECT_TRUE(window.close());
}

TEST_F(CorvaneWindowTest, theForecastFollowsSelectionAndSettings)
{
    CorvaneWindow& window = showWindow();
    EXPECT_TRUE(forecast().startsWith(u"Open a library first"_s));
    window.setSelectionFacts(oneRawPhoto());
    EXPECT_TRUE(forecast().contains(u"Converts 1 RAW photo"_s));
    EXPECT_TRUE(forecast().contains(u"quality 0.80 in full size"_s));
    click(u"outputSize2"_s);
    EXPECT_TRUE(forecast().contains(u"sides of 50 %"_s));
    m_controller->setCompressionFactor(0.5);
    EXPECT_TRUE(forecast().contains(u"quality 0.50"_s));
    click(u"TrashEnabled"_s);
    EXPECT_TRUE(forecast().contains(u"The photos leave their events"_s));
    click(u"TagEnabled"_s);
    EXPECT_TRUE(forecast().contains(u"Marks neither"_s));
}

TEST_F(CorvaneWindowTest, theForecastTellsTheTurnsOfFilingByEvent)
{
    letScansEndSoon();
    showWindow().setSelectionFacts(oneRawPhoto());
    click(u"AlbumEnabled"_s);
    EXPECT_TRUE(forecast().contains(u"files the copies by event"_s));
    m_controller->setTheLibrary(u"/photos/My.photolibrary"_s);
    m_window->updateForecast();
    EXPECT_TRUE(forecast().contains(u"“Corvane For iPhoto” this time"_s));
    click(u"selectionScanButton"_s);
    waitForScans();
    settle();
    EXPECT_EQ(m_controller->theLibrary(), std::nullopt);
    EXPECT_TRUE(forecast().contains(u"files the copies by event"_s));
}

TEST_F(CorvaneWindowTest, aStoredFixedSizeIsNotInEffectUntilItIsClicked)
{
    m_defaults.setInteger(u"JpegOutputSize"_s, 4);
    showWindow().setSelectionFacts(oneRawPhoto());
    EXPECT_TRUE(button(u"outputSize4"_s).isChecked());
    EXPECT_TRUE(forecast().startsWith(u"Choose an output size"_s)) << qPrintable(forecast());
    click(u"outputSize4"_s);
    EXPECT_TRUE(m_controller->fixedSize());
    EXPECT_TRUE(m_window->fixedSizeSheet().isVisible());
    EXPECT_TRUE(forecast().contains(u"long side of at most 1600 pixels"_s));
}

} // namespace
