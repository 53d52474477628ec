#include "StandardOptionPages.h"

#include "ExportUI.h"
#include "OptionPageFactory.h"
#include "PendingPage.h"
#include "PublishingUI.h"

namespace {
template <typename Page> OptionPageFactory::Maker Make()
{
    return
        [](QWidget *parent, const quillon::SubscribeClientPtr &client) { return new Page(client, parent); };
}

OptionPageFactory::Maker Pending()
{
    return [](QWidget *parent, const quillon::SubscribeClientPtr &) { return new PendingPage(parent); };
}
} // namespace

void RegisterStandardOptionPages(OptionPageFactory &factory)
{
    // The modules whose page is not written yet say so.
    for (const char *pane : {"GeneralUI1", "OnlineUI1", "IEPluginUI1", "PodcastingUI1", "TagsUI1",
                             "SubDefaultsUI1", "OLDefaultsUI1"})
        factory.Register(QLatin1String(pane), Pending());
    factory.Register(QStringLiteral("PublishingUI1"), Make<PublishingUI>());
    factory.Register(QStringLiteral("ExportUI1"), Make<ExportUI>());
}
