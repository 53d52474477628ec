#include "UserNotice.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QVariantMap>

namespace quillon {

bool tellUser(const QString &summary, const QString &body)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    const QString service = QStringLiteral("org.freedesktop.Notifications");
    if (!bus.isConnected() || !bus.interface() || !bus.interface()->isServiceRegistered(service))
        return false;
    QDBusMessage notify = QDBusMessage::createMethodCall(
        service, QStringLiteral("/org/freedesktop/Notifications"), service, QStringLiteral("Notify"));
    notify << QStringLiteral("quillon-engine") << uint(0) << QStringLiteral("dialog-error") << summary << body
           << QStringList() << QVariantMap{{QStringLiteral("urgency"), QVariant::fromValue(uchar(2))}}
           << int(0); // stays until the user closes it
    return bus.call(notify, QDBus::Block, 5000).type() == QDBusMessage::ReplyMessage;
}

} // namespace quillon
