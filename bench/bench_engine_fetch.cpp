// The engine fetching, parsing and storing N feeds of 20 items from a local server, three ways:
// into an empty store, with every feed answered "304 Not Modified", and with every feed sent
// again in full; the core in this process, each round timed alone. The server is gen_feeds.py
// serve (synthetic RSS on 127.0.0.1). With --peer, the engine daemon and newsboat then each
// fetch every feed into an empty store as a whole process, runs alternated, and the floor of
// that work is measured on the same server (FetchRace.h, engine_floor.sh).
// Usage: bench_engine_fetch [feeds=100] [path of gen_feeds.py] [--peer] [--runs N] [--dir base]
// (--runs: 5 with --peer, else 1; --dir: where each run's fresh folder goes, / when writable.)
// Under valgrind --tool=callgrind --instr-atstart=no, each round is counted and dumped apart.

#include "EngineCore.h"
#include "FeedServer.h"
#include "FetchRace.h"
#include "FunctionCallback.h"
#include "InProcessLink.h"
#include "InstructionCount.h"
#include "ProcessCpu.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QLoggingCategory>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <array>
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
        // Bound to the delivery consumer, as a user who has every feed delivered has them.
        request->setText(QStringLiteral("ConsumerIDs"), QStringLiteral("OLCONSUMER"));
        core.call(session, QStringLiteral("SubmitRequest"), {request, qint32(0)});
    }
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

QString describe(const QHash<QString, int> &statuses)
{
    QStringList parts;
    for (auto it = statuses.cbegin(); it != statuses.cend(); ++it)
        parts.append(QStringLiteral("%1 x%2").arg(it.key()).arg(it.value()));
    return parts.join(QStringLiteral(", "));
}

struct Options
{
    int feeds = 100;
    QString script = kDefaultFeedScript;
    bool peer = false;
    int runs = 1;
    QString base;
};

Options parseOptions(QStringList args)
{
    Options options;
    options.peer = args.removeAll(QStringLiteral("--peer")) > 0;
    options.runs = options.peer ? 5 : 1;
    options.base = QFileInfo(QStringLiteral("/")).isWritable()
                       ? QString()
                       : QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    for (const auto &[flag, value] : {std::pair{QStringLiteral("--runs"), &options.runs}}) {
        if (const qsizetype at = args.indexOf(flag); at >= 0 && at + 1 < args.size()) {
            *value = std::max(1, args.at(at + 1).toInt());
            args.remove(at, 2);
        }
    }
    if (const qsizetype at = args.indexOf(QStringLiteral("--dir")); at >= 0 && at + 1 < args.size()) {
        options.base = args.at(at + 1);
        args.remove(at, 2);
    }
    if (!args.isEmpty())
        options.feeds = args.at(0).toInt();
    if (args.size() > 1)
        options.script = args.at(1);
    return options;
}

struct Rounds
{
    Round empty, unchanged, resent;
};

// The three rounds on a new store in a fresh folder; nothing when the store does not open.
std::optional<Rounds> runRounds(const QString &base, const QStringList &urls, const QString &feedDir)
{
    QTemporaryDir folder(base + QStringLiteral("/quillon-fetch-rounds-XXXXXX"));
    const QString conditional = feedDir + QStringLiteral("/CONDITIONAL");
    QFile(conditional).open(QIODevice::WriteOnly); // validators on
    qint64 offsetSecs = 0;
    EngineCore core(folder.filePath(QStringLiteral("engine")));
    core.setClock([&offsetSecs]() { return QDateTime::currentDateTimeUtc().addSecs(offsetSecs); });
    if (!folder.isValid() || !core.open())
        return std::nullopt;
    const auto session = core.openSession({});
    addSubscriptions(core, session, urls);
    // The delivery consumer connected throughout, its messages dropped, as in real use.
    const auto consumer = LinkedSubscribeClient::create(std::make_unique<InProcessLink>(&core));
    consumer->Connect(QStringLiteral("OLCONSUMER"), std::make_shared<FunctionCallback>([](Handle) {}));
    Rounds rounds;
    const int feeds = int(urls.size());
    rounds.empty = runRound(core, feeds, "empty store");
    offsetSecs += 7200; // everything due again
    rounds.unchanged = runRound(core, feeds, "304 Not Modified");
    QFile::remove(conditional); // every request gets the whole feed
    offsetSecs += 7200;
    rounds.resent = runRound(core, feeds, "re-sent in full");
    core.closeSession(session);
    return rounds;
}

void printRound(QTextStream &out, const char *label, const Round &round)
{
    out << label << round.wallMs << " ms wall, " << round.cpuMs << " ms CPU  (" << describe(round.statuses)
        << ")\n";
}

// Every run's figures, gathered for medians and ranges.
struct Figures
{
    std::array<QList<qint64>, 3> roundCpu; // empty store, "304", re-sent
    QList<qint64> engineWall, engineCpu, peerWall, peerCpu;
    QHash<QString, QList<qint64>> floor; // engine_floor.sh's keys

    [[nodiscard]] qint64 median(const QString &key) const { return Spread::of(floor.value(key)).median; }
};

const QStringList kFloorKeys = {
    QStringLiteral("curl_parallel_cpu_ms"),  QStringLiteral("xml_cpu_ms"),
    QStringLiteral("insert_cpu_ms"),         QStringLiteral("curl_serial_304_cpu_ms"),
    QStringLiteral("curl_parallel_wall_ms"), QStringLiteral("xml_qt_cpu_ms")};

// The three in-process rounds once, printed and gathered; false when the store did not open.
bool roundsOnce(QTextStream &out, const Options &options, const QStringList &urls, const QString &feedDir,
                Figures &figures)
{
    const std::optional<Rounds> rounds = runRounds(options.base, urls, feedDir);
    if (!rounds) {
        out << "the engine's store did not open below " << options.base << "\n";
        return false;
    }
    printRound(out, "empty store:       ", rounds->empty);
    printRound(out, "304 Not Modified:  ", rounds->unchanged);
    printRound(out, "re-sent in full:   ", rounds->resent);
    out.flush();
    figures.roundCpu[0].append(rounds->empty.cpuMs);
    figures.roundCpu[1].append(rounds->unchanged.cpuMs);
    figures.roundCpu[2].append(rounds->resent.cpuMs);
    return true;
}

void printRoundMedians(QTextStream &out, const Figures &figures)
{
    out << "in-process rounds, CPU median (range): empty store " << Spread::of(figures.roundCpu[0]).text()
        << ", 304 " << Spread::of(figures.roundCpu[1]).text() << ", re-sent "
        << Spread::of(figures.roundCpu[2]).text() << "\n";
}

// The subscriptions added to a store that has fetched nothing, for the daemon's runs.
bool seedStore(const QString &folder, const QStringList &urls)
{
    EngineCore core(folder);
    if (!core.open())
        return false;
    const auto session = core.openSession({});
    addSubscriptions(core, session, urls);
    core.closeSession(session);
    return true;
}

QString ratio(double ours, double theirs)
{
    return QString::number(theirs / std::max(1.0, ours), 'f', 1);
}

void floorOnce(FetchRace &race, const QString &feedDir, Figures &figures)
{
    QFile(feedDir + QStringLiteral("/CONDITIONAL")).open(QIODevice::WriteOnly); // serial curl gets "304"
    const QHash<QString, double> floor =
        race.floor(QStringLiteral(QUILLON_BENCH_DIR "/engine_floor.sh"),
                   QCoreApplication::applicationDirPath() + QStringLiteral("/bench_engine_floor"),
                   feedDir + QStringLiteral("/feeds"));
    for (const QString &key : kFloorKeys)
        figures.floor[key].append(floor.contains(key) ? qint64(floor.value(key) + 0.5) : -1);
}

// The engine daemon and newsboat, alternated: the engine first in even runs.
void sidesOnce(QTextStream &out, FetchRace &race, int run, bool newsboat, Figures &figures)
{
    for (int side = 0; side < 2; ++side) {
        if ((side + run) % 2 == 0) {
            const ProcessRun ours =
                race.engine(QCoreApplication::applicationDirPath() + QStringLiteral("/quillon-engine"));
            out << "run " << run + 1 << " engine daemon:  " << ours.wallMs << " ms wall, " << ours.cpuMs
                << " ms CPU\n";
            figures.engineWall.append(ours.wallMs);
            figures.engineCpu.append(ours.cpuMs);
        } else if (newsboat) {
            const ProcessRun theirs = race.newsboat();
            out << "run " << run + 1 << " newsboat:       " << theirs.wallMs << " ms wall, " << theirs.cpuMs
                << " ms CPU\n";
            figures.peerWall.append(theirs.wallMs);
            figures.peerCpu.append(theirs.cpuMs);
        }
        out.flush();
    }
}

void printRace(QTextStream &out, const Options &options, const Figures &figures, bool newsboat)
{
    const Spread ew = Spread::of(figures.engineWall), ec = Spread::of(figures.engineCpu);
    const Spread pw = Spread::of(figures.peerWall), pc = Spread::of(figures.peerCpu);
    out << "engine daemon, median (range) of " << options.runs << ": wall " << ew.text() << ", CPU "
        << ec.text() << "\n";
    if (newsboat) {
        out << "newsboat, median (range) of " << options.runs << ":      wall " << pw.text() << ", CPU "
            << pc.text() << "\n";
        out << "ahead of newsboat (medians): " << ratio(ew.median, pw.median) << " times by wall, "
            << ratio(ec.median, pc.median) << " times by CPU\n";
    }
    for (const QString &key : kFloorKeys)
        out << "floor " << key << ": " << Spread::of(figures.floor.value(key)).text() << "\n";
    const qint64 sum = figures.median(kFloorKeys.at(0)) + figures.median(kFloorKeys.at(1)) +
                       figures.median(kFloorKeys.at(2));
    const qint64 serial = figures.median(kFloorKeys.at(3));
    const qint64 empty = Spread::of(figures.roundCpu[0]).median;
    const qint64 unchanged = Spread::of(figures.roundCpu[1]).median;
    out << "floor (parallel curl + XML pass + inserts): " << sum << " ms CPU; engine round "
        << ratio(sum, empty) << " times it, engine daemon " << ratio(sum, ec.median) << " times it\n";
    out << "\"304\" round: " << unchanged << " ms CPU, " << ratio(serial, unchanged)
        << " times serial curl's " << serial << " ms\n";
}

// Each run: the in-process rounds, both whole processes and the floor, so that a change of the
// machine's load falls on every piece alike.
void reportRace(QTextStream &out, const Options &options, const QStringList &urls, const QString &feedDir)
{
    QTemporaryDir seed(options.base + QStringLiteral("/quillon-fetch-seed-XXXXXX"));
    if (!seedStore(seed.path(), urls)) {
        out << "the seed store did not open below " << options.base << "\n";
        return;
    }
    FetchRace race(options.base, seed.path(), urls, int(urls.size()) * 20);
    const bool newsboat = FetchRace::hasNewsboat();
    if (!newsboat)
        out << "newsboat (peer): skipped, it is not installed\n";
    Figures figures;
    for (int run = 0; run < options.runs; ++run) {
        if (!roundsOnce(out, options, urls, feedDir, figures))
            return;
        sidesOnce(out, race, run, newsboat, figures);
        floorOnce(race, feedDir, figures);
    }
    printRoundMedians(out, figures);
    printRace(out, options, figures, newsboat);
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
    const Options options = parseOptions(app.arguments().mid(1));
    QTextStream out(stdout);

    QTemporaryDir tmp(options.base + QStringLiteral("/quillon-fetch-server-XXXXXX"));
    const QString feedDir = tmp.filePath(QStringLiteral("feeds"));
    QDir().mkpath(feedDir);
    QProcess server;
    if (startFeedServer(server, options.script, options.feeds, feedDir) <= 0) {
        out << "the feed server did not start (" << options.script << ")\n";
        return 1;
    }
    const QStringList urls = feedAddresses(feedDir + QStringLiteral("/feeds.opml"));
    if (urls.size() != options.feeds) {
        out << "setup failed: " << urls.size() << " feeds in the list\n";
        return 1;
    }
    out << options.feeds << " feeds of 20 items; in-process rounds: wall and CPU time of this process\n";
    if (options.peer) {
        reportRace(out, options, urls, feedDir);
    } else {
        Figures figures;
        for (int run = 0; run < options.runs; ++run) {
            if (!roundsOnce(out, options, urls, feedDir, figures))
                return 1;
        }
        if (options.runs > 1)
            printRoundMedians(out, figures);
    }
    server.kill();
    server.waitForFinished();
    return 0;
}
