#include "CorvaneAppDelegate.h"

#include "ControllerFixture.h"

#include <stdexcept>

using namespace Qt::StringLiterals;

namespace
{

/// Start-up and what the application tells its delegate.
class CorvaneAppDelegateTest : public ControllerFixture
{
};

TEST_F(CorvaneAppDelegateTest, theFallbacksAreRegisteredFromTheBundle)
{
    make();
    EXPECT_EQ(m_defaults.doubleValue(u"JpegQuality"_s), 0.8);
    EXPECT_EQ(m_defaults.integerValue(u"LongSide"_s), 1600);
    EXPECT_TRUE(m_defaults.boolValue(u"ProcessingOption"_s));
    EXPECT_TRUE(m_log.entries().isEmpty());
}

TEST_F(CorvaneAppDelegateTest, aBundleWithoutFallbacksIsLoggedAndLeavesZeros)
{
    m_bundle = Bundle(m_folder.path());
    CorvaneAppDelegate& controller = make();
    EXPECT_EQ(m_log.entries().size(), 1);
    controller.awakeFromNib();
    EXPECT_EQ(controller.compressionFactor(), 0.0);
    EXPECT_EQ(controller.shortSize(), QVariant());
}

TEST_F(CorvaneAppDelegateTest, itStartsWithNothingKnownAndNothingRunning)
{
    const CorvaneAppDelegate& controller = make();
    EXPECT_EQ(controller.userSelectedFilesCount(), 0U);
    EXPECT_EQ(controller.theLibrary(), std::nullopt);
    EXPECT_EQ(controller.timeRemaining(), u"--:--:--"_s);
    EXPECT_FALSE(controller.nowProcessing());
    EXPECT_FALSE(controller.cancelled());
    EXPECT_FALSE(controller.isScanning());
    EXPECT_FALSE(CorvaneAppDelegate::cancelledOfClass());
}

TEST_F(CorvaneAppDelegateTest, theStoredOutputSizeCountsAlreadyWhenItIsMade)
{
    const QList<std::pair<int, float>> factors{
        {0, 1.0F}, {1, 0.75F}, {2, 0.5F}, {3, 0.25F}, {7, 1.0F}, {-1, 1.0F}, {5, 1.0F}};
    for (const auto& [stored, factor] : factors) {
        m_defaults.setInteger(u"JpegOutputSize"_s, stored);
        const CorvaneAppDelegate& controller = make();
        EXPECT_EQ(controller.scaleFactor(), factor) << stored;
        EXPECT_FALSE(controller.fixedSize()) << stored;
    }
}

TEST_F(CorvaneAppDelegateTest, aStoredFixedSizeIsOnBeforeAndOffAfterAwakening)
{
    m_defaults.setInteger(u"JpegOutputSize"_s, 4);
    CorvaneAppDelegate& controller = make();
    EXPECT_TRUE(controller.fixedSize());
    EXPECT_EQ(controller.scaleFactor(), 0.0F);
    controller.awakeFromNib();
    EXPECT_FALSE(controller.fixedSize());
    EXPECT_EQ(controller.scaleFactor(), 0.0F) << "until the user touches the control";
}

TEST_F(CorvaneAppDelegateTest, makingItStoresNothing)
{
    make();
    EXPECT_FALSE(QFile::exists(m_defaults.filePath()));
}

TEST_F(CorvaneAppDelegateTest, launchingLooksForCrashesBeforeAnythingElse)
{
    bool looked = false;
    m_checkForNewCrashes = [&] {
        looked = true;
        EXPECT_FALSE(m_notifications.hasDelegate());
    };
    CorvaneAppDelegate& controller = wake();
    EXPECT_FALSE(looked);
    controller.applicationDidFinishLaunching();
    EXPECT_TRUE(looked);
    EXPECT_TRUE(m_notifications.hasDelegate());
}

TEST_F(CorvaneAppDelegateTest, whatLookingForCrashesRaisesIsLoggedAndTheLaunchGoesOn)
{
    m_checkForNewCrashes = [] { throw std::runtime_error("Missing address: say where to"); };
    wake().applicationDidFinishLaunching();
    EXPECT_EQ(m_log.entries(), QStringList{u"Missing address: say where to"_s});
    EXPECT_TRUE(m_notifications.hasDelegate());
}

TEST_F(CorvaneAppDelegateTest, notificationsAreAlwaysPresentedWhileItLives)
{
    wake().applicationDidFinishLaunching();
    m_controller->setNowProcessing(true);
    EXPECT_TRUE(m_controller->userNotificationCenterShouldPresentNotification());
    m_notifications.deliver({u"Conversion Complete"_s, QString(), true});
    EXPECT_EQ(m_notifications.delivered().size(), 1);
    m_controller.reset();
    EXPECT_FALSE(m_notifications.hasDelegate());
}

TEST_F(CorvaneAppDelegateTest, activationShowsTheNumberOfSelectedPhotos)
{
    CorvaneAppDelegate& controller = wake();
    m_application.selectPhotos({m_application.addPhoto({}), m_application.addPhoto({})});
    controller.applicationDidBecomeActive();
    EXPECT_EQ(controller.selectedLabel().stringValue(), u"2"_s);
}

TEST_F(CorvaneAppDelegateTest, activationDuringAScanLeavesTheLabelAsItIs)
{
    CorvaneAppDelegate& controller = wake();
    controller.applicationDidBecomeActive();
    ASSERT_EQ(controller.selectedLabel().stringValue(), u"0"_s);
    m_application.selectPhotos({m_application.addPhoto({})});
    m_application.journal().clear();
    controller.setNowProcessing(true);
    controller.applicationDidBecomeActive();
    EXPECT_EQ(controller.selectedLabel().stringValue(), u"0"_s);
    EXPECT_TRUE(m_application.calls().isEmpty());
    controller.setNowProcessing(false);
    controller.applicationDidBecomeActive();
    EXPECT_EQ(controller.selectedLabel().stringValue(), u"1"_s);
}

TEST_F(CorvaneAppDelegateTest, withoutTheRunningApplicationTheNumberIsZero)
{
    CorvaneAppDelegate& controller = wake();
    m_application.selectPhotos({m_application.addPhoto({})});
    m_application.setRunning(false);
    m_application.journal().clear();
    controller.applicationDidBecomeActive();
    EXPECT_EQ(controller.selectedLabel().stringValue(), u"0"_s);
    EXPECT_TRUE(m_application.journal().linesWith(u"selection"_s).isEmpty())
        << "asking would launch it";
    EXPECT_EQ(m_application.identifiersAsked().last(), u"com.apple.iPhoto"_s);
}

TEST_F(CorvaneAppDelegateTest, whatTheApplicationRaisesIsLoggedAndLeavesTheLabel)
{
    CorvaneAppDelegate& controller = wake();
    controller.selectedLabel().setStringValue(u"before"_s);
    m_application.failOn(u"application.selection"_s, {u"Broken"_s, u"The library is gone"_s});
    controller.applicationDidBecomeActive();
    EXPECT_EQ(controller.selectedLabel().stringValue(), u"before"_s);
    EXPECT_EQ(m_log.entries(), QStringList{u"Broken: The library is gone"_s});
}

} // namespace
