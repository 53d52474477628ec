#include "StandardOptionPages.h"

#include "ExportUI.h"
#include "GeneralUI.h"
#include "IEPluginUI.h"
#include "NetworkUI.h"
#include "OLDefaultsUI.h"
#include "OnlineUI.h"
#include "OptionPageFactory.h"
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
} // namespace

void RegisterStandardOptionPages(OptionPageFactory &factory)
{
    factory.Register(QStringLiteral("GeneralUI1"), MakeBound<GeneralUI>());
    factory.Register(QStringLiteral("OnlineUI1"), MakeBound<OnlineUI>());
    factory.Register(QStringLiteral("NetworkUI1"), MakeBound<NetworkUI>());
    factory.Register(QStringLiteral("SubDefaultsUI1"), MakeBound<SubDefaultsUI>());
    factory.Register(QStringLiteral("IEPluginUI1"), MakeBound<IEPluginUI>());
    factory.Register(QStringLiteral("PodcastingUI1"), MakeBound<PodcastingUI>());
    factory.Register(QStringLiteral("TagsUI1"), MakeBound<TagsUI>());
    factory.Register(QStringLiteral("OLDefaultsUI1"), MakeBound<OLDefaultsUI>());
    factory.Register(QStringLiteral("PublishingUI1"), Make<PublishingUI>());
    factory.Register(QStringLiteral("ExportUI1"), Make<ExportUI>());
}
