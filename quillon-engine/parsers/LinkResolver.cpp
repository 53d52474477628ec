#include "LinkResolver.h"

namespace quillon {

namespace {

// "scheme:" at the start means the reference is absolute; checked by hand because QUrl's full
// parse costs more than the rest of reading the link.
bool hasScheme(QStringView reference)
{
    if (reference.isEmpty() || !reference[0].isLetter())
        return false;
    for (QChar c : reference.mid(1)) {
        if (c == u':')
            return true;
        if (!(c.isLetterOrNumber() || c == u'+' || c == u'-' || c == u'.'))
            return false;
    }
    return false;
}

QString resolveTrimmed(const QUrl &base, const QString &trimmed)
{
    if (trimmed.isEmpty() || hasScheme(trimmed) || !base.isValid() || base.isRelative())
        return trimmed;
    const QUrl url(trimmed);
    if (!url.isValid() || !url.isRelative())
        return trimmed;
    return base.resolved(url).toString(QUrl::FullyEncoded);
}

} // namespace

QString LinkResolver::resolve(const QUrl &base, QStringView reference)
{
    return resolveTrimmed(base, reference.trimmed().toString());
}

QString LinkResolver::resolve(const QUrl &base, const QString &reference)
{
    const QStringView trimmed = QStringView(reference).trimmed();
    return resolveTrimmed(base, trimmed.size() == reference.size() ? reference : trimmed.toString());
}

QUrl LinkResolver::childBase(const QUrl &parent, QStringView xmlBase)
{
    const QUrl url(xmlBase.trimmed().toString());
    if (parent.isValid() && !parent.isRelative() && url.isRelative())
        return parent.resolved(url);
    return url;
}

} // namespace quillon
