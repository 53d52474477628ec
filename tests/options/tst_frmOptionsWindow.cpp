#include "ConfigPage.h"
#include "ConsumerSettings.h"
#include "EngineClientTest.h"
#include "frmOptionsWindow.h"

#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>

using namespace quillon;

namespace {

// Counts what the window asks of it; Change() is a user typing into the page.
class ProbePage : public ConfigPage
{
public:
    using ConfigPage::ConfigPage;
    void Apply() override
    {
        ++applies;
        SetDirty(false);
    }
    void LoadValues() override { ++loads; }
    bool SafeToApply() override { return safe; }
    QString SendPropMessage(const QString &name, const QString &value) override
    {
        messages.append(name + QLatin1Char('=') + value);
        return ConfigPage::SendPropMessage(name, value);
    }
    void Change() { MarkDirty(); }

    int applies = 0;
    int loads = 0;
    bool safe = true;
    QStringList messages;
};

const QStringList kPanes = {"GeneralUI1", "OnlineUI1",      "IEPluginUI1",   "PodcastingUI1", "PublishingUI1",
                            "TagsUI1",    "SubDefaultsUI1", "OLDefaultsUI1", "ExportUI1",     "NetworkUI1"};

} // namespace

class tst_frmOptionsWindow : public EngineClientTest
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup()
    {
        m_window.reset();
        EngineClientTest::cleanup();
    }
    void opensOnTheSavedModule_data();
    void opensOnTheSavedModule();
    void clickOnAnotherRow_data();
    void clickOnAnotherRow();
    void closingAppliesOnlyUnappliedChanges_data();
    void closingAppliesOnlyUnappliedChanges();
    void missingIconOrPageLeavesTheListWorking();
    void applyWizardAndNetworkPageFromTheOpenWindow();

private:
    frmOptionsWindow &open(const QStringList &panes = kPanes, const QString &images = QString());
    ProbePage *page(const QString &pane) const { return static_cast<ProbePage *>(m_window->Page(pane)); }
    [[nodiscard]] int selectedRow() const { return grid()->currentRow(); }
    [[nodiscard]] QTableWidget *grid() const { return m_window->findChild<QTableWidget *>("grdModules"); }
    [[nodiscard]] QPushButton *button(const char *name) const
    {
        return m_window->findChild<QPushButton *>(name);
    }
    void click(int row) { grid()->setCurrentCell(row, 0); }

    OptionPageFactory m_factory;
    std::unique_ptr<frmOptionsWindow> m_window;
};

frmOptionsWindow &tst_frmOptionsWindow::open(const QStringList &panes, const QString &images)
{
    m_factory = OptionPageFactory();
    for (const QString &pane : panes)
        m_factory.Register(pane, [pane](QWidget *parent, const SubscribeClientPtr &) {
            auto *page = new ProbePage(parent);
            if (pane == QLatin1String("OnlineUI1"))
                (new QPushButton(page))->setObjectName("cmdNetworkSettings");
            return page;
        });
    m_window = std::make_unique<frmOptionsWindow>(m_factory);
    if (!images.isEmpty())
        m_window->SetImagesFolder(images);
    m_window->SetClient(m_client);
    m_window->show();
    return *m_window;
}

void tst_frmOptionsWindow::opensOnTheSavedModule_data()
{
    QTest::addColumn<QString>("saved");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("shown");
    QTest::newRow("nothing saved") << QString() << 0 << "General Settings";
    QTest::newRow("tags") << "TagsProp" << 5 << "Tags Settings";
    QTest::newRow("last row") << "ExportProp" << 8 << "OPML Export";
    QTest::newRow("display name is no key") << "Outlook Defaults" << 0 << "General Settings";
    QTest::newRow("case matters") << "tagsprop" << 0 << "General Settings";
}

void tst_frmOptionsWindow::opensOnTheSavedModule()
{
    QFETCH(QString, saved);
    QFETCH(int, row);
    if (!saved.isEmpty())
        SetConsumerSetting(*m_client, "CONFIGCONSUMER", "", "CurrentOptionsModule", saved);
    open();
    QCOMPARE(selectedRow(), row);
    QTEST(grid()->item(row, 0)->text(), "shown");
    QCOMPARE(m_window->CurrentModule(), row + 1);
    QVERIFY(page(kPanes.at(row))->isVisible());
    QVERIFY(!page("NetworkUI1")->isVisible());
    QCOMPARE(grid()->rowCount(), 9);
    QVERIFY(!button("cmdApply")->isEnabled());
    QCOMPARE((QStringList{button("cmdOK")->text(), button("cmdCancel")->text(), button("cmdApply")->text()}),
             (QStringList{GetLocalizedString(26), GetLocalizedString(27), GetLocalizedString(28)}));
    QVERIFY(m_prompts->asked.isEmpty());
}

void tst_frmOptionsWindow::clickOnAnotherRow_data()
{
    QTest::addColumn<bool>("changed");
    QTest::addColumn<int>("clicked");
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("asked");
    QTest::addColumn<int>("shownRow");
    QTest::addColumn<int>("applies");
    QTest::addColumn<int>("reloads");
    QTest::newRow("no changes: switch") << false << 3 << 0 << false << 3 << 0 << 0;
    QTest::newRow("same row: nothing") << true << 0 << 6 << false << 0 << 0 << 0;
    QTest::newRow("cancel keeps the page") << true << 3 << 2 << true << 0 << 0 << 0;
    QTest::newRow("no reloads the page") << true << 3 << 7 << true << 3 << 0 << 1;
    QTest::newRow("yes applies it") << true << 3 << 6 << true << 3 << 1 << 0;
}

void tst_frmOptionsWindow::clickOnAnotherRow()
{
    QFETCH(bool, changed);
    QFETCH(int, clicked);
    QFETCH(int, answer);
    QFETCH(bool, asked);
    QFETCH(int, shownRow);
    m_prompts->answer = answer;
    open();
    ProbePage *general = page("GeneralUI1");
    const int loadsBefore = general->loads;
    if (changed)
        general->Change();
    QCOMPARE(button("cmdApply")->isEnabled(), changed);
    click(clicked);

    QCOMPARE(m_prompts->texts(PromptKind::DoYouWantToSave),
             asked ? QStringList{"Save your changes now?"} : QStringList());
    if (asked)
        QCOMPARE(m_prompts->asked.first().extendedText,
                 "You have made settings changes to this module. You must\r\n"
                 "save these changes before moving on, or they will be lost.");
    QCOMPARE(selectedRow(), shownRow);
    QCOMPARE(m_window->CurrentModule(), shownRow + 1);
    QVERIFY(page(kPanes.at(shownRow))->isVisible());
    QCOMPARE(general->isVisible(), shownRow == 0);
    QTEST(general->applies, "applies");
    QTEST(general->loads - loadsBefore, "reloads");
    // Apply stays on only while the old page is still shown with its changes.
    QCOMPARE(button("cmdApply")->isEnabled(), changed && shownRow == 0);
}

void tst_frmOptionsWindow::closingAppliesOnlyUnappliedChanges_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("changed");
    QTest::addColumn<int>("applies");
    QTest::newRow("OK without changes") << "cmdOK" << false << 0;
    QTest::newRow("OK with changes") << "cmdOK" << true << 1;
    QTest::newRow("Cancel with changes") << "cmdCancel" << true << 0;
}

void tst_frmOptionsWindow::closingAppliesOnlyUnappliedChanges()
{
    QFETCH(QString, command);
    QFETCH(bool, changed);
    QFETCH(int, applies);
    open();
    click(5);
    if (changed)
        page("TagsUI1")->Change();
    button(command.toLatin1().constData())->click();

    QVERIFY(!m_window->isVisible());
    int total = 0;
    for (const QString &pane : kPanes) {
        total += page(pane)->applies;
        const bool listed = pane != QLatin1String("NetworkUI1");
        QCOMPARE(page(pane)->messages.contains("ModuleConfiguredCorrectly="), listed);
    }
    QCOMPARE(total, applies);
    QCOMPARE(page("TagsUI1")->applies, applies);
    QVERIFY(m_prompts->asked.isEmpty());
    QCOMPARE(GetConsumerSetting(*m_client, "CurrentOptionsModule", "", "CONFIGCONSUMER", ""), "TagsProp");
}

void tst_frmOptionsWindow::missingIconOrPageLeavesTheListWorking()
{
    // Icons for the first row only; no page for the tags module.
    QTemporaryDir images;
    QVERIFY(QFile::copy(QuillonDataFolder() + "/Images/GeneralProp.gif", images.filePath("GeneralProp.gif")));
    QStringList panes = kPanes;
    panes.removeAll("TagsUI1");
    open(panes, images.path());

    QCOMPARE(m_prompts->texts(PromptKind::Alert), QStringList{"element not found"});
    QVERIFY(!grid()->item(0, 0)->icon().isNull());
    QVERIFY(grid()->item(3, 0)->icon().isNull());
    QCOMPARE(grid()->item(5, 0)->text(), "Tags Settings");
    click(3);
    QVERIFY(page("PodcastingUI1")->isVisible());
    click(5);
    QCOMPARE(m_window->CurrentModule(), 6);
    QVERIFY(!page("PodcastingUI1")->isVisible());
    click(8);
    QVERIFY(page("ExportUI1")->isVisible());
}

void tst_frmOptionsWindow::applyWizardAndNetworkPageFromTheOpenWindow()
{
    open();
    click(1);
    ProbePage *online = page("OnlineUI1");
    ProbePage *network = page("NetworkUI1");
    // The network page opens from the online page and applies on its own.
    online->findChild<QPushButton *>("cmdNetworkSettings")->click();
    QVERIFY(network->isVisible() && !online->isVisible());
    network->Change();
    button("cmdApply")->click();
    QCOMPARE(network->applies, 1);
    QCOMPARE(online->applies, 0);
    Q_EMIT grid()->cellClicked(1, 0); // the selected row again: the module's own page
    QVERIFY(online->isVisible() && !network->isVisible());
    QCOMPARE(selectedRow(), 1);

    // A refused page still turns Apply off.
    online->safe = false;
    online->Change();
    button("cmdApply")->click();
    QCOMPARE(online->applies, 0);
    QVERIFY(online->Dirty());
    QVERIFY(!button("cmdApply")->isEnabled());

    // A page that does not validate is applied without being asked.
    click(2);
    ProbePage *browser = page("IEPluginUI1");
    browser->safe = false;
    browser->Change();
    button("cmdApply")->click();
    QCOMPARE(browser->applies, 1);

    // The add wizard runs over the window and reloads the current page.
    int wizards = 0;
    m_window->SetAddSubscription([&](QWidget *owner) {
        QCOMPARE(owner, m_window.get());
        ++wizards;
    });
    bool handled = true;
    m_window->EditConfiguration(0, handled);
    QVERIFY(!handled);
    QCOMPARE(wizards, 1);
    QVERIFY(browser->messages.contains("Reload=x"));
}

QTEST_MAIN(tst_frmOptionsWindow)
#include "tst_frmOptionsWindow.moc"
