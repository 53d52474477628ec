#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPair>
#include <QTcpServer>
#include <QUrl>

#include <numeric>

class QTcpSocket;

// A small HTTP/1.1 server on 127.0.0.1 for tests that fetch. Each path has a canned route:
// a body (gzip-packed when the route asks and the client accepts it), validators that make
// matching conditional requests answer 304, a required basic login, a redirect, or no answer
// at all, or an answer cut short. Unknown paths answer 404. Requests are counted per path, and
// the connections accepted.
class LocalHttpServer : public QObject
{
    Q_OBJECT
public:
    struct Route
    {
        int status = 200;
        QByteArray reason = "OK";
        QByteArray contentType = "application/rss+xml; charset=utf-8";
        QByteArray body;
        QList<QPair<QByteArray, QByteArray>> headers;
        bool gzip = false;
        QByteArray etag;         // sent, and If-None-Match with it answers 304
        QByteArray lastModified; // sent, and If-Modified-Since with it answers 304
        QByteArray user;         // when set, anything but this basic login answers 401
        QByteArray password;
        QByteArray redirectTo; // answered with redirectStatus and this Location
        int redirectStatus = 302;
        bool neverAnswer = false;
        int cutAfter = -1;    // the connection closes after this many bytes of the body
        bool reset = false;   // with cutAfter: reset a moment later instead of closed
        qint64 announce = -1; // a Content-Length other than the body's own
        bool ranges = false;  // "Range: bytes=N-" is answered 206 with the rest of the body
    };

    explicit LocalHttpServer(QObject *parent = nullptr);
    ~LocalHttpServer() override;

    // On 127.0.0.1 and a free port unless told otherwise.
    [[nodiscard]] bool listen(const QHostAddress &address = QHostAddress(QHostAddress::LocalHost),
                              quint16 port = 0);
    [[nodiscard]] QUrl url(const QString &path) const;
    void setRoute(const QString &path, const Route &route);
    // A 200 with the body and, optionally, a content type.
    void serve(const QString &path, const QByteArray &body,
               const QByteArray &contentType = "application/rss+xml; charset=utf-8");

    [[nodiscard]] int requestCount(const QString &path) const { return m_counts.value(path); }
    [[nodiscard]] int totalRequestCount() const
    {
        return std::accumulate(m_counts.cbegin(), m_counts.cend(), 0);
    }
    [[nodiscard]] int connectionCount() const { return m_connections; }
    // A header of the last request for the path (names compared without regard to case).
    [[nodiscard]] QByteArray lastHeader(const QString &path, const QByteArray &name) const;

    // An RSS 2.0 feed of that title with items "Item 1".. (guids "<title>-1"..).
    [[nodiscard]] static QByteArray rss(const QString &title, int items);
    // gzip member bytes (RFC 1952).
    [[nodiscard]] static QByteArray gzip(const QByteArray &data);

private:
    struct Request
    {
        QByteArray method;
        QString path;
        QHash<QByteArray, QByteArray> headers; // lower-case names
    };

    void accept();
    void readRequests(QTcpSocket *socket);
    [[nodiscard]] static bool takeRequest(QByteArray &buffer, Request &request);
    void answer(QTcpSocket *socket, const Request &request);
    static void closeIfAsked(QTcpSocket *socket, const Request &request);
    [[nodiscard]] static QByteArray response(int status, const QByteArray &reason,
                                             const QList<QPair<QByteArray, QByteArray>> &headers,
                                             const QByteArray &body, qint64 announce = -1);
    [[nodiscard]] static QByteArray routeResponse(const Route &route, const Request &request);

    QTcpServer m_server;
    QHash<QString, Route> m_routes;
    QHash<QString, int> m_counts;
    QHash<QString, QHash<QByteArray, QByteArray>> m_lastHeaders;
    QHash<QTcpSocket *, QByteArray> m_buffers;
    int m_connections = 0;
};
