#include "LocalHttpServer.h"

#include <QTcpSocket>
#include <QTimer>

#ifdef Q_OS_WIN
#include <winsock2.h>
#else
#include <sys/socket.h>
#endif

LocalHttpServer::LocalHttpServer(QObject *parent) : QObject(parent)
{
    connect(&m_server, &QTcpServer::newConnection, this, &LocalHttpServer::accept);
}

LocalHttpServer::~LocalHttpServer()
{
    m_server.close();
}

bool LocalHttpServer::listen(const QHostAddress &address, quint16 port)
{
    return m_server.listen(address, port);
}

QUrl LocalHttpServer::url(const QString &path) const
{
    const quint16 port = m_server.serverPort();
    return QUrl(QStringLiteral("http://%1%2%3")
                    .arg(m_server.serverAddress().toString(),
                         port == 80 ? QString() : QStringLiteral(":%1").arg(port), path));
}

void LocalHttpServer::setRoute(const QString &path, const Route &route)
{
    m_routes.insert(path, route);
}

QByteArray LocalHttpServer::rss(const QString &title, int items)
{
    QString out =
        QStringLiteral("<?xml version=\"1.0\"?><rss version=\"2.0\"><channel><title>%1</title>").arg(title);
    for (int i = 1; i <= items; ++i)
        out += QStringLiteral("<item><guid>%1-%2</guid><title>Item %2</title></item>").arg(title).arg(i);
    return (out + "</channel></rss>").toUtf8();
}

void LocalHttpServer::serve(const QString &path, const QByteArray &body, const QByteArray &contentType)
{
    Route route;
    route.body = body;
    route.contentType = contentType;
    setRoute(path, route);
}

QByteArray LocalHttpServer::lastHeader(const QString &path, const QByteArray &name) const
{
    return m_lastHeaders.value(path).value(name.toLower());
}

void LocalHttpServer::accept()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        ++m_connections;
        socket->setParent(this);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket]() { readRequests(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket]() {
            m_buffers.remove(socket);
            socket->deleteLater();
        });
    }
}

void LocalHttpServer::readRequests(QTcpSocket *socket)
{
    QByteArray &buffer = m_buffers[socket];
    buffer += socket->readAll();
    Request request;
    while (takeRequest(buffer, request))
        answer(socket, request);
}

bool LocalHttpServer::takeRequest(QByteArray &buffer, Request &request)
{
    const qsizetype end = buffer.indexOf("\r\n\r\n");
    if (end < 0)
        return false;
    const QList<QByteArray> lines = buffer.left(end).split('\n');
    buffer.remove(0, end + 4);
    const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
    request = Request{first.value(0), QString::fromLatin1(first.value(1)), {}};
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const qsizetype colon = lines.at(i).indexOf(':');
        if (colon > 0)
            request.headers.insert(lines.at(i).left(colon).trimmed().toLower(),
                                   lines.at(i).mid(colon + 1).trimmed());
    }
    return true;
}

void LocalHttpServer::answer(QTcpSocket *socket, const Request &request)
{
    ++m_counts[request.path];
    m_lastHeaders.insert(request.path, request.headers);
    const auto route = m_routes.constFind(request.path);
    if (route == m_routes.cend()) {
        socket->write(response(404, "Not Found", {{"Content-Type", "text/plain"}}, "no such document"));
        closeIfAsked(socket, request);
        return;
    }
    if (route->neverAnswer)
        return;
    QByteArray bytes = routeResponse(*route, request);
    if (route->cutAfter >= 0) {
        bytes.truncate(bytes.indexOf("\r\n\r\n") + 4 + route->cutAfter);
        socket->write(bytes);
        if (!route->reset) {
            socket->disconnectFromHost();
            return;
        }
        // Once the client has the headers: closing without lingering sends a reset.
        QTimer::singleShot(100, socket, [socket]() {
            const linger now{1, 0};
            ::setsockopt(socket->socketDescriptor(), SOL_SOCKET, SO_LINGER,
                         reinterpret_cast<const char *>(&now), sizeof now);
            socket->abort();
        });
        return;
    }
    socket->write(bytes);
    closeIfAsked(socket, request);
}

void LocalHttpServer::closeIfAsked(QTcpSocket *socket, const Request &request)
{
    // Clients that read to the end of the stream (PHP's own) wait for this.
    if (request.headers.value("connection").compare("close", Qt::CaseInsensitive) == 0)
        socket->disconnectFromHost();
}

using Header = QPair<QByteArray, QByteArray>;

QByteArray LocalHttpServer::routeResponse(const Route &route, const Request &request)
{
    if (!route.user.isEmpty()) {
        const QByteArray expected = "Basic " + (route.user + ':' + route.password).toBase64();
        if (request.headers.value("authorization") != expected)
            return response(401, "Unauthorized", {{"WWW-Authenticate", "Basic realm=\"feeds\""}},
                            "login first");
    }
    if (!route.redirectTo.isEmpty())
        return response(route.redirectStatus, "Moved", {{"Location", route.redirectTo}}, QByteArray());
    QList<QPair<QByteArray, QByteArray>> headers = route.headers;
    if (!route.etag.isEmpty())
        headers.append(Header("ETag", route.etag));
    if (!route.lastModified.isEmpty())
        headers.append(Header("Last-Modified", route.lastModified));
    const bool sameTag = !route.etag.isEmpty() && request.headers.value("if-none-match") == route.etag;
    const bool sameDate =
        !route.lastModified.isEmpty() && request.headers.value("if-modified-since") == route.lastModified;
    if (sameTag || sameDate)
        return response(304, "Not Modified", headers, QByteArray());
    headers.append(Header("Content-Type", route.contentType));
    QByteArray body = route.body;
    if (route.gzip && request.headers.value("accept-encoding").contains("gzip")) {
        body = gzip(body);
        headers.append(Header("Content-Encoding", "gzip"));
    }
    const QByteArray range = request.headers.value("range");
    if (route.ranges && range.startsWith("bytes=") && range.endsWith('-')) {
        const qint64 from = range.mid(6).chopped(1).toLongLong();
        const QByteArray total = QByteArray::number(body.size());
        if (from >= body.size())
            return response(416, "Range Not Satisfiable", {{"Content-Range", "bytes */" + total}},
                            QByteArray());
        headers.append(Header("Content-Range", "bytes " + QByteArray::number(from) + '-' +
                                                   QByteArray::number(body.size() - 1) + '/' + total));
        return response(206, "Partial Content", headers, body.mid(from));
    }
    return response(route.status, route.reason, headers, body, route.announce);
}

QByteArray LocalHttpServer::response(int status, const QByteArray &reason,
                                     const QList<QPair<QByteArray, QByteArray>> &headers,
                                     const QByteArray &body, qint64 announce)
{
    QByteArray out = "HTTP/1.1 " + QByteArray::number(status) + ' ' + reason + "\r\n";
    for (const auto &[name, value] : headers)
        out += name + ": " + value + "\r\n";
    out += "Content-Length: " + QByteArray::number(announce < 0 ? body.size() : announce) + "\r\n\r\n";
    return out + body;
}

QByteArray LocalHttpServer::gzip(const QByteArray &data)
{
    // qCompress gives a 4-byte size, a zlib header, the raw deflate stream and an Adler-32;
    // gzip wants its own header, the same deflate stream, a CRC-32 and the size.
    const QByteArray zlib = qCompress(data);
    if (zlib.size() < 4 + 2 + 4)
        return {};
    const QByteArray deflate = zlib.mid(6, zlib.size() - 6 - 4);
    quint32 crc = 0xFFFFFFFFu;
    for (const char byte : data) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    crc = ~crc;
    const auto littleEndian = [](quint32 value) {
        QByteArray bytes(4, Qt::Uninitialized);
        for (int i = 0; i < 4; ++i)
            bytes[i] = char((value >> (8 * i)) & 0xFF);
        return bytes;
    };
    const QByteArray header("\x1f\x8b\x08\x00\x00\x00\x00\x00\x00\xff", 10);
    return header + deflate + littleEndian(crc) + littleEndian(quint32(data.size()));
}
