#include "DesktopRequests.h"

#include "CoreLogging.h"
#include "EngineMessages.h"
#include "Outbox.h"
#include "SessionTable.h"
#include "SettingsStore.h"
#include "SubscriptionStore.h"

#include <algorithm>

namespace quillon {

namespace {
const QString kConfigConsumer = QStringLiteral("CONFIGCONSUMER");

QString field(const PropertyBag &request, const char *name)
{
    const QString key = QLatin1String(name);
    const QString text = request.contains(key) ? request.text(key).trimmed() : QString();
    return text == kMissingText ? QString() : text;
}
} // namespace

void DesktopRequests::registerWith(RequestProcessor &requests)
{
    requests.registerKind(
        QStringLiteral("OPENFEED"),
        [this](const Origin &origin, const PropertyBag &request) { openFeed(origin, request); });
    requests.registerKind(
        QStringLiteral("IMPORTOPML"),
        [this](const Origin &origin, const PropertyBag &request) { importOpml(origin, request); });
}

void DesktopRequests::openFeed(const Origin &origin, const PropertyBag &request)
{
    const QString url = field(request, "URL");
    if (url.isEmpty())
        return refuse(origin, QStringLiteral("The feed to open has no URL"));
    const QString title = field(request, "TITLE");
    // A link clicked twice is one subscription.
    if (const auto id = m_subscriptions.findByUrl(url)) {
        auto payload = m_subscriptions.itemBag(*id);
        m_outbox.toCallback(origin.session, origin.callbackId,
                            EngineMessages::message(QStringLiteral("AlreadySubscribed"), payload));
        return;
    }
    if (previewWanted() && configConsumersConnected() > 0) {
        auto payload = PropertyBag::create();
        payload->setText(QStringLiteral("URL"), url);
        payload->setText(QStringLiteral("TITLE"), title);
        m_outbox.toConnected(EngineMessages::message(QStringLiteral("PreviewSubscription"), payload->clone()),
                             origin.session);
        m_outbox.toCallback(origin.session, origin.callbackId,
                            EngineMessages::message(QStringLiteral("PreviewOffered"), payload));
        return;
    }
    // Nobody to ask: subscribe at once, delivered as an add from the main window would be.
    auto add = PropertyBag::create();
    add->setText(QStringLiteral("REQUEST"), QStringLiteral("ADD"));
    add->setText(QStringLiteral("URL"), url);
    add->setText(QStringLiteral("TITLE"), title);
    add->setText(QStringLiteral("ConsumerIDs"), QStringLiteral("OLCONSUMER"));
    m_requests.process(origin, *add);
}

void DesktopRequests::importOpml(const Origin &origin, const PropertyBag &request)
{
    const QString path = field(request, "PATH");
    if (path.isEmpty())
        return refuse(origin, QStringLiteral("The OPML file to import has no PATH"));
    const int told = configConsumersConnected();
    auto payload = PropertyBag::create();
    payload->setText(QStringLiteral("PATH"), path);
    if (told > 0)
        m_outbox.toConnected(EngineMessages::message(QStringLiteral("ImportOPML"), payload->clone()),
                             origin.session);
    payload->setLong(QStringLiteral("ITEMCOUNT"), told);
    m_outbox.toCallback(origin.session, origin.callbackId,
                        EngineMessages::message(QStringLiteral("ImportOffered"), payload));
}

bool DesktopRequests::previewWanted()
{
    const QString flag =
        m_settings
            .value(QStringLiteral("ENGINE"), QString(), QStringLiteral("ShowPreviewWindowOnAutoSubscribe"))
            .value_or(QStringLiteral("1"));
    static const QStringList yes = {"True", "1", "true", "TRUE", "YES", "yes"};
    return yes.contains(flag);
}

int DesktopRequests::configConsumersConnected() const
{
    const QStringList consumers = m_sessions.connectedConsumers();
    return int(std::count_if(consumers.cbegin(), consumers.cend(), [](const QString &id) {
        return id.compare(kConfigConsumer, Qt::CaseInsensitive) == 0;
    }));
}

void DesktopRequests::refuse(const Origin &origin, const QString &error)
{
    qCInfo(lcCore) << "desktop request refused:" << error;
    m_outbox.toCallback(origin.session, origin.callbackId, EngineMessages::failure(error));
}

} // namespace quillon
