#pragma once

#include "ConfigPage.h"
#include "SubscribeClient.h"

#include <memory>

namespace Ui {
class PublishingUI;
}

// The "Publishing Settings" module: the weblogs to publish to, which of them take part in
// quick publishing, and whether quick publishing is offered at all.
class PublishingUI : public ConfigPage
{
    Q_OBJECT
public:
    explicit PublishingUI(quillon::SubscribeClientPtr client, QWidget *parent = nullptr);
    ~PublishingUI() override;

    void Apply() override;
    void LoadValues() override;

private:
    void FillWeblogs();
    [[nodiscard]] qint32 SelectedRecord() const;
    void AddWeblog();
    void EditWeblog();
    void DeleteWeblog();

    std::unique_ptr<Ui::PublishingUI> ui;
    quillon::SubscribeClientPtr m_client;
};
