#pragma once

#include "ArticleBatchReader.h"
#include "ArticleHtml.h"
#include "DeliveryIndex.h"
#include "DeliverySettings.h"
#include "FolderFollower.h"
#include "MailStore.h"
#include "MessageBuilder.h"
#include "SubscribeClient.h"

#include <QFuture>
#include <QFutureWatcher>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

// The delivery consumer: connects as "OLCONSUMER", takes the articles of its bound
// subscriptions from the engine in batches, stores each as a message, acknowledges what is
// safely stored, takes away what the engine removed, follows folder changes made in
// ConfigConsumer or in the mail program, and carries read marks both ways.
class DeliveryAgent : public QObject
{
    Q_OBJECT
public:
    // A store the user made while delivery runs, and where its folder index lives.
    struct Relocation
    {
        std::unique_ptr<MailStore> store;
        QString indexPath;
    };
    struct Options
    {
        int batchSize = 500;
        int readPollMs = 1000; // how often the store is looked at for read marks
        int replanMs = 10000;  // how often folder settings are compared with the store
        QString dataFolder;    // QuillonData, for the article template
        // Asked before each replan, between batches: a new store to deliver into from now on.
        std::function<std::optional<Relocation>()> relocate;
    };

    DeliveryAgent(quillon::SubscribeClientPtr client, std::unique_ptr<MailStore> store, QString indexPath,
                  Options options, QObject *parent = nullptr);
    ~DeliveryAgent() override;

    // Opens the store, connects and catches up. False with a reason when the store cannot
    // be opened or the engine refuses the connection.
    [[nodiscard]] bool start(QString *error);
    [[nodiscard]] MailStore &store() { return *m_store; }

    // Runs the periodic work now (tests).
    void replanFolders();
    void pollReadMarks();

Q_SIGNALS:
    // A batch was stored and acknowledged.
    void delivered(int count);
    // Everything the engine had for delivery is stored.
    void caughtUp();
    // Removals were carried out.
    void removed(int count);
    // The engine went away; the consumer has nothing left to do.
    void engineLost(const QString &reason);

private:
    // One request of a kind at a time; a nudge meanwhile asks again when it is answered.
    struct Batch
    {
        bool busy = false;
        bool again = false;
    };
    // A stored batch whose flush to disk runs beside the building of the next one.
    struct Commit
    {
        QList<qint32> stored;
        QList<MailStore::Folder> touched;
        bool more = false;
        bool incomplete = false; // an article could not be stored
        qint32 chain = 0;
        QFuture<std::pair<bool, QString>> result;
        QFutureWatcher<std::pair<bool, QString>> watcher;
    };
    void onEngineMessage(quillon::Handle message);
    void askForBatch(const QString &kind, Batch &batch, void (DeliveryAgent::*answered)(quillon::Handle));
    void requestArticles();
    // One batch of a chain: after is the last article ID of the batch before, 0 for the first.
    void askForArticles(qint32 chain, qint32 after);
    void stopArticles();
    void onArticles(quillon::Handle answer);
    void storeArticles(const QList<ArticleBatchReader::Outgoing> &outgoing, Commit &commit);
    void startCommit(std::unique_ptr<Commit> commit);
    // Settles the batch whose flush runs beside the next one, waiting for it if need be.
    void finishCommit();
    void acknowledge(const QList<qint32> &articleIds, bool more, qint32 chain);
    void requestRemovals();
    void onRemovals(quillon::Handle answer);
    void reportRead(const QList<qint32> &ids, bool read);
    // Read marks set elsewhere (the online service, another program) onto delivered messages.
    void requestReadMarks();
    void onReadMarks(quillon::Handle answer);
    // Sets the marks of a list of the engine's; returns the last mark's ID, 0 for none.
    qint32 applyReadMarks(quillon::Handle items);
    void carryReadMarks(const QList<FolderFollower::Move> &moves);
    // Compares the read marks of these folders with what was known and reports the changes.
    void reportReadMarks(const QList<MailStore::Folder> &changed);
    // "ARTICLEIDS" of a request bag.
    void putIds(quillon::Handle bag, const QList<qint32> &ids);
    // Sends a request bag filled by fill; answer gets the reply bag.
    void submit(const QString &kind, const std::function<void(quillon::Handle)> &fill,
                std::function<void(quillon::Handle)> answer);
    void engineFailed(const std::exception &e);
    void reportStatus(qint32 subscriptionId, const QString &status);
    // The retry timer, with a pause that doubles up to kMaxRetryMs.
    void retryLater();
    // The part of start() that needs the store.
    [[nodiscard]] bool begin(QString *error);
    [[nodiscard]] bool storeReachable();
    void storeFailed(qint32 subscriptionId, qint32 articleId, const QString &error);
    void logToEngine(const QString &text, qint32 level);
    void moveToStore(Relocation next);

    quillon::SubscribeClientPtr m_client;
    std::unique_ptr<MailStore> m_store;
    DeliveryIndex m_index;
    Options m_options;
    DeliverySettings m_settings;
    FolderFollower m_follower{*m_client, m_settings, m_index};
    ArticleHtml m_html;
    MessageBuilder m_builder;
    ArticleBatchReader m_reader{*m_client, m_settings, m_index}; // places kept for one chain of batches
    QHash<QString, QHash<QString, bool>> m_readMarks;            // by folder path text, by key
    QTimer m_readTimer;
    QTimer m_replanTimer;
    QTimer m_retryTimer;
    static constexpr int kFirstRetryMs = 2000;
    static constexpr int kMaxRetryMs = 15000;
    int m_retryMs = kFirstRetryMs;
    bool m_storeAway = false;
    bool m_startPending = false;        // started while the store was away
    QSet<qint32> m_failedSubscriptions; // told the engine's log once
    Batch m_articles;
    qint32 m_articleChain = 0;        // answers of an older chain are dropped
    std::unique_ptr<Commit> m_commit; // at most one flush under way
    Batch m_removals;
    Batch m_incomingMarks;
    bool m_lost = false;
    bool m_readMarksPolled = false; // the first look at every folder has been taken
};
