#pragma once

#include "ConfigPage.h"
#include "ConsumerSettingStore.h"

#include <memory>

namespace Ui {
class IEPluginUI;
}

// The "Internet Explorer Settings" module: which documents the browser plug-in handles and how
// it subscribes. Every field is a flag in the engine's settings.
class IEPluginUI : public ConfigPage
{
    Q_OBJECT
public:
    explicit IEPluginUI(QWidget *parent = nullptr);
    ~IEPluginUI() override;

    // Stores the switches and tells the desktop which file types to hand over.
    void Apply() override;

private:
    std::unique_ptr<Ui::IEPluginUI> ui;
    ConsumerSettingStore m_fileTypes{QStringLiteral("ENGINE"), QStringLiteral("FileTypeHandling")};
    ConsumerSettingStore m_engine{QStringLiteral("ENGINE"), QString()};
};
