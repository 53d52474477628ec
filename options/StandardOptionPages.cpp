#include "StandardOptionPages.h"

#include "ExportUI.h"
#include "GeneralUI.h"
#include "IEPluginUI.h"
#include "NetworkUI.h"
#include "OnlineUI.h"
#include "OptionPageFactory.h"
#include "PendingPage.h"
#include "PodcastingUI.h"
#include "PublishingUI.h"
#include "SubDefaultsUI.h"
#include "TagsUI.h"

namespace {
template <typename Page> OptionPageFactory::Maker Make()
{
    return
        [](QWidget *parent, const quillon::SubscribeClientPtr &client) { return new Page(client, parent); };
}

// Pages bound by a field table reach the engine through the process's client.
template <typename Page> OptionPageFactory::Maker MakeBound()
{
    return [](QWidget *parent, const quillon::SubscribeClientPtr &) { return new Page(parent); };
}

OptionPageFactory::Maker Pending()
{
    return [](QWidget *parent, const quillon::SubscribeClientPtr &) { return new PendingPage(parent); };
}
} // namespace

void RegisterStandardOptionPages(OptionPageFactory &factory)
{
    // The modules whose page is not written yet say so.
    for (const char *pane : {"IEPluginUI1", "PodcastingUI1", "TagsUI1", "OLDefaultsUI1"})
        factory.Register(QLatin1String(pane), Pending());
    factory.Register(QStringLiteral("GeneralUI1"), MakeBound<GeneralUI>());
    factory.Register(QStringLiteral("OnlineUI1"), MakeBound<OnlineUI>());
    factory.Register(QStringLiteral("NetworkUI1"), MakeBound<NetworkUI>());
    factory.Register(QStringLiteral("SubDefaultsUI1"), MakeBound<SubDefaultsUI>());
    factory.Register(QStringLiteral("IEPluginUI1"), MakeBound<IEPluginUI>());
    factory.Register(QStringLiteral("PodcastingUI1"), MakeBound<PodcastingUI>());
    factory.Register(QStringLiteral("TagsUI1"), MakeBound<TagsUI>());
    factory.Register(QStringLiteral("PublishingUI1"), Make<PublishingUI>());
    factory.Register(QStringLiteral("ExportUI1"), Make<ExportUI>());
}
