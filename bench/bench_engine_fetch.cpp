// The engine fetching, parsing and storing N feeds of 20 items from a local server, three ways:
// into an empty store, with every feed answered "304 Not Modified", and with every feed sent
// again in full. The server is gen_feeds.py serve (synthetic RSS on 127.0.0.1). With --peer,
// newsboat then reads the same feeds from the same server into an empty cache of its own.
// Usage: bench_engine_fetch [feeds=100] [path of gen_feeds.py] [--peer]
// Under valgrind --tool=callgrind --instr-atstart=no, each round is counted and dumped apart.

#include "EngineCore.h"
#include "FeedServer.h"
#include "ProcessCpu.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QHash>
#include <QLoggingCategory>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>
#include <QTimer>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#define QUILLON_CALLGRIND 1
#endif

#include <algorithm>
#include <ctime>
#include <memory>
#include <optional>

using namespace quillon;

namespace {
struct Round
{
    qint64 wallMs = 0;
    qint64 cpuMs = 0;
    QHash<QString, int> statuses; // first word of each status
};

void addSubscriptions(EngineCore &core, EngineCore::SessionId session, const QStringList &urls)
{
    for (const QString &url : urls) {
        auto request = PropertyBag::create();
        request->setText(QStringLiteral("REQUEST"), QStringLiteral("ADD"));
        request->setText(QStringLiteral("URL"), url);
        core.call(session, QStringLiteral("SubmitRequest"), {request, qint32(0)});
    }
}

// Counting instructions only while a round runs; nothing outside callgrind.
void countFrom()
{
#ifdef QUILLON_CALLGRIND
    CALLGRIND_ZERO_STATS;
    CALLGRIND_START_INSTRUMENTATION;
#endif
}

void countUntil(const char *round)
{
#ifdef QUILLON_CALLGRIND
    CALLGRIND_STOP_INSTRUMENTATION;
    CALLGRIND_DUMP_STATS_AT(round);
#else
    Q_UNUSED(round)
#endif
}

// Lets everything due be fetched and waits until `expected` updates have finished.
Round runRound(EngineCore &core, int expected, const char *name)
{
    Round round;
    int finished = 0;
    // A real event loop, as the daemon runs: processEvents with a time limit polls without
    // sleeping, and that spinning was counted as the engine's CPU.
    QEventLoop loop;
    const auto connection =
        QObject::connect(&core, &EngineCore::subscriptionUpdated, [&](qint32, const QString &status) {
            ++round.statuses[status.section(QLatin1Char(':'), 0, 0)];
            if (++finished == expected)
                loop.quit();
        });
    QTimer::singleShot(600000, &loop, &QEventLoop::quit);
    QElapsedTimer wall;
    wall.start();
    const std::clock_t cpu = std::clock();
    countFrom();
    core.runDueUpdates();
    if (finished < expected)
        loop.exec();
    countUntil(name);
    round.wallMs = wall.elapsed();
    round.cpuMs = qint64(std::clock() - cpu) * 1000 / CLOCKS_PER_SEC;
    QObject::disconnect(connection);
    return round;
}

// newsboat reloading every feed into an empty cache, timed from its start to its end; its CPU
// is everything it and its threads used. Nothing when it is not installed.
std::optional<Round> runPeer(const QStringList &urls, const QTemporaryDir &tmp)
{
    const QString program = QStandardPaths::findExecutable(QStringLiteral("newsboat"));
    if (program.isEmpty())
        return std::nullopt;
    const QString list = tmp.filePath(QStringLiteral("newsboat-urls"));
    const QString config = tmp.filePath(QStringLiteral("newsboat-config"));
    QFile urlFile(list);
    QFile configFile(config);
    if (!urlFile.open(QIODevice::WriteOnly) || !configFile.open(QIODevice::WriteOnly))
        return std::nullopt;
    urlFile.write(urls.join(QLatin1Char('\n')).toUtf8() + '\n');
    urlFile.close();
    configFile.close(); // its defaults, as a new user has them
    QProcess peer;
    peer.setStandardOutputFile(QProcess::nullDevice());
    Round round;
    const qint64 cpuBefore = waitedChildrenCpuMillis();
    QElapsedTimer wall;
    wall.start();
    peer.start(program, {QStringLiteral("-u"), list, QStringLiteral("-c"),
                         tmp.filePath(QStringLiteral("newsboat-cache.db")), QStringLiteral("-C"), config,
                         QStringLiteral("-x"), QStringLiteral("reload")});
    if (!peer.waitForFinished(-1) || peer.exitStatus() != QProcess::NormalExit)
        return std::nullopt;
    round.wallMs = wall.elapsed();
    round.cpuMs = waitedChildrenCpuMillis() - cpuBefore;
    round.statuses.insert(QStringLiteral("exit code %1").arg(peer.exitCode()), 1);
    return round;
}

QString describe(const QHash<QString, int> &statuses)
{
    QStringList parts;
    for (auto it = statuses.cbegin(); it != statuses.cend(); ++it)
        parts.append(QStringLiteral("%1 x%2").arg(it.key()).arg(it.value()));
    return parts.join(QStringLiteral(", "));
}
} // namespace

int main(int argc, char *argv[])
{
    // As the daemon runs: the plain poll dispatcher rather than glib's.
    if (qEnvironmentVariableIsEmpty("QT_NO_GLIB"))
        qputenv("QT_NO_GLIB", "1");
    QCoreApplication app(argc, argv);
    QLoggingCategory::setFilterRules(
        QStringLiteral("corvell.quillon.*.debug=false\ncorvell.quillon.*.info=false"));
    QStringList args = app.arguments().mid(1);
    const bool peer = args.removeAll(QStringLiteral("--peer")) > 0;
    const int feeds = !args.isEmpty() ? args.at(0).toInt() : 100;
    const QString script = args.size() > 1 ? args.at(1) : kDefaultFeedScript;
    QTextStream out(stdout);

    QTemporaryDir tmp;
    const QString feedDir = tmp.filePath(QStringLiteral("feeds"));
    QDir().mkpath(feedDir);
    QProcess server;
    if (startFeedServer(server, script, feeds, feedDir) <= 0) {
        out << "the feed server did not start (" << script << ")\n";
        return 1;
    }
    QFile(feedDir + QStringLiteral("/CONDITIONAL")).open(QIODevice::WriteOnly); // validators on
    const QStringList urls = feedAddresses(feedDir + QStringLiteral("/feeds.opml"));

    qint64 offsetSecs = 0;
    auto core = std::make_unique<EngineCore>(tmp.filePath(QStringLiteral("engine")));
    core->setClock([&offsetSecs]() { return QDateTime::currentDateTimeUtc().addSecs(offsetSecs); });
    QString error;
    if (urls.size() != feeds || !core->open(&error)) {
        out << "setup failed: " << urls.size() << " feeds in the list; " << error << "\n";
        return 1;
    }
    const auto session = core->openSession({});
    addSubscriptions(*core, session, urls);

    out << feeds << " feeds of 20 items, wall and CPU time of this process\n";
    const Round empty = runRound(*core, feeds, "empty store");
    out << "empty store:       " << empty.wallMs << " ms wall, " << empty.cpuMs << " ms CPU  ("
        << describe(empty.statuses) << ")\n";
    offsetSecs += 7200; // everything due again
    const Round unchanged = runRound(*core, feeds, "304 Not Modified");
    out << "304 Not Modified:  " << unchanged.wallMs << " ms wall, " << unchanged.cpuMs << " ms CPU  ("
        << describe(unchanged.statuses) << ")\n";
    QFile::remove(feedDir + QStringLiteral("/CONDITIONAL")); // every request gets the whole feed
    offsetSecs += 7200;
    const Round resent = runRound(*core, feeds, "re-sent in full");
    out << "re-sent in full:   " << resent.wallMs << " ms wall, " << resent.cpuMs << " ms CPU  ("
        << describe(resent.statuses) << ")\n";
    out.flush();

    core->closeSession(session);
    core.reset();
    if (peer) {
        const std::optional<Round> theirs = runPeer(urls, tmp);
        if (!theirs) {
            out << "newsboat (peer): skipped, it is not installed or did not run\n";
        } else {
            out << "newsboat, empty:   " << theirs->wallMs << " ms wall, " << theirs->cpuMs << " ms CPU  ("
                << describe(theirs->statuses) << ")\n";
            out << "ahead of newsboat: "
                << QString::number(double(theirs->wallMs) / std::max<qint64>(1, empty.wallMs), 'f', 1)
                << " times by wall, "
                << QString::number(double(theirs->cpuMs) / std::max<qint64>(1, empty.cpuMs), 'f', 1)
                << " times by CPU\n";
        }
    }
    server.kill();
    server.waitForFinished();
    return 0;
}
