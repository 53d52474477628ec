#pragma once

#include "PublishingUtils.h"
#include "SubscribeClient.h"

#include <QDialog>

#include <memory>

namespace Ui {
class frmPublishRequestOpt;
}

// The short question before a post: which weblog, and whether to edit first. Options...
// opens frmPrePublish for everything else; its command posts at once.
class frmPublishRequestOpt : public QDialog
{
    Q_OBJECT
public:
    frmPublishRequestOpt(quillon::SubscribeClientPtr client, QList<PublishingUtils::WeblogRecord> weblogs,
                         const QString &itemTitle, QWidget *owner = nullptr);
    ~frmPublishRequestOpt() override;

    // The record number chosen, or 0 when cancelled.
    [[nodiscard]] qint32 Run();

private:
    void UpdateCommand();
    void OnOptions();
    void OnPublish();

    std::unique_ptr<Ui::frmPublishRequestOpt> ui;
    quillon::SubscribeClientPtr m_client;
    QString m_itemTitle;
};
