#include "GMimeSupport.h"

#include "MessageBuilder.h"

#include <QCryptographicHash>

using GMimeSupport::Owned;

namespace {
GMimeObject *mimeText(const char *subtype, const QString &text)
{
    GMimeTextPart *part = g_mime_text_part_new_with_subtype(subtype);
    g_mime_text_part_set_text(part, text.toUtf8().constData());
    g_mime_part_set_content_encoding(GMIME_PART(part), g_mime_part_get_best_content_encoding(
                                                           GMIME_PART(part), GMIME_ENCODING_CONSTRAINT_7BIT));
    return GMIME_OBJECT(part);
}

// What a header says, from feed text: encoded-words decoded (a title may be written as one,
// hiding a line break), control characters gone, blanks collapsed. GMime encodes it again.
QString headerText(const QString &value)
{
    QString text = value;
    for (int round = 0; round < 3 && text.contains(QLatin1String("=?")); ++round) {
        char *decoded = g_mime_utils_header_decode_text(nullptr, text.toUtf8().constData());
        const QString plain = QString::fromUtf8(decoded);
        g_free(decoded);
        if (plain == text)
            break;
        text = plain;
    }
    for (QChar &c : text) {
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
            c == QChar::ParagraphSeparator)
            c = QLatin1Char(' ');
    }
    // Still encoded after three rounds: made inert, so no mail program decodes it again.
    text.replace(QLatin1String("=?"), QStringLiteral("=\u2060?"));
    return text.simplified();
}

void setHeader(GMimeObject *object, const char *name, const QString &value)
{
    const QString text = headerText(value);
    if (!text.isEmpty())
        g_mime_object_set_header(object, name, text.toUtf8().constData(), "utf-8");
}
} // namespace

QByteArray MessageBuilder::messageId(const ArticleMessage &article)
{
    const QByteArray identity = article.feedUrl.toUtf8() + '\n' + article.guid.toUtf8();
    return QCryptographicHash::hash(identity, QCryptographicHash::Sha1).toHex().left(32) + "@quillon.invalid";
}

QString MessageBuilder::textPart(const ArticleMessage &article)
{
    QString text = ArticleHtml::plainText(article.bodyHtml);
    if (!article.link.isEmpty())
        text += QStringLiteral("\n\n") + article.link;
    for (const ArticleMessage::Enclosure &e : article.enclosures)
        text += QStringLiteral("\n") + QStringLiteral("Enclosure: ") + e.url +
                (e.type.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(e.type));
    return text + QLatin1Char('\n');
}

QByteArray MessageBuilder::build(const ArticleMessage &article, LineEnds ends) const
{
    GMimeSupport::initialiseOnce();
    Owned<GMimeMessage> message(g_mime_message_new(TRUE));
    GMimeObject *object = GMIME_OBJECT(message.get());
    const QString feed = article.feedTitle.isEmpty() ? article.feedUrl : article.feedTitle;
    g_mime_message_add_mailbox(
        message.get(), GMIME_ADDRESS_TYPE_FROM, headerText(feed).toUtf8().constData(),
        QStringLiteral("feed-%1@quillon.invalid").arg(article.subscriptionId).toUtf8().constData());
    g_mime_message_add_mailbox(message.get(), GMIME_ADDRESS_TYPE_TO, "", "reader@quillon.invalid");
    g_mime_message_set_subject(message.get(), headerText(article.subject).toUtf8().constData(), "utf-8");
    g_mime_message_set_message_id(message.get(), messageId(article).constData());
    const QDateTime date = article.date.isValid() ? article.date : QDateTime::currentDateTimeUtc();
    GDateTime *when = g_date_time_new_from_unix_utc(date.toSecsSinceEpoch());
    g_mime_message_set_date(message.get(), when);
    g_date_time_unref(when);
    setHeader(object, "X-Feed-Title", feed);
    setHeader(object, kFeedUrlHeader, article.feedUrl);
    setHeader(object, kArticleUrlHeader, article.link);
    setHeader(object, "X-Article-Author", article.author);
    setHeader(
        object, "List-Id",
        QStringLiteral("%1 <feed-%2.quillon.invalid>").arg(headerText(feed)).arg(article.subscriptionId));

    Owned<GMimeObject> body;
    if (article.theme == FolderPlan::Theme::Plain) {
        body.reset(mimeText("plain", textPart(article)));
    } else if (article.theme == FolderPlan::Theme::Full) {
        body.reset(mimeText("html", m_html.page(article)));
    } else {
        GMimeMultipart *alternative = g_mime_multipart_new_with_subtype("alternative");
        Owned<GMimeObject> plain(mimeText("plain", textPart(article)));
        Owned<GMimeObject> html(mimeText("html", m_html.page(article)));
        g_mime_multipart_add(alternative, plain.get());
        g_mime_multipart_add(alternative, html.get());
        body.reset(GMIME_OBJECT(alternative));
    }
    g_mime_message_set_mime_part(message.get(), body.get());

    GMimeFormatOptions *options = g_mime_format_options_new();
    g_mime_format_options_set_newline_format(options, ends == LineEnds::Network ? GMIME_NEWLINE_FORMAT_DOS
                                                                                : GMIME_NEWLINE_FORMAT_UNIX);
    Owned<GMimeStream> stream(g_mime_stream_mem_new());
    g_mime_object_write_to_stream(object, options, stream.get());
    g_mime_format_options_free(options);
    GByteArray *bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(stream.get()));
    return QByteArray(reinterpret_cast<const char *>(bytes->data), qsizetype(bytes->len));
}
