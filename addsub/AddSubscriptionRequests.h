#pragma once

#include "ImportTab.h"
#include "SearchSource.h"
#include "SubscribeClient.h"

#include <QHash>
#include <QList>
#include <QString>

class QObject;

// What the add-subscription wizard asks of the engine, and the reading of its answers. Answers
// arrive later at the target's handlers through the callbacks made here.
class AddSubscriptionRequests
{
public:
    explicit AddSubscriptionRequests(quillon::SubscribeClientPtr client);

    [[nodiscard]] quillon::SubscribeClient &Client() const { return *m_client; }
    [[nodiscard]] const quillon::SubscribeClientPtr &ClientPtr() const { return m_client; }

    // The directory's root list: "OEM_Browse_URL" of the engine's settings.
    void RequestRootList(QObject *target);
    // One outline list (a web or file address, or a reader's id); tag tells the lists apart.
    void RequestOutlineList(QObject *target, qint32 tag, const QString &address);
    void RequestSearchSources(QObject *target);
    void RequestImportSources(QObject *target);

    // The root list's rows: title (else text) and the list's address (xmlUrl, else url).
    [[nodiscard]] QList<std::pair<QString, QString>> ReadRootRows(quillon::Handle result) const;
    [[nodiscard]] QList<SearchSource> ReadSearchSources(quillon::Handle answer) const;
    [[nodiscard]] QList<ImportTab::Source> ReadImportSources(quillon::Handle answer) const;
    // The search subscription's address, or "" when there is none to make.
    [[nodiscard]] QString SearchUrl(const SearchSource &source, const QString &words, bool limitChecked,
                                    const QString &limitText) const;
    // Subscriptions already held, by address; read once per wizard.
    [[nodiscard]] const QHash<QString, qint32> &Subscribed();

    // "file://loopback/" + the path with "\" as "/" and blanks as "%20", nothing else escaped.
    [[nodiscard]] static QString LoopbackUrl(const QString &path);

private:
    void SubmitList(QObject *target, const QString &list, const char *handler);

    quillon::SubscribeClientPtr m_client;
    std::optional<QHash<QString, qint32>> m_subscribed;
};
