// The engine daemon with N subscriptions all due at start (the morning after a night off),
// fetching them from the local feed server, measured from outside:
//  (a) round trips of a consumer's calls while the fetching runs: GetItemBag of a random
//      subscription with three reads and the release, one after another until every feed
//      has been served; median, 99th percentile and the longest;
//  (b) the time from starting configconsumer to its main window shown (the program prints
//      that line under CONFIGCONSUMER_REPORT_WINDOW=1), against a daemon just started on
//      the same store, all due again.
// Usage: bench_engine_responsive [subscriptions=1000] [path of gen_feeds.py]

#include "FeedServer.h"
#include "HandleGuard.h"
#include "LinkedSubscribeClient.h"
#include "ProcessCpu.h"
#include "SocketLink.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <cstdio>

using namespace quillon;

namespace {

struct Programs
{
    QString binDir;
    QString home; // HOME, config and lock of the program, apart from the user's own
    QString socketName;
};

QProcessEnvironment environment(const Programs &programs, bool fetch)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("QUILLON_ENGINE_SOCKET"), programs.socketName);
    env.insert(QStringLiteral("QUILLON_ENGINE_NO_FETCH"), fetch ? QStringLiteral("0") : QStringLiteral("1"));
    env.insert(QStringLiteral("CONFIGCONSUMER_LOCK"), programs.home + QStringLiteral("/configconsumer.lock"));
    env.insert(QStringLiteral("CONFIGCONSUMER_REPORT_WINDOW"), QStringLiteral("1"));
    env.insert(QStringLiteral("HOME"), programs.home);
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), programs.home + QStringLiteral("/config"));
    env.insert(QStringLiteral("XDG_DATA_HOME"), programs.home + QStringLiteral("/data"));
    return env;
}

// Starts a program and waits until its output holds `line`; false when it never does.
bool startAndWaitFor(QProcess &process, const QString &program, const QStringList &args,
                     const QProcessEnvironment &env, const QByteArray &line, int timeoutMs = 120000)
{
    process.setProcessEnvironment(env);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, args);
    QByteArray output;
    const QDeadlineTimer deadline(timeoutMs);
    while (!output.contains(line)) {
        if (process.state() == QProcess::NotRunning || deadline.hasExpired())
            return false;
        process.waitForReadyRead(100);
        output += process.readAllStandardOutput();
    }
    return true;
}

bool startEngine(QProcess &engine, const Programs &programs, const QString &dataDir, bool fetch)
{
    return startAndWaitFor(engine, programs.binDir + QStringLiteral("/quillon-engine"),
                           {QStringLiteral("--data-dir"), dataDir}, environment(programs, fetch),
                           "listening on");
}

void stop(QProcess &process)
{
    process.terminate();
    if (!process.waitForFinished(30000)) {
        process.kill();
        process.waitForFinished();
    }
}

void copyFolder(const QString &from, const QString &to)
{
    QDir().mkpath(to);
    for (const QString &name : QDir(from).entryList(QDir::Files))
        QFile::copy(from + QLatin1Char('/') + name, to + QLatin1Char('/') + name);
}

// The subscriptions, added with fetching off, so that every one is due when the engine starts.
bool seedStore(const Programs &programs, const QString &dataDir, const QStringList &urls)
{
    QProcess engine;
    if (!startEngine(engine, programs, dataDir, false))
        return false;
    {
        auto client = LinkedSubscribeClient::create(SocketLink::open(programs.socketName));
        for (const QString &url : urls) {
            HandleGuard request(*client, client->CreateItemRequest(QStringLiteral("NEWS"), QString(), url));
            client->SubmitRequest(request.get(), nullptr);
        }
        // No first-run set-up in the timed starts.
        HandleGuard settings(*client, client->NewBag());
        client->SetStringValue(settings.get(), QStringLiteral("ConfigAppFirstRun"), QStringLiteral("1"));
        client->SetSettings(QStringLiteral("CONFIGCONSUMER"), QString(), settings.get());
    }
    stop(engine);
    return engine.exitCode() == 0;
}

struct CallTimes
{
    QList<qint64> ns;
    qint64 fetchWallMs = 0;
    qint64 engineCpuMs = 0;
    int served = 0;
};

qint64 percentile(QList<qint64> sorted, double p)
{
    return sorted.isEmpty() ? 0 : sorted.at(qMin(sorted.size() - 1, qsizetype(p * double(sorted.size()))));
}

CallTimes timeCallsWhileFetching(const Programs &programs, const QString &dataDir, int port, int feeds)
{
    CallTimes times;
    const int servedBefore = feedsServed(port);
    QProcess engine;
    QElapsedTimer wall;
    wall.start();
    if (!startEngine(engine, programs, dataDir, true))
        return times;
    auto client = LinkedSubscribeClient::create(SocketLink::open(programs.socketName));
    QList<qint32> ids;
    {
        HandleGuard all(*client, client->ListConsumerItems(QStringLiteral("*"), QStringLiteral("NEWS")));
        for (qint32 i = 0, n = client->ListCount(all.get()); i < n; ++i)
            ids.append(client->ListLong(all.get(), i));
    }
    QElapsedTimer check;
    check.start();
    while (!ids.isEmpty() && wall.elapsed() < 600000) {
        const qint32 id = ids.at(QRandomGenerator::global()->bounded(int(ids.size())));
        QElapsedTimer call;
        call.start();
        HandleGuard bag(*client, client->GetItemBag(QStringLiteral("NEWS"), id, 0));
        (void)client->GetStringValue(bag.get(), QStringLiteral("TITLE"));
        (void)client->GetStringValue(bag.get(), QStringLiteral("URL"));
        (void)client->GetStringValue(bag.get(), QStringLiteral("LASTUPDATESTATUS"));
        times.ns.append(call.nsecsElapsed());
        if (check.elapsed() >= 250) {
            check.restart();
            times.served = feedsServed(port) - servedBefore;
            if (times.served >= feeds)
                break;
        }
    }
    times.fetchWallMs = wall.elapsed();
    times.engineCpuMs = processCpuMillis(engine.processId());
    client.reset();
    stop(engine);
    std::sort(times.ns.begin(), times.ns.end());
    return times;
}

// Milliseconds from starting configconsumer to its window shown; -1 when it never showed.
qint64 timeWindowShown(const Programs &programs, const QString &dataDir, bool fetch)
{
    QProcess engine;
    if (!startEngine(engine, programs, dataDir, fetch))
        return -1;
    QProcess program;
    QElapsedTimer wall;
    wall.start();
    const bool shown = startAndWaitFor(program, programs.binDir + QStringLiteral("/configconsumer"), {},
                                       environment(programs, true), "main window shown");
    const qint64 ms = wall.elapsed();
    program.kill();
    program.waitForFinished();
    stop(engine);
    return shown ? ms : -1;
}

QString micro(qint64 ns)
{
    return QString::number(double(ns) / 1000.0, 'f', 0) + QStringLiteral(" µs");
}

int run(const QCoreApplication &app)
{
    const QStringList args = app.arguments();
    const int feeds = args.size() > 1 ? args.at(1).toInt() : 1000;
    const QString script = args.size() > 2 ? args.at(2) : kDefaultFeedScript;
    QTextStream out(stdout);

    QTemporaryDir tmp;
    // QUILLON_BIN_DIR picks other builds of the two programs (to compare).
    const QString binDir = qEnvironmentVariable("QUILLON_BIN_DIR", QCoreApplication::applicationDirPath());
    // A socket path of its own, the same for this process and the programs, whose HOME differs.
    const Programs programs{binDir, tmp.filePath(QStringLiteral("home")),
                            tmp.filePath(QStringLiteral("engine.sock"))};
    QDir().mkpath(programs.home);
    const QString feedDir = tmp.filePath(QStringLiteral("feeds"));
    QDir().mkpath(feedDir);
    QProcess server;
    const int port = startFeedServer(server, script, feeds, feedDir);
    const QStringList urls = feedAddresses(feedDir + QStringLiteral("/feeds.opml"));
    const QString seed = tmp.filePath(QStringLiteral("seed"));
    if (port <= 0 || urls.size() != feeds || !seedStore(programs, seed, urls)) {
        out << "setup failed (server port " << port << ", " << urls.size() << " feeds)\n";
        return 1;
    }

    copyFolder(seed, tmp.filePath(QStringLiteral("calls")));
    const CallTimes calls =
        timeCallsWhileFetching(programs, tmp.filePath(QStringLiteral("calls")), port, feeds);
    out << feeds << " subscriptions, all due at start\n"
        << "(a) " << calls.ns.size() << " GetItemBag round trips while " << calls.served
        << " feeds were fetched in " << calls.fetchWallMs << " ms (engine CPU " << calls.engineCpuMs
        << " ms): median " << micro(percentile(calls.ns, 0.5)) << ", p99 "
        << micro(percentile(calls.ns, 0.99)) << ", longest "
        << micro(calls.ns.isEmpty() ? 0 : calls.ns.last()) << "\n";
    out.flush();

    copyFolder(seed, tmp.filePath(QStringLiteral("window")));
    out << "(b) configconsumer start to window shown: "
        << timeWindowShown(programs, tmp.filePath(QStringLiteral("window")), true) << " ms all due, ";
    out.flush();
    // For comparison: the same store with the engine fetching nothing.
    copyFolder(seed, tmp.filePath(QStringLiteral("quiet")));
    out << timeWindowShown(programs, tmp.filePath(QStringLiteral("quiet")), false)
        << " ms with no fetching\n";
    server.kill();
    server.waitForFinished();
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    // Caught here so that the programs started are stopped on the way out.
    try {
        return run(app);
    } catch (const std::exception &e) {
        std::fprintf(stderr, "bench_engine_responsive: %s\n", e.what());
        return 1;
    }
}
