#include "CategoryTree.h"

#include <QLocale>
#include <QRandomGenerator>
#include <QTest>

#include <vector>

namespace {
// Checks each signal's rows against the tree, as a view adapter relies on them.
void checkSignalRows(CategoryTree &tree, int &mismatches)
{
    auto pending = std::make_shared<QPair<CategoryNode *, int>>();
    const auto expect = [&mismatches](bool ok) { mismatches += ok ? 0 : 1; };
    QObject::connect(&tree, &CategoryTree::nodeAboutToBeAdded, [pending](CategoryNode *parent, int row) {
        *pending = {parent, row};
    });
    QObject::connect(&tree, &CategoryTree::nodeAdded, [=](CategoryNode *node) {
        expect(node->parent() == pending->first && node->row() == pending->second);
    });
    QObject::connect(&tree, &CategoryTree::nodeAboutToBeRemoved, [=](CategoryNode *node) {
        expect(node->row() >= 0);
        *pending = {node->parent(), node->row()};
    });
    QObject::connect(&tree, &CategoryTree::nodeRemoved, [=](CategoryNode *parent, int row) {
        expect(parent == pending->first && row == pending->second);
    });
    QObject::connect(&tree, &CategoryTree::nodeAboutToBeMoved,
                     [=](CategoryNode *node, CategoryNode *newParent, int row) {
                         // The old place must still be readable.
                         expect(node->row() >= 0);
                         *pending = {newParent, row};
                     });
    QObject::connect(&tree, &CategoryTree::nodeMoved, [=](CategoryNode *node) {
        expect(node->parent() == pending->first && node->row() == pending->second);
    });
}
} // namespace

class tst_CategoryTree : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::French, QLocale::France)); }
    void keepsSiblingsSortedAndCaseDistinct();
    void staysConsistentUnderRandomEdits();
};

void tst_CategoryTree::keepsSiblingsSortedAndCaseDistinct()
{
    CategoryTree tree;
    for (const char *text : {"news", "Zebra", "apple", "News", "Éclair"})
        QVERIFY(tree.addNode(nullptr, QString(), QString::fromUtf8(text)));
    QStringList texts;
    for (int i = 0; i < tree.topLevelCount(); ++i)
        texts << tree.topLevelNode(i)->text();
    QCOMPARE(texts, QStringList({"apple", "Éclair", "News", "news", "Zebra"}));

    // A rename moves the node to its new place and renames the paths beneath it.
    CategoryNode *zebra = tree.topLevelNode(4);
    CategoryNode *stripes = tree.addNode(zebra, QStringLiteral("k1"), QStringLiteral("Stripes"));
    zebra->setText(QStringLiteral("Aardvark"));
    QCOMPARE(tree.topLevelNode(0), zebra);
    QCOMPARE(stripes->fullPath(), QStringLiteral("Aardvark~~~Stripes"));
    QCOMPARE(tree.findFirstByPath(QStringLiteral("Aardvark~~~Stripes")), stripes);
    QVERIFY(!tree.findFirstByPath(QStringLiteral("Zebra~~~Stripes")));
}

void tst_CategoryTree::staysConsistentUnderRandomEdits()
{
    QRandomGenerator random(4711);
    CategoryTree tree;
    int mismatches = 0;
    checkSignalRows(tree, mismatches);
    std::vector<CategoryNode *> nodes;
    // "a~~~b" at the top level shares its path with b under a.
    const QStringList names{"a", "B", "b", "A", "Ä", "a~~~b"};
    for (int step = 0; step < 3000; ++step) {
        const auto pick = [&] {
            return nodes.empty() ? nullptr : nodes[random.bounded(quint32(nodes.size()))];
        };
        const QString name = names[random.bounded(int(names.size()))];
        switch (random.bounded(6)) {
        case 0:
        case 1:
        case 2:
            nodes.push_back(tree.addNode(random.bounded(4) ? pick() : nullptr, QString::number(step), name));
            break;
        case 3:
            if (CategoryNode *node = pick())
                node->setText(name);
            break;
        case 4:
            if (CategoryNode *node = pick())
                tree.moveNode(node, random.bounded(5) ? pick() : nullptr);
            break;
        default:
            if (CategoryNode *node = pick()) {
                std::erase_if(nodes, [&](CategoryNode *n) { return n == node || node->isAncestorOf(n); });
                tree.removeNode(node);
            }
        }
        std::erase(nodes, nullptr);
    }
    QCOMPARE(mismatches, 0);
    QCOMPARE(tree.count(), int(nodes.size()));
    for (CategoryNode *node : nodes) {
        QString path = node->text();
        for (CategoryNode *up = node->parent(); up; up = up->parent())
            path = up->text() + QStringLiteral("~~~") + path;
        QCOMPARE(node->fullPath(), path);
        QCOMPARE(tree.findByKey(node->key()), node);
        CategoryNode *earliest = node;
        for (CategoryNode *other : nodes) {
            if (other->fullPath() == path && other->indexOrder() < earliest->indexOrder())
                earliest = other;
        }
        QCOMPARE(tree.findFirstByPath(path), earliest);
    }
}

QTEST_GUILESS_MAIN(tst_CategoryTree)
#include "tst_CategoryTree.moc"
