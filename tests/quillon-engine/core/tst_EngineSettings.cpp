#include "EngineFixture.h"
#include "GeneralSettingKeys.h"
#include "NetworkSettingKeys.h"
#include "SquidProxy.h"
#include "TestFiles.h"
#include "TestRows.h"

#include <QFile>
#include <QRegularExpression>

using namespace quillon;

namespace {
// A name only the proxy can resolve: a feed under it arrives only through the proxy.
const QString kProxyOnlyHost = QStringLiteral("feeds.quillon.test");

// "key=value" pairs of the network page's section.
using Pairs = QStringList;

const Pairs kSpecificNoBypass = {"optUseIEProxySettings=False", "txtSpecificProxyServer=<squid>",
                                 "chkBypassForLocals=False"};
const Pairs kBasicLogin = {"chkUseNetworkCredentials=True", "optCurrentlyUsersCredentials=False",
                           "txtUsernameCredentials=alice", "txtPasswordCredentials=wonderland"};
} // namespace

// The settings the option pages write, as the engine follows them: proxy and login for every
// request, the default update frequency, the log file.
class tst_EngineSettings : public EngineTestCase
{
    Q_OBJECT

private:
    void writeNetwork(const Pairs &pairs, const QString &squid = {});

private Q_SLOTS:
    void cleanup()
    {
        qunsetenv("http_proxy");
        qunsetenv("no_proxy");
        EngineTestCase::cleanup();
    }
    void requestsGoTheWayThePageSays_data();
    void requestsGoTheWayThePageSays();
    void proxyForUrlExplainsTheRoute_data();
    void proxyForUrlExplainsTheRoute();
    void defaultFrequencyMovesSubscriptionsOnIt();
    void logFileFollowsTheGeneralPage_data();
    void logFileFollowsTheGeneralPage();
};

void tst_EngineSettings::writeNetwork(const Pairs &pairs, const QString &squid)
{
    for (const QString &pair : pairs) {
        QString value = pair.section(QLatin1Char('='), 1);
        value.replace(QLatin1String("<squid>"), squid);
        m_engine->setSetting(NetworkSettingKeys::kConsumer, NetworkSettingKeys::kSection,
                             pair.section(QLatin1Char('='), 0, 0), value);
    }
}

void tst_EngineSettings::requestsGoTheWayThePageSays_data()
{
    QTest::addColumn<bool>("ntlm");
    QTest::addColumn<Pairs>("settings");
    QTest::addColumn<bool>("environmentProxy");
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("proxyUser"); // a pattern of the access log's user; empty: not proxied
    QTest::addColumn<QString>("status");

    row("named proxy, Basic login", false, kSpecificNoBypass + kBasicLogin, false, "127.0.0.1", "alice",
        "OK: 1 item, 1 new");
    row("wrong password", false, kSpecificNoBypass + kBasicLogin + Pairs{"txtPasswordCredentials=x"}, false,
        "127.0.0.1", "-", "Error: HTTP 407 Proxy Authentication Required");
    row("NTLM as DOMAIN\\user", true,
        kSpecificNoBypass + kBasicLogin + Pairs{"txtUsernameCredentials=bob", "txtDomainCredentials=CORP"},
        false, "127.0.0.1", "CORP\\S*bob\\S*", "OK: 1 item, 1 new");
    row("local address bypassed", false, kSpecificNoBypass + Pairs{"chkBypassForLocals=True"}, false,
        "127.0.0.1", "", "OK: 1 item, 1 new");
    row("proxy switched off", false, kSpecificNoBypass + Pairs{"chkUseProxyServer=False"}, false, "127.0.0.1",
        "", "OK: 1 item, 1 new");
    row("system proxy from the environment", false, kBasicLogin, true, kProxyOnlyHost, "alice",
        "OK: 1 item, 1 new");
}

void tst_EngineSettings::requestsGoTheWayThePageSays()
{
    QFETCH(bool, ntlm);
    QFETCH(Pairs, settings);
    QFETCH(bool, environmentProxy);
    QFETCH(QString, host);
    QFETCH(QString, proxyUser);
    QFETCH(QString, status);
    if (const QString missing = SquidProxy::missing(); !missing.isEmpty())
        QSKIP(qPrintable(missing));
    SquidProxy squid;
    QVERIFY2(squid.start(ntlm ? SquidProxy::Login::Ntlm : SquidProxy::Login::Basic,
                         {{kProxyOnlyHost, "127.0.0.1"}}),
             qPrintable(squid.errorText()));
    if (environmentProxy)
        qputenv("http_proxy", ("http://" + squid.address()).toUtf8());
    writeNetwork(settings, squid.address());

    const QString tag =
        QString::fromUtf8(QTest::currentDataTag()).replace(QRegularExpression("[^A-Za-z]+"), "-");
    const QString path = QStringLiteral("/feed-%1.xml").arg(tag);
    m_server.serve(path, rss("Proxied", {"a"}));
    QUrl feed = m_server.url(path);
    feed.setHost(host);
    startUpdating();
    const qint32 id = m_engine->add(feed.toString());
    QCOMPARE(m_engine->waitForUpdates(), status);
    QCOMPARE(m_engine->itemBag(id)->text("LASTUPDATESTATUS"), status);

    const QRegularExpression proxied(QRegularExpression::escape(path) + " (" + proxyUser + ") ");
    if (proxyUser.isEmpty()) {
        QVERIFY(!squid.accessLog().contains(path.toUtf8()));
        QCOMPARE(m_server.requestCount(path), 1);
    } else {
        QTRY_VERIFY2_WITH_TIMEOUT(proxied.match(QString::fromUtf8(squid.accessLog())).hasMatch(),
                                  squid.accessLog().constData(), 15000);
    }
}

void tst_EngineSettings::proxyForUrlExplainsTheRoute_data()
{
    QTest::addColumn<Pairs>("settings");
    QTest::addColumn<QString>("environmentProxy");
    QTest::addColumn<QString>("noProxy");
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("proxy");
    QTest::addColumn<QString>("reason");
    QTest::addColumn<QString>("login");

    const Pairs named = {"optUseIEProxySettings=False", "txtSpecificProxyServer=proxy.corp:3128"};
    row("nothing stored, this machine", Pairs{}, "", "", "http://127.0.0.1:8080/feed", "",
        "a local address, which bypasses the proxy", "");
    row("nothing stored, intranet name", Pairs{}, "", "", "http://intranet/feed", "",
        "a local address, which bypasses the proxy", "");
    row("named proxy", named, "", "", "example.com/rss", "http://proxy.corp:3128",
        "the proxy server named in the settings", "");
    row("named proxy, local not bypassed", named + Pairs{"chkBypassForLocals=False"}, "", "",
        "http://localhost/feed", "http://proxy.corp:3128", "the proxy server named in the settings", "");
    row("no server named", Pairs{"optUseIEProxySettings=False"}, "", "", "http://example.com/", "",
        "no proxy server is named", "");
    row("switched off", named + Pairs{"chkUseProxyServer=False"}, "", "", "http://example.com/", "",
        "the proxy is switched off", "");
    row("domain login", named + kBasicLogin + Pairs{"txtDomainCredentials=CORP"}, "", "",
        "https://example.com/", "http://proxy.corp:3128", "the proxy server named in the settings",
        "CORP\\alice");
    row("current user", named + Pairs{"chkUseNetworkCredentials=True"}, "", "", "http://example.com/",
        "http://proxy.corp:3128", "the proxy server named in the settings", "(current user)");
    row("system: environment", Pairs{}, "http://envproxy:3128", "", "http://example.com/",
        "http://envproxy:3128", "", "");
    row("system: environment's exception", Pairs{}, "http://envproxy:3128", "example.com",
        "http://example.com/", "", "", "");
}

void tst_EngineSettings::proxyForUrlExplainsTheRoute()
{
    QFETCH(Pairs, settings);
    QFETCH(QString, environmentProxy);
    QFETCH(QString, noProxy);
    QFETCH(QString, url);
    QFETCH(QString, proxy);
    QFETCH(QString, reason);
    QFETCH(QString, login);
    if (!environmentProxy.isEmpty())
        qputenv("http_proxy", environmentProxy.toUtf8());
    if (!noProxy.isEmpty())
        qputenv("no_proxy", noProxy.toUtf8());
    writeNetwork(settings);

    SubscribeClient &client = *m_engine->client;
    const Handle route = client.ProxyForUrl(url);
    QCOMPARE(client.GetStringValue(route, "PROXY"), proxy);
    if (!reason.isEmpty()) // the system's own wording varies with where it found the proxy
        QCOMPARE(client.GetStringValue(route, "REASON"), reason);
    QCOMPARE(client.GetStringValue(route, "LOGIN"), login);
    client.ReleaseHandle(route);
}

void tst_EngineSettings::defaultFrequencyMovesSubscriptionsOnIt()
{
    m_server.serve("/often.xml", rss("Proxied", {"a"}));
    startUpdating();
    const qint32 onDefault = m_engine->add(url("/often.xml"));
    const qint32 own = m_engine->add(url("/often.xml"));
    m_engine->update(own, {{"UPDATEFREQ", "600"}});
    // Claimed, fetched and recorded: the last check is what the new frequency counts from.
    QTRY_COMPARE(m_engine->itemBag(onDefault)->text("LastDateCheck"), "2024-05-01T12:00:00Z");
    QTRY_COMPARE(m_engine->itemBag(own)->text("NEXTUPDATETIME"), "2024-05-01T12:10:00Z");
    QCOMPARE(m_engine->itemBag(onDefault)->text("NEXTUPDATETIME"), "2024-05-01T13:00:00Z");

    // Moved from its last check at once, not after the hour it was waiting for.
    m_engine->setSetting("ENGINE", QString(), "UPDATEFREQ", "7200");
    QCOMPARE(m_engine->itemBag(onDefault)->text("NEXTUPDATETIME"), "2024-05-01T14:00:00Z");
    QCOMPARE(m_engine->itemBag(own)->text("NEXTUPDATETIME"), "2024-05-01T12:10:00Z");
    // Held to the engine's shortest interval, like any frequency.
    m_engine->setSetting("ENGINE", QString(), "UPDATEFREQ", "5");
    QCOMPARE(m_engine->itemBag(onDefault)->text("NEXTUPDATETIME"), "2024-05-01T12:01:00Z");
}

void tst_EngineSettings::logFileFollowsTheGeneralPage_data()
{
    QTest::addColumn<QString>("logToDisk"); // empty: not stored
    QTest::addColumn<QString>("logLevel");
    QTest::addColumn<int>("lineLevel");
    QTest::addColumn<bool>("written");

    row("nothing stored, ordinary line", "", "", 1, true);
    row("nothing stored, detail", "", "", GeneralSettingKeys::kLineDetail, false);
    row("file off", "0", "3", GeneralSettingKeys::kLineMilestone, false);
    row("milestones only, ordinary line", "1", "0", 1, false);
    row("milestones only, milestone", "1", "0", GeneralSettingKeys::kLineMilestone, true);
    row("errors, error", "1", "1", GeneralSettingKeys::kLineError, true);
    row("errors, ordinary line", "1", "1", 1, false);
    row("everything, detail", "1", "3", GeneralSettingKeys::kLineDetail, true);
    row("level out of range is held", "1", "99", GeneralSettingKeys::kLineDetail, true);
}

void tst_EngineSettings::logFileFollowsTheGeneralPage()
{
    QFETCH(QString, logToDisk);
    QFETCH(QString, logLevel);
    QFETCH(int, lineLevel);
    QFETCH(bool, written);
    if (!logToDisk.isEmpty())
        m_engine->setSetting("ENGINE", QString(), GeneralSettingKeys::kLogToDisk, logToDisk);
    if (!logLevel.isEmpty())
        m_engine->setSetting("ENGINE", QString(), GeneralSettingKeys::kLogLevel, logLevel);
    m_engine->client->Log(QStringLiteral("line of %1").arg(QTest::currentDataTag()), lineLevel);
    // The table keeps every line; only the file follows the page.
    QCOMPARE(TestFiles::read(m_engine->engine.dataFolder() + "/engine.log")
                 .contains(QByteArray("line of ") + QTest::currentDataTag()),
             written);
}

QTEST_GUILESS_MAIN(tst_EngineSettings)
#include "tst_EngineSettings.moc"
