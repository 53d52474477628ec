#pragma once

#include "SearchSource.h"
#include "SearchUrl.h"
#include "SubscribeClient.h"
#include "SubscriptionSettingsValues.h"

#include <QHash>
#include <QList>
#include <QString>

#include <utility>

// The engine reads and writes behind the settings editor: the common values of a selection,
// the changes of an apply for one subscription, and the search sources. Engine failures
// propagate as quillon::EngineError; no handle outlives a call.
class SubscriptionSettingsStore
{
public:
    explicit SubscriptionSettingsStore(quillon::SubscribeClient &client) : m_client(client) {}

    // The engine consumer's own settings, with fixed fallbacks when it has none.
    [[nodiscard]] EngineTimeDefaults ReadTimeDefaults();
    [[nodiscard]] SubscriptionTabValues ReadSubscriptionTab(const QList<qint32> &ids);
    [[nodiscard]] OutlookTabValues ReadOutlookTab(const QList<qint32> &ids);

    void WriteSubscriptionTab(qint32 id, const SubscriptionTabEdits &edits);
    void WriteOutlookTab(qint32 id, const OutlookTabEdits &edits);

    // The address of a search subscription, as the engine makes it.
    [[nodiscard]] QString SearchUrlText(const SearchUrl &search);
    // The answer comes later, through the callback.
    void RequestSearchSources(const quillon::CallbackPtr &callback);

private:
    using KeyDefaults = QList<std::pair<QString, QString>>;
    [[nodiscard]] QHash<QString, QString> ReadSettings(const QString &consumerId, const QString &section,
                                                       const KeyDefaults &keys);
    [[nodiscard]] qint32 EngineTime(const QString &key, qint32 fallback);

    quillon::SubscribeClient &m_client;
};
