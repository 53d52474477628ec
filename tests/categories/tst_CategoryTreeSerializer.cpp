#include "PromptRecorder.h"
#include "categoriesUtils.h"

#include <QRandomGenerator>
#include <QTest>

using namespace categoriesUtils;

namespace {
QString lines(const QStringList &parts)
{
    return parts.join("\r\n");
}

QString randomName(QRandomGenerator &random)
{
    static const QStringList pieces{"News", "a", "Z", " ",    "  ",   "é", "Ünïcode", "日本", "🙂", "~",
                                    "~~~",  "-", ".", "Tech", "news", "'", "\"",      "%1",   "\\"};
    QString name;
    for (int i = 0, n = random.bounded(5); i < n; ++i)
        name += pieces[random.bounded(int(pieces.size()))];
    return name;
}

void fillRandomTree(CategoryTree &tree, QRandomGenerator &random, int nodes)
{
    QList<CategoryNode *> categories;
    for (int i = 0; i < nodes; ++i) {
        CategoryNode *parent = categories.isEmpty() || random.bounded(5) == 0
                                   ? nullptr
                                   : categories[random.bounded(int(categories.size()))];
        const bool isSubscription = random.bounded(4) == 0;
        CategoryNode *node = tree.addNode(parent, MakeNodeKey(random.bounded(2)), randomName(random),
                                          random.bounded(2) ? "partial_folder" : randomName(random));
        node->setExpanded(random.bounded(2));
        node->setSelected(random.bounded(2));
        node->setBold(random.bounded(2));
        node->setExpandedImage(randomName(random));
        if (isSubscription)
            node->setTag(QString::number(i + 1));
        else
            categories << node;
    }
}

} // namespace

class tst_CategoryTreeSerializer : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void writesCategoriesInTheSavedForm();
    void treesRoundTrip();
    void reportsEachFormErrorKeepingWhatWasRead();
};

void tst_CategoryTreeSerializer::writesCategoriesInTheSavedForm()
{
    CategoryTree tree;
    CategoryNode *news = tree.addNode(nullptr, "cat_1", "News", "checked_folder");
    news->setExpanded(true);
    news->setBold(true);
    news->setSelectedImage("sel");
    tree.addNode(news, "sub_2", "Feed", "checked")->setTag("7");
    tree.addNode(news, "cat_3", "Tech", "partial_folder");
    tree.addNode(nullptr, "sub_4", "Top feed")->setTag("8");

    const auto props = [](int blanks, const QString &image, const QString &key, const QString &selectedImage,
                          const QString &text, const char *expanded, const char *bold) {
        const QString in(blanks, QLatin1Char(' '));
        return QStringList{in + "Expanded(" + expanded + ")",
                           in + "ExpandedImage()",
                           in + "Image(" + image + ")",
                           in + "Key(" + key + ")",
                           in + "Selected(False)",
                           in + "SelectedImage(" + selectedImage + ")",
                           in + "Tag()",
                           in + "Text(" + text + ")",
                           in + "Bold(" + bold + ")"};
    };
    const QString expected = lines(QStringList{"TreeView(", "  Root(", "    BasicInfo("} +
                                   props(6, "checked_folder", "cat_1", "sel", "News", "True", "True") +
                                   QStringList{"    )", "      Child(", "      BasicInfo("} +
                                   props(8, "partial_folder", "cat_3", "", "Tech", "False", "False") +
                                   QStringList{"      )", "      )", "  )", ")"});
    QCOMPARE(SerializeCategoryTree(tree), expected);

    // The selected image is written but a loaded node keeps none.
    CategoryTree loaded;
    QVERIFY(LoadCategoryTree(loaded, expected));
    QCOMPARE(loaded.count(), 2);
    QVERIFY(loaded.findByKey("cat_1")->selectedImage().isEmpty());
    QVERIFY(loaded.findByKey("cat_1")->expanded());
}

void tst_CategoryTreeSerializer::treesRoundTrip()
{
    QRandomGenerator random(20240611);
    PromptRecorder prompts;
    for (int round = 0; round < 200; ++round) {
        CategoryTree tree;
        fillRandomTree(tree, random, round == 0 ? 0 : random.bounded(1, 60));
        const QString text = SerializeCategoryTree(tree);
        if (round == 0)
            QCOMPARE(text, "TreeView(\r\n)");
        CategoryTree loaded;
        loaded.addNode(nullptr, "x", "Left over");
        QVERIFY(LoadCategoryTree(loaded, text));
        QCOMPARE(SerializeCategoryTree(loaded), text);
        QCOMPARE(loaded.count(), CollectCategoryPaths(tree, nullptr).size());
    }
    QVERIFY(prompts.texts().isEmpty());
}

void tst_CategoryTreeSerializer::reportsEachFormErrorKeepingWhatWasRead()
{
    const QString good = "Root(BasicInfo(Key(k1)Text(Kept)Color(red))Child(BasicInfo(Text(Inner))))";
    const struct
    {
        QString text;
        QString message;
        int nodesLeft;
    } cases[] = {
        {"  \r\n", "Error initializing TreeView. This is not a TreeView serialization.", 1},
        {"TreeView(" + good + "Branch(x))",
         "Error reading TreeView serialization. Expected 'Root' but found 'Branch.'", 2},
        {"TreeView(" + good + "Root(Info()))",
         "Error reading Node serialization. Expected 'BasicInfo' but found 'Info.'", 2},
        {"TreeView(" + good + "Root(BasicInfo(Text(B))Kid()))",
         "Error reading Node serialization. Expected 'Child' but found 'Kid.'", 3},
        {"TreeView(" + good + "Root(BasicInfo(Key(k1))))", QString(), 2},
    };
    for (const auto &c : cases) {
        CategoryTree tree;
        tree.addNode(nullptr, "before", "Before");
        PromptRecorder prompts;
        QVERIFY(!LoadCategoryTree(tree, c.text));
        QCOMPARE(prompts.texts(), c.message.isEmpty() ? QStringList() : QStringList{c.message});
        QCOMPARE(tree.count(), c.nodesLeft);
    }
}

QTEST_GUILESS_MAIN(tst_CategoryTreeSerializer)
#include "tst_CategoryTreeSerializer.moc"
