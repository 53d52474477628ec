#include "DeliveryRequests.h"
#include "EngineFixture.h"
#include "LocalHttpServer.h"

using namespace quillon;
using EngineCalls::ArticleIds;
using EngineCalls::Texts;

namespace {
const QDateTime kStart = QDateTime(QDate(2024, 5, 1), QTime(12, 0), Qt::UTC);

QByteArray feedOf(int count)
{
    QByteArray out = "<rss version=\"2.0\"><channel><title>Delivered</title>";
    for (int i = 1; i <= count; ++i)
        out += QByteArray("<item><guid>g") + QByteArray::number(i) + "</guid><title>T" +
               QByteArray::number(i) + "</title><enclosure url=\"http://example.com/" +
               QByteArray::number(i) + ".mp3\" type=\"audio/mpeg\"/></item>";
    return out + "</channel></rss>";
}
} // namespace

// The requests and messages a delivering consumer lives by, against the real engine.
class tst_DeliveryRequests : public QObject
{
    Q_OBJECT

private:
    // A request of the delivering consumer; ids go as a list of texts, as the client makes them.
    BagPtr deliver(const QString &kind, const QList<qint32> &ids = {},
                   const EngineFixture::Fields &fields = {});
    QString waitForUpdate() { return m_engine->waitForUpdates(); }

    std::unique_ptr<EngineFixture> m_engine;
    SubscribeClientPtr m_consumer;
    std::shared_ptr<CopyingCallback> m_consumerEvents;
    LocalHttpServer m_server;
    QDateTime m_now = kStart;

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_server.listen()); }
    void init();
    void cleanup();
    void boundArticlesArePendingUntilAcknowledged();
    void removalsFollowAgeAndUnbinding();
    void requestsNeedAConnectedConsumer();
    void largeArticlesComeInSmallerBatches();
};

void tst_DeliveryRequests::init()
{
    m_engine = std::make_unique<EngineFixture>();
    QVERIFY(m_engine->engine.isReady());
    m_now = kStart;
    m_engine->startUpdating([this]() { return m_now; });
    m_consumer = m_engine->engine.newClient();
    m_consumerEvents = std::make_shared<CopyingCallback>(*m_consumer);
    m_consumer->Connect("OLCONSUMER", m_consumerEvents);
}

void tst_DeliveryRequests::cleanup()
{
    QCOMPARE(m_consumer->LiveHandleCount(), 0);
    m_consumer.reset();
    m_engine.reset();
}

BagPtr tst_DeliveryRequests::deliver(const QString &kind, const QList<qint32> &ids,
                                     const EngineFixture::Fields &fields)
{
    return EngineCalls::Request(*m_consumer, EngineFixture::Fields{{"REQUEST", kind}} + fields, ids);
}

void tst_DeliveryRequests::boundArticlesArePendingUntilAcknowledged()
{
    m_server.serve("/five", feedOf(5));
    const qint32 id = m_engine->add(m_server.url("/five").toString());
    QCOMPARE(waitForUpdate(), "OK: 5 items, 5 new");
    // Not bound: nothing waits, and acknowledging marks nothing.
    QCOMPARE(deliver("PENDINGARTICLES")->bag("Result")->text("ITEMCOUNT"), "0");
    QCOMPARE(deliver("ACKNOWLEDGE", {1, 2})->bag("Result")->text("ITEMCOUNT"), "0");

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
    QCOMPARE(std::get<BagPtr>(item->list("ENCLOSURES")->at(0))->text("URL"), "http://example.com/1.mp3");
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
    m_server.serve("/aged", feedOf(2));
    m_server.serve("/kept", feedOf(2));
    const qint32 aged = m_engine->add(m_server.url("/aged").toString());
    waitForUpdate();
    const qint32 kept = m_engine->add(m_server.url("/kept").toString());
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

void tst_DeliveryRequests::requestsNeedAConnectedConsumer()
{
    SubscribeClientPtr stranger = m_engine->engine.newClient();
    auto answer = std::make_shared<CopyingCallback>(*stranger);
    const Handle bag = stranger->NewBag();
    stranger->SetStringValue(bag, "REQUEST", "PENDINGARTICLES");
    stranger->SubmitRequest(bag, answer);
    stranger->ReleaseHandle(bag);
    QTRY_COMPARE(answer->received.size(), 1);
    QCOMPARE(answer->received.first()->text("MESSAGE"), "RequestFailed");
    // Junk IDs and an absurd batch size are harmless.
    QCOMPARE(deliver("ACKNOWLEDGE", {}, {{"ARTICLEIDS", "x,-4,,99999"}})->bag("Result")->text("ITEMCOUNT"),
             "0");
    QCOMPARE(deliver("PENDINGARTICLES", {}, {{"LIMIT", "-7"}})->text("MESSAGE"), "PendingArticles");
}

// However large the articles, one batch fits in a frame: it is cut by bytes and says MORE.
void tst_DeliveryRequests::largeArticlesComeInSmallerBatches()
{
    QByteArray big = "<rss version=\"2.0\"><channel><title>Big</title>";
    for (int i = 1; i <= 8; ++i)
        big += "<item><guid>b" + QByteArray::number(i) + "</guid><description>" +
               QByteArray(1024 * 1024, 'x') + "</description></item>";
    m_server.serve("/big", big + "</channel></rss>");
    const qint32 id = m_engine->add(m_server.url("/big").toString());
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
