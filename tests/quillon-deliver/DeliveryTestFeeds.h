#pragma once

// Feeds and counts the delivery tests share.

#include "MaildirProbe.h"
#include "SubscribeClient.h"
#include "TestFiles.h"

#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QString>

namespace DeliveryTestFeeds {
// Dated items with authors, HTML bodies and, for every third, an enclosure.
inline QByteArray feed(const QString &title, int first, int last)
{
    QString out =
        QStringLiteral("<rss version=\"2.0\"><channel><title>%1</title><link>http://example.com/</link>")
            .arg(title);
    for (int i = first; i <= last; ++i) {
        out +=
            QStringLiteral(
                "<item><guid>%1-%2</guid><title>Story %2</title><link>http://example.com/%2</link>"
                "<author>ann@example.com (Ann)</author><pubDate>Wed, 01 May 2024 10:%3:00 GMT</pubDate>"
                "<description>&lt;p&gt;Paragraph one of %2.&lt;/p&gt;&lt;p&gt;Two.&lt;/p&gt;</description>")
                .arg(title)
                .arg(i)
                .arg(i % 60, 2, 10, QLatin1Char('0'));
        if (i % 3 == 0)
            out += QStringLiteral(
                       "<enclosure url=\"http://example.com/%1.mp3\" type=\"audio/mpeg\" length=\"4096\"/>")
                       .arg(i);
        out += QStringLiteral("</item>");
    }
    return (out + QStringLiteral("</channel></rss>")).toUtf8();
}

inline qint32 unreadCount(quillon::SubscribeClient &client, qint32 id)
{
    const quillon::Handle bag = client.GetItemBag("NEWS", id, 0);
    const qint32 count = client.GetLongValue(bag, "ITEMUNREADCOUNT");
    client.ReleaseHandle(bag);
    return count;
}

inline QSet<QByteArray> messageIds(const MaildirProbe &probe, const QStringList &folder)
{
    static const QRegularExpression id(QStringLiteral("^Message-Id: (<[^>]+>)"),
                                       QRegularExpression::CaseInsensitiveOption |
                                           QRegularExpression::MultilineOption);
    QSet<QByteArray> ids;
    for (const QString &path : probe.files(folder))
        ids.insert(id.match(QString::fromUtf8(TestFiles::read(path))).captured(1).toUtf8());
    return ids;
}
} // namespace DeliveryTestFeeds
