#include "PlayerHandoff.h"

#include "MediaLogging.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>
#include <QUrl>

void PlayerHandoff::open(const QString &file, const QString &app)
{
    if (app.compare(QLatin1String("windowsmedia"), Qt::CaseInsensitive) != 0 && openInRunningPlayer(file))
        return;
    openWithDesktop(file);
}

bool PlayerHandoff::openInRunningPlayer(const QString &file)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.interface())
        return false;
    const QStringList names = bus.interface()->registeredServiceNames().value();
    for (const QString &name : names) {
        if (!name.startsWith(QLatin1String("org.mpris.MediaPlayer2.")))
            continue;
        QDBusMessage call = QDBusMessage::createMethodCall(name, QStringLiteral("/org/mpris/MediaPlayer2"),
                                                           QStringLiteral("org.mpris.MediaPlayer2.Player"),
                                                           QStringLiteral("OpenUri"));
        call << QUrl::fromLocalFile(file).toString(QUrl::FullyEncoded);
        // Sent without waiting: a player that is slow to answer must not hold up downloads.
        if (bus.send(call)) {
            qCInfo(lcMedia) << "handed" << file << "to" << name;
            return true;
        }
    }
    return false;
}

void PlayerHandoff::openWithDesktop(const QString &file)
{
    if (!QProcess::startDetached(QStringLiteral("xdg-open"), {file}))
        qCWarning(lcMedia) << "no application could be started for" << file;
}
