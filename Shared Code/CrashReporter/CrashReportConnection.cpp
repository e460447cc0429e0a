#include "CrashReportConnection.h"

#include "CrashReportTexts.h"

#include <QIODevice>
#include <QNetworkReply>
#include <QUrl>

#include <algorithm>
#include <cstring>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kMostRedirects = 20;
constexpr int kFirstErrorStatus = 400;
constexpr int kTemporaryRedirect = 307;
constexpr int kPermanentRedirect = 308;
constexpr int kHttpPort = 80;
constexpr int kHttpsPort = 443;

/// The body of a request, read from memory once from its start to its end. It cannot be wound back:
/// Qt would send a POST a second time when the connection is cut.
class BodyDevice final : public QIODevice
{
public:
    BodyDevice(QByteArray body, QObject* parent)
        : QIODevice(parent)
        , m_body(std::move(body))
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    [[nodiscard]] qint64 size() const override { return m_body.size(); }

    bool seek(qint64 position) override { return position >= pos() && QIODevice::seek(position); }

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        const qint64 count = std::min<qint64>(maxSize, m_body.size() - pos());
        if (count <= 0) {
            return -1;
        }
        std::memcpy(data, m_body.constData() + pos(), static_cast<size_t>(count));
        return count;
    }

    qint64 writeData(const char* /*data*/, qint64 /*maxSize*/) override { return -1; }

private:
    const QByteArray m_body;
};

int statusOf(const QNetworkReply& reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

/// Where the answer sends us; empty when it is no redirect.
QUrl targetOf(const QNetworkReply& reply)
{
    const QUrl target = reply.attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    return target.isEmpty() ? QUrl() : reply.url().resolved(target);
}

/// Whether there is a whole answer: Qt also calls an answer of an HTTP error status an error.
bool isAnswered(const QNetworkReply& reply)
{
    const QNetworkReply::NetworkError error = reply.error();
    // Before a redirect that repeats the POST is told, Qt winds the body back, in vain.
    const bool isRedirect =
        error == QNetworkReply::ContentReSendError && !targetOf(reply).isEmpty();
    return error == QNetworkReply::NoError || isRedirect ||
           (statusOf(reply) >= kFirstErrorStatus && error > QNetworkReply::UnknownNetworkError &&
            error != QNetworkReply::ContentReSendError);
}

int portOf(const QUrl& url)
{
    return url.port(url.scheme() == "https"_L1 ? kHttpsPort : kHttpPort);
}

bool isSafeRedirect(const QUrl& from, const QUrl& to)
{
    return to.isValid() &&
           (to.scheme() == "https"_L1 || (to.scheme() == "http"_L1 && from.scheme() == "http"_L1));
}

} // namespace

CrashReportConnection::CrashReportConnection(const QNetworkRequest& request,
                                             QByteArray body,
                                             std::chrono::milliseconds patience,
                                             QObject* parent)
    : QObject(parent)
    , m_request(request)
    , m_body(std::move(body))
{
    m_request.setTransferTimeout(static_cast<int>(patience.count()));
    m_request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                           QNetworkRequest::ManualRedirectPolicy);
    m_request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    // Qt would say the person's.
    m_request.setRawHeader("Accept-Language", "en");
    authorize();
}

CrashReportConnection::~CrashReportConnection()
{
    cancel();
}

void CrashReportConnection::start()
{
    post();
}

void CrashReportConnection::cancel()
{
    if (m_reply != nullptr) {
        QNetworkReply* const reply = std::exchange(m_reply, nullptr);
        reply->disconnect(this);
        reply->abort();
        reply->deleteLater();
    }
}

bool CrashReportConnection::isSameServer(const QUrl& from, const QUrl& to)
{
    const bool isSameScheme = from.scheme() == to.scheme() && portOf(from) == portOf(to);
    const bool isMadeSecure = from.scheme() == "http"_L1 && to.scheme() == "https"_L1 &&
                              portOf(from) == kHttpPort && portOf(to) == kHttpsPort;
    return from.host() == to.host() && (isSameScheme || isMadeSecure);
}

void CrashReportConnection::authorize()
{
    QUrl url = m_request.url();
    if (!url.userInfo().isEmpty()) {
        const QString credentials =
            url.userName(QUrl::FullyDecoded) + u':' + url.password(QUrl::FullyDecoded);
        m_request.setRawHeader("Authorization", "Basic " + credentials.toUtf8().toBase64());
        url.setUserInfo({});
        m_request.setUrl(url);
    }
}

void CrashReportConnection::post()
{
    auto* const body = new BodyDevice(m_body, this);
    QNetworkReply* const reply = m_manager.post(m_request, body);
    body->setParent(reply);
    watch(reply);
}

void CrashReportConnection::get()
{
    m_isPost = false;
    m_request.setHeader(QNetworkRequest::ContentTypeHeader, QVariant());
    m_request.setHeader(QNetworkRequest::ContentLengthHeader, QVariant());
    watch(m_manager.get(m_request));
}

void CrashReportConnection::watch(QNetworkReply* reply)
{
    m_reply = reply;
    connect(reply, &QNetworkReply::metaDataChanged, this, &CrashReportConnection::receiveResponse);
    connect(reply, &QIODevice::readyRead, this, &CrashReportConnection::receiveData);
    connect(reply, &QNetworkReply::finished, this, &CrashReportConnection::finish);
}

void CrashReportConnection::receiveResponse()
{
    if (targetOf(*m_reply).isEmpty()) {
        emit didReceiveResponse();
    }
}

void CrashReportConnection::receiveData()
{
    const QByteArray data = m_reply->readAll();
    if (!data.isEmpty() && targetOf(*m_reply).isEmpty()) {
        emit didReceiveData(data);
    }
}

void CrashReportConnection::finish()
{
    if (m_reply->isOpen()) {
        receiveData();
    }
    QNetworkReply* const reply = std::exchange(m_reply, nullptr);
    reply->disconnect(this);
    reply->deleteLater();
    const QNetworkReply::NetworkError error = reply->error();
    const QUrl target = targetOf(*reply);
    if (!isAnswered(*reply)) {
        if (error == QNetworkReply::OperationCanceledError) {
            // Who cancels is told nothing, so this was the time-out.
            fail(QNetworkReply::TimeoutError, CrashReportTexts::timedOut());
        } else if (error == QNetworkReply::ContentReSendError) {
            fail(QNetworkReply::RemoteHostClosedError, CrashReportTexts::connectionLost());
        } else {
            fail(error, reply->errorString());
        }
    } else if (!target.isEmpty()) {
        follow(target, statusOf(*reply));
    } else {
        emit didFinishLoading();
    }
}

void CrashReportConnection::follow(const QUrl& target, int status)
{
    if (!isSafeRedirect(m_request.url(), target)) {
        fail(QNetworkReply::InsecureRedirectError, CrashReportTexts::redirectedToUnsafeAddress());
        return;
    }
    if (++m_redirects > kMostRedirects) {
        fail(QNetworkReply::TooManyRedirectsError, CrashReportTexts::tooManyRedirects());
        return;
    }
    if (!isSameServer(m_request.url(), target)) {
        fail(QNetworkReply::InsecureRedirectError,
             CrashReportTexts::redirectedToAnotherServer(
                 target.toDisplayString(QUrl::RemoveUserInfo | QUrl::RemovePath |
                                        QUrl::RemoveQuery | QUrl::RemoveFragment)));
        return;
    }
    m_request.setUrl(target);
    authorize();
    if (m_isPost && (status == kTemporaryRedirect || status == kPermanentRedirect)) {
        post();
    } else {
        get();
    }
}

void CrashReportConnection::fail(int code, const QString& description)
{
    emit didFailWithError({u"QNetworkReply"_s, code, description});
}
