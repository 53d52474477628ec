#include "PromptRecorder.h"
#include "categoriesUtils.h"

#include <QTest>

using namespace categoriesUtils;

namespace {
CategoryNode *category(CategoryTree &tree, CategoryNode *parent, const QString &text,
                       const QString &image = QStringLiteral("checked_folder"))
{
    CategoryNode *node = tree.addNode(parent, MakeNodeKey(0), text, image);
    InitCategoryNode(*node);
    return node;
}

CategoryNode *subscription(CategoryTree &tree, CategoryNode *parent, const QString &text, int id,
                           const QString &image = QStringLiteral("checked"))
{
    CategoryNode *node = tree.addNode(parent, MakeNodeKey(1), text, image);
    node->setTag(QString::number(id));
    return node;
}
} // namespace

class tst_categoriesUtils : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void addsMissingLevelsOfAPath();
    void clicksSpreadDownwardsOnly();
    void findsAndCollectsInChildOrder();
    void copyCarriesChildrenWithSwappedKeyPrefixes();
};

void tst_categoriesUtils::addsMissingLevelsOfAPath()
{
    CategoryTree tree;
    CategoryNode *news = category(tree, nullptr, QStringLiteral("News"), QStringLiteral("unchecked_folder"));
    CategoryNode *mobile = AddCategoryFromSubscription(tree, QStringLiteral("News~~~Technology~~~Mobile"));
    QCOMPARE(mobile->parent()->parent(), news);
    QVERIFY(mobile->bold());
    QCOMPARE(mobile->image(), QStringLiteral("checked_folder"));
    QCOMPARE(AddCategoryFromSubscription(tree, QStringLiteral("News~~~Technology~~~Mobile")), mobile);
    QVERIFY(!AddCategoryFromSubscription(tree, QString()));
    QCOMPARE(tree.count(), 3);
    QCOMPARE(PathDisplayText(mobile->fullPath()), QStringLiteral("    + Mobile"));

    // Keys read back from a saved tree may be the ones the running counter gives next.
    PromptRecorder prompts;
    tree.addNode(nullptr, QStringLiteral("cat_%1").arg(KeyNumber(MakeNodeKey(0)) + 1),
                 QStringLiteral("Saved"));
    QVERIFY(!AddCategoryFromSubscription(tree, QStringLiteral("News~~~Other")));
    QCOMPARE(prompts.texts(), QStringList{QStringLiteral("Error in AddCategoryFromSubscription")});
}

void tst_categoriesUtils::clicksSpreadDownwardsOnly()
{
    CategoryTree tree;
    CategoryNode *top = category(tree, nullptr, QStringLiteral("Top"), QStringLiteral("partial_folder"));
    CategoryNode *inner = category(tree, top, QStringLiteral("Inner"), QStringLiteral("unchecked_folder"));
    CategoryNode *feed = subscription(tree, inner, QStringLiteral("Feed"), 3, QStringLiteral("unchecked"));
    QCOMPARE(ToggleCheck(*top), QStringLiteral("checked_folder"));
    QCOMPARE(inner->image(), QStringLiteral("checked_folder"));
    QCOMPARE(feed->image(), QStringLiteral("checked"));

    // Unchecking a child never touches its parent.
    QCOMPARE(ToggleCheck(*feed), QStringLiteral("unchecked"));
    QCOMPARE(ToggleCheck(*inner), QStringLiteral("unchecked_folder"));
    QCOMPARE(top->image(), QStringLiteral("checked_folder"));
    QCOMPARE(feed->image(), QStringLiteral("unchecked"));
}

void tst_categoriesUtils::findsAndCollectsInChildOrder()
{
    CategoryTree tree;
    CategoryNode *top = category(tree, nullptr, QStringLiteral("Top"));
    category(tree, nullptr, QStringLiteral("top"));
    subscription(tree, top, QStringLiteral("Zulu"), 9);
    CategoryNode *bravo = category(tree, top, QStringLiteral("Bravo"));
    subscription(tree, bravo, QStringLiteral("Inside"), 7);
    category(tree, bravo, QStringLiteral("Deeper"));
    CategoryNode *alpha = subscription(tree, top, QStringLiteral("Alpha"), 8);
    QCOMPARE(CollectSubscriptionIDs(*top), QStringList({"8", "7", "9"}));
    QStringList paths;
    for (const CategoryPath &entry : CollectCategoryPaths(tree, nullptr))
        paths << entry.path;
    QCOMPARE(paths, QStringList({"Top", "Top~~~Bravo", "Top~~~Bravo~~~Deeper", "top"}));

    // Texts compare with case; from a subscription only it and its later siblings count.
    QVERIFY(!FindSiblingByText(tree, nullptr, QStringLiteral("TOP")).found);
    QCOMPARE(FindSiblingByText(tree, nullptr, QStringLiteral("top")).kind, QStringLiteral("Category"));
    QCOMPARE(FindSiblingByText(tree, top, QStringLiteral("Zulu")).kind, QStringLiteral("Subscription"));
    QVERIFY(!FindSiblingByText(tree, tree.findFirstByPath("Top~~~Zulu"), QStringLiteral("Alpha")).found);
    QVERIFY(FindSiblingByText(tree, alpha, QStringLiteral("Bravo")).found);
}

void tst_categoriesUtils::copyCarriesChildrenWithSwappedKeyPrefixes()
{
    CategoryTree tree;
    CategoryNode *from = category(tree, nullptr, QStringLiteral("From"));
    CategoryNode *to = category(tree, nullptr, QStringLiteral("To"));
    CategoryNode *moving = category(tree, from, QStringLiteral("Moving"), QStringLiteral("unchecked_folder"));
    CategoryNode *feed = subscription(tree, moving, QStringLiteral("Feed"), 11);
    category(tree, moving, QStringLiteral("Sub"));

    QVERIFY(!CopyNodeTo(tree, *moving, feed));
    CategoryNode *copy = CopyNodeTo(tree, *moving, to);
    QVERIFY(copy);
    QVERIFY(copy->key().startsWith(QStringLiteral("sub_")));
    QCOMPARE(copy->image(), QStringLiteral("unchecked_folder"));
    QCOMPARE(copy->childCount(), 2);
    QCOMPARE(from->childCount(), 0);
    QCOMPARE(feed->fullPath(), QStringLiteral("To~~~Moving~~~Feed"));
    QCOMPARE(tree.count(), 5);

    CategoryNode *feedCopy = CopyNodeTo(tree, *feed, nullptr);
    QVERIFY(feedCopy->key().startsWith(QStringLiteral("cat_")));
    QCOMPARE(feedCopy->tag(), QStringLiteral("11"));
    QCOMPARE(FindNodeByPath(tree, QStringLiteral("Feed")), feedCopy);
}

QTEST_GUILESS_MAIN(tst_categoriesUtils)
#include "tst_categoriesUtils.moc"
