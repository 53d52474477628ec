#pragma once

// bench_engine_fetch --peer: the engine daemon and newsboat each fetching every feed into an
// empty store as a whole process, from its start to the last article stored, and the floor
// of that work measured on the same server (engine_floor.sh). Every run gets a fresh top-level
// folder: ext4 places one in a block group of its own, so no run pays for inodes that an
// earlier one freed (docs/PERFORMANCE.md, "Mail delivery").

#include "FunctionCallback.h"
#include "LinkedSubscribeClient.h"
#include "ProcessCpu.h"
#include "SocketLink.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QTimer>

#include <algorithm>

struct ProcessRun
{
    qint64 wallMs = -1;
    qint64 cpuMs = -1;
};

class FetchRace
{
public:
    // base: where the fresh folders go; seed: an engine store holding the subscriptions only.
    FetchRace(QString base, QString seed, QStringList urls, int articles)
        : m_base(std::move(base)), m_seed(std::move(seed)), m_urls(std::move(urls)), m_articles(articles)
    {
    }
    // A run's files are deleted only here, once every run is over.
    ~FetchRace()
    {
        for (const QString &folder : std::as_const(m_folders))
            QDir(folder).removeRecursively();
    }
    FetchRace(const FetchRace &) = delete;
    FetchRace &operator=(const FetchRace &) = delete;

    [[nodiscard]] static bool hasNewsboat()
    {
        return !QStandardPaths::findExecutable(QStringLiteral("newsboat")).isEmpty();
    }

    // The daemon started on a copy of the seed, every subscription due; timed until the store
    // holds every article. Its CPU is read from /proc then (10 ms ticks, every thread). The
    // delivery consumer is connected from the moment the socket is served, as users have it.
    ProcessRun engine(const QString &program)
    {
        const QString folder = freshFolder(QStringLiteral("engine"));
        const QString data = folder + QStringLiteral("/data");
        QDir().mkpath(data);
        for (const QString &name : QDir(m_seed).entryList(QDir::Files))
            QFile::copy(m_seed + QLatin1Char('/') + name, data + QLatin1Char('/') + name);
        QProcess daemon;
        const QString socket = folder + QStringLiteral("/engine.sock");
        daemon.setProcessEnvironment(homeIn(folder, {{QStringLiteral("QUILLON_ENGINE_SOCKET"), socket}}));
        daemon.setStandardOutputFile(QProcess::nullDevice());
        ProcessRun run;
        QElapsedTimer wall;
        wall.start();
        daemon.start(program, {QStringLiteral("--data-dir"), data});
        if (daemon.waitForStarted() &&
            waitForArticles(data + QStringLiteral("/engine.sqlite"), socket, daemon, wall)) {
            run.wallMs = wall.elapsed();
            run.cpuMs = processCpuMillis(daemon.processId());
        }
        daemon.terminate();
        if (!daemon.waitForFinished(30000))
            daemon.kill();
        daemon.waitForFinished();
        return run;
    }

    // newsboat (its defaults, as a new user has them) given the addresses and an empty cache,
    // timed from its start to its end; its CPU is everything it and its threads used.
    ProcessRun newsboat()
    {
        const QString folder = freshFolder(QStringLiteral("newsboat"));
        const QString list = folder + QStringLiteral("/urls");
        const QString config = folder + QStringLiteral("/config");
        writeFile(list, m_urls.join(QLatin1Char('\n')).toUtf8() + '\n');
        writeFile(config, {});
        QProcess peer;
        peer.setProcessEnvironment(homeIn(folder, {}));
        peer.setStandardOutputFile(QProcess::nullDevice());
        ProcessRun run;
        const qint64 cpuBefore = waitedChildrenCpuMillis();
        QElapsedTimer wall;
        wall.start();
        peer.start(QStandardPaths::findExecutable(QStringLiteral("newsboat")),
                   {QStringLiteral("-u"), list, QStringLiteral("-c"), folder + QStringLiteral("/cache.db"),
                    QStringLiteral("-C"), config, QStringLiteral("-x"), QStringLiteral("reload")});
        if (peer.waitForFinished(600000) && peer.exitStatus() == QProcess::NormalExit &&
            peer.exitCode() == 0) {
            run.wallMs = wall.elapsed();
            run.cpuMs = waitedChildrenCpuMillis() - cpuBefore;
        }
        return run;
    }

    // engine_floor.sh's key=value lines, parsed; empty when it failed.
    QHash<QString, double> floor(const QString &script, const QString &floorProgram, const QString &feedDir)
    {
        const QString folder = freshFolder(QStringLiteral("floor"));
        const QString list = folder + QStringLiteral("/urls");
        writeFile(list, m_urls.join(QLatin1Char('\n')).toUtf8() + '\n');
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(QStringLiteral("bash"), {script, list, feedDir, folder, floorProgram});
        QHash<QString, double> values;
        if (!process.waitForFinished(600000) || process.exitCode() != 0)
            return values;
        for (const QByteArray &line : process.readAllStandardOutput().split('\n')) {
            const qsizetype at = line.indexOf('=');
            bool number = false;
            const double value = line.mid(at + 1).toDouble(&number);
            if (at > 0 && number)
                values.insert(QString::fromUtf8(line.left(at)), value);
        }
        return values;
    }

private:
    QString freshFolder(const QString &what)
    {
        const QString folder = QStringLiteral("%1/quillon-fetch-%2-%3-%4")
                                   .arg(m_base)
                                   .arg(QCoreApplication::applicationPid())
                                   .arg(m_folders.size())
                                   .arg(what);
        QDir().mkpath(folder);
        m_folders.append(folder);
        return folder;
    }

    static QProcessEnvironment homeIn(const QString &folder, const QList<std::pair<QString, QString>> &more)
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("HOME"), folder);
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), folder + QStringLiteral("/config-home"));
        env.insert(QStringLiteral("XDG_DATA_HOME"), folder + QStringLiteral("/data-home"));
        env.insert(QStringLiteral("XDG_CACHE_HOME"), folder + QStringLiteral("/cache-home"));
        for (const auto &[name, value] : more)
            env.insert(name, value);
        return env;
    }

    static void writeFile(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        if (file.open(QIODevice::WriteOnly))
            file.write(bytes);
    }

    // Looks for the stored articles every 5 ms from a connection of its own, in an event loop that
    // also connects the consumer once the socket is there and drops what the engine sends it.
    bool waitForArticles(const QString &database, const QString &socket, const QProcess &daemon,
                         const QElapsedTimer &wall) const
    {
        const QString name = QStringLiteral("fetch-race");
        bool all = false;
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
            db.setDatabaseName(database);
            if (db.open()) {
                QSqlQuery count(db);
                std::shared_ptr<quillon::LinkedSubscribeClient> consumer;
                QEventLoop loop;
                QTimer poll;
                // The highest id is one look at the index's end, where count(*) read every entry
                // each time and took that time from the engine's two cores. Ids only grow in a
                // fresh store, so the count is taken once, when the highest id says all are there.
                const auto reaches = [&](const QString &sql) {
                    const bool reached =
                        count.exec(sql) && count.next() && count.value(0).toInt() >= m_articles;
                    count.finish();
                    return reached;
                };
                QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
                    if (!consumer)
                        consumer = connectConsumer(socket);
                    all = reaches(QStringLiteral("SELECT max(id) FROM articles")) &&
                          reaches(QStringLiteral("SELECT count(*) FROM articles"));
                    if (all || daemon.state() != QProcess::Running || wall.elapsed() > 600000)
                        loop.quit();
                });
                poll.start(5);
                loop.exec();
            }
            db.close();
        }
        QSqlDatabase::removeDatabase(name);
        return all;
    }

    // Nothing until the daemon serves its socket.
    static std::shared_ptr<quillon::LinkedSubscribeClient> connectConsumer(const QString &socket)
    {
        if (!QFileInfo::exists(socket))
            return {};
        try {
            auto client = quillon::LinkedSubscribeClient::create(quillon::SocketLink::open(socket));
            client->Connect(QStringLiteral("OLCONSUMER"),
                            std::make_shared<quillon::FunctionCallback>([](quillon::Handle) {}));
            return client;
        } catch (const std::exception &) {
            return {};
        }
    }

    QString m_base;
    QString m_seed;
    QStringList m_urls;
    int m_articles;
    QStringList m_folders;
};

// The median and the range of some runs' figures.
struct Spread
{
    qint64 median = -1, low = -1, high = -1;

    static Spread of(QList<qint64> values)
    {
        values.removeAll(-1);
        if (values.isEmpty())
            return {};
        std::sort(values.begin(), values.end());
        return {values.at(values.size() / 2), values.first(), values.last()};
    }
    [[nodiscard]] QString text() const
    {
        return QStringLiteral("%1 ms (%2-%3)").arg(median).arg(low).arg(high);
    }
};
