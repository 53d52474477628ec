#pragma once

#include "ConfigPage.h"
#include "ConsumerSettingStore.h"

#include <memory>

namespace Ui {
class SubDefaultsUI;
}

// "Subscription Defaults": how often a subscription on the defaults is updated and after how
// long its read and unread articles are deleted; the engine's own settings ("ENGINE").
class SubDefaultsUI : public ConfigPage
{
    Q_OBJECT
public:
    explicit SubDefaultsUI(QWidget *parent = nullptr);
    ~SubDefaultsUI() override;

protected:
    void FieldsLoaded() override;
    void BeforeStore() override;

private:
    void EnableAges();

    std::unique_ptr<Ui::SubDefaultsUI> ui;
    ConsumerSettingStore m_engine;
};
