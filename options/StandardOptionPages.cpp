#include "StandardOptionPages.h"

#include "OptionPageFactory.h"
#include "PendingPage.h"

namespace {
OptionPageFactory::Maker Pending()
{
    return [](QWidget *parent, const quillon::SubscribeClientPtr &) { return new PendingPage(parent); };
}
} // namespace

void RegisterStandardOptionPages(OptionPageFactory &factory)
{
    // The modules whose page is not written yet say so.
    for (const char *pane : {"GeneralUI1", "OnlineUI1", "IEPluginUI1", "PodcastingUI1", "PublishingUI1",
                             "TagsUI1", "SubDefaultsUI1", "OLDefaultsUI1", "ExportUI1"})
        factory.Register(QLatin1String(pane), Pending());
}
