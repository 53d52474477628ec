#include "ControlTexts.h"
#include "MainWindowTest.h"
#include "RegistrySettings.h"
#include "SubscriptionGridModel.h"
#include "TestFiles.h"
#include "commonUtils.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QMimeData>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>

using namespace categoriesUtils;

namespace {
const QString kConfig = "CONFIGCONSUMER";
} // namespace

class tst_frmMainWindow : public MainWindowTest
{
    Q_OBJECT
private Q_SLOTS:
    void startLogsItsStepsRunsFirstRunOnceAndRestoresTheWindow();
    void loadPlacesSubscriptionsUnderTheirCategories();
    void savedTreeReadInPartKeepsItsNodesAndText();
    void detailsPaneShowsWhatTheEngineKnows();
    void renameRefusesEmptyAndSiblingNames();
    void deleteAsksUnlessSuppressedOrCtrlHeld();
    void uncheckingDecidesWhetherArticlesGo();
    void droppedNodesMoveToTheirNewCategory();
    void pendingEditsCanKeepTheSelectionAndKeysDriveTheTree();
    void missingFeaturesSaySoHooksAreUsedAndCategoriesAreNamedInSequence();
};

void tst_frmMainWindow::startLogsItsStepsRunsFirstRunOnceAndRestoresTheWindow()
{
    int firstRuns = 0;
    f->open();
    const QString text = QString::fromUtf8(TestFiles::read(f->logPath()));
    qsizetype at = 0;
    for (const char *step :
         {"load localization strings", "Size Window", "ShowMainWindowDetails", "SetupComboBoxes",
          "LoadSubscriptionsList", "SetSelectedItem", "DoDisplayRefresh"}) {
        at = text.indexOf(QLatin1String(step), at);
        QVERIFY2(at >= 0, step);
    }
    QTRY_COMPARE(GetSetting("Quillon", "Quillon", "ConfigStartupComplete"), "1");
    QCOMPARE(GetSetting("Quillon", kConfig, "ConfigAppFirstRun"), "1");
    f->window->resize(760, 560);
    QTRY_COMPARE(f->setting(kConfig, QString(), "MainWindowWidth"), "760");
    QCOMPARE(f->setting(kConfig, QString(), "MainWindowHeight"), "560");
    f->window->findChild<QCheckBox *>("chkShowDetails")->setChecked(false);
    QCOMPARE(f->setting(kConfig, QString(), "ShowMainWindowDetails"), "0");

    // The second start finds the flag and leaves the set-up alone; size and details pane are kept.
    f->window.reset();
    MainWindowEntryPoints hooks;
    hooks.firstRunSetup = [&](QWidget *) { ++firstRuns; };
    frmMainWindow second;
    second.SetEntryPoints(hooks);
    second.SetClient(f->client);
    SaveSetting("Quillon", "Quillon", "ConfigStartupComplete", "0");
    second.show();
    // The check runs once the window is shown; its end is marked by the start-up flag.
    QTRY_COMPARE(GetSetting("Quillon", "Quillon", "ConfigStartupComplete"), "1");
    QCOMPARE(firstRuns, 0);
    QCOMPARE(second.size(), QSize(760, 560));
    QVERIFY(second.findChild<QWidget *>("fraDetails")->isHidden());
    SaveSetting("Quillon", kConfig, "ConfigAppFirstRun", "0");
    frmMainWindow third;
    third.SetEntryPoints(hooks);
    third.SetClient(f->client);
    third.show();
    QTRY_COMPARE(firstRuns, 1);
    QCOMPARE(f->client->LiveHandleCount(), 0);
}

void tst_frmMainWindow::loadPlacesSubscriptionsUnderTheirCategories()
{
    SetConsumerSetting(
        *f->other, kConfig, QString(), kSavedCategoriesKey,
        "TreeView(\r\n  Root(\r\n    BasicInfo(\r\n      Expanded(True)\r\n      Image(unchecked_folder)\r\n"
        "      Key(cat_7)\r\n      Text(News)\r\n      Bold(True)\r\n    )\r\n  )\r\n)");
    const qint32 phone = f->add("Phones", "News~~~Tech~~~Mobile", true);
    const qint32 top = f->add("Top", "");
    f->add("Daily", "News");
    const qint32 last = f->add("Alpha", "Sports");
    SetConsumerSetting(*f->other, "OLCONSUMER", SubscriptionSpecificsSection(top), "FOLDERTITLE",
                       "Front page");
    f->open();

    QCOMPARE(TreeOutline(f->window->Tree()),
             QStringList({"[ ] Front page", "[ ] News", "  [ ] Daily", "  [x] Tech", "    [x] Mobile",
                          "      [x] Phones", "[x] Sports", "  [ ] Alpha"}));
    QCOMPARE(f->node("News")->key(), "cat_7");
    // Keys made after the load never meet the saved ones.
    QVERIFY(KeyNumber(f->node("News~~~Tech")->key()) > 7);
    QVERIFY(f->view()->isExpanded(f->model()->IndexOf(f->node("News"))));
    QCOMPARE(f->window->SelectedSubscriptionId(), last);
    QVERIFY(f->window->SelectRowByID(phone));
    QCOMPARE(f->view()->CurrentNode(), f->node("News~~~Tech~~~Mobile~~~Phones"));
    QVERIFY(!f->window->SelectRowByID(-237237));
}

void tst_frmMainWindow::savedTreeReadInPartKeepsItsNodesAndText()
{
    CategoryTree saved;
    for (const char *name : {"Alpha", "Beta (draft", "Gamma"})
        saved.addNode(nullptr, MakeNodeKey(0), QString::fromLatin1(name));
    const QString text = SerializeCategoryTree(saved);
    SetConsumerSetting(*f->other, kConfig, QString(), kSavedCategoriesKey, text);
    f->add("Feed", "Gamma");
    f->open();

    // Alpha was read before the bad name; Gamma comes back from the engine's paths.
    QVERIFY(f->node("Alpha"));
    QVERIFY(f->node("Gamma"));
    QCOMPARE(f->prompts.asked.size(), 1);
    QCOMPARE(GetConsumerSetting(*f->other, kUnreadableCategoriesKey, QString(), kConfig, QString()), text);
    const QString resaved = GetConsumerSetting(*f->other, kSavedCategoriesKey, QString(), kConfig, QString());
    QVERIFY(resaved != text);
    QVERIFY(resaved.contains("Text(Alpha)"));
}

void tst_frmMainWindow::detailsPaneShowsWhatTheEngineKnows()
{
    f->open();
    QCOMPARE(f->label("lblDetailsHeading"), "Select a Subscription or Category");

    const qint32 fresh = f->add("Fresh", "News");
    const qint32 checked = f->add("Checked", "News~~~Deep");
    HandleGuard values(*f->other, f->other->NewBag());
    f->other->SetStringValue(values.get(), "LASTUPDATESTATUS", "OK");
    f->other->SetStringValue(values.get(), "LastDateCheck", "2024-05-01T12:00:00Z");
    f->other->UpdateItem("NEWS", checked, values.get());
    f->window->DoDisplayRefresh();

    QVERIFY(f->window->SelectRowByID(fresh));
    QCOMPARE(ControlTexts::Shown(*f->window, {"lblDetailsHeading", "lblDetailsStatus", "lblDetailsLastCheck",
                                              "lblDetailsNextCheck", "lblDetailsUrl"}),
             (QStringList{"Details for 'Fresh'", "n/a", "Never", "Never", "http://127.0.0.1:9/Fresh"}));

    QVERIFY(f->window->SelectRowByID(checked));
    QCOMPARE(f->label("lblDetailsStatus"), "OK");
    const QDateTime when = QDateTime::fromString("2024-05-01T12:00:00Z", Qt::ISODate).toLocalTime();
    QCOMPARE(f->label("lblDetailsLastCheck"), QLocale().toString(when, QLocale::ShortFormat));

    f->select("News");
    auto *stack = f->window->findChild<QStackedWidget *>("stkDetails");
    QCOMPARE(stack->currentWidget()->objectName(), "picCategoryDetails");
    QCOMPARE(ControlTexts::Shown(*f->window, {"lblDetailsHeading", "lblSubs", "lblCatReadArticles"}),
             (QStringList{"Details for 'News'", "2", "0"}));

    // Titles and statuses from feeds and servers are shown as written, never drawn.
    const QString markup = "<b>Loud</b><img src=\"x\">";
    const qint32 hostile = f->add(markup, "News");
    f->other->SetStringValue(values.get(), "LASTUPDATESTATUS", "Error: HTTP 500 <a href=\"x\">Oops</a>");
    f->other->UpdateItem("NEWS", hostile, values.get());
    f->window->DoDisplayRefresh();
    QVERIFY(f->window->SelectRowByID(hostile));
    QCOMPARE(f->label("lblDetailsHeading"), QStringLiteral("Details for '%1'").arg(markup));
    QCOMPARE(f->label("lblDetailsStatus"), "Error: HTTP 500 <a href=\"x\">Oops</a>");
    for (const QLabel *shown : f->window->findChildren<QLabel *>())
        QCOMPARE(shown->textFormat(), Qt::PlainText);
}

void tst_frmMainWindow::renameRefusesEmptyAndSiblingNames()
{
    const qint32 feed = f->add("Feed", "Sports");
    f->add("Other", "News");
    f->open();
    const QModelIndex sports = f->model()->IndexOf(f->node("Sports"));

    QVERIFY(!f->model()->setData(sports, "News"));
    QVERIFY(!f->model()->setData(sports, ""));
    QCOMPARE(
        f->prompts.texts(PromptKind::Alert),
        QStringList({"Category with that name already exists on this level.  Please use a different name.",
                     "Please enter some text for the new category."}));
    QVERIFY(f->node("Sports"));
    // Case makes a different name; the settings tab follows at once.
    f->select("Sports");
    const auto caption = [this] { return f->window->findChild<QTabWidget *>("tabSettingsTabs")->tabText(0); };
    f->model()->setData(sports, "news");
    QVERIFY(f->node("news~~~Feed"));
    QVERIFY(f->setting(kConfig, QString(), kSavedCategoriesKey).contains("Text(news)"));
    QCOMPARE(caption(), "Settings for 'news'");
    // A category's Title box renames it too, and names no mail folder.
    f->window->findChild<QLineEdit *>("txtSubTitle")->setText("World");
    f->button("cmdApply")->click();
    QVERIFY(f->node("World~~~Feed") && caption() == "Settings for 'World'");
    QCOMPARE(f->setting("OLCONSUMER", SubscriptionSpecificsSection(feed), "FOLDERTITLE"), "-237237");

    // A subscription's new name becomes its Outlook folder title.
    f->model()->setData(f->model()->IndexOf(f->node("World~~~Feed")), "Alpha feed");
    QCOMPARE(f->setting("OLCONSUMER", SubscriptionSpecificsSection(feed), "FOLDERTITLE"), "Alpha feed");
    f->window->DoDisplayRefresh();
    QVERIFY(f->node("World~~~Alpha feed"));
}

void tst_frmMainWindow::deleteAsksUnlessSuppressedOrCtrlHeld()
{
    const qint32 first = f->add("First");
    const qint32 second = f->add("Second");
    const qint32 third = f->add("Third", "Box");
    const qint32 fourth = f->add("Fourth", "Box~~~Inner");
    f->open();
    const auto engineIds = [this] { return EngineCalls::ConsumerItems(*f->other, "*"); };

    QVERIFY(f->window->SelectRowByID(first));
    f->prompts.answers[int(PromptKind::YesNo)] = {7};
    f->button("cmdDelete")->click();
    QCOMPARE(f->prompts.texts(PromptKind::YesNo),
             QStringList({"Are you sure you want to delete the selected subscription(s)?"}));
    QCOMPARE(engineIds(), QList<qint32>({first, second, third, fourth}));

    PutRegistrySetting("Quill On", kConfig, "SupressDeleteWarnings", "1");
    f->button("cmdDelete")->click();
    QCOMPARE(engineIds(), QList<qint32>({second, third, fourth}));
    PutRegistrySetting("Quill On", kConfig, "SupressDeleteWarnings", "0");

    f->modifiers = Qt::ControlModifier;
    QVERIFY(f->window->SelectRowByID(second));
    f->button("cmdDelete")->click();
    QCOMPARE(f->prompts.texts(PromptKind::YesNo).size(), 1);
    QCOMPARE(f->window->StatusText(), "Removing: Second");
    QTRY_COMPARE(f->window->StatusText(), QString()); // once the engine's answer is in
    f->modifiers = Qt::NoModifier;

    // A category goes with everything under it; the node before it is selected then.
    f->select("Box");
    f->prompts.answers[int(PromptKind::YesNo)] = {6};
    f->button("cmdDelete")->click();
    QCOMPARE(f->prompts.texts(PromptKind::YesNo).last(),
             "Are you sure you want to delete this category and all it's subscriptions?");
    QCOMPARE(engineIds(), QList<qint32>());
    QCOMPARE(f->window->Tree().count(), 0);
    QVERIFY(!f->setting(kConfig, QString(), kSavedCategoriesKey).contains("Box"));
    QCOMPARE(f->label("lblDetailsHeading"), "Select a Subscription or Category");
}

void tst_frmMainWindow::uncheckingDecidesWhetherArticlesGo()
{
    const qint32 kept = f->add("Kept", "Full~~~Deep", true);
    const qint32 dropped = f->add("Dropped", "", true);
    f->open();
    f->button("cmdNewCategory")->click();
    const CategoryNode *empty = f->view()->CurrentNode();

    // A category without children needs no question: its answer is "remove".
    emit f->view()->CheckToggleRequested(const_cast<CategoryNode *>(empty));
    QCOMPARE(empty->image(), "unchecked_folder");
    QVERIFY(f->prompts.asked.isEmpty());
    QVERIFY(f->binds.isEmpty());

    f->prompts.answers[int(PromptKind::YesNo)] = {6, 7};
    emit f->view()->CheckToggleRequested(f->node("Dropped"));
    emit f->view()->CheckToggleRequested(f->node("Full"));
    QCOMPARE(f->prompts.texts(PromptKind::YesNo),
             QStringList({"Do you want to remove the subscription's articles from Outlook?",
                          "Do you want to remove this category's articles from Outlook?"}));
    QCOMPARE(f->binds, (QList<std::pair<qint32, qint32>>{{dropped, 0}, {kept, 1}}));
    QCOMPARE(f->node("Full~~~Deep~~~Kept")->image(), "unchecked");
    QCOMPARE(f->delivered(), QList<qint32>());

    // Checking asks nothing; a standing answer other than 2 is used as it is.
    f->binds.clear();
    emit f->view()->CheckToggleRequested(f->node("Full"));
    SetConsumerSetting(*f->other, "OLCONSUMER", "OutlookDefaults", "SubDeletedInConfig", "1");
    emit f->view()->CheckToggleRequested(f->node("Full~~~Deep~~~Kept"));
    QCOMPARE(f->node("Full~~~Deep")->image(), "checked_folder"); // a parent keeps what was clicked
    QCOMPARE(f->binds, (QList<std::pair<qint32, qint32>>{{kept, 1}, {kept, 1}}));
    QCOMPARE(f->prompts.texts(PromptKind::YesNo).size(), 2);
    QVERIFY(f->setting(kConfig, QString(), kSavedCategoriesKey).contains("Image(checked_folder)"));
}

void tst_frmMainWindow::droppedNodesMoveToTheirNewCategory()
{
    const qint32 loose = f->add("Loose");
    const qint32 inside = f->add("Inside", "News~~~Tech~~~Deep");
    f->add("Anchor", "Sports");
    f->open();
    f->view()->resize(300, 400);
    f->view()->expandAll();
    const auto dropAt = [this](CategoryNode *dragged, CategoryNode *onto) {
        QMimeData mime;
        mime.setData(CategoryTreeModel::kNodeMimeType, dragged->key().toUtf8());
        const QPoint at = onto ? f->view()->visualRect(f->model()->IndexOf(onto)).center() : QPoint(5, 390);
        QDragEnterEvent enter(at, Qt::MoveAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(f->view()->viewport(), &enter);
        QDragMoveEvent move(at, Qt::MoveAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(f->view()->viewport(), &move);
        const bool accepted = move.isAccepted();
        QDropEvent drop(at, Qt::MoveAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(f->view()->viewport(), &drop);
        return accepted;
    };

    // Onto a subscription means into its category.
    QVERIFY(dropAt(f->node("Loose"), f->node("Sports~~~Anchor")));
    QVERIFY(f->node("Sports~~~Loose"));
    QCOMPARE(f->view()->CurrentNode(), f->node("Sports~~~Loose"));
    HandleGuard moved(*f->other, f->other->GetItemBag("NEWS", loose, 0));
    QCOMPARE(f->other->GetStringValue(moved.get(), "CATEGORY"), "Sports");

    // A whole category carries the paths of the subscriptions at any depth below it along.
    QVERIFY(dropAt(f->node("News~~~Tech"), f->node("Sports")));
    HandleGuard carried(*f->other, f->other->GetItemBag("NEWS", inside, 0));
    QCOMPARE(f->other->GetStringValue(carried.get(), "CATEGORY"), "Sports~~~Tech~~~Deep");
    QVERIFY(f->setting(kConfig, QString(), kSavedCategoriesKey).contains("Text(Tech)"));

    // Into itself, or where it already is, is refused.
    QVERIFY(!dropAt(f->node("Sports"), f->node("Sports~~~Tech")));
    QVERIFY(!dropAt(f->node("Sports~~~Tech"), f->node("Sports~~~Anchor")));
    // Moved nodes keep their check, and a category its look.
    QCOMPARE(TreeOutline(f->window->Tree()),
             QStringList({"[x] News", "[x] Sports", "  [ ] Anchor", "  [ ] Loose", "  [x] Tech",
                          "    [x] Deep", "      [ ] Inside"}));
    QVERIFY(f->node("Sports~~~Tech")->bold());
}

void tst_frmMainWindow::pendingEditsCanKeepTheSelectionAndKeysDriveTheTree()
{
    const qint32 first = f->add("First", "", true);
    const qint32 second = f->add("Second");
    f->open();
    QVERIFY(f->window->SelectRowByID(first));
    f->window->findChild<QLineEdit *>("txtSubTitle")->setText("Renamed");
    QVERIFY(f->button("cmdApply")->isEnabled());

    f->prompts.answers[int(PromptKind::DoYouWantToSave)] = {2};
    f->view()->setCurrentIndex(f->model()->IndexOf(f->node("Second")));
    QCOMPARE(f->window->SelectedSubscriptionId(), first);
    QCOMPARE(f->prompts.texts(PromptKind::DoYouWantToSave).size(), 1);

    // Apply renames the node as a label edit would, in the list beside the tree too.
    f->button("cmdApply")->click();
    QVERIFY(f->node("Renamed"));
    const QAbstractItemModel *grid = f->window->findChild<QTableView *>("grdSubscriptions")->model();
    QCOMPARE(
        grid->match(grid->index(0, SubscriptionGridModel::ColumnTitle), Qt::DisplayRole, "Renamed").size(),
        1);
    QVERIFY(!f->button("cmdApply")->isEnabled());
    f->view()->setCurrentIndex(f->model()->IndexOf(f->node("Second")));
    QCOMPARE(f->window->SelectedSubscriptionId(), second);
    QCOMPARE(f->prompts.texts(PromptKind::DoYouWantToSave).size(), 1);

    // The keyboard checks, renames and deletes.
    QVERIFY(f->window->SelectRowByID(first));
    f->view()->setFocus();
    QTest::keyClick(f->view(), Qt::Key_Space);
    QCOMPARE(f->node("Renamed")->image(), "unchecked");
    QTest::keyClick(f->view(), Qt::Key_F2);
    QVERIFY(f->view()->IsEditingLabel());
    QTest::keyClick(f->view()->focusWidget(), Qt::Key_Escape);
    f->modifiers = Qt::ControlModifier;
    QTest::keyClick(f->view(), Qt::Key_Delete);
    QVERIFY(!f->node("Renamed"));
    QCOMPARE(f->view()->CurrentNode(), f->node("Second"));

    // Timer1 scrolls only while a drag hovers near the top or bottom edge.
    f->view()->resize(200, 200);
    QMimeData mime;
    mime.setData(CategoryTreeModel::kNodeMimeType, f->node("Second")->key().toUtf8());
    const auto hover = [&](int y) {
        QDragMoveEvent move(QPoint(20, y), Qt::MoveAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(f->view()->viewport(), &move);
        return f->view()->ScrollDirection();
    };
    QDragEnterEvent enter(QPoint(20, 20), Qt::MoveAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(f->view()->viewport(), &enter);
    auto *timer1 = f->view()->findChild<QTimer *>("Timer1");
    QCOMPARE(hover(f->view()->viewport()->height() - 3), 1);
    QVERIFY(timer1->isActive());
    QCOMPARE(hover(2), -1);
    QCOMPARE(hover(f->view()->viewport()->height() / 2), 0);
    QVERIFY(!timer1->isActive());
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(f->view()->viewport(), &leave);
}

void tst_frmMainWindow::missingFeaturesSaySoHooksAreUsedAndCategoriesAreNamedInSequence()
{
    f->add("Feed", "News");
    f->open();
    f->button("cmdAdd")->click();
    f->button("cmdPrefs")->click();
    f->button("cmdPreviewThisFeed")->click();
    f->button("cmdFetchSubsNow")->click();
    QCOMPARE(f->prompts.texts(PromptKind::Alert), QStringList({"Adding subscriptions is not available yet.",
                                                               "The options window is not available yet.",
                                                               "The feed preview is not available yet."}));

    QStringList called;
    MainWindowEntryPoints hooks;
    hooks.addSubscription = [&](QWidget *) { called << "add"; };
    hooks.previewFeed = [&](QWidget *, const QString &url) { called << url; };
    hooks.importOpml = [&](QWidget *, const QString &path) { called << path; };
    f->window->SetEntryPoints(hooks);
    f->button("cmdAdd")->click();
    f->button("cmdPreviewThisFeed")->click();
    f->deliver("ImportOPML", {{"PATH", "/tmp/feeds.opml"}});
    QCOMPARE(called, QStringList({"add", "http://127.0.0.1:9/Feed", "/tmp/feeds.opml"}));

    // New categories are named in sequence.
    for (int i = 0; i < 3; ++i) {
        f->select("News");
        f->button("cmdNewCategory")->click();
        QVERIFY(f->view()->IsEditingLabel());
    }
    QCOMPARE(TreeOutline(f->window->Tree()),
             QStringList({"[x] News", "  [ ] Feed", "  [x] New Category", "  [x] New Category (1)",
                          "  [x] New Category (2)"}));
    // Beside a selected subscription means under its category; the saved tree has them all.
    QVERIFY(f->window->SelectRowByID(1));
    f->button("cmdNewCategory")->click();
    QVERIFY(f->node("News~~~New Category (3)"));
    QVERIFY(f->setting(kConfig, QString(), kSavedCategoriesKey).contains("Text(New Category (3))"));
}

QTEST_MAIN(tst_frmMainWindow)
#include "tst_frmMainWindow.moc"
