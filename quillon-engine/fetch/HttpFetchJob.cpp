#include "HttpFetchJob.h"

#include "CurlProxy.h"

#include "FetchLogging.h"

#include <algorithm>

namespace quillon {

namespace {
constexpr char kAccept[] = "Accept: application/rss+xml, application/atom+xml, application/rdf+xml, "
                           "application/xml;q=0.9, text/xml;q=0.9, */*;q=0.8";

bool isRedirect(int status)
{
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

// Scheme, host and port: a login goes only where it was asked for, never over plain http
// after https, nor to another port of the same host.
bool sameOrigin(const QUrl &a, const QUrl &b)
{
    const QString scheme = a.scheme().toLower();
    const int defaultPort = scheme == QLatin1String("https") ? 443 : 80;
    return scheme == b.scheme().toLower() && a.host().compare(b.host(), Qt::CaseInsensitive) == 0 &&
           a.port(defaultPort) == b.port(defaultPort);
}

bool named(QByteArrayView name, QByteArrayView wanted)
{
    return name.compare(wanted, Qt::CaseInsensitive) == 0;
}

curl_slist *appendHeader(curl_slist *list, const QByteArray &line)
{
    curl_slist *longer = curl_slist_append(list, line.constData());
    return longer ? longer : list;
}
} // namespace

HttpFetchJob::HttpFetchJob(const FetchOptions &options, std::shared_ptr<FetchPolicy> policy,
                           FetchRequest request)
    : m_options(options), m_policy(std::move(policy)), m_request(std::move(request)),
      m_current(m_request.url),
      m_hostKey(m_request.url.scheme().toLower() + QLatin1Char('/') + m_request.url.host().toLower() +
                QLatin1Char(':') + QString::number(m_request.url.port(-1)))
{
}

HttpFetchJob::~HttpFetchJob()
{
    curl_slist_free_all(m_headers);
}

void HttpFetchJob::prepare(CURL *easy)
{
    if (!m_clock.isValid())
        m_clock.start();
    m_answer = {};
    m_body.clear();
    m_tooLarge.clear();
    m_error[0] = '\0';

    curl_slist *headers = curl_slist_append(nullptr, kAccept);
    if (!m_request.etag.isEmpty())
        headers = appendHeader(headers, "If-None-Match: " + m_request.etag.toUtf8());
    if (!m_request.lastModified.isEmpty())
        headers = appendHeader(headers, "If-Modified-Since: " + m_request.lastModified.toUtf8());
    QString user = m_request.user;
    QString password = m_request.password;
    if (user.isEmpty() && !m_request.url.userName().isEmpty()) {
        user = m_request.url.userName();
        password = m_request.url.password();
    }
    // A login travels only in our own header, and only to the origin that asked for it.
    if (!user.isEmpty() && sameOrigin(m_current, m_request.url))
        headers = appendHeader(headers, "Authorization: Basic " +
                                            (user + QLatin1Char(':') + password).toUtf8().toBase64());

    // Without the user info: curl would send it to wherever the address leads.
    const QByteArray address = m_current.toEncoded(QUrl::RemoveUserInfo | QUrl::RemoveFragment);
    curl_easy_setopt(easy, CURLOPT_URL, address.constData());
    curl_easy_setopt(easy, CURLOPT_PRIVATE, this);
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
#if LIBCURL_VERSION_NUM >= 0x075500
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
#else
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS, long(CURLPROTO_HTTP | CURLPROTO_HTTPS));
#endif
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(easy, CURLOPT_USERAGENT, m_options.userAgent.constData());
    curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, ""); // every packing curl can unpack
    curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    routeThroughProxy(easy);
    const qint64 left = std::max<qint64>(1, m_options.timeoutMs - m_clock.elapsed());
    curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, long(left));
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &HttpFetchJob::onHeader);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &HttpFetchJob::onBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, m_error);
    // The handle has copied the strings but keeps the header list: the old one goes now.
    curl_slist_free_all(m_headers);
    m_headers = headers;
}

void HttpFetchJob::routeThroughProxy(CURL *easy)
{
    const ProxyRoute route = m_policy->route(m_current);
    CurlProxy::apply(easy, route);
    if (!route.direct())
        qCDebug(lcFetch) << m_current << "through" << route.proxy << "-" << route.reason;
}

size_t HttpFetchJob::onHeader(char *data, size_t size, size_t count, void *self)
{
    const size_t bytes = size * count;
    return static_cast<HttpFetchJob *>(self)->readHeader(QByteArrayView(data, qsizetype(bytes))) ? bytes : 0;
}

size_t HttpFetchJob::onBody(char *data, size_t size, size_t count, void *self)
{
    const size_t bytes = size * count;
    return static_cast<HttpFetchJob *>(self)->readBody(QByteArrayView(data, qsizetype(bytes))) ? bytes : 0;
}

bool HttpFetchJob::readHeader(QByteArrayView line)
{
    line = line.trimmed();
    if (line.startsWith("HTTP/")) {
        // A new answer (after "100 Continue", say): nothing of the one before counts.
        const qsizetype space = line.indexOf(' ');
        const QByteArrayView rest = space < 0 ? QByteArrayView() : line.sliced(space + 1);
        const qsizetype reasonAt = rest.indexOf(' ');
        m_answer = {};
        m_answer.status = (reasonAt < 0 ? rest : rest.first(reasonAt)).toInt();
        m_answer.reason = reasonAt < 0 ? QByteArray() : rest.sliced(reasonAt + 1).trimmed().toByteArray();
        return true;
    }
    const qsizetype colon = line.indexOf(':');
    if (colon <= 0)
        return true;
    const QByteArrayView name = line.first(colon).trimmed();
    const QByteArrayView value = line.sliced(colon + 1).trimmed();
    if (named(name, "content-type")) {
        m_answer.contentType = value.toByteArray();
    } else if (named(name, "etag")) {
        m_answer.etag = value.toByteArray();
    } else if (named(name, "last-modified")) {
        m_answer.lastModified = value.toByteArray();
    } else if (named(name, "content-encoding")) {
        m_answer.encoding = value.toByteArray().toLower();
    } else if (named(name, "location")) {
        m_answer.location = value.toByteArray();
    } else if (named(name, "content-length")) {
        bool ok = false;
        m_answer.announced = value.toLongLong(&ok);
        if (ok && m_answer.announced > m_options.maxBytes) {
            abort(m_options.tooLargeText());
            return false;
        }
    }
    return true;
}

bool HttpFetchJob::readBody(QByteArrayView data)
{
    if (m_body.isEmpty() && m_answer.announced > 0 && !isPacked())
        m_body.reserve(std::min(m_answer.announced, m_options.maxBytes));
    if (m_body.size() + data.size() > m_options.maxBytes) {
        // Counted after unpacking, so a small download that unpacks to gigabytes stops here.
        abort(isPacked() ? m_options.unpacksTooLargeText() : m_options.tooLargeText());
        return false;
    }
    m_body.append(data);
    return true;
}

void HttpFetchJob::abort(const QString &reason)
{
    m_tooLarge = reason;
    m_body.clear();
}

bool HttpFetchJob::isPacked() const
{
    return !m_answer.encoding.isEmpty() && m_answer.encoding != "identity";
}

std::optional<FetchResult> HttpFetchJob::finished(CURL *easy, CURLcode code)
{
    const auto withStatus = [this](FetchResult result) {
        result.httpStatus = m_answer.status;
        return result;
    };
    if (!m_tooLarge.isEmpty())
        return withStatus(failed(FetchResult::Outcome::TooLarge, m_tooLarge));
    if (code == CURLE_OPERATION_TIMEDOUT)
        return failed(FetchResult::Outcome::TimedOut, timedOutText());
    const bool cut = code == CURLE_PARTIAL_FILE || code == CURLE_RECV_ERROR;
    if (cut && m_answer.status >= 200 && m_answer.status <= 299) {
        // An answer that stopped early is not the document: nothing of it may be stored.
        return withStatus(failed(FetchResult::Outcome::Failed,
                                 QStringLiteral("the connection was cut before the document ended")));
    }
    if (code == CURLE_BAD_CONTENT_ENCODING)
        return failed(FetchResult::Outcome::Failed, QStringLiteral("the document could not be unpacked"));
    // Anything else short of an answer; an error page cut short still says its status.
    if ((code != CURLE_OK && !(cut && m_answer.status > 0)) || m_answer.status == 0) {
        const char *what = m_error[0] ? m_error : curl_easy_strerror(code);
        return failed(FetchResult::Outcome::Failed, QString::fromUtf8(what));
    }
    const QUrl location(QString::fromUtf8(m_answer.location));
    // A redirect without a place to go is an answer of its own.
    if (!isRedirect(m_answer.status) || location.isEmpty() || !location.isValid())
        return answered();
    const QUrl target = m_current.resolved(location);
    const QString scheme = target.scheme().toLower();
    if (++m_redirects > m_options.maxRedirects)
        return withStatus(failed(FetchResult::Outcome::Failed,
                                 QStringLiteral("more than %1 redirects").arg(m_options.maxRedirects)));
    if (scheme != QLatin1String("http") && scheme != QLatin1String("https"))
        return withStatus(
            failed(FetchResult::Outcome::Failed, QStringLiteral("redirected to %1").arg(target.toString())));
    if (m_clock.elapsed() >= m_options.timeoutMs)
        return failed(FetchResult::Outcome::TimedOut, timedOutText());
    qCDebug(lcFetch) << m_current << "redirected" << m_answer.status << "to" << target;
    m_current = target;
    prepare(easy);
    return std::nullopt;
}

FetchResult HttpFetchJob::answered() const
{
    FetchResult result;
    result.httpStatus = m_answer.status;
    result.reason = QString::fromUtf8(m_answer.reason);
    result.finalUrl = m_current;
    if (m_answer.status == 304) {
        result.outcome = FetchResult::Outcome::NotModified;
    } else if (m_answer.status == 401) {
        result.outcome = FetchResult::Outcome::Unauthorized;
    } else if (m_answer.status < 200 || m_answer.status > 299) {
        result.outcome = FetchResult::Outcome::HttpError;
    } else {
        result.outcome = FetchResult::Outcome::Ok;
        result.body = m_body;
        result.contentType = QString::fromUtf8(m_answer.contentType);
        result.etag = QString::fromUtf8(m_answer.etag);
        result.lastModified = QString::fromUtf8(m_answer.lastModified);
    }
    return result;
}

FetchResult HttpFetchJob::failed(FetchResult::Outcome outcome, const QString &reason) const
{
    FetchResult result;
    result.outcome = outcome;
    result.reason = reason;
    result.finalUrl = m_current;
    return result;
}

QString HttpFetchJob::timedOutText() const
{
    return QStringLiteral("no answer within %1 seconds").arg(m_options.timeoutMs / 1000.0);
}

} // namespace quillon
