#include "LoopbackServer.h"

#include <QTcpSocket>

#include <memory>
#include <optional>

namespace
{

/// Takes the first request off what was received, once it is there in full.
std::optional<HttpRequest> takeRequest(QByteArray& received)
{
    const qsizetype end = received.indexOf("\r\n\r\n");
    if (end < 0) {
        return std::nullopt;
    }
    HttpRequest request;
    const QList<QByteArray> lines = received.left(end).split('\n');
    const QList<QByteArray> first = lines.first().trimmed().split(' ');
    request.method = first.value(0);
    request.path = first.value(1);
    for (const QByteArray& line : lines.mid(1)) {
        const qsizetype colon = line.indexOf(':');
        request.headers.insert(line.left(colon).trimmed().toLower(), line.mid(colon + 1).trimmed());
    }
    constexpr qsizetype kBlankLine = 4;
    const qsizetype length = request.headers.value("content-length").toLongLong();
    if (received.size() < end + kBlankLine + length) {
        return std::nullopt;
    }
    request.body = received.mid(end + kBlankLine, length);
    received.remove(0, end + kBlankLine + length);
    return request;
}

} // namespace

LoopbackServer::LoopbackServer()
    : LoopbackServer(m_own)
{
}

LoopbackServer::LoopbackServer(QTcpServer& server)
    : m_server(server)
{
    connect(&m_server, &QTcpServer::pendingConnectionAvailable, this, &LoopbackServer::serve);
    m_server.listen(QHostAddress::LocalHost);
}

QUrl LoopbackServer::url(const QString& path) const
{
    QUrl url;
    url.setScheme(&m_server == &m_own ? QStringLiteral("http") : QStringLiteral("https"));
    url.setHost(QStringLiteral("127.0.0.1"));
    url.setPort(m_server.serverPort());
    url.setPath(path);
    return url;
}

void LoopbackServer::close()
{
    m_server.close();
}

void LoopbackServer::setAnswer(const QByteArray& body, int status)
{
    setAnswer([body, status](QTcpSocket& socket, const HttpRequest& /*request*/) {
        socket.write(response(status, body));
    });
}

QByteArray
LoopbackServer::response(int status, const QByteArray& body, const QByteArray& moreHeaders)
{
    return "HTTP/1.1 " + QByteArray::number(status) +
           " Some Phrase\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n" +
           moreHeaders + "\r\n" + body;
}

void LoopbackServer::serve()
{
    while (QTcpSocket* const socket = m_server.nextPendingConnection()) {
        const auto received = std::make_shared<QByteArray>();
        connect(socket, &QIODevice::readyRead, this, [this, socket, received] {
            read(socket, *received);
        });
        connect(socket, &QAbstractSocket::disconnected, socket, &QObject::deleteLater);
    }
}

void LoopbackServer::read(QTcpSocket* socket, QByteArray& received)
{
    received += socket->readAll();
    while (const std::optional<HttpRequest> request = takeRequest(received)) {
        m_requests.append(*request);
        if (m_answer) {
            m_answer(*socket, *request);
        }
    }
}
