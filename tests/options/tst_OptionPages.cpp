#include "ClientAccess.h"
#include "ConsumerSettings.h"
#include "EngineCalls.h"
#include "GeneralUI.h"
#include "HandleGuard.h"
#include "LocalSettings.h"
#include "NetworkUI.h"
#include "OnlineUI.h"
#include "PromptRecorder.h"
#include "RegistrySettings.h"
#include "SubDefaultsUI.h"
#include "TestEngine.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>

using namespace quillon;
using EngineCalls::IgnoreMessages;

namespace {

std::unique_ptr<ConfigPage> MakePage(const QString &name)
{
    if (name == "SubDefaultsUI")
        return std::make_unique<SubDefaultsUI>();
    if (name == "OnlineUI")
        return std::make_unique<OnlineUI>();
    if (name == "GeneralUI")
        return std::make_unique<GeneralUI>();
    return std::make_unique<NetworkUI>();
}

// "where:key": where is engine (the "ENGINE" settings), net (the engine's "NetworkModule"),
// local (the program's "NetworkModule"), sync (the synchronisation settings) or reg (the
// vendor branch).
QString Read(SubscribeClient &client, const QString &place)
{
    const QString where = place.section(':', 0, 0);
    const QString key = place.section(':', 1);
    if (where == "engine" || where == "net")
        return GetConsumerSetting(client, key, "-", "ENGINE", where == "net" ? "NetworkModule" : "");
    if (where == "local")
        return GetSetting("Quillon", "NetworkModule", key, "-");
    if (where == "reg")
        return GetRegistrySetting("Quill On", "CONFIGCONSUMER", key, "-");
    HandleGuard sync(client, client.GetSyncSettings());
    return client.GetStringValue(sync.get(), key);
}

void Store(SubscribeClient &client, const QString &place, const QString &value)
{
    if (place.startsWith("sync:"))
        client.SetSyncSettings(0, QString(), QString(), QString(), value.toInt());
    else
        SetConsumerSetting(client, "ENGINE", QString(), place.section(':', 1), value);
}

// A button "on"/"off", a number with its unit index, a text; ".enabled" asks for the state.
QString Shown(const QWidget &page, const QString &name)
{
    if (name.endsWith(".enabled"))
        return page.findChild<QWidget *>(name.chopped(8))->isEnabled() ? "on" : "off";
    QWidget *control = page.findChild<QWidget *>(name);
    if (auto *button = qobject_cast<QAbstractButton *>(control))
        return button->isChecked() ? "on" : "off";
    const QString text = qobject_cast<QLineEdit *>(control)->text();
    auto *unit = page.findChild<QComboBox *>(QString(name).replace(0, 3, "cbo"));
    return unit ? text + " " + QString::number(unit->currentIndex()) : text;
}

void Edit(QWidget &page, const QString &name, const QString &value)
{
    QWidget *control = page.findChild<QWidget *>(name);
    if (auto *button = qobject_cast<QAbstractButton *>(control))
        button->setChecked(value == "on");
    else if (auto *box = qobject_cast<QComboBox *>(control))
        box->setCurrentIndex(value.toInt());
    else
        qobject_cast<QLineEdit *>(control)->setText(value);
}

using Pairs = QList<std::pair<QString, QString>>;

} // namespace

class tst_OptionPages : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { LocalSettings::SetBaseFolder(m_settings.path()); }
    void pagesShowAndStoreTheirSettings_data();
    void pagesShowAndStoreTheirSettings();

private:
    QTemporaryDir m_settings;
};

void tst_OptionPages::pagesShowAndStoreTheirSettings_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<Pairs>("stored");
    QTest::addColumn<Pairs>("shown");
    QTest::addColumn<Pairs>("edits");
    QTest::addColumn<QStringList>("alerts");
    QTest::addColumn<Pairs>("storedAfter");

    const QString note = "Note: most RSS services prefer an update frequency of 1 hour or more.";
    QTest::newRow("defaults: nothing stored")
        << "SubDefaultsUI" << Pairs{}
        << Pairs{{"txtUpdateFreq", "1 1"}, {"txtDelRead", "3 2"}, {"txtDelUnread", "15 2"}} << Pairs{}
        << QStringList{}
        << Pairs{{"engine:UPDATEFREQ", "3600"},
                 {"engine:DELETEREAD", "259200"},
                 {"engine:DELETEUNREAD", "1296000"}};
    QTest::newRow("defaults: never delete read")
        << "SubDefaultsUI" << Pairs{{"engine:DELETEREAD", "0"}}
        << Pairs{{"chkDelRead", "off"}, {"txtDelRead.enabled", "off"}, {"cboDelRead.enabled", "off"}}
        << Pairs{{"txtDelUnread", "16"}} << QStringList{} << Pairs{{"engine:DELETEREAD", "0"}};
    QTest::newRow("defaults: 4 minutes become 5")
        << "SubDefaultsUI" << Pairs{} << Pairs{} << Pairs{{"txtUpdateFreq", "4"}, {"cboUpdateFreq", "0"}}
        << QStringList{note} << Pairs{{"engine:UPDATEFREQ", "300"}};
    QTest::newRow("network: nothing stored")
        << "NetworkUI" << Pairs{}
        << Pairs{{"chkUseProxyServer", "on"},
                 {"optUseIEProxySettings", "on"},
                 {"chkBypassForLocals", "on"},
                 {"chkUseNetworkCredentials", "off"},
                 {"optCurrentlyUsersCredentials", "on"},
                 {"txtSpecificProxyServer.enabled", "off"}}
        << Pairs{{"optUseSpecificProxyServer", "on"}, {"txtSpecificProxyServer", "proxy:3128"}}
        << QStringList{}
        << Pairs{{"local:optUseIEProxySettings", "False"},
                 {"net:optUseIEProxySettings", "False"},
                 {"local:txtSpecificProxyServer", "proxy:3128"},
                 {"net:txtSpecificProxyServer", "proxy:3128"},
                 {"local:chkUseProxyServer", "True"},
                 {"reg:PrefsVersion", "0.8.0"}};
    QTest::newRow("network: the password stays with the engine")
        << "NetworkUI" << Pairs{} << Pairs{}
        << Pairs{{"chkUseNetworkCredentials", "on"},
                 {"optUseSpecificCredentials", "on"},
                 {"txtPasswordCredentials", "pw"}}
        << QStringList{}
        << Pairs{{"net:txtPasswordCredentials", "pw"},
                 {"local:txtPasswordCredentials", "-"},
                 {"local:chkUseNetworkCredentials", "True"}};
    QTest::newRow("general: deleting without a question")
        << "GeneralUI" << Pairs{} << Pairs{{"chkLogToDisk", "on"}, {"chkSupressWarnings", "off"}}
        << Pairs{{"chkSupressWarnings", "on"}} << QStringList{}
        << Pairs{{"reg:SupressDeleteWarnings", "1"}, {"engine:LogToDisk", "1"}, {"engine:EngineLoad", "4"}};
    for (const auto &[seconds, shown] :
         Pairs{{"7200", "2 1"}, {"86400", "1 2"}, {"5400", "90 0"}, {"-1", "1 1"}})
        QTest::addRow("online: every %s seconds", qPrintable(seconds))
            << "OnlineUI" << Pairs{{"sync:SyncFrequency", seconds}} << Pairs{{"txtUpdateFreq", shown}}
            << Pairs{} << QStringList{"Online user name needs to be at least one character."} << Pairs{};
    QTest::newRow("online: 14 minutes")
        << "OnlineUI" << Pairs{} << Pairs{{"chkOnlineEnabled", "off"}, {"txtOnlineURL.enabled", "off"}}
        << Pairs{{"txtOnlineUsername", "me"},
                 {"txtOnlinePassword", "four"},
                 {"txtUpdateFreq", "14"},
                 {"cboUpdateFreq", "0"}}
        << QStringList{"Corvell online update frequency can not be less than 15 minutes."}
        << Pairs{{"sync:SyncFrequency", "840"}, {"sync:SyncUser", "me"}, {"sync:SyncPassword", "four"}};
    QTest::newRow("online: only the user name is explained")
        << "OnlineUI" << Pairs{} << Pairs{} << Pairs{{"txtOnlinePassword", "abc"}, {"txtUpdateFreq", "1"}}
        << QStringList{"Online user name needs to be at least one character."}
        << Pairs{{"sync:SyncPassword", "abc"}, {"sync:SyncFrequency", "3600"}};
}

void tst_OptionPages::pagesShowAndStoreTheirSettings()
{
    QFETCH(QString, page);
    QFETCH(Pairs, stored);
    QFETCH(Pairs, shown);
    QFETCH(Pairs, edits);
    QFETCH(QStringList, alerts);
    QFETCH(Pairs, storedAfter);
    TestEngine engine;
    QVERIFY(engine.isReady());
    SubscribeClientPtr client = engine.newClient();
    client->Connect("CONFIGCONSUMER", std::make_shared<IgnoreMessages>());
    ClientAccess::SetEngineClient(client);
    PromptRecorder prompts;
    for (const auto &[place, value] : stored)
        Store(*client, place, value);

    std::unique_ptr<ConfigPage> options = MakePage(page);
    for (const auto &[name, value] : shown)
        QVERIFY2(Shown(*options, name) == value, qPrintable(name + " shows " + Shown(*options, name)));
    QVERIFY(!options->Dirty());
    for (const auto &[name, value] : edits)
        Edit(*options, name, value);
    QVERIFY(options->SafeToApply());
    options->Apply();
    QVERIFY(!options->Dirty());
    QCOMPARE(prompts.texts(), alerts);
    for (const auto &[place, value] : storedAfter)
        QCOMPARE(Read(*client, place), value);
    options.reset();
    ClientAccess::SetEngineClient(nullptr);
}

QTEST_MAIN(tst_OptionPages)
#include "tst_OptionPages.moc"
