#include "AddSubscriptionRequests.h"
#include "CategoryChoices.h"
#include "FeedListModel.h"
#include "PendingActions.h"
#include "SearchTab.h"
#include "TestRows.h"

#include <QComboBox>
#include <QSignalSpy>
#include <QTest>

// The wizard's rules that need no engine: the pending-changes question, the queue the list
// grids fill, the category drop-downs, the import address and the search range.
class tst_PendingActions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void questionNamesTheCountsAsWritten_data();
    void questionNamesTheCountsAsWritten();
    void togglingQueuesAndUnqueues();
    void gridActionCellFollowsTheCheck();
    void categoryPositionsAndAddresses();
};

void tst_PendingActions::questionNamesTheCountsAsWritten_data()
{
    QTest::addColumn<QString>("activity");
    QTest::addColumn<int>("adds");
    QTest::addColumn<int>("removals");
    QTest::addColumn<QString>("sentence");
    QTest::addColumn<QString>("question");
    QTest::addColumn<QString>("kind");
    const QString one = QStringLiteral("Would you like to apply this change?");
    const QString many = QStringLiteral("Would you like to apply these changes?");
    const QString adds = "adds", both = "adds & removals", removals = "removals";
    row("one add", "Browsing", 1, 0, "While Browsing, you have indicated 1 feed to be added.", one, adds);
    row("three adds", "Importing", 3, 0, "While Importing, you have indicated 3Feeds to be added.", one,
        adds);
    row("adds and removals", "Browsing", 2, 4,
        "While Browsing, you have indicated 2Feeds to add, and 4Feeds to remove.", many, both);
    // One removal is written into the adds text, on purpose.
    row("adds and one removal", "Browsing", 5, 1,
        "While Browsing, you have indicated 1 feed to add, and to remove.", many, both);
    row("removals only", "Importing", 0, 2, "While Importing, you have indicated 2Feeds to be removed.", one,
        removals);
    row("one removal only", "Browsing", 0, 1, "While Browsing, you have indicated to be removed.", one,
        removals);
}

void tst_PendingActions::questionNamesTheCountsAsWritten()
{
    QFETCH(QString, activity);
    QFETCH(int, adds);
    QFETCH(int, removals);
    const PendingActions::Question q = PendingActions::BuildQuestion(activity, {adds, removals});
    QTEST(q.sentence, "sentence");
    QTEST(q.question, "question");
    QTEST(q.kind, "kind");
}

void tst_PendingActions::togglingQueuesAndUnqueues()
{
    PendingActions pending;
    QVERIFY(!pending.Exists());
    QCOMPARE(pending.CountActions().any(), false);

    const PendingActions::Add a{
        QStringLiteral("http://a/"), QStringLiteral("A"), {QStringLiteral("News")}, true};
    const PendingActions::Add b{QStringLiteral("http://b/"), QStringLiteral("B"), {}, true};
    pending.RowToggled(a, false, 0, true);
    QVERIFY(pending.Exists());
    pending.RowToggled(b, true, 17, false); // a subscribed feed unchecked
    QCOMPARE(pending.CountActions().adds, 1);
    QCOMPARE(pending.CountActions().removals, 1);
    QCOMPARE(pending.QueuedRemovals().first().subscriptionId, 17);

    // Toggling back takes each out of the queue; checking again puts it back once.
    pending.RowToggled(a, false, 0, false);
    pending.RowToggled(b, true, 17, true);
    QVERIFY(!pending.CountActions().any());
    pending.RowToggled(a, false, 0, true);
    pending.RowToggled(a, false, 0, true);
    QCOMPARE(pending.QueuedAdds().size(), 1);
    QCOMPARE(pending.QueuedAdds().first().folders, QStringList{QStringLiteral("News")});

    pending.Reset();
    QVERIFY(!pending.Exists());
    // "Automatic" files a feed under the folders above it.
    QCOMPARE((QStringList{PendingActions::CategoryFor("Automatic", {"A", "B"}),
                          PendingActions::CategoryFor("Work", {"A"}),
                          PendingActions::CategoryFor(QString(), {"A"})}),
             (QStringList{"A~~~B", "Work", QString()}));
}

void tst_PendingActions::gridActionCellFollowsTheCheck()
{
    FeedListModel model;
    QStandardItem *folder = model.AddFolder(nullptr, QStringLiteral("Tech\tNews"), 0, 4);
    const QModelIndex fresh =
        model.AddFeed(folder, QString(), QStringLiteral("http://f/"), QStringLiteral("a\tb"), 1, 0)->index();
    const QModelIndex held =
        model.AddFeed(folder, QStringLiteral("Held"), QStringLiteral("http://h/"), {}, 1, 9)->index();
    QCOMPARE(model.TitleOf(fresh), QStringLiteral("<no title>"));
    QCOMPARE(model.DescriptionOf(fresh), QStringLiteral("a  b"));
    QCOMPARE(model.FoldersAbove(fresh), QStringList{QStringLiteral("Tech  News")});
    QVERIFY(model.IsChecked(held) && model.IsSubscribed(held) && model.SubscriptionIdOf(held) == 9);

    QSignalSpy toggled(&model, &FeedListModel::RowToggled);
    const auto action = [&](const QModelIndex &i) {
        return i.siblingAtColumn(FeedListModel::Add).data().toString();
    };
    QCOMPARE(action(fresh), QStringLiteral(" "));
    model.Toggle(fresh);
    QCOMPARE(action(fresh), QStringLiteral("Add"));
    model.Toggle(held);
    QCOMPARE(action(held), QStringLiteral("Remove"));
    model.Toggle(held);
    QCOMPARE(action(held), QStringLiteral(" "));
    QCOMPARE(toggled.size(), 3);
    model.SetChecked(folder->index(), true); // folders have no check
    QCOMPARE(toggled.size(), 3);
    QCOMPARE(model.FeedRows().size(), 2);
}

void tst_PendingActions::categoryPositionsAndAddresses()
{
    const QStringList categories{QStringLiteral("Work"), QStringLiteral("Work~~~Tools")};
    QComboBox box;
    CategoryChoices::Fill(box, categories);
    QCOMPARE((QStringList{box.itemText(0), box.itemText(1), box.itemText(4), QString::number(box.count())}),
             (QStringList{"Automatic", "New Subscriptions", "Work~~~Tools", "5"}));
    QStringList chosen;
    for (int row : {0, 2, 3, 4, 5})
        chosen << CategoryChoices::CategoryAt(row, categories);
    QCOMPARE(chosen, (QStringList{"Automatic", QString(), "Work", "Work~~~Tools", QString()}));

    QCOMPARE(AddSubscriptionRequests::LoopbackUrl(QStringLiteral("C:\\My Feeds\\a&b #1.opml")),
             QStringLiteral("file://loopback/C:/My%20Feeds/a&b%20#1.opml"));

    QCOMPARE(SearchTab::RangeText({"g", "t", "20", "1", "100"}), QStringLiteral("( 1 to 100 )"));
    QCOMPARE(SearchTab::RangeText({"g", "t", "-237237", "-237237", "-237237"}), QStringLiteral("n/a"));
}

QTEST_MAIN(tst_PendingActions)
#include "tst_PendingActions.moc"
