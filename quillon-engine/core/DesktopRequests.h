#pragma once

#include "RequestProcessor.h"

namespace quillon {

class Outbox;
class SessionTable;
class SettingsStore;
class SubscriptionStore;

// What the desktop hands the engine through the opener (a feed link clicked in a browser, a
// feed or OPML file opened from the file manager): REQUEST "OPENFEED" subscribes to a feed,
// or lets a running ConfigConsumer preview it first, unless it is subscribed already; REQUEST "IMPORTOPML"
// passes an OPML file to a running ConfigConsumer, which alone can show what to import.
class DesktopRequests
{
public:
    using Origin = RequestProcessor::Origin;

    DesktopRequests(RequestProcessor &requests, SubscriptionStore &subscriptions, SettingsStore &settings,
                    const SessionTable &sessions, Outbox &outbox)
        : m_requests(requests), m_subscriptions(subscriptions), m_settings(settings), m_sessions(sessions),
          m_outbox(outbox)
    {
    }

    void registerWith(RequestProcessor &requests);

private:
    void openFeed(const Origin &origin, const PropertyBag &request);
    void importOpml(const Origin &origin, const PropertyBag &request);
    [[nodiscard]] bool previewWanted();
    [[nodiscard]] int configConsumersConnected() const;
    void refuse(const Origin &origin, const QString &error);

    RequestProcessor &m_requests;
    SubscriptionStore &m_subscriptions;
    SettingsStore &m_settings;
    const SessionTable &m_sessions;
    Outbox &m_outbox;
};

} // namespace quillon
