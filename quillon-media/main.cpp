#include "MediaAgent.h"
#include "SubscribeClientFactory.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

#include <algorithm>
#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("quillon-media"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Downloads the enclosures of subscriptions set to download them, into the user's folders."));
    parser.addHelpOption();
    const QCommandLineOption socket(QStringLiteral("socket"), QStringLiteral("Engine socket name"),
                                    QStringLiteral("name"));
    const QCommandLineOption index(
        QStringLiteral("index"), QStringLiteral("Where the download index is kept"), QStringLiteral("file"));
    const QCommandLineOption maxSize(QStringLiteral("max-size"),
                                     QStringLiteral("Largest file downloaded, in MiB (default 4096)"),
                                     QStringLiteral("mib"));
    const QCommandLineOption retry(
        QStringLiteral("retry"),
        QStringLiteral("Seconds before a failed download is tried again (default 60)"), QStringLiteral("s"));
    const QCommandLineOption once(QStringLiteral("once"), QStringLiteral("Download what waits, then end"));
    parser.addOptions({socket, index, maxSize, retry, once});
    parser.process(app);
    if (parser.isSet(socket))
        qputenv("QUILLON_ENGINE_SOCKET", parser.value(socket).toLocal8Bit());

    MediaAgent::Options options;
    options.folders = MediaFolders::fromSystem();
    options.indexPath = parser.isSet(index)
                            ? parser.value(index)
                            : QDir(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation))
                                  .filePath(QStringLiteral("Corvell/quillon-media/index.json"));
    if (parser.isSet(maxSize))
        options.limits.maxBytes = std::max<qint64>(1, parser.value(maxSize).toLongLong()) << 20;
    if (parser.isSet(retry))
        options.retryMs = std::max(1, parser.value(retry).toInt()) * 1000;

    quillon::SubscribeClientPtr client;
    try {
        client = quillon::SubscribeClientFactory::Create(quillon::SubscribeClientFactory::kProgId);
    } catch (const std::exception &e) {
        std::fprintf(stderr, "quillon-media: cannot reach the engine: %s\n", e.what());
        return 2;
    }
    MediaAgent agent(client, options);
    QObject::connect(&agent, &MediaAgent::engineLost, &app, [](const QString &reason) {
        std::fprintf(stderr, "quillon-media: %s\n", qPrintable(reason));
        QCoreApplication::exit(0);
    });
    if (parser.isSet(once))
        QObject::connect(&agent, &MediaAgent::caughtUp, &app, [] { QCoreApplication::exit(0); });
    QString error;
    if (!agent.start(&error)) {
        std::fprintf(stderr, "quillon-media: %s\n", qPrintable(error));
        return 3;
    }
    std::printf("quillon-media filing downloads under %s\n", qPrintable(options.folders.music));
    std::fflush(stdout);
    return app.exec();
}
