#include "HttpFetchJob.h"

#include "FetchLogging.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

namespace quillon {

namespace {
const QByteArray kAccept = "application/rss+xml, application/atom+xml, application/rdf+xml, "
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

} // namespace

HttpFetchJob::HttpFetchJob(QNetworkAccessManager &network, const FetchOptions &options, FetchRequest request)
    : m_network(network), m_options(options), m_request(std::move(request)), m_current(m_request.url),
      m_hostKey(m_request.url.scheme().toLower() + QLatin1Char('/') + m_request.url.host().toLower() +
                QLatin1Char(':') + QString::number(m_request.url.port(-1)))
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, [this]() {
        fail(FetchResult::Outcome::TimedOut,
             QStringLiteral("no answer within %1 seconds").arg(m_options.timeoutMs / 1000.0));
    });
}

HttpFetchJob::~HttpFetchJob()
{
    dropReply();
}

void HttpFetchJob::start()
{
    m_deadline.start(m_options.timeoutMs);
    send(m_current);
}

void HttpFetchJob::send(const QUrl &url)
{
    // A login travels only in our own header: Qt would hand the address's to anyone who asks.
    QUrl address = url;
    address.setUserInfo(QString());
    QNetworkRequest request(address);
    // Redirects are ours to follow: the login must not go to another host.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setHeader(QNetworkRequest::UserAgentHeader, m_options.userAgent);
    request.setRawHeader("Accept", kAccept);
    if (!m_request.etag.isEmpty())
        request.setRawHeader("If-None-Match", m_request.etag.toUtf8());
    if (!m_request.lastModified.isEmpty())
        request.setRawHeader("If-Modified-Since", m_request.lastModified.toUtf8());
    QString user = m_request.user;
    QString password = m_request.password;
    if (user.isEmpty() && !url.userName().isEmpty()) {
        user = url.userName();
        password = url.password();
    }
    if (!user.isEmpty() && sameOrigin(url, m_request.url))
        request.setRawHeader("Authorization",
                             "Basic " + (user + QLatin1Char(':') + password).toUtf8().toBase64());
    m_reply = m_network.get(request);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &HttpFetchJob::checkAnnouncedSize);
    connect(m_reply, &QNetworkReply::readyRead, this, &HttpFetchJob::readBody);
    connect(m_reply, &QNetworkReply::finished, this, &HttpFetchJob::onReplyFinished);
}

void HttpFetchJob::checkAnnouncedSize()
{
    const qint64 announced = m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
    if (announced > m_options.maxBytes)
        fail(FetchResult::Outcome::TooLarge, m_options.tooLargeText());
}

void HttpFetchJob::readBody()
{
    if (!m_reply || m_reported)
        return;
    m_body += m_reply->readAll();
    if (m_body.size() > m_options.maxBytes)
        fail(FetchResult::Outcome::TooLarge,
             isPacked() ? m_options.unpacksTooLargeText() : m_options.tooLargeText());
}

bool HttpFetchJob::isPacked() const
{
    const QByteArray encoding =
        m_reply ? m_reply->rawHeader("Content-Encoding").trimmed().toLower() : QByteArray();
    return !encoding.isEmpty() && encoding != "identity";
}

void HttpFetchJob::onReplyFinished()
{
    if (!m_reply || m_reported)
        return;
    readBody();
    if (m_reported)
        return;
    const QVariant statusAttribute = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!statusAttribute.isValid()) {
        fail(FetchResult::Outcome::Failed, m_reply->errorString());
        return;
    }
    const int status = statusAttribute.toInt();
    if (isRedirect(status) && followRedirect(status))
        return;
    // An answer that stopped early is not the document: nothing of it may be stored.
    if (m_reply->error() != QNetworkReply::NoError && status >= 200 && status <= 299) {
        if (isPacked() && m_reply->errorString().contains(QLatin1String("ecompress"), Qt::CaseInsensitive))
            fail(FetchResult::Outcome::TooLarge, m_options.unpacksTooLargeText(), status);
        else
            fail(FetchResult::Outcome::Failed,
                 QStringLiteral("the connection was cut before the document ended"), status);
        return;
    }
    if (m_reported)
        return;
    finish(answered(status));
}

bool HttpFetchJob::followRedirect(int status)
{
    // The raw header: Qt's parsed one refuses the relative addresses servers commonly send.
    const QUrl location(QString::fromUtf8(m_reply->rawHeader("Location").trimmed()));
    if (location.isEmpty() || !location.isValid())
        return false; // a redirect without a place to go is an answer of its own
    const QUrl target = m_current.resolved(location);
    if (++m_redirects > m_options.maxRedirects) {
        fail(FetchResult::Outcome::Failed,
             QStringLiteral("more than %1 redirects").arg(m_options.maxRedirects), status);
        return true;
    }
    const QString scheme = target.scheme().toLower();
    if (scheme != QLatin1String("http") && scheme != QLatin1String("https")) {
        fail(FetchResult::Outcome::Failed, QStringLiteral("redirected to %1").arg(target.toString()), status);
        return true;
    }
    qCDebug(lcFetch) << m_current << "redirected" << status << "to" << target;
    dropReply();
    m_body.clear();
    m_current = target;
    send(target);
    return true;
}

FetchResult HttpFetchJob::answered(int status) const
{
    FetchResult result;
    result.httpStatus = status;
    result.reason = m_reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString();
    result.finalUrl = m_current;
    if (status == 304) {
        result.outcome = FetchResult::Outcome::NotModified;
    } else if (status == 401) {
        result.outcome = FetchResult::Outcome::Unauthorized;
    } else if (status < 200 || status > 299) {
        result.outcome = FetchResult::Outcome::HttpError;
    } else {
        result.outcome = FetchResult::Outcome::Ok;
        result.body = m_body;
        result.contentType = m_reply->header(QNetworkRequest::ContentTypeHeader).toString();
        result.etag = QString::fromUtf8(m_reply->rawHeader("ETag"));
        result.lastModified = QString::fromUtf8(m_reply->rawHeader("Last-Modified"));
    }
    return result;
}

void HttpFetchJob::fail(FetchResult::Outcome outcome, const QString &reason, int status)
{
    FetchResult result;
    result.outcome = outcome;
    result.reason = reason;
    result.httpStatus = status;
    result.finalUrl = m_current;
    finish(result);
}

void HttpFetchJob::finish(const FetchResult &result)
{
    if (m_reported)
        return;
    m_reported = true;
    m_deadline.stop();
    dropReply();
    Q_EMIT finished(this, result);
}

void HttpFetchJob::dropReply()
{
    if (!m_reply)
        return;
    QNetworkReply *reply = m_reply;
    m_reply = nullptr;
    disconnect(reply, nullptr, this, nullptr);
    reply->abort();
    reply->deleteLater();
}

} // namespace quillon
