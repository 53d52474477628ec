#include "DeliveryRequests.h"
#include "EngineFixture.h"

using namespace quillon;
using EngineCalls::ArticleIds;
using EngineCalls::Texts;

// The requests and messages a delivering consumer lives by, against the real engine.
class tst_DeliveryRequests : public EngineTestCase
{
    Q_OBJECT

private:
    // A request of the delivering consumer; ids go as a list of texts, as the client makes them.
    BagPtr deliver(const QString &kind, const QList<qint32> &ids = {},
                   const EngineFixture::Fields &fields = {});
    QString waitForUpdate() { return m_engine->waitForUpdates(); }

    SubscribeClientPtr m_consumer;
    std::shared_ptr<CopyingCallback> m_consumerEvents;

private Q_SLOTS:
    void init();
    void cleanup();
    void boundArticlesArePendingUntilAcknowledged();
    void removalsFollowAgeAndUnbinding();
    void largeArticlesComeInSmallerBatches();
};

void tst_DeliveryRequests::init()
{
    EngineTestCase::init();
    startUpdating();
    m_consumer = m_engine->engine.newClient();
    m_consumerEvents = std::make_shared<CopyingCallback>(*m_consumer);
    m_consumer->Connect("OLCONSUMER", m_consumerEvents);
}

void tst_DeliveryRequests::cleanup()
{
    QCOMPARE(m_consumer->LiveHandleCount(), 0);
    m_consumer.reset();
    EngineTestCase::cleanup();
}

BagPtr tst_DeliveryRequests::deliver(const QString &kind, const QList<qint32> &ids,
                                     const EngineFixture::Fields &fields)
{
    return EngineCalls::Request(*m_consumer, EngineFixture::Fields{{"REQUEST", kind}} + fields, ids);
}

void tst_DeliveryRequests::boundArticlesArePendingUntilAcknowledged()
{
    m_server.serve("/five", rss("Delivered", {"g1", "g2", "g3", "g4", "g5"}, {"g1"}));
    const qint32 id = m_engine->add(url("/five"));
    QCOMPARE(waitForUpdate(), "OK: 5 items, 5 new");
    // Not bound: nothing waits, and acknowledging marks nothing; junk IDs and an absurd batch size
    // are harmless, and a client that is no connected consumer is refused.
    QCOMPARE(deliver("PENDINGARTICLES")->bag("Result")->text("ITEMCOUNT"), "0");
    QCOMPARE(deliver("ACKNOWLEDGE", {1, 2})->bag("Result")->text("ITEMCOUNT"), "0");
    QCOMPARE(deliver("ACKNOWLEDGE", {}, {{"ARTICLEIDS", "x,-4,,99999"}})->bag("Result")->text("ITEMCOUNT"),
             "0");
    QCOMPARE(deliver("PENDINGARTICLES", {}, {{"LIMIT", "-7"}})->text("MESSAGE"), "PendingArticles");
    SubscribeClientPtr stranger = m_engine->engine.newClient();
    QCOMPARE(EngineCalls::Request(*stranger, {{"REQUEST", "PENDINGARTICLES"}})->text("MESSAGE"),
             "RequestFailed");

    m_consumerEvents->received.clear();
    m_engine->client->BindItem("OLCONSUMER", "NEWS", id, 1);
    QTRY_COMPARE(m_consumerEvents->named("ArticlesAvailable").size(), 1);
    const BagPtr available = m_consumerEvents->named("ArticlesAvailable").first()->bag("Result");
    QCOMPARE(Texts(available, {"CONSUMERID", "SUBSCRIPTIONID", "ITEMCOUNT"}),
             QStringList({"OLCONSUMER", QString::number(id), "5"}));

    // Batches in article order, with MORE while another waits.
    BagPtr batch = deliver("PENDINGARTICLES", {}, {{"LIMIT", "3"}});
    QCOMPARE(batch->text("MESSAGE"), "PendingArticles");
    QCOMPARE(batch->bag("Result")->text("MORE"), "1");
    const QList<qint32> first = ArticleIds(batch);
    QCOMPARE(first.size(), 3);
    const BagPtr item = std::get<BagPtr>(batch->bag("Result")->list("ITEMS")->at(0));
    QCOMPARE(Texts(item, {"GUID", "SUBSCRIPTIONID", "READ"}), QStringList({"g1", QString::number(id), "0"}));
    QCOMPARE(std::get<BagPtr>(item->list("ENCLOSURES")->at(0))->text("URL"), "http://example.com/g1.mp3");
    // The next batch asked for before this one is acknowledged.
    const BagPtr ahead =
        deliver("PENDINGARTICLES", {}, {{"LIMIT", "3"}, {"AFTER", QString::number(first.last())}});
    QCOMPARE(ArticleIds(ahead).size(), 2);
    QVERIFY(ArticleIds(ahead).first() > first.last());
    QCOMPARE(ahead->bag("Result")->text("MORE"), "0");

    // Acknowledging twice counts once; the rest is the next batch.
    QCOMPARE(deliver("ACKNOWLEDGE", first)->bag("Result")->text("ITEMCOUNT"), "3");
    QCOMPARE(deliver("ACKNOWLEDGE", first)->bag("Result")->text("ITEMCOUNT"), "0");
    batch = deliver("PENDINGARTICLES", {}, {{"SUBSCRIPTIONID", QString::number(id)}});
    QCOMPARE(ArticleIds(batch).size(), 2);
    QCOMPARE(batch->bag("Result")->text("MORE"), "0");
    QVERIFY(ArticleIds(batch).first() > first.last());
    // Another consumer keeps its own marks.
    QCOMPARE(deliver("ACKNOWLEDGE", ArticleIds(batch))->bag("Result")->text("ITEMCOUNT"), "2");
    m_engine->client->BindItem("TAGCONSUMER", "NEWS", id, 1);
    QCOMPARE(m_engine->request({{"REQUEST", "PENDINGARTICLES"}})->bag("Result")->text("ITEMCOUNT"),
             "0"); // CONFIGCONSUMER is not bound
    QCOMPARE(deliver("PENDINGARTICLES")->bag("Result")->text("ITEMCOUNT"), "0");
}

void tst_DeliveryRequests::removalsFollowAgeAndUnbinding()
{
    m_server.serve("/aged", rss("Delivered", {"g1", "g2"}));
    m_server.serve("/kept", rss("Delivered", {"g1", "g2"}));
    const qint32 aged = m_engine->add(url("/aged"));
    waitForUpdate();
    const qint32 kept = m_engine->add(url("/kept"));
    waitForUpdate();
    for (const qint32 id : {aged, kept})
        m_engine->client->BindItem("OLCONSUMER", "NEWS", id, 1);
    const QList<qint32> all = ArticleIds(deliver("PENDINGARTICLES"));
    QCOMPARE(all.size(), 4);
    // One article of each stays undelivered: only delivered ones come back as removals.
    deliver("ACKNOWLEDGE", {all.at(0), all.at(2)});

    m_engine->update(aged, {{"DELETEUNREAD", "600"}});
    waitForUpdate();
    m_consumerEvents->received.clear();
    m_now = kStart.addSecs(700);
    m_engine->update(aged);
    waitForUpdate();
    QTRY_COMPARE(m_consumerEvents->named("ArticlesRemoved").size(), 1);
    QCOMPARE(m_consumerEvents->named("ArticlesRemoved").first()->bag("Result")->text("SUBSCRIPTIONID"),
             QString::number(aged));

    // Unbinding with 1 keeps what was delivered; with 0 removes it.
    m_engine->client->BindItem("OLCONSUMER", "NEWS", kept, 0);
    BagPtr removals = deliver("PENDINGREMOVALS");
    QCOMPARE(removals->text("MESSAGE"), "PendingRemovals");
    QCOMPARE(ArticleIds(removals), (QList<qint32>{all.at(0), all.at(2)}));
    const BagPtr removal = std::get<BagPtr>(removals->bag("Result")->list("ITEMS")->at(1));
    QCOMPARE(removal->text("SUBSCRIPTIONID"), QString::number(kept));
    QCOMPARE(removal->text("GUID"), "g1");

    QCOMPARE(deliver("CONFIRMREMOVALS", {all.at(0)})->bag("Result")->text("ITEMCOUNT"), "1");
    QCOMPARE(ArticleIds(deliver("PENDINGREMOVALS")), (QList<qint32>{all.at(2)}));
    // Binding again delivers the kept subscription's articles anew.
    m_engine->client->BindItem("OLCONSUMER", "NEWS", kept, 1);
    QCOMPARE(ArticleIds(deliver("PENDINGARTICLES")).size(), 2);
}

// However large the articles, one batch fits in a frame: it is cut by bytes and says MORE.
void tst_DeliveryRequests::largeArticlesComeInSmallerBatches()
{
    QByteArray big = "<rss version=\"2.0\"><channel><title>Big</title>";
    for (int i = 1; i <= 8; ++i)
        big += "<item><guid>b" + QByteArray::number(i) + "</guid><description>" +
               QByteArray(1024 * 1024, 'x') + "</description></item>";
    m_server.serve("/big", big + "</channel></rss>");
    const qint32 id = m_engine->add(url("/big"));
    QCOMPARE(waitForUpdate(), "OK: 8 items, 8 new");
    m_engine->client->BindItem("OLCONSUMER", "NEWS", id, 1);
    QList<qint32> all;
    for (qint32 after = 0, batches = 0; batches < 8; ++batches) {
        const BagPtr batch =
            deliver("PENDINGARTICLES", {}, {{"LIMIT", "1000"}, {"AFTER", QString::number(after)}});
        const QList<qint32> ids = ArticleIds(batch);
        QVERIFY(!ids.isEmpty() &&
                3 * ids.size() * 1024 * 1024 <= DeliveryRequests::kMaxBatchBytes + 3 * 1024 * 1024);
        all += ids;
        after = ids.last();
        if (batch->bag("Result")->text("MORE") == "0")
            break;
    }
    QCOMPARE(all.size(), 8);
}

QTEST_MAIN(tst_DeliveryRequests)
#include "tst_DeliveryRequests.moc"
