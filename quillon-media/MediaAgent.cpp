#include "MediaAgent.h"

#include "ConsumerRequests.h"
#include "HandleGuard.h"
#include "MediaLogging.h"
#include "MediaPlacement.h"
#include "PlayerHandoff.h"
#include "PropertyBag.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <stdexcept>
#include <utility>

using quillon::Handle;

Q_LOGGING_CATEGORY(lcMedia, "corvell.media")

MediaAgent::MediaAgent(quillon::SubscribeClientPtr client, Options options, QObject *parent)
    : QObject(parent), m_client(std::move(client)), m_options(std::move(options)), m_settings(*m_client),
      m_index(m_options.indexPath), m_playlists(m_options.folders.playlists),
      m_downloader(m_options.limits, m_policy)
{
    if (!m_options.handOff)
        m_options.handOff = &PlayerHandoff::open;
    m_retryTimer.setSingleShot(true);
    m_retryTimer.setInterval(m_options.retryMs);
    m_answerTimer.setInterval(m_options.answerPollMs);
    m_progressTimer.setSingleShot(true);
    m_progressTimer.setInterval(300);
    connect(&m_retryTimer, &QTimer::timeout, this, &MediaAgent::requestArticles);
    connect(&m_answerTimer, &QTimer::timeout, this, &MediaAgent::pollAnswers);
    connect(&m_progressTimer, &QTimer::timeout, this, &MediaAgent::reportProgress);
    connect(&m_downloader, &EnclosureDownloader::finished, this, &MediaAgent::onDownloaded);
}

bool MediaAgent::start(QString *error)
{
    m_index.load();
    try {
        ConsumerRequests::connect(*m_client, QLatin1String(MediaSettings::kConsumer), this,
                                  [this](Handle message) { onEngineMessage(message); });
        m_client->Log(QStringLiteral("Media downloads connected"), 1);
    } catch (const std::exception &e) {
        if (error)
            *error = QString::fromUtf8(e.what());
        return false;
    }
    m_answerTimer.start();
    requestRemovals();
    requestArticles();
    return true;
}

void MediaAgent::engineFailed(const std::exception &e)
{
    if (m_lost)
        return;
    if (!ConsumerRequests::connectionLost(e)) {
        qCWarning(lcMedia) << "engine call failed:" << e.what();
        m_retryTimer.start();
        return;
    }
    m_lost = true;
    m_answerTimer.stop();
    Q_EMIT engineLost(QString::fromUtf8(e.what()));
}

void MediaAgent::onEngineMessage(Handle message)
{
    try {
        const QString name =
            ConsumerRequests::messageFor(*m_client, message, QLatin1String(MediaSettings::kConsumer));
        if (name == QLatin1String("EngineTerminated")) {
            m_lost = true;
            m_answerTimer.stop();
            Q_EMIT engineLost(QStringLiteral("The engine stopped"));
        } else if (name == QLatin1String("ArticlesAvailable")) {
            requestArticles();
        } else if (name == QLatin1String("ArticlesRemoved")) {
            requestRemovals();
        }
    } catch (const std::exception &e) {
        engineFailed(e);
    }
}

void MediaAgent::submit(const QString &kind, const std::function<void(Handle)> &fill,
                        std::function<void(Handle)> answer)
{
    ConsumerRequests::submit(*m_client, kind, fill, this, std::move(answer));
}

void MediaAgent::requestArticles()
{
    if (m_lost)
        return;
    if (m_busy) {
        m_again = true;
        return;
    }
    m_busy = true;
    m_again = false;
    // Settings are read once a chain, so an answer given meanwhile counts from the next.
    m_subscriptions.clear();
    try {
        m_policy->setNetwork(m_settings.network());
    } catch (const std::exception &e) {
        m_busy = false;
        return engineFailed(e);
    }
    askForArticles(++m_chain, 0);
}

void MediaAgent::askForArticles(qint32 chain, qint32 after)
{
    try {
        ConsumerRequests::askForArticles(*m_client, m_options.batchSize, after, this,
                                         [this, chain](Handle answer) { onArticles(answer, chain); });
    } catch (const std::exception &e) {
        m_busy = false;
        engineFailed(e);
    }
}

MediaAgent::Article MediaAgent::readArticle(Handle item)
{
    Article article;
    article.id = m_client->GetLongValue(item, QStringLiteral("ARTICLEID"));
    article.subscription = m_client->GetLongValue(item, QStringLiteral("SUBSCRIPTIONID"));
    article.subject = quillon::presentText(m_client->GetStringValue(item, QStringLiteral("SUBJECT")));
    HandleGuard list(*m_client, m_client->GetHandleValue(item, QStringLiteral("ENCLOSURES")));
    const qint32 count = list.isValid() ? m_client->ListCount(list.get()) : 0;
    for (qint32 i = 0; i < count; ++i) {
        HandleGuard bag(*m_client, m_client->ListHandle(list.get(), i));
        article.enclosures.append(
            {quillon::presentText(m_client->GetStringValue(bag.get(), QStringLiteral("URL"))),
             quillon::presentText(m_client->GetStringValue(bag.get(), QStringLiteral("TYPE"))),
             quillon::presentText(m_client->GetStringValue(bag.get(), QStringLiteral("FILE")))});
    }
    return article;
}

void MediaAgent::onArticles(Handle answer, qint32 chain)
{
    if (chain != m_chain)
        return;
    QList<qint32> settled;
    qint32 last = 0;
    bool more = false;
    try {
        HandleGuard result(*m_client, m_client->GetHandleValue(answer, QStringLiteral("Result")));
        if (!result.isValid())
            throw std::runtime_error("the engine refused the article list");
        HandleGuard items(*m_client, m_client->GetHandleValue(result.get(), QStringLiteral("ITEMS")));
        const qint32 count = items.isValid() ? m_client->ListCount(items.get()) : 0;
        for (qint32 i = 0; i < count; ++i) {
            HandleGuard item(*m_client, m_client->ListHandle(items.get(), i));
            const Article article = readArticle(item.get());
            last = std::max(last, article.id);
            if (take(article))
                settled.append(article.id);
        }
        more = m_client->GetLongValue(result.get(), QStringLiteral("MORE")) == 1;
        acknowledge(settled);
    } catch (const std::exception &e) {
        m_busy = false;
        engineFailed(e);
        return;
    }
    if (more && last > 0)
        return askForArticles(chain, last);
    m_busy = false;
    if (m_again)
        requestArticles();
    checkCaughtUp();
}

bool MediaAgent::take(const Article &article)
{
    if (m_articles.contains(article.id))
        return false; // already on its way
    const std::optional<Subscription> found = subscription(article.subscription);
    if (!found)
        return true; // the subscription is gone
    switch (found->choices.download) {
    case MediaChoices::Download::Never:
        return true;
    case MediaChoices::Download::Ask:
        m_held.insert(article.subscription);
        return false;
    case MediaChoices::Download::Always:
        break;
    }
    startArticle(article, *found);
    return false;
}

std::optional<MediaAgent::Subscription> MediaAgent::subscription(qint32 id)
{
    const auto cached = m_subscriptions.constFind(id);
    if (cached != m_subscriptions.cend())
        return *cached;
    std::optional<Subscription> found;
    try {
        HandleGuard bag(*m_client, m_client->GetItemBag(QStringLiteral("NEWS"), id, 0));
        QString title = quillon::presentText(m_client->GetStringValue(bag.get(), QStringLiteral("TITLE")));
        if (title.isEmpty())
            title = quillon::presentText(m_client->GetStringValue(bag.get(), QStringLiteral("URL")));
        found = Subscription{m_settings.choices(id), title};
    } catch (const std::exception &e) {
        qCInfo(lcMedia) << "subscription" << id << "cannot be read:" << e.what();
    }
    m_subscriptions.insert(id, found);
    return found;
}

MediaIndex::Entry MediaAgent::reserve(const Article &article, const Enclosure &enclosure,
                                      const Subscription &subscription)
{
    if (const MediaIndex::Entry *known = m_index.find(article.id, enclosure.url))
        return *known; // chosen by an earlier run: its part continues there
    const MediaPlacement::Kind kind = MediaPlacement::kindOf(enclosure.type, enclosure.url);
    const QString folder =
        MediaPlacement::folderFor(kind, subscription.choices, m_options.folders, subscription.title);
    const QString name = MediaPlacement::fileName(enclosure.url, article.subject, enclosure.type);
    const QString file =
        MediaPlacement::freePath(folder, name, subscription.choices.overwrite, [this](const QString &path) {
            return QFileInfo::exists(path) || QFileInfo::exists(EnclosureDownloader::partOf(path)) ||
                   m_index.holdsFile(path);
        });
    MediaIndex::Entry entry{article.id, article.subscription, enclosure.url, file, false};
    // The part exists before the index names it, so after a crash a whole file without its
    // part is one this program finished.
    QDir().mkpath(folder);
    QFile part(EnclosureDownloader::partOf(file));
    if (part.open(QIODevice::Append))
        part.close();
    m_index.put(entry);
    m_index.save();
    return entry;
}

void MediaAgent::startArticle(Article article, const Subscription &subscription)
{
    for (Enclosure &enclosure : article.enclosures) {
        if (!enclosure.file.isEmpty() || enclosure.url.isEmpty())
            continue; // recorded before a restart, or nothing to fetch
        const MediaIndex::Entry entry = reserve(article, enclosure, subscription);
        enclosure.file = entry.file;
        const bool finished = entry.done || (QFileInfo::exists(entry.file) &&
                                             !QFileInfo::exists(EnclosureDownloader::partOf(entry.file)));
        if (finished) {
            m_index.markDone(article.id, enclosure.url);
            continue;
        }
        const quint64 key = ++m_nextKey;
        m_jobs.insert(key, {article.id, enclosure.url});
        ++article.open;
        m_downloader.add({key, QUrl(enclosure.url), entry.file});
    }
    countProgress(article.subscription, article.open, 0);
    const qint32 id = article.id;
    m_articles.insert(id, std::move(article));
    if (m_articles.value(id).open == 0)
        finishArticle(id);
}

void MediaAgent::onDownloaded(const EnclosureDownloader::Result &result)
{
    const auto job = m_jobs.take(result.key);
    const auto it = m_articles.find(job.first);
    if (it == m_articles.end())
        return;
    Article &article = *it;
    const MediaIndex::Entry *entry = m_index.find(article.id, job.second);
    const QString file = entry ? entry->file : QString();
    switch (result.outcome) {
    case EnclosureDownloader::Outcome::Done:
        qCInfo(lcMedia) << "downloaded" << job.second << "to" << file
                        << (result.resumed ? "(continued)" : "");
        m_index.markDone(article.id, job.second);
        m_index.save();
        Q_EMIT downloaded(file);
        break;
    case EnclosureDownloader::Outcome::Retry:
        qCWarning(lcMedia) << "download of" << job.second << "stopped:" << result.error
                           << "- tried again later";
        article.retry = true;
        break;
    case EnclosureDownloader::Outcome::GiveUp:
        qCWarning(lcMedia) << "not downloaded:" << job.second << "is" << result.error;
        m_client->Log(QStringLiteral("Enclosure not downloaded: %1 is %2").arg(job.second, result.error), 2);
        break;
    }
    countProgress(article.subscription, 0, 1);
    if (--article.open <= 0)
        finishArticle(article.id);
}

void MediaAgent::finishArticle(qint32 id)
{
    const Article article = m_articles.take(id);
    if (article.retry) {
        m_retryTimer.start(); // the article stays pending; its parts keep their place
        return;
    }
    QStringList files;
    try {
        for (const Enclosure &enclosure : article.enclosures) {
            const MediaIndex::Entry *entry = m_index.find(article.id, enclosure.url);
            if (!entry || !entry->done)
                continue;
            files.append(entry->file);
            submit(QStringLiteral("SETENCLOSUREFILE"), [&](Handle bag) {
                m_client->SetLongValue(bag, QStringLiteral("ARTICLEID"), article.id);
                m_client->SetStringValue(bag, QStringLiteral("URL"), enclosure.url);
                m_client->SetStringValue(bag, QStringLiteral("FILE"), entry->file);
            });
        }
        acknowledge({article.id});
    } catch (const std::exception &e) {
        engineFailed(e);
        return;
    }
    afterDownloads(article, files);
    checkCaughtUp();
}

void MediaAgent::afterDownloads(const Article &article, const QStringList &files)
{
    const std::optional<Subscription> found = subscription(article.subscription);
    if (!found || files.isEmpty())
        return;
    const MediaChoices &choices = found->choices;
    for (const QString &file : files) {
        if (choices.playlist) {
            const QString name = choices.playlistNamedAutomatically || choices.playlistTitle.isEmpty()
                                     ? found->title
                                     : choices.playlistTitle;
            m_playlists.append(
                name, {file, article.subject.isEmpty() ? QFileInfo(file).fileName() : article.subject});
        }
        if (choices.podcasting)
            m_options.handOff(file, choices.podcastApp);
    }
    if (choices.keepNewest > 0)
        keepNewest(article.subscription, choices.keepNewest);
}

void MediaAgent::keepNewest(qint32 subscriptionId, int count)
{
    QList<qint32> articles;
    for (const MediaIndex::Entry &entry : m_index.doneOf(subscriptionId)) {
        if (!articles.contains(entry.article))
            articles.append(entry.article);
    }
    for (qsizetype i = count; i < articles.size(); ++i) {
        const QList<MediaIndex::Entry> old = m_index.takeArticle(articles.at(i));
        deleteFiles(old);
        for (const MediaIndex::Entry &entry : old) {
            submit(QStringLiteral("SETENCLOSUREFILE"), [&](Handle bag) {
                m_client->SetLongValue(bag, QStringLiteral("ARTICLEID"), entry.article);
                m_client->SetStringValue(bag, QStringLiteral("URL"), entry.url);
            });
        }
    }
    m_index.save();
}

void MediaAgent::deleteFiles(const QList<MediaIndex::Entry> &entries)
{
    for (const MediaIndex::Entry &entry : entries) {
        QFile::remove(EnclosureDownloader::partOf(entry.file));
        if (!QFile::remove(entry.file) && QFileInfo::exists(entry.file)) {
            qCWarning(lcMedia) << "cannot delete" << entry.file;
            continue;
        }
        m_playlists.remove(entry.file);
        qCInfo(lcMedia) << "deleted" << entry.file;
        Q_EMIT deleted(entry.file);
    }
}

void MediaAgent::acknowledge(const QList<qint32> &ids)
{
    if (ids.isEmpty())
        return;
    submit(QStringLiteral("ACKNOWLEDGE"),
           [this, &ids](Handle bag) { ConsumerRequests::putIds(*m_client, bag, ids); });
}

void MediaAgent::requestRemovals()
{
    if (m_lost || m_removing)
        return;
    m_removing = true;
    try {
        submit(
            QStringLiteral("PENDINGREMOVALS"),
            [this](Handle bag) { m_client->SetLongValue(bag, QStringLiteral("LIMIT"), m_options.batchSize); },
            [this](Handle answer) { onRemovals(answer); });
    } catch (const std::exception &e) {
        m_removing = false;
        engineFailed(e);
    }
}

void MediaAgent::onRemovals(Handle answer)
{
    m_removing = false;
    QList<qint32> confirmed;
    try {
        HandleGuard result(*m_client, m_client->GetHandleValue(answer, QStringLiteral("Result")));
        HandleGuard items(*m_client, result.isValid()
                                         ? m_client->GetHandleValue(result.get(), QStringLiteral("ITEMS"))
                                         : 0);
        const qint32 count = items.isValid() ? m_client->ListCount(items.get()) : 0;
        for (qint32 i = 0; i < count; ++i) {
            HandleGuard item(*m_client, m_client->ListHandle(items.get(), i));
            const qint32 article = m_client->GetLongValue(item.get(), QStringLiteral("ARTICLEID"));
            const qint32 sub = m_client->GetLongValue(item.get(), QStringLiteral("SUBSCRIPTIONID"));
            // Files of a subscription the user removed stay: only ageing takes them.
            const std::optional<Subscription> found = subscription(sub);
            const QList<MediaIndex::Entry> entries = m_index.takeArticle(article);
            if (found && found->choices.autoDelete)
                deleteFiles(entries);
            confirmed.append(article);
        }
        m_index.save();
        if (!confirmed.isEmpty())
            submit(QStringLiteral("CONFIRMREMOVALS"),
                   [this, &confirmed](Handle bag) { ConsumerRequests::putIds(*m_client, bag, confirmed); });
        if (count >= m_options.batchSize)
            requestRemovals();
    } catch (const std::exception &e) {
        engineFailed(e);
    }
}

void MediaAgent::pollAnswers()
{
    bool answered = false;
    try {
        for (auto it = m_held.begin(); it != m_held.end();) {
            const bool waits = m_settings.choices(*it).download == MediaChoices::Download::Ask;
            answered = answered || !waits;
            it = waits ? std::next(it) : m_held.erase(it);
        }
    } catch (const std::exception &e) {
        engineFailed(e);
        return;
    }
    if (answered)
        requestArticles(); // its articles are taken now
}

void MediaAgent::countProgress(qint32 subscriptionId, int added, int done)
{
    if (added == 0 && done == 0)
        return;
    Progress &progress = m_progress[subscriptionId];
    progress.total += added;
    progress.done += done;
    m_progressChanged.insert(subscriptionId);
    if (!m_progressTimer.isActive())
        m_progressTimer.start();
}

void MediaAgent::reportProgress()
{
    try {
        for (const qint32 id : std::exchange(m_progressChanged, {})) {
            const Progress progress = m_progress.value(id);
            const bool finished = progress.done >= progress.total;
            m_settings.reportProgress(
                id, finished
                        ? QString()
                        : QStringLiteral("downloading %1 of %2").arg(progress.done + 1).arg(progress.total));
            if (finished)
                m_progress.remove(id);
        }
    } catch (const std::exception &e) {
        engineFailed(e);
    }
}

void MediaAgent::checkCaughtUp()
{
    if (!m_busy && m_articles.isEmpty() && m_downloader.active() == 0)
        Q_EMIT caughtUp();
}
