#include "DeliveredArticle.h"

#include "ConsumerRequests.h"
#include "HandleGuard.h"
#include "MessageBuilder.h"
#include "PropertyBag.h"

#include <QDateTime>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>

namespace {
const QString kNews = QStringLiteral("NEWS");
// The engine answers at once; this only ends a wait on an engine that hangs.
constexpr int kAnswerMs = 60000;

// The items carry no site address: the article's own site stands in for it.
QString SiteOf(const QString &address)
{
    const QUrl url(address);
    if (!url.isValid() || url.host().isEmpty())
        return {};
    return url.adjusted(QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment).toString() +
           QLatin1Char('/');
}
} // namespace

DeliveredArticle::DeliveredArticle(quillon::SubscribeClientPtr client) : m_client(std::move(client)) {}

std::optional<PostComposer::Article> DeliveredArticle::Find(const DeliveredMessage &message)
{
    m_error.clear();
    const qint32 subscriptionId = SubscriptionOf(message);
    if (subscriptionId <= 0) {
        m_error =
            QStringLiteral("The subscription of this message (%1) is no longer there.")
                .arg(message.feedUrl.isEmpty() ? QString::number(message.subscriptionId) : message.feedUrl);
        return std::nullopt;
    }
    const std::optional<QList<Stored>> stored = StoredArticles(subscriptionId);
    if (!stored)
        return std::nullopt;
    const auto found = [&](const auto &matches) {
        return std::find_if(stored->cbegin(), stored->cend(), matches);
    };
    auto it = found([&](const Stored &s) {
        ArticleMessage identity;
        identity.feedUrl = m_feedUrl;
        identity.guid = s.guid;
        return MessageBuilder::messageId(identity) == message.messageId;
    });
    if (it == stored->cend() && !message.articleUrl.isEmpty())
        it = found([&](const Stored &s) { return s.article.url == message.articleUrl; });
    if (it == stored->cend())
        it = found([&](const Stored &s) { return s.article.title.simplified() == message.subject; });
    if (it == stored->cend()) {
        m_error =
            QStringLiteral("\"%1\" is no longer among the articles of %2.").arg(message.subject, m_feedTitle);
        return std::nullopt;
    }
    return it->article;
}

qint32 DeliveredArticle::SubscriptionOf(const DeliveredMessage &message)
{
    const auto describe = [this](qint32 id) {
        try {
            HandleGuard bag(*m_client, m_client->GetItemBag(kNews, id, 0));
            m_feedUrl = quillon::presentText(m_client->GetStringValue(bag.get(), QStringLiteral("URL")));
            m_feedTitle = quillon::presentText(m_client->GetStringValue(bag.get(), QStringLiteral("TITLE")));
            return true;
        } catch (const quillon::EngineError &) {
            return false; // a subscription that is gone fails GetItemBag
        }
    };
    if (message.subscriptionId > 0 && describe(message.subscriptionId) &&
        (message.feedUrl.isEmpty() || message.feedUrl == m_feedUrl))
        return message.subscriptionId;
    // Removed and added again, or another engine: the feed's address still names it.
    HandleGuard ids(*m_client, m_client->ListConsumerItems(QStringLiteral("*"), kNews));
    for (qint32 i = 0, n = m_client->ListCount(ids.get()); i < n && !message.feedUrl.isEmpty(); ++i) {
        const qint32 id = m_client->ListLong(ids.get(), i);
        if (describe(id) && m_feedUrl == message.feedUrl)
            return id;
    }
    return 0;
}

std::optional<QList<DeliveredArticle::Stored>> DeliveredArticle::StoredArticles(qint32 subscriptionId)
{
    std::optional<QList<Stored>> stored;
    bool answered = false;
    QEventLoop loop;
    const auto fill = [&](quillon::Handle bag) {
        m_client->SetLongValue(bag, QStringLiteral("SUBSCRIPTIONID"), subscriptionId);
    };
    ConsumerRequests::submit(*m_client, QStringLiteral("ITEMS"), fill, &loop, [&](quillon::Handle bag) {
        answered = true;
        loop.quit();
        HandleGuard result(*m_client, m_client->GetHandleValue(bag, QStringLiteral("Result")));
        HandleGuard items(*m_client, result.isValid()
                                         ? m_client->GetHandleValue(result.get(), QStringLiteral("ITEMS"))
                                         : 0);
        if (!items.isValid()) {
            m_error = m_client->GetStringValue(bag, QStringLiteral("ERROR"));
            return;
        }
        stored.emplace();
        for (qint32 i = 0, n = m_client->ListCount(items.get()); i < n; ++i) {
            HandleGuard item(*m_client, m_client->ListHandle(items.get(), i));
            stored->append(ReadItem(item.get()));
        }
    });
    QTimer::singleShot(kAnswerMs, &loop, &QEventLoop::quit);
    if (!answered)
        loop.exec();
    if (!answered)
        m_error = QStringLiteral("The engine did not answer.");
    return stored;
}

DeliveredArticle::Stored DeliveredArticle::ReadItem(quillon::Handle item) const
{
    const auto text = [&](const QString &name) {
        return quillon::presentText(m_client->GetStringValue(item, name));
    };
    const QString url = text(QStringLiteral("URL"));
    const QDateTime date = QDateTime::fromString(text(QStringLiteral("DATE")), Qt::ISODate);
    return {text(QStringLiteral("GUID")),
            {text(QStringLiteral("SUBJECT")), url, text(QStringLiteral("BODY")),
             text(QStringLiteral("AUTHOR")),
             date.isValid() ? date.toString(QStringLiteral("yyyy-MM-dd")) : QString(), m_feedTitle, m_feedUrl,
             SiteOf(url.isEmpty() ? m_feedUrl : url)}};
}
