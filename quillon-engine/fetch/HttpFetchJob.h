#pragma once

#include "FetchOptions.h"
#include "FetchPolicy.h"
#include "FetchRequest.h"
#include "FetchResult.h"

#include <curl/curl.h>

#include <QElapsedTimer>

#include <memory>
#include <optional>

namespace quillon {

// One web fetch on a curl easy handle: follows redirects itself (so a login never travels to
// another origin), holds the deadline and the size limit, and reads the answer's headers.
class HttpFetchJob
{
public:
    HttpFetchJob(const FetchOptions &options, std::shared_ptr<FetchPolicy> policy, FetchRequest request);
    ~HttpFetchJob();
    HttpFetchJob(const HttpFetchJob &) = delete;
    HttpFetchJob &operator=(const HttpFetchJob &) = delete;

    // Scheme, host and port: the connections one server may be asked for at once.
    [[nodiscard]] const QString &hostKey() const { return m_hostKey; }
    // Sets the handle up for the current address, through the proxy the policy names for it;
    // the first call starts the clock.
    void prepare(CURL *easy);
    // What the transfer that just ended amounts to; nothing when it is to be sent again to
    // where it was redirected (prepare has been called for that).
    [[nodiscard]] std::optional<FetchResult> finished(CURL *easy, CURLcode code);
    [[nodiscard]] FetchResult failed(FetchResult::Outcome outcome, const QString &reason) const;

private:
    static size_t onHeader(char *data, size_t size, size_t count, void *self);
    static size_t onBody(char *data, size_t size, size_t count, void *self);
    [[nodiscard]] bool readHeader(QByteArrayView line);
    [[nodiscard]] bool readBody(QByteArrayView data);
    void abort(const QString &reason);
    void routeThroughProxy(CURL *easy);
    [[nodiscard]] bool isPacked() const;
    [[nodiscard]] FetchResult answered() const;
    [[nodiscard]] QString timedOutText() const;

    const FetchOptions m_options;
    std::shared_ptr<FetchPolicy> m_policy;
    FetchRequest m_request;
    QUrl m_current;
    QString m_hostKey;
    curl_slist *m_headers = nullptr;
    QElapsedTimer m_clock;
    int m_redirects = 0;
    char m_error[CURL_ERROR_SIZE] = {};

    // The headers of the answer being read.
    struct Answer
    {
        int status = 0;
        QByteArray reason;
        QByteArray contentType;
        QByteArray etag;
        QByteArray lastModified;
        QByteArray encoding;
        QByteArray location;
        qint64 announced = -1;
    };
    Answer m_answer;
    QByteArray m_body;
    QString m_tooLarge; // set when the transfer was stopped for its size
};

} // namespace quillon
