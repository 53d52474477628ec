#pragma once

#include "ConfigPage.h"
#include "ConsumerSettingStore.h"
#include "TagServiceStore.h"

#include <memory>

namespace Ui {
class TagsUI;
}

// The "Tags Settings" module: the online tag service of the browser plug-in and how tags show.
class TagsUI : public ConfigPage
{
    Q_OBJECT
public:
    explicit TagsUI(QWidget *parent = nullptr);
    ~TagsUI() override;

protected:
    void FieldsLoaded() override;

private:
    void FollowTagging();

    std::unique_ptr<Ui::TagsUI> ui;
    TagServiceStore m_service;
    ConsumerSettingStore m_display{QStringLiteral("IEPLUGINCONSUMER"), QString()};
};
