// Pictures of the main window for the README: a realistic set of categories and subscriptions
// in a temporary engine, fetched from canned answers while the window is open (unread counts
// beside the names, one feed failing), shown offscreen and saved as PNG files.
//
//   mainwindow_screenshots <folder>     (writes mainwindow-*.png there)

#include "ConsumerSettings.h"
#include "EngineCalls.h"
#include "FeedFetcher.h"
#include "Shots.h"
#include "ShownMainWindow.h"
#include "SubscriptionTreeView.h"
#include "TestEngine.h"
#include "categoriesUtils.h"
#include "frmMainWindow.h"

#include <QApplication>
#include <QDir>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <cstdio>

using namespace quillon;

namespace {

struct Feed
{
    const char *title;
    const char *url;
    const char *category;
    bool delivered;
    int articles; // what the feed holds; -1: its server answers 404
    int read;     // of them, read in the mail program
};

// Addresses on the reserved example domain, answered by CannedFetcher: nothing leaves the machine.
// "linux news" is what a user typed where an address belongs.
const Feed kFeeds[] = {
    {"World Headlines", "https://news.example.org/world/rss.xml", "News~~~World", true, 12, 4},
    {"Europe Today", "https://news.example.org/europe/rss.xml", "News~~~World", true, 8, 8},
    {"Asia Pacific", "https://news.example.org/asia/atom.xml", "News~~~World", false, 5, 0},
    {"Gadget Review", "https://tech.example.com/gadgets.rss", "News~~~Technology", true, 6, 2},
    {"Open Source Weekly", "https://oss.example.net/weekly.xml", "News~~~Technology~~~Open Source", true, 9,
     3},
    {"Kernel Notes", "https://oss.example.net/kernel/feed", "News~~~Technology~~~Open Source", false, -1, 0},
    {"", "linux news", "News~~~Technology", true, 0, 0},
    {"Phone Talk", "https://mobile.example.com/feed.atom", "News~~~Technology~~~Mobile", true, 4, 1},
    {"Local Weather", "https://weather.example.org/city/rss", "News", true, 3, 3},
    {"Design Matters", "https://blog.example.com/design/feed", "Blogs", true, 7, 2},
    {"The Slow Cook", "https://cooking.example.org/rss", "Blogs", false, 2, 0},
    {"Garden Diary", "https://garden.example.net/atom.xml", "Blogs", true, 5, 5},
    {"Science Friday Notes", "https://science.example.org/notes.rss", "Science", true, 10, 6},
    {"Space Station Log", "https://space.example.org/log.xml", "Science", true, 3, 0},
    {"Morning Briefing", "https://audio.example.com/briefing/podcast.xml", "Podcasts", true, 14, 10},
    {"History Hour", "https://audio.example.com/history/podcast.xml", "Podcasts", false, 6, 0},
    {"Release Announcements", "https://software.example.com/releases.atom", "", true, 2, 0},
};

// Answers each address with a feed of as many articles as kFeeds gives it, or a 404.
class CannedFetcher : public FeedFetcher
{
public:
    void fetch(const FetchRequest &request, Done done) override
    {
        FetchResult result;
        result.finalUrl = request.url;
        const Feed *feed = std::find_if(std::begin(kFeeds), std::end(kFeeds), [&](const Feed &f) {
            return request.url == QUrl(QString::fromLatin1(f.url));
        });
        if (feed == std::end(kFeeds) || feed->articles < 0) {
            result.outcome = FetchResult::Outcome::HttpError;
            result.httpStatus = 404;
            result.reason = QStringLiteral("Not Found");
        } else {
            result.outcome = FetchResult::Outcome::Ok;
            result.contentType = QStringLiteral("application/rss+xml");
            result.body = body(*feed);
        }
        QTimer::singleShot(0, [done = std::move(done), result] { done(result); });
    }

private:
    static QByteArray body(const Feed &feed)
    {
        QByteArray out = QByteArray("<rss version=\"2.0\"><channel><title>") + feed.title + "</title>";
        for (int i = 1; i <= feed.articles; ++i)
            out += "<item><guid>" + QByteArray::number(i) + "</guid><title>Article " + QByteArray::number(i) +
                   "</title></item>";
        return out + "</channel></rss>";
    }
};

qint32 addFeed(SubscribeClient &client, const Feed &feed)
{
    const qint32 id = EngineCalls::AddSubscription(client, feed.title, feed.url, feed.category);
    if (id > 0 && feed.delivered)
        client.BindItem("OLCONSUMER", "NEWS", id, 1);
    return id;
}

// Marks the first articles of each delivered feed read, as the mail delivery reports them.
void readSome(SubscribeClient &client, const QHash<qint32, int> &readOf)
{
    for (auto it = readOf.cbegin(); it != readOf.cend(); ++it) {
        const QList<qint32> articles = EngineCalls::ArticleIds(EngineCalls::Request(
            client, {{"REQUEST", "PENDINGARTICLES"}, {"SUBSCRIPTIONID", QString::number(it.key())}}));
        if (it.value() > 0)
            EngineCalls::Request(client, {{"REQUEST", "SETREADSTATE"}, {"READ", "1"}},
                                 articles.mid(0, it.value()));
    }
}

bool save(QWidget &window, const QDir &folder, const QString &name)
{
    QCoreApplication::processEvents();
    return Shots::save(window.grab(), folder.filePath(name));
}

} // namespace

int main(int argc, char *argv[])
{
    QStandardPaths::setTestModeEnabled(true);
    const Shots::Program program(argc, argv);
    const QDir &folder = program.folder;

    TestEngine engine;
    if (!engine.isReady())
        return 1;
    engine.core().setFeedFetcher(std::make_unique<CannedFetcher>());
    const SubscribeClientPtr feeds = engine.newClient();
    feeds->Connect("OLCONSUMER", std::make_shared<EngineCalls::IgnoreMessages>());
    SetConsumerSetting(*feeds, "CONFIGCONSUMER", QString(), "ShowUrlColumn", "1");

    frmMainWindow window;
    Shots::showMainWindow(window, engine);

    // The feeds arrive while the window is open and their first updates come in as they would.
    qint32 selected = 0;
    qint32 failed = 0;
    QHash<qint32, int> readOf;
    for (const Feed &feed : kFeeds) {
        const qint32 id = addFeed(*feeds, feed);
        readOf.insert(id, feed.read);
        if (QLatin1String(feed.title) == QLatin1String("Open Source Weekly"))
            selected = id;
        if (feed.articles < 0)
            failed = id;
    }
    QSignalSpy updated(&engine.core(), &EngineCore::subscriptionUpdated);
    engine.core().startUpdating();
    if (!QTest::qWaitFor([&] { return updated.size() >= qsizetype(std::size(kFeeds)); }, 20000)) {
        std::fprintf(stderr, "the feeds' first updates did not all finish\n");
        return 1;
    }
    readSome(*feeds, readOf);
    for (int tick = 0; tick < 5; ++tick) {
        QTest::qWait(50);
        window.Run();
    }
    auto *tree = window.findChild<SubscriptionTreeView *>("subsTree");
    tree->expandAll();
    tree->collapse(tree->model()->index(0, 0)); // "Blogs" stays closed, as a user's tree would
    auto *tabs = window.findChild<QTabWidget *>("tabSettingsTabs");

    window.SelectRowByID(selected);
    window.SetStatusText("Added: Release Announcements");
    bool saved = save(window, folder, "mainwindow-subscription.png");
    if (tabs) {
        tabs->setCurrentIndex(1);
        saved = save(window, folder, "mainwindow-subscription-outlook.png") && saved;
        tabs->setCurrentIndex(0);
    }
    const QModelIndex news = tree->model()->index(1, 0);
    tree->setCurrentIndex(news);
    window.SetStatusText(QString());
    saved = save(window, folder, "mainwindow-category.png") && saved;
    window.SelectRowByID(failed);
    saved = save(window, folder, "mainwindow-failed.png") && saved;
    window.close();
    return saved ? 0 : 1;
}
