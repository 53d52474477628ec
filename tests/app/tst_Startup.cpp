#include "ConsumerSettings.h"
#include "LinkedSubscribeClient.h"
#include "SocketLink.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace quillon;

// The real programs, started as a user would: the engine daemon and ConfigConsumer.
class tst_Startup : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void waitsForEngineThenShowsWindowAndEndsWithIt();

private:
    QProcessEnvironment Environment() const;
    void StartEngine(QProcess &engine);
    void StartProgram(QProcess &program);
    static bool Printed(QProcess &process, const QByteArray &line);

    QTemporaryDir m_dir;
    QString m_binDir;
    QString m_socketName;
    QProcess m_engine;
    QProcess m_program;
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
    for (QProcess *process : {&m_program, &m_engine}) {
        if (process->state() != QProcess::NotRunning) {
            process->kill();
            process->waitForFinished(3000);
        }
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

void tst_Startup::StartProgram(QProcess &program)
{
    program.setProcessEnvironment(Environment());
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

QTEST_GUILESS_MAIN(tst_Startup)
#include "tst_Startup.moc"
