// The options window against the real engine daemon over its local socket, with many
// subscriptions in 30 categories: from a click on the main window's cmdPrefs to the first
// paint of the page shown (the general page, and the export page, which lists every
// subscription), then an OPML export of all of them through the export page (from making the
// page, which reads the list, to the file written).
//
//   bench_options_window [subscriptions=10000] [runs=5]
//
// Runs on the offscreen platform unless QT_QPA_PLATFORM says otherwise.

#include "ConsumerSettings.h"
#include "ExportUI.h"
#include "MainModule.h"
#include "WindowBench.h"
#include "frmMainWindow.h"

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace quillon;

namespace {

class IgnoringCallback : public ISubscribeClientCallback
{
public:
    void Setup(QObject *) override {}
    void Shutdown() override {}
    qint32 ProcessMessage(Handle &) override { return 0; }
};

qint32 subscriptionCount(SubscribeClient &client)
{
    const Handle list = client.ListConsumerItems(QStringLiteral("*"), QStringLiteral("NEWS"));
    const qint32 count = client.ListCount(list);
    client.ReleaseHandle(list);
    return count;
}

bool addSubscriptions(SubscribeClient &client, int count)
{
    for (int i = 0; i < count; ++i) {
        const Handle request =
            client.CreateItemRequest(QStringLiteral("NEWS"), QStringLiteral("Feed %1").arg(i),
                                     QStringLiteral("http://127.0.0.1:9/feed/%1.xml").arg(i));
        client.SetStringValue(request, QStringLiteral("CATEGORY"),
                              QStringLiteral("Area %1~~~Topic %2").arg(i % 6).arg(i % 5));
        client.SubmitRequest(request, std::make_shared<IgnoringCallback>());
        client.ReleaseHandle(request);
    }
    QElapsedTimer waited;
    waited.start();
    while (subscriptionCount(client) < count) {
        if (waited.elapsed() > 120000)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 100);
    }
    return true;
}

// Stops the clock at the first paint of the page named pane, then closes the options window.
class FirstPaint : public QObject
{
public:
    QString pane;
    QElapsedTimer clock;
    double millis = -1;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && millis < 0 && watched->objectName() == pane) {
            millis = clock.nsecsElapsed() / 1e6;
            QTimer::singleShot(0, [] {
                if (QWidget *modal = QApplication::activeModalWidget())
                    modal->close();
            });
        }
        return false;
    }
};

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

double timeOpening(frmMainWindow &window, SubscribeClient &client, const QString &module, const QString &pane)
{
    SetConsumerSetting(client, QStringLiteral("CONFIGCONSUMER"), QString(),
                       QStringLiteral("CurrentOptionsModule"), module);
    FirstPaint watch;
    watch.pane = pane;
    qApp->installEventFilter(&watch);
    watch.clock.start();
    window.findChild<QPushButton *>(QStringLiteral("cmdPrefs"))->click();
    qApp->removeEventFilter(&watch);
    return watch.millis;
}

double timeExport(const SubscribeClientPtr &client, const QString &path)
{
    QElapsedTimer clock;
    clock.start();
    ExportUI page(client);
    page.SetFileChooser([&](QWidget *, const QString &) { return path; });
    page.show();
    auto *list = page.findChild<QTableWidget *>(QStringLiteral("grdSubscriptions"));
    while (list->rowCount() == 0)
        QCoreApplication::processEvents();
    page.findChild<QCheckBox *>(QStringLiteral("chkAll"))->click();
    page.findChild<QPushButton *>(QStringLiteral("cmdExport"))->click();
    return clock.nsecsElapsed() / 1e6;
}

} // namespace

int main(int argc, char *argv[])
{
    WindowBench::prepareProcess();
    QApplication app(argc, argv);
    const int count = argc > 1 ? std::atoi(argv[1]) : 10000;
    const int runs = argc > 2 ? std::atoi(argv[2]) : 5;
    WindowBench bench;
    if (!bench.startEngine())
        return 1;
    const SubscribeClientPtr client = bench.client;
    if (!addSubscriptions(*client, count))
        return 2;
    MainWindowEntryPoints points;
    points.options = &MainModule::OpenOptionsWindow;
    frmMainWindow &window = bench.showWindow(points);

    std::vector<double> general, exported, written;
    for (int run = 0; run < runs; ++run) {
        general.push_back(timeOpening(window, *client, QString(), QStringLiteral("GeneralUI1")));
        exported.push_back(
            timeOpening(window, *client, QStringLiteral("ExportProp"), QStringLiteral("ExportUI1")));
        written.push_back(timeExport(client, bench.settings.filePath(QStringLiteral("all.opml"))));
    }
    std::printf("%d subscriptions, %d runs (median, best)\n", count, runs);
    std::printf("cmdPrefs to first page drawn, general page: %.1f ms, %.1f ms\n", median(general),
                *std::min_element(general.begin(), general.end()));
    std::printf("cmdPrefs to first page drawn, export page:  %.1f ms, %.1f ms\n", median(exported),
                *std::min_element(exported.begin(), exported.end()));
    std::printf("export of all subscriptions to OPML:        %.1f ms, %.1f ms\n", median(written),
                *std::min_element(written.begin(), written.end()));
    return 0;
}
