// The main window's list load against the real engine daemon over its local socket: the
// subscriptions spread over 300 nested categories (kept as the saved category tree), half of
// them delivered to Outlook. For each size it times LoadSubscriptionsList, the handling of one
// "SubscriptionAdded" message and the full refresh that follows a binding change.
//
//   bench_main_window_load [sizes=1000,10000,30000] [runs=3]
//
// Runs on the offscreen platform unless QT_QPA_PLATFORM says otherwise.

#include "CategoryTree.h"
#include "DaemonProcess.h"
#include "HandleGuard.h"
#include "LocalSettings.h"
#include "ProcessCpu.h"
#include "PromptSeam.h"
#include "SubscriptionListLoader.h"
#include "categoriesUtils.h"
#include "frmMainWindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

using namespace quillon;

namespace {

const QString kNews = QStringLiteral("NEWS");
constexpr int kCategories = 300;

// 12 top categories, 5 under each and 4 under each of those: 12 + 60 + 240 = 312, of which
// the first 300 in this order are used.
QStringList categoryPaths()
{
    QStringList paths;
    for (int a = 0; a < 12; ++a) {
        const QString top = QStringLiteral("Topic %1").arg(a);
        paths << top;
        for (int b = 0; b < 5; ++b) {
            const QString middle = top + QStringLiteral("~~~Area %1").arg(b);
            paths << middle;
            for (int c = 0; c < 4; ++c)
                paths << middle + QStringLiteral("~~~Group %1").arg(c);
        }
    }
    return paths.mid(0, kCategories);
}

void saveCategories(SubscribeClient &client, const QStringList &paths)
{
    CategoryTree tree;
    for (const QString &path : paths)
        categoriesUtils::AddCategoryFromSubscription(tree, path);
    categoriesUtils::SaveCategoryTree(tree, client);
}

qint32 addSubscription(SubscribeClient &client, int number, const QString &category, bool delivered)
{
    HandleGuard request(
        client, client.CreateItemRequest(kNews, QStringLiteral("Feed %1").arg(number),
                                         QStringLiteral("http://127.0.0.1:9/feeds/%1.xml").arg(number)));
    client.SetStringValue(request.get(), QStringLiteral("CATEGORY"), category);
    HandleGuard consumers(client);
    if (delivered) {
        consumers.reset(client.NewList());
        client.ListAppend(consumers.get(), QStringLiteral("OLCONSUMER"));
        client.SetHandleValue(request.get(), QStringLiteral("ConsumerIDs"), consumers.get());
    }
    return client.SubmitRequest(request.get(), nullptr);
}

void fillTo(SubscribeClient &client, const QStringList &paths, int from, int to)
{
    for (int i = from; i < to; ++i)
        addSubscription(client, i, paths.at(i % paths.size()), i % 2 == 0);
}

qint32 lastId(SubscribeClient &client)
{
    HandleGuard all(client, client.ListConsumerItems(QStringLiteral("*"), kNews));
    const qint32 count = client.ListCount(all.get());
    return count > 0 ? client.ListLong(all.get(), count - 1) : 0;
}

struct Timing
{
    double wallMillis = 0;
    // Both processes together; wall time on a shared machine also counts waiting to be scheduled.
    double cpuMillis = 0;
};

qint64 g_enginePid = 0;

template <typename Step> Timing median(int runs, Step step)
{
    std::vector<double> walls;
    std::vector<double> cpus;
    for (int i = 0; i < runs; ++i) {
        const qint64 cpuBefore =
            processCpuMillis(QCoreApplication::applicationPid()) + processCpuMillis(g_enginePid);
        QElapsedTimer timer;
        timer.start();
        step();
        walls.push_back(double(timer.nsecsElapsed()) / 1e6);
        cpus.push_back(double(processCpuMillis(QCoreApplication::applicationPid()) +
                              processCpuMillis(g_enginePid) - cpuBefore));
    }
    std::sort(walls.begin(), walls.end());
    std::sort(cpus.begin(), cpus.end());
    return {walls[walls.size() / 2], cpus[cpus.size() / 2]};
}

// A "SubscriptionAdded" bag as the engine sends it.
void deliverAdded(frmMainWindow &window, SubscribeClient &client, qint32 id)
{
    HandleGuard message(client, client.NewBag());
    HandleGuard result(client, client.NewBag());
    client.SetStringValue(message.get(), QStringLiteral("MESSAGE"), QStringLiteral("SubscriptionAdded"));
    client.SetLongValue(result.get(), QStringLiteral("SUBSCRIPTIONID"), id);
    client.SetHandleValue(message.get(), QStringLiteral("Result"), result.get());
    window.EventSubscribeClientMessage(message.get());
}

void measure(frmMainWindow &window, SubscribeClient &windowClient, SubscribeClient &other, int size, int runs)
{
    // The first read after the adds also pays for the engine settling its database.
    window.LoadSubscriptionsList();
    CategoryTree bare;
    const Timing loader = median(runs, [&] { SubscriptionListLoader(windowClient, bare).Load(); });
    const Timing load = median(runs, [&] { window.LoadSubscriptionsList(); });
    const int nodes = window.Tree().count();

    // One subscription arrives from another consumer; the window files it without a reload.
    addSubscription(other, size, QStringLiteral("Topic 0~~~Area 0"), false);
    const qint32 added = lastId(other);
    const Timing addedStep = median(1, [&] { deliverAdded(window, windowClient, added); });
    const Timing refresh = median(runs, [&] { window.DoDisplayRefresh(); });
    other.RemoveItem(kNews, added, 1);

    std::printf(
        "%6d subscriptions, %5d nodes | tree alone %6.0f ms (cpu %5.0f) | LoadSubscriptionsList %6.0f ms "
        "(cpu %5.0f) | SubscriptionAdded %5.2f ms | DoDisplayRefresh %6.0f ms (cpu %5.0f)\n",
        size, nodes, loader.wallMillis, loader.cpuMillis, load.wallMillis, load.cpuMillis,
        addedStep.wallMillis, refresh.wallMillis, refresh.cpuMillis);
    std::fflush(stdout);
}

QList<int> parseSizes(const char *text)
{
    QList<int> sizes;
    for (const QString &part : QString::fromLocal8Bit(text).split(QLatin1Char(','), Qt::SkipEmptyParts))
        sizes << part.toInt();
    std::sort(sizes.begin(), sizes.end());
    return sizes;
}

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QList<int> sizes = parseSizes(argc > 1 ? argv[1] : "1000,10000,30000");
    const int runs = argc > 2 ? std::max(1, QString::fromLocal8Bit(argv[2]).toInt()) : 3;
    if (sizes.isEmpty() || sizes.first() <= 0)
        return 1;

    // Nothing of the user's own settings or log is touched.
    QStandardPaths::setTestModeEnabled(true);
    QTemporaryDir settings;
    LocalSettings::SetBaseFolder(settings.path());
    SaveSetting(QStringLiteral("Quillon"), QStringLiteral("Quillon"), QStringLiteral("LogFileWanted"),
                QStringLiteral("0"));
    PromptSeam::SetHandler([](Prompt &prompt) { return PromptSeam::NeutralAnswer(prompt.kind); });

    // The engine's per-request log lines would cost more than the work measured.
    if (qEnvironmentVariableIsEmpty("QT_LOGGING_RULES"))
        qputenv("QT_LOGGING_RULES", "corvell.quillon.*.info=false");
    // Measure the protocol alone: the daemon fetches nothing while the figures are taken.
    qputenv("QUILLON_ENGINE_NO_FETCH", "1");
    DaemonProcess daemon;
    if (!daemon.start()) {
        std::fprintf(stderr, "%s\n", qPrintable(daemon.errorText()));
        return 1;
    }
    g_enginePid = daemon.process().processId();
    const SubscribeClientPtr other = daemon.newClient();
    const SubscribeClientPtr windowClient = daemon.newClient();
    const QStringList paths = categoryPaths();
    saveCategories(*other, paths);

    frmMainWindow window;
    window.SetClient(windowClient);
    window.show();
    int filled = 0;
    for (const int size : sizes) {
        QElapsedTimer timer;
        timer.start();
        fillTo(*other, paths, filled, size);
        filled = size;
        std::fprintf(stderr, "filled to %d in %lld ms\n", size, qlonglong(timer.elapsed()));
        measure(window, *windowClient, *other, size, runs);
    }
    window.close();
    if (windowClient->LiveHandleCount() != 0)
        std::fprintf(stderr, "%d handles left open\n", windowClient->LiveHandleCount());
    daemon.stop();
    return 0;
}
