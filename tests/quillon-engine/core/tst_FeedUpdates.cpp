#include "EngineFixture.h"
#include "FeedFetcher.h"
#include "SideConnection.h"

#include <QSignalSpy>

#include <algorithm>

using namespace quillon;
using EngineCalls::Texts;

namespace {
// Holds every fetch until the test answers it.
class HeldFetcher : public FeedFetcher
{
public:
    void fetch(const FetchRequest &request, Done done) override
    {
        urls.append(request.url);
        pending.append(std::move(done));
    }
    void answerAll(FetchResult::Outcome outcome)
    {
        FetchResult result;
        result.outcome = outcome;
        result.httpStatus = 304;
        for (const Done &done : std::exchange(pending, {}))
            done(result);
    }
    QList<QUrl> urls;
    QList<Done> pending;
};
} // namespace

class tst_FeedUpdates : public EngineTestCase
{
    Q_OBJECT

private:
    QString waitForUpdates(int count = 1) { return m_engine->waitForUpdates(count); }
    void setArticleRead(const QString &guid);

private Q_SLOTS:
    void init()
    {
        EngineTestCase::init();
        startUpdating();
    }
    void newSubscriptionIsFetchedCountedAndTitled();
    void refetchesSendOnlyTheValidatorsOfAWholeCopy();
    void articlesAgeOutAndNewEnclosuresAskOnce();
    void schedulerHandsOutEachDueSubscriptionOnce();
    void webPageLeadsToTheFeedItAdvertises();
};

void tst_FeedUpdates::setArticleRead(const QString &guid)
{
    SideConnection side(m_engine->engine.core().databasePath());
    QVERIFY(side.exec(QStringLiteral("UPDATE articles SET is_read = 1 WHERE guid = '%1'").arg(guid)));
}

void tst_FeedUpdates::newSubscriptionIsFetchedCountedAndTitled()
{
    m_server.serve("/news", rss("Daily &amp; News", {"a", "b", "c"}));
    const qint32 id = m_engine->add(url("/news"));
    QCOMPARE(waitForUpdates(), "OK: 3 items, 3 new");

    QCOMPARE(Texts(m_engine->itemBag(id), {"TITLE", "LASTUPDATESTATUS", "ITEMUNREADCOUNT", "ITEMREADCOUNT",
                                           "LastDateCheck", "NEXTUPDATETIME"}),
             QStringList({"Daily & News", "OK: 3 items, 3 new", "3", "0", "2024-05-01T12:00:00Z",
                          "2024-05-01T13:00:00Z"}));

    const BagPtr items = m_engine->request({{"REQUEST", "ITEMS"}, {"SUBSCRIPTIONID", QString::number(id)}});
    QCOMPARE(items->text("MESSAGE"), "SubscriptionItems");
    const BagPtr result = items->bag("Result");
    QCOMPARE(result->text("ITEMCOUNT"), "3");
    const BagPtr first = std::get<BagPtr>(result->list("ITEMS")->at(0));
    QCOMPARE(first->text("SUBJECT"), "Item c"); // undated: the last stored comes first
    QCOMPARE(Texts(first, {"URL", "BODY", "READ"}),
             QStringList({"http://example.com/c", "<p>Body c</p>", "0"}));

    // A title the user chose stays; one that is only the address is replaced.
    const qint32 named = m_engine->add(url("/news"), "Mine");
    const qint32 byAddress = m_engine->add(url("/news"), url("/news"));
    waitForUpdates(2);
    QCOMPARE(m_engine->itemBag(named)->text("TITLE"), "Mine");
    QCOMPARE(m_engine->itemBag(byAddress)->text("TITLE"), "Daily & News");

    // A feed behind a login asks for one once, and is read as soon as it is given.
    LocalHttpServer::Route route;
    route.body = rss("Private", {"a"});
    route.user = "ann";
    route.password = "secret";
    m_server.setRoute("/private", route);
    const qint32 locked = m_engine->add(url("/private"));
    QCOMPARE(waitForUpdates(), "Error: HTTP 401 Unauthorized");
    // A failed fetch keeps the subscription's hour like a good one.
    QCOMPARE(m_engine->itemBag(locked)->text("NEXTUPDATETIME"), "2024-05-01T13:00:00Z");
    QTRY_COMPARE(m_engine->events->named("LoginRequired").size(), 1);
    QCOMPARE(m_engine->events->named("LoginRequired").first()->bag("Result")->number("SUBSCRIPTIONID"),
             locked);

    m_engine->update(locked, {{"USER", "ann"}, {"PASSWORD", "secret"}});
    QCOMPARE(waitForUpdates(), "OK: 1 item, 1 new");
    QCOMPARE(m_engine->events->named("LoginRequired").size(), 1);

    // The engine's own frequency stands in for a subscription's -1.
    m_engine->setSetting("ENGINE", QString(), "UPDATEFREQ", "7200");
    m_engine->update(id);
    waitForUpdates();
    QCOMPARE(m_engine->itemBag(id)->text("NEXTUPDATETIME"), "2024-05-01T14:00:00Z");
    QCOMPARE(m_engine->request({{"REQUEST", "ITEMS"}, {"SUBSCRIPTIONID", "999"}})->text("MESSAGE"),
             "RequestFailed");
}

void tst_FeedUpdates::refetchesSendOnlyTheValidatorsOfAWholeCopy()
{
    LocalHttpServer::Route route;
    route.body = rss("Tagged", {"a", "b"});
    route.etag = "\"v1\"";
    m_server.setRoute("/tagged", route);
    const qint32 id = m_engine->add(url("/tagged"));
    QCOMPARE(waitForUpdates(), "OK: 2 items, 2 new");
    // A window hears of each update that changes what it shows, once: of the first "Not
    // modified" and of the new article below, not of the second "Not modified".
    const auto changes = [this]() { return m_engine->events->named("SubscriptionChanged").size(); };
    QTRY_COMPARE(changes(), 1);

    m_now = kStart.addSecs(60);
    m_engine->update(id);
    QCOMPARE(waitForUpdates(), "Not modified");
    m_engine->update(id);
    QCOMPARE(waitForUpdates(), "Not modified");
    QCOMPARE(m_server.lastHeader("/tagged", "if-none-match"), QByteArray("\"v1\""));
    QCOMPARE(Texts(m_engine->itemBag(id), {"ITEMUNREADCOUNT", "LastDateCheck"}),
             QStringList({"2", "2024-05-01T12:01:00Z"}));

    route.body = rss("Tagged", {"a", "b", "c"});
    route.etag = "\"v2\"";
    m_server.setRoute("/tagged", route);
    m_engine->update(id);
    QCOMPARE(waitForUpdates(), "OK: 3 items, 1 new");
    QCOMPARE(m_engine->itemBag(id)->text("ITEMUNREADCOUNT"), "3");
    // Messages come from the event loop in order: once a later answer is in, all are queued.
    QCoreApplication::processEvents();
    QCOMPARE(changes(), 3);

    // A new address starts without the old address's validators.
    m_engine->update(id, {{"URL", url("/tagged?moved")}});
    waitForUpdates();
    QVERIFY(m_server.lastHeader("/tagged?moved", "if-none-match").isEmpty());

    QByteArray broken = rss("Broken", {"a", "b"});
    broken.replace("</channel></rss>", "<item><title>C</ti");
    route.body = broken;
    route.etag = "\"broken\"";
    m_server.setRoute("/broken", route);
    const qint32 brokenId = m_engine->add(url("/broken"));
    const QString status = waitForUpdates();
    QVERIFY2(status.startsWith("Error: malformed feed at line 1") && status.endsWith("(2 items kept)"),
             qPrintable(status));
    QCOMPARE(m_engine->itemBag(brokenId)->text("ITEMUNREADCOUNT"), "2");
    // Nothing of a broken copy is trusted: the next fetch asks for the whole document.
    m_engine->update(brokenId);
    waitForUpdates();
    QVERIFY(m_server.lastHeader("/broken", "if-none-match").isEmpty());
}

void tst_FeedUpdates::articlesAgeOutAndNewEnclosuresAskOnce()
{
    m_server.serve("/aging", rss("Aging", {"a", "b", "c"}));
    const qint32 id = m_engine->add(url("/aging"));
    waitForUpdates();
    setArticleRead("a");
    m_engine->update(id, {{"DELETEREAD", "0"}, {"DELETEUNREAD", "600"}});
    waitForUpdates();
    QCOMPARE(m_engine->itemBag(id)->text("ITEMUNREADCOUNT"), "2");

    // Unread articles past 600 s go, read ones are never deleted, and what went stays gone
    // although the feed still offers it.
    m_now = kStart.addSecs(700);
    m_engine->update(id);
    QCOMPARE(waitForUpdates(), "OK: 3 items, 0 new");
    QCOMPARE(Texts(m_engine->itemBag(id), {"ITEMUNREADCOUNT", "ITEMREADCOUNT"}), QStringList({"0", "1"}));

    m_server.serve("/aging", rss("Aging", {"a", "b", "c", "d"}));
    m_now = kStart.addSecs(800);
    m_engine->update(id);
    QCOMPARE(waitForUpdates(), "OK: 4 items, 1 new");

    // -1 is the engine's setting.
    m_engine->setSetting("ENGINE", QString(), "DELETEREAD", "100");
    m_now = kStart.addSecs(900);
    m_engine->update(id, {{"DELETEREAD", "-1"}});
    waitForUpdates();
    QCOMPARE(Texts(m_engine->itemBag(id), {"ITEMUNREADCOUNT", "ITEMREADCOUNT"}), QStringList({"1", "0"}));

    // A long history is looked up by the feed's keys rather than read whole: the same outcome.
    QStringList many;
    for (int i = 0; i < 150; ++i)
        many.append(QStringLiteral("m%1").arg(i));
    m_server.serve("/aging", rss("Aging", many));
    m_engine->update(id);
    QCOMPARE(waitForUpdates(), "OK: 150 items, 150 new");
    // a and b left the feed meanwhile, so they are new again; m0 and m149 are not.
    m_server.serve("/aging", rss("Aging", {"a", "b", "m0", "m149", "n"}));
    m_engine->update(id);
    QCOMPARE(waitForUpdates(), "OK: 5 items, 3 new");

    // New enclosures ask for a download decision, once per subscription without its own answer.
    m_server.serve("/cast", rss("Cast", {"e1", "t1"}, {"e1"}));
    const qint32 cast = m_engine->add(url("/cast"));
    waitForUpdates();
    const auto prompted = [this]() {
        QList<qint32> ids;
        for (const BagPtr &prompt : m_engine->events->named("PromptForDownload"))
            ids.append(prompt->bag("Result")->number("SUBSCRIPTIONID"));
        return ids;
    };
    QTRY_COMPARE(prompted(), QList<qint32>{cast});

    // Once the subscription has its own answer, new enclosures ask nothing.
    m_engine->setSetting("MEDIACONSUMER", QStringLiteral("SubscriptionSpecifics_%1").arg(cast),
                         "EnableAutoDownload", "1");
    m_server.serve("/cast", rss("Cast", {"e1", "t1", "e2"}, {"e1", "e2"}));
    m_engine->update(cast);
    QCOMPARE(waitForUpdates(), "OK: 3 items, 1 new");
    // Only enclosures that are new count: a refetch of the same episodes asks nothing either.
    const qint32 other = m_engine->add(url("/cast"));
    waitForUpdates();
    m_engine->update(other);
    waitForUpdates();
    QTRY_COMPARE(prompted(), (QList<qint32>{cast, other}));
}

void tst_FeedUpdates::schedulerHandsOutEachDueSubscriptionOnce()
{
    auto held = std::make_unique<HeldFetcher>();
    HeldFetcher *fetcher = held.get();
    m_engine->engine.core().setFeedFetcher(std::move(held));
    const qint32 first = m_engine->add(url("/one"));
    const qint32 second = m_engine->add(url("/two"));
    QTRY_COMPARE(fetcher->urls.size(), 2);

    // Made due while its fetch runs: fetched again once that ends, not twice at once.
    m_engine->update(first);
    m_engine->engine.core().runDueUpdates();
    QCOMPARE(fetcher->urls.size(), 2);
    fetcher->answerAll(FetchResult::Outcome::NotModified);
    QTRY_COMPARE(fetcher->urls.size(), 3);
    QCOMPARE(fetcher->urls.last(), m_server.url("/one"));
    fetcher->answerAll(FetchResult::Outcome::NotModified);

    // An update ends after its store commits, from the event loop; the clock moves on after that.
    const auto endedSince = [this](qint32 id, qsizetype seen) {
        return std::any_of(m_engine->updates->cbegin() + seen, m_engine->updates->cend(),
                           [id](const QList<QVariant> &update) { return update.at(0).toInt() == id; });
    };
    // The three answered so far have ended, so an end seen from here on is a new one.
    QTRY_COMPARE(m_engine->updates->size(), 3);
    qsizetype seen = m_engine->updates->size();
    m_engine->update(second, {{"UPDATEFREQ", "600"}});
    QTRY_COMPARE(fetcher->urls.size(), 4);
    fetcher->answerAll(FetchResult::Outcome::NotModified);
    QTRY_VERIFY(endedSince(second, seen));
    QCOMPARE(m_engine->itemBag(second)->text("NEXTUPDATETIME"), "2024-05-01T12:10:00Z");

    m_now = kStart.addSecs(599);
    m_engine->engine.core().runDueUpdates();
    QCOMPARE(fetcher->urls.size(), 4);
    m_now = kStart.addSecs(600);
    m_engine->engine.core().runDueUpdates();
    QCOMPARE(fetcher->urls.size(), 5);
    QCOMPARE(fetcher->urls.last(), m_server.url("/two"));
    m_now = kStart.addSecs(3600);
    m_engine->engine.core().runDueUpdates();
    QCOMPARE(fetcher->urls.size(), 6); // the first, hourly; the second is due but still in flight
    fetcher->answerAll(FetchResult::Outcome::NotModified);
    QTRY_COMPARE(fetcher->urls.size(), 7);
    QCOMPARE(fetcher->urls.last(), m_server.url("/two"));
    seen = m_engine->updates->size();
    fetcher->answerAll(FetchResult::Outcome::NotModified);
    QTRY_VERIFY(endedSince(second, seen));

    m_engine->client->RemoveItem("NEWS", first, 1);
    m_now = kStart.addSecs(7200);
    m_engine->engine.core().runDueUpdates();
    QCOMPARE(fetcher->urls.size(), 8);
    QCOMPARE(fetcher->urls.last(), m_server.url("/two"));
}

void tst_FeedUpdates::webPageLeadsToTheFeedItAdvertises()
{
    const QByteArray atom =
        "<?xml version=\"1.0\"?><feed xmlns=\"http://www.w3.org/2005/Atom\"><title>Site Feed</title>"
        "<entry><id>e1</id><title>First</title><content>Hello</content></entry></feed>";
    m_server.serve("/feeds/site.atom", atom, "application/atom+xml");
    m_server.serve("/feeds/other.rss", rss("Other", {"x"}));
    // Two advertised feeds, one behind a relative address with an entity: the first one wins.
    m_server.serve("/blog",
                   "<!DOCTYPE html><html><head><title>Blog</title>"
                   "<link rel=\"stylesheet\" href=\"/s.css\">"
                   "<LINK REL='alternate' TYPE='application/atom+xml' HREF='feeds/site.atom?a=1&amp;b=2'>"
                   "<link rel=\"alternate\" type=\"application/rss+xml\" href=\"/feeds/other.rss\">"
                   "</head><body>Posts</body></html>",
                   "text/html; charset=utf-8");
    m_server.serve("/feeds/site.atom?a=1&b=2", atom, "application/atom+xml");
    const qint32 id = m_engine->add(url("/blog"));
    QCOMPARE(waitForUpdates(), "OK: 1 item, 1 new");
    QCOMPARE(Texts(m_engine->itemBag(id), {"URL", "TITLE"}),
             QStringList({url("/feeds/site.atom?a=1&b=2"), "Site Feed"}));

    // A page that links no feed, on a site with none at the usual places, says so.
    m_server.serve("/plain", "<html><body>No feeds here</body></html>", "text/html");
    const qint32 none = m_engine->add(url("/plain"));
    const QString status = waitForUpdates();
    QVERIFY2(status.startsWith("Error: the web page") && status.endsWith("links to no feed"),
             qPrintable(status));
    QCOMPARE(m_engine->itemBag(none)->text("URL"), url("/plain"));
    QCOMPARE(m_engine->preview(url("/plain"))->text("MESSAGE"), "RequestFailed");

    // Without links the usual addresses are tried.
    m_server.serve("/feed.xml", rss("Found", {"y"}));
    const qint32 guessed = m_engine->add(url("/plain"));
    QCOMPARE(waitForUpdates(), "OK: 1 item, 1 new");
    QCOMPARE(m_engine->itemBag(guessed)->text("URL"), url("/feed.xml"));
}

QTEST_GUILESS_MAIN(tst_FeedUpdates)
#include "tst_FeedUpdates.moc"
