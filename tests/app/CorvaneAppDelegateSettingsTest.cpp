#include "ControllerFixture.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

/// Quality, output size, sides and locks.
class CorvaneAppDelegateSettingsTest : public ControllerFixture
{
protected:
    /// Writes down, in order, what changes and what is saved from now on.
    void watch()
    {
        m_events.clear();
        const CorvaneAppDelegate* controller = m_controller.get();
        const auto note = [this](const QString& name, const QVariant& value) {
            m_events.append(name + u' ' + value.toString());
        };
        QObject::connect(controller, &CorvaneAppDelegate::longSizeChanged, [note](auto pixels) {
            note(u"longSize"_s, pixels);
        });
        QObject::connect(controller, &CorvaneAppDelegate::shortSizeChanged, [note](auto pixels) {
            note(u"shortSize"_s, pixels);
        });
        QObject::connect(controller, &CorvaneAppDelegate::longLockedChanged, [note](bool locked) {
            note(u"longLocked"_s, locked);
        });
        QObject::connect(controller, &CorvaneAppDelegate::shortLockedChanged, [note](bool locked) {
            note(u"shortLocked"_s, locked);
        });
        QObject::connect(controller,
                         &CorvaneAppDelegate::compressionFactorTextChanged,
                         [note](const QString& text) { note(u"text"_s, text); });
        QObject::connect(controller, &CorvaneAppDelegate::fixedSizeChanged, [note](bool fixed) {
            note(u"fixedSize"_s, fixed);
        });
        QObject::connect(controller, &CorvaneAppDelegate::scaleFactorChanged, [note](float factor) {
            note(u"scaleFactor"_s, factor);
        });
        QObject::connect(
            &m_defaults, &UserDefaults::valueChanged, controller, [this, note](const QString& key) {
                note(u"saved "_s + key, m_defaults.value(key));
            });
        m_presenter.whenCommitting = [this](Presenter::Field field) {
            m_events.append(field == Presenter::Field::LongSide ? u"commit long"_s
                                                                : u"commit short"_s);
        };
    }

    void store(bool longLocked, bool shortLocked)
    {
        m_defaults.setBool(u"LongLocked"_s, longLocked);
        m_defaults.setBool(u"ShortLocked"_s, shortLocked);
        m_defaults.setInteger(u"LongSide"_s, 1000);
        m_defaults.setInteger(u"ShortSide"_s, 700);
    }

    [[nodiscard]] int longSide() const { return m_controller->longSize().toInt(); }

    [[nodiscard]] int shortSide() const { return m_controller->shortSize().toInt(); }

    QStringList m_events;
};

TEST_F(CorvaneAppDelegateSettingsTest, qualityIsKeptShownWithTwoDecimalsAndSaved)
{
    CorvaneAppDelegate& controller = wake();
    watch();
    controller.setCompressionFactor(0.625);
    EXPECT_EQ(controller.compressionFactor(), 0.625);
    EXPECT_EQ(m_events, (QStringList{u"text 0.62"_s, u"saved JpegQuality 0.625"_s}));
    EXPECT_EQ(m_defaults.doubleValue(u"JpegQuality"_s), 0.625);
}

TEST_F(CorvaneAppDelegateSettingsTest, aQualityOfFourFifthsShowsAsPointEighty)
{
    CorvaneAppDelegate& controller = wake();
    controller.setCompressionFactor(0.3);
    controller.setCompressionFactor(0.8);
    EXPECT_EQ(controller.compressionFactorText(), u"0.80"_s);
    EXPECT_EQ(controller.compressionFactor(), 0.8) << "kept in full";
}

TEST_F(CorvaneAppDelegateSettingsTest, theTextIsThatOfTheSinglePrecisionValue)
{
    CorvaneAppDelegate& controller = wake();
    // Just above a half in double precision, exactly on it in single precision.
    controller.setCompressionFactor(std::nextafter(0.125, 1.0));
    EXPECT_EQ(controller.compressionFactorText(), u"0.12"_s);
}

TEST_F(CorvaneAppDelegateSettingsTest, awakeningSavesTheQualityBack)
{
    wake();
    EXPECT_EQ(m_controller->compressionFactorText(), u"0.80"_s);
    const UserDefaults nextRun(m_defaults.filePath());
    EXPECT_EQ(nextRun.doubleValue(u"JpegQuality"_s), 0.8);
}

TEST_F(CorvaneAppDelegateSettingsTest, awakeningGoesInItsOrder)
{
    store(true, false);
    m_defaults.setDouble(u"JpegQuality"_s, 0.5);
    make();
    watch();
    m_controller->awakeFromNib();
    EXPECT_EQ(m_events,
              (QStringList{u"text 0.50"_s,
                           u"saved JpegQuality 0.5"_s,
                           u"fixedSize false"_s,
                           u"saved ShortSide 700"_s,
                           u"shortSize 700"_s,
                           u"saved LongSide 1000"_s,
                           u"longSize 1000"_s,
                           // the long side is locked
                           u"commit long"_s,
                           u"saved LongSide 1000"_s,
                           u"longSize 1000"_s,
                           u"saved LongLocked true"_s,
                           u"longLocked true"_s,
                           // the short side is freed, which locks the long one once more
                           u"commit short"_s,
                           u"commit long"_s,
                           u"shortSize 0"_s,
                           u"commit long"_s,
                           u"saved LongSide 1000"_s,
                           u"longSize 1000"_s,
                           u"saved LongLocked true"_s,
                           u"longLocked true"_s,
                           u"saved ShortLocked false"_s,
                           u"shortLocked false"_s}));
}

struct LockCase {
    bool storedLong;
    bool storedShort;
    bool longLocked;
    bool shortLocked;
    int longSide;
    int shortSide;
};

TEST_F(CorvaneAppDelegateSettingsTest, theStoredPairOfLocksDecidesTheStart)
{
    for (const LockCase& expected : {LockCase{true, true, true, true, 1000, 700},
                                     LockCase{true, false, true, false, 1000, 0},
                                     LockCase{false, true, false, true, 0, 700},
                                     LockCase{false, false, false, true, 0, 700}}) {
        SCOPED_TRACE(u"%1 %2"_s.arg(expected.storedLong).arg(expected.storedShort).toStdString());
        store(expected.storedLong, expected.storedShort);
        const CorvaneAppDelegate& controller = wake();
        EXPECT_EQ(controller.longLocked(), expected.longLocked);
        EXPECT_EQ(controller.shortLocked(), expected.shortLocked);
        EXPECT_EQ(longSide(), expected.longSide);
        EXPECT_EQ(shortSide(), expected.shortSide);
        EXPECT_EQ(m_defaults.boolValue(u"LongLocked"_s), expected.longLocked);
        EXPECT_EQ(m_defaults.boolValue(u"ShortLocked"_s), expected.shortLocked);
        EXPECT_EQ(m_defaults.integerValue(u"LongSide"_s), 1000) << "a 0 is never saved";
        EXPECT_EQ(m_defaults.integerValue(u"ShortSide"_s), 700);
    }
}

TEST_F(CorvaneAppDelegateSettingsTest, aLockedSideSetToZeroKeepsItsSavedKeyAndRememberedSize)
{
    store(true, true);
    CorvaneAppDelegate& controller = wake();
    controller.setLongSize(0);
    EXPECT_EQ(longSide(), 0);
    EXPECT_EQ(m_defaults.integerValue(u"LongSide"_s), 1000);
    controller.setLongLocked(true);
    EXPECT_EQ(longSide(), 1000) << "the remembered size comes back";

    controller.setShortSize(0);
    EXPECT_EQ(shortSide(), 0);
    EXPECT_EQ(m_defaults.integerValue(u"ShortSide"_s), 700);
    controller.setShortLocked(true);
    EXPECT_EQ(shortSide(), 700);
}

TEST_F(CorvaneAppDelegateSettingsTest, aCorrectionMadeByABoundControlIsWhatStays)
{
    CorvaneAppDelegate& controller = wake();
    QObject::connect(&controller, &CorvaneAppDelegate::longSizeChanged, [&](const QVariant& side) {
        if (side.toInt() < 0) {
            controller.setLongSize(1);
        }
    });
    controller.setLongSize(-5);
    EXPECT_EQ(longSide(), 1);
    EXPECT_EQ(m_defaults.integerValue(u"LongSide"_s), 1);
}

TEST_F(CorvaneAppDelegateSettingsTest, freeingASideThatIsZeroForgetsItsSize)
{
    store(true, true);
    CorvaneAppDelegate& controller = wake();
    controller.setLongSize(0);
    controller.setLongLocked(false);
    controller.setLongLocked(true);
    EXPECT_EQ(longSide(), 0);
    EXPECT_EQ(m_defaults.integerValue(u"LongSide"_s), 1000);

    controller.setShortSize(0);
    controller.setShortLocked(false);
    controller.setShortLocked(true);
    EXPECT_EQ(shortSide(), 0);
}

TEST_F(CorvaneAppDelegateSettingsTest, freeingTheLongSideLocksTheFreeShortSideFirst)
{
    store(true, false);
    CorvaneAppDelegate& controller = wake();
    ASSERT_EQ(shortSide(), 0);
    watch();
    controller.setLongLocked(false);
    EXPECT_EQ(m_events,
              (QStringList{u"commit long"_s,
                           u"commit short"_s,
                           u"longSize 0"_s,
                           u"commit short"_s,
                           u"saved ShortSide 700"_s,
                           u"shortSize 700"_s,
                           u"saved ShortLocked true"_s,
                           u"shortLocked true"_s,
                           u"saved LongLocked false"_s,
                           u"longLocked false"_s}));
}

TEST_F(CorvaneAppDelegateSettingsTest, freeingTheShortSideLocksTheFreeLongSideFirst)
{
    store(false, true);
    CorvaneAppDelegate& controller = wake();
    ASSERT_EQ(longSide(), 0);
    watch();
    controller.setShortLocked(false);
    EXPECT_EQ(m_events,
              (QStringList{u"commit short"_s,
                           u"commit long"_s,
                           u"shortSize 0"_s,
                           u"commit long"_s,
                           u"saved LongSide 1000"_s,
                           u"longSize 1000"_s,
                           u"saved LongLocked true"_s,
                           u"longLocked true"_s,
                           u"saved ShortLocked false"_s,
                           u"shortLocked false"_s}));
}

TEST_F(CorvaneAppDelegateSettingsTest, freeingAndLockingBringsTheSameSizeBack)
{
    store(true, true);
    CorvaneAppDelegate& controller = wake();
    for (const bool locked : {false, true}) {
        controller.setLongLocked(locked);
        EXPECT_EQ(longSide(), locked ? 1000 : 0);
        EXPECT_EQ(m_defaults.integerValue(u"LongSide"_s), 1000);
    }
    for (const bool locked : {false, true}) {
        controller.setShortLocked(locked);
        EXPECT_EQ(shortSide(), locked ? 700 : 0);
        EXPECT_EQ(m_defaults.integerValue(u"ShortSide"_s), 700);
    }
}

TEST_F(CorvaneAppDelegateSettingsTest, aSizeBeingTypedIsCommittedBeforeTheSideIsFreed)
{
    store(true, true);
    CorvaneAppDelegate& controller = wake();
    m_presenter.whenCommitting = [&](Presenter::Field field) {
        if (field == Presenter::Field::LongSide && longSide() == 1000) {
            controller.setLongSize(2048);
        }
    };
    controller.setLongLocked(false);
    controller.setLongLocked(true);
    EXPECT_EQ(longSide(), 2048);
    EXPECT_EQ(m_defaults.integerValue(u"LongSide"_s), 2048);
}

TEST_F(CorvaneAppDelegateSettingsTest, sizesAreTakenAsTheyComeAndCountByTheirIntegerPart)
{
    CorvaneAppDelegate& controller = wake();
    controller.setLongSize(u"1280x"_s);
    EXPECT_EQ(controller.longSize(), QVariant(u"1280x"_s));
    EXPECT_EQ(m_defaults.value(u"LongSide"_s), QVariant(u"1280x"_s));
    controller.setLongSize(0.9);
    EXPECT_EQ(controller.longSize(), QVariant(0.9));
    EXPECT_EQ(m_defaults.value(u"LongSide"_s), QVariant(u"1280x"_s)) << "its integer part is 0";
    controller.setShortSize(u"none"_s);
    EXPECT_EQ(m_defaults.integerValue(u"ShortSide"_s), 1200);
    controller.setShortSize(-5);
    EXPECT_EQ(m_defaults.integerValue(u"ShortSide"_s), -5);
}

TEST_F(CorvaneAppDelegateSettingsTest, eachChangeOfTheOutputSizeIsFollowed)
{
    const CorvaneAppDelegate& controller = wake();
    m_defaults.setInteger(u"JpegOutputSize"_s, 2);
    EXPECT_EQ(controller.scaleFactor(), 0.5F);
    m_defaults.setInteger(u"JpegOutputSize"_s, 4);
    EXPECT_TRUE(controller.fixedSize());
    EXPECT_EQ(controller.scaleFactor(), 0.5F) << "left as it was";
    m_defaults.setInteger(u"JpegOutputSize"_s, 7);
    EXPECT_FALSE(controller.fixedSize());
    EXPECT_EQ(controller.scaleFactor(), 1.0F);
    m_defaults.setInteger(u"JpegOutputSize"_s, 3);
    m_defaults.setInteger(u"JpegOutputSize"_s, -1);
    EXPECT_EQ(controller.scaleFactor(), 1.0F);
}

TEST_F(CorvaneAppDelegateSettingsTest, otherSettingsLeaveTheOutputSizeAlone)
{
    CorvaneAppDelegate& controller = wake();
    controller.setScaleFactor(0.3F);
    controller.setFixedSize(true);
    m_defaults.setBool(u"TrashEnabled"_s, true);
    EXPECT_EQ(controller.scaleFactor(), 0.3F);
    EXPECT_TRUE(controller.fixedSize());
}

TEST_F(CorvaneAppDelegateSettingsTest, aClickOnACellStoresItsIndexAndAppliesIt)
{
    CorvaneAppDelegate& controller = wake();
    controller.outputSizeMatrix().click(3);
    EXPECT_EQ(m_defaults.integerValue(u"JpegOutputSize"_s), 3);
    EXPECT_EQ(controller.scaleFactor(), 0.25F);
    EXPECT_FALSE(controller.fixedSize());
    EXPECT_TRUE(m_presenter.events().isEmpty());
}

TEST_F(CorvaneAppDelegateSettingsTest, aClickOnTheFixedSizeCellPutsTheSheetUp)
{
    CorvaneAppDelegate& controller = wake();
    controller.outputSizeMatrix().click(4);
    EXPECT_EQ(m_defaults.integerValue(u"JpegOutputSize"_s), 4);
    EXPECT_TRUE(controller.fixedSize());
    EXPECT_EQ(m_presenter.events(), QStringList{u"begin fixed size"_s});
}

TEST_F(CorvaneAppDelegateSettingsTest, touchingAStoredFixedSizeTurnsItOn)
{
    m_defaults.setInteger(u"JpegOutputSize"_s, 4);
    CorvaneAppDelegate& controller = wake();
    ASSERT_FALSE(controller.fixedSize());
    EXPECT_EQ(controller.outputSizeMatrix().selectedIndex(), 4);
    controller.outputSizeMatrix().click(4);
    EXPECT_TRUE(controller.fixedSize());
}

TEST_F(CorvaneAppDelegateSettingsTest, theSelectedCellFollowsTheSetting)
{
    CorvaneAppDelegate& controller = wake();
    EXPECT_EQ(controller.outputSizeMatrix().selectedIndex(), 0);
    m_defaults.setInteger(u"JpegOutputSize"_s, 2);
    EXPECT_EQ(controller.outputSizeMatrix().selectedIndex(), 2);
    m_defaults.setInteger(u"JpegOutputSize"_s, 7);
    EXPECT_EQ(controller.outputSizeMatrix().selectedIndex(), -1);
    EXPECT_TRUE(m_presenter.events().isEmpty());
}

TEST_F(CorvaneAppDelegateSettingsTest, theActionGoesByTheTagOfTheSendersCell)
{
    CorvaneAppDelegate& controller = wake();
    Matrix sender({0, 9});
    sender.setSelectedIndex(0);
    controller.outputScaleSelect(&sender);
    EXPECT_TRUE(controller.fixedSize());
    EXPECT_EQ(m_presenter.events(), QStringList{u"begin fixed size"_s});
    sender.setSelectedIndex(1);
    controller.outputScaleSelect(&sender);
    EXPECT_FALSE(controller.fixedSize());
    EXPECT_EQ(m_presenter.events().size(), 1);
}

TEST_F(CorvaneAppDelegateSettingsTest, closingTheSheetCommitsBothFieldsFirst)
{
    wake().dismissFixedSizePanel(nullptr);
    EXPECT_EQ(m_presenter.events(),
              (QStringList{u"commit short"_s, u"commit long"_s, u"end fixed size"_s}));
}

} // namespace

TEST_F(CorvaneAppDelegateSettingsTest, anOutputSizeActionWithoutSenderIsThatOfTheFixedSizeCell)
{
    CorvaneAppDelegate& controller = wake();
    controller.outputScaleSelect(nullptr);
    EXPECT_TRUE(controller.fixedSize());
}
