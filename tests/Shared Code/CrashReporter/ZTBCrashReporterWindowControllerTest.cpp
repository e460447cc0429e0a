#include "ZTBCrashReporterWindowController.h"

#include "Assertion.h"
#include "CrashReporterFixture.h"

using namespace Qt::StringLiterals;

namespace
{

/// The window: how it comes and goes, and what becomes of the log. Submission has tests of its own.
class ZTBCrashReporterWindowControllerTest : public CrashReporterFixture
{
protected:
    using Controller = ZTBCrashReporterWindowController;

    Controller& show()
    {
        m_path = makeLog(u"Corvane_\u00e4 1.crash"_s);
        Controller::showWindowForCrashLogPath(services(), m_path, QUrl(u"http://127.0.0.1:1/"_s));
        return *m_record.owner;
    }

    template <typename Callable>
    static QString conditionOf(Callable callable)
    {
        try {
            callable();
        } catch (const AssertionFailure& failure) {
            EXPECT_EQ(failure.file(),
                      u"Shared Code/CrashReporter/ZTBCrashReporterWindowController"_s);
            EXPECT_GT(failure.line(), 0);
            return failure.description();
        }
        return {};
    }

    QString m_path;
};

TEST_F(ZTBCrashReporterWindowControllerTest, theWindowIsCenteredAndShown)
{
    Controller& controller = show();
    EXPECT_EQ(m_record.events, (QStringList{u"center"_s, u"show"_s}));
    EXPECT_EQ(controller.crashLogPath(), m_path);
    EXPECT_EQ(controller.submissionURL(), QUrl(u"http://127.0.0.1:1/"_s));
    EXPECT_TRUE(controller.reportButton().isEnabled());
    EXPECT_TRUE(controller.ignoreButton().isEnabled());
    EXPECT_TRUE(controller.discardButton().isEnabled());
    EXPECT_FALSE(controller.progressIndicator().isAnimating());
}

TEST_F(ZTBCrashReporterWindowControllerTest, pathAndAddressAreRequired)
{
    EXPECT_EQ(conditionOf([this] {
                  Controller::showWindowForCrashLogPath(services(), {}, QUrl(u"http://a/"_s));
              }),
              u"Invalid parameter not satisfying: nil != crashLogPath"_s);
    EXPECT_EQ(
        conditionOf([this] { Controller::showWindowForCrashLogPath(services(), u"/a"_s, QUrl()); }),
        u"Invalid parameter not satisfying: nil != submissionURL"_s);
    EXPECT_EQ(m_record.windows, 0);
}

TEST_F(ZTBCrashReporterWindowControllerTest, theTitleHasNameAndShortVersion)
{
    show();
    EXPECT_EQ(m_record.title, u"Crash Reporter: Corvane (1.2)"_s);
}

TEST_F(ZTBCrashReporterWindowControllerTest, withoutAShortVersionTheTitleHasTheNameOnly)
{
    setInfo({{u"CFBundleName"_s, u"Corvane %1"_s}});
    show();
    EXPECT_EQ(m_record.title, u"Crash Reporter: Corvane %1"_s);
}

TEST_F(ZTBCrashReporterWindowControllerTest, theAddressIsThatOfTheUsersCard)
{
    m_addressBook.setAddress(u"me@example.org"_s);
    EXPECT_EQ(show().emailAddress(), u"me@example.org"_s);
}

TEST_F(ZTBCrashReporterWindowControllerTest, withoutACardTheAddressIsEmptyAndNoneIsSent)
{
    Controller& controller = show();
    EXPECT_TRUE(controller.emailAddress().isEmpty());
    EXPECT_TRUE(m_defaults.boolValue(u"ZTBCrashReporterIncludeEmailAddress"_s));
    EXPECT_FALSE(controller.formValues().contains(u"emailAddress"_s));
}

TEST_F(ZTBCrashReporterWindowControllerTest, aChangeOfTheAddressIsAnnounced)
{
    Controller& controller = show();
    QStringList announced;
    QObject::connect(&controller, &Controller::emailAddressChanged, [&](const QString& address) {
        announced.append(address);
    });
    controller.setEmailAddress(u"a@b"_s);
    controller.setEmailAddress(u"a@b"_s);
    controller.setEmailAddress({});
    EXPECT_EQ(announced, (QStringList{u"a@b"_s, {}}));
}

TEST_F(ZTBCrashReporterWindowControllerTest, commentsAreTypedInTenPointsOverAHint)
{
    TextView& comments = show().commentsTextView();
    EXPECT_EQ(comments.typingFontSize(), 10.0);
    EXPECT_EQ(comments.placeholderString(),
              u"Please enter a description of the actions leading up to the crash."_s);
    EXPECT_TRUE(comments.string().isEmpty());
}

TEST_F(ZTBCrashReporterWindowControllerTest, bothChoicesAreOnWithoutBeingStored)
{
    m_defaults.setBool(u"AnotherSetting"_s, true); // so that there is a file
    show();
    const QVariantMap stored = PropertyList::read(m_defaults.filePath()).value().toMap();
    EXPECT_EQ(stored.keys(), QStringList(u"AnotherSetting"_s));
    for (const QString& key : {u"ZTBCrashReporterIncludeAnonymousSystemInformation"_s,
                               u"ZTBCrashReporterIncludeEmailAddress"_s}) {
        EXPECT_TRUE(m_defaults.boolValue(key)) << qPrintable(key);
        m_defaults.setBool(key, false);
    }
    m_record.owner->windowWillClose();
    show();
    EXPECT_FALSE(m_defaults.boolValue(u"ZTBCrashReporterIncludeEmailAddress"_s))
        << "what the user chose stays";
}

TEST_F(ZTBCrashReporterWindowControllerTest, theChoicesAreRegisteredOnceWithTheSettings)
{
    int changes = 0;
    QObject::connect(&m_defaults, &UserDefaults::valueChanged, [&changes] { ++changes; });
    show();
    EXPECT_EQ(changes, 2);
    m_record.owner->windowWillClose();
    show();
    EXPECT_EQ(changes, 2);
    UserDefaults others(m_folder.filePath(u"others.plist"_s));
    ZTBCrashReporterWindowController::initialize(others);
    EXPECT_TRUE(others.boolValue(u"ZTBCrashReporterIncludeEmailAddress"_s));
}

TEST_F(ZTBCrashReporterWindowControllerTest, ignoreLeavesTheFileWhereItIsAndHides)
{
    show().ignoreReport(nullptr);
    EXPECT_FALSE(m_record.visible);
    EXPECT_TRUE(QFile::exists(m_path));
    EXPECT_TRUE(m_trash.files().isEmpty());
    EXPECT_EQ(lastReport(), -1.0);
}

TEST_F(ZTBCrashReporterWindowControllerTest, discardPutsTheFileIntoTheTrashAndHides)
{
    show().discardReport(nullptr);
    EXPECT_FALSE(m_record.visible);
    EXPECT_EQ(m_trash.files(), QStringList{m_path});
    EXPECT_EQ(lastReport(), -1.0);
    EXPECT_TRUE(m_log.entries().isEmpty());
}

TEST_F(ZTBCrashReporterWindowControllerTest, aTrashThatRefusesIsLoggedAndTheWindowHides)
{
    m_trash.setStatus(-43);
    show().discardReport(nullptr);
    EXPECT_FALSE(m_record.visible);
    EXPECT_EQ(m_log.entries(),
              QStringList{u"ZTBCrashReporter: Unable to move "_s + m_path + u" to trash: -43"_s});
}

TEST_F(ZTBCrashReporterWindowControllerTest, aLogThatIsGoneCannotBeDiscardedAndTheWindowHides)
{
    Controller& controller = show();
    ASSERT_TRUE(QFile::remove(m_path));
    controller.discardReport(nullptr);
    EXPECT_FALSE(m_record.visible);
    EXPECT_TRUE(m_trash.files().isEmpty());
    EXPECT_EQ(m_log.entries(),
              QStringList{u"ZTBCrashReporter: Unable to create FSRef for file "_s + m_path});
}

TEST_F(ZTBCrashReporterWindowControllerTest, hiddenItLivesOnAndClosedItIsGone)
{
    for (const bool discard : {false, true}) {
        Controller& controller = show();
        const std::weak_ptr<Controller> life = controller.self_reference();
        discard ? controller.discardReport(nullptr) : controller.ignoreReport(nullptr);
        settle();
        EXPECT_FALSE(life.expired()) << discard;
        EXPECT_FALSE(m_record.visible);
        controller.windowWillClose();
        EXPECT_TRUE(life.expired()) << discard;
        EXPECT_EQ(m_record.events.last(), u"release"_s);
    }
}

TEST_F(ZTBCrashReporterWindowControllerTest, tabMovesTheFocusAndOtherCommandsAreTheViewsOwn)
{
    Controller& controller = show();
    m_record.events.clear();
    EXPECT_TRUE(controller.textViewDoCommandBySelector(u"insertTab:"_s));
    EXPECT_TRUE(controller.textViewDoCommandBySelector(u"insertBacktab:"_s));
    EXPECT_FALSE(controller.textViewDoCommandBySelector(u"insertNewline:"_s));
    EXPECT_FALSE(controller.textViewDoCommandBySelector({}));
    EXPECT_EQ(m_record.events, (QStringList{u"next"_s, u"previous"_s}));
}

TEST_F(ZTBCrashReporterWindowControllerTest, theSheetOfSuccessThanks)
{
    Controller& controller = show();
    controller.progressIndicator().startAnimation();
    controller.showSubmissionSucceededSheet();
    EXPECT_FALSE(controller.progressIndicator().isAnimating());
    ASSERT_EQ(m_record.sheets.size(), 1);
    EXPECT_EQ(m_record.sheets.first().kind, CrashReportSheet::Kind::Success);
    EXPECT_EQ(m_record.sheets.first().title, u"The crash report was successfully submitted."_s);
    EXPECT_EQ(m_record.sheets.first().message,
              u"Thank you for taking the time to help improve Corvane!"_s);
    EXPECT_TRUE(m_record.visible);
    m_record.sheetDidEnd(1);
    EXPECT_FALSE(m_record.visible);
}

TEST_F(ZTBCrashReporterWindowControllerTest, theSheetOfFailureTellsTheError)
{
    Controller& controller = show();
    controller.progressIndicator().startAnimation();
    controller.showSubmissionFailedSheet(CrashReportError{u"D"_s, 1, u"100 %1 wrong"_s});
    EXPECT_FALSE(controller.progressIndicator().isAnimating());
    ASSERT_EQ(m_record.sheets.size(), 1);
    EXPECT_EQ(m_record.sheets.first().kind, CrashReportSheet::Kind::Failure);
    EXPECT_EQ(m_record.sheets.first().title,
              u"An error occurred while submitting the crash report."_s);
    EXPECT_EQ(m_record.sheets.first().message, u"The error was: 100 %1 wrong"_s);
    m_record.sheetDidEnd(-1);
    EXPECT_FALSE(m_record.visible) << "whatever ended it";
}

TEST_F(ZTBCrashReporterWindowControllerTest, aFailureWithoutAnErrorIsNone)
{
    Controller& controller = show();
    EXPECT_EQ(conditionOf([&controller] { controller.showSubmissionFailedSheet(std::nullopt); }),
              u"Invalid parameter not satisfying: nil != error"_s);
    EXPECT_TRUE(m_record.sheets.isEmpty());
}

} // namespace
