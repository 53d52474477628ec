#include "GMimeSupport.h"

#include "MessageBuilder.h"
#include "MessageFormat.h"

#include <QCryptographicHash>

namespace {
// What a header says, from feed text: encoded-words decoded (a title may be written as one,
// hiding a line break), control characters gone, blanks collapsed; MessageFormat encodes it again.
QString headerText(const QString &value)
{
    QString text = value;
    for (int round = 0; round < 3 && text.contains(QLatin1String("=?")); ++round) {
        GMimeSupport::initialiseOnce();
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
    const QString feed = headerText(article.feedTitle.isEmpty() ? article.feedUrl : article.feedTitle);
    const QByteArray id = messageId(article);
    const QByteArray subscription = QByteArray::number(article.subscriptionId);
    QByteArray out;
    out.reserve(8192);
    MessageFormat::appendDate(out, "Date",
                              article.date.isValid() ? article.date : QDateTime::currentDateTimeUtc());
    MessageFormat::appendMailbox(out, "From", feed, "feed-" + subscription + "@quillon.invalid");
    MessageFormat::appendText(out, "Subject", headerText(article.subject));
    out += "To: reader@quillon.invalid\nMessage-Id: <" + id + ">\n";
    MessageFormat::appendText(out, "X-Feed-Title", feed);
    MessageFormat::appendText(out, kFeedUrlHeader, headerText(article.feedUrl));
    MessageFormat::appendText(out, kArticleUrlHeader, headerText(article.link));
    MessageFormat::appendText(out, "X-Article-Author", headerText(article.author));
    MessageFormat::appendMailbox(out, "List-Id", feed, "feed-" + subscription + ".quillon.invalid");
    out += "MIME-Version: 1.0\n";
    if (article.theme == FolderPlan::Theme::Plain) {
        MessageFormat::appendTextPart(out, "plain", textPart(article).toUtf8());
    } else if (article.theme == FolderPlan::Theme::Full) {
        MessageFormat::appendTextPart(out, "html", m_html.page(article).toUtf8());
    } else {
        // "=_" never appears in a quoted-printable or base64 body; the writer keeps 7bit ones
        // clear of the delimiter.
        const QByteArray delimiter = "--=_" + id.left(32);
        out += "Content-Type: multipart/alternative;\n boundary=\"" + delimiter.sliced(2) + "\"\n\n";
        out += delimiter + '\n';
        MessageFormat::appendTextPart(out, "plain", textPart(article).toUtf8(), delimiter);
        out += '\n' + delimiter + '\n';
        MessageFormat::appendTextPart(out, "html", m_html.page(article).toUtf8(), delimiter);
        out += '\n' + delimiter + "--\n";
    }
    if (ends == LineEnds::Network)
        out.replace("\n", "\r\n");
    return out;
}
