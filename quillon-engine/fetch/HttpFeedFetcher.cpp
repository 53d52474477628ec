#include "HttpFeedFetcher.h"

#include "CurlMulti.h"
#include "FetchLogging.h"
#include "HttpFetchJob.h"

#include <QFile>
#include <QMetaObject>

Q_LOGGING_CATEGORY(lcFetch, "corvell.quillon.engine.fetch")

namespace quillon {

HttpFeedFetcher::HttpFeedFetcher(FetchOptions options, QObject *parent)
    : QObject(parent), m_options(std::move(options)), m_policy(std::make_shared<FetchPolicy>()),
      m_curl(std::make_unique<CurlMulti>(
          [this](CURL *easy, CURLcode code) { onTransferDone(easy, int(code)); }, this))
{
}

HttpFeedFetcher::~HttpFeedFetcher()
{
    // Jobs go without reporting: nobody is left to hear them.
    for (auto &[job, pending] : m_running) {
        if (pending.easy) {
            m_curl->stop(pending.easy);
            m_curl->give(pending.easy);
        }
    }
    m_running.clear();
    m_hosts.clear();
    m_curl.reset();
}

void HttpFeedFetcher::fetch(const FetchRequest &request, Done done)
{
    if (request.url.isLocalFile()) {
        readFile(request, std::move(done));
        return;
    }
    FetchOptions options = m_options;
    if (request.timeoutMs > 0)
        options.timeoutMs = std::min(options.timeoutMs, request.timeoutMs);
    auto job = std::make_unique<HttpFetchJob>(options, m_policy, request);
    const QString key = job->hostKey();
    Host &host = m_hosts[key];
    host.waiting.push_back({std::move(job), std::move(done)});
    ++m_waitingCount;
    offerTurn(key, host);
    startWaiting();
}

void HttpFeedFetcher::setPolicy(std::shared_ptr<FetchPolicy> policy)
{
    // Jobs already made keep the one they were made with.
    if (policy)
        m_policy = std::move(policy);
}

int HttpFeedFetcher::maxConcurrent() const
{
    return m_policy->maxConcurrent() > 0 ? m_policy->maxConcurrent() : m_options.maxConcurrent;
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
    answerLater(std::move(done), result);
}

void HttpFeedFetcher::answerLater(Done done, const FetchResult &result)
{
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
    while (int(m_running.size()) < maxConcurrent() && !m_turns.empty()) {
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
        CURL *easy = m_curl->take();
        if (easy)
            job->prepare(easy);
        next.easy = easy;
        m_running.emplace(job, std::move(next));
        if (!easy || !m_curl->start(easy)) {
            const FetchResult failed =
                job->failed(FetchResult::Outcome::Failed, QStringLiteral("the web fetcher could not start"));
            answerLater(release(job).done, failed);
        }
    }
}

void HttpFeedFetcher::onTransferDone(void *easy, int code)
{
    m_curl->stop(easy);
    char *data = nullptr;
    curl_easy_getinfo(easy, CURLINFO_PRIVATE, &data);
    auto *job = reinterpret_cast<HttpFetchJob *>(data);
    if (!m_running.count(job))
        return;
    const std::optional<FetchResult> result = job->finished(easy, CURLcode(code));
    if (result)
        finish(job, *result);
    else if (!m_curl->start(easy)) // on to where it was redirected
        finish(job,
               job->failed(FetchResult::Outcome::Failed, QStringLiteral("the web fetcher could not start")));
}

HttpFeedFetcher::Pending HttpFeedFetcher::release(HttpFetchJob *job)
{
    const auto it = m_running.find(job);
    Pending pending = std::move(it->second);
    m_running.erase(it);
    m_curl->give(pending.easy);
    pending.easy = nullptr;
    const QString &key = job->hostKey();
    Host &host = m_hosts[key];
    --host.running;
    if (host.running == 0 && host.waiting.empty())
        m_hosts.erase(key);
    else
        offerTurn(key, host);
    return pending;
}

void HttpFeedFetcher::finish(HttpFetchJob *job, const FetchResult &result)
{
    const Pending finished = release(job);
    qCDebug(lcFetch) << result.finalUrl << result.describe();
    startWaiting();
    finished.done(result);
}

} // namespace quillon
