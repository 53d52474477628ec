#include "ConsumerSettings.h"
#include "EngineCalls.h"
#include "LinkedSubscribeClient.h"
#include "LocalHttpServer.h"
#include "LocalSettings.h"
#include "SocketLink.h"
#include "TestFiles.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <signal.h>

using namespace quillon;

// The real programs, started as a user would: the engine daemon and ConfigConsumer.
class tst_Startup : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void waitsForEngineThenShowsWindowAndEndsWithIt();
    void servicesOutliveTheWindow();

private:
    QProcessEnvironment Environment() const;
    void StartEngine(QProcess &engine);
    void StartProgram(QProcess &program, const QProcessEnvironment &env = {});
    static bool Printed(QProcess &process, const QByteArray &line);
    int Delivered() const;
    int Services(const QString &command);

    QTemporaryDir m_dir;
    QString m_binDir;
    QString m_socketName;
    QProcess m_engine;
    QProcess m_program;
    QProcessEnvironment m_servicesEnv;
};

void tst_Startup::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_binDir = qEnvironmentVariable("QUILLON_BIN_DIR");
    QVERIFY2(!m_binDir.isEmpty(), "QUILLON_BIN_DIR is not set");
    // Absolute: the programs run with their own HOME, so a relative name would land elsewhere.
    m_socketName = m_dir.filePath("engine.sock");
}

void tst_Startup::cleanup()
{
    if (!m_servicesEnv.isEmpty())
        Services("stop");
    for (QProcess *process : {&m_program, &m_engine}) {
        if (process->state() != QProcess::NotRunning) {
            process->kill();
            process->waitForFinished(3000);
        }
        process->setProperty("seen", QByteArray());
    }
}

QProcessEnvironment tst_Startup::Environment() const
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    env.insert("QUILLON_ENGINE_SOCKET", m_socketName);
    env.insert("QUILLON_ENGINE_DATA", m_dir.filePath("engine"));
    env.insert("CONFIGCONSUMER_LOCK", m_dir.filePath("configconsumer.lock"));
    env.insert("CONFIGCONSUMER_REPORT_WINDOW", "1");
    env.insert("HOME", m_dir.path());
    env.insert("XDG_CONFIG_HOME", m_dir.filePath("config"));
    env.insert("XDG_DATA_HOME", m_dir.filePath("data"));
    return env;
}

void tst_Startup::StartEngine(QProcess &engine)
{
    engine.setProcessEnvironment(Environment());
    engine.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    engine.start(m_binDir + "/quillon-engine", {});
    QVERIFY(engine.waitForStarted(5000));
    QTRY_VERIFY_WITH_TIMEOUT(Printed(engine, "listening"), 10000);
}

void tst_Startup::StartProgram(QProcess &program, const QProcessEnvironment &env)
{
    program.setProcessEnvironment(env.isEmpty() ? Environment() : env);
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(m_binDir + "/configconsumer", {});
    QVERIFY(program.waitForStarted(5000));
}

bool tst_Startup::Printed(QProcess &process, const QByteArray &line)
{
    const QByteArray seen = process.property("seen").toByteArray() + process.readAllStandardOutput();
    process.setProperty("seen", seen);
    return seen.contains(line);
}

void tst_Startup::waitsForEngineThenShowsWindowAndEndsWithIt()
{
    // No engine: the program says it waits, shows nothing and keeps running.
    StartProgram(m_program);
    QTRY_VERIFY_WITH_TIMEOUT(Printed(m_program, "engine not reached, waiting for it"), 10000);
    QCOMPARE(m_program.state(), QProcess::Running);
    QVERIFY(!Printed(m_program, "main window shown"));

    // The engine comes: the window follows at a next tick.
    StartEngine(m_engine);
    QTRY_VERIFY_WITH_TIMEOUT(Printed(m_program, "main window shown"), 6000);
    // A fresh home: the welcome dialog opens over it, and stays open through what follows.
    QTRY_VERIFY_WITH_TIMEOUT(Printed(m_program, "welcome dialog shown"), 10000);

    // A second copy ends at once, silently.
    QProcess second;
    StartProgram(second);
    QVERIFY(second.waitForFinished(5000));
    QCOMPARE(second.exitCode(), 0);
    QVERIFY(!Printed(second, "main window shown"));

    // What the program keeps is private.
    QCOMPARE(QFileInfo(m_dir.filePath("config/ConfigConsumer")).permissions().toInt() & 0x0077, 0);
    QCOMPARE(QFile::permissions(m_dir.filePath("config/ConfigConsumer/Quillon.ini")),
             QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);

    // The engine crashes and is started again: the window stays and finds it by itself.
    m_engine.kill();
    QVERIFY(m_engine.waitForFinished(5000));
    m_engine.setProperty("seen", QByteArray());
    StartEngine(m_engine);
    QTRY_VERIFY_WITH_TIMEOUT(Printed(m_program, "engine connection restored"), 10000);
    QCOMPARE(m_program.state(), QProcess::Running);

    // Something stored, then the engine stops (SIGTERM): the program ends with it, the open
    // welcome dialog too, and nothing is lost.
    SetConsumerSetting(*LinkedSubscribeClient::create(SocketLink::open(m_socketName)), "CONFIGCONSUMER",
                       QString(), "Saved_Categories", "kept");
    m_engine.terminate();
    QVERIFY(m_engine.waitForFinished(10000));
    QCOMPARE(m_engine.exitCode(), 0);
    QVERIFY(m_program.waitForFinished(10000));

    QProcess again;
    StartEngine(again);
    const auto client = LinkedSubscribeClient::create(SocketLink::open(m_socketName));
    QCOMPARE(GetConsumerSetting(*client, "Saved_Categories", kMissingText, "CONFIGCONSUMER", QString()),
             "kept");
    again.terminate();
    QVERIFY(again.waitForFinished(10000));
}

int tst_Startup::Delivered() const
{
    int messages = 0;
    for (QDirIterator it(m_dir.filePath("Mail"), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
         it.hasNext();) {
        const QString folder = QFileInfo(it.next()).dir().dirName();
        messages += folder == "new" || folder == "cur";
    }
    return messages;
}

int tst_Startup::Services(const QString &command)
{
    QProcess services;
    services.setProcessEnvironment(m_servicesEnv);
    services.setProcessChannelMode(QProcess::ForwardedChannels);
    services.start(m_binDir + "/quillon-services", {command});
    return services.waitForFinished(30000) ? services.exitCode() : -1;
}

// The services as a desktop's autostart starts them without a systemd session: the engine is
// started by the first connection to the socket systemd-socket-activate holds, the delivery
// beside it; the window comes and goes and the feeds go on being delivered.
void tst_Startup::servicesOutliveTheWindow()
{
    if (QStandardPaths::findExecutable("systemd-socket-activate").isEmpty())
        QSKIP("systemd-socket-activate is not installed");
    LocalHttpServer feeds;
    QVERIFY(feeds.listen());
    feeds.serve("/kept.xml", LocalHttpServer::rss("Kept", 1));
    // A runtime folder no systemd user manager answers in.
    m_servicesEnv = Environment();
    m_servicesEnv.insert("XDG_RUNTIME_DIR", m_dir.path());
    m_servicesEnv.insert("XDG_STATE_HOME", m_dir.filePath("state"));
    m_servicesEnv.insert("QUILLON_MAILDIR", m_dir.filePath("Mail"));
    m_servicesEnv.insert("QUILLON_ENGINE_DATA", m_dir.filePath("services")); // apart from the test above
    QCOMPARE(Services("start"), 0);
    const auto log = [this] { return TestFiles::read(m_dir.filePath("state/quillon/services.log")); };
    QTRY_VERIFY_WITH_TIMEOUT(log().contains("serving the passed socket"), 10000);
    // What the holder does not pass by itself reaches the engine; it says so once its store is open.
    QTRY_VERIFY_WITH_TIMEOUT(log().contains("data in " + m_dir.filePath("services").toUtf8()), 10000);
    const QList<QByteArray> pids = TestFiles::read(m_dir.filePath("quillon-services.pids")).split('\n');
    QCOMPARE(pids.size(), 4); // engine, delivery, downloads, and the last line's end

    const auto client = LinkedSubscribeClient::create(SocketLink::open(m_socketName));
    client->Connect("IEPLUGINCONSUMER", std::make_shared<EngineCalls::IgnoreMessages>());
    const qint32 id =
        EngineCalls::AddSubscription(*client, "Kept", feeds.url("/kept.xml").toString(), {}, {"OLCONSUMER"});
    QVERIFY(id > 0);
    QTRY_COMPARE_WITH_TIMEOUT(Delivered(), 1, 20000);

    // Past the first run, so the window is what comes; it closes itself after its picture.
    qputenv("XDG_CONFIG_HOME", m_dir.filePath("config").toLocal8Bit());
    SaveSetting("Quillon", "CONFIGCONSUMER", "ConfigAppFirstRun", "1");
    QProcessEnvironment env = Environment();
    env.insert("CONFIGCONSUMER_SCREENSHOT", m_dir.filePath("window.png"));
    env.insert("CONFIGCONSUMER_EXIT_AFTER_SCREENSHOT", "1");
    QElapsedTimer shown;
    shown.start();
    StartProgram(m_program, env);
    QTRY_VERIFY_WITH_TIMEOUT(Printed(m_program, "main window shown"), 5000);
    QVERIFY2(shown.elapsed() <= 2000, qPrintable(QString::number(shown.elapsed())));
    QVERIFY(m_program.waitForFinished(10000));
    QCOMPARE(m_program.exitCode(), 0);

    // Window gone: engine, delivery and downloads live, and a new article is still delivered.
    for (const QByteArray &pid : pids.first(3))
        QCOMPARE(::kill(pid.toInt(), 0), 0);
    feeds.serve("/kept.xml", LocalHttpServer::rss("Kept", 2));
    const quillon::Handle nothing = client->NewBag();
    client->UpdateItem("NEWS", id, nothing); // due now
    client->ReleaseHandle(nothing);
    QTRY_COMPARE_WITH_TIMEOUT(Delivered(), 2, 20000);
}

QTEST_GUILESS_MAIN(tst_Startup)
#include "tst_Startup.moc"
