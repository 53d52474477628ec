#pragma once

// The synthetic feed server of the benchmarks (gen_feeds.py serve, RSS 2.0 on 127.0.0.1) and
// the list of its feeds.

#include "OpmlCatalog.h"
#include "OpmlParser.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QTcpSocket>
#include <QThread>

inline const QString kDefaultFeedScript = QStringLiteral("/work/shared/bench/gen_feeds.py");

// Starts the server with `feeds` feeds written below dir and waits for the port it writes;
// 0 when it did not start.
inline int startFeedServer(QProcess &server, const QString &script, int feeds, const QString &dir)
{
    const QString portFile = dir + QStringLiteral("/port");
    server.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    server.start(QStringLiteral("python3"),
                 {script, QStringLiteral("serve"), QStringLiteral("--n"), QString::number(feeds),
                  QStringLiteral("--dir"), dir, QStringLiteral("--port-file"), portFile,
                  QStringLiteral("--max-seconds"), QStringLiteral("3600")});
    QElapsedTimer waited;
    waited.start();
    while (!QFile::exists(portFile) && waited.elapsed() < 120000 && server.state() != QProcess::NotRunning)
        QThread::msleep(50);
    QFile file(portFile);
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().toInt() : 0;
}

// The feed addresses in the server's feeds.opml, in its order.
inline QStringList feedAddresses(const QString &opmlPath)
{
    QFile file(opmlPath);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList urls;
    const auto catalog = quillon::OpmlCatalog::fromDocument(quillon::OpmlParser::parse(file.readAll()));
    for (const quillon::OpmlCatalog::Feed &feed : catalog.feeds)
        urls.append(feed.url);
    return urls;
}

// Feeds the server has answered so far (200 and 304), or -1 when it does not say.
inline int feedsServed(int port)
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), quint16(port));
    if (!socket.waitForConnected(5000))
        return -1;
    socket.write("GET /__stats HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n");
    QByteArray reply;
    while (socket.waitForReadyRead(5000))
        reply += socket.readAll();
    const auto count = [&reply](const QByteArray &key) {
        const qsizetype at = reply.indexOf(key + '=');
        return at < 0 ? -1 : reply.mid(at + key.size() + 1).split(' ').first().trimmed().toInt();
    };
    const int ok = count("ok200");
    const int notModified = count("nm304");
    return ok < 0 || notModified < 0 ? -1 : ok + notModified;
}
