#pragma once

#include "SubscribeClient.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>

// Reads the engine's answer to a preview: Result → PREFLIGHT_DETAILS with the feed's
// title, description, ITEMCOUNT and ITEMS (one bag per article).
class PreviewAnswer
{
public:
    struct Header
    {
        QString description;
        qint32 itemCount = 0;
        QString title; // the feed's own
        QString link;  // the site
    };
    struct Article
    {
        QString subject;
        QString url;
        QString body;
        QDateTime date; // invalid when the item has none
        QString author;
        QString enclosureUrl; // the first enclosure's, "" when none
        QString enclosureType;
        qint64 enclosureLength = -1;
    };

    PreviewAnswer(quillon::SubscribeClient &client, quillon::Handle answer)
        : m_client(client), m_answer(answer)
    {
    }

    // Nothing when Result or PREFLIGHT_DETAILS is missing or ITEMCOUNT is missing or below 1.
    [[nodiscard]] std::optional<Header> ReadHeader() const;
    // The subjects of the items; nothing when the answer has no item list.
    [[nodiscard]] std::optional<QStringList> Subjects() const;
    [[nodiscard]] std::optional<Article> ArticleAt(qint32 index) const;

private:
    // PREFLIGHT_DETAILS, for the caller to release; 0 when missing.
    [[nodiscard]] quillon::Handle Details() const;
    void ReadEnclosure(quillon::Handle item, Article &article) const;

    quillon::SubscribeClient &m_client;
    quillon::Handle m_answer;
};
