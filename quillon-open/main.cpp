#include "EngineHandoff.h"
#include "OpenTarget.h"
#include "SubscribeClientFactory.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <cstdio>

namespace {
// The ConfigConsumer installed beside this program, else the one on the path.
bool startConfigConsumer()
{
    const QString beside =
        QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("configconsumer"));
    const QString program = QFileInfo(beside).isExecutable()
                                ? beside
                                : QStandardPaths::findExecutable(QStringLiteral("configconsumer"));
    return !program.isEmpty() && QProcess::startDetached(program, {});
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("quillon-open"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Subscribes to a feed link or feed file, or shows an "
                                                    "OPML file's feeds for import in ConfigConsumer."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("address"),
                                 QStringLiteral("feed: link, web address, feed file or OPML file"),
                                 QStringLiteral("address..."));
    parser.process(app);
    if (parser.positionalArguments().isEmpty())
        parser.showHelp(1);

    quillon::SubscribeClientPtr client;
    try {
        client = quillon::SubscribeClientFactory::Create(quillon::SubscribeClientFactory::kProgId);
    } catch (const std::exception &e) {
        std::fprintf(stderr, "quillon-open: cannot reach the engine: %s\n", e.what());
        return 2;
    }
    EngineHandoff handoff(client, startConfigConsumer);
    int failures = 0;
    for (const QString &argument : parser.positionalArguments()) {
        const EngineHandoff::Outcome outcome = handoff.open(OpenTarget::fromArgument(argument));
        std::fprintf(outcome.ok ? stdout : stderr, "%s\n", qPrintable(outcome.text));
        failures += outcome.ok ? 0 : 1;
    }
    return failures == 0 ? 0 : 1;
}
