// Enclosure downloads: one feed of N enclosures of S MiB (default 200 x 5 MiB), served by
// Python's threaded http.server on 127.0.0.1. Timed, each on the same files in the same run:
// the engine daemon with quillon-media from the add of the feed to the last file filed in the
// Music folder; gPodder's command line (`gpo subscribe` + `gpo download`) when it is installed;
// and `curl --parallel` fetching the same addresses into one folder, the floor. Each run starts
// after a `sync`, so no contender pays for writing back the files of the one before; the
// figures are the medians of the runs, wall and CPU (every process the contender started).
// Usage: bench_media [--files 200] [--mib 5] [--runs 3] [--only quillon-media]

#include "DaemonProcess.h"
#include "EngineCalls.h"
#include "FunctionCallback.h"
#include "ProcessCpu.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <functional>

using namespace quillon;

namespace {
struct Served
{
    QProcess process;
    QString base;
    QStringList urls;
};

bool serve(Served &served, const QString &dir, int files, int mib)
{
    QDir(dir).mkpath(QStringLiteral("files"));
    QByteArray block(1 << 20, Qt::Uninitialized);
    QString feed = QStringLiteral("<rss version=\"2.0\"><channel><title>Bench</title>");
    const quint16 port = quint16(20000 + QRandomGenerator::global()->bounded(20000));
    served.base = QStringLiteral("http://127.0.0.1:%1/").arg(port);
    for (int i = 1; i <= files; ++i) {
        const QString name = QStringLiteral("ep%1.mp3").arg(i, 3, 10, QLatin1Char('0'));
        QFile file(QDir(dir).filePath(QStringLiteral("files/") + name));
        if (!file.open(QIODevice::WriteOnly))
            return false;
        for (int m = 0; m < mib; ++m) {
            QRandomGenerator::global()->fillRange(reinterpret_cast<quint32 *>(block.data()),
                                                  block.size() / 4);
            file.write(block);
        }
        served.urls.append(served.base + QStringLiteral("files/") + name);
        feed += QStringLiteral("<item><guid>%1</guid><title>Episode %1</title><enclosure url=\"%2\" "
                               "type=\"audio/mpeg\" length=\"%3\"/></item>")
                    .arg(i)
                    .arg(served.urls.last())
                    .arg(qint64(mib) << 20);
    }
    QFile rss(QDir(dir).filePath(QStringLiteral("feed.xml")));
    if (!rss.open(QIODevice::WriteOnly) ||
        rss.write((feed + QStringLiteral("</channel></rss>")).toUtf8()) < 0)
        return false;
    rss.close();
    served.process.start(QStringLiteral("python3"),
                         {QStringLiteral("-m"), QStringLiteral("http.server"), QStringLiteral("--bind"),
                          QStringLiteral("127.0.0.1"), QString::number(port), QStringLiteral("--directory"),
                          dir});
    served.process.waitForStarted();
    return QTest::qWaitFor(
        [&] {
            return QProcess::execute(
                       QStringLiteral("curl"),
                       {QStringLiteral("-sfo"), QStringLiteral("/dev/null"), served.base + "feed.xml"}) == 0;
        },
        20000);
}

int countFiles(const QString &dir)
{
    return int(QDir(dir).entryList({QStringLiteral("*.mp3")}, QDir::Files).size());
}

// A home of its own: the downloads land in its Music folder.
qint64 runOurs(const Served &served, const QString &home, int files)
{
    qputenv("HOME", home.toUtf8());
    qputenv("XDG_CONFIG_HOME", (home + QStringLiteral("/.config")).toUtf8());
    qputenv("XDG_DATA_HOME", (home + QStringLiteral("/.local/share")).toUtf8());
    DaemonProcess daemon;
    if (!daemon.start())
        return -1;
    SubscribeClientPtr client = daemon.newClient();
    EngineCalls::SetSetting(*client, "MEDIACONSUMER", "Settings", "EnableAutoDownload", "1");
    EngineCalls::SetSetting(*client, "MEDIACONSUMER", "Settings", "PromptForAutoDownload", "0");
    QProcess media;
    media.start(QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("quillon-media")),
                {QStringLiteral("--socket"), daemon.socketName()});
    media.waitForStarted();
    QElapsedTimer timer;
    timer.start();
    const Handle request = client->CreateItemRequest("NEWS", QString(), served.base + "feed.xml");
    client->SubmitRequest(request, std::make_shared<FunctionCallback>([](Handle) {}));
    client->ReleaseHandle(request);
    const QString folder = home + QStringLiteral("/Music/Bench");
    const bool done = QTest::qWaitFor([&] { return countFiles(folder) >= files; }, 600000);
    const qint64 ms = timer.elapsed();
    media.terminate();
    media.waitForFinished();
    client.reset();
    daemon.stop();
    return done ? ms : -1;
}

qint64 runCurl(const Served &served, const QString &dir)
{
    QStringList args = {QStringLiteral("--parallel"), QStringLiteral("-s"),
                        QStringLiteral("--no-progress-meter"), QStringLiteral("--create-dirs")};
    for (const QString &url : served.urls)
        args << QStringLiteral("-o") << dir + QLatin1Char('/') + url.section(QLatin1Char('/'), -1) << url;
    QElapsedTimer timer;
    timer.start();
    return QProcess::execute(QStringLiteral("curl"), args) == 0 ? timer.elapsed() : -1;
}

qint64 runGpo(const Served &served, const QString &dir)
{
    if (QStandardPaths::findExecutable(QStringLiteral("gpo")).isEmpty())
        return -2;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("GPODDER_HOME"), dir + QStringLiteral("/home"));
    env.insert(QStringLiteral("GPODDER_DOWNLOAD_DIR"), dir + QStringLiteral("/downloads"));
    const auto gpo = [&](const QStringList &args) {
        QProcess p;
        p.setProcessEnvironment(env);
        p.start(QStringLiteral("gpo"), args);
        return p.waitForFinished(900000) && p.exitCode() == 0;
    };
    QElapsedTimer timer;
    timer.start();
    if (!gpo({QStringLiteral("subscribe"), served.base + "feed.xml"}) || !gpo({QStringLiteral("download")}))
        return -1;
    return timer.elapsed();
}

// One downloader's runs: wall milliseconds (-1 failed, -2 not installed) and CPU milliseconds.
struct Contender
{
    const char *name;
    std::function<qint64(const QString &dir)> run;
    QList<qint64> wall;
    QList<qint64> cpu;
};

qint64 median(QList<qint64> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? -1 : values.at(values.size() / 2);
}

QByteArray loadAverage()
{
    QFile file(QStringLiteral("/proc/loadavg"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').mid(0, 3).join(' ') : QByteArray("?");
}

void runOnce(Contender &contender, const QString &dir)
{
    QProcess::execute(QStringLiteral("sync"), {});
    const qint64 cpuBefore = waitedChildrenCpuMillis();
    const qint64 ms = contender.run(dir);
    const qint64 cpu = waitedChildrenCpuMillis() - cpuBefore;
    QDir(dir).removeRecursively();
    std::printf("  %-16s %7.2f s wall %7.2f s CPU (load %s)\n", contender.name, ms / 1000.0, cpu / 1000.0,
                loadAverage().constData());
    std::fflush(stdout);
    contender.wall.append(ms);
    contender.cpu.append(cpu);
}

void report(const Contender &contender, qint64 bytes)
{
    const qint64 ms = contender.wall.contains(-2)   ? -2
                      : contender.wall.contains(-1) ? -1
                                                    : median(contender.wall);
    if (ms == -2)
        std::printf("%-16s not installed\n", contender.name);
    else if (ms < 0)
        std::printf("%-16s failed\n", contender.name);
    else
        std::printf("%-16s %7.2f s  %7.1f MiB/s  CPU %6.2f s (medians of %lld)\n", contender.name,
                    ms / 1000.0, double(bytes >> 20) / (ms / 1000.0), median(contender.cpu) / 1000.0,
                    qlonglong(contender.wall.size()));
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption files(QStringLiteral("files"), QStringLiteral("Enclosures"), QStringLiteral("n"),
                                   QStringLiteral("200"));
    const QCommandLineOption mib(QStringLiteral("mib"), QStringLiteral("MiB each"), QStringLiteral("n"),
                                 QStringLiteral("5"));
    const QCommandLineOption runs(QStringLiteral("runs"), QStringLiteral("Runs of each"), QStringLiteral("n"),
                                  QStringLiteral("3"));
    const QCommandLineOption only(QStringLiteral("only"), QStringLiteral("Run only this downloader"),
                                  QStringLiteral("name"));
    parser.addOptions({files, mib, runs, only});
    parser.process(app);
    const int n = parser.value(files).toInt();
    const int size = parser.value(mib).toInt();
    QTemporaryDir dir(QDir::home().filePath(QStringLiteral(".cache/bench_media.XXXXXX")));
    Served served;
    if (!serve(served, dir.filePath(QStringLiteral("served")), n, size)) {
        std::fprintf(stderr, "bench_media: the files could not be served\n");
        return 1;
    }
    std::printf("%d enclosures of %d MiB from %s, load %s\n", n, size, qPrintable(served.base),
                loadAverage().constData());
    QList<Contender> contenders = {
        {"curl --parallel", [&](const QString &d) { return runCurl(served, d); }, {}, {}},
        {"quillon-media", [&](const QString &d) { return runOurs(served, d, n); }, {}, {}},
        {"gpo", [&](const QString &d) { return runGpo(served, d); }, {}, {}}};
    if (parser.isSet(only))
        contenders.removeIf(
            [&](const Contender &c) { return !QString::fromLatin1(c.name).startsWith(parser.value(only)); });
    for (int run = 0; run < std::max(1, parser.value(runs).toInt()); ++run) {
        for (Contender &contender : contenders)
            runOnce(contender, dir.filePath(QString::fromLatin1(contender.name).section(' ', 0, 0)));
    }
    for (const Contender &contender : contenders)
        report(contender, qint64(n) * size << 20);
    served.process.kill();
    served.process.waitForFinished();
    return 0;
}
