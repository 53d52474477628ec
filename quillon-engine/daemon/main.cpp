#include "DesktopKeyring.h"
#include "EngineCore.h"
#include "EngineLogPlace.h"
#include "EngineServer.h"
#include "EngineSocketName.h"
#include "PrivateFiles.h"
#include "ShippedData.h"
#include "SocketActivation.h"
#include "TerminationSignal.h"
#include "UserNotice.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QStandardPaths>

#include <cstdio>
#include <memory>
#include <utility>

using namespace quillon;

namespace {

// Exit codes besides 0 (stopped on request) and 1 (bad command line).
constexpr int kExitNoDatabase = 2;
constexpr int kExitAlreadyRunning = 3;
constexpr int kExitCannotListen = 4;

struct Options
{
    QString dataDir;
    QString socketName;
    QString quillonData;
    bool fetch = true;
    bool printPaths = false;
    bool defaultPlace = false; // the data in the XDG data folder, the log in the state folder
};

Options parseOptions(const QCoreApplication &app)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("The feed engine that consumers reach over a local socket."));
    parser.addHelpOption();
    const QCommandLineOption dataDir(
        QStringLiteral("data-dir"),
        QStringLiteral("Folder of the engine's database (env QUILLON_ENGINE_DATA)."), QStringLiteral("DIR"));
    const QCommandLineOption socket(
        QStringLiteral("socket"),
        QStringLiteral("Local socket name to listen on (env QUILLON_ENGINE_SOCKET)."),
        QStringLiteral("NAME"));
    const QCommandLineOption quillonData(
        QStringLiteral("quillon-data"),
        QStringLiteral(
            "Folder of the shipped documents (feed directory, search sources); default: QuillonData "
            "beside the program."),
        QStringLiteral("DIR"));
    const QCommandLineOption noFetch(
        QStringLiteral("no-fetch"),
        QStringLiteral(
            "Serve consumers but fetch no feeds (env QUILLON_ENGINE_NO_FETCH=1); for benchmarks."));
    const QCommandLineOption printPaths(
        QStringLiteral("print-paths"),
        QStringLiteral("Print the socket, data and shipped-documents paths the engine would use, then end."));
    parser.addOptions({dataDir, socket, quillonData, noFetch, printPaths});
    parser.process(app);

    Options options;
    options.fetch =
        !parser.isSet(noFetch) && qEnvironmentVariable("QUILLON_ENGINE_NO_FETCH") != QLatin1String("1");
    options.dataDir = parser.value(dataDir);
    if (options.dataDir.isEmpty())
        options.dataDir = qEnvironmentVariable("QUILLON_ENGINE_DATA");
    if (options.dataDir.isEmpty()) {
        options.defaultPlace = true;
        options.dataDir = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                          QStringLiteral("/Corvell/quillon-engine");
    }
    options.socketName = parser.isSet(socket) ? parser.value(socket) : EngineSocketName();
    options.quillonData = parser.value(quillonData);
    options.printPaths = parser.isSet(printPaths);
    return options;
}

int fail(int code, const QString &message)
{
    std::fprintf(stderr, "quillon-engine: %s\n", qPrintable(message));
    return code;
}

// A file that is there but is no SQLite database, or one SQLite calls damaged.
bool looksDamaged(const QString &path, const QString &error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() == 0)
        return false;
    return file.read(16) != QByteArrayLiteral("SQLite format 3\0") ||
           error.contains(QLatin1String("malformed"), Qt::CaseInsensitive) ||
           error.contains(QLatin1String("not a database"), Qt::CaseInsensitive);
}

// Moves the damaged database (and its journal files) aside, so that nothing ever writes over
// what may still be rescued; the next start begins with an empty one. Answers the new name.
QString setAside(const QString &path)
{
    const QString aside = path + QStringLiteral(".damaged-") +
                          QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    if (!QFile::rename(path, aside))
        return QString();
    for (const char *suffix : {"-wal", "-shm"})
        QFile::rename(path + QLatin1String(suffix), aside + QLatin1String(suffix));
    return aside;
}

// The program that waits for the engine says nothing while it waits, so the engine that cannot
// start tells the user itself, besides its log line.
int failToStart(const EngineCore &core, const QString &dataDir, const QString &error)
{
    const QString database = core.databasePath();
    QString body = QStringLiteral("The feed engine cannot open its database in %1: %2").arg(dataDir, error);
    if (looksDamaged(database, error)) {
        const QString aside = setAside(database);
        if (!aside.isEmpty())
            body =
                QStringLiteral("The feed engine's database %1 is damaged. It was kept as %2; the next start "
                               "begins with an empty database.")
                    .arg(database, aside);
    }
    tellUser(QStringLiteral("The feed engine cannot start"), body);
    return fail(kExitNoDatabase, body);
}

// Runs the event loop until SIGTERM/SIGINT, then tells the consumers and closes their connections.
int runUntilStopped(EngineServer &server)
{
    TerminationSignal termination;
    bool stopping = false;
    QObject::connect(&termination, &TerminationSignal::requested, &termination, [&server, &stopping]() {
        if (std::exchange(stopping, true))
            return;
        server.shutdown();
        QCoreApplication::exit(0);
    });
    return QCoreApplication::exec();
}

// For service set-ups, which must name the socket before the engine runs.
int printPaths(const Options &options)
{
    const QString shipped = options.quillonData.isEmpty() ? ShippedDataFolder() : options.quillonData;
    const QString log = options.defaultPlace ? EngineLogPlace::stateFile()
                                             : QDir(options.dataDir).filePath(QStringLiteral("engine.log"));
    std::printf("socket %s\ndata %s\nlog %s\nshipped %s\n", qPrintable(options.socketName),
                qPrintable(options.dataDir), qPrintable(log), qPrintable(shipped));
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    // The plain poll dispatcher costs the engine about a quarter less CPU per request than glib's.
    if (qEnvironmentVariableIsEmpty("QT_NO_GLIB"))
        qputenv("QT_NO_GLIB", "1");
    // Everything the engine writes (database, log, socket, lock) is the user's alone.
    PrivateFiles::restrictNewFiles();
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("quillon-engine"));
    // Per-session chatter only on request (QT_LOGGING_RULES overrides this).
    QLoggingCategory::setFilterRules(QStringLiteral("corvell.quillon.*.debug=false"));
    const Options options = parseOptions(app);
    if (options.printPaths)
        return printPaths(options);

    auto core = std::make_unique<EngineCore>(options.dataDir);
    if (!options.quillonData.isEmpty())
        core->setQuillonDataFolder(options.quillonData);
    core->setSecretKeyring(desktopKeyring());
    QString error;
    auto server = std::make_unique<EngineServer>(core.get());
    // Started by a service manager that holds the socket: serve on it, whatever name was asked.
    const qintptr activated = ActivatedSocket();
    const auto started =
        activated >= 0 ? server->adopt(activated, &error) : server->listen(options.socketName, &error);
    switch (started) {
    case EngineServer::StartResult::AlreadyRunning:
        return fail(kExitAlreadyRunning, error);
    case EngineServer::StartResult::Failed:
        return fail(kExitCannotListen, error);
    case EngineServer::StartResult::Listening:
        break;
    }
    // Only once the name is ours: a second daemon must not touch the first one's database.
    // Nobody is served before the event loop runs.
    if (options.defaultPlace)
        core->setLogFile(EngineLogPlace::adopt(options.dataDir));
    if (!core->open(&error))
        return failToStart(*core, options.dataDir, error);
    std::printf("quillon-engine listening on %s, data in %s\n", qPrintable(server->fullServerName()),
                qPrintable(options.dataDir));
    std::fflush(stdout);
    if (options.fetch)
        core->startUpdating();

    const int code = runUntilStopped(*server);
    // Sessions close before the core, and the core closes its database before the process ends.
    server.reset();
    core.reset();
    return code;
}
