#pragma once

#include "SubscribeClient.h"

#include <QHash>
#include <QString>

#include <functional>

class ConfigPage;
class QWidget;

// Makes the options window's pages by their pane name ("GeneralUI1"). A name nobody
// registered has no page: the window says "element not found" and keeps the module's row.
class OptionPageFactory
{
public:
    // Made with the window as parent and the engine client the window was given.
    using Maker = std::function<ConfigPage *(QWidget *parent, const quillon::SubscribeClientPtr &client)>;

    void Register(const QString &paneName, Maker maker) { m_makers.insert(paneName, std::move(maker)); }
    [[nodiscard]] bool Has(const QString &paneName) const { return m_makers.contains(paneName); }
    // Null when no page goes by that name.
    [[nodiscard]] ConfigPage *Create(const QString &paneName, QWidget *parent,
                                     const quillon::SubscribeClientPtr &client) const;

private:
    QHash<QString, Maker> m_makers;
};
