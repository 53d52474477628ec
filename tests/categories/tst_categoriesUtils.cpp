#include "PromptRecorder.h"
#include "categoriesUtils.h"

#include <QTest>

using namespace categoriesUtils;

namespace {
CategoryNode *category(CategoryTree &tree, CategoryNode *parent, const QString &text,
                       const QString &image = "checked_folder")
{
    CategoryNode *node = tree.addNode(parent, MakeNodeKey(0), text, image);
    InitCategoryNode(*node);
    return node;
}

CategoryNode *subscription(CategoryTree &tree, CategoryNode *parent, const QString &text, int id,
                           const QString &image = "checked")
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
    void findsAndCollectsInChildOrder();
};

void tst_categoriesUtils::addsMissingLevelsOfAPath()
{
    CategoryTree tree;
    CategoryNode *news = category(tree, nullptr, "News", "unchecked_folder");
    CategoryNode *mobile = AddCategoryFromSubscription(tree, "News~~~Technology~~~Mobile");
    QCOMPARE(mobile->parent()->parent(), news);
    QVERIFY(mobile->bold());
    QCOMPARE(mobile->image(), "checked_folder");
    QCOMPARE(AddCategoryFromSubscription(tree, "News~~~Technology~~~Mobile"), mobile);
    QVERIFY(!AddCategoryFromSubscription(tree, QString()));
    QCOMPARE(tree.count(), 3);
    QCOMPARE(PathDisplayText(mobile->fullPath()), "    + Mobile");

    // Keys read back from a saved tree may be the ones the running counter gives next.
    PromptRecorder prompts;
    tree.addNode(nullptr, QStringLiteral("cat_%1").arg(KeyNumber(MakeNodeKey(0)) + 1), "Saved");
    QVERIFY(!AddCategoryFromSubscription(tree, "News~~~Other"));
    QCOMPARE(prompts.texts(), QStringList{"Error in AddCategoryFromSubscription"});
}

void tst_categoriesUtils::findsAndCollectsInChildOrder()
{
    CategoryTree tree;
    CategoryNode *top = category(tree, nullptr, "Top");
    category(tree, nullptr, "top");
    subscription(tree, top, "Zulu", 9);
    CategoryNode *bravo = category(tree, top, "Bravo");
    subscription(tree, bravo, "Inside", 7);
    category(tree, bravo, "Deeper");
    CategoryNode *alpha = subscription(tree, top, "Alpha", 8);
    QCOMPARE(CollectSubscriptionIDs(*top), QStringList({"8", "7", "9"}));
    QStringList paths;
    for (const CategoryPath &entry : CollectCategoryPaths(tree, nullptr))
        paths << entry.path;
    QCOMPARE(paths, QStringList({"Top", "Top~~~Bravo", "Top~~~Bravo~~~Deeper", "top"}));

    // Texts compare with case; from a subscription only it and its later siblings count.
    QVERIFY(!FindSiblingByText(tree, nullptr, "TOP").found);
    QCOMPARE(FindSiblingByText(tree, nullptr, "top").kind, "Category");
    QCOMPARE(FindSiblingByText(tree, top, "Zulu").kind, "Subscription");
    QVERIFY(!FindSiblingByText(tree, tree.findFirstByPath("Top~~~Zulu"), "Alpha").found);
    QVERIFY(FindSiblingByText(tree, alpha, "Bravo").found);

    // Nothing is copied into itself.
    QVERIFY(!CopyNodeTo(tree, *top, bravo));
    QCOMPARE(tree.count(), 7);
}

QTEST_GUILESS_MAIN(tst_categoriesUtils)
#include "tst_categoriesUtils.moc"
