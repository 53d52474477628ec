#include "GMimeSupport.h"

#include "DeliveredMessage.h"
#include "MessageBuilder.h"

#include <QRegularExpression>

using GMimeSupport::Owned;

namespace {
QString header(GMimeObject *object, const char *name)
{
    return QString::fromUtf8(g_mime_object_get_header(object, name)).trimmed();
}

// The sender "feed-<id>@quillon.invalid", or the list "<feed-<id>.quillon.invalid>".
qint32 subscriptionOf(const QString &from, const QString &listId)
{
    static const QRegularExpression feed(QStringLiteral("feed-(\\d+)[@.]quillon\\.invalid"));
    for (const QString &text : {from, listId}) {
        const QRegularExpressionMatch match = feed.match(text);
        if (match.hasMatch())
            return match.captured(1).toInt();
    }
    return 0;
}
} // namespace

std::optional<DeliveredMessage> DeliveredMessage::read(const QByteArray &message)
{
    GMimeSupport::initialiseOnce();
    QByteArray bytes = message;
    // A mail program may hand over the mbox separator line too.
    if (bytes.startsWith("From "))
        bytes.remove(0, bytes.indexOf('\n') + 1);
    Owned<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(bytes.constData(), gsize(bytes.size())));
    Owned<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
    Owned<GMimeMessage> parsed(g_mime_parser_construct_message(parser.get(), nullptr));
    if (!parsed)
        return std::nullopt;
    GMimeObject *object = GMIME_OBJECT(parsed.get());
    DeliveredMessage delivered;
    delivered.messageId = QByteArray(g_mime_message_get_message_id(parsed.get())).trimmed();
    delivered.subscriptionId = subscriptionOf(header(object, "From"), header(object, "List-Id"));
    delivered.feedUrl = header(object, MessageBuilder::kFeedUrlHeader);
    delivered.articleUrl = header(object, MessageBuilder::kArticleUrlHeader);
    delivered.subject = QString::fromUtf8(g_mime_message_get_subject(parsed.get())).trimmed();
    if (delivered.subscriptionId <= 0 && delivered.feedUrl.isEmpty())
        return std::nullopt;
    return delivered;
}
