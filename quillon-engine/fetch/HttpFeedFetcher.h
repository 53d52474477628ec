#pragma once

#include "FeedFetcher.h"
#include "FetchOptions.h"
#include "FetchPolicy.h"

#include <QObject>

#include <deque>
#include <memory>
#include <unordered_map>

namespace quillon {

class CurlMulti;
class HttpFetchJob;

// The engine's fetcher: web documents through libcurl (which asks for gzip and deflate and
// unpacks them, and keeps connections open between fetches), files straight from disk. At most
// maxConcurrent web fetches run at once (or the policy's limit) and maxPerHost to one host; the
// others wait, hosts taking turns. Each request goes the way the policy says.
class HttpFeedFetcher : public QObject, public FeedFetcher
{
    Q_OBJECT
public:
    explicit HttpFeedFetcher(FetchOptions options = {}, QObject *parent = nullptr);
    ~HttpFeedFetcher() override;

    void fetch(const FetchRequest &request, Done done) override;
    void setPolicy(std::shared_ptr<FetchPolicy> policy) override;

    [[nodiscard]] const FetchOptions &options() const { return m_options; }
    [[nodiscard]] int running() const { return int(m_running.size()); }
    [[nodiscard]] int waiting() const { return m_waitingCount; }

private:
    struct Pending
    {
        std::unique_ptr<HttpFetchJob> job;
        Done done;
        void *easy = nullptr; // its curl handle while it runs
    };
    struct Host
    {
        std::deque<Pending> waiting;
        int running = 0;
        bool hasTurn = false; // in m_turns
    };

    void readFile(const FetchRequest &request, Done done);
    void offerTurn(const QString &key, Host &host);
    void startWaiting();
    void onTransferDone(void *easy, int code);
    [[nodiscard]] Pending release(HttpFetchJob *job);
    void finish(HttpFetchJob *job, const FetchResult &result);
    void answerLater(Done done, const FetchResult &result);

    [[nodiscard]] int maxConcurrent() const;

    FetchOptions m_options;
    std::shared_ptr<FetchPolicy> m_policy;
    std::unique_ptr<CurlMulti> m_curl;
    std::unordered_map<QString, Host> m_hosts;
    // Hosts with a job waiting and a connection free, in the order they will be served.
    std::deque<QString> m_turns;
    std::unordered_map<HttpFetchJob *, Pending> m_running;
    int m_waitingCount = 0;
};

} // namespace quillon
