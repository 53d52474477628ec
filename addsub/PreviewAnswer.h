#pragma once

#include "SubscribeClient.h"

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
    };
    struct Article
    {
        QString subject;
        QString url;
        QString body;
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

    quillon::SubscribeClient &m_client;
    quillon::Handle m_answer;
};
