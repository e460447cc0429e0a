#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QTcpServer>
#include <QUrl>

#include <functional>

class QTcpSocket;

struct HttpRequest {
    QByteArray method;
    QByteArray path;
    QHash<QByteArray, QByteArray> headers; ///< names in lower case
    QByteArray body;
};

/// An HTTP server on this machine, in the thread and event loop of the test, that keeps what it was
/// sent and answers as it is told. Each connection serves any number of requests.
class LoopbackServer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LoopbackServer)
public:
    /// Called with each request that has arrived in full. What it does not write is not answered.
    using Answer = std::function<void(QTcpSocket& socket, const HttpRequest& request)>;

    /// Listens at once, and answers nothing until it is told.
    LoopbackServer();
    /// The same on a server that is not a plain one.
    explicit LoopbackServer(QTcpServer& server);

    [[nodiscard]] QUrl url(const QString& path = QStringLiteral("/submit")) const;
    /// Stops listening: nobody is there any more.
    void close();

    void setAnswer(Answer answer) { m_answer = std::move(answer); }

    /// A whole answer, the same to every request.
    void setAnswer(const QByteArray& body, int status = 200);

    [[nodiscard]] const QList<HttpRequest>& requests() const { return m_requests; }

    [[nodiscard]] static QByteArray
    response(int status, const QByteArray& body, const QByteArray& moreHeaders = {});

private:
    void serve();
    void read(QTcpSocket* socket, QByteArray& received);

    QTcpServer m_own;
    QTcpServer& m_server;
    Answer m_answer;
    QList<HttpRequest> m_requests;
};
