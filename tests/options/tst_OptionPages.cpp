#include "ClientAccess.h"
#include "ConsumerSettings.h"
#include "GeneralUI.h"
#include "HandleGuard.h"
#include "IEPluginUI.h"
#include "LocalSettings.h"
#include "MailStoreOutlook.h"
#include "NetworkUI.h"
#include "OLDefaultsUI.h"
#include "OnlineUI.h"
#include "OptionsTestEngine.h"
#include "PodcastingUI.h"
#include "RegistrySettings.h"
#include "SubDefaultsUI.h"
#include "TagsUI.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace quillon;

namespace {

using Pairs = QList<std::pair<QString, QString>>;

std::unique_ptr<ConfigPage> MakePage(const QString &name)
{
    if (name == "SubDefaultsUI")
        return std::make_unique<SubDefaultsUI>();
    if (name == "OnlineUI")
        return std::make_unique<OnlineUI>();
    if (name == "GeneralUI")
        return std::make_unique<GeneralUI>();
    if (name == "OLDefaultsUI")
        return std::make_unique<OLDefaultsUI>();
    if (name == "IEPluginUI")
        return std::make_unique<IEPluginUI>();
    if (name == "PodcastingUI")
        return std::make_unique<PodcastingUI>();
    if (name == "TagsUI")
        return std::make_unique<TagsUI>();
    return std::make_unique<NetworkUI>();
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

// A button "on"/"off", a list or slider its number, a number box with its unit's index, a
// text; ".enabled" asks for the state.
QString Shown(const QWidget &page, const QString &name)
{
    if (name.endsWith(".enabled"))
        return page.findChild<QWidget *>(name.chopped(8))->isEnabled() ? "on" : "off";
    QWidget *control = page.findChild<QWidget *>(name);
    if (auto *button = qobject_cast<QAbstractButton *>(control))
        return button->isChecked() ? "on" : "off";
    if (auto *list = qobject_cast<QComboBox *>(control))
        return QString::number(list->currentIndex());
    if (auto *slider = qobject_cast<QAbstractSlider *>(control))
        return QString::number(slider->value());
    if (auto *spin = qobject_cast<QSpinBox *>(control))
        return QString::number(spin->value());
    if (auto *label = qobject_cast<QLabel *>(control))
        return label->text();
    const QString text = qobject_cast<QLineEdit *>(control)->text();
    auto *unit = page.findChild<QComboBox *>(QString(name).replace(0, 3, "cbo"));
    return unit ? text + " " + QString::number(unit->currentIndex()) : text;
}

// "click" presses a command button.
void Edit(QWidget &page, const QString &name, const QString &value)
{
    QWidget *control = page.findChild<QWidget *>(name);
    if (auto *button = qobject_cast<QAbstractButton *>(control))
        value == "click" ? button->click() : button->setChecked(value == "on");
    else if (auto *list = qobject_cast<QComboBox *>(control))
        list->setCurrentIndex(value.toInt());
    else if (auto *slider = qobject_cast<QAbstractSlider *>(control))
        slider->setValue(value.toInt());
    else if (auto *spin = qobject_cast<QSpinBox *>(control))
        spin->setValue(value.toInt());
    else
        qobject_cast<QLineEdit *>(control)->setText(value);
}

// One row: a page over what is stored shows these values; after the edits and the window's
// apply (SafeToApply, then Apply) these alerts were shown, this is stored and shown.
void Row(const char *name, const QString &page, const Pairs &stored, const Pairs &shown, const Pairs &edits,
         const QStringList &alerts, const Pairs &storedAfter, const Pairs &shownAfter = {},
         bool applies = true)
{
    QTest::newRow(name) << page << stored << shown << edits << alerts << storedAfter << shownAfter << applies;
}

} // namespace

class tst_OptionPages : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void pagesShowAndStoreTheirSettings_data();
    void pagesShowAndStoreTheirSettings();

private:
    QTemporaryDir m_settings;
    QTemporaryDir m_mail;
};

void tst_OptionPages::initTestCase()
{
    LocalSettings::SetBaseFolder(m_settings.path());
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
    QTest::addColumn<QString>("page");
    QTest::addColumn<Pairs>("stored");
    QTest::addColumn<Pairs>("shown");
    QTest::addColumn<Pairs>("edits");
    QTest::addColumn<QStringList>("alerts");
    QTest::addColumn<Pairs>("storedAfter");
    QTest::addColumn<Pairs>("shownAfter");
    QTest::addColumn<bool>("applies");

    const QString note = "Note: most RSS services prefer an update frequency of 1 hour or more.";
    Row("defaults: nothing stored", "SubDefaultsUI", {},
        {{"txtUpdateFreq", "1 1"}, {"txtDelRead", "3 2"}, {"txtDelUnread", "15 2"}}, {}, {},
        {{"ENGINE||UPDATEFREQ", "3600"},
         {"ENGINE||DELETEREAD", "259200"},
         {"ENGINE||DELETEUNREAD", "1296000"}});
    Row("defaults: never delete read", "SubDefaultsUI", {{"ENGINE||DELETEREAD", "0"}},
        {{"chkDelRead", "off"}, {"txtDelRead.enabled", "off"}, {"cboDelRead.enabled", "off"}},
        {{"txtDelUnread", "16"}}, {}, {{"ENGINE||DELETEREAD", "0"}});
    Row("defaults: 4 minutes become 5", "SubDefaultsUI", {}, {},
        {{"txtUpdateFreq", "4"}, {"cboUpdateFreq", "0"}}, {note}, {{"ENGINE||UPDATEFREQ", "300"}});

    const QString net = "ENGINE|NetworkModule|";
    Row("network: nothing stored", "NetworkUI", {},
        {{"chkUseProxyServer", "on"},
         {"optUseIEProxySettings", "on"},
         {"chkBypassForLocals", "on"},
         {"chkUseNetworkCredentials", "off"},
         {"optCurrentlyUsersCredentials", "on"},
         {"txtSpecificProxyServer.enabled", "off"}},
        {{"optUseSpecificProxyServer", "on"}, {"txtSpecificProxyServer", "proxy:3128"}}, {},
        {{"local|NetworkModule|optUseIEProxySettings", "False"},
         {net + "optUseIEProxySettings", "False"},
         {"local|NetworkModule|txtSpecificProxyServer", "proxy:3128"},
         {net + "txtSpecificProxyServer", "proxy:3128"},
         {"local|NetworkModule|chkUseProxyServer", "True"},
         {"reg|Quill On|PrefsVersion", "0.8.0"}});
    Row("network: the password stays with the engine", "NetworkUI", {}, {},
        {{"chkUseNetworkCredentials", "on"},
         {"optUseSpecificCredentials", "on"},
         {"txtPasswordCredentials", "pw"}},
        {},
        {{net + "txtPasswordCredentials", "pw"},
         {"local|NetworkModule|txtPasswordCredentials", "-"},
         {"local|NetworkModule|chkUseNetworkCredentials", "True"}});
    const QString lastApplied = " This is with the settings last applied; apply to test your changes.";
    Row("network: the test names the proxy and the login", "NetworkUI",
        {{net + "optUseIEProxySettings", "False"},
         {net + "txtSpecificProxyServer", "proxy.example:3128"},
         {net + "chkUseNetworkCredentials", "True"},
         {net + "optCurrentlyUsersCredentials", "False"},
         {net + "txtUsernameCredentials", "alice"}},
        {},
        {{"chkBypassForLocals", "off"},
         {"txtTestProxyUrl", "http://feeds.example.org/news.xml"},
         {"cmdTestProxy", "click"}},
        {}, {},
        {{"lblTestProxyAnswer",
          "Through proxy http://proxy.example:3128 (the proxy server named in the settings), "
          "signing in as alice." +
              lastApplied}});
    Row("network: the test goes directly to this machine", "NetworkUI", {}, {},
        {{"txtTestProxyUrl", "http://127.0.0.1:8080/feed"},
         {"cmdTestProxy", "click"},
         {"chkUseProxyServer", "off"}},
        {}, {}, {{"lblTestProxyAnswer", "Direct connection (a local address, which bypasses the proxy)."}});

    Row("general: deleting without a question", "GeneralUI", {},
        {{"chkLogToDisk", "on"}, {"chkSupressWarnings", "off"}}, {{"chkSupressWarnings", "on"}}, {},
        {{"reg|Quill On|SupressDeleteWarnings", "1"},
         {"ENGINE||LogToDisk", "1"},
         {"ENGINE||EngineLoad", "4"}});

    const QString nameNeeded = "Online user name needs to be at least one character.";
    for (const auto &[seconds, shown] :
         Pairs{{"7200", "2 1"}, {"86400", "1 2"}, {"5400", "90 0"}, {"-1", "1 1"}})
        QTest::addRow("online: every %s seconds", qPrintable(seconds))
            << "OnlineUI" << Pairs{{"sync|SyncFrequency", seconds}} << Pairs{{"txtUpdateFreq", shown}}
            << Pairs{} << QStringList{nameNeeded} << Pairs{} << Pairs{} << true;
    Row("online: 14 minutes", "OnlineUI", {}, {{"chkOnlineEnabled", "off"}, {"txtOnlineURL.enabled", "off"}},
        {{"txtOnlineUsername", "me"},
         {"txtOnlinePassword", "four"},
         {"txtUpdateFreq", "14"},
         {"cboUpdateFreq", "0"}},
        {"Corvell online update frequency can not be less than 15 minutes."},
        {{"sync|SyncFrequency", "840"}, {"sync|SyncUser", "me"}, {"sync|SyncPassword", "four"}});
    Row("online: only the user name is explained", "OnlineUI", {}, {},
        {{"txtOnlinePassword", "abc"}, {"txtUpdateFreq", "1"}}, {nameNeeded},
        {{"sync|SyncPassword", "abc"}, {"sync|SyncFrequency", "3600"}});

    const QString opener = "quillon-open.desktop";
    Row("browser: file types, preview and inline commands", "IEPluginUI",
        {{"ENGINE|FileTypeHandling|OPML", "0"}},
        {{"chkRSS", "on"}, {"chkOPML", "off"}, {"chkInlineTopLevel", "off"}},
        {{"chkRSS", "off"}, {"chkOPML", "on"}, {"chkInlineTopLevel", "on"}}, {},
        {{"ENGINE|FileTypeHandling|RSS", "0"},
         {"ENGINE|FileTypeHandling|OPML", "1"},
         {"ENGINE||Inline Subscriptions", "1"},
         {"desk|application/rss+xml", ""},
         {"desk|application/atom+xml", opener},
         {"desk|text/x-opml", opener},
         {"desk|x-scheme-handler/feed", opener}});
    Row("browser: RSS switched on, the others off", "IEPluginUI", {{"ENGINE|FileTypeHandling|RSS", "0"}}, {},
        {{"chkRSS", "on"}, {"chkATOM", "off"}, {"chkFEED", "off"}, {"chkOPML", "off"}}, {},
        {{"desk|application/rss+xml", opener},
         {"desk|application/atom+xml", ""},
         {"desk|text/x-opml", ""},
         {"desk|x-scheme-handler/feed", ""}});

    const QString media = "MEDIACONSUMER|Settings|";
    Row("enclosures: nothing stored asks, itunes, playlists named automatically", "PodcastingUI", {},
        {{"cboPodcast", "0"},
         {"optStoreInAutoFolder", "on"},
         {"OptPromptDownload", "on"},
         {"spnKeepNewestFiles", "0"}},
        {{"cboPodcast", "1"}, {"optStoreInNamedFolder", "on"}, {"spnKeepNewestFiles", "3"}}, {},
        {{media + "KeepNewestFiles", "3"},
         {media + "PodcastFilesToThisApp", "windowsmedia"},
         {media + "PlaylistNamingMode", "2"},
         {media + "PromptForAutoDownload", "1"},
         {media + "EnableAutoDownload", "0"}});
    Row("enclosures: windowsmedia is index 1; always downloading keeps auto-delete", "PodcastingUI",
        {{media + "PodcastFilesToThisApp", "windowsmedia"},
         {media + "PromptForAutoDownload", "1"},
         {media + "EnableAutoDelete", "1"}},
        {{"cboPodcast", "1"}, {"OptAlwaysDownload", "off"}},
        {{"cboPodcast", "0"}, {"OptAlwaysDownload", "on"}}, {},
        {{media + "PodcastFilesToThisApp", "itunes"},
         {media + "PromptForAutoDownload", "0"},
         {media + "EnableAutoDownload", "1"},
         {media + "EnableAutoDelete", "1"}});
    Row("enclosures: answered for all with yes", "PodcastingUI",
        {{media + "PromptForAutoDownload", "0"}, {media + "EnableAutoDownload", "1"}},
        {{"OptAlwaysDownload", "on"}}, {}, {}, {{media + "EnableAutoDownload", "1"}});
    Row("enclosures: never", "PodcastingUI", {{media + "PromptForAutoDownload", "0"}},
        {{"optNeverDownload", "on"}}, {}, {},
        {{media + "PromptForAutoDownload", "0"}, {media + "EnableAutoDownload", "0"}});

    const QString tags = "IEPLUGINCONSUMER|TagServices_Delicious|";
    Row("tags: the service's account, handed over as Delicious", "TagsUI", {{tags + "UserName", "alice"}},
        {{"txtTagServiceUsername", "alice"},
         {"lblTagDisplayName", "Delicious"},
         {"chkTaggingEnabled", "off"},
         {"txtTagServiceUsername.enabled", "off"},
         {"txtTagServicePassword.enabled", "off"},
         {"chkTagCounts", "on"}},
        {{"chkTaggingEnabled", "on"}, {"txtTagServiceUsername", "bob"}, {"chkTagCounts", "off"}}, {},
        {{tags + "UserName", "bob"},
         {tags + "Tagging", "1"},
         {tags + "TagServiceDisplayName", "Delicious"},
         {"IEPLUGINCONSUMER|TagServices|1", "Delicious"},
         {"IEPLUGINCONSUMER||ShowTagCounts", "0"}},
        {{"txtTagServicePassword.enabled", "on"}});

    const QString ol = "OLCONSUMER|OutlookDefaults|";
    Row("outlook: nothing stored", "OLDefaultsUI", {},
        {{"lblTopFolder", "The top of the mail store"},
         {"chkSubFolderName", "off"},
         {"txtSubFolderName.enabled", "off"},
         {"cboOutlookMove", "0"},
         {"cboOutlookDelete", "0"},
         {"cboConfigMove", "0"},
         {"cboConfigDelete", "2"},
         {"sliderOutlookYeild", "5"},
         {"optDefaultContent", "on"}},
        {}, {},
        {{ol + "Article_Theme", "Default"},
         {ol + "SubDeletedInConfig", "2"},
         {ol + "TopFolderTitle", "-"},
         {"local|CONFIGCONSUMER|PrefsVersion", "0.9.6"},
         {"reg|Quillon|PrefsVersion", "-"}});
    Row("outlook: a sub-folder needs a name", "OLDefaultsUI", {}, {},
        {{"chkSubFolderName", "on"}, {"txtSubFolderName", ""}},
        {"Please enter a folder name before proceeding."}, {{ol + "RadioSubPlacement", "-"}}, {}, false);
    Row("outlook: no sub-folder, no name needed", "OLDefaultsUI",
        {{ol + "RadioSubPlacement", "1"}, {ol + "SubFolderTitle", "Reading"}},
        {{"chkSubFolderName", "on"}, {"txtSubFolderName", "Reading"}},
        {{"chkSubFolderName", "off"}, {"txtSubFolderName", ""}}, {}, {{ol + "RadioSubPlacement", "0"}});
    Row("outlook: first run's sub-folder; top folder, theme and new store picked", "OLDefaultsUI",
        {{ol + "RadioSubPlacement", "2"}, {ol + "SubFolderTitle", "Corvell for Outlook"}},
        {{"chkSubFolderName", "on"}, {"txtSubFolderName.enabled", "on"}},
        {{"cmdTopFolder", "click"},
         {"txtSubFolderName", "Reading"},
         {"optPlainContent", "on"},
         {"cmdNewPSTFile", "click"}},
        {},
        {{ol + "TopFolderTitle", "\\Feeds\\News"},
         {ol + "TopFolderTitle_folderID", "\\Feeds\\News"},
         {ol + "RadioSubPlacement", "1"},
         {ol + "SubFolderTitle", "Reading"},
         {ol + "Article_Theme", "Plain"},
         {ol + "MakeNewPST_DisplayName", "Reading"},
         {ol + "MakeNewPST_path", "/srv/mail"},
         {ol + "MakeNewPST_fileName", "Reading.pst"},
         {ol + "MakeNewPST_mode", "0"}});
    for (const auto &[key, combo] : Pairs{{"SubMovedInOutlook", "cboOutlookMove"},
                                          {"SubDeletedInOutlook", "cboOutlookDelete"},
                                          {"SubMovedInConfig", "cboConfigMove"},
                                          {"SubDeletedInConfig", "cboConfigDelete"}})
        QTest::addRow("outlook: %s round-trips", qPrintable(key))
            << "OLDefaultsUI"
            << Pairs{{ol + key, "1"}, {ol + "OutlookYeildSlider", "8"}, {ol + "Article_Theme", "Full"}}
            << Pairs{{combo, "1"}, {"sliderOutlookYeild", "8"}, {"optFullContent", "on"}}
            << Pairs{{combo, "0"}, {"sliderOutlookYeild", "2"}} << QStringList{}
            << Pairs{{ol + key, "0"}, {ol + "OutlookYeildSlider", "2"}, {ol + "Article_Theme", "Full"}}
            << Pairs{} << true;
}

void tst_OptionPages::pagesShowAndStoreTheirSettings()
{
    QFETCH(QString, page);
    QFETCH(Pairs, stored);
    QFETCH(Pairs, shown);
    QFETCH(Pairs, edits);
    QFETCH(QStringList, alerts);
    QFETCH(Pairs, storedAfter);
    QFETCH(Pairs, shownAfter);
    QFETCH(bool, applies);
    OptionsTestEngine test;
    QVERIFY(test.ready());
    ClientAccess::SetEngineClient(test.client);
    for (const auto &[place, value] : stored)
        Store(*test.client, place, value);

    std::unique_ptr<ConfigPage> options = MakePage(page);
    for (const auto &[name, value] : shown)
        QVERIFY2(Shown(*options, name) == value, qPrintable(name + " shows " + Shown(*options, name)));
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
    for (const auto &[name, value] : edits)
        Edit(*options, name, value);
    QCOMPARE(options->Dirty(), !edits.isEmpty());
    QCOMPARE(options->SafeToApply(), applies);
    if (applies)
        options->Apply();
    QCOMPARE(options->Dirty(), !applies);
    QCOMPARE(test.prompts.texts(), alerts);
    for (const auto &[place, value] : storedAfter)
        QCOMPARE(Read(*test.client, place), value);
    for (const auto &[name, value] : shownAfter)
        QCOMPARE(Shown(*options, name), value);
    options.reset();
    ClientAccess::SetEngineClient(nullptr);
}

QTEST_MAIN(tst_OptionPages)
#include "tst_OptionPages.moc"
