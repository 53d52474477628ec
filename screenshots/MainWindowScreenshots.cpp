// Pictures of the main window for the README: a realistic set of categories and subscriptions
// in a temporary engine, shown offscreen and saved as PNG files.
//
//   mainwindow_screenshots <folder>     (writes mainwindow-*.png there)

#include "CBConnect.h"
#include "ConsumerSettings.h"
#include "EngineCalls.h"
#include "HandleGuard.h"
#include "Shots.h"
#include "SubscriptionTreeView.h"
#include "TestEngine.h"
#include "categoriesUtils.h"
#include "frmMainWindow.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QStandardPaths>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

using namespace quillon;

namespace {

struct Feed
{
    const char *title;
    const char *url;
    const char *category;
    bool delivered;
    const char *status;
};

// Addresses on the reserved example domain: nothing here is fetched.
const Feed kFeeds[] = {
    {"World Headlines", "https://news.example.org/world/rss.xml", "News~~~World", true, "OK"},
    {"Europe Today", "https://news.example.org/europe/rss.xml", "News~~~World", true, "OK"},
    {"Asia Pacific", "https://news.example.org/asia/atom.xml", "News~~~World", false, nullptr},
    {"Gadget Review", "https://tech.example.com/gadgets.rss", "News~~~Technology", true, "OK"},
    {"Open Source Weekly", "https://oss.example.net/weekly.xml", "News~~~Technology~~~Open Source", true,
     "OK"},
    {"Kernel Notes", "https://oss.example.net/kernel/feed", "News~~~Technology~~~Open Source", false,
     "HTTP 404 Not Found"},
    {"Phone Talk", "https://mobile.example.com/feed.atom", "News~~~Technology~~~Mobile", true, "OK"},
    {"Local Weather", "https://weather.example.org/city/rss", "News", true, "OK"},
    {"Design Matters", "https://blog.example.com/design/feed", "Blogs", true, "OK"},
    {"The Slow Cook", "https://cooking.example.org/rss", "Blogs", false, nullptr},
    {"Garden Diary", "https://garden.example.net/atom.xml", "Blogs", true, "OK"},
    {"Science Friday Notes", "https://science.example.org/notes.rss", "Science", true, "OK"},
    {"Space Station Log", "https://space.example.org/log.xml", "Science", true, "OK"},
    {"Morning Briefing", "https://audio.example.com/briefing/podcast.xml", "Podcasts", true, "OK"},
    {"History Hour", "https://audio.example.com/history/podcast.xml", "Podcasts", false, nullptr},
    {"Release Announcements", "https://software.example.com/releases.atom", "", true, "OK"},
};

qint32 addFeed(SubscribeClient &client, const Feed &feed)
{
    const qint32 id = EngineCalls::AddSubscription(client, feed.title, feed.url, feed.category);
    if (id <= 0)
        return 0;
    if (feed.delivered)
        client.BindItem("OLCONSUMER", "NEWS", id, 1);
    if (feed.status) {
        const QDateTime now = QDateTime::currentDateTimeUtc();
        HandleGuard values(client, client.NewBag());
        client.SetStringValue(values.get(), "LASTUPDATESTATUS", feed.status);
        client.SetStringValue(values.get(), "LastDateCheck", now.addSecs(-1260).toString(Qt::ISODate));
        client.SetStringValue(values.get(), "NEXTUPDATETIME", now.addSecs(2340).toString(Qt::ISODate));
        client.SetLongValue(values.get(), "UPDATEFREQ", 3600);
        client.UpdateItem("NEWS", id, values.get());
    }
    return id;
}

bool save(QWidget &window, const QDir &folder, const QString &name)
{
    QCoreApplication::processEvents();
    return Shots::save(window.grab(), folder.filePath(name));
}

} // namespace

int main(int argc, char *argv[])
{
    Shots::preparePlatform();
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: mainwindow_screenshots <folder>\n");
        return 1;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    QStandardPaths::setTestModeEnabled(true);
    QTemporaryDir settings;
    Shots::quietSettings(settings);

    TestEngine engine;
    if (!engine.isReady())
        return 1;
    const SubscribeClientPtr feeds = engine.newClient();
    feeds->Connect("OLCONSUMER", std::make_shared<EngineCalls::IgnoreMessages>());
    qint32 selected = 0;
    for (const Feed &feed : kFeeds) {
        const qint32 id = addFeed(*feeds, feed);
        if (QLatin1String(feed.title) == QLatin1String("Open Source Weekly"))
            selected = id;
    }
    SetConsumerSetting(*feeds, "CONFIGCONSUMER", QString(), "ShowUrlColumn", "1");

    frmMainWindow window;
    const SubscribeClientPtr client = engine.newClient();
    auto callback = std::make_shared<CBConnect>();
    callback->Setup(&window);
    client->Connect("CONFIGCONSUMER", callback);
    window.SetClient(client);
    window.resize(1100, 720);
    window.show();
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
    window.close();
    return saved ? 0 : 1;
}
