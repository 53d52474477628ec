#include "SearchSources.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>
#include <QUrlQuery>

#include <algorithm>

namespace quillon {

namespace {
std::optional<qint32> limitOf(const QJsonValue &value)
{
    bool ok = value.isDouble();
    const qint32 n = ok ? value.toInt() : value.toString().trimmed().toInt(&ok);
    return ok && n > 0 ? std::optional<qint32>(n) : std::nullopt;
}

SearchSources::Source sourceOf(const QJsonObject &object)
{
    return {object.value(QLatin1String("guid")).toString().trimmed(),
            object.value(QLatin1String("title")).toString().trimmed(),
            object.value(QLatin1String("template")).toString().trimmed(),
            limitOf(object.value(QLatin1String("defaultLimit"))),
            limitOf(object.value(QLatin1String("minLimit"))),
            limitOf(object.value(QLatin1String("maxLimit")))};
}
} // namespace

SearchSources SearchSources::load(const QStringList &files, QStringList *problems)
{
    SearchSources sources;
    for (const QString &file : files)
        sources.read(file, problems);
    return sources;
}

void SearchSources::read(const QString &file, QStringList *problems)
{
    QFile in(file);
    if (!in.exists())
        return;
    QJsonParseError parseError;
    const QJsonDocument document =
        in.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(in.readAll(), &parseError) : QJsonDocument();
    const QJsonArray list =
        document.isArray() ? document.array() : document.object().value(QLatin1String("sources")).toArray();
    if (document.isNull() && problems)
        problems->append(QStringList{file, parseError.errorString()}.join(QLatin1String(": ")));
    for (const QJsonValue &entry : list) {
        Source source = sourceOf(entry.toObject());
        if (source.guid.isEmpty() || !source.urlTemplate.contains(QLatin1String("{keywords}"))) {
            if (problems)
                problems->append(
                    QStringLiteral("%1: a source without guid or {keywords} is skipped").arg(file));
            continue;
        }
        add(std::move(source));
    }
}

void SearchSources::add(Source source)
{
    if (source.title.isEmpty())
        source.title = source.guid;
    for (Source &known : m_sources) {
        if (known.guid.compare(source.guid, Qt::CaseInsensitive) == 0) {
            known = std::move(source);
            return;
        }
    }
    m_sources.append(std::move(source));
}

bool SearchSources::isSearch(const QString &address)
{
    return address.startsWith(QLatin1String("search"));
}

const SearchSources::Source *SearchSources::find(const QString &guid) const
{
    for (const Source &source : m_sources) {
        if (source.guid.compare(guid.trimmed(), Qt::CaseInsensitive) == 0)
            return &source;
    }
    return nullptr;
}

ListPtr SearchSources::bags() const
{
    auto list = PropertyList::create();
    for (const Source &source : m_sources) {
        auto bag = PropertyBag::create();
        bag->setText(QStringLiteral("guid"), source.guid);
        bag->setText(QStringLiteral("title"), source.title);
        if (source.defaultLimit)
            bag->setLong(QStringLiteral("defaultLimit"), *source.defaultLimit);
        if (source.minLimit)
            bag->setLong(QStringLiteral("minLimit"), *source.minLimit);
        if (source.maxLimit)
            bag->setLong(QStringLiteral("maxLimit"), *source.maxLimit);
        list->append(bag);
    }
    return list;
}

qint32 SearchSources::clampLimit(const Source &source, const QString &limit)
{
    bool ok = false;
    qint32 n = limit.trimmed().toInt(&ok);
    if (!ok || n <= 0)
        n = source.defaultLimit.value_or(source.maxLimit.value_or(20));
    if (source.minLimit)
        n = std::max(n, *source.minLimit);
    if (source.maxLimit)
        n = std::min(n, *source.maxLimit);
    return n;
}

QString SearchSources::searchUrl(const QString &address, QString *error) const
{
    const qsizetype mark = address.indexOf(QLatin1Char('?'));
    const QUrlQuery query(mark < 0 ? QString() : address.mid(mark + 1));
    const auto value = [&query](const char *name) {
        return query.queryItemValue(QLatin1String(name), QUrl::FullyDecoded);
    };
    const Source *source = find(value("guid"));
    const QString keywords = value("keywords").trimmed();
    QString reason;
    if (!source)
        reason = QStringLiteral("unknown search source '%1'").arg(value("guid"));
    else if (keywords.isEmpty())
        reason = QStringLiteral("the search has no keywords");
    if (!reason.isEmpty()) {
        if (error)
            *error = reason;
        return {};
    }
    QString url = source->urlTemplate;
    url.replace(QLatin1String("{keywords}"), QString::fromLatin1(QUrl::toPercentEncoding(keywords)));
    url.replace(QLatin1String("{limit}"), QString::number(clampLimit(*source, value("limit"))));
    return url;
}

} // namespace quillon
