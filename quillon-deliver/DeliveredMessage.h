#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// What a delivered message says about its article, read back from the headers the delivery
// wrote, so a message a mail program hands over leads to the article again.
struct DeliveredMessage
{
    QByteArray messageId; // without the angle brackets
    qint32 subscriptionId = 0;
    QString feedUrl;
    QString articleUrl;
    QString subject;

    // Nothing when the bytes are not a mail message or it names no subscription of ours.
    [[nodiscard]] static std::optional<DeliveredMessage> read(const QByteArray &message);
};
