#include "CBConnect.h"
#include "ConsumerSettings.h"
#include "DaemonProcess.h"
#include "EngineFixture.h"
#include "LocalHttpServer.h"
#include "LocalSettings.h"
#include "MediaAgent.h"
#include "Playlists.h"
#include "PrivateSessionBus.h"
#include "PromptRecorder.h"
#include "TestFiles.h"
#include "TestRows.h"
#include "frmMainWindow.h"
#include "localization.h"

#include <QCryptographicHash>
#include <QDBusConnection>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>

using namespace quillon;

namespace {
struct Served
{
    const char *name;
    const char *type;
};
const Served kFiles[] = {
    {"a.mp3", "audio/mpeg"}, {"v.mp4", "video/mp4"}, {"p.jpg", "image/jpeg"}, {"d.pdf", "application/pdf"}};

QByteArray body(const QString &name, int size = 48 * 1024)
{
    QByteArray bytes;
    while (bytes.size() < size)
        bytes += QCryptographicHash::hash(name.toUtf8() + QByteArray::number(bytes.size()),
                                          QCryptographicHash::Sha256);
    return bytes.left(size);
}

} // namespace

// A media player on the test's own session bus that records what it is asked to open.
class FakePlayer : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
public:
    QStringList opened;

public Q_SLOTS:
    void OpenUri(const QString &uri) { opened.append(uri); }
};

// Enclosures downloaded through the real engine from a local server into a home of the test's own.
class tst_MediaDownloads : public QObject
{
    Q_OBJECT

private:
    void serveShow(int cutAfter = -1, const QString &feedPath = "/show");
    // "key=value" settings of the enclosures' general section, through the given client or the engine's own.
    void setGeneral(const QStringList &settings, SubscribeClient *client = nullptr);
    void startAgent();
    // Adds the show and waits for its first fetch.
    qint32 addShow();
    [[nodiscard]] QString file(const QString &relative) const { return m_home->filePath(relative); }
    [[nodiscard]] static QStringList recordedFiles(SubscribeClient &client, qint32 id);

    std::unique_ptr<LocalHttpServer> m_server; // one per test, so its counts are the test's own
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<EngineFixture> m_engine;
    std::unique_ptr<MediaAgent> m_agent;
    std::unique_ptr<QSignalSpy> m_caughtUp;
    SubscribeClientPtr m_agentClient;
    QStringList m_handedOff;

private Q_SLOTS:
    void init();
    void cleanup();
    void filesEachKindWhereTheSettingsSay_data();
    void filesEachKindWhereTheSettingsSay();
    void askedInTheWindowAndTakenAtOnce_data();
    void askedInTheWindowAndTakenAtOnce();
    void agedArticleTakesItsFileWithAutoDelete();
    void killedMediaLosesNothingAndDownloadsNothingTwice();
    void handsDownloadsToARunningPlayer_data();
    void handsDownloadsToARunningPlayer();
};

void tst_MediaDownloads::init()
{
    // A home of its own whose user-dirs.dirs names its media folders unlike the usual ones, so
    // that filing by the XDG rules shows.
    m_home = std::make_unique<QTemporaryDir>();
    qputenv("HOME", m_home->path().toUtf8());
    qputenv("XDG_CONFIG_HOME", file(".config").toUtf8());
    qputenv("XDG_DATA_HOME", file(".local/share").toUtf8());
    QVERIFY(TestFiles::write(file(".config/user-dirs.dirs"),
                             "XDG_MUSIC_DIR=\"$HOME/Tunes\"\nXDG_VIDEOS_DIR=\"$HOME/Films\"\n"
                             "XDG_PICTURES_DIR=\"$HOME/Photos\"\n"));
    m_server = std::make_unique<LocalHttpServer>();
    QVERIFY(m_server->listen());
    m_engine = std::make_unique<EngineFixture>();
    QVERIFY(m_engine->engine.isReady());
    m_engine->startUpdating([] { return QDateTime::currentDateTimeUtc(); });
    m_handedOff.clear();
    serveShow();
}

void tst_MediaDownloads::cleanup()
{
    m_caughtUp.reset();
    m_agent.reset();
    if (m_agentClient)
        QCOMPARE(m_agentClient->LiveHandleCount(), 0);
    m_agentClient.reset();
    m_engine.reset();
    m_home.reset();
    m_server.reset();
}

void tst_MediaDownloads::serveShow(int cutAfter, const QString &feedPath)
{
    QString feed = QStringLiteral("<rss version=\"2.0\"><channel><title>Show</title>");
    int n = 0;
    for (const Served &f : kFiles) {
        const QString path = QStringLiteral("/files/%1").arg(QLatin1String(f.name));
        LocalHttpServer::Route route;
        route.contentType = f.type;
        route.body = body(QLatin1String(f.name));
        route.ranges = true;
        route.cutAfter = cutAfter;
        m_server->setRoute(path, route);
        feed += QStringLiteral("<item><guid>ep%1</guid><title>Episode %1</title>"
                               "<enclosure url=\"%2\" type=\"%3\" length=\"%4\"/></item>")
                    .arg(++n)
                    .arg(m_server->url(path).toString(), QLatin1String(f.type))
                    .arg(route.body.size());
    }
    m_server->serve(feedPath, (feed + QStringLiteral("</channel></rss>")).toUtf8());
}

void tst_MediaDownloads::setGeneral(const QStringList &settings, SubscribeClient *client)
{
    for (const QString &setting : settings)
        EngineCalls::SetSetting(client ? *client : *m_engine->client, "MEDIACONSUMER", "Settings",
                                setting.section('=', 0, 0), setting.section('=', 1));
}

void tst_MediaDownloads::startAgent()
{
    m_agentClient = m_engine->engine.newClient();
    MediaAgent::Options options;
    options.folders = MediaFolders::fromSystem();
    options.indexPath = file("index.json");
    options.retryMs = 100;
    options.answerPollMs = 50;
    options.handOff = [this](const QString &path, const QString &) { m_handedOff.append(path); };
    m_agent = std::make_unique<MediaAgent>(m_agentClient, options);
    m_caughtUp = std::make_unique<QSignalSpy>(m_agent.get(), &MediaAgent::caughtUp);
    QString error;
    QVERIFY2(m_agent->start(&error), qPrintable(error));
}

qint32 tst_MediaDownloads::addShow()
{
    const qint32 id = m_engine->add(m_server->url("/show").toString());
    const QString status = m_engine->waitForUpdates();
    return status.startsWith("OK") ? id : 0;
}

QStringList tst_MediaDownloads::recordedFiles(SubscribeClient &client, qint32 id)
{
    QStringList files;
    const BagPtr answer =
        EngineCalls::Request(client, {{"REQUEST", "ITEMS"}, {"SUBSCRIPTIONID", QString::number(id)}});
    const BagPtr result = answer ? answer->bag("Result") : nullptr;
    const ListPtr items = result ? result->list("ITEMS") : nullptr;
    for (const PropertyValue &item : items ? items->items() : QList<PropertyValue>{}) {
        // A list without enclosures shows as files missing: the test fails instead of crashing.
        const ListPtr enclosures = std::get<BagPtr>(item)->list("ENCLOSURES");
        for (const PropertyValue &enclosure : enclosures ? enclosures->items() : QList<PropertyValue>{}) {
            if (std::get<BagPtr>(enclosure)->contains("FILE"))
                files.append(std::get<BagPtr>(enclosure)->text("FILE"));
        }
    }
    files.sort();
    return files;
}

void tst_MediaDownloads::filesEachKindWhereTheSettingsSay_data()
{
    QTest::addColumn<QStringList>("settings");
    QTest::addColumn<QStringList>("existing"); // files there before, holding "old"
    QTest::addColumn<QStringList>("expected"); // files that get the served bytes
    QTest::addColumn<int>("cutAfter");         // each answer stops after this many bytes of its body
    const QStringList always = {"EnableAutoDownload=1", "PromptForAutoDownload=0"};
    const QString downloads = ".local/share/Corvell/Downloads/";
    const QStringList filed = {"Tunes/Show/a.mp3", "Films/Show/v.mp4", "Photos/Show/p.jpg",
                               downloads + "Show/d.pdf"};
    const QStringList none, old = {"Tunes/Show/a.mp3"};
    row("always, one folder per subscription", always, none, filed, -1);
    row("always, flat, music not in Music",
        always + QStringList{"OrganizeBySubscriptionTitle=0", "StoreMusicInMyMusic=0"}, none,
        QStringList{downloads + "a.mp3", "Films/v.mp4", "Photos/p.jpg", downloads + "d.pdf"}, -1);
    row("overwrite off keeps both", always, old, QStringList{"Tunes/Show/a (2).mp3"} + filed.mid(1), -1);
    row("overwrite on replaces", always + QStringList{"OverwriteFiles=1"}, old, filed, -1);
    row("playlist and player", always + QStringList{"PlaceIntoPlaylist=1", "EnablePodcasting=1"}, none, filed,
        -1);
    row("never", QStringList{"EnableAutoDownload=0", "PromptForAutoDownload=0"}, none, none, -1);
    row("cut downloads resume with a range", always, none, filed, 20000);
}

void tst_MediaDownloads::filesEachKindWhereTheSettingsSay()
{
    QFETCH(QStringList, settings);
    QFETCH(QStringList, existing);
    QFETCH(QStringList, expected);
    QFETCH(int, cutAfter);
    setGeneral(settings);
    for (const QString &old : existing)
        QVERIFY(TestFiles::write(file(old), "old"));
    serveShow(cutAfter);
    startAgent();
    const qsizetype before = m_caughtUp->size();
    const qint32 id = addShow();
    QVERIFY(id > 0);
    QStringList paths;
    for (const QString &relative : expected) {
        paths.append(file(relative));
        const QString served = QFileInfo(QString(relative).remove(" (2)")).fileName();
        QTRY_COMPARE_WITH_TIMEOUT(TestFiles::read(paths.last()), body(served), 15000);
        QVERIFY(!QFileInfo::exists(EnclosureDownloader::partOf(paths.last())));
    }
    paths.sort();
    QTRY_COMPARE(recordedFiles(*m_engine->client, id), paths); // the article pages can point at the files
    if (cutAfter > 0) {                                        // 48 KiB in three pieces
        QCOMPARE(m_server->requestCount("/files/a.mp3"), 3);
        QCOMPARE(m_server->lastHeader("/files/a.mp3", "range"), QByteArray("bytes=40000-"));
    }
    if (expected.isEmpty()) {
        QTRY_VERIFY(m_caughtUp->size() > before);
        QCOMPARE(m_server->requestCount("/files/a.mp3") + m_server->requestCount("/files/d.pdf"), 0);
    }
    if (existing.size() == 1 && !expected.contains(existing.first()))
        QCOMPARE(TestFiles::read(file(existing.first())), QByteArray("old"));
    if (settings.contains("PlaceIntoPlaylist=1")) {
        const QList<Playlists::Track> m3u = Playlists::readM3u(file("Tunes/Playlists/Show.m3u"));
        const QList<Playlists::Track> xspf = Playlists::readXspf(file("Tunes/Playlists/Show.xspf"));
        QCOMPARE(m3u.size(), 4);
        QStringList listed;
        for (qsizetype i = 0; i < m3u.size(); ++i) {
            QCOMPARE(xspf.value(i).file, m3u.at(i).file);
            QCOMPARE(xspf.value(i).title, m3u.at(i).title);
            listed.append(m3u.at(i).file);
        }
        QCOMPARE(listed, m_handedOff); // in the order they were downloaded
        listed.sort();
        QCOMPARE(listed, paths);
    }
}

void tst_MediaDownloads::askedInTheWindowAndTakenAtOnce_data()
{
    QTest::addColumn<int>("answer"); // the enclosure question's: 1 yes, 0 no
    QTest::addColumn<bool>("forAll");
    QTest::newRow("yes downloads") << 1 << false;
    QTest::newRow("no downloads nothing") << 0 << false;
    QTest::newRow("yes for all becomes the general answer") << 1 << true;
}

// The engine asks ConfigConsumer, whose window puts the question to the user; nothing is
// fetched while it is open, and the answer takes effect at once.
void tst_MediaDownloads::askedInTheWindowAndTakenAtOnce()
{
    QFETCH(int, answer);
    QFETCH(bool, forAll);
    LocalSettings::SetBaseFolder(file("settings"));
    LoadStrings(QuillonDataFolder());
    PromptRecorder prompts;
    qsizetype caughtUpWhenAsked = -1;
    prompts.onAsk = [&](Prompt &prompt) {
        prompt.applyToAll = forAll;
        QCOMPARE(m_server->requestCount("/files/a.mp3"), 0);
        caughtUpWhenAsked = m_caughtUp->size();
    };
    prompts.answer = answer;
    frmMainWindow window;
    const SubscribeClientPtr windowClient = m_engine->engine.newClient();
    auto callback = std::make_shared<CBConnect>();
    callback->Setup(&window);
    windowClient->Connect("CONFIGCONSUMER", std::move(callback));
    window.SetClient(windowClient);
    startAgent();
    const qint32 id = addShow();
    QVERIFY(id > 0);
    QTRY_COMPARE(prompts.texts(PromptKind::EnclosureWarning).size(), 1);
    if (answer == 1) {
        QTRY_COMPARE_WITH_TIMEOUT(TestFiles::read(file("Tunes/Show/a.mp3")), body("a.mp3"), 5000);
        QTRY_COMPARE(TestFiles::read(file(".local/share/Corvell/Downloads/Show/d.pdf")), body("d.pdf"));
    } else {
        QTRY_VERIFY(m_caughtUp->size() > caughtUpWhenAsked);
        QCOMPARE(m_server->requestCount("/files/a.mp3"), 0);
    }
    QCOMPARE(GetConsumerSetting(*m_engine->client, "EnableAutoDownload", "-", "MEDIACONSUMER", "Settings"),
             forAll ? "1" : "-");
    ClearStrings();
    LocalSettings::SetBaseFolder(QString());
}

void tst_MediaDownloads::agedArticleTakesItsFileWithAutoDelete()
{
    setGeneral({"EnableAutoDownload=1", "PromptForAutoDownload=0", "EnableAutoDelete=1"});
    qint64 skew = 0;
    m_engine->engine.core().setClock([&skew] { return QDateTime::currentDateTimeUtc().addSecs(skew); });
    startAgent();
    const qint32 id = addShow();
    QVERIFY(id > 0);
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(file("Photos/Show/p.jpg")), 10000);
    QTRY_COMPARE(recordedFiles(*m_engine->client, id).size(), 4);
    QSignalSpy deleted(m_agent.get(), &MediaAgent::deleted);
    skew = 600;
    m_engine->update(id, {{"DELETEUNREAD", "60"}});
    QTRY_COMPARE_WITH_TIMEOUT(deleted.size(), 4, 10000);
    QVERIFY(!QFileInfo::exists(file("Photos/Show/p.jpg")));
    QVERIFY(!QFileInfo::exists(file("Tunes/Show/a.mp3")));
}

void tst_MediaDownloads::killedMediaLosesNothingAndDownloadsNothingTwice()
{
    DaemonProcess daemon;
    QVERIFY2(daemon.start(), qPrintable(daemon.errorText()));
    SubscribeClientPtr client = daemon.newClient();
    setGeneral({"EnableAutoDownload=1", "PromptForAutoDownload=0"}, client.get());
    LocalHttpServer::Route stuck;
    stuck.neverAnswer = true;
    m_server->setRoute("/files/v.mp4", stuck);

    const QString program = DaemonProcess::executable("quillon-media");
    const QStringList args = {"--socket", daemon.socketName(), "--index", file("index.json"), "--retry", "1"};
    QProcess media;
    media.start(program, args);
    QVERIFY(media.waitForStarted());
    const Handle request = client->CreateItemRequest("NEWS", QString(), m_server->url("/show").toString());
    client->SubmitRequest(request, std::make_shared<CopyingCallback>(*client));
    client->ReleaseHandle(request);
    // Everything but the video is whole before the kill; the video is under way.
    QTRY_COMPARE_WITH_TIMEOUT(TestFiles::read(file("Photos/Show/p.jpg")), body("p.jpg"), 20000);
    QTRY_COMPARE(TestFiles::read(file("Tunes/Show/a.mp3")), body("a.mp3"));
    QTRY_COMPARE(TestFiles::read(file(".local/share/Corvell/Downloads/Show/d.pdf")), body("d.pdf"));
    QTRY_VERIFY(m_server->requestCount("/files/v.mp4") >= 1);
    media.kill(); // SIGKILL in the middle of the video
    QVERIFY(media.waitForFinished());

    serveShow();
    media.start(program, args);
    QVERIFY(media.waitForStarted());
    QTRY_COMPARE_WITH_TIMEOUT(TestFiles::read(file("Films/Show/v.mp4")), body("v.mp4"), 20000);
    for (const char *path : {"/files/a.mp3", "/files/p.jpg", "/files/d.pdf"})
        QCOMPARE(m_server->requestCount(path), 1);
    QCOMPARE(QDir(file("Tunes/Show")).entryList(QDir::Files), QStringList{"a.mp3"});
    media.terminate();
    QVERIFY(media.waitForFinished());
    client.reset();
    QCOMPARE(daemon.stop(), 0);
}

void tst_MediaDownloads::handsDownloadsToARunningPlayer_data()
{
    QTest::addColumn<QString>("podcasting");
    QTest::newRow("podcasting on") << "1";
    QTest::newRow("podcasting off") << "0";
}

// quillon-media itself, on a session bus of the test's own with a player on it. A second show
// with podcasting on is added once the first is recorded: by the time its files reach the
// player, any of the first show's would have reached it before them.
void tst_MediaDownloads::handsDownloadsToARunningPlayer()
{
    QFETCH(QString, podcasting);
    if (QStandardPaths::findExecutable("dbus-daemon").isEmpty())
        QSKIP("no dbus-daemon for a private session bus");
    PrivateSessionBus bus;
    QVERIFY(bus.start());
    QDBusConnection connection = QDBusConnection::connectToBus(bus.address(), "player");
    FakePlayer player;
    QVERIFY(connection.registerService("org.mpris.MediaPlayer2.fake"));
    QVERIFY(connection.registerObject("/org/mpris/MediaPlayer2", &player, QDBusConnection::ExportAllSlots));
    const auto leave = qScopeGuard([] { QDBusConnection::disconnectFromBus("player"); });
    DaemonProcess daemon;
    QVERIFY2(daemon.start(), qPrintable(daemon.errorText()));
    SubscribeClientPtr client = daemon.newClient();
    setGeneral({"EnableAutoDownload=1", "PromptForAutoDownload=0", "EnablePodcasting=" + podcasting},
               client.get());
    QProcess media;
    media.setProcessEnvironment(bus.environment());
    media.start(DaemonProcess::executable("quillon-media"),
                {"--socket", daemon.socketName(), "--index", file("index.json")});
    QVERIFY(media.waitForStarted());
    const qint32 show = EngineCalls::AddSubscription(*client, "Show", m_server->url("/show").toString());
    QTRY_COMPARE_WITH_TIMEOUT(recordedFiles(*client, show).size(), 4, 20000);

    setGeneral({"EnablePodcasting=1"}, client.get());
    serveShow(-1, "/late");
    const qint32 late = EngineCalls::AddSubscription(*client, "Late", m_server->url("/late").toString());
    QTRY_COMPARE_WITH_TIMEOUT(player.opened.size(), podcasting == "1" ? 8 : 4, 20000);
    QStringList uris;
    const QStringList expected =
        recordedFiles(*client, late) + (podcasting == "1" ? recordedFiles(*client, show) : QStringList());
    for (const QString &path : expected)
        uris.append(QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded));
    uris.sort();
    player.opened.sort();
    QCOMPARE(player.opened, uris);
    media.terminate();
    QVERIFY(media.waitForFinished());
    client.reset();
    QCOMPARE(daemon.stop(), 0);
}

QTEST_MAIN(tst_MediaDownloads)
#include "tst_MediaDownloads.moc"
