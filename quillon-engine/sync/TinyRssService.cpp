#include "TinyRssService.h"

#include "SyncLogging.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QNetworkReply>

namespace quillon {

namespace {
// The API gives at most this many headlines per call.
constexpr int kHeadlinePage = 200;
// Enough for 100,000 articles; a server that keeps paging past it is not followed further.
constexpr int kMostHeadlinePages = 500;
// Beyond this many feeds, paging through every headline takes fewer calls than one feed at a time.
constexpr int kMostFeedsOneByOne = 50;
constexpr int kTimeoutMs = 30000;

enum class Answer { Api, NotApi, Unreachable };

// Network-layer failures (no connection, no name, no answer, proxy) mean the server is away;
// anything that got an HTTP answer is judged by its body.
Answer classify(QNetworkReply *reply, QJsonObject *body)
{
    const auto error = reply->error();
    const int code = int(error);
    if (error != QNetworkReply::NoError && code < 200)
        return Answer::Unreachable;
    const QJsonDocument doc = QJsonDocument::fromJson(reply->readAll());
    if (!doc.isObject() || !doc.object().contains(QLatin1String("status")))
        return Answer::NotApi;
    *body = doc.object();
    return Answer::Api;
}

SyncOutcome refusal(const QJsonObject &body)
{
    const QString error =
        body.value(QLatin1String("content")).toObject().value(QLatin1String("error")).toString();
    if (error == QLatin1String("LOGIN_ERROR") || error == QLatin1String("NOT_LOGGED_IN"))
        return {SyncOutcome::Kind::WrongLogin, error};
    if (error == QLatin1String("API_DISABLED"))
        return {SyncOutcome::Kind::ApiOff, error};
    return {SyncOutcome::Kind::Failed, error};
}

// A feed the server has not read yet is titled so; here the fetch fills in the feed's title.
QString serverTitle(const QString &title)
{
    return title == QLatin1String("[Unknown]") ? QString() : title;
}

QUrl withSlash(QUrl url)
{
    if (!url.path().endsWith(QLatin1Char('/')))
        url.setPath(url.path() + QLatin1Char('/'));
    return url;
}
} // namespace

QList<QUrl> TinyRssService::candidates(const QString &typed, const QString &knownApi)
{
    QString text = typed.trimmed();
    if (!text.contains(QLatin1String("://")))
        text.prepend(QLatin1String("http://"));
    const QUrl base = withSlash(QUrl(text));
    QList<QUrl> found;
    if (!knownApi.isEmpty() && knownApi.startsWith(base.toString()))
        found.append(QUrl(knownApi));
    if (base.path().endsWith(QLatin1String("/api/"))) {
        found.append(base);
    } else {
        found.append(base.resolved(QUrl(QStringLiteral("api/"))));
        found.append(base);
    }
    QList<QUrl> unique;
    for (const QUrl &url : std::as_const(found)) {
        if (url.isValid() && !unique.contains(url))
            unique.append(url);
    }
    return unique;
}

void TinyRssService::open(const SyncAccount &account, Done done)
{
    m_account = account;
    m_candidates = candidates(account.server, account.knownApi);
    m_api.clear();
    m_session.clear();
    if (account.server.trimmed().isEmpty() || m_candidates.isEmpty())
        return fail({SyncOutcome::Kind::NoApi, QStringLiteral("no address given")});
    tryLogin(std::move(done));
}

void TinyRssService::tryLogin(Done done)
{
    const QUrl candidate = m_candidates.takeFirst();
    QNetworkRequest request(candidate);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    request.setTransferTimeout(kTimeoutMs);
    const QJsonObject login{{QStringLiteral("op"), QStringLiteral("login")},
                            {QStringLiteral("user"), m_account.user},
                            {QStringLiteral("password"), m_account.password}};
    QNetworkReply *reply = m_network.post(request, QJsonDocument(login).toJson(QJsonDocument::Compact));
    QObject::connect(reply, &QNetworkReply::finished, reply, [this, reply, candidate, done] {
        reply->deleteLater();
        m_api = candidate;
        loginAnswered(reply, done);
    });
}

void TinyRssService::loginAnswered(QNetworkReply *reply, Done done)
{
    QJsonObject body;
    switch (classify(reply, &body)) {
    case Answer::Unreachable:
        m_api.clear();
        return fail({SyncOutcome::Kind::Unreachable, reply->errorString()});
    case Answer::NotApi:
        qCDebug(lcSync) << "no API at" << m_api;
        m_api.clear();
        if (m_candidates.isEmpty())
            return fail({SyncOutcome::Kind::NoApi, {}});
        return tryLogin(std::move(done));
    case Answer::Api:
        break;
    }
    if (body.value(QLatin1String("status")).toInt() != 0)
        return fail(refusal(body));
    m_session = body.value(QLatin1String("content")).toObject().value(QLatin1String("session_id")).toString();
    qCInfo(lcSync) << "logged on at" << m_api;
    done();
}

void TinyRssService::call(QJsonObject request, Content done)
{
    request.insert(QStringLiteral("sid"), m_session);
    QNetworkRequest http(m_api);
    http.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    http.setTransferTimeout(kTimeoutMs);
    QNetworkReply *reply = m_network.post(http, QJsonDocument(request).toJson(QJsonDocument::Compact));
    QObject::connect(reply, &QNetworkReply::finished, reply, [this, reply, done = std::move(done)] {
        reply->deleteLater();
        QJsonObject body;
        switch (classify(reply, &body)) {
        case Answer::Unreachable:
            return fail({SyncOutcome::Kind::Unreachable, reply->errorString()});
        case Answer::NotApi:
            return fail({SyncOutcome::Kind::NoApi, {}});
        case Answer::Api:
            break;
        }
        // A feed that is gone already is what an unsubscribe wanted.
        const SyncOutcome refused = refusal(body);
        if (body.value(QLatin1String("status")).toInt() != 0 &&
            refused.serverMessage != QLatin1String("FEED_NOT_FOUND"))
            return fail(refused);
        done(body.value(QLatin1String("content")));
    });
}

void TinyRssService::categories(std::function<void()> done)
{
    const QJsonObject request{{QStringLiteral("op"), QStringLiteral("getCategories")},
                              {QStringLiteral("include_empty"), true}};
    call(request, [this, done = std::move(done)](const QJsonValue &content) {
        m_categoryTitles.clear();
        for (const QJsonValue &category : content.toArray()) {
            const QJsonObject object = category.toObject();
            const int id = object.value(QLatin1String("id")).toVariant().toInt();
            if (id > 0)
                m_categoryTitles.insert(id, object.value(QLatin1String("title")).toString());
        }
        done();
    });
}

void TinyRssService::feeds(std::function<void(const QList<RemoteFeed> &)> done)
{
    categories([this, done = std::move(done)] {
        // -3: every feed of the user, without the virtual ones (labels, starred...).
        const QJsonObject request{{QStringLiteral("op"), QStringLiteral("getFeeds")},
                                  {QStringLiteral("cat_id"), -3}};
        call(request, [this, done](const QJsonValue &content) {
            QList<RemoteFeed> feeds;
            for (const QJsonValue &value : content.toArray()) {
                const QJsonObject feed = value.toObject();
                feeds.append({feed.value(QLatin1String("id")).toVariant().toString(),
                              feed.value(QLatin1String("feed_url")).toString(),
                              serverTitle(feed.value(QLatin1String("title")).toString()),
                              m_categoryTitles.value(feed.value(QLatin1String("cat_id")).toInt()),
                              feed.value(QLatin1String("unread")).toInt(-1)});
            }
            done(feeds);
        });
    });
}

int TinyRssService::categoryIdFor(const QString &path) const
{
    if (path.isEmpty())
        return 0;
    const QString last = path.section(QStringLiteral("~~~"), -1);
    int byLastPart = 0;
    for (auto it = m_categoryTitles.cbegin(); it != m_categoryTitles.cend(); ++it) {
        if (it.value() == path)
            return it.key();
        if (it.value() == last)
            byLastPart = it.key();
    }
    return byLastPart;
}

void TinyRssService::subscribe(const LocalSubscription &subscription, Done done)
{
    const QJsonObject request{{QStringLiteral("op"), QStringLiteral("subscribeToFeed")},
                              {QStringLiteral("feed_url"), subscription.url},
                              {QStringLiteral("category_id"), categoryIdFor(subscription.category)}};
    call(request, [url = subscription.url, done = std::move(done)](const QJsonValue &content) {
        const QJsonObject status = content.toObject().value(QLatin1String("status")).toObject();
        const int code = status.value(QLatin1String("code")).toInt(-1);
        if (code != 0 && code != 1)
            qCWarning(lcSync).noquote() << "the server did not take" << url << "code" << code
                                        << status.value(QLatin1String("message")).toString();
        done();
    });
}

void TinyRssService::unsubscribe(const RemoteFeed &feed, Done done)
{
    const QJsonObject request{{QStringLiteral("op"), QStringLiteral("unsubscribeFeed")},
                              {QStringLiteral("feed_id"), feed.id.toInt()}};
    call(request, [done = std::move(done)](const QJsonValue &) { done(); });
}

void TinyRssService::articles(const QStringList &feedIds,
                              std::function<void(const QList<RemoteArticle> &)> done)
{
    m_articles.clear();
    m_feedsLeft.clear();
    if (feedIds.isEmpty())
        return done(m_articles);
    if (feedIds.size() > kMostFeedsOneByOne)
        return headlinesFrom(-4, 0, std::move(done));
    for (const QString &id : feedIds)
        m_feedsLeft.append(id.toInt());
    headlinesFrom(m_feedsLeft.takeFirst(), 0, std::move(done));
}

void TinyRssService::headlinesFrom(int feed, int skip, std::function<void(const QList<RemoteArticle> &)> done)
{
    const QJsonObject request{{QStringLiteral("op"), QStringLiteral("getHeadlines")},
                              {QStringLiteral("feed_id"), feed},
                              {QStringLiteral("view_mode"), QStringLiteral("all_articles")},
                              {QStringLiteral("limit"), kHeadlinePage},
                              {QStringLiteral("skip"), skip},
                              {QStringLiteral("show_content"), false}};
    call(request, [this, feed, skip, done = std::move(done)](const QJsonValue &content) {
        const QJsonArray page = content.toArray();
        for (const QJsonValue &value : page) {
            const QJsonObject headline = value.toObject();
            m_articles.append({headline.value(QLatin1String("id")).toVariant().toString(),
                               headline.value(QLatin1String("feed_id")).toVariant().toString(),
                               headline.value(QLatin1String("link")).toString(),
                               headline.value(QLatin1String("guid")).toString(),
                               !headline.value(QLatin1String("unread")).toBool()});
        }
        if (page.size() == kHeadlinePage && skip / kHeadlinePage < kMostHeadlinePages)
            return headlinesFrom(feed, skip + kHeadlinePage, done);
        // Handed over, so the run frees them piece by piece as it compares.
        if (m_feedsLeft.isEmpty())
            return done(std::exchange(m_articles, {}));
        headlinesFrom(m_feedsLeft.takeFirst(), 0, done);
    });
}

void TinyRssService::setRead(const QStringList &articleIds, bool read, Done done)
{
    if (articleIds.isEmpty())
        return done();
    // Field 2 is "unread"; mode 0 sets it false, 1 true.
    const QJsonObject request{{QStringLiteral("op"), QStringLiteral("updateArticle")},
                              {QStringLiteral("article_ids"), articleIds.join(QLatin1Char(','))},
                              {QStringLiteral("mode"), read ? 0 : 1},
                              {QStringLiteral("field"), 2}};
    call(request, [done = std::move(done)](const QJsonValue &) { done(); });
}

} // namespace quillon
