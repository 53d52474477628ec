#include "DeliveryAgent.h"

#include "ConsumerRequests.h"
#include "DeliveryLogging.h"
#include "HandleGuard.h"
#include "PropertyBag.h"

#include <QtConcurrent/QtConcurrentMap>
#include <QtConcurrent/QtConcurrentRun>

using quillon::Handle;

Q_LOGGING_CATEGORY(lcDeliver, "corvell.deliver")

DeliveryAgent::DeliveryAgent(quillon::SubscribeClientPtr client, std::unique_ptr<MailStore> store,
                             QString indexPath, Options options, QObject *parent)
    : QObject(parent), m_client(std::move(client)), m_store(std::move(store)), m_index(std::move(indexPath)),
      m_options(std::move(options)), m_settings(*m_client), m_html(m_options.dataFolder), m_builder(m_html)
{
    m_readTimer.setInterval(m_options.readPollMs);
    m_replanTimer.setInterval(m_options.replanMs);
    m_retryTimer.setSingleShot(true);
    connect(&m_readTimer, &QTimer::timeout, this, &DeliveryAgent::pollReadMarks);
    connect(&m_replanTimer, &QTimer::timeout, this, &DeliveryAgent::replanFolders);
    connect(&m_retryTimer, &QTimer::timeout, this, [this] {
        if (m_startPending) {
            QString error;
            if (storeReachable() && !begin(&error))
                Q_EMIT engineLost(error);
            return;
        }
        requestArticles();
        requestRemovals();
        requestReadMarks();
    });
}

DeliveryAgent::~DeliveryAgent()
{
    // A flush under way finishes and is acknowledged, so the next start does not take the
    // batch again.
    if (m_commit && !m_lost)
        finishCommit();
    else if (m_commit)
        m_commit->result.waitForFinished();
}

bool DeliveryAgent::start(QString *error)
{
    if (!m_store->open(error))
        return false;
    // A store that is away at start-up (a disk not mounted yet) is waited for before anything
    // is read from it, the folder index included.
    if (!storeReachable()) {
        m_startPending = true;
        return true;
    }
    return begin(error);
}

bool DeliveryAgent::begin(QString *error)
{
    m_startPending = false;
    m_index.load();
    try {
        ConsumerRequests::connect(*m_client, DeliverySettings::kConsumer, this,
                                  [this](Handle message) { onEngineMessage(message); });
        m_client->Log(QStringLiteral("Mail delivery connected; messages go to %1").arg(m_store->describe()),
                      1);
    } catch (const std::exception &e) {
        if (error)
            *error = QString::fromUtf8(e.what());
        return false;
    }
    qCInfo(lcDeliver) << "delivering into" << m_store->describe();
    replanFolders();
    requestRemovals();
    requestReadMarks();
    requestArticles();
    pollReadMarks();
    m_readTimer.start();
    m_replanTimer.start();
    return true;
}

void DeliveryAgent::engineFailed(const std::exception &e)
{
    if (m_lost)
        return;
    // A refused call is tried again later; a lost connection ends the delivery.
    if (!ConsumerRequests::connectionLost(e)) {
        qCWarning(lcDeliver) << "engine call failed:" << e.what();
        retryLater();
        return;
    }
    m_lost = true;
    m_readTimer.stop();
    m_replanTimer.stop();
    Q_EMIT engineLost(QString::fromUtf8(e.what()));
}

void DeliveryAgent::onEngineMessage(Handle message)
{
    try {
        const QString name = ConsumerRequests::messageFor(*m_client, message, DeliverySettings::kConsumer);
        if (name == QLatin1String("EngineTerminated")) {
            m_lost = true;
            m_readTimer.stop();
            m_replanTimer.stop();
            Q_EMIT engineLost(QStringLiteral("The engine stopped"));
        } else if (name == QLatin1String("ArticlesAvailable")) {
            requestArticles();
        } else if (name == QLatin1String("ArticlesRemoved")) {
            requestRemovals();
        } else if (name == QLatin1String("ReadMarksChanged")) {
            requestReadMarks();
        } else if (name == QLatin1String("SubscriptionBindingChanged")) {
            replanFolders();
            requestRemovals();
        }
    } catch (const std::exception &e) {
        engineFailed(e);
    }
}

void DeliveryAgent::submit(const QString &kind, const std::function<void(Handle)> &fill,
                           std::function<void(Handle)> answer)
{
    ConsumerRequests::submit(*m_client, kind, fill, this, std::move(answer));
}

void DeliveryAgent::putIds(Handle bag, const QList<qint32> &ids)
{
    ConsumerRequests::putIds(*m_client, bag, ids);
}

void DeliveryAgent::askForBatch(const QString &kind, Batch &batch, void (DeliveryAgent::*answered)(Handle))
{
    if (m_lost)
        return;
    if (batch.busy) {
        batch.again = true; // one more look once this one is done
        return;
    }
    batch.busy = true;
    batch.again = false;
    try {
        submit(
            kind,
            [this](Handle bag) { m_client->SetLongValue(bag, QStringLiteral("LIMIT"), m_options.batchSize); },
            [this, answered](Handle answer) { (this->*answered)(answer); });
    } catch (const std::exception &e) {
        batch.busy = false;
        engineFailed(e);
    }
}

void DeliveryAgent::requestArticles()
{
    if (m_lost)
        return;
    if (m_articles.busy) {
        m_articles.again = true;
        return;
    }
    m_articles.busy = true;
    m_articles.again = false;
    // Places are read once a chain: a setting changed meanwhile reaches delivered messages at
    // the next replan, which moves them.
    m_reader.forget();
    askForArticles(++m_articleChain, 0);
}

void DeliveryAgent::askForArticles(qint32 chain, qint32 after)
{
    try {
        ConsumerRequests::askForArticles(*m_client, m_options.batchSize, after, this,
                                         [this, chain](Handle answer) {
                                             // A chain given up after a failed batch is not continued: the
                                             // next starts over.
                                             if (chain == m_articleChain)
                                                 onArticles(answer);
                                         });
    } catch (const std::exception &e) {
        stopArticles();
        engineFailed(e);
    }
}

void DeliveryAgent::stopArticles()
{
    m_articles.busy = false;
    ++m_articleChain;
}

void DeliveryAgent::retryLater()
{
    m_retryTimer.start(m_retryMs);
    m_retryMs = std::min(m_retryMs * 2, kMaxRetryMs);
}

// An absent store is an outage: said once, waited out with growing pauses, and nothing is
// stored, removed or judged deleted meanwhile.
bool DeliveryAgent::storeReachable()
{
    if (m_store->reachable()) {
        if (std::exchange(m_storeAway, false)) {
            qCInfo(lcDeliver) << "the mail store is back:" << m_store->describe();
            logToEngine(QStringLiteral("Mail delivery reaches %1 again").arg(m_store->describe()), 1);
        }
        return true;
    }
    if (!std::exchange(m_storeAway, true)) {
        qCWarning(lcDeliver) << "the mail store cannot be reached, waiting for it:" << m_store->describe();
        logToEngine(QStringLiteral("Mail delivery cannot reach %1; it waits for it").arg(m_store->describe()),
                    2);
    }
    retryLater();
    return false;
}

void DeliveryAgent::onArticles(Handle answer)
{
    if (!storeReachable()) {
        stopArticles();
        return;
    }
    auto commit = std::make_unique<Commit>();
    commit->chain = m_articleChain;
    try {
        HandleGuard result(*m_client, m_client->GetHandleValue(answer, QStringLiteral("Result")));
        HandleGuard items(*m_client, result.get() > 0
                                         ? m_client->GetHandleValue(result.get(), QStringLiteral("ITEMS"))
                                         : 0);
        if (items.get() <= 0) {
            qCWarning(lcDeliver) << "the engine did not list articles:"
                                 << m_client->GetStringValue(answer, QStringLiteral("ERROR"));
            stopArticles();
            return;
        }
        commit->more = m_client->GetLongValue(result.get(), QStringLiteral("MORE")) == 1;
        // The engine prepares the next batch while this one is built and written.
        const qint32 count = m_client->ListCount(items.get());
        if (commit->more && count > 0) {
            HandleGuard last(*m_client, m_client->ListHandle(items.get(), count - 1));
            askForArticles(m_articleChain, m_client->GetLongValue(last.get(), QStringLiteral("ARTICLEID")));
        }
        storeArticles(m_reader.read(items.get()), *commit);
    } catch (const std::exception &e) {
        stopArticles();
        engineFailed(e);
        return;
    }
    startCommit(std::move(commit));
}

void DeliveryAgent::storeArticles(const QList<ArticleBatchReader::Outgoing> &outgoing, Commit &commit)
{
    // Building the messages is most of a batch's work and needs neither the engine nor the
    // store, so every core takes part.
    const QList<QByteArray> messages = QtConcurrent::blockingMapped(
        outgoing, [this](const ArticleBatchReader::Outgoing &o) { return m_builder.build(o.article); });
    QHash<QString, MailStore::Folder> touched; // by path text
    for (qsizetype i = 0; i < outgoing.size(); ++i) {
        const auto &[article, folder] = outgoing.at(i);
        QString error;
        const QString key = MailStore::keyOf(article.articleId);
        if (!m_store->add(folder, key, messages.at(i), &error)) {
            storeFailed(article.subscriptionId, article.articleId, error);
            commit.incomplete = true;
            continue;
        }
        const QString path = FolderPlan::pathText(folder);
        if (!touched.contains(path))
            m_store->tag(folder, article.subscriptionId);
        touched.insert(path, folder);
        if (m_failedSubscriptions.remove(article.subscriptionId))
            reportStatus(article.subscriptionId, QString());
        // Known unread already: the next look at the folder reports nothing for it.
        m_readMarks[path].insert(key, false);
        commit.stored.append(article.articleId);
    }
    commit.touched = touched.values();
}

// Said once per subscription in the engine's log and on the subscription, where ConfigConsumer's
// user sees it; the article stays pending and is tried again.
void DeliveryAgent::storeFailed(qint32 subscriptionId, qint32 articleId, const QString &error)
{
    qCWarning(lcDeliver) << "cannot store article" << articleId << error;
    if (m_failedSubscriptions.contains(subscriptionId))
        return;
    m_failedSubscriptions.insert(subscriptionId);
    logToEngine(QStringLiteral("Mail delivery cannot store the articles of subscription %1: %2")
                    .arg(subscriptionId)
                    .arg(error),
                2);
    reportStatus(subscriptionId, error);
}

// The failure shown on the subscription; an empty text takes it away.
void DeliveryAgent::reportStatus(qint32 subscriptionId, const QString &status)
{
    const auto fill = [this, subscriptionId, status](Handle bag) {
        m_client->SetLongValue(bag, QStringLiteral("SUBSCRIPTIONID"), subscriptionId);
        m_client->SetStringValue(bag, QStringLiteral("STATUS"), status);
    };
    try {
        submit(QStringLiteral("SETDELIVERYSTATUS"), fill, [](Handle) {});
    } catch (const std::exception &e) {
        engineFailed(e);
    }
}

void DeliveryAgent::logToEngine(const QString &text, qint32 level)
{
    try {
        m_client->Log(text, level);
    } catch (const std::exception &e) {
        qCWarning(lcDeliver) << "engine call failed:" << e.what();
    }
}

void DeliveryAgent::startCommit(std::unique_ptr<Commit> commit)
{
    // One batch waits for the disk while the next one, already asked for, is built.
    finishCommit();
    const MailStore::CommitJob job = m_store->commitJob();
    m_commit = std::move(commit);
    m_commit->result = QtConcurrent::run([job] {
        QString error;
        const bool ok = job(&error);
        return std::pair{ok, error};
    });
    connect(&m_commit->watcher, &QFutureWatcher<std::pair<bool, QString>>::finished, this,
            &DeliveryAgent::finishCommit);
    m_commit->watcher.setFuture(m_commit->result);
}

void DeliveryAgent::finishCommit()
{
    if (!m_commit)
        return;
    const std::unique_ptr<Commit> done = std::move(m_commit);
    const auto [ok, error] = done->result.result(); // waits when it is still running
    m_store->afterCommit(ok);
    if (!ok || !m_index.save()) {
        qCWarning(lcDeliver) << "delivery postponed:" << error;
        stopArticles();
        retryLater();
        return;
    }
    // The folders this batch filled look changed to the read-mark watch; a mark the user set
    // there meanwhile must not be taken for one of ours, so they are looked at now.
    if (m_readMarksPolled)
        reportReadMarks(m_store->changedFolders(done->touched));
    // What could not be stored is asked for again soon, not at the feed's next update.
    if (done->incomplete)
        retryLater();
    else if (!done->more)
        m_retryMs = kFirstRetryMs;
    acknowledge(done->stored, done->more, done->chain);
}

void DeliveryAgent::acknowledge(const QList<qint32> &articleIds, bool more, qint32 chain)
{
    const auto fillIds = [this, articleIds](Handle bag) { putIds(bag, articleIds); };
    try {
        submit(QStringLiteral("ACKNOWLEDGE"), fillIds,
               [this, count = articleIds.size(), more, chain](Handle) {
                   if (count > 0)
                       Q_EMIT delivered(int(count));
                   if (more || chain != m_articleChain)
                       return; // the next batch is on its way already, or a new chain took over
                   m_articles.busy = false;
                   if (m_articles.again)
                       requestArticles();
                   else
                       Q_EMIT caughtUp();
               });
    } catch (const std::exception &e) {
        stopArticles();
        engineFailed(e);
    }
}
