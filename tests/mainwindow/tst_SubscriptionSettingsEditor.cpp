#include "ConsumerSettings.h"
#include "EngineCalls.h"
#include "HandleGuard.h"
#include "LocalSettings.h"
#include "PromptRecorder.h"
#include "QLUtils.h"
#include "SettingsEditorDoubles.h"
#include "SubscriptionSettingsEditor.h"
#include "TestEngine.h"
#include "commonUtils.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace quillon;
using namespace SettingsEditorDoubles;
using namespace EngineCalls;

class tst_SubscriptionSettingsEditor : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void updateFrequencyBelowFiveMinutesIsWarnedAndCorrected();
    void timesAreStoredInSecondsAndShownInTheLargestUnit();
    void categoryWithMixedValuesLeavesThemUnchanged();
    void loginIsWrittenOnlyWithBothFields();
    void titleEditGoesToOutlookAndIsAnnounced();
    void commitAsksAndFollowsTheAnswer();
    void failedApplyStopsAndSaysWhy();
    void outlookTabNeedsAFolderForTheSpecificChoice();
    void searchSubscriptionWritesANewAddress();
    void searchWithoutSourcesStillLoads();

private:
    template <typename T> T *child(const char *name)
    {
        T *widget = m_editor->findChild<T *>(name);
        if (!widget)
            qFatal("no control %s", name);
        return widget;
    }
    void startEditor(SubscribeClientPtr client);
    qint32 addSubscription(const QString &title, const QString &url = "http://127.0.0.1:1/feed.xml")
    {
        return AddSubscription(*m_client, title, url);
    }
    void setItem(qint32 id, const QString &name, qint32 value);
    [[nodiscard]] QString itemText(qint32 id, const QString &name) { return ItemText(*m_client, id, name); }
    [[nodiscard]] qint32 itemLong(qint32 id, const QString &name) { return itemText(id, name).toInt(); }
    [[nodiscard]] QString setting(const QString &consumer, qint32 id, const QString &key);
    void loadSubscription(qint32 id, const QString &title = "Feed",
                          const QString &url = "http://127.0.0.1:1/f");

    QTemporaryDir m_settingsDir;
    std::unique_ptr<TestEngine> m_engine;
    SubscribeClientPtr m_client;
    std::unique_ptr<SubscriptionSettingsEditor> m_editor;
    std::unique_ptr<PromptRecorder> m_prompts;
};

void tst_SubscriptionSettingsEditor::initTestCase()
{
    QVERIFY(m_settingsDir.isValid());
    LocalSettings::SetBaseFolder(m_settingsDir.path());
}

void tst_SubscriptionSettingsEditor::init()
{
    m_engine = std::make_unique<TestEngine>();
    QVERIFY(m_engine->isReady());
    startEditor(m_engine->newClient());
    m_prompts = std::make_unique<PromptRecorder>();
    m_prompts->answer = 0;
}

void tst_SubscriptionSettingsEditor::startEditor(SubscribeClientPtr client)
{
    m_editor.reset();
    m_client = std::move(client);
    m_client->Connect("CONFIGCONSUMER", std::make_shared<IgnoreMessages>());
    m_editor = std::make_unique<SubscriptionSettingsEditor>();
    m_editor->SetClient(m_client);
    m_editor->resize(480, 700);
}

void tst_SubscriptionSettingsEditor::cleanup()
{
    m_prompts.reset();
    SetOutlookProvider({});
    m_editor.reset();
    QCOMPARE(m_client->LiveHandleCount(), 0);
    m_client.reset();
    m_engine.reset();
}

void tst_SubscriptionSettingsEditor::setItem(qint32 id, const QString &name, qint32 value)
{
    HandleGuard bag(*m_client, m_client->NewBag());
    m_client->SetLongValue(bag.get(), name, value);
    m_client->UpdateItem("NEWS", id, bag.get());
}

QString tst_SubscriptionSettingsEditor::setting(const QString &consumer, qint32 id, const QString &key)
{
    return GetConsumerSetting(*m_client, key, kMissingText, consumer, SubscriptionSpecificsSection(id));
}

void tst_SubscriptionSettingsEditor::loadSubscription(qint32 id, const QString &title, const QString &url)
{
    m_editor->LoadSelection({EditorSelection::Kind::Subscription, title, url, {id}});
}

void tst_SubscriptionSettingsEditor::updateFrequencyBelowFiveMinutesIsWarnedAndCorrected()
{
    const qint32 id = addSubscription("Fast");
    loadSubscription(id);
    QVERIFY(child<QRadioButton>("optDefaultFreq")->isChecked());

    child<QRadioButton>("optSpecificFreq")->click();
    child<QLineEdit>("txtUpdateFreq")->setText("4");
    child<QComboBox>("cboUpdateFreq")->setCurrentIndex(UnitMinutes);
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(m_prompts->asked.size(), 1);
    QCOMPARE(m_prompts->asked[0].kind, PromptKind::Alert);
    QCOMPARE(m_prompts->asked[0].mainText,
             QString("Note: most RSS services prefer an update frequency of 1 hour or more."));
    QCOMPARE(m_prompts->asked[0].extendedText,
             QString("This update frequency is less than the minimum update frequency. Please set the update "
                     "time to a value greater than 5 minutes."));
    QCOMPARE(child<QLineEdit>("txtUpdateFreq")->text(), QString("5"));
    QCOMPARE(child<QComboBox>("cboUpdateFreq")->currentIndex(), int(UnitMinutes));
    QCOMPARE(itemLong(id, "UPDATEFREQ"), 300);
    QVERIFY(!m_editor->Dirty());

    // Exactly five minutes passes without a word.
    m_prompts->asked.clear();
    child<QLineEdit>("txtUpdateFreq")->setText("5");
    QVERIFY(m_editor->ApplyEdits());
    QVERIFY(m_prompts->asked.isEmpty());
}

void tst_SubscriptionSettingsEditor::timesAreStoredInSecondsAndShownInTheLargestUnit()
{
    const qint32 id = addSubscription("Daily");
    // The engine's own default fills the fields of a subscription that uses it.
    SetConsumerSetting(*m_client, "ENGINE", "", "UPDATEFREQ", "7200");
    loadSubscription(id);
    QCOMPARE(child<QLineEdit>("txtUpdateFreq")->text(), QString("2"));
    QCOMPARE(child<QComboBox>("cboUpdateFreq")->currentIndex(), int(UnitHours));
    QVERIFY(!child<QLineEdit>("txtUpdateFreq")->isEnabled());
    QCOMPARE(child<QLineEdit>("txtDelRead")->text(), QString("3"));
    QCOMPARE(child<QLineEdit>("txtDelUnread")->text(), QString("15"));

    child<QRadioButton>("optSpecificFreq")->click();
    QVERIFY(child<QLineEdit>("txtUpdateFreq")->isEnabled());
    child<QLineEdit>("txtUpdateFreq")->setText("1");
    child<QComboBox>("cboUpdateFreq")->setCurrentIndex(UnitDays);
    child<QRadioButton>("optCustomDelete")->click();
    child<QCheckBox>("chkDelRead")->setChecked(false);
    QVERIFY(!child<QLineEdit>("txtDelRead")->isEnabled());
    child<QLineEdit>("txtDelUnread")->setText("36");
    child<QComboBox>("cboDelUnread")->setCurrentIndex(UnitHours);
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(itemLong(id, "UPDATEFREQ"), 86400);
    QCOMPARE(itemLong(id, "DELETEREAD"), 0);
    QCOMPARE(itemLong(id, "DELETEUNREAD"), 129600);

    setItem(id, "UPDATEFREQ", 5400);
    loadSubscription(id);
    QCOMPARE(child<QLineEdit>("txtUpdateFreq")->text(), QString("90"));
    QCOMPARE(child<QComboBox>("cboUpdateFreq")->currentIndex(), int(UnitMinutes));
    QVERIFY(child<QRadioButton>("optCustomDelete")->isChecked());
    QVERIFY(!child<QCheckBox>("chkDelRead")->isChecked());
    QCOMPARE(child<QLineEdit>("txtDelRead")->text(), QString("3")); // the default, greyed
    QVERIFY(!child<QLineEdit>("txtDelRead")->isEnabled());
    QCOMPARE(child<QLineEdit>("txtDelUnread")->text(), QString("36"));

    setItem(id, "UPDATEFREQ", 7200);
    loadSubscription(id);
    QCOMPARE(child<QLineEdit>("txtUpdateFreq")->text(), QString("2"));
    QCOMPARE(child<QComboBox>("cboUpdateFreq")->currentIndex(), int(UnitHours));
}

void tst_SubscriptionSettingsEditor::categoryWithMixedValuesLeavesThemUnchanged()
{
    const qint32 hourly = addSubscription("Hourly");
    const qint32 twoHourly = addSubscription("Two-hourly");
    setItem(hourly, "UPDATEFREQ", 3600);
    setItem(twoHourly, "UPDATEFREQ", 7200);
    SetConsumerSetting(*m_client, "OLCONSUMER", SubscriptionSpecificsSection(hourly), "Article_Theme",
                       "Plain");
    SetConsumerSetting(*m_client, "OLCONSUMER", SubscriptionSpecificsSection(twoHourly), "Article_Theme",
                       "Full");

    QSignalSpy dirty(m_editor.get(), &SubscriptionSettingsEditor::DirtyChanged);
    m_editor->LoadSelection({EditorSelection::Kind::Category, "Tech", {}, {hourly, twoHourly}});
    QVERIFY(dirty.isEmpty()); // loading is not editing
    QCOMPARE(child<QGroupBox>("grpDefinition")->title(), QString("Category Definition"));
    QCOMPARE(child<QTabWidget>("tabSettingsTabs")->tabText(0), QString("Settings for 'Tech'"));
    QVERIFY(!child<QRadioButton>("optDefaultFreq")->isChecked());
    QVERIFY(!child<QRadioButton>("optSpecificFreq")->isChecked());
    QVERIFY(child<QRadioButton>("optDefaultDelete")->isChecked());
    QVERIFY(!child<QRadioButton>("optPlainContent")->isChecked());
    QVERIFY(!child<QRadioButton>("optFullContent")->isChecked());
    QVERIFY(!child<QRadioButton>("optDefaultContent")->isChecked());
    QCOMPARE(m_editor->RadioContent(), QString("NothingCommon"));
    QVERIFY(child<QGroupBox>("grpLogin")->isHidden());
    QVERIFY(child<QLineEdit>("txtSubTitle")->isEnabled()); // a new name renames the category

    child<QRadioButton>("optEnclosureAlways")->click();
    QCOMPARE(dirty.size(), 1);
    QVERIFY(m_editor->Dirty());
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(itemLong(hourly, "UPDATEFREQ"), 3600);
    QCOMPARE(itemLong(twoHourly, "UPDATEFREQ"), 7200);
    QCOMPARE(setting("OLCONSUMER", hourly, "Article_Theme"), QString("Plain"));
    QCOMPARE(setting("OLCONSUMER", twoHourly, "Article_Theme"), QString("Full"));
    QCOMPARE(setting("MEDIACONSUMER", hourly, "EnableAutoDownload"), QString("1"));
    QCOMPARE(setting("MEDIACONSUMER", twoHourly, "EnableAutoDownload"), QString("1"));
    QCOMPARE(setting("OLCONSUMER", hourly, "FOLDERTITLE"), kMissingText);
}

void tst_SubscriptionSettingsEditor::loginIsWrittenOnlyWithBothFields()
{
    const qint32 id = addSubscription("Private");
    loadSubscription(id);
    QVERIFY(!child<QGroupBox>("grpLogin")->isHidden());
    QVERIFY(child<QGroupBox>("picSearchSubscription")->isHidden());
    QCOMPARE(child<QLineEdit>("txtPasswordField")->echoMode(), QLineEdit::Password);
    QCOMPARE(child<QLineEdit>("txtUserNameField")->text(), QString()); // the marker is not shown

    child<QLineEdit>("txtUserNameField")->setText("alice");
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(itemText(id, "USER"), kMissingText);

    child<QLineEdit>("txtPasswordField")->setText("s3cret");
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(itemText(id, "USER"), QString("alice"));
    QCOMPARE(itemText(id, "PASSWORD"), QString("s3cret"));

    loadSubscription(id);
    QCOMPARE(child<QLineEdit>("txtUserNameField")->text(), QString("alice"));
    child<QLineEdit>("txtUserNameField")->clear();
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(itemText(id, "USER"), QString("alice"));
}

void tst_SubscriptionSettingsEditor::titleEditGoesToOutlookAndIsAnnounced()
{
    const qint32 id = addSubscription("Old name");
    loadSubscription(id, "Old name");
    QSignalSpy titles(m_editor.get(), &SubscriptionSettingsEditor::TitleApplied);

    QVERIFY(m_editor->ApplyEdits()); // untouched title: nothing for Outlook
    QCOMPARE(setting("OLCONSUMER", id, "FOLDERTITLE"), kMissingText);
    QVERIFY(titles.isEmpty());

    child<QLineEdit>("txtSubTitle")->setText("New name");
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(setting("OLCONSUMER", id, "FOLDERTITLE"), QString("New name"));
    QCOMPARE(titles.size(), 1);
    QCOMPARE(titles[0][0].toString(), QString("New name"));
    QCOMPARE(child<QTabWidget>("tabSettingsTabs")->tabText(0), QString("Settings for 'New name'"));
}

void tst_SubscriptionSettingsEditor::commitAsksAndFollowsTheAnswer()
{
    const qint32 id = addSubscription("Edited");
    loadSubscription(id);
    QCOMPARE(m_editor->CommitCurrentEdits(true), 0);
    QVERIFY(m_prompts->asked.isEmpty());

    const auto edit = [&] {
        child<QRadioButton>("optSpecificFreq")->click();
        child<QLineEdit>("txtUpdateFreq")->setText("3");
        child<QComboBox>("cboUpdateFreq")->setCurrentIndex(UnitHours);
    };
    edit();
    m_prompts->answer = 2;
    QCOMPARE(m_editor->CommitCurrentEdits(true), 2);
    QCOMPARE(m_prompts->asked.last().kind, PromptKind::DoYouWantToSave);
    QCOMPARE(m_prompts->asked.last().mainText,
             QString("Do you want to save your changes to this subscription?"));
    QVERIFY(m_editor->Dirty());
    QCOMPARE(itemLong(id, "UPDATEFREQ"), -1);

    // Where the caller cannot stop, Cancel drops the edits.
    QCOMPARE(m_editor->CommitCurrentEdits(false), 7);
    QVERIFY(!m_editor->Dirty());
    QVERIFY(child<QRadioButton>("optDefaultFreq")->isChecked());

    edit();
    m_prompts->answer = 7;
    QCOMPARE(m_editor->CommitCurrentEdits(true), 7);
    QVERIFY(!m_editor->Dirty());
    QCOMPARE(itemLong(id, "UPDATEFREQ"), -1);

    edit();
    m_prompts->answer = 6;
    QCOMPARE(m_editor->CommitCurrentEdits(true), 6);
    QVERIFY(!m_editor->Dirty());
    QCOMPARE(itemLong(id, "UPDATEFREQ"), 10800);
}

void tst_SubscriptionSettingsEditor::failedApplyStopsAndSaysWhy()
{
    qint32 refused = 0;
    startEditor(m_engine->newClient(RefuseUpdatesOf(&refused)));
    const QList<qint32> ids = {addSubscription("First"), addSubscription("Second"), addSubscription("Third")};
    m_editor->LoadSelection({EditorSelection::Kind::Category, "All", {}, ids});

    // A number field holding words stops before anything is written.
    child<QRadioButton>("optCustomDelete")->click();
    child<QLineEdit>("txtDelUnread")->setText("ten");
    QVERIFY(!m_editor->ApplyEdits());
    QCOMPARE(m_prompts->asked.size(), 1);
    QVERIFY2(m_prompts->asked[0].extendedText.contains("\"ten\" is not a whole number"),
             qPrintable(m_prompts->asked[0].extendedText));
    QVERIFY(m_editor->Dirty());
    for (const qint32 id : ids)
        QCOMPARE(itemLong(id, "DELETEUNREAD"), -1);

    // An engine failure ends the apply: the subscriptions before it keep what was written.
    child<QLineEdit>("txtDelUnread")->setText("10");
    refused = ids[1];
    QVERIFY(!m_editor->ApplyEdits());
    QCOMPARE(m_prompts->asked.size(), 2);
    QCOMPARE(m_prompts->asked[1].extendedText, QString("refused"));
    QVERIFY(m_editor->Dirty());
    QCOMPARE(itemLong(ids[0], "DELETEUNREAD"), 864000);
    QCOMPARE(itemLong(ids[2], "DELETEUNREAD"), -1);
}

void tst_SubscriptionSettingsEditor::outlookTabNeedsAFolderForTheSpecificChoice()
{
    const qint32 id = addSubscription("Placed");
    loadSubscription(id);
    QVERIFY(child<QRadioButton>("optStoreInParentFolder")->isChecked());
    QVERIFY(!child<QPushButton>("cmdStoreInSpecificFolder")->isEnabled());

    child<QRadioButton>("optStoreInSpecificFolder")->click();
    QVERIFY(child<QPushButton>("cmdStoreInSpecificFolder")->isEnabled());
    QVERIFY(!m_editor->ApplyEdits());
    QCOMPARE(m_prompts->asked.size(), 1);
    QCOMPARE(m_prompts->asked[0].mainText, QString("Please selected a folder."));
    QCOMPARE(m_prompts->asked[0].extendedText, QString("No folder selected for this Subscription."));
    QCOMPARE(setting("OLCONSUMER", id, "StoreLocationOption"), kMissingText);

    // Without Outlook the chooser says so and the choice stays as it was.
    child<QPushButton>("cmdStoreInSpecificFolder")->click();
    QCOMPARE(m_prompts->asked.size(), 2);
    QCOMPARE(m_prompts->asked[1].mainText, QString("Outlook is not available."));
    QCOMPARE(child<QLabel>("lblStoreInSpecificFolder")->text(), QString());

    SetOutlookProvider([] { return std::make_shared<OneFolderOutlook>(); });
    child<QPushButton>("cmdStoreInSpecificFolder")->click();
    QCOMPARE(child<QLabel>("lblStoreInSpecificFolder")->text(), QString("\\Feeds\\News"));
    child<QCheckBox>("chkSubNamedFolder")->setChecked(false);
    child<QRadioButton>("optFullContent")->click();
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(setting("OLCONSUMER", id, "StoreLocationOption"), QString("1"));
    QCOMPARE(setting("OLCONSUMER", id, "StoreLocationSpecificFolder"), QString("\\Feeds\\News"));
    QCOMPARE(setting("OLCONSUMER", id, "StoreLocationSpecificFolder_folderID"), QString("F42"));
    QCOMPARE(setting("OLCONSUMER", id, "StoreInNamedFolder"), QString("0"));
    QCOMPARE(setting("OLCONSUMER", id, "SubMovedInConfig"), QString("1"));
    QCOMPARE(setting("OLCONSUMER", id, "Article_Theme"), QString("Full"));

    const qint32 other = addSubscription("Elsewhere");
    m_editor->LoadSelection({EditorSelection::Kind::Category, "Mixed", {}, {id, other}});
    QVERIFY(!child<QRadioButton>("optStoreInParentFolder")->isChecked());
    QVERIFY(!child<QRadioButton>("optStoreInSpecificFolder")->isChecked());
    m_prompts->asked.clear();
    child<QRadioButton>("optStoreInSpecificFolder")->click();
    QVERIFY(!m_editor->ApplyEdits());
    QCOMPARE(m_prompts->asked[0].extendedText, QString("No folder selected for this Category."));
}

void tst_SubscriptionSettingsEditor::searchSubscriptionWritesANewAddress()
{
    startEditor(m_engine->newClient(AnswerSearchSources(SourcesAnswer())));
    const QString url = "search?guid=%7Bnews%7D&keywords=rss&limit=20";
    const qint32 id = addSubscription("Search: rss", url);
    loadSubscription(id, "Search: rss", url);
    QVERIFY(child<QGroupBox>("grpLogin")->isHidden());
    QVERIFY(!child<QGroupBox>("picSearchSubscription")->isHidden());
    QCOMPARE(child<QLineEdit>("txtSearchString")->text(), QString("rss"));
    auto *sources = child<QComboBox>("cboSearchSources");
    QTRY_COMPARE(sources->count(), 2);
    QCOMPARE(sources->currentText(), QString("News search"));
    QVERIFY(child<QCheckBox>("chkSearchLimit")->isChecked());
    QCOMPARE(child<QLineEdit>("txtSearchLimit")->text(), QString("20"));
    QVERIFY(!m_editor->Dirty());

    QVERIFY(m_editor->ApplyEdits()); // nothing changed: the address stays
    QCOMPARE(itemText(id, "URL"), url);

    child<QLineEdit>("txtSearchString")->setText("rss & atom");
    child<QLineEdit>("txtSearchLimit")->setText("500");
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(itemText(id, "URL"), QString("search?guid=%7Bnews%7D&keywords=rss%20%26%20atom&limit=100"));

    // A source without a limit shows "n/a" and writes none.
    sources->setCurrentIndex(1);
    QCOMPARE(child<QLineEdit>("txtSearchLimit")->text(), QString("n/a"));
    QVERIFY(!child<QCheckBox>("chkSearchLimit")->isChecked());
    QVERIFY(!child<QCheckBox>("chkSearchLimit")->isEnabled());
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(itemText(id, "URL"), QString("search?guid=%7Bblogs%7D&keywords=rss%20%26%20atom"));
}

void tst_SubscriptionSettingsEditor::searchWithoutSourcesStillLoads()
{
    // The engine refuses a request kind it does not serve; the editor shows no sources.
    auto refused = PropertyBag::create();
    refused->setText("MESSAGE", "RequestFailed");
    refused->setText("ERROR", "Unknown request LIST");
    const auto client = m_engine->newClient(AnswerSearchSources(refused));
    startEditor(client);
    const QString url = "search?guid=g1&keywords=cats";
    const qint32 id = addSubscription("Search: cats", url);
    const int waiting = client->PendingCallbackCount();
    loadSubscription(id, "Search: cats", url);
    QCOMPARE(client->PendingCallbackCount(), waiting + 1);
    QTRY_COMPARE(client->PendingCallbackCount(), waiting);
    QCOMPARE(child<QComboBox>("cboSearchSources")->count(), 0);
    child<QLineEdit>("txtSearchString")->setText("dogs");
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(itemText(id, "URL"), QString("search?guid=g1&keywords=dogs"));
}

QTEST_MAIN(tst_SubscriptionSettingsEditor)
#include "tst_SubscriptionSettingsEditor.moc"
