#include "ConsumerSettings.h"
#include "ControlTexts.h"
#include "EngineClientTest.h"
#include "HandleGuard.h"
#include "QLUtils.h"
#include "SettingsEditorDoubles.h"
#include "SubscriptionSettingsEditor.h"
#include "commonUtils.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

using namespace quillon;
using namespace SettingsEditorDoubles;
using namespace EngineCalls;
using namespace ControlTexts;

class tst_SubscriptionSettingsEditor : public EngineClientTest
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void timesAreStoredInSecondsShownInTheLargestUnitAndKeptAboveFiveMinutes();
    void categoryWithMixedValuesLeavesThemUnchanged();
    void loginNeedsBothFieldsAndANewTitleGoesToOutlook();
    void commitAsksAndFollowsTheAnswer();
    void failedApplyStopsAndSaysWhy();
    void outlookTabNeedsAFolderForTheSpecificChoice();
    void searchSubscriptionWritesANewAddressWithOrWithoutSources();

private:
    [[nodiscard]] QStringList shown(const QStringList &names) const { return Shown(*m_editor, names); }
    void edit(const QStringList &edits) { Edit(*m_editor, edits); }
    template <typename T> T *child(const char *name) { return m_editor->findChild<T *>(name); }
    std::shared_ptr<LinkedSubscribeClient> startEditor(CallHook hook);
    void showEditor();
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

    std::unique_ptr<SubscriptionSettingsEditor> m_editor;
};

void tst_SubscriptionSettingsEditor::init()
{
    EngineClientTest::init();
    m_prompts->answer = 0;
    showEditor();
}

void tst_SubscriptionSettingsEditor::showEditor()
{
    m_editor = std::make_unique<SubscriptionSettingsEditor>();
    m_editor->SetClient(m_client);
    m_editor->resize(480, 700);
}

// A new editor over a client whose engine calls the hook sees first.
std::shared_ptr<LinkedSubscribeClient> tst_SubscriptionSettingsEditor::startEditor(CallHook hook)
{
    m_editor.reset();
    auto client = m_engine->newClient(std::move(hook));
    client->Connect("CONFIGCONSUMER", std::make_shared<IgnoreMessages>());
    m_client = client;
    showEditor();
    return client;
}

void tst_SubscriptionSettingsEditor::cleanup()
{
    SetOutlookProvider({});
    m_editor.reset();
    EngineClientTest::cleanup();
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

void tst_SubscriptionSettingsEditor::timesAreStoredInSecondsShownInTheLargestUnitAndKeptAboveFiveMinutes()
{
    const qint32 id = addSubscription("Daily");
    // The engine's own default fills the fields of a subscription that uses it.
    SetConsumerSetting(*m_client, "ENGINE", "", "UPDATEFREQ", "7200");
    loadSubscription(id);
    const QStringList fields = {"optDefaultFreq", "txtUpdateFreq", "txtUpdateFreq.enabled", "txtDelRead",
                                "txtDelUnread"};
    QCOMPARE(shown(fields), (QStringList{"on", "2 1", "off", "3 2", "15 2"}));

    edit({"optSpecificFreq=click", "txtUpdateFreq=1", "cboUpdateFreq=2"});
    QCOMPARE(shown({"txtUpdateFreq.enabled"}), QStringList{"on"});
    edit({"optCustomDelete=click", "chkDelRead=off", "txtDelUnread=36", "cboDelUnread=1"});
    QCOMPARE(shown({"txtDelRead.enabled"}), QStringList{"off"});
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(
        (QList<qint32>{itemLong(id, "UPDATEFREQ"), itemLong(id, "DELETEREAD"), itemLong(id, "DELETEUNREAD")}),
        (QList<qint32>{86400, 0, 129600}));

    // Never deleting read articles greys the default beside the box.
    setItem(id, "UPDATEFREQ", 5400);
    loadSubscription(id);
    const QStringList deletion = {"optCustomDelete", "chkDelRead", "txtDelRead", "txtDelRead.enabled",
                                  "txtDelUnread"};
    QCOMPARE(shown(QStringList{"txtUpdateFreq"} + deletion),
             (QStringList{"90 0", "on", "off", "3 2", "off", "36 1"}));
    setItem(id, "UPDATEFREQ", 7200);
    loadSubscription(id);
    QCOMPARE(shown({"txtUpdateFreq"}), QStringList{"2 1"});

    // Below five minutes is warned about and corrected; exactly five passes without a word.
    edit({"optSpecificFreq=click", "txtUpdateFreq=4", "cboUpdateFreq=0"});
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(m_prompts->texts(PromptKind::Alert),
             QStringList{"Note: most RSS services prefer an update frequency of 1 hour or more."});
    QCOMPARE(m_prompts->asked[0].extendedText,
             "This update frequency is less than the minimum update frequency. Please set the update time to "
             "a value greater than 5 minutes.");
    QCOMPARE(shown({"txtUpdateFreq"}), QStringList{"5 0"});
    QCOMPARE(itemLong(id, "UPDATEFREQ"), 300);
    QVERIFY(!m_editor->Dirty());
    edit({"txtUpdateFreq=5"});
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(m_prompts->asked.size(), 1);
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
    // Nothing common is chosen; a new name renames the category.
    QCOMPARE(shown({"optDefaultFreq", "optSpecificFreq", "optDefaultDelete", "optPlainContent",
                    "optFullContent", "optDefaultContent", "grpLogin.hidden", "txtSubTitle.enabled"}),
             (QStringList{"off", "off", "on", "off", "off", "off", "on", "on"}));
    QCOMPARE(m_editor->RadioContent(), QString("NothingCommon"));

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

void tst_SubscriptionSettingsEditor::loginNeedsBothFieldsAndANewTitleGoesToOutlook()
{
    const qint32 id = addSubscription("Old name");
    loadSubscription(id, "Old name");
    QSignalSpy titles(m_editor.get(), &SubscriptionSettingsEditor::TitleApplied);
    // The marker is not shown for a missing user name.
    QCOMPARE(shown({"grpLogin.hidden", "picSearchSubscription.hidden", "txtUserNameField"}),
             (QStringList{"off", "on", ""}));
    QCOMPARE(child<QLineEdit>("txtPasswordField")->echoMode(), QLineEdit::Password);
    QVERIFY(m_editor->ApplyEdits()); // untouched title: nothing for Outlook
    QCOMPARE(setting("OLCONSUMER", id, "FOLDERTITLE"), kMissingText);
    QVERIFY(titles.isEmpty());

    edit({"txtUserNameField=alice"});
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(itemText(id, "USER"), kMissingText);
    edit({"txtPasswordField=s3cret"});
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE((QStringList{itemText(id, "USER"), itemText(id, "PASSWORD")}), (QStringList{"alice", "s3cret"}));
    loadSubscription(id, "Old name");
    QCOMPARE(shown({"txtUserNameField"}), QStringList{"alice"});
    edit({"txtUserNameField="});
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(itemText(id, "USER"), QString("alice"));

    edit({"txtSubTitle=News & views"});
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(setting("OLCONSUMER", id, "FOLDERTITLE"), QString("News & views"));
    QCOMPARE(titles.size(), 1);
    QCOMPARE(titles[0][0].toString(), QString("News & views"));
    // The '&' is shown, not taken for a shortcut.
    QCOMPARE(child<QTabWidget>("tabSettingsTabs")->tabText(0), QString("Settings for 'News && views'"));
}

void tst_SubscriptionSettingsEditor::commitAsksAndFollowsTheAnswer()
{
    const qint32 id = addSubscription("Edited");
    loadSubscription(id);
    QCOMPARE(m_editor->CommitCurrentEdits(true), 0);
    QVERIFY(m_prompts->asked.isEmpty());

    const auto change = [this] { edit({"optSpecificFreq=click", "txtUpdateFreq=3", "cboUpdateFreq=1"}); };
    change();
    m_prompts->answer = 2;
    QCOMPARE(m_editor->CommitCurrentEdits(true), 2);
    QCOMPARE(m_prompts->texts(PromptKind::DoYouWantToSave),
             QStringList{"Do you want to save your changes to this subscription?"});
    QVERIFY(m_editor->Dirty());
    QCOMPARE(itemLong(id, "UPDATEFREQ"), -1);

    // Where the caller cannot stop, Cancel drops the edits.
    QCOMPARE(m_editor->CommitCurrentEdits(false), 7);
    QVERIFY(!m_editor->Dirty());
    QCOMPARE(shown({"optDefaultFreq"}), QStringList{"on"});

    change();
    m_prompts->answer = 7;
    QCOMPARE(m_editor->CommitCurrentEdits(true), 7);
    QVERIFY(!m_editor->Dirty());
    QCOMPARE(itemLong(id, "UPDATEFREQ"), -1);

    change();
    m_prompts->answer = 6;
    QCOMPARE(m_editor->CommitCurrentEdits(true), 6);
    QVERIFY(!m_editor->Dirty());
    QCOMPARE(itemLong(id, "UPDATEFREQ"), 10800);
}

void tst_SubscriptionSettingsEditor::failedApplyStopsAndSaysWhy()
{
    qint32 refused = 0;
    startEditor(RefuseUpdatesOf(&refused));
    const QList<qint32> ids = {addSubscription("First"), addSubscription("Second"), addSubscription("Third")};
    m_editor->LoadSelection({EditorSelection::Kind::Category, "All", {}, ids});
    const auto deleteUnread = [&] {
        return QList<qint32>{itemLong(ids[0], "DELETEUNREAD"), itemLong(ids[1], "DELETEUNREAD"),
                             itemLong(ids[2], "DELETEUNREAD")};
    };

    // A number field holding words stops before anything is written.
    edit({"optCustomDelete=click", "txtDelUnread=ten"});
    QVERIFY(!m_editor->ApplyEdits());
    QCOMPARE(m_prompts->asked.size(), 1);
    QVERIFY2(m_prompts->asked[0].extendedText.contains("\"ten\" is not a whole number"),
             qPrintable(m_prompts->asked[0].extendedText));
    QVERIFY(m_editor->Dirty());
    QCOMPARE(deleteUnread(), (QList<qint32>{-1, -1, -1}));

    // An engine failure ends the apply: the subscriptions before it keep what was written.
    edit({"txtDelUnread=10"});
    refused = ids[1];
    QVERIFY(!m_editor->ApplyEdits());
    QCOMPARE(m_prompts->asked.size(), 2);
    QCOMPARE(m_prompts->asked[1].extendedText, QString("refused"));
    QVERIFY(m_editor->Dirty());
    QCOMPARE(deleteUnread(), (QList<qint32>{864000, -1, -1}));
}

void tst_SubscriptionSettingsEditor::outlookTabNeedsAFolderForTheSpecificChoice()
{
    const qint32 id = addSubscription("Placed");
    loadSubscription(id);
    QCOMPARE(shown({"optStoreInParentFolder", "cmdStoreInSpecificFolder.enabled"}),
             (QStringList{"on", "off"}));
    edit({"optStoreInSpecificFolder=click"});
    QCOMPARE(shown({"cmdStoreInSpecificFolder.enabled"}), QStringList{"on"});
    QVERIFY(!m_editor->ApplyEdits());
    QCOMPARE(m_prompts->texts(), QStringList{"Please selected a folder."});
    QCOMPARE(m_prompts->asked[0].extendedText, QString("No folder selected for this Subscription."));
    QCOMPARE(setting("OLCONSUMER", id, "StoreLocationOption"), kMissingText);

    // Without Outlook the chooser says so and the choice stays as it was.
    edit({"cmdStoreInSpecificFolder=click"});
    QCOMPARE(m_prompts->texts(), (QStringList{"Please selected a folder.", "Outlook is not available."}));
    QCOMPARE(shown({"lblStoreInSpecificFolder"}), QStringList{""});

    SetOutlookProvider([] { return std::make_shared<OneFolderOutlook>(); });
    edit({"cmdStoreInSpecificFolder=click"});
    QCOMPARE(shown({"lblStoreInSpecificFolder"}), QStringList{"\\Feeds\\News"});
    edit({"chkSubNamedFolder=off", "optFullContent=click"});
    QVERIFY(m_editor->ApplyEdits());
    QStringList stored;
    for (const char *key :
         {"StoreLocationOption", "StoreLocationSpecificFolder", "StoreLocationSpecificFolder_folderID",
          "StoreInNamedFolder", "SubMovedInConfig", "Article_Theme"})
        stored << setting("OLCONSUMER", id, key);
    QCOMPARE(stored, (QStringList{"1", "\\Feeds\\News", "F42", "0", "1", "Full"}));

    const qint32 other = addSubscription("Elsewhere");
    m_editor->LoadSelection({EditorSelection::Kind::Category, "Mixed", {}, {id, other}});
    QCOMPARE(shown({"optStoreInParentFolder", "optStoreInSpecificFolder"}), (QStringList{"off", "off"}));
    m_prompts->asked.clear();
    edit({"optStoreInSpecificFolder=click"});
    QVERIFY(!m_editor->ApplyEdits());
    QCOMPARE(m_prompts->asked[0].extendedText, QString("No folder selected for this Category."));
}

void tst_SubscriptionSettingsEditor::searchSubscriptionWritesANewAddressWithOrWithoutSources()
{
    startEditor(AnswerSearchSources(SourcesAnswer()));
    const QString url = "search?guid=%7Bnews%7D&keywords=rss&limit=20";
    const qint32 id = addSubscription("Search: rss", url);
    loadSubscription(id, "Search: rss", url);
    auto *sources = child<QComboBox>("cboSearchSources");
    QTRY_COMPARE(sources->count(), 2);
    QCOMPARE(sources->currentText(), QString("News search"));
    QCOMPARE(shown({"grpLogin.hidden", "picSearchSubscription.hidden", "txtSearchString", "chkSearchLimit",
                    "txtSearchLimit"}),
             (QStringList{"on", "off", "rss", "on", "20"}));
    QVERIFY(!m_editor->Dirty());
    QVERIFY(m_editor->ApplyEdits()); // nothing changed: the address stays
    QCOMPARE(itemText(id, "URL"), url);

    edit({"txtSearchString=rss & atom", "txtSearchLimit=500"});
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(itemText(id, "URL"), QString("search?guid=%7Bnews%7D&keywords=rss%20%26%20atom&limit=100"));

    // A source without a limit shows "n/a" and writes none.
    sources->setCurrentIndex(1);
    QCOMPARE(shown({"txtSearchLimit", "chkSearchLimit", "chkSearchLimit.enabled"}),
             (QStringList{"n/a", "off", "off"}));
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(itemText(id, "URL"), QString("search?guid=%7Bblogs%7D&keywords=rss%20%26%20atom"));

    // The engine refuses a request kind it does not serve; the editor shows no sources.
    auto refused = PropertyBag::create();
    refused->setText("MESSAGE", "RequestFailed");
    refused->setText("ERROR", "Unknown request LIST");
    const auto client = startEditor(AnswerSearchSources(refused));
    const QString cats = "search?guid=g1&keywords=cats";
    const qint32 other = addSubscription("Search: cats", cats);
    const int waiting = client->PendingCallbackCount();
    loadSubscription(other, "Search: cats", cats);
    QCOMPARE(client->PendingCallbackCount(), waiting + 1);
    QTRY_COMPARE(client->PendingCallbackCount(), waiting);
    QCOMPARE(child<QComboBox>("cboSearchSources")->count(), 0);
    edit({"txtSearchString=dogs"});
    QVERIFY(m_editor->ApplyEdits());
    QCOMPARE(itemText(other, "URL"), QString("search?guid=g1&keywords=dogs"));
}

QTEST_MAIN(tst_SubscriptionSettingsEditor)
#include "tst_SubscriptionSettingsEditor.moc"
