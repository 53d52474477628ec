#include "OptionPageFactory.h"

#include "ConfigPage.h"

ConfigPage *OptionPageFactory::Create(const QString &paneName, QWidget *parent,
                                      const quillon::SubscribeClientPtr &client) const
{
    const auto maker = m_makers.constFind(paneName);
    if (maker == m_makers.cend())
        return nullptr;
    ConfigPage *page = (*maker)(parent, client);
    if (page)
        page->setObjectName(paneName);
    return page;
}
