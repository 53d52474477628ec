#include "ClientAccess.h"
#include "ConsumerSettings.h"
#include "ControlTexts.h"
#include "EngineClientTest.h"
#include "GeneralUI.h"
#include "HandleGuard.h"
#include "IEPluginUI.h"
#include "MailStoreOutlook.h"
#include "NetworkUI.h"
#include "OLDefaultsUI.h"
#include "OnlineUI.h"
#include "PodcastingUI.h"
#include "RegistrySettings.h"
#include "SubDefaultsUI.h"
#include "TagsUI.h"

#include <QApplication>
#include <QDir>
#include <QInputDialog>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace quillon;
using namespace ControlTexts;

namespace {

using Pairs = QList<std::pair<QString, QString>>;

// The page a row is about, made afresh.
using PageMaker = ConfigPage *(*)();
template <typename Page> ConfigPage *Make()
{
    return new Page;
}

// "CONSUMER|section|key" for the engine's settings; "sync|key" for the synchronisation
// settings, "local|section|key" for the program's own store, "reg|product|key" for the vendor
// branch (section "CONFIGCONSUMER"), "desk|type" for the desktop's handler of a MIME type as
// xdg-mime tells it. Nothing stored reads "-".
QString Read(SubscribeClient &client, const QString &place)
{
    const QStringList at = place.split('|');
    if (at.first() == "desk") {
        QProcess query;
        query.start("xdg-mime", {"query", "default", at.at(1)});
        return query.waitForFinished() ? QString::fromUtf8(query.readAllStandardOutput()).trimmed()
                                       : "xdg-mime: " + query.errorString();
    }
    if (at.first() == "sync") {
        HandleGuard sync(client, client.GetSyncSettings());
        return client.GetStringValue(sync.get(), at.at(1));
    }
    if (at.first() == "local")
        return GetSetting("Quillon", at.at(1), at.at(2), "-");
    if (at.first() == "reg")
        return GetRegistrySetting(at.at(1), "CONFIGCONSUMER", at.at(2), "-");
    return GetConsumerSetting(client, at.at(2), "-", at.at(0), at.at(1));
}

void Store(SubscribeClient &client, const QString &place, const QString &value)
{
    const QStringList at = place.split('|');
    if (at.first() == "sync")
        client.SetSyncSettings(0, QString(), QString(), QString(), value.toInt());
    else
        SetConsumerSetting(client, at.at(0), at.at(1), at.at(2), value);
}

// One row of "name=value" entries: a page over what is stored shows these values; after the
// edits and the window's apply (SafeToApply, then Apply) these alerts were shown, this is
// stored and shown.
void Row(const char *name, PageMaker page, const QStringList &stored, const QStringList &shown,
         const QStringList &edits, const QStringList &alerts, const QStringList &storedAfter,
         const QStringList &shownAfter = {}, bool applies = true)
{
    QTest::newRow(name) << page << stored << shown << edits << alerts << storedAfter << shownAfter << applies;
}

} // namespace

Q_DECLARE_METATYPE(PageMaker)

class tst_OptionPages : public EngineClientTest
{
    Q_OBJECT
private slots:
    void initTestCase();
    void pagesShowAndStoreTheirSettings_data();
    void pagesShowAndStoreTheirSettings();

private:
    QTemporaryDir m_mail;
};

void tst_OptionPages::initTestCase()
{
    EngineClientTest::initTestCase();
    // The file-type switches tell the desktop through the user's XDG folders: these are the test's.
    qputenv("XDG_CONFIG_HOME", m_settings.filePath("config").toUtf8());
    qputenv("XDG_DATA_HOME", m_settings.filePath("data").toUtf8());
    qputenv("XDG_DATA_DIRS", m_settings.filePath("system").toUtf8());
    // The top-folder picker looks at a real mail store and is answered like a user would.
    QVERIFY(QDir(m_mail.path()).mkpath(".Feeds.News/cur"));
    SetOutlookProvider([this] { return std::make_shared<MailStoreOutlook>(m_mail.path()); });
}

void tst_OptionPages::pagesShowAndStoreTheirSettings_data()
{
    QTest::addColumn<PageMaker>("page");
    QTest::addColumn<QStringList>("stored");
    QTest::addColumn<QStringList>("shown");
    QTest::addColumn<QStringList>("edits");
    QTest::addColumn<QStringList>("alerts");
    QTest::addColumn<QStringList>("storedAfter");
    QTest::addColumn<QStringList>("shownAfter");
    QTest::addColumn<bool>("applies");

    const QString note = "Note: most RSS services prefer an update frequency of 1 hour or more.";
    Row("defaults: nothing stored", Make<SubDefaultsUI>, {},
        {"txtUpdateFreq=1 1", "txtDelRead=3 2", "txtDelUnread=15 2"}, {}, {},
        {"ENGINE||UPDATEFREQ=3600", "ENGINE||DELETEREAD=259200", "ENGINE||DELETEUNREAD=1296000"});
    Row("defaults: never delete read", Make<SubDefaultsUI>, {"ENGINE||DELETEREAD=0"},
        {"chkDelRead=off", "txtDelRead.enabled=off", "cboDelRead.enabled=off"}, {"txtDelUnread=16"}, {},
        {"ENGINE||DELETEREAD=0"});
    Row("defaults: 4 minutes become 5", Make<SubDefaultsUI>, {}, {}, {"txtUpdateFreq=4", "cboUpdateFreq=0"},
        {note}, {"ENGINE||UPDATEFREQ=300"});

    const QString net = "ENGINE|NetworkModule|";
    Row("network: nothing stored", Make<NetworkUI>, {},
        {"chkUseProxyServer=on", "optUseIEProxySettings=on", "chkBypassForLocals=on",
         "chkUseNetworkCredentials=off", "optCurrentlyUsersCredentials=on",
         "txtSpecificProxyServer.enabled=off"},
        {"optUseSpecificProxyServer=on", "txtSpecificProxyServer=proxy:3128"}, {},
        {"local|NetworkModule|optUseIEProxySettings=False", net + "optUseIEProxySettings=False",
         "local|NetworkModule|txtSpecificProxyServer=proxy:3128", net + "txtSpecificProxyServer=proxy:3128",
         "local|NetworkModule|chkUseProxyServer=True", "reg|Quill On|PrefsVersion=0.8.0"});
    Row("network: the password stays with the engine", Make<NetworkUI>, {}, {},
        {"chkUseNetworkCredentials=on", "optUseSpecificCredentials=on", "txtPasswordCredentials=pw"}, {},
        {net + "txtPasswordCredentials=pw", "local|NetworkModule|txtPasswordCredentials=-",
         "local|NetworkModule|chkUseNetworkCredentials=True"});
    const QString lastApplied = " This is with the settings last applied; apply to test your changes.";
    Row("network: the test names the proxy and the login", Make<NetworkUI>,
        {net + "optUseIEProxySettings=False", net + "txtSpecificProxyServer=proxy.example:3128",
         net + "chkUseNetworkCredentials=True", net + "optCurrentlyUsersCredentials=False",
         net + "txtUsernameCredentials=alice"},
        {},
        {"chkBypassForLocals=off", "txtTestProxyUrl=http://feeds.example.org/news.xml", "cmdTestProxy=click"},
        {}, {},
        {"lblTestProxyAnswer=Through proxy http://proxy.example:3128 (the proxy server named in the "
         "settings), "
         "signing in as alice." +
         lastApplied});
    Row("network: the test goes directly to this machine", Make<NetworkUI>, {}, {},
        {"txtTestProxyUrl=http://127.0.0.1:8080/feed", "cmdTestProxy=click", "chkUseProxyServer=off"}, {}, {},
        {"lblTestProxyAnswer=Direct connection (a local address, which bypasses the proxy)."});

    Row("general: deleting without a question", Make<GeneralUI>, {},
        {"chkLogToDisk=on", "chkSupressWarnings=off"}, {"chkSupressWarnings=on"}, {},
        {"reg|Quill On|SupressDeleteWarnings=1", "ENGINE||LogToDisk=1", "ENGINE||EngineLoad=4"});

    const QString nameNeeded = "Online user name needs to be at least one character.";
    for (const auto &[seconds, shown] :
         Pairs{{"7200", "2 1"}, {"86400", "1 2"}, {"5400", "90 0"}, {"-1", "1 1"}})
        Row(qPrintable("online: every " + seconds + " seconds"), Make<OnlineUI>,
            {"sync|SyncFrequency=" + seconds}, {"txtUpdateFreq=" + shown}, {}, {nameNeeded}, {});
    Row("online: 14 minutes", Make<OnlineUI>, {}, {"chkOnlineEnabled=off", "txtOnlineURL.enabled=off"},
        {"txtOnlineUsername=me", "txtOnlinePassword=four", "txtUpdateFreq=14", "cboUpdateFreq=0"},
        {"Corvell online update frequency can not be less than 15 minutes."},
        {"sync|SyncFrequency=840", "sync|SyncUser=me", "sync|SyncPassword=four"});
    Row("online: only the user name is explained", Make<OnlineUI>, {}, {},
        {"txtOnlinePassword=abc", "txtUpdateFreq=1"}, {nameNeeded},
        {"sync|SyncPassword=abc", "sync|SyncFrequency=3600"});

    const QString opener = "quillon-open.desktop";
    Row("browser: file types, preview and inline commands", Make<IEPluginUI>,
        {"ENGINE|FileTypeHandling|OPML=0"}, {"chkRSS=on", "chkOPML=off", "chkInlineTopLevel=off"},
        {"chkRSS=off", "chkOPML=on", "chkInlineTopLevel=on"}, {},
        {"ENGINE|FileTypeHandling|RSS=0", "ENGINE|FileTypeHandling|OPML=1", "ENGINE||Inline Subscriptions=1",
         "desk|application/rss+xml=", "desk|application/atom+xml=" + opener, "desk|text/x-opml=" + opener,
         "desk|x-scheme-handler/feed=" + opener});
    Row("browser: RSS switched on, the others off", Make<IEPluginUI>, {"ENGINE|FileTypeHandling|RSS=0"}, {},
        {"chkRSS=on", "chkATOM=off", "chkFEED=off", "chkOPML=off"}, {},
        {"desk|application/rss+xml=" + opener,
         "desk|application/atom+xml=", "desk|text/x-opml=", "desk|x-scheme-handler/feed="});

    const QString media = "MEDIACONSUMER|Settings|";
    Row("enclosures: nothing stored asks, itunes, playlists named automatically", Make<PodcastingUI>, {},
        {"cboPodcast=0", "optStoreInAutoFolder=on", "OptPromptDownload=on", "spnKeepNewestFiles=0"},
        {"cboPodcast=1", "optStoreInNamedFolder=on", "spnKeepNewestFiles=3"}, {},
        {media + "KeepNewestFiles=3", media + "PodcastFilesToThisApp=windowsmedia",
         media + "PlaylistNamingMode=2", media + "PromptForAutoDownload=1", media + "EnableAutoDownload=0"});
    Row("enclosures: windowsmedia is index 1; always downloading keeps auto-delete", Make<PodcastingUI>,
        {media + "PodcastFilesToThisApp=windowsmedia", media + "PromptForAutoDownload=1",
         media + "EnableAutoDelete=1"},
        {"cboPodcast=1", "OptAlwaysDownload=off"}, {"cboPodcast=0", "OptAlwaysDownload=on"}, {},
        {media + "PodcastFilesToThisApp=itunes", media + "PromptForAutoDownload=0",
         media + "EnableAutoDownload=1", media + "EnableAutoDelete=1"});
    Row("enclosures: answered for all with yes", Make<PodcastingUI>,
        {media + "PromptForAutoDownload=0", media + "EnableAutoDownload=1"}, {"OptAlwaysDownload=on"}, {}, {},
        {media + "EnableAutoDownload=1"});
    Row("enclosures: never", Make<PodcastingUI>, {media + "PromptForAutoDownload=0"}, {"optNeverDownload=on"},
        {}, {}, {media + "PromptForAutoDownload=0", media + "EnableAutoDownload=0"});

    const QString tags = "IEPLUGINCONSUMER|TagServices_Delicious|";
    Row("tags: the service's account, handed over as Delicious", Make<TagsUI>, {tags + "UserName=alice"},
        {"txtTagServiceUsername=alice", "lblTagDisplayName=Delicious", "chkTaggingEnabled=off",
         "txtTagServiceUsername.enabled=off", "txtTagServicePassword.enabled=off", "chkTagCounts=on"},
        {"chkTaggingEnabled=on", "txtTagServiceUsername=bob", "chkTagCounts=off"}, {},
        {tags + "UserName=bob", tags + "Tagging=1", tags + "TagServiceDisplayName=Delicious",
         "IEPLUGINCONSUMER|TagServices|1=Delicious", "IEPLUGINCONSUMER||ShowTagCounts=0"},
        {"txtTagServicePassword.enabled=on"});

    const QString ol = "OLCONSUMER|OutlookDefaults|";
    Row("outlook: nothing stored", Make<OLDefaultsUI>, {},
        {"lblTopFolder=The top of the mail store", "chkSubFolderName=off", "txtSubFolderName.enabled=off",
         "cboOutlookMove=0", "cboOutlookDelete=0", "cboConfigMove=0", "cboConfigDelete=2",
         "sliderOutlookYeild=5", "optDefaultContent=on"},
        {}, {},
        {ol + "Article_Theme=Default", ol + "SubDeletedInConfig=2", ol + "TopFolderTitle=-",
         "local|CONFIGCONSUMER|PrefsVersion=0.9.6", "reg|Quillon|PrefsVersion=-"});
    Row("outlook: a sub-folder needs a name", Make<OLDefaultsUI>, {}, {},
        {"chkSubFolderName=on", "txtSubFolderName="}, {"Please enter a folder name before proceeding."},
        {ol + "RadioSubPlacement=-"}, {}, false);
    Row("outlook: no sub-folder, no name needed", Make<OLDefaultsUI>,
        {ol + "RadioSubPlacement=1", ol + "SubFolderTitle=Reading"},
        {"chkSubFolderName=on", "txtSubFolderName=Reading"}, {"chkSubFolderName=off", "txtSubFolderName="},
        {}, {ol + "RadioSubPlacement=0"});
    Row("outlook: first run's sub-folder; top folder, theme and new store picked", Make<OLDefaultsUI>,
        {ol + "RadioSubPlacement=2", ol + "SubFolderTitle=Corvell for Outlook"},
        {"chkSubFolderName=on", "txtSubFolderName.enabled=on"},
        {"cmdTopFolder=click", "txtSubFolderName=Reading", "optPlainContent=on", "cmdNewPSTFile=click"}, {},
        {ol + "TopFolderTitle=\\Feeds\\News", ol + "TopFolderTitle_folderID=\\Feeds\\News",
         ol + "RadioSubPlacement=1", ol + "SubFolderTitle=Reading", ol + "Article_Theme=Plain",
         ol + "MakeNewPST_DisplayName=Reading", ol + "MakeNewPST_path=/srv/mail",
         ol + "MakeNewPST_fileName=Reading.pst", ol + "MakeNewPST_mode=0"});
    for (const auto &[key, combo] : Pairs{{"SubMovedInOutlook", "cboOutlookMove"},
                                          {"SubDeletedInOutlook", "cboOutlookDelete"},
                                          {"SubMovedInConfig", "cboConfigMove"},
                                          {"SubDeletedInConfig", "cboConfigDelete"}})
        Row(qPrintable("outlook: " + key + " round-trips"), Make<OLDefaultsUI>,
            {ol + key + "=1", ol + "OutlookYeildSlider=8", ol + "Article_Theme=Full"},
            {combo + "=1", "sliderOutlookYeild=8", "optFullContent=on"},
            {combo + "=0", "sliderOutlookYeild=2"}, {},
            {ol + key + "=0", ol + "OutlookYeildSlider=2", ol + "Article_Theme=Full"});
}

void tst_OptionPages::pagesShowAndStoreTheirSettings()
{
    QFETCH(PageMaker, page);
    QFETCH(QStringList, stored);
    QFETCH(QStringList, shown);
    QFETCH(QStringList, edits);
    QFETCH(QStringList, alerts);
    QFETCH(QStringList, storedAfter);
    QFETCH(QStringList, shownAfter);
    QFETCH(bool, applies);
    ClientAccess::SetEngineClient(m_client);
    for (const QString &entry : stored)
        Store(*m_client, entry.section('=', 0, 0), entry.section('=', 1));

    std::unique_ptr<ConfigPage> options(page());
    QCOMPARE(Shown(*options, Names(shown)), Values(shown));
    QVERIFY(!options->Dirty());
    // The folder picker and the new-store dialog are answered as soon as they are open.
    auto *picker = new QTimer(options.get());
    connect(picker, &QTimer::timeout, picker, [] {
        QWidget *modal = QApplication::activeModalWidget();
        if (auto *dialog = qobject_cast<QInputDialog *>(modal)) {
            dialog->setTextValue("\\Feeds\\News");
            dialog->accept();
        } else if (modal && modal->objectName() == "frmCreatePST") {
            modal->findChild<QLineEdit *>("txtCustomPSTName")->setText("Reading");
            modal->findChild<QLineEdit *>("txtPSTLocation")->setText("/srv/mail/Reading.pst");
            modal->findChild<QPushButton *>("cmdOK")->click();
        }
    });
    picker->start(10);
    Edit(*options, edits);
    QCOMPARE(options->Dirty(), !edits.isEmpty());
    QCOMPARE(options->SafeToApply(), applies);
    if (applies)
        options->Apply();
    QCOMPARE(options->Dirty(), !applies);
    QCOMPARE(m_prompts->texts(), alerts);
    QStringList read;
    for (const QString &place : Names(storedAfter))
        read << Read(*m_client, place);
    QCOMPARE(read, Values(storedAfter));
    QCOMPARE(Shown(*options, Names(shownAfter)), Values(shownAfter));
    options.reset();
    ClientAccess::SetEngineClient(nullptr);
}

QTEST_MAIN(tst_OptionPages)
#include "tst_OptionPages.moc"
