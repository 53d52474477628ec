// Pictures of the options window for the README, one per module, from a made-up engine state
// in a temporary engine, shown offscreen and saved as PNG files.
//
//   options_screenshots <folder> [ModuleRegistryName...]   (all modules when none is named)
//
// Writes options-window.png, options-network.png (the page no row shows),
// options-<module>.png ("GeneralProp" gives options-general.png) and, after a run refused for
// a wrong password, options-online-failed.png.

#include "ClientAccess.h"
#include "ConsumerSettings.h"
#include "EngineCalls.h"
#include "OptionPageFactory.h"
#include "PublishingUtils.h"
#include "Shots.h"
#include "StandardOptionPages.h"
#include "TestEngine.h"
#include "TinyRssServer.h"
#include "frmOptionsWindow.h"
#include "localization.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>

#include <cstdio>

using namespace quillon;

namespace {

void addSampleState(SubscribeClient &client)
{
    const QList<std::pair<const char *, const char *>> feeds = {{"World Headlines", "News~~~World"},
                                                                {"Local Weather", "News"},
                                                                {"Gadget Review", "News~~~Technology"},
                                                                {"Design Matters", "Blogs"},
                                                                {"Garden Diary", "Blogs"},
                                                                {"Space Station Log", "Science"},
                                                                {"Morning Briefing", "Podcasts"},
                                                                {"Release Announcements", ""}};
    for (const auto &[title, category] : feeds)
        EngineCalls::AddSubscription(client, title,
                                     QStringLiteral("https://feeds.example.org/%1.xml")
                                         .arg(QString(title).toLower().replace(' ', '-')),
                                     category);
    const QList<std::pair<const char *, int>> weblogs = {
        {"Notes from the Garden", 1}, {"Team News", 2}, {"Weekend Journal", 3}};
    for (int i = 0; i < weblogs.size(); ++i) {
        PublishingUtils::SetRecordValue(client, i + 1, "blog_name", weblogs.at(i).first);
        PublishingUtils::SetRecordValue(client, i + 1, "publisher", QString::number(weblogs.at(i).second));
        PublishingUtils::SetRecordValue(client, i + 1, "enabled", i == 1 ? "0" : "1");
    }
    SetConsumerSetting(client, "CONFIGCONSUMER", QString(), "LastExportTitle", "My subscriptions");
    SetConsumerSetting(client, "OLCONSUMER", "OutlookDefaults", "TopFolderTitle", "\\Feeds");
    SetConsumerSetting(client, "OLCONSUMER", "OutlookDefaults", "RadioSubPlacement", "1");
}

// The account the online page synchronises with: QUILLON_SYNC_SERVER (user QUILLON_SYNC_USER,
// password QUILLON_SYNC_PASSWORD) when given, else a Tiny Tiny RSS started here when it can
// run, else an address where nobody answers.
struct SyncAccount
{
    QString server, user, password;
};

SyncAccount syncAccount(TinyRssServer &local)
{
    if (!qEnvironmentVariableIsEmpty("QUILLON_SYNC_SERVER"))
        return {qEnvironmentVariable("QUILLON_SYNC_SERVER"), qEnvironmentVariable("QUILLON_SYNC_USER", "ann"),
                qEnvironmentVariable("QUILLON_SYNC_PASSWORD", "secret")};
    if (TinyRssServer::missing().isEmpty() && local.start())
        return {local.address(), TinyRssServer::kUser, TinyRssServer::kPassword};
    return {QStringLiteral("http://127.0.0.1:1/"), QStringLiteral("ann"), QStringLiteral("secret")};
}

// The online page shows the outcome of the run made here.
void synchroniseOnce(SubscribeClient &client, const SyncAccount &account)
{
    const auto ended = [&client] {
        return GetConsumerSetting(client, "SyncTime", QString(), "ENGINE", "OnlineSync");
    };
    const QString before = ended();
    client.SetSyncSettings(1, account.server, account.user, account.password, 3600);
    client.SyncNow();
    const QDeadlineTimer deadline(60000);
    while (ended() == before && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
}

// The network page is in no row of the list: the online page's button shows it in its place.
void showNetworkPage(frmOptionsWindow &window)
{
    ConfigPage *network = window.Page("NetworkUI1");
    if (!network)
        return;
    window.Page("OnlineUI1")->findChild<QPushButton *>("cmdNetworkSettings")->click();
    auto *address = network->findChild<QLineEdit *>("txtTestProxyUrl");
    address->setText("https://feeds.example.org/news.xml");
    address->home(false);
    network->findChild<QPushButton *>("cmdTestProxy")->click();
}

bool shoot(const SubscribeClientPtr &client, const OptionPageFactory &pages, const QString &module,
           const QString &path, bool network = false)
{
    SetConsumerSetting(*client, "CONFIGCONSUMER", QString(), "CurrentOptionsModule", module);
    frmOptionsWindow window(pages);
    window.SetClient(client);
    window.show();
    // Drawn, then the export page fills its list.
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    // The export page is shown with some rows checked, as a user about to export would have it.
    if (auto *grid = window.findChild<QTableWidget *>("grdSubscriptions"); grid && grid->isVisible()) {
        for (int row = 0; row < grid->rowCount(); row += 2)
            grid->item(row, 0)->setCheckState(Qt::Checked);
    }
    if (network)
        showNetworkPage(window);
    QCoreApplication::processEvents();
    const bool saved = Shots::save(window.grab(), path);
    window.reject();
    return saved;
}

} // namespace

int main(int argc, char *argv[])
{
    Shots::preparePlatform();
    TinyRssServer::enterPrivateNetwork(argv); // the sync server runs only where it could fetch feeds
    if (qEnvironmentVariableIsEmpty("QUILLON_SOURCE_DIR"))
        qputenv("QUILLON_SOURCE_DIR", QUILLON_SOURCE_DIR); // the sync server's script
    QApplication app(argc, argv);
    const QDir folder(Shots::outputFolder(argc, argv));
    QTemporaryDir settings;
    Shots::quietSettings(settings);
    LoadStrings(QuillonDataFolder());
    TestEngine engine;
    if (!engine.isReady())
        return 1;
    const SubscribeClientPtr client = engine.newClient();
    client->Connect("CONFIGCONSUMER", std::make_shared<EngineCalls::IgnoreMessages>());
    addSampleState(*client);
    TinyRssServer server;
    SyncAccount account = syncAccount(server);
    synchroniseOnce(*client, account);
    // Pages bound by a field table reach the engine through the process's client.
    ClientAccess::SetEngineClient(client);
    OptionPageFactory pages;
    RegisterStandardOptionPages(pages);

    QStringList modules;
    for (int i = 2; i < argc; ++i)
        modules << QString::fromLocal8Bit(argv[i]);
    if (modules.isEmpty()) {
        const ModuleTable table = ModuleTable::Standard();
        for (int i = 1; i <= table.Count(); ++i)
            modules << table.Module(i)->ModuleRegistryName();
    }
    bool saved = shoot(client, pages, QString(), folder.filePath("options-window.png"));
    saved = shoot(client, pages, "OnlineProp", folder.filePath("options-network.png"), true) && saved;
    for (const QString &module : modules) {
        const QString name = QString(module).remove("Prop").toLower();
        saved = shoot(client, pages, module, folder.filePath("options-" + name + ".png")) && saved;
    }
    if (modules.contains("OnlineProp")) {
        account.password = QStringLiteral("not the password");
        synchroniseOnce(*client, account);
        saved = shoot(client, pages, "OnlineProp", folder.filePath("options-online-failed.png")) && saved;
    }
    return saved ? 0 : 1;
}
