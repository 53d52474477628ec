#include "SearchUrl.h"

#include "PropertyBag.h"

#include <QUrl>
#include <QUrlQuery>

namespace {
const QString kSearchPrefix = QStringLiteral("search");
}

bool SearchUrl::IsSearchUrl(const QString &url)
{
    return url.startsWith(kSearchPrefix, Qt::CaseSensitive);
}

SearchUrl SearchUrl::Parse(const QString &url)
{
    SearchUrl parsed;
    const qsizetype question = url.indexOf(QLatin1Char('?'));
    if (!IsSearchUrl(url) || question < 0)
        return parsed;
    const QUrlQuery query(url.mid(question + 1));
    parsed.guid = query.queryItemValue(QStringLiteral("guid"), QUrl::FullyDecoded);
    parsed.keywords = query.queryItemValue(QStringLiteral("keywords"), QUrl::FullyDecoded);
    parsed.limit = query.queryItemValue(QStringLiteral("limit"), QUrl::FullyDecoded);
    return parsed;
}

bool SearchUrl::LimitCounts(const QString &value)
{
    return !value.isEmpty() && value != QLatin1String(" ") && value != QLatin1String("0") &&
           value != quillon::kMissingText;
}

qint32 SearchUrl::ClampLimit(qint32 limit, const SearchSource &source)
{
    bool ok = false;
    if (LimitCounts(source.minLimit)) {
        const qint32 minimum = source.minLimit.trimmed().toInt(&ok);
        if (ok && limit < minimum)
            limit = minimum;
    }
    if (LimitCounts(source.maxLimit)) {
        const qint32 maximum = source.maxLimit.trimmed().toInt(&ok);
        if (ok && limit > maximum)
            limit = maximum;
    }
    return limit;
}
