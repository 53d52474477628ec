#include "DeliveryAgent.h"
#include "ImapStore.h"
#include "MaildirStore.h"
#include "ShippedData.h"
#include "StoreLocation.h"
#include "SubscribeClientFactory.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

#include <cstdio>

namespace {
// Where ConfigConsumer's folder pickers look too.
QString defaultRoot()
{
    const QString configured = qEnvironmentVariable("QUILLON_MAILDIR");
    if (!configured.isEmpty())
        return configured;
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation))
        .filePath(QStringLiteral("Corvell/Mail"));
}

// The list of Maildir roots delivery has made, kept as state outside every root.
QString rootsRecord()
{
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (state.isEmpty())
        state = QDir::homePath() + QStringLiteral("/.local/state");
    return state + QStringLiteral("/quillon-deliver/maildir-roots");
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("quillon-deliver"));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Delivers the articles of the subscriptions checked in ConfigConsumer as mail."));
    parser.addHelpOption();
    const QCommandLineOption maildir(QStringLiteral("maildir"),
                                     QStringLiteral("Maildir root (default %1)").arg(defaultRoot()),
                                     QStringLiteral("dir"));
    const QCommandLineOption index(QStringLiteral("index"), QStringLiteral("Where the folder index is kept"),
                                   QStringLiteral("file"));
    const QCommandLineOption socket(QStringLiteral("socket"), QStringLiteral("Engine socket name"),
                                    QStringLiteral("name"));
    const QCommandLineOption data(QStringLiteral("quillon-data"),
                                  QStringLiteral("QuillonData folder (article template)"),
                                  QStringLiteral("dir"));
    const QCommandLineOption batch(QStringLiteral("batch"),
                                   QStringLiteral("Articles per batch (default 500)"), QStringLiteral("n"));
    const QCommandLineOption imap(QStringLiteral("imap"),
                                  QStringLiteral("Deliver to an IMAP account instead: user@host[:port]; the "
                                                 "password comes from QUILLON_IMAP_PASSWORD"),
                                  QStringLiteral("account"));
    const QCommandLineOption imapTls(QStringLiteral("imap-tls"),
                                     QStringLiteral("Use implicit TLS (default port 993)"));
    const QCommandLineOption once(QStringLiteral("once"), QStringLiteral("Deliver what waits, then end"));
    parser.addOptions({maildir, index, socket, data, batch, imap, imapTls, once});
    parser.process(app);

    if (parser.isSet(socket))
        qputenv("QUILLON_ENGINE_SOCKET", parser.value(socket).toLocal8Bit());
    const QString root = parser.isSet(maildir) ? parser.value(maildir) : defaultRoot();

    DeliveryAgent::Options options;
    options.dataFolder = parser.isSet(data) ? parser.value(data) : quillon::ShippedDataFolder();
    if (parser.isSet(batch))
        options.batchSize = std::clamp(parser.value(batch).toInt(), 1, 1000);

    quillon::SubscribeClientPtr client;
    try {
        client = quillon::SubscribeClientFactory::Create(quillon::SubscribeClientFactory::kProgId);
    } catch (const std::exception &e) {
        std::fprintf(stderr, "quillon-deliver: cannot reach the engine: %s\n", e.what());
        return 2;
    }
    std::unique_ptr<MailStore> store;
    if (parser.isSet(imap)) {
        // user@host[:port]; the last '@' separates, since a user name may hold one.
        const QString given = parser.value(imap);
        ImapSession::Account account;
        account.user = given.section(QLatin1Char('@'), 0, -2);
        const QString hostPort = given.section(QLatin1Char('@'), -1);
        account.host = hostPort.section(QLatin1Char(':'), 0, 0);
        account.tls = parser.isSet(imapTls);
        account.port =
            quint16(hostPort.contains(QLatin1Char(':')) ? hostPort.section(QLatin1Char(':'), 1).toUInt()
                                                        : (account.tls ? 993 : 143));
        account.password = qEnvironmentVariable("QUILLON_IMAP_PASSWORD");
        store = std::make_unique<ImapStore>(account);
        options.readPollMs = 3000; // each look is a STATUS per folder on the server
    } else {
        // A root named on the command line is taken as it is; else the settings decide.
        auto maildirStore = std::make_unique<MaildirStore>(
            parser.isSet(maildir) ? root : StoreLocation::resolve(*client, root));
        maildirStore->setRootsRecord(rootsRecord());
        store = std::move(maildirStore);
    }
    // The folder index lives in the Maildir tree, or where the tree would be for IMAP.
    const QString indexPath = parser.isSet(index)
                                  ? parser.value(index)
                                  : StoreLocation::indexPath(parser.isSet(imap) ? root : store->describe());
    // A store the user makes while delivery runs takes over at the next replan.
    if (!parser.isSet(imap) && !parser.isSet(maildir) && !parser.isSet(index))
        options.relocate = StoreLocation::relocator(client, root, store->describe());
    DeliveryAgent agent(client, std::move(store), indexPath, options);
    QObject::connect(&agent, &DeliveryAgent::engineLost, &app, [](const QString &reason) {
        std::fprintf(stderr, "quillon-deliver: %s\n", qPrintable(reason));
        QCoreApplication::exit(0);
    });
    if (parser.isSet(once))
        QObject::connect(&agent, &DeliveryAgent::caughtUp, &app, [] { QCoreApplication::exit(0); });
    QString error;
    if (!agent.start(&error)) {
        std::fprintf(stderr, "quillon-deliver: %s\n", qPrintable(error));
        return 3;
    }
    std::printf("quillon-deliver delivering into %s\n", qPrintable(agent.store().describe()));
    std::fflush(stdout);
    return app.exec();
}
