#include "MessagePublisher.h"
#include "StandardDialogs.h"
#include "SubscribeClientFactory.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFile>

#include <cstdio>
#include <unistd.h>

namespace {
// The message file named, else standard input, where a mail program pipes the message it shows.
std::optional<QByteArray> ReadMessage(const QStringList &arguments, QString *error)
{
    QFile file;
    const bool named = !arguments.isEmpty();
    if (named)
        file.setFileName(arguments.first());
    if (!(named ? file.open(QIODevice::ReadOnly) : file.open(stdin, QIODevice::ReadOnly))) {
        *error = QStringLiteral("cannot read %1: %2").arg(arguments.value(0), file.errorString());
        return std::nullopt;
    }
    return file.readAll();
}

int Fail(const QString &text, int code)
{
    std::fprintf(stderr, "quillon-publish: %s\n", qPrintable(text));
    return code;
}
} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("quillon-publish"));
    QApplication::setOrganizationName(QStringLiteral("Corvell"));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Publishes the article of a delivered mail message to your weblogs."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("message"),
                                 QStringLiteral("A delivered message file; without it, the message on "
                                                "standard input"),
                                 QStringLiteral("[message]"));
    const QCommandLineOption socket(QStringLiteral("socket"), QStringLiteral("Engine socket name"),
                                    QStringLiteral("name"));
    parser.addOption(socket);
    parser.process(app);
    if (parser.positionalArguments().isEmpty() && isatty(STDIN_FILENO))
        parser.showHelp(1);
    if (parser.isSet(socket))
        qputenv("QUILLON_ENGINE_SOCKET", parser.value(socket).toLocal8Bit());
    InstallDialogPrompts();

    QString error;
    const std::optional<QByteArray> message = ReadMessage(parser.positionalArguments(), &error);
    if (!message)
        return Fail(error, 2);
    quillon::SubscribeClientPtr client;
    try {
        client = quillon::SubscribeClientFactory::Create(quillon::SubscribeClientFactory::kProgId);
    } catch (const std::exception &e) {
        ShowAlert(nullptr, QStringLiteral("The feed engine is not running."), QString::fromUtf8(e.what()));
        return Fail(QStringLiteral("cannot reach the engine: %1").arg(QString::fromUtf8(e.what())), 2);
    }
    MessagePublisher publisher(client);
    const MessagePublisher::Result result = publisher.Publish(*message);
    if (result == MessagePublisher::kNotFound)
        return Fail(publisher.Error(), result);
    return result;
}
