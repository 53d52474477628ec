#pragma once

#include "SyncService.h"

#include <QHash>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QUrl>

class QNetworkReply;

namespace quillon {

// The Tiny Tiny RSS JSON API (level 15): one JSON POST per call to ".../api/", a session ID
// from "login". The address the user typed may name the server or its API.
class TinyRssService : public SyncService
{
public:
    void open(const SyncAccount &account, Done done) override;
    void feeds(std::function<void(const QList<RemoteFeed> &)> done) override;
    void subscribe(const LocalSubscription &subscription, Done done) override;
    void unsubscribe(const RemoteFeed &feed, Done done) override;
    void articles(const QStringList &feedIds,
                  std::function<void(const QList<RemoteArticle> &)> done) override;
    void setRead(const QStringList &articleIds, bool read, Done done) override;
    [[nodiscard]] QString apiAddress() const override { return m_api.toString(); }

    // Where the API may be, most likely first.
    [[nodiscard]] static QList<QUrl> candidates(const QString &typed, const QString &knownApi);

private:
    using Content = std::function<void(const QJsonValue &content)>;
    // Answers the content of a reply with status 0; anything else fails the run.
    void call(QJsonObject request, Content done);
    void tryLogin(Done done);
    void loginAnswered(QNetworkReply *reply, Done done);
    void categories(std::function<void()> done);
    // Pages of headlines of one feed (-4: all of them) from skip on, then of the feeds left.
    void headlinesFrom(int feed, int skip, std::function<void(const QList<RemoteArticle> &)> done);
    [[nodiscard]] int categoryIdFor(const QString &path) const;

    QNetworkAccessManager m_network;
    SyncAccount m_account;
    QList<QUrl> m_candidates;
    QUrl m_api;
    QString m_session;
    QHash<int, QString> m_categoryTitles;
    QList<RemoteArticle> m_articles;
    QList<int> m_feedsLeft;
};

} // namespace quillon
