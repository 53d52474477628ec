// Mail delivery of N synthetic feeds (20 articles each, gen_feeds.py serve on 127.0.0.1):
// the engine daemon fetches them while the delivery consumer stores every article in a
// Maildir. The feeds are subscribed beforehand (as the peer imports them before its run);
// timed from the daemon's start, which fetches everything at once, to the last message flushed
// to disk and acknowledged. rss2email does the same work into a Maildir as the peer.
// Usage: bench_delivery [feeds=1000 ...] [--peer] [--script path of gen_feeds.py] [--keep maildir]
//                      [--dir base]
// (--keep delivers into that folder and leaves it there, to be looked at in a mail program.
// Both deliverers write below --dir, by default the user's data folder where mail lives: on
// ext4 without a journal a new file skips every inode freed in the last minutes, so a folder
// that test runs keep filling and emptying, such as /tmp, makes each file many times dearer.)

#include "DaemonProcess.h"
#include "DeliveryAgent.h"
#include "MaildirStore.h"
#include "ProcessCpu.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QLoggingCategory>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <list>

using namespace quillon;

namespace {
struct Server
{
    QProcess process;
    QString base; // http://127.0.0.1:port/
};

bool startServer(Server &server, const QString &script, int feeds, const QString &dir)
{
    server.process.start(QStringLiteral("python3"),
                         {script, QStringLiteral("serve"), QStringLiteral("--n"), QString::number(feeds),
                          QStringLiteral("--dir"), dir, QStringLiteral("--max-seconds"),
                          QStringLiteral("1800")});
    QByteArray said;
    while (!said.contains("serving") && server.process.waitForReadyRead(120000))
        said += server.process.readAllStandardOutput();
    const qsizetype at = said.indexOf("http://");
    server.base = QString::fromUtf8(said.mid(at, said.indexOf(' ', at) - at));
    return at >= 0;
}

QString feedUrl(const Server &server, int i)
{
    return server.base + QStringLiteral("feed-%1.xml").arg(i, 5, 10, QLatin1Char('0'));
}

int countMessages(const QString &root)
{
    int count = 0;
    QDirIterator it(root, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        count += path.contains(QLatin1String("/new/")) || path.contains(QLatin1String("/cur/"));
    }
    return count;
}

struct Figure
{
    qint64 wallMs = -1;
    qint64 cpuMs = -1; // the deliverer's own CPU (this process) or the peer's
    int messages = 0;
    qint64 engineCpuMs = -1; // ours: the engine daemon's
    qint64 systemMs = -1;    // ours: the kernel's part of each
    qint64 engineSystemMs = -1;
};

Figure deliverOurs(const QString &script, int feeds, const QString &keep, const QTemporaryDir &dir)
{
    Server server;
    DaemonProcess daemon;
    if (!startServer(server, script, feeds, dir.filePath(QStringLiteral("feeds"))))
        return {};
    // Subscribed beforehand, as the peer's feeds are imported before its run: the daemon
    // fetches nothing until it starts again.
    QProcessEnvironment quiet = QProcessEnvironment::systemEnvironment();
    quiet.insert(QStringLiteral("QUILLON_ENGINE_NO_FETCH"), QStringLiteral("1"));
    daemon.process().setProcessEnvironment(quiet);
    if (!daemon.start())
        return {};
    SubscribeClientPtr client = daemon.newClient();
    for (int i = 0; i < feeds; ++i) {
        const Handle request =
            client->CreateItemRequest(QStringLiteral("NEWS"), QString(), feedUrl(server, i));
        const Handle consumers = client->NewList();
        client->ListAppend(consumers, QStringLiteral("OLCONSUMER"));
        client->SetHandleValue(request, QStringLiteral("ConsumerIDs"), consumers);
        client->SetStringValue(request, QStringLiteral("CATEGORY"),
                               QStringLiteral("Category %1").arg(i % 10));
        client->SubmitRequest(request, nullptr);
        client->ReleaseHandle(consumers);
        client->ReleaseHandle(request);
    }
    client.reset();
    daemon.stop();

    QElapsedTimer timer;
    timer.start();
    const qint64 pid = QCoreApplication::applicationPid();
    const qint64 cpuBefore = processCpuMillis(pid);
    const qint64 systemBefore = processCpuMillis(pid, true);
    daemon.process().setProcessEnvironment(QProcessEnvironment::systemEnvironment());
    if (!daemon.start())
        return {};
    const QString root = keep.isEmpty() ? dir.filePath(QStringLiteral("Mail")) : keep;
    DeliveryAgent agent(daemon.newClient(), std::make_unique<MaildirStore>(root),
                        dir.filePath(QStringLiteral("index.json")), DeliveryAgent::Options{});
    const int expected = feeds * 20;
    int delivered = 0;
    QEventLoop loop;
    QObject::connect(&agent, &DeliveryAgent::delivered, [&](int n) {
        if ((delivered += n) >= expected)
            loop.quit();
    });
    QTimer::singleShot(600000, &loop, &QEventLoop::quit);
    QString error;
    if (!agent.start(&error))
        return {};
    loop.exec();
    const qint64 daemonPid = daemon.process().processId();
    Figure figure{timer.elapsed(),
                  processCpuMillis(pid) - cpuBefore,
                  countMessages(root),
                  processCpuMillis(daemonPid),
                  processCpuMillis(pid, true) - systemBefore,
                  processCpuMillis(daemonPid, true)};
    server.process.kill();
    server.process.waitForFinished();
    daemon.stop();
    return figure;
}

Figure deliverPeer(const QString &script, int feeds, const QTemporaryDir &dir)
{
    Server server;
    if (!startServer(server, script, feeds, dir.filePath(QStringLiteral("feeds"))))
        return {};
    const QString config = dir.filePath(QStringLiteral("r2e.cfg"));
    const QString data = dir.filePath(QStringLiteral("r2e.json"));
    const QString root = dir.filePath(QStringLiteral("Mail"));
    for (const char *sub : {"cur", "new", "tmp"})
        QDir().mkpath(root + QStringLiteral("/INBOX/") + QLatin1String(sub));
    QFile cfg(config);
    if (!cfg.open(QIODevice::WriteOnly))
        return {};
    cfg.write(
        QStringLiteral("[DEFAULT]\nto = reader@example.invalid\nemail-protocol = maildir\nmaildir-path = %1\n"
                       "maildir-mailbox = INBOX\n")
            .arg(root)
            .toUtf8());
    cfg.close();
    // The OPML the server made already names every feed with the server's port.
    QProcess r2e;
    r2e.start(QStringLiteral("r2e"),
              {QStringLiteral("-c"), config, QStringLiteral("-d"), data, QStringLiteral("opmlimport"),
               dir.filePath(QStringLiteral("feeds/feeds.opml"))});
    r2e.waitForFinished(600000);
    QElapsedTimer timer;
    timer.start();
    r2e.start(QStringLiteral("r2e"),
              {QStringLiteral("-c"), config, QStringLiteral("-d"), data, QStringLiteral("run")});
    const qint64 pid = r2e.processId();
    qint64 cpu = 0;
    while (!r2e.waitForFinished(200))
        cpu = std::max(cpu, processCpuMillis(pid));
    Figure figure{timer.elapsed(), cpu, countMessages(root)};
    server.process.kill();
    server.process.waitForFinished();
    return figure;
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false"));
    QString script = QStringLiteral("/work/shared/bench/gen_feeds.py");
    QString keep;
    QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    bool peer = false;
    QList<int> sizes;
    const QStringList args = app.arguments().mid(1);
    for (qsizetype i = 0; i < args.size(); ++i) {
        if (args.at(i) == QLatin1String("--peer"))
            peer = true;
        else if (args.at(i) == QLatin1String("--script") && i + 1 < args.size())
            script = args.at(++i);
        else if (args.at(i) == QLatin1String("--keep") && i + 1 < args.size())
            keep = args.at(++i);
        else if (args.at(i) == QLatin1String("--dir") && i + 1 < args.size())
            base = args.at(++i);
        else if (args.at(i).toInt() > 0)
            sizes.append(args.at(i).toInt());
    }
    if (sizes.isEmpty())
        sizes = {1000};
    QTextStream out(stdout);
    // Every run's files are deleted only at the end: on ext4 without a journal, creating a file
    // skips the inodes freed in the last minutes, so a run right after deleting another run's
    // 20,000 messages would pay for them.
    std::list<QTemporaryDir> folders;
    QDir().mkpath(base);
    const QString pattern = QDir(base).filePath(QStringLiteral("bench_delivery-XXXXXX"));
    for (const int feeds : sizes) {
        const Figure ours = deliverOurs(script, feeds, keep, folders.emplace_back(pattern));
        out << "quillon-deliver " << feeds << " feeds: " << ours.wallMs << " ms wall, " << ours.cpuMs
            << " ms CPU (deliverer, " << ours.systemMs << " of it system), " << ours.engineCpuMs
            << " ms CPU (engine, " << ours.engineSystemMs << " of it system), " << ours.messages
            << " messages" << Qt::endl;
        if (peer) {
            const Figure theirs = deliverPeer(script, feeds, folders.emplace_back(pattern));
            out << "rss2email       " << feeds << " feeds: " << theirs.wallMs << " ms wall, " << theirs.cpuMs
                << " ms CPU, " << theirs.messages << " messages" << Qt::endl;
        }
    }
    return 0;
}
