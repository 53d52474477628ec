#include "DiscoveringFetcher.h"
#include "FeedDiscovery.h"
#include "FetchPolicy.h"
#include "HttpFeedFetcher.h"
#include "LocalHttpServer.h"
#include "TestRows.h"

#include <QElapsedTimer>
#include <QTemporaryFile>
#include <QTest>

#include <optional>

using namespace quillon;
using Outcome = FetchResult::Outcome;

// What the engine's own tests (tst_FeedUpdates) do not reach: the fetcher's limits.
namespace {
const QByteArray kFeed = "<rss version=\"2.0\"><channel><title>T</title></channel></rss>";

FetchResult fetchAndWait(FeedFetcher &fetcher, const QUrl &url, const QString &user = {})
{
    FetchRequest request;
    request.url = url;
    request.user = user;
    request.password = user.isEmpty() ? QString() : "pw";
    std::optional<FetchResult> result;
    fetcher.fetch(request, [&result](const FetchResult &r) { result = r; });
    if (!QTest::qWaitFor([&result]() { return result.has_value(); }, 20000))
        return {};
    return *result;
}
} // namespace

Q_DECLARE_METATYPE(LocalHttpServer::Route)

class tst_HttpFeedFetcher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_server.listen()); }
    void redirectsAreBoundedAndKeepTheLoginAtHome();
    void answersArriveWholeAndLater();
    void brokenAnswersAreNamedAndHandOnNothing_data();
    void brokenAnswersAreNamedAndHandOnNothing();
    void waitsForAFreeConnection();
    void discoveryWorkIsBounded_data();
    void discoveryWorkIsBounded();
    void pagesAreToldFromFeeds_data();
    void pagesAreToldFromFeeds();

private:
    LocalHttpServer m_server;
};

void tst_HttpFeedFetcher::redirectsAreBoundedAndKeepTheLoginAtHome()
{
    LocalHttpServer::Route route;
    route.redirectTo = "/loop";
    route.redirectStatus = 301;
    m_server.setRoute("/loop", route);
    HttpFeedFetcher fetcher;
    const int connections = m_server.connectionCount();
    FetchResult r = fetchAndWait(fetcher, m_server.url("/loop"));
    QCOMPARE(r.outcome, Outcome::Failed);
    QCOMPARE(r.describe(), "Error: more than 5 redirects");
    QCOMPARE(m_server.requestCount("/loop"), 6);
    QCOMPARE(m_server.connectionCount(), connections + 1); // kept open from one to the next

    const QString home = m_server.url("/open").toString().replace("127.0.0.1", "localhost");
    route.user = "ann";
    route.password = "pw";
    route.redirectTo = home.toUtf8();
    route.redirectStatus = 302;
    m_server.setRoute("/away", route);
    m_server.serve("/open", kFeed, "application/rss+xml; charset=iso-8859-1");
    r = fetchAndWait(fetcher, m_server.url("/away"), "ann");
    QCOMPARE(r.outcome, Outcome::Ok);
    QCOMPARE(r.body, kFeed);
    QCOMPARE(r.contentType, "application/rss+xml; charset=iso-8859-1");
    QCOMPARE(r.finalUrl.host(), "localhost");
    QVERIFY(!m_server.lastHeader("/away", "authorization").isEmpty());
    QVERIFY(m_server.lastHeader("/open", "authorization").isEmpty());
    QCOMPARE(m_server.lastHeader("/open", "user-agent"), FetchOptions().userAgent);

    // The same host on another port is another server.
    LocalHttpServer otherPort;
    QVERIFY(otherPort.listen());
    otherPort.serve("/open", kFeed);
    route.redirectTo = otherPort.url("/open").toEncoded();
    m_server.setRoute("/port", route);
    r = fetchAndWait(fetcher, m_server.url("/port"), "ann");
    QCOMPARE(r.outcome, Outcome::Ok);
    QCOMPARE(otherPort.requestCount("/open"), 1);
    QVERIFY(otherPort.lastHeader("/open", "authorization").isEmpty());
}

void tst_HttpFeedFetcher::answersArriveWholeAndLater()
{
    // Packed answers are asked for and unpacked.
    HttpFeedFetcher fetcher;
    LocalHttpServer::Route route;
    route.body = kFeed.repeated(20);
    route.gzip = true;
    m_server.setRoute("/packed", route);
    QCOMPARE(fetchAndWait(fetcher, m_server.url("/packed")).body, kFeed.repeated(20));
    QVERIFY(m_server.lastHeader("/packed", "accept-encoding").contains("gzip"));

    // Bytes beyond the announced length are not the next answer on a connection kept open.
    route.body = kFeed + "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nspoil";
    route.gzip = false;
    route.announce = kFeed.size();
    m_server.setRoute("/overlong", route);
    m_server.serve("/after", kFeed);
    for (const char *path : {"/overlong", "/after"}) {
        const FetchResult r = fetchAndWait(fetcher, m_server.url(path));
        QCOMPARE(r.outcome, Outcome::Ok);
        QCOMPARE(r.body, kFeed);
    }

    // Callers may rely on never being called back inside fetch(), files included.
    QTemporaryFile file;
    QVERIFY(file.open() && file.write(kFeed) == kFeed.size() && file.flush());
    std::optional<FetchResult> result;
    FetchRequest request;
    request.url = QUrl::fromLocalFile(file.fileName());
    fetcher.fetch(request, [&result](const FetchResult &r) { result = r; });
    QVERIFY(!result);
    QTRY_VERIFY(result.has_value());
    QCOMPARE(result->body, kFeed);
}

void tst_HttpFeedFetcher::brokenAnswersAreNamedAndHandOnNothing_data()
{
    QTest::addColumn<int>("maxBytes"); // 0: the fetcher's own limit
    QTest::addColumn<LocalHttpServer::Route>("route");
    QTest::addColumn<int>("outcome");
    QTest::addColumn<QString>("reason");
    LocalHttpServer::Route big;
    big.body = QByteArray(5000, 'x');
    LocalHttpServer::Route packed = big; // small on the wire, big once unpacked
    packed.gzip = true;
    LocalHttpServer::Route bomb = packed;
    bomb.body = QByteArray(64 * 1024 * 1024, '\0');
    LocalHttpServer::Route cut;
    cut.body = kFeed.repeated(40);
    cut.cutAfter = 100;
    LocalHttpServer::Route reset = cut;
    reset.reset = true;
    LocalHttpServer::Route mislabelled;
    mislabelled.body = kFeed;
    mislabelled.headers = {{"Content-Encoding", "gzip"}};
    const int tooLarge = int(Outcome::TooLarge);
    const int failed = int(Outcome::Failed);
    row("larger than allowed", 4096, big, tooLarge, "Error: the document is larger than 4096 bytes");
    row("unpacks larger than allowed", 4096, packed, tooLarge,
        "Error: the document unpacks to more than 4096 bytes");
    row("gzip bomb", 0, bomb, tooLarge, "Error: the document unpacks to more than 10 MiB");
    // Told apart from a broken feed: an answer cut off mid-way (closed or reset), a packing that is not one.
    const QString cutText = "Error: the connection was cut before the document ended";
    row("closed mid-way", 0, cut, failed, cutText);
    row("reset mid-way", 0, reset, failed, cutText);
    row("a packing that is not one", 0, mislabelled, failed, "Error: the document could not be unpacked");
}

void tst_HttpFeedFetcher::brokenAnswersAreNamedAndHandOnNothing()
{
    QFETCH(int, maxBytes);
    QFETCH(LocalHttpServer::Route, route);
    QFETCH(int, outcome);
    QFETCH(QString, reason);
    const QString path = "/" + QString::fromUtf8(QTest::currentDataTag()).replace(' ', '-');
    m_server.setRoute(path, route);
    FetchOptions options;
    if (maxBytes > 0)
        options.maxBytes = maxBytes;
    HttpFeedFetcher fetcher(options);
    const FetchResult r = fetchAndWait(fetcher, m_server.url(path));
    QCOMPARE(int(r.outcome), outcome);
    QCOMPARE(r.describe(), reason);
    QVERIFY(r.body.isEmpty());
    QCOMPARE(fetcher.running(), 0);
}

void tst_HttpFeedFetcher::waitsForAFreeConnection()
{
    LocalHttpServer::Route silent;
    silent.neverAnswer = true;
    m_server.setRoute("/hang", silent);
    FetchRequest hang;
    hang.url = m_server.url("/hang");
    FetchOptions options;
    options.timeoutMs = 400;
    options.maxPerHost = 2;
    HttpFeedFetcher fetcher(options);
    QStringList reasons;
    for (int i = 0; i < 5; ++i)
        fetcher.fetch(hang, [&reasons](const FetchResult &r) { reasons.append(r.describe()); });
    QCOMPARE(fetcher.running(), 2);
    QCOMPARE(fetcher.waiting(), 3);
    QTRY_COMPARE_WITH_TIMEOUT(reasons.size(), 5, 10000);
    // The clock of each starts when it is sent, so every one was asked and waited its full time.
    QCOMPARE(m_server.requestCount("/hang"), 5);
    QCOMPARE(reasons.count(QStringLiteral("Error: no answer within 0.4 seconds")), 5);

    // Dropped by one of its own answers with others under way: those never answer.
    m_server.serve("/quick", kFeed);
    options.maxPerHost = 6;
    auto dropped = std::make_unique<HttpFeedFetcher>(options);
    int late = 0;
    for (int i = 0; i < 3; ++i)
        dropped->fetch(hang, [&late](const FetchResult &) { ++late; });
    hang.url = m_server.url("/quick");
    dropped->fetch(hang, [&dropped](const FetchResult &) { dropped.reset(); });
    QTRY_VERIFY(!dropped);
    // Past the time the others would have taken.
    QCOMPARE(fetchAndWait(fetcher, m_server.url("/hang")).outcome, Outcome::TimedOut);
    QCOMPARE(late, 0);

    // The engine's load setting caps the fetches at once below what the options allow.
    HttpFeedFetcher capped(options);
    auto policy = std::make_shared<FetchPolicy>();
    policy->setMaxConcurrent(1);
    capped.setPolicy(policy);
    int answered = 0;
    hang.url = m_server.url("/hang");
    for (int i = 0; i < 2; ++i)
        capped.fetch(hang, [&answered](const FetchResult &) { ++answered; });
    QCOMPARE(capped.running(), 1);
    QCOMPARE(capped.waiting(), 1);
    QTRY_COMPARE_WITH_TIMEOUT(answered, 2, 10000);
}

void tst_HttpFeedFetcher::discoveryWorkIsBounded_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QStringList>("links");  // advertised, in page order
    QTest::addColumn<QStringList>("silent"); // paths that never answer
    const auto many = [](const QString &form, int count) {
        QStringList links;
        for (int i = 0; i < count; ++i)
            links.append(form.arg(i));
        return links;
    };
    row("100,000 links", "/many", many("/many%1", 100000), QStringList());
    row("links back to the page", "/selfish", many("/selfish?x=%1", 5000) + many("/selfish", 500),
        QStringList());
    row("ten silent candidates", "/quiet", many("/quiet%1", 10), many("/quiet%1", 10));
}

// One address typed by a user never turns into more than a dozen requests or a long wait. Which
// feed wins when a page has several is the engine's test (tst_FeedUpdates).
void tst_HttpFeedFetcher::discoveryWorkIsBounded()
{
    QFETCH(QString, page);
    QFETCH(QStringList, links);
    QFETCH(QStringList, silent);
    QByteArray html = "<html><head>";
    for (const QString &link : links)
        html += "<link rel=\"alternate\" type=\"application/rss+xml\" href=\"" + link.toUtf8() + "\">";
    m_server.serve(page, html + "</head></html>", "text/html");
    LocalHttpServer::Route quiet;
    quiet.neverAnswer = true;
    for (const QString &path : silent)
        m_server.setRoute(path, quiet);

    const int before = m_server.totalRequestCount();
    QElapsedTimer clock;
    clock.start();
    DiscoveringFetcher fetcher(std::make_unique<HttpFeedFetcher>());
    const FetchResult result = fetchAndWait(fetcher, m_server.url(page));
    QVERIFY2(clock.elapsed() < 15000, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(m_server.totalRequestCount() - before <= 12);
    QVERIFY2(result.reason.endsWith(QLatin1String("links to no feed")), qPrintable(result.reason));
}

void tst_HttpFeedFetcher::pagesAreToldFromFeeds_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("type");
    QTest::addColumn<bool>("page");
    row("feed served as a page", QByteArray("<rss version=\"2.0\">"), QString("text/html"), false);
    row("marks, prolog, comments",
        QByteArray(" \xEF\xBB\xBF<?xml version=\"1.0\"?>\n<!-- a > b -->\n<?s x?><FEED>"),
        QString("text/html; charset=utf-8"), false);
    row("doctype, any type", QByteArray("<!DOCTYPE HTML><html>"), QString("application/octet-stream"), true);
    row("page after a comment", QByteArray("<!-- c --><Html lang=en>"), QString(), true);
    row("page by its type", QByteArray("<body>hello"), QString("Text/HTML"), true);
    row("unclosed comment", QByteArray("<!-- <rss>"), QString("application/xhtml+xml"), true);
    row("other text", QByteArray("{\"items\": []}"), QString("text/plain"), false);
}

// Read for every fetch: a feed that a server calls a page is still a feed.
void tst_HttpFeedFetcher::pagesAreToldFromFeeds()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, type);
    QFETCH(bool, page);
    QCOMPARE(FeedDiscovery::LooksLikeHtml(body, type), page);
}

QTEST_GUILESS_MAIN(tst_HttpFeedFetcher)
#include "tst_HttpFeedFetcher.moc"
