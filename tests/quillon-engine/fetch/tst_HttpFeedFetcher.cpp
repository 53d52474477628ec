#include "DiscoveringFetcher.h"
#include "FetchPolicy.h"
#include "HttpFeedFetcher.h"
#include "LocalHttpServer.h"

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
    request.password = user.isEmpty() ? QString() : QStringLiteral("pw");
    std::optional<FetchResult> result;
    fetcher.fetch(request, [&result](const FetchResult &r) { result = r; });
    if (!QTest::qWaitFor([&result]() { return result.has_value(); }, 20000))
        return {};
    return *result;
}
} // namespace

class tst_HttpFeedFetcher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_server.listen()); }
    void redirectsAreBoundedAndKeepTheLoginAtHome();
    void sizeIsCappedAndCutAnswersAreNamed();
    void waitsForAFreeConnection();
    void filesAreAnsweredLaterToo();
    void discoveryWorkIsBounded_data();
    void discoveryWorkIsBounded();

private:
    LocalHttpServer m_server;
};

void tst_HttpFeedFetcher::redirectsAreBoundedAndKeepTheLoginAtHome()
{
    LocalHttpServer::Route loop;
    loop.redirectTo = "/loop";
    loop.redirectStatus = 301;
    m_server.setRoute("/loop", loop);
    HttpFeedFetcher fetcher;
    const int connections = m_server.connectionCount();
    FetchResult r = fetchAndWait(fetcher, m_server.url("/loop"));
    QCOMPARE(r.outcome, Outcome::Failed);
    QCOMPARE(r.describe(), QStringLiteral("Error: more than 5 redirects"));
    QCOMPARE(m_server.requestCount("/loop"), 6);
    QCOMPARE(m_server.connectionCount(), connections + 1); // kept open from one to the next

    LocalHttpServer::Route away;
    away.redirectTo = m_server.url("/open").toString().replace("127.0.0.1", "localhost").toUtf8();
    away.user = "ann";
    away.password = "pw";
    m_server.setRoute("/away", away);
    m_server.serve("/open", kFeed, "application/rss+xml; charset=iso-8859-1");
    r = fetchAndWait(fetcher, m_server.url("/away"), "ann");
    QCOMPARE(r.outcome, Outcome::Ok);
    QCOMPARE(r.body, kFeed);
    QCOMPARE(r.contentType, QStringLiteral("application/rss+xml; charset=iso-8859-1"));
    QCOMPARE(r.finalUrl.host(), QStringLiteral("localhost"));
    QVERIFY(!m_server.lastHeader("/away", "authorization").isEmpty());
    QVERIFY(m_server.lastHeader("/open", "authorization").isEmpty());
    QCOMPARE(m_server.lastHeader("/open", "user-agent"), FetchOptions().userAgent);

    // The same host on another port is another server.
    LocalHttpServer otherPort;
    QVERIFY(otherPort.listen());
    otherPort.serve("/open", kFeed);
    away.redirectTo = otherPort.url("/open").toString().toUtf8();
    m_server.setRoute("/port", away);
    r = fetchAndWait(fetcher, m_server.url("/port"), "ann");
    QCOMPARE(r.outcome, Outcome::Ok);
    QCOMPARE(otherPort.requestCount("/open"), 1);
    QVERIFY(otherPort.lastHeader("/open", "authorization").isEmpty());
}

void tst_HttpFeedFetcher::sizeIsCappedAndCutAnswersAreNamed()
{
    LocalHttpServer::Route big;
    big.body = QByteArray(5000, 'x');
    m_server.setRoute("/big", big);
    LocalHttpServer::Route packed = big; // small on the wire, big once unpacked
    packed.gzip = true;
    m_server.setRoute("/packed", packed);
    FetchOptions options;
    options.maxBytes = 4096;
    HttpFeedFetcher fetcher(options);
    for (const char *path : {"/big", "/packed"}) {
        const FetchResult r = fetchAndWait(fetcher, m_server.url(path));
        QCOMPARE(r.outcome, Outcome::TooLarge);
        QCOMPARE(r.describe(), path == QByteArray("/big")
                                   ? QStringLiteral("Error: the document is larger than 4096 bytes")
                                   : QStringLiteral("Error: the document unpacks to more than 4096 bytes"));
        QVERIFY(r.body.isEmpty());
    }
    QCOMPARE(fetcher.running(), 0);

    // Told apart from a broken feed: a small download that unpacks to gigabytes, an answer
    // cut off mid-way (closed or reset), a packing that is not one; none hands on a body.
    LocalHttpServer::Route bomb;
    bomb.body = QByteArray(64 * 1024 * 1024, '\0');
    bomb.gzip = true;
    m_server.setRoute("/bomb", bomb);
    LocalHttpServer::Route cut;
    cut.body = kFeed.repeated(40);
    cut.cutAfter = 100;
    m_server.setRoute("/cut", cut);
    HttpFeedFetcher standard;
    // Packed answers are asked for and unpacked.
    FetchResult r = fetchAndWait(standard, m_server.url("/packed"));
    QCOMPARE(r.body, big.body);
    QVERIFY(m_server.lastHeader("/packed", "accept-encoding").contains("gzip"));
    r = fetchAndWait(standard, m_server.url("/bomb"));
    QCOMPARE(r.describe(), QStringLiteral("Error: the document unpacks to more than 10 MiB"));
    QVERIFY(r.body.isEmpty());
    cut.reset = true;
    m_server.setRoute("/reset", cut);
    for (const char *path : {"/cut", "/reset"}) {
        r = fetchAndWait(standard, m_server.url(path));
        QCOMPARE(r.describe(), QStringLiteral("Error: the connection was cut before the document ended"));
        QVERIFY(r.body.isEmpty());
    }
    LocalHttpServer::Route mislabelled;
    mislabelled.body = kFeed;
    mislabelled.headers = {{"Content-Encoding", "gzip"}};
    m_server.setRoute("/mislabelled", mislabelled);
    r = fetchAndWait(standard, m_server.url("/mislabelled"));
    QCOMPARE(r.describe(), QStringLiteral("Error: the document could not be unpacked"));
    QVERIFY(r.body.isEmpty());

    // Bytes beyond the announced length are not the next answer on a connection kept open.
    LocalHttpServer::Route overlong;
    overlong.body = kFeed + "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nspoil";
    overlong.announce = kFeed.size();
    m_server.setRoute("/overlong", overlong);
    m_server.serve("/after", kFeed);
    for (const char *path : {"/overlong", "/after"}) {
        r = fetchAndWait(standard, m_server.url(path));
        QCOMPARE(r.outcome, Outcome::Ok);
        QCOMPARE(r.body, kFeed);
    }
}

void tst_HttpFeedFetcher::waitsForAFreeConnection()
{
    LocalHttpServer::Route silent;
    silent.neverAnswer = true;
    m_server.setRoute("/hang", silent);
    FetchOptions options;
    options.timeoutMs = 400;
    options.maxPerHost = 2;
    HttpFeedFetcher fetcher(options);
    QStringList reasons;
    for (int i = 0; i < 5; ++i) {
        FetchRequest request;
        request.url = m_server.url("/hang");
        fetcher.fetch(request, [&reasons](const FetchResult &r) { reasons.append(r.describe()); });
    }
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
    FetchRequest hang;
    hang.url = m_server.url("/hang");
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

void tst_HttpFeedFetcher::filesAreAnsweredLaterToo()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    file.write(kFeed);
    file.close();
    HttpFeedFetcher fetcher;
    std::optional<FetchResult> result;
    FetchRequest request;
    request.url = QUrl::fromLocalFile(file.fileName());
    fetcher.fetch(request, [&result](const FetchResult &r) { result = r; });
    QVERIFY(!result); // callers may rely on never being called back inside fetch()
    QTRY_VERIFY(result.has_value());
    QCOMPARE(result->body, kFeed);
}

void tst_HttpFeedFetcher::discoveryWorkIsBounded_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QStringList>("links");  // advertised, in page order
    QTest::addColumn<QStringList>("silent"); // paths that never answer
    QTest::addColumn<QString>("found");      // the feed's path, or empty for none
    const auto many = [](const QString &form, int count) {
        QStringList links;
        for (int i = 0; i < count; ++i)
            links.append(form.arg(i));
        return links;
    };
    QTest::newRow("100,000 links") << "/many" << many("/many%1", 100000) << QStringList() << QString();
    QTest::newRow("links back to the page")
        << "/selfish" << many("/selfish?x=%1", 5000) + many("/selfish", 500) << QStringList() << QString();
    QTest::newRow("ten silent candidates")
        << "/quiet" << many("/quiet%1", 10) << many("/quiet%1", 10) << QString();
    QTest::newRow("the first feed in page order")
        << "/ordered" << QStringList{"/gone", "/feedA", "/feedB"} << QStringList() << "/feedA";
}

// One address typed by a user never turns into more than a dozen requests or a long wait.
void tst_HttpFeedFetcher::discoveryWorkIsBounded()
{
    QFETCH(QString, page);
    QFETCH(QStringList, links);
    QFETCH(QStringList, silent);
    QFETCH(QString, found);
    QByteArray html = "<html><head>";
    for (const QString &link : links)
        html += "<link rel=\"alternate\" type=\"application/rss+xml\" href=\"" + link.toUtf8() + "\">";
    m_server.serve(page, html + "</head></html>", "text/html");
    LocalHttpServer::Route quiet;
    quiet.neverAnswer = true;
    for (const QString &path : silent)
        m_server.setRoute(path, quiet);
    m_server.serve("/feedA", kFeed);
    m_server.serve("/feedB", kFeed);

    const int before = m_server.totalRequestCount();
    QElapsedTimer clock;
    clock.start();
    DiscoveringFetcher fetcher(std::make_unique<HttpFeedFetcher>());
    const FetchResult result = fetchAndWait(fetcher, m_server.url(page));
    QVERIFY2(clock.elapsed() < 15000, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(m_server.totalRequestCount() - before <= 12);
    if (found.isEmpty()) {
        QVERIFY2(result.reason.endsWith(QLatin1String("links to no feed")), qPrintable(result.reason));
    } else {
        QVERIFY2(result.ok(), qPrintable(result.reason));
        QCOMPARE(result.finalUrl.path(), found);
    }
}

QTEST_GUILESS_MAIN(tst_HttpFeedFetcher)
#include "tst_HttpFeedFetcher.moc"
