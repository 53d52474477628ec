// The add-subscription wizard and the feed preview as a user meets them: opening the wizard
// over a tree of 5,000 categories (its four category drop-downs filled), and the preview of a
// 200-item feed from a local server, from the preview's opening to its first article drawn by
// the embedded browser, the first time in the process (cold) and after (warm).
//
//   bench_add_subscription [categories=5000] [items=200] [runs=5]
//
// Runs on the offscreen platform unless QT_QPA_PLATFORM says otherwise.

#include "AddSubscriptionEntry.h"
#include "ArticleView.h"
#include "CategoryTree.h"
#include "ClientAccess.h"
#include "EngineCore.h"
#include "InProcessLink.h"
#include "LinkedSubscribeClient.h"
#include "LocalHttpServer.h"
#include "ProcessCpu.h"
#include "PromptSeam.h"
#include "WebArticleView.h"
#include "categoriesUtils.h"
#include "frmAddSubscription.h"
#include "frmPreviewSubscription.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

#include <algorithm>
#include <cstdio>

namespace {

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0 : values.at(values.size() / 2);
}

QByteArray feed(int items)
{
    QByteArray out = "<?xml version=\"1.0\"?><rss version=\"2.0\"><channel><title>Bench</title>";
    for (int i = 0; i < items; ++i)
        out += QStringLiteral(
                   "<item><guid>b%1</guid><title>Article number %1</title><link>http://127.0.0.1:9/%1</link>"
                   "<description>&lt;p&gt;Paragraph one of article %1 with some words in it.&lt;/p&gt;"
                   "&lt;p&gt;And a second paragraph.&lt;/p&gt;</description></item>")
                   .arg(i)
                   .toUtf8();
    return out + "</channel></rss>";
}

double openWizardMillis(const CategoryTree &tree)
{
    QElapsedTimer timer;
    timer.start();
    frmAddSubscription wizard;
    wizard.Initialize(categoriesUtils::CategoryPathsInIndexOrder(tree));
    wizard.show();
    QCoreApplication::processEvents();
    return timer.nsecsElapsed() / 1e6;
}

double previewMillis(const quillon::SubscribeClientPtr &client, const QString &url)
{
    QElapsedTimer timer;
    timer.start();
    frmPreviewSubscription preview;
    preview.InitWindow(client, nullptr, QStringLiteral("Bench"), url, false);
    QSignalSpy drawn(&preview.View(), &ArticleView::NavigationComplete);
    preview.show();
    auto *articles = preview.findChild<QTreeWidget *>(QStringLiteral("grdArticles"));
    // A real event loop: the browser's work arrives as a stream of small events.
    QSignalSpy listedSpy(articles->model(), &QAbstractItemModel::rowsInserted);
    if (!listedSpy.wait(60000))
        return -1;
    const double listed = timer.nsecsElapsed() / 1e6;
    if (drawn.isEmpty() && !drawn.wait(60000))
        return -1;
    const double total = timer.nsecsElapsed() / 1e6;
    if (qEnvironmentVariableIsSet("BENCH_VERBOSE"))
        std::printf("  listed after %.0f ms, drawn after %.0f ms\n", listed, total);
    return total;
}

// The floor: the embedded view alone drawing a one-line local page.
double blankPageMillis(const QString &path)
{
    QWidget owner;
    WebArticleView view(&owner);
    owner.resize(400, 300);
    owner.show();
    QSignalSpy drawn(&view, &ArticleView::NavigationComplete);
    QElapsedTimer timer;
    timer.start();
    view.Navigate(QUrl::fromLocalFile(path));
    if (!drawn.wait(60000))
        return -1;
    return timer.nsecsElapsed() / 1e6;
}

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    WebArticleView::PrepareProcess();
    QApplication app(argc, argv);
    const int categories = argc > 1 ? std::atoi(argv[1]) : 5000;
    const int items = argc > 2 ? std::atoi(argv[2]) : 200;
    const int runs = argc > 3 ? std::atoi(argv[3]) : 5;
    PromptSeam::SetHandler([](Prompt &prompt) { return PromptSeam::NeutralAnswer(prompt.kind); });

    QTemporaryDir dir;
    quillon::EngineCore core(dir.path());
    if (!core.open())
        return 1;
    auto client = quillon::LinkedSubscribeClient::create(std::make_unique<quillon::InProcessLink>(&core));
    ClientAccess::SetEngineClient(client);

    CategoryTree tree;
    for (int i = 0; tree.count() < categories; ++i)
        categoriesUtils::AddCategoryFromSubscription(
            tree, QStringLiteral("Area %1~~~Topic %2").arg(i / 100).arg(i % 100));
    QList<double> opens;
    for (int r = 0; r < runs; ++r)
        opens << openWizardMillis(tree);
    std::printf("wizard open, %d categories: median %.1f ms (first %.1f ms, %d runs)\n", tree.count(),
                median(opens), opens.first(), runs);

    LocalHttpServer server;
    if (!server.listen())
        return 1;
    server.serve(QStringLiteral("/bench"), feed(items));
    const QString url = server.url(QStringLiteral("/bench")).toString();
    const qint64 cpuBefore = processCpuMillis(QCoreApplication::applicationPid());
    const double cold = previewMillis(client, url);
    QList<double> warm;
    for (int r = 0; r < runs; ++r)
        warm << previewMillis(client, url);
    const qint64 cpuAfter = processCpuMillis(QCoreApplication::applicationPid());
    std::printf("preview of %d items to first article drawn: cold %.0f ms, warm median %.0f ms "
                "(process CPU %lld ms over %d previews)\n",
                items, cold, median(warm), static_cast<long long>(cpuAfter - cpuBefore), runs + 1);
    QFile blank(dir.filePath(QStringLiteral("blank.html")));
    if (blank.open(QIODevice::WriteOnly) && blank.write("<html><body>x</body></html>") > 0) {
        blank.close();
        QList<double> floors;
        for (int r = 0; r < runs; ++r)
            floors << blankPageMillis(blank.fileName());
        std::printf("embedded view alone, one-line local page: median %.0f ms\n", median(floors));
    }
    ClientAccess::SetEngineClient(nullptr);
    return 0;
}
