// Round trips of the engine client: the basic properties of many subscriptions read over the
// daemon's local socket, with the same reads on an in-process core for comparison.
//
//   bench_client_roundtrip [subscriptions=10000]

#include "DaemonProcess.h"
#include "EngineCore.h"
#include "InProcessLink.h"
#include "LinkedSubscribeClient.h"
#include "ProcessCpu.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

using namespace quillon;

namespace {

const QString kNews = QStringLiteral("NEWS");

void addSubscriptions(SubscribeClient &client, int count)
{
    for (int i = 0; i < count; ++i) {
        const Handle request =
            client.CreateItemRequest(kNews, QStringLiteral("Feed %1").arg(i),
                                     QStringLiteral("http://127.0.0.1:9/feeds/%1.xml").arg(i));
        client.SetStringValue(request, QStringLiteral("CATEGORY"),
                              QStringLiteral("Bench~~~Group %1").arg(i % 20));
        client.SubmitRequest(request, nullptr);
        client.ReleaseHandle(request);
    }
}

QList<qint32> allIds(SubscribeClient &client)
{
    const Handle list = client.ListConsumerItems(QStringLiteral("*"), kNews);
    QList<qint32> ids;
    for (qint32 i = 0, n = client.ListCount(list); i < n; ++i)
        ids.append(client.ListLong(list, i));
    client.ReleaseHandle(list);
    return ids;
}

// What the subscription list does for every row.
qsizetype readBasics(SubscribeClient &client, qint32 id)
{
    const Handle item = client.GetItemBag(kNews, id, 0);
    const qsizetype size = client.GetStringValue(item, QStringLiteral("TITLE")).size() +
                           client.GetStringValue(item, QStringLiteral("URL")).size() +
                           client.GetStringValue(item, QStringLiteral("CATEGORY")).size();
    client.ReleaseHandle(item);
    return size;
}

double medianRoundTripMicros(SubscribeClient &client, const QList<qint32> &ids, int samples)
{
    std::vector<qint64> nanos;
    nanos.reserve(samples);
    // A turn of the event loop ends the client's read-ahead after the listing: each read below
    // is one round trip.
    QCoreApplication::processEvents();
    QElapsedTimer timer;
    for (int i = 0; i < samples; ++i) {
        const qint32 id = ids.at(int(QRandomGenerator::global()->bounded(int(ids.size()))));
        timer.start();
        readBasics(client, id);
        nanos.push_back(timer.nsecsElapsed());
    }
    std::nth_element(nanos.begin(), nanos.begin() + samples / 2, nanos.end());
    return double(nanos[samples / 2]) / 1000.0;
}

qint64 ownCpuMillis()
{
    return qint64(std::clock()) * 1000 / CLOCKS_PER_SEC;
}

struct ReadAll
{
    qint64 wallMillis = 0;
    qint64 clientCpuMillis = 0;
    qint64 engineCpuMillis = -1;
};

// Wall time on a busy machine counts the waits for the other process to be scheduled, so
// the CPU time both sides spent is reported beside it.
ReadAll readAll(SubscribeClient &client, int expected, qint64 enginePid)
{
    const qint64 ownStart = ownCpuMillis();
    const qint64 engineStart = processCpuMillis(enginePid);
    QElapsedTimer timer;
    timer.start();
    const QList<qint32> ids = allIds(client);
    qsizetype total = 0;
    for (const qint32 id : ids)
        total += readBasics(client, id);
    ReadAll result;
    result.wallMillis = timer.elapsed();
    result.clientCpuMillis = ownCpuMillis() - ownStart;
    if (engineStart >= 0)
        result.engineCpuMillis = processCpuMillis(enginePid) - engineStart;
    if (ids.size() != expected || total == 0)
        std::fprintf(stderr, "expected %d subscriptions, read %lld\n", expected, qlonglong(ids.size()));
    return result;
}

void measure(const char *label, SubscribeClient &client, int count, qint64 enginePid)
{
    QElapsedTimer timer;
    timer.start();
    addSubscriptions(client, count);
    const qint64 addMillis = timer.elapsed();
    const double median = medianRoundTripMicros(client, allIds(client), 2000);
    const ReadAll all = readAll(client, count, enginePid);
    std::printf("%-10s adding %d: %lld ms; GetItemBag+3 reads+release median %.1f us; all %d: %lld ms (cpu: "
                "%s %lld ms",
                label, count, qlonglong(addMillis), median, count, qlonglong(all.wallMillis),
                all.engineCpuMillis >= 0 ? "client" : "process", qlonglong(all.clientCpuMillis));
    if (all.engineCpuMillis >= 0)
        std::printf(", engine %lld ms", qlonglong(all.engineCpuMillis));
    std::printf(")\n");
    std::fflush(stdout);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const int count = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 10000;
    if (count <= 0)
        return 1;

    // Measure the protocol alone: the daemon fetches nothing while the figures are taken.
    qputenv("QUILLON_ENGINE_NO_FETCH", "1");
    DaemonProcess daemon;
    if (!daemon.start()) {
        std::fprintf(stderr, "%s\n", qPrintable(daemon.errorText()));
        return 1;
    }
    measure("socket", *daemon.newClient(), count, daemon.process().processId());
    daemon.stop();

    QTemporaryDir folder;
    EngineCore core(folder.path());
    if (!core.open())
        return 1;
    measure("in-process", *LinkedSubscribeClient::create(std::make_unique<InProcessLink>(&core)), count, 0);
    return 0;
}
