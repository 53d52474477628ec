#include "SearchSource.h"

#include "HandleGuard.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcSearchSources, "corvell.forms.search")

using quillon::Handle;

namespace {
SearchSource ReadSource(quillon::SubscribeClient &client, Handle list, qint32 index)
{
    HandleGuard bag(client, client.ListHandle(list, index));
    const auto text = [&](const char *name) { return client.GetStringValue(bag.get(), QLatin1String(name)); };
    return {text("guid"), text("title"), text("defaultLimit"), text("minLimit"), text("maxLimit")};
}
} // namespace

QList<SearchSource> ReadSearchSources(quillon::SubscribeClient &client, Handle answer)
{
    QList<SearchSource> sources;
    HandleGuard result(client, client.GetHandleValue(answer, QStringLiteral("Result")));
    HandleGuard list(client, result.isValid()
                                 ? client.GetHandleValue(result.get(), QStringLiteral("SEARCHSOURCES"))
                                 : Handle(0));
    if (!list.isValid()) {
        qCInfo(lcSearchSources) << "no search sources:"
                                << client.GetStringValue(answer, QStringLiteral("MESSAGE"))
                                << client.GetStringValue(answer, QStringLiteral("ERROR"));
        return sources;
    }
    for (qint32 i = 0, n = client.ListCount(list.get()); i < n; ++i)
        sources << ReadSource(client, list.get(), i);
    return sources;
}
