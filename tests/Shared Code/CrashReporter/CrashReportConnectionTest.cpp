#include "CrashReportConnection.h"

#include "CrashReporterFixture.h"
#include "LoopbackServer.h"

#include <QLocale>
#include <QNetworkReply>
#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QTcpSocket>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace
{

/// What one connection told.
class CrashReportConnectionTest : public CrashReporterFixture
{
protected:
    /// Sends, and waits for the end.
    void send(const QUrl& url, const QByteArray& body = "the body")
    {
        start(url, body);
        ASSERT_TRUE(waitUntil([this] { return m_finished + m_failed > 0; }));
    }

    void start(const QUrl& url, const QByteArray& body = "the body")
    {
        QNetworkRequest request(url);
        request.setHeader(QNetworkRequest::ContentTypeHeader, u"text/x-test"_s);
        request.setHeader(QNetworkRequest::UserAgentHeader, u"Tester"_s);
        request.setHeader(QNetworkRequest::ContentLengthHeader, body.size());
        m_connection = std::make_unique<CrashReportConnection>(request, body, m_patience);
        using Connection = CrashReportConnection;
        QObject::connect(m_connection.get(), &Connection::didReceiveResponse, [this] {
            ++m_responses;
            m_data.clear();
        });
        QObject::connect(m_connection.get(), &Connection::didReceiveData, [this](const auto& data) {
            m_data += data;
        });
        QObject::connect(
            m_connection.get(), &Connection::didFinishLoading, [this] { ++m_finished; });
        QObject::connect(m_connection.get(),
                         &Connection::didFailWithError,
                         [this](const CrashReportError& error) {
                             ++m_failed;
                             m_error = error;
                         });
        m_connection->start();
    }

    void expectAnswer(const QByteArray& data) const
    {
        EXPECT_EQ(m_finished, 1);
        EXPECT_EQ(m_failed, 0) << qPrintable(m_error.localizedDescription);
        EXPECT_EQ(m_responses, 1);
        EXPECT_EQ(m_data, data);
    }

    void expectFailure(int code) const
    {
        EXPECT_EQ(m_finished, 0);
        EXPECT_EQ(m_failed, 1);
        EXPECT_EQ(m_error.domain, u"QNetworkReply"_s);
        EXPECT_EQ(m_error.code, code);
        EXPECT_FALSE(m_error.localizedDescription.isEmpty());
    }

    /// The first request is sent on by that status, every other one is answered.
    static void redirect(LoopbackServer& server, int status, const QByteArray& target)
    {
        server.setAnswer([&server, status, target](QTcpSocket& socket, const HttpRequest&) {
            socket.write(
                server.requests().size() == 1
                    ? LoopbackServer::response(status, "moved\n", "Location: " + target + "\r\n")
                    : LoopbackServer::response(200, "ok\n"));
        });
    }

    LoopbackServer m_server;
    std::unique_ptr<CrashReportConnection> m_connection;
    int m_responses{0};
    QByteArray m_data;
    int m_finished{0};
    int m_failed{0};
    CrashReportError m_error;
};

TEST_F(CrashReportConnectionTest, theBodyIsPostedWithTheHeadersOfTheRequest)
{
    m_server.setAnswer("ok\n");
    send(m_server.url(u"/a b/c"_s));
    expectAnswer("ok\n");
    ASSERT_EQ(m_server.requests().size(), 1);
    const HttpRequest& request = m_server.requests().first();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/a%20b/c");
    EXPECT_EQ(request.body, "the body");
    EXPECT_EQ(request.headers.value("content-type"), "text/x-test");
    EXPECT_EQ(request.headers.value("user-agent"), "Tester");
    EXPECT_EQ(request.headers.value("content-length"), "8");
}

TEST_F(CrashReportConnectionTest, thePersonsLanguageIsNotTold)
{
    const QLocale before;
    QLocale::setDefault(QLocale(u"is_IS"_s));
    redirect(m_server, 303, "/next");
    send(m_server.url());
    QLocale::setDefault(before);
    ASSERT_EQ(m_server.requests().size(), 2);
    for (const HttpRequest& request : m_server.requests()) {
        EXPECT_EQ(request.headers.value("accept-language"), "en");
    }
}

TEST_F(CrashReportConnectionTest, nameAndPasswordOfTheAddressAreSentAtOnce)
{
    m_server.setAnswer([](QTcpSocket& socket, const HttpRequest& request) {
        const bool isKnown = request.headers.value("authorization") ==
                             "Basic " + QByteArray("J\u00f6 rg:p@ss:word").toBase64();
        socket.write(isKnown ? LoopbackServer::response(200, "ok\n")
                             : LoopbackServer::response(
                                   401, "who?\n", "WWW-Authenticate: Basic realm=\"x\"\r\n"));
    });
    QUrl url = m_server.url();
    url.setUserName(u"J\u00f6 rg"_s, QUrl::DecodedMode);
    url.setPassword(u"p@ss:word"_s, QUrl::DecodedMode);
    send(url);
    expectAnswer("ok\n");
    ASSERT_EQ(m_server.requests().size(), 1);
    EXPECT_EQ(m_server.requests().first().body, "the body");
}

TEST_F(CrashReportConnectionTest, aWrongPasswordIsAnAnswerLikeAnyOther)
{
    m_server.setAnswer([](QTcpSocket& socket, const HttpRequest&) {
        socket.write(
            LoopbackServer::response(401, "who?\n", "WWW-Authenticate: Basic realm=\"x\"\r\n"));
    });
    QUrl url = m_server.url();
    url.setUserInfo(u"me:wrong"_s);
    send(url);
    expectAnswer("who?\n");
    EXPECT_EQ(m_server.requests().size(), 1);
}

TEST_F(CrashReportConnectionTest, thePasswordIsSentWithARedirectedReportToo)
{
    for (const int status : {302, 307}) {
        m_responses = m_finished = m_failed = 0;
        const qsizetype before = m_server.requests().size();
        m_server.setAnswer([status](QTcpSocket& socket, const HttpRequest& request) {
            socket.write(request.path == "/next"
                             ? LoopbackServer::response(200, "ok\n")
                             : LoopbackServer::response(status, "", "Location: /next\r\n"));
        });
        QUrl url = m_server.url();
        url.setUserInfo(u"me:secret"_s);
        send(url);
        SCOPED_TRACE(status);
        expectAnswer("ok\n");
        ASSERT_EQ(m_server.requests().size(), before + 2);
        const QByteArray credentials = "Basic " + QByteArray("me:secret").toBase64();
        EXPECT_EQ(m_server.requests().value(before).headers.value("authorization"), credentials);
        EXPECT_EQ(m_server.requests().value(before + 1).headers.value("authorization"),
                  credentials);
    }
}

TEST_F(CrashReportConnectionTest, noRedirectLeadsToAnotherServer)
{
    for (const int status : {301, 302, 303, 307, 308}) {
        for (const QString& host : {u"localhost"_s, u"127.0.0.1"_s}) {
            m_responses = m_finished = m_failed = 0;
            LoopbackServer other; // on the same host it has another port
            other.setAnswer("ok\n");
            QUrl target = other.url();
            target.setHost(host);
            target.setUserInfo(u"you:secret"_s);
            const qsizetype before = m_server.requests().size();
            m_server.setAnswer([target, status](QTcpSocket& socket, const HttpRequest&) {
                socket.write(LoopbackServer::response(
                    status, "ok\n", "Location: " + target.toEncoded() + "\r\n"));
            });
            send(m_server.url());
            SCOPED_TRACE(status);
            expectFailure(QNetworkReply::InsecureRedirectError);
            EXPECT_EQ(m_error.localizedDescription,
                      u"The server redirected the report to another server, http://%1:%2, and it "
                      "was not sent there."_s.arg(host, QString::number(target.port())));
            EXPECT_EQ(m_server.requests().size(), before + 1);
            EXPECT_TRUE(other.requests().isEmpty());
        }
    }
}

TEST_F(CrashReportConnectionTest, aServerIsItsSchemeHostAndPortOrTheSecureSideOfItsHost)
{
    const auto isSame = [](const char* from, const char* to) {
        return CrashReportConnection::isSameServer(QUrl(QString::fromLatin1(from)),
                                                   QUrl(QString::fromLatin1(to)));
    };
    EXPECT_TRUE(isSame("http://a.example/x", "http://A.example:80/y?z"));
    EXPECT_TRUE(isSame("https://a.example:443/", "https://a.example/"));
    EXPECT_TRUE(isSame("http://a.example:8410/", "http://a.example:8410/b"));
    EXPECT_TRUE(isSame("http://a.example/", "https://a.example/"));
    EXPECT_TRUE(isSame("http://a.example:80/", "https://a.example:443/"));
    EXPECT_FALSE(isSame("http://a.example/", "http://b.example/"));
    EXPECT_FALSE(isSame("http://a.example/", "https://b.example/"));
    EXPECT_FALSE(isSame("http://a.example/", "http://a.example:8080/"));
    EXPECT_FALSE(isSame("http://a.example:8080/", "https://a.example/"));
    EXPECT_FALSE(isSame("http://a.example/", "https://a.example:8443/"));
    EXPECT_FALSE(isSame("http://a.example:443/", "https://a.example/"));
    EXPECT_FALSE(isSame("https://a.example/", "http://a.example/"));
}

TEST_F(CrashReportConnectionTest, anErrorStatusIsAnAnswerLikeAnyOther)
{
    for (const int status : {400, 401, 403, 404, 405, 409, 410, 418, 500, 501, 503, 599}) {
        m_responses = m_finished = m_failed = 0;
        m_server.setAnswer("body of " + QByteArray::number(status), status);
        send(m_server.url());
        SCOPED_TRACE(status);
        expectAnswer("body of " + QByteArray::number(status));
    }
}

TEST_F(CrashReportConnectionTest, anAnswerInPiecesArrivesWhole)
{
    m_server.setAnswer([](QTcpSocket& socket, const HttpRequest&) {
        socket.write("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1\r\no\r\n");
        socket.flush();
        socket.write("2\r\nk\n\r\n0\r\n\r\n");
    });
    send(m_server.url());
    expectAnswer("ok\n");
}

TEST_F(CrashReportConnectionTest, anEmptyAnswerIsAnAnswer)
{
    m_server.setAnswer("");
    send(m_server.url());
    expectAnswer("");
}

TEST_F(CrashReportConnectionTest, afterATemporaryRedirectTheBodyIsPostedAgain)
{
    for (const int status : {307, 308}) {
        LoopbackServer server;
        m_responses = m_finished = m_failed = 0;
        redirect(server, status, server.url(u"/there"_s).toEncoded());
        send(server.url());
        SCOPED_TRACE(status);
        expectAnswer("ok\n");
        ASSERT_EQ(server.requests().size(), 2);
        const HttpRequest& request = server.requests().last();
        EXPECT_EQ(request.method, "POST");
        EXPECT_EQ(request.path, "/there");
        EXPECT_EQ(request.body, "the body");
        EXPECT_EQ(request.headers.value("content-type"), "text/x-test");
    }
}

TEST_F(CrashReportConnectionTest, afterTheOtherRedirectsTheNewAddressIsAskedFor)
{
    for (const int status : {301, 302, 303}) {
        LoopbackServer server;
        m_responses = m_finished = m_failed = 0;
        redirect(server, status, server.url(u"/there"_s).toEncoded());
        send(server.url());
        SCOPED_TRACE(status);
        expectAnswer("ok\n");
        ASSERT_EQ(server.requests().size(), 2);
        const HttpRequest& request = server.requests().last();
        EXPECT_EQ(request.method, "GET");
        EXPECT_EQ(request.path, "/there");
        EXPECT_EQ(request.body, "");
        EXPECT_FALSE(request.headers.contains("content-length"));
        EXPECT_FALSE(request.headers.contains("content-type"));
        EXPECT_EQ(request.headers.value("user-agent"), "Tester");
    }
}

TEST_F(CrashReportConnectionTest, aRelativeRedirectIsOfTheSameServer)
{
    redirect(m_server, 307, "next");
    send(m_server.url(u"/one/two"_s));
    expectAnswer("ok\n");
    EXPECT_EQ(m_server.requests().value(1).path, "/one/next");
}

TEST_F(CrashReportConnectionTest, aCircleOfRedirectsIsLeft)
{
    m_server.setAnswer([](QTcpSocket& socket, const HttpRequest&) {
        socket.write(LoopbackServer::response(302, "", "Location: /again\r\n"));
    });
    send(m_server.url());
    expectFailure(QNetworkReply::TooManyRedirectsError);
    EXPECT_EQ(m_server.requests().size(), 21);
}

TEST_F(CrashReportConnectionTest, aRedirectToAnotherKindOfAddressIsNotFollowed)
{
    for (const char* target : {"file:///etc/passwd", "ftp://127.0.0.1/", "data:,ok%0A"}) {
        m_responses = m_finished = m_failed = 0;
        m_server.setAnswer([target](QTcpSocket& socket, const HttpRequest&) {
            socket.write(
                LoopbackServer::response(307, "", "Location: " + QByteArray(target) + "\r\n"));
        });
        send(m_server.url());
        SCOPED_TRACE(target);
        expectFailure(QNetworkReply::InsecureRedirectError);
    }
}

TEST_F(CrashReportConnectionTest, aConnectionThatIsCutIsAFailureAndTheBodyIsSentOnce)
{
    for (const bool abort : {false, true}) {
        m_responses = m_finished = m_failed = 0;
        const qsizetype before = m_server.requests().size();
        m_server.setAnswer([abort](QTcpSocket& socket, const HttpRequest&) {
            abort ? socket.abort() : socket.disconnectFromHost();
        });
        send(m_server.url());
        SCOPED_TRACE(abort);
        expectFailure(QNetworkReply::RemoteHostClosedError);
        EXPECT_EQ(m_server.requests().size(), before + 1);
    }
}

TEST_F(CrashReportConnectionTest, anAnswerThatIsCutIsAFailure)
{
    for (const int status : {200, 500}) {
        m_responses = m_finished = m_failed = 0;
        m_server.setAnswer([status](QTcpSocket& socket, const HttpRequest&) {
            socket.write("HTTP/1.1 " + QByteArray::number(status) +
                         " X\r\nContent-Length: 30\r\n\r\nok\n");
            socket.disconnectFromHost();
        });
        send(m_server.url());
        SCOPED_TRACE(status);
        expectFailure(QNetworkReply::RemoteHostClosedError);
    }
}

TEST_F(CrashReportConnectionTest, whatIsNoHttpIsAFailure)
{
    m_server.setAnswer([](QTcpSocket& socket, const HttpRequest&) {
        socket.write("ok\n");
        socket.disconnectFromHost();
    });
    send(m_server.url());
    EXPECT_EQ(m_finished, 0);
    EXPECT_EQ(m_failed, 1);
}

TEST_F(CrashReportConnectionTest, nobodyListeningIsAFailure)
{
    const QUrl url = m_server.url();
    m_server.close();
    send(url);
    expectFailure(QNetworkReply::ConnectionRefusedError);
}

TEST_F(CrashReportConnectionTest, whatIsNoAddressOfAServerIsAFailure)
{
    for (const QString& address : {u"nowhere"_s, u"ftp://127.0.0.1/"_s, u"file:///tmp/x"_s}) {
        m_responses = m_finished = m_failed = 0;
        send(QUrl(address));
        SCOPED_TRACE(qPrintable(address));
        EXPECT_EQ(m_finished, 0);
        EXPECT_EQ(m_failed, 1);
    }
}

TEST_F(CrashReportConnectionTest, aServerThatNeverAnswersIsAFailureWhenPatienceEnds)
{
    m_patience = std::chrono::milliseconds(300);
    send(m_server.url());
    expectFailure(QNetworkReply::TimeoutError);
    EXPECT_EQ(m_error.localizedDescription, u"The request timed out."_s);
    EXPECT_EQ(m_server.requests().size(), 1);
}

TEST_F(CrashReportConnectionTest, patienceIsWithAServerThatDoesNothing)
{
    m_patience = std::chrono::milliseconds(2000);
    m_server.setAnswer([](QTcpSocket& socket, const HttpRequest&) {
        socket.write("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\n");
        auto* const timer = new QTimer(&socket);
        QObject::connect(timer, &QTimer::timeout, &socket, [&socket, timer, sent = 0]() mutable {
            socket.write(QByteArray("ok\n").mid(sent, 1));
            if (++sent == 3) {
                timer->stop();
            }
        });
        timer->start(800);
    });
    send(m_server.url());
    expectAnswer("ok\n");
}

TEST_F(CrashReportConnectionTest, aCancelledConnectionTellsNothing)
{
    start(m_server.url());
    ASSERT_TRUE(waitUntil([this] { return !m_server.requests().isEmpty(); }));
    m_connection->cancel();
    m_connection->cancel();
    settle();
    EXPECT_EQ(m_finished + m_failed + m_responses, 0);
    m_connection.reset();
    settle();
    EXPECT_EQ(m_finished + m_failed + m_responses, 0);
}

TEST_F(CrashReportConnectionTest, aBodyOfFiftyMegabytesArrivesWhole)
{
    QByteArray body(qsizetype{50} * 1024 * 1024, 'x');
    body.append("the end");
    m_server.setAnswer("ok\n");
    send(m_server.url(), body);
    expectAnswer("ok\n");
    ASSERT_EQ(m_server.requests().size(), 1);
    EXPECT_TRUE(m_server.requests().first().body == body);
}

/// The same over TLS, with a certificate that the test makes.
class SecureCrashReportConnectionTest : public CrashReportConnectionTest
{
protected:
    void SetUp() override
    {
        CrashReportConnectionTest::SetUp();
        const QString key = m_folder.filePath(u"key.pem"_s);
        const QString certificate = m_folder.filePath(u"certificate.pem"_s);
        QProcess openssl;
        openssl.setStandardErrorFile(QProcess::nullDevice());
        openssl.start(u"openssl"_s,
                      {u"req"_s,
                       u"-x509"_s,
                       u"-newkey"_s,
                       u"rsa:2048"_s,
                       u"-nodes"_s,
                       u"-days"_s,
                       u"2"_s,
                       u"-subj"_s,
                       u"/CN=127.0.0.1"_s,
                       u"-addext"_s,
                       u"subjectAltName=IP:127.0.0.1"_s,
                       u"-keyout"_s,
                       key,
                       u"-out"_s,
                       certificate});
        ASSERT_TRUE(openssl.waitForFinished());
        ASSERT_EQ(openssl.exitCode(), 0);
        m_certificates = QSslCertificate::fromPath(certificate);
        ASSERT_EQ(m_certificates.size(), 1);
        QFile keyFile(key);
        ASSERT_TRUE(keyFile.open(QIODevice::ReadOnly));
        QSslConfiguration configuration;
        configuration.setLocalCertificate(m_certificates.first());
        configuration.setPrivateKey(QSslKey(&keyFile, QSsl::Rsa));
        m_sslServer.setSslConfiguration(configuration);
        m_secureServer = std::make_unique<LoopbackServer>(m_sslServer);
        m_before = QSslConfiguration::defaultConfiguration();
    }

    void TearDown() override
    {
        QSslConfiguration::setDefaultConfiguration(m_before);
        m_connection.reset();
        CrashReportConnectionTest::TearDown();
    }

    void trust()
    {
        QSslConfiguration configuration = m_before;
        configuration.addCaCertificates(m_certificates);
        QSslConfiguration::setDefaultConfiguration(configuration);
    }

    QList<QSslCertificate> m_certificates;
    QSslServer m_sslServer;
    std::unique_ptr<LoopbackServer> m_secureServer;
    QSslConfiguration m_before;
};

TEST_F(SecureCrashReportConnectionTest, aServerThatIsTrustedGetsTheReport)
{
    trust();
    m_secureServer->setAnswer("ok\n");
    send(m_secureServer->url());
    expectAnswer("ok\n");
    ASSERT_EQ(m_secureServer->requests().size(), 1);
    EXPECT_EQ(m_secureServer->requests().first().body, "the body");
}

TEST_F(SecureCrashReportConnectionTest, aServerThatIsNotTrustedGetsNothing)
{
    m_secureServer->setAnswer("ok\n");
    send(m_secureServer->url());
    expectFailure(QNetworkReply::SslHandshakeFailedError);
    EXPECT_TRUE(m_secureServer->requests().isEmpty());
}

TEST_F(SecureCrashReportConnectionTest, aRedirectToAnUnencryptedAddressIsNotFollowed)
{
    trust();
    m_server.setAnswer("ok\n");
    m_secureServer->setAnswer([this](QTcpSocket& socket, const HttpRequest&) {
        socket.write(
            LoopbackServer::response(307, "", "Location: " + m_server.url().toEncoded() + "\r\n"));
    });
    send(m_secureServer->url());
    expectFailure(QNetworkReply::InsecureRedirectError);
    EXPECT_TRUE(m_server.requests().isEmpty());
}

} // namespace
