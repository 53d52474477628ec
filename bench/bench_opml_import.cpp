// Importing a large OPML file through the add-subscription wizard into the main window, against
// the real engine daemon over its local socket (fetching off, so only the import is timed): an
// OPML of 5,000 feeds in 50 nested folders, from loading the file to the import grid filled,
// and from cmdOK with every feed checked to the last subscription shown in the main window's
// tree. A 5 ms timer watches the event loop the whole time and reports its longest stall.
//
//   bench_opml_import [feeds=5000] [folders=50]

#include "AddRequestQueue.h"
#include "FeedListModel.h"
#include "ProcessCpu.h"
#include "WindowBench.h"
#include "frmAddSubscription.h"
#include "frmMainWindow.h"

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QFile>
#include <QPushButton>
#include <QTimer>
#include <QTreeView>

#include <cstdio>
#include <functional>

namespace {

// The longest time the event loop went without running a 5 ms timer.
class StallWatch
{
public:
    StallWatch()
    {
        QObject::connect(&m_timer, &QTimer::timeout,
                         [this] { m_longest = std::max(m_longest, m_since.restart()); });
        m_timer.start(5);
        m_since.start();
    }
    qint64 longestMillis() const { return m_longest; }

private:
    QTimer m_timer;
    QElapsedTimer m_since;
    qint64 m_longest = 0;
};

bool runUntil(const std::function<bool()> &done, int timeoutMs)
{
    QElapsedTimer waited;
    waited.start();
    while (!done()) {
        if (waited.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    }
    return true;
}

QString writeOpml(const QString &path, int feeds, int folders)
{
    // Ten top folders, the rest spread below them, the feeds shared out over the lower ones.
    const int top = std::max(1, folders / 5);
    const int below = std::max(1, folders / top - 1);
    const int leaves = top * below;
    QString text = QStringLiteral("<?xml version=\"1.0\"?><opml version=\"2.0\"><body>");
    int feed = 0;
    for (int t = 0; t < top; ++t) {
        text += QStringLiteral("<outline text=\"Area %1\">").arg(t);
        for (int b = 0; b < below; ++b) {
            text += QStringLiteral("<outline text=\"Topic %1\">").arg(b);
            const int share = feeds / leaves + ((t * below + b) < feeds % leaves ? 1 : 0);
            for (int f = 0; f < share; ++f, ++feed)
                text +=
                    QStringLiteral("<outline text=\"Feed %1\" xmlUrl=\"http://127.0.0.1:9/feed/%1.xml\"/>")
                        .arg(feed);
            text += QStringLiteral("</outline>");
        }
        text += QStringLiteral("</outline>");
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return QString();
    file.write((text + QStringLiteral("</body></opml>")).toUtf8());
    return path;
}

} // namespace

int main(int argc, char *argv[])
{
    WindowBench::prepareProcess();
    QApplication app(argc, argv);
    const int feeds = argc > 1 ? std::atoi(argv[1]) : 5000;
    const int folders = argc > 2 ? std::atoi(argv[2]) : 50;
    WindowBench bench;
    if (!bench.startEngine())
        return 1;
    const QString opml = writeOpml(bench.settings.filePath(QStringLiteral("big list.opml")), feeds, folders);
    if (opml.isEmpty())
        return 1;
    frmMainWindow &window = bench.showWindow();

    StallWatch watch;
    frmAddSubscription wizard;
    wizard.SetHost(&window);
    wizard.Initialize(window.Categories());
    wizard.show();
    auto *model = qobject_cast<FeedListModel *>(
        wizard.findChild<QTreeView *>(QStringLiteral("grdImportList"))->model());
    const qint64 cpu0 = processCpuMillis(QCoreApplication::applicationPid());
    QElapsedTimer timer;
    timer.start();
    wizard.USMImportOPMLFile(opml);
    if (!runUntil([&] { return model->FeedCount() >= feeds; }, 60000))
        return 2;
    const double grid = timer.nsecsElapsed() / 1e6;
    const qint64 cpu1 = processCpuMillis(QCoreApplication::applicationPid());

    timer.restart();
    wizard.findChild<QCheckBox *>(QStringLiteral("chkImportAll"))->click();
    wizard.findChild<QPushButton *>(QStringLiteral("cmdOK"))->click();
    const int nodes = window.Tree().count() + feeds + folders;
    const bool shown = runUntil(
        [&] { return AddRequestQueue::Instance().Waiting() == 0 && window.Tree().count() >= nodes; }, 300000);
    const double import = timer.nsecsElapsed() / 1e6;
    const qint64 cpu2 = processCpuMillis(QCoreApplication::applicationPid());
    std::printf(
        "%d feeds in %d folders | grid filled %.0f ms (cpu %lld) | import to the tree %.0f ms (cpu %lld)%s "
        "| longest event-loop stall %lld ms | tree nodes %d\n",
        feeds, folders, grid, static_cast<long long>(cpu1 - cpu0), import,
        static_cast<long long>(cpu2 - cpu1), shown ? "" : " (not all shown)", watch.longestMillis(),
        window.Tree().count());
    wizard.close();
    return shown ? 0 : 3;
}
