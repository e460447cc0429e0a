#include "CrashReporterFixture.h"
#include "LoopbackServer.h"
#include "ZTBCrashReporter.h"
#include "ZTBCrashReporterWindowController.h"

#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace
{

/// From the press of the button to what the server says, over a real connection.
class ZTBCrashReporterSubmissionTest : public CrashReporterFixture
{
protected:
    using Controller = ZTBCrashReporterWindowController;

    void SetUp() override
    {
        CrashReporterFixture::SetUp();
        m_path = makeLog(u"Corvane_2014-02-03_04-05-06_7.crash"_s, kNow + 0.5);
        setLastReport(kNow - 100.0);
    }

    Controller& show()
    {
        Controller::showWindowForCrashLogPath(services(), m_path, m_server.url());
        return *m_record.owner;
    }

    /// Presses the button and waits for the sheet.
    void report()
    {
        if (m_record.owner == nullptr) {
            show();
        }
        m_record.owner->sendReport(nullptr);
        ASSERT_TRUE(waitUntil([this] { return !m_record.sheets.isEmpty(); }));
    }

    /// What became of an accepted report.
    void expectAccepted()
    {
        EXPECT_EQ(m_record.sheets.size(), 1);
        EXPECT_EQ(m_record.sheets.first().title, u"The crash report was successfully submitted."_s);
        EXPECT_FALSE(QFile::exists(m_path));
        EXPECT_TRUE(m_trash.files().isEmpty()) << "deleted for good";
        EXPECT_EQ(lastReport(), kNow) << "the log's own second, not now";
        EXPECT_FALSE(m_record.owner->progressIndicator().isAnimating());
    }

    /// What became of one that was not.
    void expectFailed(const QString& message = {})
    {
        EXPECT_EQ(m_record.sheets.size(), 1);
        EXPECT_EQ(m_record.sheets.first().title,
                  u"An error occurred while submitting the crash report."_s);
        if (!message.isNull()) {
            EXPECT_EQ(m_record.sheets.first().message, message);
        }
        EXPECT_TRUE(QFile::exists(m_path));
        EXPECT_EQ(lastReport(), kNow - 100.0);
        EXPECT_FALSE(m_record.owner->progressIndicator().isAnimating());
    }

    void expectUnrecognized(const QByteArray& answer, int status = 200)
    {
        m_server.setAnswer(answer, status);
        report();
        expectFailed(u"The error was: Unrecognized response from the server"_s);
    }

    /// The fields of a form by their names, each with headers and content.
    static QMap<QString, QByteArray> fieldsOf(const QByteArray& body)
    {
        const QByteArray line = "--81e29ba4f957efe5916039f587fe3ed7";
        EXPECT_TRUE(body.startsWith(line + "\r\n"));
        EXPECT_TRUE(body.endsWith("\r\n" + line + "--\r\n"));
        QMap<QString, QByteArray> fields;
        qsizetype start = line.size() + 2;
        for (qsizetype end = body.indexOf("\r\n" + line, start); end >= 0;
             end = body.indexOf("\r\n" + line, start)) {
            const QByteArray part = body.mid(start, end - start);
            const qsizetype name = part.indexOf("name=\"") + 6;
            fields.insert(QString::fromUtf8(part.mid(name, part.indexOf('"', name) - name)),
                          part.mid(part.indexOf("\r\n\r\n") + 4));
            start = end + 2 + line.size() + 2;
        }
        return fields;
    }

    QString m_path;
    LoopbackServer m_server;
};

TEST_F(ZTBCrashReporterSubmissionTest, aRequestHasTheHeadersAndTheFormOfTheProtocol)
{
    m_server.setAnswer("ok\n");
    show().commentsTextView().setString(u"It \u201cfell\u201d over.\nTwice."_s);
    m_record.owner->setEmailAddress(u"me@example.org"_s);
    report();
    ASSERT_EQ(m_server.requests().size(), 1);
    const HttpRequest& request = m_server.requests().first();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/submit");
    EXPECT_EQ(request.headers.value("content-type"),
              "multipart/form-data; boundary=81e29ba4f957efe5916039f587fe3ed7");
    EXPECT_EQ(request.headers.value("user-agent"), "ZTBCrashReporter");
    EXPECT_EQ(request.headers.value("content-length"), QByteArray::number(request.body.size()));

    const QMap<QString, QByteArray> fields = fieldsOf(request.body);
    EXPECT_EQ(fields.keys(),
              (QStringList{u"applicationIdentifier"_s,
                           u"applicationName"_s,
                           u"applicationShortVersion"_s,
                           u"applicationVersion"_s,
                           u"comments"_s,
                           u"crashLog"_s,
                           u"date"_s,
                           u"emailAddress"_s,
                           u"systemInformationIncluded"_s}));
    EXPECT_EQ(fields.value(u"applicationIdentifier"_s), "example.Corvane");
    EXPECT_EQ(fields.value(u"applicationName"_s), "Corvane");
    EXPECT_EQ(fields.value(u"applicationShortVersion"_s), "1.2");
    EXPECT_EQ(fields.value(u"applicationVersion"_s), "77");
    EXPECT_EQ(fields.value(u"comments"_s),
              "It \xE2\x80\x9C"
              "fell\xE2\x80\x9D over.\nTwice.");
    EXPECT_EQ(fields.value(u"crashLog"_s), "the content of the log\n");
    EXPECT_EQ(fields.value(u"emailAddress"_s), "me@example.org");
    EXPECT_EQ(fields.value(u"systemInformationIncluded"_s), "1");
    EXPECT_TRUE(fields.value(u"date"_s).contains("2014"));
    expectAccepted();
}

TEST_F(ZTBCrashReporterSubmissionTest, theSystemsFactsAreSentWhereTheyAreKnown)
{
    m_system.setHardware(1, QByteArray("x86_64\0", 7));
    m_system.setHardware(24, FakeSystemControl::bytesOf(qint64{17179869184}));
    m_system.setHardware(3, FakeSystemControl::bytesOf(qint32{8}));
    m_system.set("hw.cputype", FakeSystemControl::bytesOf(qint32{-2}));
    m_system.setSystemVersion({{u"ProductVersion"_s, u"10.8.2"_s}});
    m_server.setAnswer("ok\n");
    report();
    const QMap<QString, QByteArray> fields = fieldsOf(m_server.requests().value(0).body);
    EXPECT_EQ(fields.value(u"machine"_s), "x86_64");
    EXPECT_EQ(fields.value(u"physicalMemory"_s), "17179869184");
    EXPECT_EQ(fields.value(u"numberOfCPUs"_s), "8");
    EXPECT_EQ(fields.value(u"CPUType"_s), "-2");
    EXPECT_EQ(fields.value(u"systemVersion"_s), "10.8.2");
    EXPECT_EQ(fields.value(u"systemInformationIncluded"_s), "1");
    for (const QString& absent : {u"model"_s,
                                  u"busFrequency"_s,
                                  u"CPUFrequency"_s,
                                  u"CPUFamily"_s,
                                  u"CPUSubtype"_s,
                                  u"physicalCPUs"_s,
                                  u"logicalCPUs"_s,
                                  u"systemBuildVersion"_s}) {
        EXPECT_FALSE(fields.contains(absent)) << qPrintable(absent);
    }
}

TEST_F(ZTBCrashReporterSubmissionTest, withTheSystemsFactsOffNoneIsAskedForOrSent)
{
    m_system.setHardware(1, QByteArray("x86_64\0", 7));
    m_defaults.setBool(u"ZTBCrashReporterIncludeAnonymousSystemInformation"_s, false);
    m_server.setAnswer("ok\n");
    report();
    const QMap<QString, QByteArray> fields = fieldsOf(m_server.requests().value(0).body);
    EXPECT_EQ(fields.keys(),
              (QStringList{u"applicationIdentifier"_s,
                           u"applicationName"_s,
                           u"applicationShortVersion"_s,
                           u"applicationVersion"_s,
                           u"crashLog"_s,
                           u"date"_s,
                           u"systemInformationIncluded"_s}));
    EXPECT_EQ(fields.value(u"systemInformationIncluded"_s), "0");
    EXPECT_EQ(m_system.questions(), 0);
}

TEST_F(ZTBCrashReporterSubmissionTest, anAddressIsSentOnlyWhenItIsKnownAndWanted)
{
    Controller& controller = show();
    EXPECT_FALSE(controller.formValues().contains(u"emailAddress"_s)) << "wanted, not known";
    controller.setEmailAddress(u"me@example.org"_s);
    EXPECT_EQ(controller.formValues().value(u"emailAddress"_s), u"me@example.org"_s);
    m_defaults.setBool(u"ZTBCrashReporterIncludeEmailAddress"_s, false);
    EXPECT_FALSE(controller.formValues().contains(u"emailAddress"_s)) << "known, not wanted";
}

TEST_F(ZTBCrashReporterSubmissionTest, emptyCommentsAreNotSent)
{
    Controller& controller = show();
    EXPECT_FALSE(controller.formValues().contains(u"comments"_s));
    controller.commentsTextView().setString(u" "_s);
    EXPECT_EQ(controller.formValues().value(u"comments"_s), u" "_s);
    controller.commentsTextView().setString({});
    EXPECT_FALSE(controller.formValues().contains(u"comments"_s));
}

TEST_F(ZTBCrashReporterSubmissionTest, ofABundleOnlyWhatItHasIsSent)
{
    setInfo({{u"CFBundleName"_s, u"Corvane"_s}});
    EXPECT_EQ(show().formValues().keys(),
              (QStringList{
                  u"applicationName"_s, u"crashLog"_s, u"date"_s, u"systemInformationIncluded"_s}));
}

TEST_F(ZTBCrashReporterSubmissionTest, theDateIsInTheLocaleThatIsPreferred)
{
    Controller& controller = show();
    EXPECT_TRUE(controller.formValues().value(u"date"_s).toString().startsWith(u"Feb "_s));
    m_defaults.setValue(u"ZTBCrashReporterPreferredReportingLocale"_s, u"de_DE"_s);
    EXPECT_TRUE(controller.formValues().value(u"date"_s).toString().contains(u".02.2014, "_s));
    controller.windowWillClose();
    m_defaults.remove(u"ZTBCrashReporterPreferredReportingLocale"_s);
    setInfo({{u"ZTBCrashReporterPreferredReportingLocale"_s, u"ja_JP"_s}});
    EXPECT_TRUE(show().formValues().value(u"date"_s).toString().startsWith(u"2014/02/0"_s));
}

TEST_F(ZTBCrashReporterSubmissionTest, anEmptyLocaleIsNone)
{
    m_defaults.setValue(u"ZTBCrashReporterPreferredReportingLocale"_s, u""_s);
    EXPECT_TRUE(show().formValues().value(u"date"_s).toString().startsWith(u"Feb "_s));
    m_record.owner->windowWillClose();
    setInfo({{u"ZTBCrashReporterPreferredReportingLocale"_s, u"ja_JP"_s}});
    EXPECT_TRUE(show().formValues().value(u"date"_s).toString().startsWith(u"2014/02/0"_s));
    m_record.owner->windowWillClose();
    setInfo({{u"ZTBCrashReporterPreferredReportingLocale"_s, u""_s}});
    EXPECT_TRUE(show().formValues().value(u"date"_s).toString().startsWith(u"Feb "_s));
}

TEST_F(ZTBCrashReporterSubmissionTest, whileItIsSentTheButtonsAreDisabledAndTheIndicatorRuns)
{
    Controller& controller = show();
    controller.sendReport(nullptr);
    const auto expectSending = [&controller] {
        EXPECT_TRUE(controller.progressIndicator().isAnimating());
        EXPECT_FALSE(controller.reportButton().isEnabled());
        EXPECT_FALSE(controller.ignoreButton().isEnabled());
        EXPECT_FALSE(controller.discardButton().isEnabled());
    };
    expectSending();
    ASSERT_TRUE(waitUntil([this] { return !m_server.requests().isEmpty(); }));
    expectSending();
    EXPECT_TRUE(m_record.sheets.isEmpty());
}

TEST_F(ZTBCrashReporterSubmissionTest, anAcceptedReportsLogIsDeletedAndTheDateAdvancesToIt)
{
    m_server.setAnswer("ok\n");
    report();
    expectAccepted();
    EXPECT_TRUE(m_log.entries().isEmpty());
    EXPECT_FALSE(m_record.owner->reportButton().isEnabled()) << "the buttons stay as they are";
    EXPECT_TRUE(m_record.visible);
    m_record.sheetDidEnd(0);
    EXPECT_FALSE(m_record.visible);
}

TEST_F(ZTBCrashReporterSubmissionTest, acceptedIsAcceptedWithAnyStatus)
{
    m_server.setAnswer("ok\n", 500);
    report();
    expectAccepted();
}

TEST_F(ZTBCrashReporterSubmissionTest, anotherAnswerIsNotRecognized)
{
    for (const char* answer : {"OK\n", "ok\r\n", "ok", "", "ok\n\n", " ok\n", "Ok\n", "<html>"}) {
        m_record.sheets.clear();
        SCOPED_TRACE(answer);
        expectUnrecognized(answer);
        m_record.owner->windowWillClose();
        settle();
    }
}

TEST_F(ZTBCrashReporterSubmissionTest, anAnswerThatBeginsWithAnInvisibleMarkIsNotRecognized)
{
    expectUnrecognized("\xEF\xBB\xBFok\n");
}

TEST_F(ZTBCrashReporterSubmissionTest, anAnswerWithZeroBytesIsNotRecognized)
{
    expectUnrecognized(QByteArray("ok\n\0", 4));
}

TEST_F(ZTBCrashReporterSubmissionTest, anAnswerOfManyMegabytesIsNotRecognized)
{
    expectUnrecognized(QByteArray(qsizetype{20} * 1024 * 1024, 'o'));
}

TEST_F(ZTBCrashReporterSubmissionTest, aFailureKeepsTheLogAndTheDateAndTheLogIsOfferedAgain)
{
    expectUnrecognized("no\n", 404);
    m_record.sheetDidEnd(0);
    EXPECT_FALSE(m_record.visible);
    m_record.owner->windowWillClose();
    setAddress(m_server.url().toString());
    ZTBCrashReporter::checkForNewCrashes(services());
    ASSERT_NE(m_record.owner, nullptr);
    EXPECT_EQ(m_record.owner->crashLogPath(), m_path);
}

TEST_F(ZTBCrashReporterSubmissionTest, anErrorOfTheNetworkIsToldAsItIs)
{
    const QUrl url = m_server.url();
    m_server.close();
    Controller::showWindowForCrashLogPath(services(), m_path, url);
    report();
    expectFailed(u"The error was: Connection refused"_s);
}

TEST_F(ZTBCrashReporterSubmissionTest, aConnectionThatIsCutIsAFailure)
{
    m_server.setAnswer([](QTcpSocket& socket, const HttpRequest&) { socket.abort(); });
    report();
    expectFailed();
    EXPECT_EQ(m_server.requests().size(), 1);
}

TEST_F(ZTBCrashReporterSubmissionTest, aServerThatNeverAnswersIsAFailure)
{
    m_patience = std::chrono::milliseconds(300);
    report();
    expectFailed(u"The error was: The request timed out."_s);
}

TEST_F(ZTBCrashReporterSubmissionTest, theLengthThatIsSaidIsThatOfTheBytesThatAreSent)
{
    const QByteArray end = "--81e29ba4f957efe5916039f587fe3ed7--\r\n";
    QByteArray received;
    QTcpServer server;
    QObject::connect(&server, &QTcpServer::newConnection, [&] {
        QTcpSocket* const socket = server.nextPendingConnection();
        QObject::connect(socket, &QIODevice::readyRead, [&received, &end, socket] {
            received += socket->readAll();
            if (received.endsWith(end)) {
                // Whatever else is sent comes before the sender has read the answer.
                socket->write(LoopbackServer::response(200, "ok\n"));
            }
        });
    });
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    Controller::showWindowForCrashLogPath(
        services(), m_path, QUrl(u"http://127.0.0.1:%1/"_s.arg(server.serverPort())));
    m_record.owner->commentsTextView().setString(u"\u00e4\u00f6\u00fc\n\U0001F4F7"_s);
    report();
    expectAccepted();
    settle();
    const qsizetype body = received.indexOf("\r\n\r\n") + 4;
    const QRegularExpression length(u"\r\ncontent-length: ([0-9]+)\r\n"_s,
                                    QRegularExpression::CaseInsensitiveOption);
    EXPECT_EQ(length.match(QString::fromLatin1(received.left(body))).captured(1).toLongLong(),
              received.size() - body);
    EXPECT_TRUE(received.endsWith("\r\n" + end));
}

TEST_F(ZTBCrashReporterSubmissionTest, whatAnotherServerSaysAcceptsNothing)
{
    for (const int status : {302, 307}) {
        LoopbackServer other;
        other.setAnswer("ok\n");
        m_server.setAnswer([&other, status](QTcpSocket& socket, const HttpRequest&) {
            socket.write(LoopbackServer::response(
                status, "ok\n", "Location: " + other.url().toEncoded() + "\r\n"));
        });
        report();
        SCOPED_TRACE(status);
        expectFailed();
        EXPECT_TRUE(other.requests().isEmpty());
        m_record.owner->windowWillClose();
        m_record.sheets.clear();
    }
}

TEST_F(ZTBCrashReporterSubmissionTest, onlyTheAnswerAfterARedirectCounts)
{
    m_server.setAnswer([this](QTcpSocket& socket, const HttpRequest&) {
        socket.write(m_server.requests().size() == 1
                         ? LoopbackServer::response(307, "no\n", "Location: /next\r\n")
                         : LoopbackServer::response(200, "ok\n"));
    });
    report();
    expectAccepted();
    EXPECT_EQ(m_server.requests().value(1).body, m_server.requests().value(0).body);
}

TEST_F(ZTBCrashReporterSubmissionTest, aLogThatWasDeletedMeanwhileIsLoggedAndStillASuccess)
{
    m_server.setAnswer([this](QTcpSocket& socket, const HttpRequest&) {
        EXPECT_TRUE(QFile::remove(m_path));
        socket.write(LoopbackServer::response(200, "ok\n"));
    });
    report();
    EXPECT_EQ(m_record.sheets.first().kind, CrashReportSheet::Kind::Success);
    EXPECT_EQ(lastReport(), kNow - 100.0) << "there is no date to advance to";
    EXPECT_EQ(m_log.entries(),
              QStringList{u"ZTBCrashReporter error: Unable to delete the submitted crash log "
                          "(Corvane_2014-02-03_04-05-06_7.crash): No such file or directory"_s});
}

TEST_F(ZTBCrashReporterSubmissionTest, aLogThatWasDeletedBeforeIsSentWithoutBytes)
{
    show();
    ASSERT_TRUE(QFile::remove(m_path));
    m_server.setAnswer("ok\n");
    report();
    EXPECT_EQ(fieldsOf(m_server.requests().value(0).body).value(u"crashLog"_s), "");
    EXPECT_EQ(m_record.sheets.first().kind, CrashReportSheet::Kind::Success);
}

TEST_F(ZTBCrashReporterSubmissionTest, aLogThatChangedMeanwhileIsJudgedByItsDateThen)
{
    m_server.setAnswer([this](QTcpSocket& socket, const HttpRequest&) {
        EXPECT_TRUE(write(m_path, "another content"));
        setModified(m_path, kNow + 40.0);
        socket.write(LoopbackServer::response(200, "ok\n"));
    });
    report();
    EXPECT_EQ(fieldsOf(m_server.requests().value(0).body).value(u"crashLog"_s),
              "the content of the log\n");
    EXPECT_EQ(lastReport(), kNow + 40.0);
    EXPECT_FALSE(QFile::exists(m_path));
}

TEST_F(ZTBCrashReporterSubmissionTest, aLogThatCannotBeDeletedIsNotOfferedAgain)
{
    ASSERT_TRUE(QFile::remove(m_path));
    // A folder that is not empty is nothing that can be deleted as a file.
    ASSERT_TRUE(QDir().mkpath(m_path + u"/inside"_s));
    setModified(m_path, kNow + 0.5);
    m_server.setAnswer("ok\n");
    report();
    EXPECT_EQ(m_record.sheets.first().kind, CrashReportSheet::Kind::Success);
    EXPECT_EQ(m_log.entries().size(), 1);
    m_record.owner->windowWillClose();
    setModified(m_path + u"/inside"_s, kNow - 500.0);
    setAddress(m_server.url().toString());
    ZTBCrashReporter::checkForNewCrashes(services());
    EXPECT_EQ(m_record.windows, 1) << "its date is known to the last fraction";
}

TEST_F(ZTBCrashReporterSubmissionTest, anIllegalFormValueIsLoggedAndNotRaised)
{
    setInfo({{u"CFBundleName"_s, u"Corvane"_s}, {u"CFBundleVersion"_s, QVariantList{1, 2}}});
    m_server.setAnswer("ok\n");
    report();
    expectAccepted();
    ASSERT_EQ(m_log.entries().size(), 1);
    EXPECT_TRUE(m_log.entries().first().startsWith(
        u"ZTBCrashReporterError: formValues contained illegal object"_s));
    EXPECT_TRUE(m_log.entries().first().endsWith(u" of class QVariantList"_s));
    EXPECT_TRUE(m_server.requests().value(0).body.contains(
        "--81e29ba4f957efe5916039f587fe3ed7\r\n\r\n--81e29ba4f957efe5916039f587fe3ed7"));
}

TEST_F(ZTBCrashReporterSubmissionTest, aLogWithBlanksAndOtherLettersInItsNameArrives)
{
    m_path = makeLog(u"Corvane \u00c4rger \u20ac.crash"_s, kNow + 0.5);
    m_server.setAnswer("ok\n");
    report();
    expectAccepted();
    EXPECT_TRUE(m_server.requests().value(0).body.contains(
        "filename=\"Corvane \xC3\x84rger \xE2\x82\xAC.crash\"\r\n"));
}

TEST_F(ZTBCrashReporterSubmissionTest, closingTheWindowBreaksTheSubmissionOff)
{
    Controller& controller = show();
    const std::weak_ptr<Controller> life = controller.self_reference();
    bool isGone = false;
    m_server.setAnswer([&isGone](QTcpSocket& socket, const HttpRequest&) {
        QObject::connect(
            &socket, &QAbstractSocket::disconnected, &socket, [&isGone] { isGone = true; });
    });
    controller.sendReport(nullptr);
    ASSERT_TRUE(waitUntil([this] { return !m_server.requests().isEmpty(); }));
    controller.windowWillClose();
    EXPECT_TRUE(life.expired());
    EXPECT_TRUE(waitUntil([&isGone] { return isGone; })) << "the server sees it";
    EXPECT_TRUE(m_record.sheets.isEmpty());
    EXPECT_TRUE(QFile::exists(m_path));
}

TEST_F(ZTBCrashReporterSubmissionTest, closedBeforeTheSheetIsShownThereIsNoSheet)
{
    Controller& controller = show();
    controller.connectionDidReceiveResponse();
    controller.connectionDidReceiveData("ok\n");
    controller.connectionDidFinishLoading();
    EXPECT_TRUE(m_record.sheets.isEmpty()) << "it is not waited for";
    controller.windowWillClose();
    settle();
    EXPECT_TRUE(m_record.sheets.isEmpty());
    EXPECT_FALSE(QFile::exists(m_path)) << "the report was accepted all the same";
}

TEST_F(ZTBCrashReporterSubmissionTest, eachResponseBeginsWithAnEmptyBuffer)
{
    Controller& controller = show();
    controller.connectionDidReceiveResponse();
    controller.connectionDidReceiveData("garbage");
    controller.connectionDidReceiveResponse();
    controller.connectionDidReceiveData("o");
    controller.connectionDidReceiveData("k\n");
    controller.connectionDidFinishLoading();
    settle();
    expectAccepted();
}

} // namespace
