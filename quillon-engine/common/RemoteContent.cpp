#include "RemoteContent.h"

#include <QRegularExpression>

namespace quillon {

namespace {

QString linkTo(const QString &address, const QString &text)
{
    return QStringLiteral("<a href=\"%1\">[%2]</a>").arg(address, text);
}

// One start tag without what it would load.
QString heldBack(const QString &tag, const QString &name)
{
    static const QRegularExpression remote(QStringLiteral("\\s(src|poster|background)=\"([^\"]*)\""),
                                           QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression alt(QStringLiteral("\\salt=\"([^\"]*)\""),
                                        QRegularExpression::CaseInsensitiveOption);
    QString source;
    for (auto it = remote.globalMatch(tag); it.hasNext();) {
        const auto match = it.next();
        if (match.captured(1).compare(QLatin1String("src"), Qt::CaseInsensitive) == 0)
            source = match.captured(2);
    }
    if (name.compare(QLatin1String("img"), Qt::CaseInsensitive) == 0) {
        const QString text = alt.match(tag).captured(1);
        return source.isEmpty() ? QString() : linkTo(source, text.isEmpty() ? QStringLiteral("image") : text);
    }
    QString kept = tag;
    kept.remove(remote);
    return source.isEmpty() ? kept : linkTo(source, name.toLower()) + kept;
}

} // namespace

QString RemoteContent::asLinks(const QString &html)
{
    static const QRegularExpression startTag(QStringLiteral("<([A-Za-z][A-Za-z0-9]*)\\b[^>]*>"));
    static const QRegularExpression loads(QStringLiteral("\\s(src|poster|background)="),
                                          QRegularExpression::CaseInsensitiveOption);
    QString out;
    out.reserve(html.size());
    qsizetype last = 0;
    for (auto it = startTag.globalMatch(html); it.hasNext();) {
        const auto match = it.next();
        if (!loads.match(match.captured()).hasMatch())
            continue;
        out += QStringView(html).mid(last, match.capturedStart() - last);
        out += heldBack(match.captured(), match.captured(1));
        last = match.capturedEnd();
    }
    out += QStringView(html).mid(last);
    return out;
}

} // namespace quillon
