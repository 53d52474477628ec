#pragma once

#include "ConfigPage.h"
#include "ConsumerSettingStore.h"
#include "RegistryStore.h"

#include <memory>

namespace Ui {
class GeneralUI;
}

// "General Settings": the engine's log, its load, and whether deleting asks first.
class GeneralUI : public ConfigPage
{
    Q_OBJECT
public:
    explicit GeneralUI(QWidget *parent = nullptr);
    ~GeneralUI() override;

private:
    std::unique_ptr<Ui::GeneralUI> ui;
    ConsumerSettingStore m_engine;
    RegistryStore m_vendor;
};
