#include "ConsumerSettings.h"
#include "EngineCalls.h"
#include "TestEngine.h"
#include "callbackSupport.h"
#include "categoriesUtils.h"

#include <QTest>

using namespace categoriesUtils;
using namespace quillon;
using namespace EngineCalls;

class StatusLine : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE void SetStatusText(const QString &text) { texts << text; }
    QStringList texts;
};

class tst_categoriesEngine : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void deleteRemovesSubscriptionsFromTheEngine();
    void movedNodesTellTheEngineTheirCategory();
    void savedTreeIsTheConsumerSetting();

private:
    CategoryNode *subscribe(const QString &title, const QString &category);
    QString engineCategory(const CategoryNode *node)
    {
        return ItemText(*m_client, node->tag().toInt(), "CATEGORY");
    }

    std::unique_ptr<TestEngine> m_engine;
    SubscribeClientPtr m_client;
    CategoryTree m_tree;
    StatusLine m_status;
};

void tst_categoriesEngine::init()
{
    m_engine = std::make_unique<TestEngine>();
    QVERIFY(m_engine->isReady());
    m_client = m_engine->newClient();
    m_tree.clear();
    m_status.texts.clear();
}

void tst_categoriesEngine::cleanup()
{
    QCOMPARE(m_client->LiveHandleCount(), 0);
    m_client.reset();
    m_engine.reset();
}

// Adds the subscription to the engine and places its node under its category.
CategoryNode *tst_categoriesEngine::subscribe(const QString &title, const QString &category)
{
    const qint32 id = AddSubscription(*m_client, title, "http://127.0.0.1/" + title, category);
    if (id <= 0)
        return nullptr;
    CategoryNode *parent = AddCategoryFromSubscription(m_tree, category);
    CategoryNode *node = m_tree.addNode(parent, MakeNodeKey(1), title, "checked");
    node->setTag(QString::number(id));
    return node;
}

void tst_categoriesEngine::deleteRemovesSubscriptionsFromTheEngine()
{
    for (const char *title : {"A", "B"})
        QVERIFY(subscribe(QString::fromLatin1(title), "News"));
    QVERIFY(subscribe("C", "News~~~Tech"));
    CategoryNode *kept = subscribe("Kept", QString());
    QVERIFY(kept);

    DeleteNodeTree(m_tree, FindNodeByPath(m_tree, "News"), [this](qint32 id, const QString &title) {
        callbackSupport::RemoveSubscription(*m_client, id, title, &m_status);
    });
    QCOMPARE(ConsumerItems(*m_client, "*"), QList<qint32>{kept->tag().toInt()});
    QCOMPARE(m_tree.count(), 1);
    QCOMPARE(m_status.texts, QStringList({"Removing: A", "Removing: B", "Removing: C"}));
}

void tst_categoriesEngine::movedNodesTellTheEngineTheirCategory()
{
    CategoryNode *top = subscribe("Top", "Old");
    CategoryNode *deep = subscribe("Deep", "Old~~~Moving~~~Inner");
    CategoryNode *other = subscribe("Other", "Old");
    QVERIFY(top && deep && other);

    CategoryNode *topMoved = CopyNodeTo(m_tree, *top, nullptr);
    ApplyCategoryToEngine(*topMoved, *m_client);
    QCOMPARE(engineCategory(topMoved), QString());
    CategoryNode *moving = FindNodeByPath(m_tree, "Old~~~Moving");
    ApplyCategoryToEngine(*CopyNodeTo(m_tree, *moving, AddCategoryFromSubscription(m_tree, "New")),
                          *m_client);
    QCOMPARE(engineCategory(deep), "New~~~Moving~~~Inner");
    QCOMPARE(engineCategory(other), "Old");
}

void tst_categoriesEngine::savedTreeIsTheConsumerSetting()
{
    AddCategoryFromSubscription(m_tree, "Saved~~~Nested");
    const QString text = SaveCategoryTree(m_tree, *m_client);
    QVERIFY(text.contains("Text(Nested)"));
    QCOMPARE(GetConsumerSetting(*m_client, kSavedCategoriesKey, QString(), "CONFIGCONSUMER", QString()),
             text);
}

QTEST_GUILESS_MAIN(tst_categoriesEngine)
#include "tst_categoriesEngine.moc"
