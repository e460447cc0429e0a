#pragma once

#include "CrashReportError.h"

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QObject>

#include <chrono>

class QNetworkReply;

/// One POST on its way, over HTTP or HTTPS, and its answer. The answer ends in exactly one of
/// didFinishLoading() and didFailWithError(), unless the connection is cancelled or destroyed.
///
/// An HTTP status is never a failure by itself: what came with it is an answer like any other. What
/// is followed and not told is a redirect within the same server: after 307 and 308 the body is
/// sent again, after the others the new address is only asked for (GET). One to another server is a
/// failure, whatever its status: nothing is sent there, and what it says is no answer to a report
/// that it never got.
/// A user's name and password in the address are sent with the first request, not only when asked
/// for. Of the person the request says nothing, not even the language.
/// A body is sent once an address: a server that has perhaps read it does not get it a second time.
/// Main thread; needs its event loop.
class CrashReportConnection final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CrashReportConnection)
public:
    /// `patience`: how long nothing may move in either direction before it counts as failed.
    CrashReportConnection(const QNetworkRequest& request,
                          QByteArray body,
                          std::chrono::milliseconds patience,
                          QObject* parent = nullptr);
    /// Cancels.
    ~CrashReportConnection() override;

    void start();
    /// Breaks it off; nothing is told any more. Does nothing when it has ended.
    void cancel();

    /// Whether a redirect stays with its server: scheme, host and port are the same, or a host
    /// sends on from HTTP to its HTTPS, each on its usual port. Neither address is of another
    /// scheme.
    [[nodiscard]] static bool isSameServer(const QUrl& from, const QUrl& to);

signals:
    /// The headers of an answer are there.
    void didReceiveResponse();
    void didReceiveData(const QByteArray& data);
    void didFinishLoading();
    void didFailWithError(const CrashReportError& error);

private:
    /// Makes a header of the user's name and password in the address, which then has none.
    void authorize();
    void post();
    void get();
    void watch(QNetworkReply* reply);
    void receiveResponse();
    void receiveData();
    void finish();
    void follow(const QUrl& target, int status);
    void fail(int code, const QString& description);

    QNetworkRequest m_request;
    const QByteArray m_body;
    QNetworkAccessManager m_manager;
    QNetworkReply* m_reply{nullptr}; ///< owned by the manager
    bool m_isPost{true};             ///< until a redirect made it another request
    int m_redirects{0};
};
