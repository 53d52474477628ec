#include "HttpFeedFetcher.h"

#include "FetchLogging.h"
#include "HttpFetchJob.h"

#include <QFile>
#include <QMetaObject>

Q_LOGGING_CATEGORY(lcFetch, "corvell.quillon.engine.fetch")

namespace quillon {

HttpFeedFetcher::HttpFeedFetcher(FetchOptions options, QObject *parent)
    : QObject(parent), m_options(std::move(options))
{
}

HttpFeedFetcher::~HttpFeedFetcher()
{
    // Jobs go without reporting: nobody is left to hear them.
    m_hosts.clear();
    m_running.clear();
}

void HttpFeedFetcher::fetch(const FetchRequest &request, Done done)
{
    if (request.url.isLocalFile()) {
        readFile(request, std::move(done));
        return;
    }
    auto job = std::make_unique<HttpFetchJob>(m_network, m_options, request);
    connect(job.get(), &HttpFetchJob::finished, this, &HttpFeedFetcher::onFinished);
    const QString key = job->hostKey();
    Host &host = m_hosts[key];
    host.waiting.push_back({std::move(job), std::move(done)});
    ++m_waitingCount;
    offerTurn(key, host);
    startWaiting();
}

void HttpFeedFetcher::readFile(const FetchRequest &request, Done done)
{
    FetchResult result;
    result.finalUrl = request.url;
    QFile file(request.url.toLocalFile());
    if (!file.open(QIODevice::ReadOnly)) {
        result.reason = QStringLiteral("cannot read %1: %2").arg(file.fileName(), file.errorString());
    } else if (file.size() > m_options.maxBytes) {
        result.outcome = FetchResult::Outcome::TooLarge;
        result.reason = m_options.tooLargeText();
    } else {
        result.outcome = FetchResult::Outcome::Ok;
        result.body = file.readAll();
    }
    // Answers always come from the event loop, as a web fetch's would.
    QMetaObject::invokeMethod(
        this, [done = std::move(done), result]() { done(result); }, Qt::QueuedConnection);
}

void HttpFeedFetcher::offerTurn(const QString &key, Host &host)
{
    if (host.hasTurn || host.waiting.empty() || host.running >= m_options.maxPerHost)
        return;
    host.hasTurn = true;
    m_turns.push_back(key);
}

void HttpFeedFetcher::startWaiting()
{
    while (int(m_running.size()) < m_options.maxConcurrent && !m_turns.empty()) {
        const QString key = m_turns.front();
        m_turns.pop_front();
        Host &host = m_hosts[key];
        host.hasTurn = false;
        Pending next = std::move(host.waiting.front());
        host.waiting.pop_front();
        --m_waitingCount;
        ++host.running;
        offerTurn(key, host); // behind the other hosts waiting
        HttpFetchJob *job = next.job.get();
        m_running.emplace(job, std::move(next));
        job->start();
    }
}

void HttpFeedFetcher::onFinished(HttpFetchJob *job, const FetchResult &result)
{
    auto it = m_running.find(job);
    if (it == m_running.end())
        return;
    Pending finished = std::move(it->second);
    m_running.erase(it);
    const QString key = job->hostKey();
    Host &host = m_hosts[key];
    --host.running;
    if (host.running == 0 && host.waiting.empty())
        m_hosts.erase(key);
    else
        offerTurn(key, host);
    // The job is still emitting; it goes once control is back in the event loop.
    finished.job.release()->deleteLater();
    qCDebug(lcFetch) << result.finalUrl << result.describe();
    startWaiting();
    finished.done(result);
}

} // namespace quillon
