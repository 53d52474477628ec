// Online synchronisation of the engine daemon against Debian's Tiny Tiny RSS, filled by SQL with
// N feeds of 20 articles each (the feeds themselves served by gen_feeds.py, whose articles the
// server's match by link), measured from outside:
//  (1) the first run: N subscriptions taken from the server, with their categories;
//  (2) once the engine has fetched every feed, the run that compares the read marks of all
//      N x 20 articles and takes the server's (half of them read there);
//  (3) a run with nothing to change.
// During each run a second client calls GetSyncSettings in a loop, 2 ms apart; median, 99th percentile and
// the longest of those round trips.
// Usage: bench_online_sync [subscriptions=1000] [path of gen_feeds.py]

#include "DaemonProcess.h"
#include "FeedServer.h"
#include "HandleGuard.h"
#include "ProcessCpu.h"
#include "TinyRssServer.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>

using namespace quillon;

namespace {

struct Run
{
    QString outcome;
    qint64 wallMs = 0;
    qint64 engineCpuMs = 0;
    QList<qint64> ns; // round trips of the second client, sorted
};

QString syncTime(SubscribeClient &client, QString *status = nullptr)
{
    HandleGuard bag(client, client.GetSyncSettings());
    if (status)
        *status = client.GetStringValue(bag.get(), QStringLiteral("SyncStatus"));
    return client.GetStringValue(bag.get(), QStringLiteral("SyncTime"));
}

Run timedRun(SubscribeClient &client, SubscribeClient &probe, qint64 enginePid)
{
    Run run;
    const QString before = syncTime(probe);
    const qint64 cpuBefore = processCpuMillis(enginePid);
    QElapsedTimer wall;
    wall.start();
    client.SyncNow();
    while (wall.elapsed() < 600000) {
        QElapsedTimer call;
        call.start();
        const QString time = syncTime(probe, &run.outcome);
        run.ns.append(call.nsecsElapsed());
        if (time != before)
            break;
        QThread::msleep(2); // a busy user, not a second engine's worth of load
    }
    run.wallMs = wall.elapsed();
    run.engineCpuMs = processCpuMillis(enginePid) - cpuBefore;
    std::sort(run.ns.begin(), run.ns.end());
    return run;
}

// Feeds named as gen_feeds.py serves them, 20 entries each with its articles' links, the
// even ones read; all straight into the server's tables, as its updater would leave them.
void fillServer(TinyRssServer &server, int port, int feeds)
{
    const QString last = QString::number(feeds - 1);
    server.sql(
        QStringLiteral("insert into ttrss_feed_categories (owner_uid, title) select 1, 'Category ' || c "
                       "from generate_series(0, 9) c"));
    server.sql(QStringLiteral("insert into ttrss_feeds (owner_uid, title, feed_url, cat_id) select 1, "
                              "'Feed ' || g, 'http://127.0.0.1:%1/feed-' || lpad(g::text, 5, '0') || '.xml', "
                              "(select id from ttrss_feed_categories where title = 'Category ' || (g % 10)) "
                              "from generate_series(0, %2) g")
                   .arg(port)
                   .arg(last));
    server.sql(
        QStringLiteral("insert into ttrss_entries (title, guid, link, updated, content, content_hash, "
                       "date_entered, date_updated) select 'Item ' || g || '/' || j, 'SHA1:' || g || '-' "
                       "|| j, 'http://example.invalid/site' || lpad(g::text, 5, '0') || '/posts/' || "
                       "lpad(g::text, 5, '0') || '-' || lpad(j::text, 2, '0') || '.html', now(), '', '', "
                       "now(), now() from generate_series(0, %1) g, generate_series(0, 19) j")
            .arg(last));
    server.sql(QStringLiteral(
        "insert into ttrss_user_entries (ref_id, uuid, feed_id, owner_uid, tag_cache, label_cache, unread) "
        "select e.id, '', f.id, 1, '', '', e.id % 2 = 1 from ttrss_entries e join ttrss_feeds f "
        "on f.title = 'Feed ' || split_part(split_part(e.title, ' ', 2), '/', 1)"));
}

int articlesHere(const QString &database)
{
    int count = 0;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("beside"));
        db.setDatabaseName(database);
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        QSqlQuery query(db);
        if (db.open() && query.exec(QStringLiteral("SELECT COUNT(*) FROM articles")) && query.next())
            count = query.value(0).toInt();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("beside"));
    return count;
}

qint64 percentile(const QList<qint64> &sorted, double p)
{
    return sorted.isEmpty() ? 0 : sorted.at(qMin(sorted.size() - 1, qsizetype(p * double(sorted.size()))));
}

void report(QTextStream &out, const QString &name, const Run &run)
{
    const auto micro = [](qint64 ns) { return QString::number(double(ns) / 1000.0, 'f', 0) + " µs"; };
    out << name << ": " << run.wallMs << " ms wall, engine CPU " << run.engineCpuMs << " ms, \""
        << run.outcome << "\"; " << run.ns.size() << " GetSyncSettings meanwhile: p50 "
        << micro(percentile(run.ns, 0.5)) << ", p99 " << micro(percentile(run.ns, 0.99)) << ", max "
        << micro(run.ns.isEmpty() ? 0 : run.ns.last()) << Qt::endl;
}

QString loadAverage()
{
    QFile file(QStringLiteral("/proc/loadavg"));
    return file.open(QIODevice::ReadOnly)
               ? QString::fromLatin1(file.readAll()).section(QLatin1Char(' '), 0, 2)
               : QStringLiteral("?");
}

int run(const QStringList &args)
{
    QTextStream out(stdout);
    const int feeds = args.size() > 1 ? args.at(1).toInt() : 1000;
    if (const QString missing = TinyRssServer::missing(); !missing.isEmpty()) {
        out << "cannot run: " << missing << Qt::endl;
        return 1;
    }
    QTemporaryDir dir;
    QProcess feedServer;
    const int port = startFeedServer(feedServer, args.size() > 2 ? args.at(2) : kDefaultFeedScript, feeds,
                                     dir.filePath(QStringLiteral("feeds")));
    TinyRssServer server;
    if (port == 0 || !server.start()) {
        out << "cannot start the servers: " << server.errorText() << Qt::endl;
        return 1;
    }
    fillServer(server, port, feeds);
    DaemonProcess daemon;
    if (!daemon.start()) {
        out << daemon.errorText() << Qt::endl;
        return 1;
    }
    SubscribeClientPtr client = daemon.newClient();
    SubscribeClientPtr probe = daemon.newClient();
    client->SetSyncSettings(1, server.address(), TinyRssServer::kUser, TinyRssServer::kPassword, 3600);
    out << feeds << " server feeds, " << feeds * 20 << " articles; load average " << loadAverage()
        << Qt::endl;
    const qint64 pid = daemon.process().processId();
    report(out, QStringLiteral("first run"), timedRun(*client, *probe, pid));

    QElapsedTimer fetching;
    fetching.start();
    const QString database = QDir(daemon.dataDir()).filePath(QStringLiteral("engine.sqlite"));
    while (articlesHere(database) < feeds * 20 && fetching.elapsed() < 600000)
        QThread::msleep(500);
    out << "fetched " << articlesHere(database) << " articles in " << fetching.elapsed() << " ms" << Qt::endl;
    report(out, QStringLiteral("read-mark run"), timedRun(*client, *probe, pid));
    report(out, QStringLiteral("no-change run"), timedRun(*client, *probe, pid));
    out << "load average after: " << loadAverage() << Qt::endl;
    client.reset();
    probe.reset();
    daemon.stop();
    feedServer.kill();
    feedServer.waitForFinished();
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    TinyRssServer::enterPrivateNetwork(argv); // the server runs only where it could fetch feeds
    QCoreApplication app(argc, argv);
    if (qEnvironmentVariableIsEmpty("QUILLON_SOURCE_DIR"))
        qputenv("QUILLON_SOURCE_DIR", QUILLON_SOURCE_DIR);
    return run(app.arguments());
}
