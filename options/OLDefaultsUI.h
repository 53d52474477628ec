#pragma once

#include "ConfigPage.h"
#include "ConsumerSettingStore.h"
#include "QLUtils.h"

#include <memory>
#include <optional>

namespace Ui {
class OLDefaultsUI;
}

// "Outlook Defaults": where mail delivery puts new subscriptions, what it does when their
// folders move or go, and how articles are rendered ("OLCONSUMER", "OutlookDefaults").
class OLDefaultsUI : public ConfigPage
{
    Q_OBJECT
public:
    explicit OLDefaultsUI(QWidget *parent = nullptr);
    ~OLDefaultsUI() override;

    // A named sub-folder needs a name; says so and answers false without one.
    bool SafeToApply() override;

protected:
    void FieldsLoaded() override;
    void BeforeStore() override;

private:
    void ShowTopFolder(const QString &path);
    void PickTopFolder();
    void NewMailStore();
    void FollowSubFolder();

    std::unique_ptr<Ui::OLDefaultsUI> ui;
    ConsumerSettingStore m_outlook;
    std::optional<OutlookFolder> m_pickedTopFolder;
};
