#include "PreviewAnswer.h"

#include "HandleGuard.h"
#include "PropertyBag.h"

using quillon::Handle;

Handle PreviewAnswer::Details() const
{
    if (m_answer < 1)
        return 0;
    HandleGuard result(m_client, m_client.GetHandleValue(m_answer, QStringLiteral("Result")));
    if (!result.isValid())
        return 0;
    return m_client.GetHandleValue(result.get(), QStringLiteral("PREFLIGHT_DETAILS"));
}

std::optional<PreviewAnswer::Header> PreviewAnswer::ReadHeader() const
{
    HandleGuard details(m_client, Details());
    if (!details.isValid())
        return std::nullopt;
    const qint32 count = m_client.GetLongValue(details.get(), QStringLiteral("ITEMCOUNT"));
    if (count == quillon::kMissing || count < 1)
        return std::nullopt;
    return Header{m_client.GetStringValue(details.get(), QStringLiteral("DESCRIPTION")), count,
                  m_client.GetStringValue(details.get(), QStringLiteral("TITLE")),
                  quillon::presentText(m_client.GetStringValue(details.get(), QStringLiteral("LINK")))};
}

std::optional<QStringList> PreviewAnswer::Subjects() const
{
    HandleGuard details(m_client, Details());
    HandleGuard items(m_client, details.isValid()
                                    ? m_client.GetHandleValue(details.get(), QStringLiteral("ITEMS"))
                                    : Handle(0));
    if (!items.isValid())
        return std::nullopt;
    QStringList subjects;
    for (qint32 i = 0, n = m_client.ListCount(items.get()); i < n; ++i) {
        HandleGuard item(m_client, m_client.ListHandle(items.get(), i));
        subjects << m_client.GetStringValue(item.get(), QStringLiteral("SUBJECT"));
    }
    return subjects;
}

std::optional<PreviewAnswer::Article> PreviewAnswer::ArticleAt(qint32 index) const
{
    HandleGuard details(m_client, Details());
    HandleGuard items(m_client, details.isValid()
                                    ? m_client.GetHandleValue(details.get(), QStringLiteral("ITEMS"))
                                    : Handle(0));
    if (!items.isValid() || index < 0 || index >= m_client.ListCount(items.get()))
        return std::nullopt;
    HandleGuard item(m_client, m_client.ListHandle(items.get(), index));
    if (!item.isValid())
        return std::nullopt;
    const auto text = [&](const char *name) {
        return quillon::presentText(m_client.GetStringValue(item.get(), QLatin1String(name)));
    };
    Article article;
    article.subject = text("SUBJECT");
    article.url = text("URL");
    article.body = text("BODY");
    article.date = QDateTime::fromString(text("DATE"), Qt::ISODate);
    article.author = text("AUTHOR");
    ReadEnclosure(item.get(), article);
    return article;
}

void PreviewAnswer::ReadEnclosure(Handle item, Article &article) const
{
    HandleGuard enclosures(m_client, m_client.GetHandleValue(item, QStringLiteral("ENCLOSURES")));
    if (!enclosures.isValid() || m_client.ListCount(enclosures.get()) < 1)
        return;
    HandleGuard first(m_client, m_client.ListHandle(enclosures.get(), 0));
    article.enclosureUrl = quillon::presentText(m_client.GetStringValue(first.get(), QStringLiteral("URL")));
    article.enclosureType =
        quillon::presentText(m_client.GetStringValue(first.get(), QStringLiteral("TYPE")));
    const qint32 length = m_client.GetLongValue(first.get(), QStringLiteral("LENGTH"));
    article.enclosureLength = length == quillon::kMissing ? -1 : length;
}
