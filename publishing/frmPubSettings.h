#pragma once

#include "BlogService.h"
#include "PublishingUtils.h"
#include "SubscribeClient.h"
#include "WeblogApi.h"

#include <QDialog>

#include <memory>
#include <optional>

namespace Ui {
class frmPubSettings;
}

// Adds weblogs: the user names the service, the weblog and the account; the dialog finds the
// posting address, asks the account for its weblogs, offers those not configured yet
// (frmChooseBlog) and writes a record for each one chosen.
class frmPubSettings : public QDialog
{
    Q_OBJECT
public:
    static constexpr int kResultOK = 1;
    static constexpr int kResultCancel = 2;

    // servicesFile: "service.xml"; by default the one in QuillonData.
    frmPubSettings(quillon::SubscribeClientPtr client, QWidget *owner = nullptr,
                   const QString &servicesFile = QString());
    ~frmPubSettings() override;

    // 1 when weblogs were added, 2 otherwise; says so at once when there is no service to offer.
    int Run();

private:
    void OnOK();
    // The address posts go to; empty after telling the user why.
    [[nodiscard]] QUrl PostingAddress(const BlogService &service, WeblogConnection &connection);
    [[nodiscard]] std::optional<QList<WeblogApi::Weblog>>
    AccountWeblogs(WeblogConnection &connection, const BlogService &service, const QUrl &postUrl);
    [[nodiscard]] QList<WeblogApi::Weblog> NotConfigured(const QList<WeblogApi::Weblog> &weblogs) const;
    void AddRecords(const BlogService &service, const QUrl &postUrl, const QList<WeblogApi::Weblog> &chosen);
    void ShowNoPostingAddress(const QString &why);

    std::unique_ptr<Ui::frmPubSettings> ui;
    quillon::SubscribeClientPtr m_client;
    QList<BlogService> m_services;
    QString m_nameFromUser;
};
