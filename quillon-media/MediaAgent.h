#pragma once

#include "EnclosureDownloader.h"
#include "MediaFolders.h"
#include "MediaIndex.h"
#include "MediaSettings.h"
#include "Playlists.h"
#include "SubscribeClient.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <functional>
#include <optional>

// The media consumer: connects as "MEDIACONSUMER", takes every article with an enclosure from
// the engine, downloads the enclosures of subscriptions whose answer is "always" into the
// user's folders, records each file with the engine and acknowledges the article; articles of
// subscriptions still waiting for the user's answer stay pending until it is given.
class MediaAgent : public QObject
{
    Q_OBJECT
public:
    struct Options
    {
        MediaFolders folders;
        QString indexPath;
        EnclosureDownloader::Limits limits;
        int batchSize = 200;
        int retryMs = 60000;     // after a download failed for the network or the disk
        int answerPollMs = 1000; // how often subscriptions waiting for an answer are looked at
        std::function<void(const QString &file, const QString &app)> handOff;
    };

    MediaAgent(quillon::SubscribeClientPtr client, Options options, QObject *parent = nullptr);

    // Connects and catches up; false with a reason when the engine refuses.
    [[nodiscard]] bool start(QString *error);

Q_SIGNALS:
    void downloaded(const QString &file);
    void deleted(const QString &file);
    // Nothing is pending but articles waiting for an answer or a retry.
    void caughtUp();
    void engineLost(const QString &reason);

private:
    struct Enclosure
    {
        QString url;
        QString type;
        QString file;
    };
    struct Article
    {
        qint32 id = 0;
        qint32 subscription = 0;
        QString subject;
        QList<Enclosure> enclosures;
        int open = 0;
        bool retry = false;
    };
    struct Subscription
    {
        MediaChoices choices;
        QString title;
    };
    struct Progress
    {
        int total = 0;
        int done = 0;
    };

    void onEngineMessage(quillon::Handle message);
    void submit(const QString &kind, const std::function<void(quillon::Handle)> &fill,
                std::function<void(quillon::Handle)> answer = {});
    void requestArticles();
    void askForArticles(qint32 chain, qint32 after);
    void onArticles(quillon::Handle answer, qint32 chain);
    [[nodiscard]] Article readArticle(quillon::Handle item);
    // What to do with one article: true when it is settled (acknowledge it now).
    bool take(const Article &article);
    [[nodiscard]] std::optional<Subscription> subscription(qint32 id);
    void startArticle(Article article, const Subscription &subscription);
    [[nodiscard]] MediaIndex::Entry reserve(const Article &article, const Enclosure &enclosure,
                                            const Subscription &subscription);
    void onDownloaded(const EnclosureDownloader::Result &result);
    void finishArticle(qint32 id);
    void afterDownloads(const Article &article, const QStringList &files);
    void keepNewest(qint32 subscriptionId, int count);
    void deleteFiles(const QList<MediaIndex::Entry> &entries);
    void acknowledge(const QList<qint32> &ids);
    void requestRemovals();
    void onRemovals(quillon::Handle answer);
    void pollAnswers();
    void countProgress(qint32 subscriptionId, int added, int done);
    void reportProgress();
    void checkCaughtUp();
    void engineFailed(const std::exception &e);

    quillon::SubscribeClientPtr m_client;
    Options m_options;
    MediaSettings m_settings;
    MediaIndex m_index;
    Playlists m_playlists;
    std::shared_ptr<quillon::FetchPolicy> m_policy = std::make_shared<quillon::FetchPolicy>();
    EnclosureDownloader m_downloader;
    QHash<qint32, std::optional<Subscription>> m_subscriptions; // for one chain of batches
    QHash<qint32, Article> m_articles;                          // downloads under way
    QHash<quint64, std::pair<qint32, QString>> m_jobs;          // key -> article, address
    quint64 m_nextKey = 0;
    QSet<qint32> m_held; // subscriptions waiting for the user's answer
    QHash<qint32, Progress> m_progress;
    QSet<qint32> m_progressChanged;
    QTimer m_retryTimer;
    QTimer m_answerTimer;
    QTimer m_progressTimer;
    qint32 m_chain = 0;
    bool m_busy = false;
    bool m_again = false;
    bool m_removing = false;
    bool m_lost = false;
};
