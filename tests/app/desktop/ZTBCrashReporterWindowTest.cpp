#include "ZTBCrashReporterWindow.h"

#include "CrashWindowFixture.h"

#include <QCheckBox>
#include <QFileInfo>
#include <QInputMethodEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QTcpSocket>

using namespace Qt::StringLiterals;

namespace
{

class ZTBCrashReporterWindowTest : public CrashWindowFixture
{
protected:
    QLineEdit& address() { return child<QLineEdit>(u"emailAddress"_s); }

    QPlainTextEdit& comments() { return child<QPlainTextEdit>(u"commentsTextView"_s); }

    [[nodiscard]] static QList<QString> outlets()
    {
        return {u"commentsTextView"_s,
                u"reportButton"_s,
                u"ignoreButton"_s,
                u"discardButton"_s,
                u"progressIndicator"_s,
                u"emailAddress"_s,
                u"crashLogText"_s,
                u"showMoreOfCrashLog"_s,
                u"showReportContents"_s,
                u"ZTBCrashReporterIncludeEmailAddress"_s,
                u"ZTBCrashReporterIncludeAnonymousSystemInformation"_s};
    }
};

TEST_F(ZTBCrashReporterWindowTest, itIsTitledByNameAndVersion)
{
    EXPECT_EQ(show().windowTitle(), u"Crash Reporter: Corvane (%1)"_s.arg(m_bundle.version()));
}

TEST_F(ZTBCrashReporterWindowTest, itStandsInTheMiddleOfTheScreen)
{
    const ZTBCrashReporterWindow& window = show();
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(window.isWindow());
    const QPoint off =
        window.frameGeometry().center() - window.screen()->availableGeometry().center();
    EXPECT_LE(off.manhattanLength(), 4);
}

TEST_F(ZTBCrashReporterWindowTest, itFitsIntoASmallScreen)
{
    const QSize least = show().minimumSizeHint();
    EXPECT_LE(least.width(), 900);
    EXPECT_LE(least.height(), 600);
}

TEST_F(ZTBCrashReporterWindowTest, everyControlHasANameForThoseWhoDoNotSeeIt)
{
    show();
    for (const QString& name : outlets()) {
        EXPECT_FALSE(child(name).accessibleName().isEmpty()) << qPrintable(name);
    }
}

TEST_F(ZTBCrashReporterWindowTest, noTwoControlsShareAMnemonic)
{
    show();
    QStringList keys;
    const QList<QWidget*> widgets = m_window->findChildren<QWidget*>();
    for (const QWidget* const widget : widgets) {
        const QString text = widget->property("text").toString();
        if (text.contains(u'&')) {
            keys += text.mid(text.indexOf(u'&') + 1, 1).toLower();
        }
    }
    EXPECT_EQ(keys.size(), 9);
    EXPECT_EQ(keys.removeDuplicates(), 0) << qPrintable(keys.join(u' '));
}

TEST_F(ZTBCrashReporterWindowTest, theLogIsThereToReadAndCannotBeChanged)
{
    show("first line\nsecond <b>line</b>\n");
    auto& text = child<QPlainTextEdit>(u"crashLogText"_s);
    EXPECT_EQ(text.toPlainText(), u"first line\nsecond <b>line</b>\n"_s);
    EXPECT_TRUE(text.isReadOnly());
}

TEST_F(ZTBCrashReporterWindowTest, commentsReachTheController)
{
    show();
    EXPECT_EQ(comments().placeholderText(),
              u"Please enter a description of the actions leading up to the crash."_s);
    EXPECT_EQ(comments().font().pointSizeF(), 10.0);
    QTest::keyClicks(&comments(), u"It fell"_s);
    QTest::keyClick(&comments(), Qt::Key_Return);
    QTest::keyClicks(&comments(), u"over"_s);
    EXPECT_EQ(controller().commentsTextView().string(), u"It fell\nover"_s);
}

TEST_F(ZTBCrashReporterWindowTest, tabMovesTheFocusOutOfTheComments)
{
    show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_window));
    comments().setFocus();
    QTest::keyClick(&comments(), Qt::Key_Tab);
    EXPECT_FALSE(comments().hasFocus());
    EXPECT_TRUE(address().hasFocus());
    QTest::keyClick(&address(), Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_TRUE(comments().hasFocus());
    QTest::keyClick(&comments(), Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_FALSE(comments().hasFocus());
    EXPECT_FALSE(address().hasFocus());
    EXPECT_TRUE(comments().toPlainText().isEmpty());
}

TEST_F(ZTBCrashReporterWindowTest, theAddressOfTheCardCanBeChanged)
{
    m_addressBook.setAddress(u"me@example.org"_s);
    show();
    EXPECT_EQ(address().text(), u"me@example.org"_s);
    address().selectAll();
    QTest::keyClicks(&address(), u"you@example.org"_s);
    EXPECT_EQ(controller().emailAddress(), u"you@example.org"_s);
    address().selectAll();
    QTest::keyClick(&address(), Qt::Key_Delete);
    EXPECT_TRUE(controller().emailAddress().isNull()) << "none, and so none is sent";
    controller().setEmailAddress(u"third@example.org"_s);
    EXPECT_EQ(address().text(), u"third@example.org"_s);
}

TEST_F(ZTBCrashReporterWindowTest, theCheckBoxesAreTheTwoSettings)
{
    show();
    for (const QString& key : {u"ZTBCrashReporterIncludeEmailAddress"_s,
                               u"ZTBCrashReporterIncludeAnonymousSystemInformation"_s}) {
        auto& box = child<QCheckBox>(key);
        EXPECT_TRUE(box.isChecked()) << qPrintable(key);
        box.click();
        EXPECT_FALSE(m_defaults.boolValue(key)) << qPrintable(key);
        EXPECT_FALSE(box.accessibleDescription().isEmpty()) << "what it adds";
        m_defaults.setBool(key, true);
        EXPECT_TRUE(box.isChecked()) << qPrintable(key);
    }
}

TEST_F(ZTBCrashReporterWindowTest, ignoreHidesAndLeavesTheLog)
{
    show();
    click(u"ignoreButton"_s);
    EXPECT_FALSE(m_window->isVisible());
    settle();
    EXPECT_FALSE(m_life.isNull()) << "hidden, not closed";
    EXPECT_TRUE(QFile::exists(m_path));
}

TEST_F(ZTBCrashReporterWindowTest, discardHidesAndMovesTheLogToTheTrash)
{
    show();
    click(u"discardButton"_s);
    EXPECT_FALSE(m_window->isVisible());
    settle();
    EXPECT_FALSE(m_life.isNull());
    EXPECT_EQ(m_trash.files(), QStringList{m_path});
}

TEST_F(ZTBCrashReporterWindowTest, closingReleasesControllerAndWindow)
{
    show();
    EXPECT_TRUE(m_window->close());
    EXPECT_TRUE(m_life.isNull());
    settle();
    EXPECT_TRUE(m_window.isNull());
    EXPECT_TRUE(QFile::exists(m_path));
}

TEST_F(ZTBCrashReporterWindowTest, theKeyThatClosesWindowsClosesIt)
{
    show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_window));
    QTest::keySequence(m_window, QKeySequence::Close);
    settle();
    EXPECT_TRUE(m_window.isNull());
}

TEST_F(ZTBCrashReporterWindowTest, anAcceptedReportIsThankedForAndTheWindowHides)
{
    m_server.setAnswer("ok\n");
    show();
    report();
    EXPECT_EQ(sheet()->windowModality(), Qt::WindowModal);
    EXPECT_EQ(sheet()->parentWidget(), m_window);
    EXPECT_EQ(sheet()->icon(), QMessageBox::Information);
    EXPECT_EQ(sheet()->standardButtons(), QMessageBox::Ok);
    EXPECT_EQ(sheet()->text(), u"The crash report was successfully submitted."_s);
    EXPECT_EQ(sheet()->informativeText(),
              u"Thank you for taking the time to help improve Corvane!"_s);
    EXPECT_FALSE(QFile::exists(m_path));
    EXPECT_TRUE(m_window->isVisible());
    sheet()->button(QMessageBox::Ok)->click();
    EXPECT_FALSE(m_window->isVisible());
    EXPECT_FALSE(m_life.isNull());
}

TEST_F(ZTBCrashReporterWindowTest, aFailureIsToldAsPlainTextAndTheWindowHides)
{
    m_server.setAnswer("<b>no</b>", 404);
    show();
    report();
    EXPECT_EQ(sheet()->icon(), QMessageBox::Warning);
    EXPECT_EQ(sheet()->text(), u"An error occurred while submitting the crash report."_s);
    EXPECT_EQ(sheet()->informativeText(),
              u"The error was: Unrecognized response from the server"_s);
    for (const QLabel* const label : sheet()->findChildren<QLabel*>()) {
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
    }
    QTest::keyClick(sheet(), Qt::Key_Escape);
    EXPECT_FALSE(m_window->isVisible()) << "whatever ended it";
    EXPECT_TRUE(QFile::exists(m_path));
}

TEST_F(ZTBCrashReporterWindowTest, whileSendingTheButtonsAreDisabledAndTheIndicatorIsSeen)
{
    show();
    EXPECT_FALSE(child(u"progressIndicator"_s).isVisible());
    click(u"reportButton"_s);
    EXPECT_TRUE(child(u"progressIndicator"_s).isVisible());
    EXPECT_EQ(child<QProgressBar>(u"progressIndicator"_s).maximum(), 0) << "it runs";
    for (const QString& name : {u"reportButton"_s, u"ignoreButton"_s, u"discardButton"_s}) {
        EXPECT_FALSE(child(name).isEnabled()) << qPrintable(name);
    }
}

TEST_F(ZTBCrashReporterWindowTest, itCanBeClosedWhileSending)
{
    bool isGone = false;
    m_server.setAnswer([&isGone](QTcpSocket& socket, const HttpRequest&) {
        QObject::connect(
            &socket, &QAbstractSocket::disconnected, &socket, [&isGone] { isGone = true; });
    });
    show();
    click(u"reportButton"_s);
    ASSERT_TRUE(QTest::qWaitFor([this] { return !m_server.requests().isEmpty(); }, 30000));
    EXPECT_TRUE(m_window->close());
    EXPECT_TRUE(m_life.isNull());
    EXPECT_TRUE(QTest::qWaitFor([&isGone] { return isGone; }, 30000));
    settle();
    EXPECT_TRUE(m_window.isNull());
    EXPECT_TRUE(QFile::exists(m_path));
}

TEST_F(ZTBCrashReporterWindowTest, itCanBeClosedUnderItsSheet)
{
    m_server.setAnswer("no\n");
    show();
    report();
    EXPECT_TRUE(m_window->close());
    EXPECT_TRUE(m_life.isNull());
    settle();
    EXPECT_TRUE(m_window.isNull());
}

TEST_F(ZTBCrashReporterWindowTest, closingItCommitsWhatIsBeingComposedAndHarmsNothing)
{
    /// Does what input methods do when a window goes.
    class Committer final : public QObject
    {
    public:
        bool eventFilter(QObject* edit, QEvent* event) override
        {
            if (event->type() == QEvent::Hide) {
                QInputMethodEvent commit;
                commit.setCommitString(u"x"_s);
                QCoreApplication::sendEvent(edit, &commit);
                ++commits;
            }
            return false;
        }

        int commits{0};
    };

    Committer committer;
    show();
    address().installEventFilter(&committer);
    comments().installEventFilter(&committer);
    EXPECT_TRUE(m_window->close());
    EXPECT_TRUE(m_life.isNull());
    settle();
    EXPECT_TRUE(m_window.isNull());
    EXPECT_EQ(committer.commits, 2);
}

TEST_F(ZTBCrashReporterWindowTest, whatItShowsIsExactlyWhatIsSent)
{
    m_server.setAnswer("ok\n");
    m_system.setHardware(1, QByteArray("x86_64\0", 7));
    m_addressBook.setAddress(u"me@example.org"_s);
    const QByteArray log = "a line\nanother\n";
    show(log);
    QTest::keyClicks(&comments(), u"Why?"_s);
    click(u"showReportContents"_s);
    const auto* const table = m_window->findChild<QTableWidget*>(u"reportFields"_s);
    ASSERT_NE(table, nullptr);
    QMap<QByteArray, QByteArray> shown;
    for (int row = 0; row < table->rowCount(); ++row) {
        shown.insert(table->item(row, 0)->text().toUtf8(), table->item(row, 1)->text().toUtf8());
    }
    EXPECT_EQ(shown.value("comments"), "Why?");
    EXPECT_EQ(shown.value("machine"), "x86_64");
    EXPECT_EQ(shown.value("emailAddress"), "me@example.org");
    EXPECT_TRUE(shown.value("crashLog").contains(QFileInfo(m_path).fileName().toUtf8()));
    shown.insert("crashLog", log); // the file's content is what the window itself shows
    EXPECT_EQ(child<QPlainTextEdit>(u"crashLogText"_s).toPlainText().toUtf8(), log);
    QTest::keyClick(m_window->findChild<QDialog*>(u"reportContents"_s), Qt::Key_Escape);
    report();
    ASSERT_EQ(m_server.requests().size(), 1);
    const QByteArray& body = m_server.requests().first().body;
    EXPECT_EQ(body.count("Content-Disposition"), shown.size());
    for (auto field = shown.cbegin(); field != shown.cend(); ++field) {
        const qsizetype at = body.indexOf("; name=\"" + field.key() + '"');
        ASSERT_GE(at, 0) << field.key().toStdString();
        const qsizetype content = body.indexOf("\r\n\r\n", at) + 4;
        EXPECT_EQ(body.mid(content, body.indexOf("\r\n--", content) - content), field.value())
            << field.key().toStdString();
    }
}

} // namespace
